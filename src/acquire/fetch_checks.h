// What every frame delivery checks and how it copies the image bytes.
#pragma once

#include "bridge.h"

struct FetchMessages {
  const char* badArgumentText;     // printed when an argument is refused, or null
  const char* payloadUnknownText;  // printed when grabbing was never started through the bridge
};

// The fetches test their other arguments before the Handle, then the cached PayloadSize
// against the caller's array; kStatusOk when the SDK may be asked.
jint CheckFetch(JNIEnv* env, jobject handle, jbyteArray data, jobject info, jint timeout, const FetchMessages& messages);

// Copies a frame's bytes to the start of a Java array. A frame longer than the array
// (possible only when the SDK delivers more than PayloadSize) is cut to the array, never
// written past it, and no exception is raised; the frame length field still tells the truth.
void CopyFrameImage(JNIEnv* env, const unsigned char* image, unsigned int frameLen, jbyteArray array);
