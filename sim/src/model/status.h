// The status word the model answers with: 0, or one of the words in QuorinSim.h.
#pragma once

namespace qsim {

using Status = unsigned int;

}  // namespace qsim
