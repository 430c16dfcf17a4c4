#include "params/payload_size.h"

namespace {

bool QueryInt(void* sdkHandle, const char* key, QUORIN_INT_VALUE* value) {
  *value = QUORIN_INT_VALUE{};
  return QUORIN_GetIntValue(sdkHandle, key, value) == 0;
}

}  // namespace

long long FallbackPayloadSize(void* sdkHandle) {
  QUORIN_INT_VALUE width;
  QUORIN_INT_VALUE height;
  const bool haveWidth = QueryInt(sdkHandle, kWidthNode, &width);
  const bool haveHeight = QueryInt(sdkHandle, kHeightNode, &height);  // asked even when Width failed
  if (!haveWidth || !haveHeight) return kFallbackPayloadSize;
  // The maxima, so that a buffer of this size holds the largest frame. This rule is the bridge's
  // own, not the reader's: the product is taken in 32 bits and wraps.
  const auto product = static_cast<uint32_t>(width.nMax) * static_cast<uint32_t>(height.nMax);
  return static_cast<int32_t>(product);
}

long long PayloadSizeOf(void* sdkHandle) {
  QUORIN_INT_VALUE payload;
  if (QueryInt(sdkHandle, kPayloadSizeNode, &payload)) return payload.nCurValue;
  return FallbackPayloadSize(sdkHandle);
}
