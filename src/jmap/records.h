// The SDK records and their Java mirrors as tables: each row names a Java field of the map and the
// SDK member it mirrors, and one loop writes or reads a whole table. A table's order is the order
// in which Java sees its fields written or read.
#pragma once

#include <cstddef>
#include <cstring>

#include "QuorinCtrlMembers.h"
#include "jmap/java_map.h"

namespace jmap {

// How a member's bytes travel: zero-extended into the value word (a float as its bits), or, towards
// the SDK only, a Java float sent as the number its bit pattern reads as (1.5f arrives as
// 1069547520.0f), as waybill requests are defined to send them.
enum class Travel : unsigned char { kBits, kFloatAsNumber };

struct Member {
  FieldId field;
  size_t offset;
  size_t size;
  Travel travel;
};

#define QUORIN_MEMBER(Record, javaField, member) \
  jmap::Member { F::javaField, offsetof(Record, member), sizeof(Record::member), jmap::Travel::kBits }
#define QUORIN_MEMBER_AS_NUMBER(Record, javaField, member) \
  jmap::Member { F::javaField, offsetof(Record, member), sizeof(Record::member), jmap::Travel::kFloatAsNumber }

inline unsigned long long MemberWord(const void* record, const Member& member) {
  const auto* bytes = static_cast<const unsigned char*>(record) + member.offset;
  switch (member.size) {
    case 1: return *bytes;
    case 2: { uint16_t v; std::memcpy(&v, bytes, sizeof v); return v; }
    case 4: { uint32_t v; std::memcpy(&v, bytes, sizeof v); return v; }
    default: { uint64_t v; std::memcpy(&v, bytes, sizeof v); return v; }
  }
}

inline void StoreMember(void* record, const Member& member, unsigned long long word) {
  auto* bytes = static_cast<unsigned char*>(record) + member.offset;
  if (member.travel == Travel::kFloatAsNumber) {
    const auto number = static_cast<float>(word);
    std::memcpy(bytes, &number, sizeof number);
    return;
  }
  switch (member.size) {
    case 1: *bytes = static_cast<unsigned char>(word); break;
    case 2: { const auto v = static_cast<uint16_t>(word); std::memcpy(bytes, &v, sizeof v); break; }
    case 4: { const auto v = static_cast<uint32_t>(word); std::memcpy(bytes, &v, sizeof v); break; }
    default: std::memcpy(bytes, &word, sizeof word); break;
  }
}

// Writes `count` rows of a table from the record into the Java object, in order: straight through
// resolved identifiers when `direct` (a Direct() answer with no call since that could raise),
// otherwise through the checked accessors.
inline void WriteMembers(const JavaObject& target, const void* record, const Member* table, size_t count,
                         bool direct) {
  for (size_t i = 0; i < count; ++i) {
    if (direct) {
      target.SetDirect(table[i].field, MemberWord(record, table[i]));
    } else {
      target.Set(table[i].field, MemberWord(record, table[i]));
    }
  }
}
template <size_t N>
void WriteMembers(const JavaObject& target, const void* record, const Member (&table)[N], bool direct) {
  WriteMembers(target, record, table, N, direct);
}
template <size_t N>
void WriteMembers(const JavaObject& target, const void* record, const Member (&table)[N]) {
  WriteMembers(target, record, table, N, target.Direct(table[0].field));
}
// Writes a table into the object that `owner`'s `field` holds, of the mapped class `cls`, and leaves
// the held reference to the caller's local frame. `ownerDirect` is the owner's Direct() answer; when
// it and the held object's class allow, nothing here can raise, so nothing asks again.
template <size_t N>
void WriteHeldMembers(JNIEnv* env, const JavaObject& owner, FieldId field, ClassId cls, const void* record,
                      const Member (&table)[N], bool ownerDirect) {
  const JavaObject target(env, ownerDirect ? ObjectFromWord(owner.GetDirect(field)) : owner.GetObject(field), cls);
  if (!target) return;
  const FieldId first = table[0].field;
  WriteMembers(target, record, table, N, ownerDirect ? target.DirectAfterCheck(first) : target.Direct(first));
}
// Reads `count` rows of a table from the Java object into the record, in order.
inline void ReadMembers(const JavaObject& source, void* record, const Member* table, size_t count) {
  if (count == 0) return;
  if (source.Direct(table[0].field)) {
    for (size_t i = 0; i < count; ++i) StoreMember(record, table[i], source.GetDirect(table[i].field));
    return;
  }
  for (size_t i = 0; i < count; ++i) StoreMember(record, table[i], source.Get(table[i].field));
}
template <size_t N>
void ReadMembers(const JavaObject& source, void* record, const Member (&table)[N]) {
  ReadMembers(source, record, table, N);
}

// ---------------------------------------------------------------------------
// Devices.
inline constexpr Member kDeviceWordsWritten[] = {
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_nMacAddrHigh, nMacAddrHigh),
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_nMacAddrLow, nMacAddrLow),
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_nMajorVer, nMajorVer),
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_nMinorVer, nMinorVer),
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_nTLayerType, nTLayerType),
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_bCodeReader, bCodeReader),  // any non-zero byte is true
};
inline constexpr Member kDeviceWordsRead[] = {
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_nMacAddrHigh, nMacAddrHigh),
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_nMacAddrLow, nMacAddrLow),
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_nTLayerType, nTLayerType),
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_nMajorVer, nMajorVer),
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_nMinorVer, nMinorVer),
    QUORIN_MEMBER(QUORIN_DEVICE_INFO, DeviceInfo_bCodeReader, bCodeReader),
};
// The seven address and configuration words of the GigE sub-record.
inline constexpr Member kGigEWords[] = {
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_nCurrentIp, nCurrentIp),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_nNetExport, nNetExport),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_nCurUserIP, nCurUserIP),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_nCurrentSubNetMask, nCurrentSubNetMask),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_nDefultGateWay, nDefultGateWay),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_nIpCfgOption, nIpCfgOption),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_nIpCfgCurrent, nIpCfgCurrent),
};
// The six text arrays of the GigE sub-record, in the order they are converted; `size` is the array's.
inline constexpr Member kGigETexts[] = {
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_chManufacturerName, chManufacturerName),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_chModelName, chModelName),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_chDeviceVersion, chDeviceVersion),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_chManufacturerSpecificInfo, chManufacturerSpecificInfo),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_chSerialNumber, chSerialNumber),
    QUORIN_MEMBER(QUORIN_GIGE_DEVICE_INFO, GigEInfo_chUserDefinedName, chUserDefinedName),
};

// ---------------------------------------------------------------------------
// Parameter values and notifications.
inline constexpr Member kIntValue[] = {
    QUORIN_MEMBER(QUORIN_INT_VALUE, IntValue_nCurValue, nCurValue),
    QUORIN_MEMBER(QUORIN_INT_VALUE, IntValue_nMax, nMax),
    QUORIN_MEMBER(QUORIN_INT_VALUE, IntValue_nMin, nMin),
    QUORIN_MEMBER(QUORIN_INT_VALUE, IntValue_nInc, nInc),
};
inline constexpr Member kFloatValue[] = {
    QUORIN_MEMBER(QUORIN_FLOAT_VALUE, FloatValue_fCurValue, fCurValue),
    QUORIN_MEMBER(QUORIN_FLOAT_VALUE, FloatValue_fMax, fMax),
    QUORIN_MEMBER(QUORIN_FLOAT_VALUE, FloatValue_fMin, fMin),
};
inline constexpr Member kFileAccessProgress[] = {
    QUORIN_MEMBER(QUORIN_FILE_ACCESS_PROGRESS, FileAccessProgress_nCompleted, nCompleted),
    QUORIN_MEMBER(QUORIN_FILE_ACCESS_PROGRESS, FileAccessProgress_nTotal, nTotal),
};
// Between the event's name and its data.
inline constexpr Member kEventWords[] = {
    QUORIN_MEMBER(QUORIN_EVENT_OUT_INFO, EventOutInfo_nEventID, nEventID),
    QUORIN_MEMBER(QUORIN_EVENT_OUT_INFO, EventOutInfo_nStreamChannel, nStreamChannel),
    QUORIN_MEMBER(QUORIN_EVENT_OUT_INFO, EventOutInfo_nBlockIdHigh, nBlockIdHigh),
    QUORIN_MEMBER(QUORIN_EVENT_OUT_INFO, EventOutInfo_nBlockIdLow, nBlockIdLow),
    QUORIN_MEMBER(QUORIN_EVENT_OUT_INFO, EventOutInfo_nTimestampHigh, nTimestampHigh),
    QUORIN_MEMBER(QUORIN_EVENT_OUT_INFO, EventOutInfo_nTimestampLow, nTimestampLow),
};
inline constexpr Member kTrigger[] = {
    QUORIN_MEMBER(QUORIN_TRIGGER_INFO_DATA, TriggerInfo_nTriggerIndex, nTriggerIndex),
    QUORIN_MEMBER(QUORIN_TRIGGER_INFO_DATA, TriggerInfo_nTriggerFlag, nTriggerFlag),
    QUORIN_MEMBER(QUORIN_TRIGGER_INFO_DATA, TriggerInfo_nTriggerTimeHigh, nTriggerTimeHigh),
    QUORIN_MEMBER(QUORIN_TRIGGER_INFO_DATA, TriggerInfo_nTriggerTimeLow, nTriggerTimeLow),
    QUORIN_MEMBER(QUORIN_TRIGGER_INFO_DATA, TriggerInfo_nOriginalTrigger, nOriginalTrigger),
    QUORIN_MEMBER(QUORIN_TRIGGER_INFO_DATA, TriggerInfo_nIsForceOver, nIsForceOver),
    QUORIN_MEMBER(QUORIN_TRIGGER_INFO_DATA, TriggerInfo_nIsMainCam, nIsMainCam),
    QUORIN_MEMBER(QUORIN_TRIGGER_INFO_DATA, TriggerInfo_nHostTimeStamp, nHostTimeStamp),
};
// Everything of a save request but the image bytes and the two enumerations.
inline constexpr Member kSaveImageRead[] = {
    QUORIN_MEMBER(QUORIN_SAVE_IMAGE_PARAM, SaveImageParam_nDataLen, nDataLen),
    QUORIN_MEMBER(QUORIN_SAVE_IMAGE_PARAM, SaveImageParam_nWidth, nWidth),
    QUORIN_MEMBER(QUORIN_SAVE_IMAGE_PARAM, SaveImageParam_nHeight, nHeight),
    QUORIN_MEMBER(QUORIN_SAVE_IMAGE_PARAM, SaveImageParam_nBufferSize, nBufferSize),
    QUORIN_MEMBER(QUORIN_SAVE_IMAGE_PARAM, SaveImageParam_nJpgQuality, nJpgQuality),
    QUORIN_MEMBER(QUORIN_SAVE_IMAGE_PARAM, SaveImageParam_iMethodValue, iMethodValue),
};

// ---------------------------------------------------------------------------
// The frame record (EX2) and its lists. The header is written in three runs, around the pixel
// type and the two lists.
inline constexpr Member kFrameSize[] = {
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nWidth, nWidth),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nHeight, nHeight),
};
inline constexpr Member kFrameCounters[] = {
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nTriggerIndex, nTriggerIndex),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nFrameNum, nFrameNum),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nFrameLen, nFrameLen),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nTimeStampHigh, nTimeStampHigh),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nTimeStampLow, nTimeStampLow),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_bFlaseTrigger, bFlaseTrigger),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nFocusScore, nFocusScore),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_bIsGetCode, bIsGetCode),
};
inline constexpr Member kFrameOrigin[] = {
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nEventID, nEventID),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nChannelID, nChannelID),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nImageCost, nImageCost),
};
// A held frame handed back for its waybills: its header before and after the pixel type.
inline constexpr Member kHeldFrameSizeAndOrigin[] = {
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nWidth, nWidth),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nHeight, nHeight),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nEventID, nEventID),
    QUORIN_MEMBER(QUORIN_IMAGE_OUT_INFO_EX2, FrameEx2_nChannelID, nChannelID),
};

// Corner points: the Java object field and where its point lies in the SDK's code entry.
struct Corner {
  FieldId field;
  size_t offset;
};
inline constexpr Member kPoint[] = {
    QUORIN_MEMBER(QUORIN_POINT_I, PointI_nX, nX),
    QUORIN_MEMBER(QUORIN_POINT_I, PointI_nY, nY),
};
inline constexpr Corner kCodeCorners[] = {
    {F::Code_stCornerLeftTop, offsetof(QUORIN_BCR_INFO_EX, stCornerLeftTop)},
    {F::Code_stCornerRightTop, offsetof(QUORIN_BCR_INFO_EX, stCornerRightTop)},
    {F::Code_stCornerRightBottom, offsetof(QUORIN_BCR_INFO_EX, stCornerRightBottom)},
    {F::Code_stCornerLeftBottom, offsetof(QUORIN_BCR_INFO_EX, stCornerLeftBottom)},
};
// A waybill request sends three corners; the fourth repeats the right-top one, as the request is
// defined to.
inline constexpr Corner kSentCorners[] = {
    {F::Code_stCornerLeftTop, offsetof(QUORIN_BCR_INFO, pt[0])},
    {F::Code_stCornerRightTop, offsetof(QUORIN_BCR_INFO, pt[1])},
    {F::Code_stCornerRightBottom, offsetof(QUORIN_BCR_INFO, pt[2])},
    {F::Code_stCornerRightTop, offsetof(QUORIN_BCR_INFO, pt[3])},
};

#define QUORIN_QUALITY_BITS(member) QUORIN_MEMBER(QUORIN_CODE_INFO, Quality_##member, member),
#define QUORIN_QUALITY_NUMBER(member) QUORIN_MEMBER_AS_NUMBER(QUORIN_CODE_INFO, Quality_##member, member),
inline constexpr Member kQuality[] = {QUORIN_QUALITY_MEMBERS(QUORIN_QUALITY_BITS, QUORIN_QUALITY_BITS)};
// A waybill request sends the first ten grades and eight scores.
inline constexpr Member kQualitySent[] = {QUORIN_QUALITY_MEMBERS(QUORIN_QUALITY_BITS, QUORIN_QUALITY_NUMBER)};
inline constexpr size_t kQualitySentCount = 18;
#undef QUORIN_QUALITY_BITS
#undef QUORIN_QUALITY_NUMBER

// A code entry around its text, corners and quality.
inline constexpr Member kCodeId[] = {QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_nID, nID)};
inline constexpr Member kCodeKind[] = {
    QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_nLen, nLen),
    QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_nBarType, nBarType),
};
#define QUORIN_CODE_EX(member) QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_##member, member),
inline constexpr Member kCodeMeasures[] = {
    QUORIN_CODE_SHARED_MEMBERS(QUORIN_CODE_EX)
    QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_bIsGetQuality, bIsGetQuality),
    QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_nIDRScore, nIDRScore),
};
#undef QUORIN_CODE_EX
inline constexpr Member kCodeOneDQuality[] = {QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_n1DIsGetQuality, n1DIsGetQuality)};
inline constexpr Member kCodeTiming[] = {
    QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_nTotalProcCost, nTotalProcCost),
    QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_nTriggerTimeTvHigh, nTriggerTimeTvHigh),
    QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_nTriggerTimeTvLow, nTriggerTimeTvLow),
    QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_nTriggerTimeUtvHigh, nTriggerTimeUtvHigh),
    QUORIN_MEMBER(QUORIN_BCR_INFO_EX, Code_nTriggerTimeUtvLow, nTriggerTimeUtvLow),
};
// A code a waybill request sends, into the plain code entry.
inline constexpr Member kSentCodeId[] = {
    QUORIN_MEMBER(QUORIN_BCR_INFO, Code_nID, nID),
    QUORIN_MEMBER(QUORIN_BCR_INFO, Code_nLen, nLen),
    QUORIN_MEMBER(QUORIN_BCR_INFO, Code_nBarType, nBarType),
};
#define QUORIN_CODE_PLAIN(member) QUORIN_MEMBER(QUORIN_BCR_INFO, Code_##member, member),
inline constexpr Member kSentCodeMeasures[] = {
    QUORIN_CODE_SHARED_MEMBERS(QUORIN_CODE_PLAIN)
    QUORIN_MEMBER(QUORIN_BCR_INFO, Code_bIsGetQuality, bIsGetQuality),
};
#undef QUORIN_CODE_PLAIN

// A waybill's place in the frame: six floats, written as their bits and sent as numbers.
#define QUORIN_WAYBILL_PLACE(MEMBER) \
  MEMBER(fCenterX) MEMBER(fCenterY) MEMBER(fWidth) MEMBER(fHeight) MEMBER(fAngle) MEMBER(fConfidence)
#define QUORIN_WAYBILL_BITS(member) QUORIN_MEMBER(QUORIN_WAYBILL_INFO, Waybill_##member, member),
#define QUORIN_WAYBILL_NUMBER(member) QUORIN_MEMBER_AS_NUMBER(QUORIN_WAYBILL_INFO, Waybill_##member, member),
inline constexpr Member kWaybillPlace[] = {QUORIN_WAYBILL_PLACE(QUORIN_WAYBILL_BITS)};
inline constexpr Member kWaybillPlaceSent[] = {QUORIN_WAYBILL_PLACE(QUORIN_WAYBILL_NUMBER)};
#undef QUORIN_WAYBILL_BITS
#undef QUORIN_WAYBILL_NUMBER
#undef QUORIN_WAYBILL_PLACE

// ---------------------------------------------------------------------------
// The legacy frame record and its code entries.
inline constexpr Member kLegacyFrameSize[] = {
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_nWidth, nWidth),
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_nHeight, nHeight),
};
inline constexpr Member kLegacyFrameCounters[] = {
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_nTriggerIndex, nTriggerIndex),
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_nFrameNum, nFrameNum),
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_nFrameLen, nFrameLen),
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_nTimeStampHigh, nTimeStampHigh),
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_nTimeStampLow, nTimeStampLow),
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_nChannelID, nChannelID),
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_nImageCost, nImageCost),
};
inline constexpr Member kLegacyFrameTrigger[] = {
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_bFlaseTrigger, bFlaseTrigger),
    QUORIN_MEMBER(QUORIN_FRAME_OUT_INFO, LegacyFrame_nFocusScore, nFocusScore),
};
inline constexpr Member kLegacyCodeId[] = {QUORIN_MEMBER(QUORIN_BcrInfo, LegacyCode_nID, nID)};
inline constexpr Member kLegacyCodeKind[] = {
    QUORIN_MEMBER(QUORIN_BcrInfo, LegacyCode_nLen, nLen),
    QUORIN_MEMBER(QUORIN_BcrInfo, LegacyCode_nBarType, nBarType),
};
#define QUORIN_CODE_LEGACY(member) QUORIN_MEMBER(QUORIN_BcrInfo, LegacyCode_##member, member),
inline constexpr Member kLegacyCodeMeasures[] = {QUORIN_CODE_SHARED_MEMBERS(QUORIN_CODE_LEGACY)};
#undef QUORIN_CODE_LEGACY
inline constexpr Member kLegacyPoint[] = {
    QUORIN_MEMBER(QUORIN_POINT_I, LegacyPoint_x, nX),
    QUORIN_MEMBER(QUORIN_POINT_I, LegacyPoint_y, nY),
};

}  // namespace jmap
