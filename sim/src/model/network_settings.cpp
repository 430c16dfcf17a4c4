#include "model/network_settings.h"

#include "model/handle_state.h"

namespace qsim {

Status ForceIp(const void* handle, unsigned int ip, unsigned int mask, unsigned int gateway) {
  return WithAdmittedReader(handle, Needs::kLiveHandle,
                            [&](VirtualReader& reader) { return reader.ForceIp(ip, mask, gateway); });
}

Status SetIpConfig(const void* handle, unsigned int type) {
  return WithAdmittedReader(handle, Needs::kLiveHandle,
                            [&](VirtualReader& reader) { return reader.SetIpConfig(type); });
}

Status SetGvcpTimeout(const void* handle, unsigned int milliseconds) {
  return WithHandleState(handle, Needs::kLiveHandle, [&](HandleState& state) {
    if (milliseconds > kMaxGvcpTimeoutMs) {
      return kOutOfRange;
    }
    state.gvcpTimeoutMs = milliseconds;
    return Status{0};
  });
}

Status GetGvcpTimeout(const void* handle, unsigned int* milliseconds) {
  return WithHandleState(handle, Needs::kLiveHandle, [&](HandleState& state) {
    if (milliseconds == nullptr) {
      return kBadParameter;
    }
    *milliseconds = state.gvcpTimeoutMs;
    return Status{0};
  });
}

}  // namespace qsim
