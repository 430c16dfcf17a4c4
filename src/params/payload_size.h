// How large one frame can be, as far as the SDK will tell: shared by the integer getter
// and by grabbing, which caches the answer in the Handle.
#pragma once

#include "bridge.h"

// The reader's feature nodes the rule asks.
constexpr const char* kPayloadSizeNode = "PayloadSize";
constexpr const char* kWidthNode = "Width";
constexpr const char* kHeightNode = "Height";

// Used when the SDK can tell nothing at all: room for any frame these readers make.
constexpr long long kFallbackPayloadSize = 0x3C00000;  // 60 MiB

// The "PayloadSize" node, or failing that the fallback below.
long long PayloadSizeOf(void* sdkHandle);

// The largest frame: maximum Width times maximum Height (32-bit, wrapping), or 60 MiB.
long long FallbackPayloadSize(void* sdkHandle);
