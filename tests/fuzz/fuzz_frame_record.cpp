// Frame records under fuzzing: native EX2 records with arbitrary counts, code texts (cut,
// unterminated, GBK) and image lengths into Java objects, checked field by field.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <set>
#include <vector>

#include "acquire/frame_record.h"
#include "fuzz_jvm.h"

namespace {

using quorin_fuzz::Jvm;

// The Java side as the checks read it, spelt out here rather than taken from the bridge's map.
std::string Sig(const char* nested) { return "L" + quorin_test::Define(nested) + ";"; }

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

// A code: its text terminated inside the array or filling all of it, then every number as the
// input gives it (the text's bytes are not drawn twice).
void FillCode(FuzzedDataProvider& in, QUORIN_BCR_INFO_EX& code) {
  const bool unterminated = in.ConsumeBool();
  const std::string text = in.ConsumeRandomLengthString(sizeof code.chCode - 1);
  std::memcpy(code.chCode, text.c_str(), text.size() + 1);
  for (size_t i = 0; unterminated && i < sizeof code.chCode; ++i) {
    const char c = text.empty() ? 'A' : text[i % text.size()];
    code.chCode[i] = c == '\0' ? '\xD6' : c;
  }
  in.ConsumeData(&code.nID, sizeof code.nID);
  in.ConsumeData(&code.nLen, sizeof code - offsetof(QUORIN_BCR_INFO_EX, nLen));
}

void FillWaybill(FuzzedDataProvider& in, QUORIN_WAYBILL_INFO& waybill, NativeFrame& frame) {
  in.ConsumeData(&waybill, sizeof waybill);
  waybill.pImageWaybill = nullptr;  // no image: the length alone, whatever it says
  if (in.ConsumeIntegralInRange(0, 7) == 0) return;
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
    for (unsigned int i = 0; i < std::min<unsigned int>(frame.codes->nCodeNum, QUORIN_MAX_BCR_EX_NUM); ++i) {
      FillCode(in, frame.codes->stBcrInfoEx[i]);
    }
  }
  if (in.ConsumeIntegralInRange(0, 7) != 0) {
    frame.waybills.reset(new QUORIN_WAYBILL_LIST{});
    frame.waybills->nWaybillNum = Count(in, QUORIN_MAX_WAYBILL_NUM);
    frame.waybills->enWaybillImageType = in.ConsumeIntegralInRange(0u, 6u);
    for (unsigned int i = 0; i < std::min<unsigned int>(frame.waybills->nWaybillNum, QUORIN_MAX_WAYBILL_NUM); ++i) {
      FillWaybill(in, frame.waybills->stWaybillInfo[i], frame);
    }
  }
  info.pstCodeList = nullptr;
  info.pstCodeListEx = frame.codes.get();
  info.pstWaybillList = frame.waybills.get();
  return frame;
}

// A member by its Java field name, offset and width: I 32-bit word, S 16-bit, F float bits, B flag.
struct Member {
  const char* name;
  size_t offset;
  char kind;
};
#define M(record, member, kind) Member{#member, offsetof(record, member), kind}

template <typename T>
T At(const void* record, size_t offset) {
  T value;
  std::memcpy(&value, static_cast<const char*>(record) + offset, sizeof value);
  return value;
}

uint32_t Bits(float value) { return At<uint32_t>(&value, 0); }

void ExpectMembers(Jvm& jvm, jobject object, const void* record, std::initializer_list<Member> members) {
  for (const Member& m : members) {
    switch (m.kind) {
      case 'I': EXPECT_EQ(static_cast<uint32_t>(jvm.Int(object, m.name)), At<uint32_t>(record, m.offset)) << m.name; break;
      case 'S': EXPECT_EQ(static_cast<uint16_t>(jvm.Short(object, m.name)), At<uint16_t>(record, m.offset)) << m.name; break;
      case 'F': EXPECT_EQ(Bits(jvm.Float(object, m.name)), At<uint32_t>(record, m.offset)) << m.name; break;
      default: EXPECT_EQ(jvm.Bool(object, m.name), At<uint8_t>(record, m.offset) != 0) << m.name;
    }
  }
}

// The SDK numbers the constants of an enumeration carry.
std::set<uint32_t> EnumNumbers(Jvm& jvm, const char* nested) {
  JNIEnv* env = jvm.env();
  ScopedLocalFrame frame(env, 64);
  const std::string name = quorin_test::Define(nested);
  jclass cls = env->FindClass(name.c_str());
  auto constants = static_cast<jobjectArray>(
      env->CallStaticObjectMethod(cls, env->GetStaticMethodID(cls, "values", ("()[L" + name + ";").c_str())));
  jvm.ExpectQuiet(nested);
  std::set<uint32_t> numbers;
  for (jsize i = 0; i < env->GetArrayLength(constants); ++i) {
    numbers.insert(static_cast<uint32_t>(jvm.Int(env->GetObjectArrayElement(constants, i), "nValue")));
  }
  return numbers;
}

// A number some constant carries selects it; any other, or none, leaves the field as it was.
void ExpectEnum(Jvm& jvm, jobject owner, const char* field, const char* nested, const uint32_t* number,
                jobject before) {
  static const std::set<uint32_t> kPixelTypes = EnumNumbers(jvm, "QuorinGvspPixelType");
  static const std::set<uint32_t> kImageTypes = EnumNumbers(jvm, "QUORIN_IMAGE_TYPE");
  const std::set<uint32_t>& numbers = std::string(nested) == "QuorinGvspPixelType" ? kPixelTypes : kImageTypes;
  jobject constant = jvm.Object(owner, field, Sig(nested));
  if (number != nullptr && numbers.count(*number) != 0) {
    ASSERT_NE(constant, nullptr) << field << " for 0x" << std::hex << *number;
    EXPECT_EQ(static_cast<uint32_t>(jvm.Int(constant, "nValue")), *number) << field;
  } else {
    EXPECT_TRUE(jvm.env()->IsSameObject(constant, before)) << field << " changed";
  }
}

void CheckCode(Jvm& jvm, jobject entry, const QUORIN_BCR_INFO_EX& code, OneDQuality oneDQuality) {
  using R = QUORIN_BCR_INFO_EX;
  ExpectMembers(jvm, entry, &code,
                {M(R, nID, 'I'), M(R, nLen, 'I'), M(R, nBarType, 'I'), M(R, nAngle, 'I'), M(R, nMainPackageId, 'I'),
                 M(R, nSubPackageId, 'I'), M(R, nIDRScore, 'I'), M(R, nTotalProcCost, 'I'),
                 M(R, nTriggerTimeTvHigh, 'I'), M(R, nTriggerTimeTvLow, 'I'), M(R, nTriggerTimeUtvHigh, 'I'),
                 M(R, nTriggerTimeUtvLow, 'I'), M(R, sAppearCount, 'S'), M(R, sPPM, 'S'), M(R, sAlgoCost, 'S'),
                 M(R, sSharpness, 'S'), M(R, bIsGetQuality, 'B')});
  // Left out, an entry keeps what its constructor gave it.
  EXPECT_EQ(static_cast<uint32_t>(jvm.Int(entry, "n1DIsGetQuality")),
            oneDQuality == OneDQuality::kWritten ? code.n1DIsGetQuality : 0u);
  for (const Member& corner : {M(R, stCornerLeftTop, 0), M(R, stCornerRightTop, 0), M(R, stCornerRightBottom, 0),
                               M(R, stCornerLeftBottom, 0)}) {
    ExpectMembers(jvm, jvm.Object(entry, corner.name, Sig("QUORIN_POINT_I")),
                  reinterpret_cast<const char*>(&code) + corner.offset,
                  {M(QUORIN_POINT_I, nX, 'I'), M(QUORIN_POINT_I, nY, 'I')});
  }
  // Grades and scores at both ends and in the middle of the quality record.
  using Q = QUORIN_CODE_INFO;
  ExpectMembers(jvm, jvm.Object(entry, "stCodeQuality", Sig("QUORIN_CODE_INFO")), &code.stCodeQuality,
                {M(Q, nOverQuality, 'I'), M(Q, nRMGrade, 'I'), M(Q, n1DQZGrade, 'I'), M(Q, fSCScore, 'F'),
                 M(Q, fRMScore, 'F'), M(Q, f1DQZScore, 'F')});

  // The text never reaches past its array; well-formed UTF-8 arrives byte for byte.
  const size_t length = strnlen(code.chCode, sizeof code.chCode);
  auto text = static_cast<jstring>(jvm.Object(entry, "chCode", "Ljava/lang/String;"));
  ASSERT_NE(text, nullptr);
  EXPECT_LE(static_cast<size_t>(jvm.env()->GetStringLength(text)), length);
  if (quorin_fuzz::StrictUtf8(code.chCode, length)) EXPECT_EQ(jvm.ModifiedUtf8(text), std::string(code.chCode, length));
}

void CheckWaybill(Jvm& jvm, jobject entry, const QUORIN_WAYBILL_INFO& waybill) {
  using W = QUORIN_WAYBILL_INFO;
  ExpectMembers(jvm, entry, &waybill,
                {M(W, fCenterX, 'F'), M(W, fCenterY, 'F'), M(W, fWidth, 'F'), M(W, fHeight, 'F'), M(W, fAngle, 'F'),
                 M(W, fConfidence, 'F'), M(W, nImageLen, 'I')});
  const bool copied = waybill.pImageWaybill != nullptr && waybill.nImageLen <= static_cast<unsigned int>(INT_MAX);
  EXPECT_EQ(jvm.Bytes(jvm.Object(entry, "pImageWaybill", "[B")),
            copied ? std::string(reinterpret_cast<const char*>(waybill.pImageWaybill), waybill.nImageLen) : "");
}

// A list in Java: its count equals its size, which is the native count bounded by the capacity.
template <typename Entry, typename Check>
void CheckList(Jvm& jvm, jobject owner, const char* countField, const char* listField, const Entry* entries,
               unsigned int nativeCount, unsigned int capacity, Check check) {
  const unsigned int expected = entries ? std::min(nativeCount, capacity) : 0;
  EXPECT_EQ(static_cast<uint32_t>(jvm.Int(owner, countField)), expected) << countField;
  jobject list = jvm.Object(owner, listField, "Ljava/util/ArrayList;");
  ASSERT_EQ(static_cast<unsigned int>(jvm.ListSize(list)), expected) << listField;
  for (unsigned int i = 0; i < expected; ++i) {
    ScopedLocalFrame frame(jvm.env(), 64);
    check(jvm.ListGet(list, static_cast<int>(i)), entries[i]);
  }
}

void CheckFrame(Jvm& jvm, const NativeFrame& frame, jobject target, OneDQuality oneDQuality, jobject pixelBefore,
                jobject imageTypeBefore) {
  ScopedLocalFrame locals(jvm.env(), 256);
  const QUORIN_IMAGE_OUT_INFO_EX2& info = frame.info;
  using E = QUORIN_IMAGE_OUT_INFO_EX2;
  ExpectMembers(jvm, target, &info,
                {M(E, nWidth, 'S'), M(E, nHeight, 'S'), M(E, bIsGetCode, 'B'), M(E, nTriggerIndex, 'I'),
                 M(E, nFrameNum, 'I'), M(E, nFrameLen, 'I'), M(E, nTimeStampHigh, 'I'), M(E, nTimeStampLow, 'I'),
                 M(E, bFlaseTrigger, 'I'), M(E, nFocusScore, 'I'), M(E, nEventID, 'I'), M(E, nChannelID, 'I'),
                 M(E, nImageCost, 'I')});
  const uint32_t pixelType = info.enPixelType;
  ExpectEnum(jvm, target, "enPixelType", "QuorinGvspPixelType", &pixelType, pixelBefore);

  const QUORIN_RESULT_BCR_EX* codes = info.pstCodeListEx;
  CheckList(jvm, jvm.Object(target, "pstCodeListEx", Sig("QUORIN_RESULT_BCR_EX")), "nCodeNum", "stBcrInfoEx",
            codes ? codes->stBcrInfoEx : nullptr, codes ? codes->nCodeNum : 0, QUORIN_MAX_BCR_EX_NUM,
            [&](jobject entry, const QUORIN_BCR_INFO_EX& code) { CheckCode(jvm, entry, code, oneDQuality); });

  jobject waybills = jvm.Object(target, "pstWaybillList", Sig("QUORIN_WAYBILL_LIST"));
  const QUORIN_WAYBILL_LIST* list = info.pstWaybillList;
  // Without a native list the image type stays as it was.
  ExpectEnum(jvm, waybills, "enWaybillImageType", "QUORIN_IMAGE_TYPE", list ? &list->enWaybillImageType : nullptr,
             imageTypeBefore);
  CheckList(jvm, waybills, "nWaybillNum", "stWaybillInfo", list ? list->stWaybillInfo : nullptr,
            list ? list->nWaybillNum : 0, QUORIN_MAX_WAYBILL_NUM,
            [&](jobject entry, const QUORIN_WAYBILL_INFO& waybill) { CheckWaybill(jvm, entry, waybill); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Jvm& jvm = Jvm::Instance();
  JNIEnv* env = jvm.env();
  // One object refilled by every conversion, as the image callback's is, beside fresh ones.
  static jobject reused = env->NewGlobalRef(jvm.NewDefine("QUORIN_IMAGE_OUT_INFO_EX2"));

  FuzzedDataProvider in(data, size);
  const bool fresh = in.ConsumeBool();
  const OneDQuality oneDQuality = in.ConsumeBool() ? OneDQuality::kWritten : OneDQuality::kLeftAsConstructed;
  const NativeFrame frame = MakeFrame(in);

  ScopedLocalFrame locals(env, 16);
  jobject target = fresh ? jvm.NewDefine("QUORIN_IMAGE_OUT_INFO_EX2") : reused;
  jobject pixelBefore = jvm.Object(target, "enPixelType", Sig("QuorinGvspPixelType"));
  jobject imageTypeBefore =
      jvm.Object(jvm.Object(target, "pstWaybillList", Sig("QUORIN_WAYBILL_LIST")), "enWaybillImageType",
                 Sig("QUORIN_IMAGE_TYPE"));
  {
    // The checker warns once a frame holds 32 references more than it asked for: a frame of
    // one makes a list that keeps a reference per entry stand out.
    ScopedLocalFrame conversion(env, 1);
    LocalFrameClasses classes(env);
    FillImageOutInfoEx2(env, frame.info, target, classes.get(), oneDQuality);
    jvm.ExpectQuiet("FillImageOutInfoEx2");
  }
  CheckFrame(jvm, frame, target, oneDQuality, pixelBefore, imageTypeBefore);
  jvm.ExpectQuiet("the checks");
  return 0;
}
