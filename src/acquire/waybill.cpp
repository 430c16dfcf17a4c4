// Cutting the waybill images out of a frame the Java program holds: the frame object goes back
// to the SDK as a native record, the waybill list comes back into the same object.
#include <algorithm>
#include <cstdlib>
#include <memory>

#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "acquire/frame_record.h"
#include "acquire/java_list.h"
#include "bridge.h"
#include "jmap/records.h"

namespace {

struct FreeBlock {
  void operator()(void* block) const { std::free(block); }
};
template <typename Record>
using Block = std::unique_ptr<Record, FreeBlock>;

template <typename Record>
Block<Record> ZeroedBlock() {
  return Block<Record>(static_cast<Record*>(std::calloc(1, sizeof(Record))));
}

using jmap::ClassId;
using jmap::JavaObject;

// The header words of the frame object; false when it has no pixel type.
bool ReadHeader(JNIEnv* env, const JavaObject& frame, QUORIN_IMAGE_OUT_INFO_EX2* info) {
  jmap::ReadMembers(frame, info, jmap::kHeldFrameSizeAndOrigin);
  int pixelType = 0;
  if (!EnumNumber(env, frame, F::FrameEx2_enPixelType, ClassId::PixelType, &pixelType)) return false;
  info->enPixelType = static_cast<QuorinGvspPixelType>(pixelType);
  jmap::ReadMembers(frame, info, jmap::kFrameCounters);
  return true;
}

void ReadCorners(JNIEnv* env, const JavaObject& entry, QUORIN_BCR_INFO* code) {
  for (const jmap::Corner& corner : jmap::kSentCorners) {
    ScopedLocalRef<jobject> point(env, entry.GetObject(corner.field));
    if (point) jmap::ReadMembers(JavaObject(env, point.get()), reinterpret_cast<char*>(code) + corner.offset, jmap::kPoint);
  }
}

void ReadQuality(JNIEnv* env, const JavaObject& entry, QUORIN_CODE_INFO* quality) {
  ScopedLocalRef<jobject> source(env, entry.GetObject(F::Code_stCodeQuality));
  if (source) jmap::ReadMembers(JavaObject(env, source.get()), quality, jmap::kQualitySent, jmap::kQualitySentCount);
}

// The code text itself does not travel, only its length.
void ReadCode(JNIEnv* env, const JavaObject& entry, QUORIN_BCR_INFO* code) {
  jmap::ReadMembers(entry, code, jmap::kSentCodeId);
  ReadCorners(env, entry, code);
  ReadQuality(env, entry, &code->stCodeQuality);
  jmap::ReadMembers(entry, code, jmap::kSentCodeMeasures);
}

// Entries are read up to the count the object states, the list's own size and the native
// list's capacity, whichever is smallest.
template <typename ReadEntry>
void ReadEntries(JNIEnv* env, jobject owner, jmap::FieldId field, unsigned int count, unsigned int capacity,
                 ReadEntry readEntry) {
  ListReader list(env, owner, field);
  const unsigned int readable = std::min({count, capacity, static_cast<unsigned int>(std::max(list.size(), 0))});
  for (unsigned int i = 0; i < readable; ++i) {
    ScopedLocalRef<jobject> entry(env, list.At(static_cast<jint>(i)));
    if (!entry) return;
    readEntry(JavaObject(env, entry.get()), i);
  }
}

void ReadCodes(JNIEnv* env, jobject codeList, QUORIN_RESULT_BCR* plain, QUORIN_RESULT_BCR_EX* extended) {
  const auto count = static_cast<unsigned int>(jmap::Get(env, codeList, F::CodeList_nCodeNum));
  plain->nCodeNum = std::min<unsigned int>(count, QUORIN_MAX_BCR_NUM);
  extended->nCodeNum = std::min<unsigned int>(count, QUORIN_MAX_BCR_EX_NUM);
  ReadEntries(env, codeList, F::CodeList_stBcrInfoEx, plain->nCodeNum, QUORIN_MAX_BCR_NUM,
              [&](const JavaObject& entry, unsigned int i) { ReadCode(env, entry, &plain->stBcrInfo[i]); });
}

void ReadWaybills(JNIEnv* env, const JavaObject& frame, QUORIN_WAYBILL_LIST* waybills) {
  ScopedLocalRef<jobject> list(env, frame.GetObject(F::FrameEx2_pstWaybillList));
  if (!list) return;
  const JavaObject owner(env, list.get());
  waybills->nWaybillNum = std::min<unsigned int>(static_cast<unsigned int>(owner.Get(F::WaybillList_nWaybillNum)),
                                                 QUORIN_MAX_WAYBILL_NUM);
  int imageType = 0;  // none set: undefined
  EnumNumber(env, owner, F::WaybillList_enWaybillImageType, ClassId::ImageType, &imageType);
  waybills->enWaybillImageType = static_cast<QUORIN_IMAGE_TYPE>(imageType);
  ReadEntries(env, list.get(), F::WaybillList_stWaybillInfo, waybills->nWaybillNum, QUORIN_MAX_WAYBILL_NUM,
              [&](const JavaObject& entry, unsigned int i) {
                jmap::ReadMembers(entry, &waybills->stWaybillInfo[i], jmap::kWaybillPlaceSent);
              });
}

}  // namespace

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetWayBillInfoEx(JNIEnv* env, jclass,
                                                                                 jobject handle, jbyteArray data,
                                                                                 jobject frame) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  if (data == nullptr || frame == nullptr) {
    QN_RunInfo("mt test pData and stgrameinfo is null");
    return kStatusBadArgument;
  }
  void* sdkHandle = SdkHandleOf(env, handle);
  ScopedByteArrayElements image(env, data, 0);
  QUORIN_IMAGE_OUT_INFO_EX2 info{};
  const JavaObject frameObject(env, frame);
  ScopedLocalRef<jobject> codeList(env, frameObject.GetObject(F::FrameEx2_pstCodeListEx));
  const bool headerRead = ReadHeader(env, frameObject, &info);
  RETURN_IF_PENDING(env, kStatusBadArgument);
  if (!headerRead || !codeList) {
    // Intended: these refusals leave the image pinned, as this entry point is defined to.
    image.leak();
    return kStatusBadArgument;
  }
  auto plainCodes = ZeroedBlock<QUORIN_RESULT_BCR>();
  auto extendedCodes = ZeroedBlock<QUORIN_RESULT_BCR_EX>();
  auto waybills = ZeroedBlock<QUORIN_WAYBILL_LIST>();
  if (!plainCodes || !extendedCodes || !waybills) return kStatusBadArgument;
  ReadCodes(env, codeList.get(), plainCodes.get(), extendedCodes.get());
  ReadWaybills(env, frameObject, waybills.get());
  // An entry of another class or a list that throws: its error is what Java sees.
  RETURN_IF_PENDING(env, kStatusBadArgument);
  // The SDK reads nFrameLen bytes from the image; the array must hold every one of them.
  if (info.nFrameLen > static_cast<unsigned int>(env->GetArrayLength(data))) return kStatusBadArgument;
  info.pstCodeList = plainCodes.get();
  info.pstCodeListEx = extendedCodes.get();
  info.pstWaybillList = waybills.get();

  const int status = QUORIN_GetWayBillInfoEx(sdkHandle, image.data(), &info);
  if (status != 0) return status;  // the Java objects stay untouched
  LocalFrameClasses classes(env);
  FillWaybillList(env, waybills.get(), frame, classes.get());
  RETURN_IF_PENDING(env, kStatusBadArgument);
  return kStatusOk;
}
