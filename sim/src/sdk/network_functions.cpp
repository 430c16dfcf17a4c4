// SDK functions of a GigE reader's network: its address and IP configuration, and the GVCP
// time-out of a device handle.
#include "QuorinCtrl.h"
#include "model/network_settings.h"
#include "sdk/dispatch.h"

using qsim::CallBuilder;
using qsim::Dispatch;
using qsim::DispatchInto;

extern "C" {

QUORIN_API int QUORIN_GIGE_ForceIp(void* handle, unsigned int nIP, unsigned int nSubNetMask,
                                   unsigned int nDefaultGateWay) {
  const CallBuilder call = CallBuilder(__func__).Handle(handle).Number(nIP).Number(nSubNetMask).Number(nDefaultGateWay);
  return Dispatch(call, [&] { return qsim::ForceIp(handle, nIP, nSubNetMask, nDefaultGateWay); });
}

QUORIN_API int QUORIN_GIGE_SetIpConfig(void* handle, unsigned int nType) {
  return Dispatch(CallBuilder(__func__).Handle(handle).Number(nType), [&] { return qsim::SetIpConfig(handle, nType); });
}

QUORIN_API int QUORIN_GIGE_SetGvcpTimeout(void* handle, unsigned int nMillisec) {
  return Dispatch(CallBuilder(__func__).Handle(handle).Number(nMillisec),
                  [&] { return qsim::SetGvcpTimeout(handle, nMillisec); });
}

QUORIN_API int QUORIN_GIGE_GetGvcpTimeout(void* handle, unsigned int* pnMillisec) {
  return DispatchInto(CallBuilder(__func__).Handle(handle), pnMillisec, sizeof *pnMillisec,
                      [&] { return qsim::GetGvcpTimeout(handle, pnMillisec); });
}

}  // extern "C"
