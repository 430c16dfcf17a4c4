// The network settings of a GigE reader as a device handle changes them. A GigE reader takes them
// from any host on its link, so the handle need not hold it open.
#pragma once

#include "model/status.h"

namespace qsim {

Status ForceIp(const void* handle, unsigned int ip, unsigned int mask, unsigned int gateway);
Status SetIpConfig(const void* handle, unsigned int type);
// The time-out of the handle's control channel: at most kMaxGvcpTimeoutMs (kOutOfRange).
Status SetGvcpTimeout(const void* handle, unsigned int milliseconds);
Status GetGvcpTimeout(const void* handle, unsigned int* milliseconds);

}  // namespace qsim
