// Frame records under fuzzing: native EX2 records with arbitrary counts, code texts (cut,
// unterminated, GBK) and image lengths into Java objects, checked field by field.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <memory>
#include <set>
#include <vector>

#include "acquire/frame_record.h"
#include "fuzz_jvm.h"

// The Java side as the checks read it, spelt out here rather than taken from the bridge's map.
namespace jsig {
constexpr const char* kString = "Ljava/lang/String;";
constexpr const char* kByteArray = "[B";
constexpr const char* kPixelType = "LQuorinCtrlWrapper/QuorinCtrlDefine$QuorinGvspPixelType;";
constexpr const char* kImageType = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_IMAGE_TYPE;";
constexpr const char* kResultBcrEx = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_RESULT_BCR_EX;";
constexpr const char* kWaybillList = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_WAYBILL_LIST;";
constexpr const char* kPointI = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_POINT_I;";
constexpr const char* kCodeInfo = "LQuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_CODE_INFO;";
}  // namespace jsig
namespace jclassname {
constexpr const char* kPixelType = "QuorinCtrlWrapper/QuorinCtrlDefine$QuorinGvspPixelType";
constexpr const char* kImageType = "QuorinCtrlWrapper/QuorinCtrlDefine$QUORIN_IMAGE_TYPE";
}  // namespace jclassname

namespace {

using quorin_fuzz::Jvm;
using quorin_fuzz::StrictUtf8;

const std::string kArrayListSig = "Ljava/util/ArrayList;";

// The SDK's records behind one frame; every block is its own allocation, so a read past a
// list's capacity or past an image's length is caught.
struct NativeFrame {
  QUORIN_IMAGE_OUT_INFO_EX2 info{};
  std::unique_ptr<QUORIN_RESULT_BCR_EX> codes;
  std::unique_ptr<QUORIN_WAYBILL_LIST> waybills;
  std::vector<std::unique_ptr<uint8_t[]>> images;
};

// Counts that matter: none, a few, the capacity, one past it and anything at all. Full lists
// cost a hundred times a short one, so they come now and then.
unsigned int Count(FuzzedDataProvider& in, unsigned int capacity) {
  switch (in.ConsumeIntegralInRange(0, 31)) {
    case 0: return capacity;
    case 1: return capacity + 1;
    case 2: return in.ConsumeIntegral<unsigned int>();
    default: return in.ConsumeIntegralInRange(0u, 4u);
  }
}

// A code text: terminated inside the array, or filling all of it with no terminator.
void FillCodeText(FuzzedDataProvider& in, char (&code)[sizeof(QUORIN_BCR_INFO_EX::chCode)]) {
  const bool unterminated = in.ConsumeBool();
  const std::string text = in.ConsumeRandomLengthString(sizeof code - 1);
  if (!unterminated) {
    std::memcpy(code, text.c_str(), text.size() + 1);
    return;
  }
  for (size_t i = 0; i < sizeof code; ++i) {
    const char c = text.empty() ? 'A' : text[i % text.size()];
    code[i] = c == '\0' ? '\xD6' : c;
  }
}

// Every number of a code as the input gives it (the text's bytes are not drawn twice); the text
// as FillCodeText makes it.
void FillCode(FuzzedDataProvider& in, QUORIN_BCR_INFO_EX& code) {
  FillCodeText(in, code.chCode);
  in.ConsumeData(&code.nID, sizeof code.nID);
  in.ConsumeData(&code.nLen, sizeof code - offsetof(QUORIN_BCR_INFO_EX, nLen));
}

void FillWaybill(FuzzedDataProvider& in, QUORIN_WAYBILL_INFO& waybill, NativeFrame& frame) {
  in.ConsumeData(&waybill, sizeof waybill);
  if (in.ConsumeIntegralInRange(0, 7) == 0) {  // no image: the length alone, whatever it says
    waybill.pImageWaybill = nullptr;
    waybill.nImageLen = in.ConsumeIntegral<unsigned int>();
    return;
  }
  const std::vector<uint8_t> bytes = in.ConsumeBytes<uint8_t>(in.ConsumeIntegralInRange(0, 600));
  frame.images.emplace_back(new uint8_t[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), frame.images.back().get());
  waybill.pImageWaybill = frame.images.back().get();
  waybill.nImageLen = static_cast<unsigned int>(bytes.size());
}

NativeFrame MakeFrame(FuzzedDataProvider& in) {
  NativeFrame frame;
  QUORIN_IMAGE_OUT_INFO_EX2& info = frame.info;
  in.ConsumeData(&info, sizeof info);
  // Mostly numbers a constant carries (Mono8, Jpeg, Undefined), else what the input gave.
  static const unsigned int kPixelTypes[] = {0x01080001u, 0x80180001u, 0xFFFFFFFFu};
  const unsigned int pixelChoice = in.ConsumeIntegralInRange(0u, 3u);
  if (pixelChoice < 3) info.enPixelType = static_cast<QuorinGvspPixelType>(kPixelTypes[pixelChoice]);
  if (in.ConsumeIntegralInRange(0, 7) != 0) {
    frame.codes.reset(new QUORIN_RESULT_BCR_EX{});
    frame.codes->nCodeNum = Count(in, QUORIN_MAX_BCR_EX_NUM);
    const unsigned int filled = std::min<unsigned int>(frame.codes->nCodeNum, QUORIN_MAX_BCR_EX_NUM);
    for (unsigned int i = 0; i < filled; ++i) FillCode(in, frame.codes->stBcrInfoEx[i]);
  }
  if (in.ConsumeIntegralInRange(0, 7) != 0) {
    frame.waybills.reset(new QUORIN_WAYBILL_LIST{});
    frame.waybills->nWaybillNum = Count(in, QUORIN_MAX_WAYBILL_NUM);
    frame.waybills->enWaybillImageType = in.ConsumeIntegralInRange(0u, 6u);
    const unsigned int filled = std::min<unsigned int>(frame.waybills->nWaybillNum, QUORIN_MAX_WAYBILL_NUM);
    for (unsigned int i = 0; i < filled; ++i) FillWaybill(in, frame.waybills->stWaybillInfo[i], frame);
  }
  info.pstCodeList = nullptr;
  info.pstCodeListEx = frame.codes.get();
  info.pstWaybillList = frame.waybills.get();
  return frame;
}

// ---------------------------------------------------------------------------
// Checks of the Java side against the native record.

struct Word {
  const char* name;
  size_t offset;
};
#define FRAME(field) Word{#field, offsetof(QUORIN_IMAGE_OUT_INFO_EX2, field)}
#define CODE(field) Word{#field, offsetof(QUORIN_BCR_INFO_EX, field)}
#define QUALITY(field) Word{#field, offsetof(QUORIN_CODE_INFO, field)}
#define WAYBILL(field) Word{#field, offsetof(QUORIN_WAYBILL_INFO, field)}
const Word kFrameWords[] = {FRAME(nTriggerIndex),  FRAME(nFrameNum),   FRAME(nFrameLen), FRAME(nTimeStampHigh),
                            FRAME(nTimeStampLow),  FRAME(bFlaseTrigger), FRAME(nFocusScore), FRAME(nEventID),
                            FRAME(nChannelID),     FRAME(nImageCost)};
const Word kCodeWords[] = {CODE(nID),           CODE(nLen),          CODE(nBarType),           CODE(nAngle),
                           CODE(nMainPackageId), CODE(nSubPackageId), CODE(nIDRScore),          CODE(nTotalProcCost),
                           CODE(nTriggerTimeTvHigh), CODE(nTriggerTimeTvLow), CODE(nTriggerTimeUtvHigh),
                           CODE(nTriggerTimeUtvLow)};
const Word kCodeShorts[] = {CODE(sAppearCount), CODE(sPPM), CODE(sAlgoCost), CODE(sSharpness)};
// Grades and scores at both ends and in the middle of the quality record.
const Word kQualityGrades[] = {QUALITY(nOverQuality), QUALITY(nRMGrade), QUALITY(n1DQZGrade)};
const Word kQualityScores[] = {QUALITY(fSCScore), QUALITY(fRMScore), QUALITY(f1DQZScore)};
const Word kWaybillScores[] = {WAYBILL(fCenterX), WAYBILL(fCenterY), WAYBILL(fWidth),
                               WAYBILL(fHeight),  WAYBILL(fAngle),   WAYBILL(fConfidence)};
#undef FRAME
#undef CODE
#undef QUALITY
#undef WAYBILL

template <typename T = uint32_t>
T At(const void* record, size_t offset) {
  T value;
  std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
  return value;
}

uint32_t Bits(float value) { return At(&value, 0); }

template <size_t N>
void ExpectWords(Jvm& jvm, jobject object, const void* record, const Word (&words)[N]) {
  for (const Word& word : words) {
    EXPECT_EQ(static_cast<uint32_t>(jvm.Int(object, word.name)), At(record, word.offset)) << word.name;
  }
}

template <size_t N>
void ExpectScores(Jvm& jvm, jobject object, const void* record, const Word (&words)[N]) {
  for (const Word& word : words) {
    EXPECT_EQ(Bits(jvm.Float(object, word.name)), At(record, word.offset)) << word.name;
  }
}

// The SDK numbers the constants of an enumeration carry.
std::set<uint32_t> EnumNumbers(Jvm& jvm, const char* className) {
  JNIEnv* env = jvm.env();
  ScopedLocalFrame frame(env, 64);
  jclass cls = env->FindClass(className);
  const std::string sig = std::string("()[L") + className + ";";
  auto constants = static_cast<jobjectArray>(env->CallStaticObjectMethod(cls, env->GetStaticMethodID(cls, "values", sig.c_str())));
  jvm.ExpectQuiet(className);
  std::set<uint32_t> numbers;
  for (jsize i = 0; i < env->GetArrayLength(constants); ++i) {
    numbers.insert(static_cast<uint32_t>(jvm.Int(env->GetObjectArrayElement(constants, i), "nValue")));
  }
  return numbers;
}

// A number some constant carries selects it; any other leaves the field as it was.
void ExpectEnum(Jvm& jvm, jobject owner, const char* field, const char* sig, const std::set<uint32_t>& numbers,
                uint32_t number, jobject before) {
  jobject constant = jvm.Object(owner, field, sig);
  if (numbers.count(number) != 0) {
    ASSERT_NE(constant, nullptr) << field << " for 0x" << std::hex << number;
    EXPECT_EQ(static_cast<uint32_t>(jvm.Int(constant, "nValue")), number) << field;
  } else {
    EXPECT_TRUE(jvm.env()->IsSameObject(constant, before)) << field << " changed for 0x" << std::hex << number;
  }
}

void CheckCode(Jvm& jvm, jobject entry, const QUORIN_BCR_INFO_EX& code, OneDQuality oneDQuality) {
  ExpectWords(jvm, entry, &code, kCodeWords);
  for (const Word& word : kCodeShorts) {
    EXPECT_EQ(static_cast<uint16_t>(jvm.Short(entry, word.name)), At<uint16_t>(&code, word.offset)) << word.name;
  }
  EXPECT_EQ(jvm.Bool(entry, "bIsGetQuality"), code.bIsGetQuality != 0);
  // Left out, an entry keeps what its constructor gave it.
  EXPECT_EQ(static_cast<uint32_t>(jvm.Int(entry, "n1DIsGetQuality")),
            oneDQuality == OneDQuality::kWritten ? code.n1DIsGetQuality : 0u);
  const std::pair<const char*, const QUORIN_POINT_I*> corners[] = {
      {"stCornerLeftTop", &code.stCornerLeftTop},
      {"stCornerRightTop", &code.stCornerRightTop},
      {"stCornerRightBottom", &code.stCornerRightBottom},
      {"stCornerLeftBottom", &code.stCornerLeftBottom}};
  for (const auto& [name, point] : corners) {
    jobject corner = jvm.Object(entry, name, jsig::kPointI);
    EXPECT_EQ(jvm.Int(corner, "nX"), point->nX) << name;
    EXPECT_EQ(jvm.Int(corner, "nY"), point->nY) << name;
  }
  jobject quality = jvm.Object(entry, "stCodeQuality", jsig::kCodeInfo);
  ExpectWords(jvm, quality, &code.stCodeQuality, kQualityGrades);
  ExpectScores(jvm, quality, &code.stCodeQuality, kQualityScores);

  // The text never reaches past its array; well-formed UTF-8 arrives byte for byte.
  const size_t length = strnlen(code.chCode, sizeof code.chCode);
  auto text = static_cast<jstring>(jvm.Object(entry, "chCode", jsig::kString));
  ASSERT_NE(text, nullptr);
  EXPECT_LE(static_cast<size_t>(jvm.env()->GetStringLength(text)), length);
  if (StrictUtf8(code.chCode, length)) EXPECT_EQ(jvm.ModifiedUtf8(text), std::string(code.chCode, length));
}

void CheckWaybill(Jvm& jvm, jobject entry, const QUORIN_WAYBILL_INFO& waybill) {
  ExpectScores(jvm, entry, &waybill, kWaybillScores);
  const bool copied = waybill.pImageWaybill != nullptr && waybill.nImageLen <= static_cast<unsigned int>(INT_MAX);
  EXPECT_EQ(jvm.Bytes(jvm.Object(entry, "pImageWaybill", jsig::kByteArray)),
            copied ? std::string(reinterpret_cast<const char*>(waybill.pImageWaybill), waybill.nImageLen) : "");
  EXPECT_EQ(static_cast<uint32_t>(jvm.Int(entry, "nImageLen")), waybill.nImageLen);
}

// A list in Java: its count equals its size, which is the native count bounded by the capacity.
template <typename Entry, typename Check>
void CheckList(Jvm& jvm, jobject owner, const char* countField, const char* listField, const Entry* entries,
               unsigned int nativeCount, unsigned int capacity, Check check) {
  const unsigned int expected = entries ? std::min(nativeCount, capacity) : 0;
  EXPECT_EQ(static_cast<uint32_t>(jvm.Int(owner, countField)), expected) << countField;
  jobject list = jvm.Object(owner, listField, kArrayListSig);
  ASSERT_EQ(static_cast<unsigned int>(jvm.ListSize(list)), expected) << listField;
  for (unsigned int i = 0; i < expected; ++i) {
    ScopedLocalFrame frame(jvm.env(), 64);
    check(jvm.ListGet(list, static_cast<int>(i)), entries[i]);
  }
}

struct Enums {
  std::set<uint32_t> pixelTypes;
  std::set<uint32_t> imageTypes;
};

void CheckFrame(Jvm& jvm, const Enums& enums, const NativeFrame& frame, jobject target, OneDQuality oneDQuality,
                jobject pixelBefore, jobject imageTypeBefore) {
  ScopedLocalFrame locals(jvm.env(), 256);
  const QUORIN_IMAGE_OUT_INFO_EX2& info = frame.info;
  EXPECT_EQ(static_cast<uint16_t>(jvm.Short(target, "nWidth")), info.nWidth);
  EXPECT_EQ(static_cast<uint16_t>(jvm.Short(target, "nHeight")), info.nHeight);
  EXPECT_EQ(jvm.Bool(target, "bIsGetCode"), info.bIsGetCode != 0);
  ExpectWords(jvm, target, &info, kFrameWords);
  ExpectEnum(jvm, target, "enPixelType", jsig::kPixelType, enums.pixelTypes, info.enPixelType, pixelBefore);

  jobject codes = jvm.Object(target, "pstCodeListEx", jsig::kResultBcrEx);
  CheckList(jvm, codes, "nCodeNum", "stBcrInfoEx", info.pstCodeListEx ? info.pstCodeListEx->stBcrInfoEx : nullptr,
            info.pstCodeListEx ? info.pstCodeListEx->nCodeNum : 0, QUORIN_MAX_BCR_EX_NUM,
            [&](jobject entry, const QUORIN_BCR_INFO_EX& code) { CheckCode(jvm, entry, code, oneDQuality); });

  jobject waybills = jvm.Object(target, "pstWaybillList", jsig::kWaybillList);
  const QUORIN_WAYBILL_LIST* list = info.pstWaybillList;
  // Without a native list the image type stays as it was.
  ExpectEnum(jvm, waybills, "enWaybillImageType", jsig::kImageType, list ? enums.imageTypes : std::set<uint32_t>{},
             list ? list->enWaybillImageType : 0, imageTypeBefore);
  CheckList(jvm, waybills, "nWaybillNum", "stWaybillInfo", list ? list->stWaybillInfo : nullptr,
            list ? list->nWaybillNum : 0, QUORIN_MAX_WAYBILL_NUM,
            [&](jobject entry, const QUORIN_WAYBILL_INFO& waybill) { CheckWaybill(jvm, entry, waybill); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Jvm& jvm = Jvm::Instance();
  JNIEnv* env = jvm.env();
  static const Enums enums{EnumNumbers(jvm, jclassname::kPixelType), EnumNumbers(jvm, jclassname::kImageType)};
  // One object refilled by every conversion, as the image callback's is, beside fresh ones.
  static jobject reused = env->NewGlobalRef(jvm.NewDefine("QUORIN_IMAGE_OUT_INFO_EX2"));

  FuzzedDataProvider in(data, size);
  const bool fresh = in.ConsumeBool();
  const OneDQuality oneDQuality = in.ConsumeBool() ? OneDQuality::kWritten : OneDQuality::kLeftAsConstructed;
  const NativeFrame frame = MakeFrame(in);

  ScopedLocalFrame locals(env, 16);
  jobject target = fresh ? jvm.NewDefine("QUORIN_IMAGE_OUT_INFO_EX2") : reused;
  jobject pixelBefore = jvm.Object(target, "enPixelType", jsig::kPixelType);
  jobject waybillsBefore = jvm.Object(target, "pstWaybillList", jsig::kWaybillList);
  jobject imageTypeBefore = jvm.Object(waybillsBefore, "enWaybillImageType", jsig::kImageType);
  {
    // The checker warns once a frame holds 32 references more than it asked for: a frame of
    // one makes a list that keeps a reference per entry stand out.
    ScopedLocalFrame conversion(env, 1);
    LocalFrameClasses classes(env);
    FillImageOutInfoEx2(env, frame.info, target, classes.get(), oneDQuality);
    jvm.ExpectQuiet("FillImageOutInfoEx2");
  }
  CheckFrame(jvm, enums, frame, target, oneDQuality, pixelBefore, imageTypeBefore);
  jvm.ExpectQuiet("the checks");
  return 0;
}
