#include "model/waybill_cutter.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "model/frame_synthesis.h"
#include "model/image_encoding.h"

namespace qsim {
namespace {

// A rectangle with inclusive edges, in coordinates that may lie outside the image.
struct Box {
  long long left;
  long long top;
  long long right;
  long long bottom;

  long long Area() const { return (right - left + 1) * (bottom - top + 1); }
};

// Only the first three corners are read: senders repeat the right-top corner in the fourth.
Box CodeBox(const QUORIN_BCR_INFO& code) {
  Box box{code.pt[0].nX, code.pt[0].nY, code.pt[0].nX, code.pt[0].nY};
  for (size_t i = 1; i < 3; ++i) {
    box.left = std::min<long long>(box.left, code.pt[i].nX);
    box.top = std::min<long long>(box.top, code.pt[i].nY);
    box.right = std::max<long long>(box.right, code.pt[i].nX);
    box.bottom = std::max<long long>(box.bottom, code.pt[i].nY);
  }
  return box;
}

struct WaybillRegion {
  Region region;
  float confidence;  // the share of the grown box that lies inside the image
};

std::optional<WaybillRegion> WaybillAround(const QUORIN_BCR_INFO& code, unsigned int width, unsigned int height) {
  Box grown = CodeBox(code);
  grown.left -= kWaybillMargin;
  grown.top -= kWaybillMargin;
  grown.right += kWaybillMargin;
  grown.bottom += kWaybillMargin;
  const Box inside{std::max(grown.left, 0LL), std::max(grown.top, 0LL), std::min(grown.right, width - 1LL),
                   std::min(grown.bottom, height - 1LL)};
  if (inside.left > inside.right || inside.top > inside.bottom) {
    return std::nullopt;
  }
  const Region region{static_cast<unsigned int>(inside.left), static_cast<unsigned int>(inside.top),
                      static_cast<unsigned int>(inside.right - inside.left + 1),
                      static_cast<unsigned int>(inside.bottom - inside.top + 1)};
  return WaybillRegion{region, static_cast<float>(static_cast<double>(inside.Area()) / static_cast<double>(grown.Area()))};
}

WaybillRequest Snapshot(const unsigned char* image, const QUORIN_IMAGE_OUT_INFO_EX2& info) {
  WaybillRequest request;
  request.info = info;
  if (info.pstCodeList != nullptr) {
    const QUORIN_BCR_INFO* codes = info.pstCodeList->stBcrInfo;
    request.codes.assign(codes, codes + std::min<size_t>(info.pstCodeList->nCodeNum, QUORIN_MAX_BCR_NUM));
  }
  if (info.pstCodeListEx != nullptr) {
    request.extendedCodeCount = info.pstCodeListEx->nCodeNum;
  }
  if (info.pstWaybillList != nullptr) {
    request.waybills = *info.pstWaybillList;
  }
  // Never more than the frame's own length: a request that declares more is refused unread.
  const size_t readable = std::min<unsigned long long>(info.nFrameLen, 1ULL * info.nWidth * info.nHeight);
  request.image.assign(image, image + readable);
  return request;
}

Status CheckRequest(const QUORIN_IMAGE_OUT_INFO_EX2& info) {
  if (info.nWidth == 0 || info.nHeight == 0 || info.pstWaybillList == nullptr) {
    return kBadParameter;
  }
  if (info.enPixelType != PixelType_Gvsp_Mono8) {
    return kUnsupportedPixelType;
  }
  if (DeclaredImageBytes(info.enPixelType, info.nWidth, info.nHeight) > info.nFrameLen) {
    return kBadParameter;  // the frame declares pixels beyond the bytes it was given
  }
  if (info.pstCodeList != nullptr && info.pstCodeList->nCodeNum > QUORIN_MAX_BCR_NUM) {
    return kBadParameter;  // entries past the list's capacity are not the sender's memory
  }
  return 0;
}

}  // namespace

Status WaybillCutter::Cut(const unsigned char* image, QUORIN_IMAGE_OUT_INFO_EX2& info) {
  last_ = Snapshot(image, info);
  const Status status = CheckRequest(info);
  if (status != 0) {
    return status;
  }
  QUORIN_WAYBILL_LIST& list = *info.pstWaybillList;
  std::memset(&list, 0, sizeof list);
  list.enWaybillImageType = QUORIN_Image_Bmp;
  images_.clear();
  for (const QUORIN_BCR_INFO& code : last_.codes) {
    if (list.nWaybillNum == QUORIN_MAX_WAYBILL_NUM) {
      break;
    }
    const std::optional<WaybillRegion> cut = WaybillAround(code, info.nWidth, info.nHeight);
    if (!cut) {
      continue;  // the code lies wholly outside the image
    }
    const Region& region = cut->region;
    images_.push_back(EncodeGreyBmp(image + static_cast<size_t>(region.y) * info.nWidth + region.x, region.width,
                                    region.height, info.nWidth));
    QUORIN_WAYBILL_INFO& entry = list.stWaybillInfo[list.nWaybillNum++];
    entry.fCenterX = static_cast<float>(region.x) + static_cast<float>(region.width) / 2;
    entry.fCenterY = static_cast<float>(region.y) + static_cast<float>(region.height) / 2;
    entry.fWidth = static_cast<float>(region.width);
    entry.fHeight = static_cast<float>(region.height);
    entry.fAngle = 0;
    entry.fConfidence = cut->confidence;
    entry.pImageWaybill = images_.back().data();
    entry.nImageLen = static_cast<unsigned int>(images_.back().size());
  }
  return 0;
}

}  // namespace qsim
