// What a reader model can do, as its nodes and frames show it.
#pragma once

#include "QuorinCtrl.h"

namespace qsim {

struct ReaderTraits {
  unsigned int channelCount = 1;
  bool decodes = true;        // a code reader: its frames carry decoded codes
  bool cutsWaybills = false;  // its waybill switch starts on: frames carry waybill regions with their images
  bool gbkCodeTexts = false;  // some of its code texts are GBK, like its name
};

// By the record's model name and code-reader flag; unknown models are plain 1-channel readers.
ReaderTraits TraitsOf(const QUORIN_DEVICE_INFO& info);

}  // namespace qsim
