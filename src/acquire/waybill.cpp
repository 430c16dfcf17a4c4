// Cutting the waybill images out of a frame the Java program holds: the frame object goes back
// to the SDK as a native record, the waybill list comes back into the same object.
#include <algorithm>
#include <cstdlib>
#include <memory>

#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "acquire/frame_record.h"
#include "acquire/java_list.h"
#include "bridge.h"

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

unsigned int IntField(JNIEnv* env, jobject obj, const char* name) {
  return static_cast<unsigned int>(GetFieldValue(env, obj, name, jsig::kInt));
}
unsigned short ShortField(JNIEnv* env, jobject obj, const char* name) {
  return static_cast<unsigned short>(GetFieldValue(env, obj, name, jsig::kShort));
}
unsigned char BoolField(JNIEnv* env, jobject obj, const char* name) {
  return GetFieldValue(env, obj, name, jsig::kBoolean) != 0 ? 1 : 0;
}
// Floats go to the SDK as the number their bit pattern reads as an integer (1.5f arrives as
// 1069547520.0f): the values the SDK has always been sent in this direction, kept as they are.
float FloatFieldAsSent(JNIEnv* env, jobject obj, const char* name) {
  return static_cast<float>(GetFieldValue(env, obj, name, jsig::kFloat));
}

// The header words of the frame object; false when it has no pixel type.
bool ReadHeader(JNIEnv* env, jobject frame, QUORIN_IMAGE_OUT_INFO_EX2* info) {
  info->nWidth = ShortField(env, frame, "nWidth");
  info->nHeight = ShortField(env, frame, "nHeight");
  info->nEventID = IntField(env, frame, "nEventID");
  info->nChannelID = IntField(env, frame, "nChannelID");
  int pixelType = 0;
  if (!EnumNumber(env, frame, "enPixelType", jsig::kPixelType, jclassname::kPixelType, &pixelType)) return false;
  info->enPixelType = static_cast<QuorinGvspPixelType>(pixelType);
  info->nTriggerIndex = IntField(env, frame, "nTriggerIndex");
  info->nFrameNum = IntField(env, frame, "nFrameNum");
  info->nFrameLen = IntField(env, frame, "nFrameLen");
  info->nTimeStampHigh = IntField(env, frame, "nTimeStampHigh");
  info->nTimeStampLow = IntField(env, frame, "nTimeStampLow");
  info->bFlaseTrigger = IntField(env, frame, "bFlaseTrigger");
  info->nFocusScore = IntField(env, frame, "nFocusScore");
  info->bIsGetCode = BoolField(env, frame, "bIsGetCode");
  return true;
}

void ReadCorner(JNIEnv* env, jobject entry, const char* field, QUORIN_POINT_I* point) {
  ScopedLocalRef<jobject> corner(env, GetObjectFieldValue(env, entry, field, jsig::kPointI));
  if (!corner) return;
  point->nX = static_cast<int>(IntField(env, corner.get(), "nX"));
  point->nY = static_cast<int>(IntField(env, corner.get(), "nY"));
}

void ReadQuality(JNIEnv* env, jobject entry, QUORIN_CODE_INFO* quality) {
  ScopedLocalRef<jobject> source(env, GetObjectFieldValue(env, entry, "stCodeQuality", jsig::kCodeInfo));
  if (!source) return;
  for (size_t i = 0; i < kSentQualityFields; ++i) {
    const QualityField& field = kQualityFields[i];
    char* word = reinterpret_cast<char*>(quality) + field.offset;
    if (field.sig[0] == 'F') {  // a score
      const float score = FloatFieldAsSent(env, source.get(), field.name);
      std::memcpy(word, &score, sizeof score);
    } else {
      const unsigned int grade = IntField(env, source.get(), field.name);
      std::memcpy(word, &grade, sizeof grade);
    }
  }
}

// The code text itself does not travel, only its length.
void ReadCode(JNIEnv* env, jobject entry, QUORIN_BCR_INFO* code) {
  code->nID = IntField(env, entry, "nID");
  code->nLen = IntField(env, entry, "nLen");
  code->nBarType = IntField(env, entry, "nBarType");
  ReadCorner(env, entry, "stCornerLeftTop", &code->pt[0]);
  ReadCorner(env, entry, "stCornerRightTop", &code->pt[1]);
  ReadCorner(env, entry, "stCornerRightBottom", &code->pt[2]);
  // The fourth corner repeats the right-top one: what the SDK has always been sent.
  ReadCorner(env, entry, "stCornerRightTop", &code->pt[3]);
  ReadQuality(env, entry, &code->stCodeQuality);
  code->nAngle = static_cast<int>(IntField(env, entry, "nAngle"));
  code->nMainPackageId = IntField(env, entry, "nMainPackageId");
  code->nSubPackageId = IntField(env, entry, "nSubPackageId");
  code->sAppearCount = ShortField(env, entry, "sAppearCount");
  code->sPPM = ShortField(env, entry, "sPPM");
  code->sAlgoCost = ShortField(env, entry, "sAlgoCost");
  code->sSharpness = ShortField(env, entry, "sSharpness");
  code->bIsGetQuality = BoolField(env, entry, "bIsGetQuality");
}

// Entries are read up to the count the object states, the list's own size and the native
// list's capacity, whichever is smallest.
template <typename ReadEntry>
void ReadEntries(JNIEnv* env, jobject owner, const char* field, unsigned int count, unsigned int capacity,
                 ReadEntry readEntry) {
  ListReader list(env, owner, field);
  const unsigned int readable = std::min({count, capacity, static_cast<unsigned int>(std::max(list.size(), 0))});
  for (unsigned int i = 0; i < readable; ++i) {
    ScopedLocalRef<jobject> entry(env, list.At(static_cast<jint>(i)));
    if (!entry) return;
    readEntry(entry.get(), i);
  }
}

void ReadCodes(JNIEnv* env, jobject codeList, QUORIN_RESULT_BCR* plain, QUORIN_RESULT_BCR_EX* extended) {
  const unsigned int count = IntField(env, codeList, "nCodeNum");
  plain->nCodeNum = std::min<unsigned int>(count, QUORIN_MAX_BCR_NUM);
  extended->nCodeNum = std::min<unsigned int>(count, QUORIN_MAX_BCR_EX_NUM);
  ReadEntries(env, codeList, "stBcrInfoEx", plain->nCodeNum, QUORIN_MAX_BCR_NUM,
              [&](jobject entry, unsigned int i) { ReadCode(env, entry, &plain->stBcrInfo[i]); });
}

void ReadWaybills(JNIEnv* env, jobject frame, QUORIN_WAYBILL_LIST* waybills) {
  ScopedLocalRef<jobject> list(env, GetObjectFieldValue(env, frame, "pstWaybillList", jsig::kWaybillList));
  if (!list) return;
  waybills->nWaybillNum = std::min<unsigned int>(IntField(env, list.get(), "nWaybillNum"), QUORIN_MAX_WAYBILL_NUM);
  int imageType = 0;  // none set: undefined
  EnumNumber(env, list.get(), "enWaybillImageType", jsig::kImageType, jclassname::kImageType, &imageType);
  waybills->enWaybillImageType = static_cast<QUORIN_IMAGE_TYPE>(imageType);
  ReadEntries(env, list.get(), "stWaybillInfo", waybills->nWaybillNum, QUORIN_MAX_WAYBILL_NUM,
              [&](jobject entry, unsigned int i) {
                QUORIN_WAYBILL_INFO& waybill = waybills->stWaybillInfo[i];
                waybill.fCenterX = FloatFieldAsSent(env, entry, "fCenterX");
                waybill.fCenterY = FloatFieldAsSent(env, entry, "fCenterY");
                waybill.fWidth = FloatFieldAsSent(env, entry, "fWidth");
                waybill.fHeight = FloatFieldAsSent(env, entry, "fHeight");
                waybill.fAngle = FloatFieldAsSent(env, entry, "fAngle");
                waybill.fConfidence = FloatFieldAsSent(env, entry, "fConfidence");
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
  ScopedLocalRef<jobject> codeList(env, GetObjectFieldValue(env, frame, "pstCodeListEx", jsig::kResultBcrEx));
  const bool headerRead = ReadHeader(env, frame, &info);
  RETURN_IF_PENDING(env, kStatusBadArgument);
  if (!headerRead || !codeList) {
    // These refusals have always left the image pinned; kept so, as callers may rely on it.
    image.leak();
    return kStatusBadArgument;
  }
  auto plainCodes = ZeroedBlock<QUORIN_RESULT_BCR>();
  auto extendedCodes = ZeroedBlock<QUORIN_RESULT_BCR_EX>();
  auto waybills = ZeroedBlock<QUORIN_WAYBILL_LIST>();
  if (!plainCodes || !extendedCodes || !waybills) return kStatusBadArgument;
  ReadCodes(env, codeList.get(), plainCodes.get(), extendedCodes.get());
  ReadWaybills(env, frame, waybills.get());
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
