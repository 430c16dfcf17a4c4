// The older synchronous fetch: the frames of QUORIN_GetOneFrameTimeoutEx2, in the legacy record.
#include <algorithm>
#include <cstring>

#include "QuorinCtrl.h"
#include "QuorinCtrlMembers.h"
#include "sdk/dispatch.h"

using qsim::CallBuilder;
using qsim::DispatchInto;
using qsim::Model;
using qsim::Status;

namespace {

QUORIN_BcrInfo LegacyCode(const QUORIN_BCR_INFO_EX& code) {
  QUORIN_BcrInfo legacy{};
  legacy.nID = code.nID;
  const size_t length = std::min<size_t>(code.nLen, sizeof legacy.chCode);
  std::memcpy(legacy.chCode, code.chCode, length);
  legacy.nLen = static_cast<unsigned int>(length);
  legacy.nBarType = code.nBarType;
  legacy.pt[0] = code.stCornerLeftTop;
  legacy.pt[1] = code.stCornerRightTop;
  legacy.pt[2] = code.stCornerRightBottom;
  legacy.pt[3] = code.stCornerLeftBottom;
#define QSIM_COPY(member) legacy.member = code.member;
  QUORIN_CODE_SHARED_MEMBERS(QSIM_COPY)
#undef QSIM_COPY
  return legacy;
}

// The record carries the header, up to QUORIN_MAX_BCRINFO_NUM codes and the first waybill's image.
void FillLegacyRecord(const QUORIN_IMAGE_OUT_INFO_EX2& frame, QUORIN_FRAME_OUT_INFO& record) {
  std::memset(&record, 0, sizeof record);
  record.nWidth = frame.nWidth;
  record.nHeight = frame.nHeight;
  record.enPixelType = frame.enPixelType;
  record.nTriggerIndex = frame.nTriggerIndex;
  record.nFrameNum = frame.nFrameNum;
  record.nFrameLen = frame.nFrameLen;
  record.nTimeStampHigh = frame.nTimeStampHigh;
  record.nTimeStampLow = frame.nTimeStampLow;
  record.bFlaseTrigger = frame.bFlaseTrigger;
  record.nFocusScore = frame.nFocusScore;
  record.nChannelID = frame.nChannelID;
  record.nImageCost = frame.nImageCost;
  if (const QUORIN_RESULT_BCR_EX* codes = frame.pstCodeListEx) {
    const unsigned int count = std::min<unsigned int>(codes->nCodeNum, QUORIN_MAX_BCRINFO_NUM);
    std::transform(codes->stBcrInfoEx, codes->stBcrInfoEx + count, record.stBcrInfo, LegacyCode);
    record.nCodeNumber = count;
  }
  const QUORIN_WAYBILL_LIST* waybills = frame.pstWaybillList;
  if (waybills != nullptr && waybills->nWaybillNum > 0) {
    record.pImageWaybill = waybills->stWaybillInfo[0].pImageWaybill;
    record.nImageWaybillLen = waybills->stWaybillInfo[0].nImageLen;
    record.enWaybillImageType = waybills->enWaybillImageType;
  }
}

}  // namespace

extern "C" {

QUORIN_API int QUORIN_GetOneFrameTimeout(void* handle, unsigned char** ppData, QUORIN_FRAME_OUT_INFO* pstFrameInfo,
                                         int nMsec) {
  if (ppData != nullptr) {
    *ppData = nullptr;  // stays null unless a frame is delivered
  }
  return DispatchInto(CallBuilder(__func__).Handle(handle).Number(nMsec), pstFrameInfo, sizeof *pstFrameInfo, [&] {
    if (nMsec < 0) {
      return qsim::kBadParameter;
    }
    // Null arguments go on as null, so the shared fetch refuses them in its own order.
    QUORIN_IMAGE_OUT_INFO_EX2 frame{};
    unsigned char* image = nullptr;
    const Status status = Model().FetchFrame(handle, 0, static_cast<unsigned int>(nMsec),
                                             ppData != nullptr ? &image : nullptr,
                                             pstFrameInfo != nullptr ? &frame : nullptr);
    if (status == 0) {
      *ppData = image;
      FillLegacyRecord(frame, *pstFrameInfo);
    }
    return status;
  });
}

}  // extern "C"
