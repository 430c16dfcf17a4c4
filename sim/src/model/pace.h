// How fast the reader's slow jobs run: set through the control interface, restored by Reset.
#pragma once

#include <chrono>

namespace qsim {

struct TransferPace {
  unsigned int bytesPerChunk = 65536;
  std::chrono::milliseconds pause{1};
};

TransferPace CurrentTransferPace();
void SetTransferPace(TransferPace pace);

std::chrono::milliseconds CurrentUpgradeDuration();
void SetUpgradeDuration(std::chrono::milliseconds duration);

void RestoreDefaultPace();

}  // namespace qsim
