// SDK functions that work on images a client already holds: waybill extraction and image saving,
// and the switch of the waybill cutting of produced frames.
#include "QuorinCtrl.h"
#include "model/handle_state.h"
#include "sdk/dispatch.h"

using qsim::CallBuilder;
using qsim::Dispatch;
using qsim::DispatchInto;
using qsim::HandleState;
using qsim::Model;
using qsim::Needs;
using qsim::Status;
using qsim::VirtualReader;
using qsim::WithHandleState;

extern "C" {

QUORIN_API int QUORIN_GetWayBillInfoEx(void* handle, unsigned char* pData, QUORIN_IMAGE_OUT_INFO_EX2* pstFrameInfo) {
  // The answer is the waybill list, so a scripted output lands there.
  QUORIN_WAYBILL_LIST* answer = pstFrameInfo != nullptr ? pstFrameInfo->pstWaybillList : nullptr;
  const CallBuilder call = CallBuilder(__func__).Handle(handle).Record(pstFrameInfo, sizeof *pstFrameInfo);
  return DispatchInto(call, answer, sizeof *answer, [&] {
    return WithHandleState(handle, Needs::kOpenReader, [&](HandleState& state) {
      return pData == nullptr || pstFrameInfo == nullptr ? qsim::kBadParameter
                                                         : state.waybills.Cut(pData, *pstFrameInfo);
    });
  });
}

QUORIN_API int QUORIN_SaveImage(void* handle, QUORIN_SAVE_IMAGE_PARAM* pstSaveParam) {
  const CallBuilder call = CallBuilder(__func__).Handle(handle).Record(pstSaveParam, sizeof *pstSaveParam);
  return DispatchInto(call, pstSaveParam, sizeof *pstSaveParam, [&] {
    return WithHandleState(handle, Needs::kOpenReader, [&](HandleState& state) {
      return pstSaveParam == nullptr ? qsim::kBadParameter : state.SaveImage(*pstSaveParam);
    });
  });
}

// The switch is an SDK truth word: 0 or 1.
QUORIN_API int QUORIN_SetWayBillEnable(void* handle, unsigned int bEnable) {
  return Dispatch(CallBuilder(__func__).Handle(handle).Number(bEnable), [&] {
    return Model().WithOpenReader(handle, [&](VirtualReader& reader) {
      if (bEnable > 1) {
        return qsim::kBadParameter;
      }
      reader.EnableWaybills(bEnable == 1);
      return Status{0};
    });
  });
}

}  // extern "C"
