// SDK functions that register callbacks: device exceptions, device events, trigger notices and frames.
#include "QuorinCtrl.h"
#include "sdk/dispatch.h"

using qsim::CallBuilder;
using qsim::Dispatch;
using qsim::Model;
using qsim::VirtualReader;

namespace {

// Stores a registration on the reader that `handle` holds open.
template <typename Store>
int Register(const CallBuilder& call, void* handle, Store store) {
  return Dispatch(call, [&] { return Model().WithOpenReader(handle, store); });
}

int RegisterImage(const CallBuilder& call, void* handle, unsigned int channel, QuorinImageCallBackEx2 function,
                  void* user) {
  return Register(call, handle,
                  [&](VirtualReader& reader) { return reader.SetImageCallback(channel, function, user); });
}

}  // namespace

extern "C" {

QUORIN_API int QUORIN_RegisterExceptionCallBack(void* handle, QuorinExceptionCallBack cbException, void* pUser) {
  return Register(CallBuilder(__func__).Handle(handle), handle,
                  [&](VirtualReader& reader) { return reader.Callbacks().Set(cbException, pUser); });
}

QUORIN_API int QUORIN_RegisterAllEventCallBack(void* handle, QuorinEventCallBack cbEvent, void* pUser) {
  return Register(CallBuilder(__func__).Handle(handle), handle,
                  [&](VirtualReader& reader) { return reader.Callbacks().Set(cbEvent, pUser); });
}

QUORIN_API int QUORIN_RegisterTriggerCallBack(void* handle, QuorinTriggerCallBack cbTrigger, void* pUser) {
  return Register(CallBuilder(__func__).Handle(handle), handle,
                  [&](VirtualReader& reader) { return reader.Callbacks().Set(cbTrigger, pUser); });
}

// The single-channel form: channel 0, the only one a single-channel reader has.
QUORIN_API int QUORIN_RegisterImageCallBackEx2(void* handle, QuorinImageCallBackEx2 cbOutput, void* pUser) {
  return RegisterImage(CallBuilder(__func__).Handle(handle), handle, 0, cbOutput, pUser);
}

QUORIN_API int QUORIN_MSC_RegisterImageCallBack(void* handle, unsigned int nChannelID,
                                                QuorinImageCallBackEx2 cbOutput, void* pUser) {
  return RegisterImage(CallBuilder(__func__).Handle(handle).Number(nChannelID), handle, nChannelID, cbOutput,
                       pUser);
}

}  // extern "C"
