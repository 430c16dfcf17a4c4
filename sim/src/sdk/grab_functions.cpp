// SDK functions of acquisition: grabbing control and the synchronous frame fetches.
#include "QuorinCtrl.h"
#include "sdk/dispatch.h"

using qsim::CallBuilder;
using qsim::Dispatch;
using qsim::DispatchInto;
using qsim::Model;
using qsim::VirtualReader;

namespace {

int FetchFrame(const CallBuilder& call, void* handle, unsigned char** ppData, QUORIN_IMAGE_OUT_INFO_EX2* info,
               unsigned int channel, unsigned int timeoutMs) {
  if (ppData != nullptr) {
    *ppData = nullptr;  // stays null unless a frame is delivered
  }
  return DispatchInto(call, info, sizeof *info,
                      [&] { return Model().FetchFrame(handle, channel, timeoutMs, ppData, info); });
}

}  // namespace

extern "C" {

QUORIN_API int QUORIN_StartGrabbing(void* handle) {
  return Dispatch(CallBuilder(__func__).Handle(handle), [&] {
    return Model().WithOpenReader(handle, [](VirtualReader& reader) { return reader.StartGrabbing(); });
  });
}

QUORIN_API int QUORIN_StopGrabbing(void* handle) {
  return Dispatch(CallBuilder(__func__).Handle(handle), [&] {
    return Model().WithOpenReaderSettled(handle, [](VirtualReader& reader) { return reader.StopGrabbing(); });
  });
}

QUORIN_API int QUORIN_GetOneFrameTimeoutEx2(void* handle, unsigned char** ppData,
                                            QUORIN_IMAGE_OUT_INFO_EX2* pstFrameInfo, unsigned int nMsec) {
  return FetchFrame(CallBuilder(__func__).Handle(handle).Number(nMsec), handle, ppData, pstFrameInfo, 0, nMsec);
}

QUORIN_API int QUORIN_MSC_GetOneFrameTimeout(void* handle, unsigned char** ppData,
                                             QUORIN_IMAGE_OUT_INFO_EX2* pstFrameInfo, unsigned int nChannelID,
                                             unsigned int nMsec) {
  return FetchFrame(CallBuilder(__func__).Handle(handle).Number(nChannelID).Number(nMsec), handle, ppData,
                    pstFrameInfo, nChannelID, nMsec);
}

}  // extern "C"
