// SDK functions that work on images a client already holds: waybill extraction and image saving,
// and the switch of the waybill cutting of produced frames.
#include <vector>

#include "QuorinCtrl.h"
#include "model/handle_state.h"
#include "model/image_encoding.h"
#include "sdk/dispatch.h"

using qsim::CallBuilder;
using qsim::Dispatch;
using qsim::DispatchInto;
using qsim::HandleJobs;
using qsim::Model;
using qsim::Needs;
using qsim::Status;
using qsim::VirtualReader;
using qsim::WithJobs;

extern "C" {

QUORIN_API int QUORIN_GetWayBillInfoEx(void* handle, unsigned char* pData, QUORIN_IMAGE_OUT_INFO_EX2* pstFrameInfo) {
  // The answer is the waybill list, so a scripted output lands there.
  QUORIN_WAYBILL_LIST* answer = pstFrameInfo != nullptr ? pstFrameInfo->pstWaybillList : nullptr;
  const CallBuilder call = CallBuilder(__func__).Handle(handle).Record(pstFrameInfo, sizeof *pstFrameInfo);
  return DispatchInto(call, answer, sizeof *answer, [&] {
    return WithJobs(handle, Needs::kOpenReader, [&](HandleJobs& jobs) {
      if (pData == nullptr || pstFrameInfo == nullptr) {
        return qsim::kBadParameter;
      }
      return jobs.waybills.Cut(pData, *pstFrameInfo);
    });
  });
}

QUORIN_API int QUORIN_SaveImage(void* handle, QUORIN_SAVE_IMAGE_PARAM* pstSaveParam) {
  const CallBuilder call = CallBuilder(__func__).Handle(handle).Record(pstSaveParam, sizeof *pstSaveParam);
  return DispatchInto(call, pstSaveParam, sizeof *pstSaveParam, [&] {
    return WithJobs(handle, Needs::kOpenReader, [&](HandleJobs& jobs) {
      if (pstSaveParam == nullptr) {
        return qsim::kBadParameter;
      }
      std::vector<unsigned char> encoded;
      const Status status = qsim::EncodeSavedImage(*pstSaveParam, encoded);
      if (status == 0) {
        jobs.savedImage = std::move(encoded);  // the bytes handed out before stay valid until now
        pstSaveParam->pImageBuffer = jobs.savedImage.data();
        pstSaveParam->nImageLen = static_cast<unsigned int>(jobs.savedImage.size());
      }
      return status;
    });
  });
}

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
