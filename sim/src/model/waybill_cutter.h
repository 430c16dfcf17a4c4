// Waybill extraction from frames a client hands back: one waybill image around each decoded code.
#pragma once

#include <vector>

#include "QuorinCtrl.h"
#include "QuorinSim.h"
#include "model/status.h"

namespace qsim {

class WaybillCutter {
 public:
  // Reads the plain code list of `info` and answers in its waybill list, with BMP images that stay
  // valid until the next Cut. `image` holds info.nFrameLen bytes; a request whose nWidth x nHeight
  // at its pixel type needs more is refused unread. Every request is kept, the refused ones too.
  Status Cut(const unsigned char* image, QUORIN_IMAGE_OUT_INFO_EX2& info);
  const WaybillRequest& LastRequest() const { return last_; }

 private:
  WaybillRequest last_;
  std::vector<std::vector<unsigned char>> images_;
};

}  // namespace qsim
