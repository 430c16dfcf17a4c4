// Conversion of the SDK's device record to and from its Java mirror.
#pragma once

#include "bridge.h"

// How the serial number becomes a Java string: only the plain enumeration decodes GBK.
enum class SerialText { kAsStored, kUtf8OrGbk };

// Writes the record into an existing device object and the GigE object it holds.
void WriteDeviceInfo(JNIEnv* env, const QUORIN_DEVICE_INFO& info, jobject device, jobject gige,
                     SerialText serial);

// A new device object, with a new GigE object in stGigEInfo, filled from the record.
jobject NewDeviceInfoObject(JNIEnv* env, const QUORIN_DEVICE_INFO& info, SerialText serial);

// A new ArrayList with one new device object per entry of the SDK's list.
jobject NewDeviceList(JNIEnv* env, const QUORIN_DEVICE_INFO_LIST& list, SerialText serial);

// How Java texts are copied into the record's fixed arrays.
enum class TextCopy {
  kWholeText,                // the whole text and its terminator; used to create handles
  kUtf16Count,               // exactly GetStringLength bytes; used to start an upgrade
  kUtf16CountUtf8Maker,      // as above, but the manufacturer name counts its UTF-8 bytes;
                             // used to test accessibility
};

// Fills a zeroed record from a device object. A text that does not fit its array ends the
// process, as a checked copy would: a silently cut serial number would address another device.
void ReadDeviceInfo(JNIEnv* env, jobject device, TextCopy rule, QUORIN_DEVICE_INFO* info);
