// Grabbing control and the synchronous frame fetches, with the frame record's conversion.
#include <cstring>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

const std::string kFrameSig = "L" + Define("QUORIN_IMAGE_OUT_INFO_EX2") + ";";
const std::string kEx2Sig = "(" + kHandleSig + "[B" + kFrameSig + "I)I";
const std::string kMscSig = "(" + kHandleSig + "[B" + kFrameSig + "II)I";

class FrameTest : public JvmTest {
 protected:
  jint Start(jobject handle) { return CallInt("QUORIN_StartGrabbing", ("(" + kHandleSig + ")I").c_str(), handle); }
  jint Stop(jobject handle) { return CallInt("QUORIN_StopGrabbing", ("(" + kHandleSig + ")I").c_str(), handle); }
  jint Fetch(jobject handle, jbyteArray data, jobject info, jint timeout = 1000) {
    return CallInt("QUORIN_GetOneFrameTimeoutEx2", kEx2Sig.c_str(), handle, data, info, timeout);
  }
  jint FetchChannel(jobject handle, jbyteArray data, jobject info, jint channel, jint timeout = 1000) {
    return CallInt("QUORIN_MSC_GetOneFrameTimeout", kMscSig.c_str(), handle, data, info, channel, timeout);
  }
  jobject NewFrame() { return NewDefine("QUORIN_IMAGE_OUT_INFO_EX2"); }
  jbyteArray Filled(jsize length, jbyte fill) {
    jbyteArray array = env_->NewByteArray(length);
    std::vector<jbyte> bytes(length, fill);
    env_->SetByteArrayRegion(array, 0, length, bytes.data());
    return array;
  }
  jobject Codes(jobject frame) {
    jobject owner = Object(frame, "pstCodeListEx", "L" + Define("QUORIN_RESULT_BCR_EX") + ";");
    return Object(owner, "stBcrInfoEx", "Ljava/util/ArrayList;");
  }
  jobject Waybills(jobject frame) {
    return Object(Object(frame, "pstWaybillList", "L" + Define("QUORIN_WAYBILL_LIST") + ";"), "stWaybillInfo",
                  "Ljava/util/ArrayList;");
  }
  static QUORIN_BCR_INFO_EX Code(unsigned int id, const std::string& text) {
    QUORIN_BCR_INFO_EX code{};
    code.nID = id;
    std::memcpy(code.chCode, text.data(), std::min(text.size(), sizeof code.chCode));
    code.nLen = static_cast<unsigned int>(text.size());
    return code;
  }
};

TEST_F(FrameTest, GrabbingCachesThePayloadSizeByTheRule) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(Start(nullptr), kNullHandle);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  testing::internal::CaptureStdout();
  EXPECT_EQ(Stop(nullptr), kNullHandle);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "JNI QUORIN_StopGrabbing, handle is null");

  jobject handle = OpenReader(0);
  void* sdk = SdkHandle(handle);
  qsim::SetIntNode(sdk, "PayloadSize", 5013504, 0, 1LL << 40, 1, qsim::Access::kReadOnly);
  EXPECT_EQ(Start(handle), 0);
  EXPECT_EQ(Int(handle, "PayloadSize"), 5013504);
  EXPECT_EQ(Stop(handle), 0);
  EXPECT_EQ(Int(handle, "PayloadSize"), 5013504);  // stopping keeps it

  qsim::RemoveNode(sdk, "PayloadSize");
  EXPECT_EQ(Start(handle), 0);
  EXPECT_EQ(Int(handle, "PayloadSize"), 5013504);  // the maxima 2448 x 2048, not the current size
  Stop(handle);
  qsim::RemoveNode(sdk, "Width");
  qsim::RemoveNode(sdk, "Height");
  qsim::ScriptStatus("QUORIN_StartGrabbing", qsim::kResource);
  EXPECT_EQ(Start(handle), static_cast<jint>(qsim::kResource));
  EXPECT_EQ(Int(handle, "PayloadSize"), 62914560);  // cached even though the SDK refused
  qsim::ScriptStatus("QUORIN_StartGrabbing", 0);

  qsim::SetIntNode(sdk, "PayloadSize", 3000000000LL, 0, 1LL << 40, 1, qsim::Access::kReadOnly);
  Start(handle);
  EXPECT_EQ(Int(handle, "PayloadSize"), static_cast<jint>(3000000000u));  // low 32 bits
}

TEST_F(FrameTest, BeforeGrabbingThroughTheBridgeNoFrameSizeIsKnown) {
  jobject frame = NewFrame();
  jbyteArray data = env_->NewByteArray(16);
  jobject handle = OpenReader(1);
  testing::internal::CaptureStdout();
  EXPECT_EQ(Fetch(handle, data, frame), kPayloadUnknown);
  EXPECT_EQ(Fetch(handle, data, frame), kPayloadUnknown);
  EXPECT_EQ(FetchChannel(handle, data, frame, 0), kPayloadUnknown);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "JNI GetOneFrameTimeoutEx2 datalegth PayloadSize is 0 \n"
            "JNI GetOneFrameTimeoutEx2 datalegth PayloadSize is 0 \n"
            "JNI test PayloadSize is 0");
  EXPECT_TRUE(qsim::CallsTo("QUORIN_GetOneFrameTimeoutEx2").empty());
}

TEST_F(FrameTest, BufferMustHoldPayloadSizeAndTimeOutsTouchNothing) {
  jobject handle = GrabbingPushedFrames(0, 4096);
  jobject frame = NewFrame();
  SetInt(frame, "nFrameNum", 77);
  EXPECT_EQ(Fetch(handle, env_->NewByteArray(4095), frame), kBufferTooSmall);
  jbyteArray exact = Filled(4096, 0x55);
  EXPECT_EQ(Fetch(handle, exact, frame, 30), static_cast<jint>(qsim::kNoData));
  EXPECT_EQ(qsim::CallsTo("QUORIN_GetOneFrameTimeoutEx2").at(0).numbers, std::vector<unsigned long long>{30});
  EXPECT_EQ(Bytes(exact), std::vector<unsigned char>(4096, 0x55));
  EXPECT_EQ(Int(frame, "nFrameNum"), 77);
  EXPECT_EQ(Object(frame, "enPixelType", "L" + Define("QuorinGvspPixelType") + ";"), nullptr);
}

TEST_F(FrameTest, FrameHeaderAndImageArriveExactly) {
  jobject handle = GrabbingPushedFrames(0, 64);
  qsim::Frame pushed;
  QUORIN_IMAGE_OUT_INFO_EX2& info = pushed.info;
  info.nWidth = 40000;  // reads back as a negative short
  info.nHeight = 2;
  info.enPixelType = 0x80180001;  // negative as a Java int: found by its zero-extended word
  info.nTriggerIndex = 9;
  info.nFrameNum = 0xFFFFFFFF;
  info.nFrameLen = 10;
  info.nTimeStampHigh = 0x80000001;
  info.nTimeStampLow = 5;
  info.bFlaseTrigger = 1;
  info.nFocusScore = 812;
  info.bIsGetCode = 1;
  info.nEventID = 3;
  info.nChannelID = 0;
  info.nImageCost = 17;
  pushed.image = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  qsim::PushFrame(SdkHandle(handle), pushed);

  jobject frame = NewFrame();
  jbyteArray data = Filled(64, -1);
  ASSERT_EQ(Fetch(handle, data, frame), 0);
  std::vector<unsigned char> expected(64, 0xFF);
  for (int i = 0; i < 10; ++i) expected[i] = static_cast<unsigned char>(i + 1);  // only nFrameLen bytes
  EXPECT_EQ(Bytes(data), expected);
  EXPECT_EQ(Short(frame, "nWidth"), -25536);
  EXPECT_EQ(Short(frame, "nHeight"), 2);
  EXPECT_EQ(EnumName(Object(frame, "enPixelType", "L" + Define("QuorinGvspPixelType") + ";")), "PixelType_Gvsp_Jpeg");
  const std::pair<const char*, jint> words[] = {{"nTriggerIndex", 9}, {"nFrameNum", -1}, {"nFrameLen", 10},
      {"nTimeStampHigh", static_cast<jint>(0x80000001u)}, {"nTimeStampLow", 5}, {"bFlaseTrigger", 1},
      {"nFocusScore", 812}, {"nEventID", 3}, {"nImageCost", 17}};
  for (const auto& [field, value] : words) EXPECT_EQ(Int(frame, field), value) << field;
  EXPECT_TRUE(Bool(frame, "bIsGetCode"));
  EXPECT_EQ(ListSize(Codes(frame)), 0);
  EXPECT_EQ(ListSize(Waybills(frame)), 0);

  // An unknown pixel format leaves the field as it was; a null image skips only the copy.
  pushed.info.enPixelType = 0x12345678;
  pushed.nullImage = true;
  pushed.info.nFrameNum = 0;
  qsim::PushFrame(SdkHandle(handle), pushed);
  jbyteArray untouched = Filled(64, 7);
  ASSERT_EQ(Fetch(handle, untouched, frame), 0);
  EXPECT_EQ(Int(frame, "nFrameNum"), 0);
  EXPECT_EQ(EnumName(Object(frame, "enPixelType", "L" + Define("QuorinGvspPixelType") + ";")), "PixelType_Gvsp_Jpeg");
  EXPECT_EQ(Bytes(untouched), std::vector<unsigned char>(64, 7));
}

TEST_F(FrameTest, CodeEntriesCarryTextsCornersQualityAndSigns) {
  jobject handle = GrabbingPushedFrames(0, 16);
  qsim::Frame pushed;
  pushed.info.nFrameLen = 0;
  QUORIN_BCR_INFO_EX first = Code(1, "\xB7\xD6\xBC\xF0 QN-1");  // GBK
  first.nBarType = 0x20;
  first.stCornerLeftTop = {-5, 10};
  first.stCornerRightTop = {100, 11};
  first.stCornerRightBottom = {101, 60};
  first.stCornerLeftBottom = {4, -61};
  first.stCodeQuality.nOverQuality = 4;
  first.stCodeQuality.nPGVGrade = -1;
  first.stCodeQuality.fSCScore = 1.5f;
  first.stCodeQuality.f1DQZScore = -0.25f;
  first.nAngle = -45;
  first.nMainPackageId = 0xFFFFFFF0;
  first.sPPM = 40000;
  first.sAppearCount = 3;
  first.sAlgoCost = 12;
  first.sSharpness = 0xFFFF;
  first.bIsGetQuality = 1;
  first.n1DIsGetQuality = 1;
  first.nTriggerTimeUtvLow = 999;
  pushed.codes = {first, Code(2, "\xE4\xB8\xAD\xE6\x96\x87-2"), Code(3, ""), Code(4, std::string(1000, 'L')),
                  Code(5, std::string(4096, 'T'))};  // the last one fills its array with no terminator
  qsim::PushFrame(SdkHandle(handle), pushed);
  qsim::PushFrame(SdkHandle(handle), pushed);

  jobject frame = NewFrame();
  jbyteArray data = env_->NewByteArray(16);
  ASSERT_EQ(Fetch(handle, data, frame), 0);
  jobject codes = Codes(frame);
  ASSERT_EQ(ListSize(codes), 5);
  EXPECT_EQ(Int(Object(frame, "pstCodeListEx", "L" + Define("QUORIN_RESULT_BCR_EX") + ";"), "nCodeNum"), 5);
  jobject code = ListGet(codes, 0);
  EXPECT_EQ(Int(code, "nID"), 1);
  EXPECT_EQ(String(code, "chCode"), "分拣 QN-1");
  EXPECT_EQ(Int(code, "nBarType"), 0x20);
  const std::string pointSig = "L" + Define("QUORIN_POINT_I") + ";";
  EXPECT_EQ(Int(Object(code, "stCornerLeftTop", pointSig), "nX"), -5);
  EXPECT_EQ(Int(Object(code, "stCornerRightTop", pointSig), "nX"), 100);
  EXPECT_EQ(Int(Object(code, "stCornerRightBottom", pointSig), "nY"), 60);
  EXPECT_EQ(Int(Object(code, "stCornerLeftBottom", pointSig), "nY"), -61);
  jobject quality = Object(code, "stCodeQuality", "L" + Define("QUORIN_CODE_INFO") + ";");
  EXPECT_EQ(Int(quality, "nOverQuality"), 4);
  EXPECT_EQ(Int(quality, "nPGVGrade"), -1);
  EXPECT_EQ(Float(quality, "fSCScore"), 1.5f);
  EXPECT_EQ(Float(quality, "f1DQZScore"), -0.25f);
  // n1DIsGetQuality: this fetch leaves the constructor's value.
  for (const auto& [field, value] : {std::pair{"nAngle", -45}, {"nMainPackageId", -16}, {"nTriggerTimeUtvLow", 999},
                                     {"n1DIsGetQuality", 0}}) {
    EXPECT_EQ(Int(code, field), value) << field;
  }
  for (const auto& [field, value] : {std::pair{"sPPM", -25536}, {"sAppearCount", 3}, {"sSharpness", -1}}) {
    EXPECT_EQ(Short(code, field), value) << field;
  }
  EXPECT_TRUE(Bool(code, "bIsGetQuality"));
  EXPECT_EQ(String(ListGet(codes, 1), "chCode"), "中文-2");
  EXPECT_EQ(String(ListGet(codes, 2), "chCode"), "");
  EXPECT_EQ(String(ListGet(codes, 3), "chCode"), std::string(1000, 'L'));  // never cut
  EXPECT_EQ(String(ListGet(codes, 4), "chCode"), std::string(4096, 'T'));  // bounded by its array

  // The channel fetch writes the 1-D quality flag too, into a list cleared first.
  ASSERT_EQ(FetchChannel(handle, data, frame, 0), 0);
  ASSERT_EQ(ListSize(Codes(frame)), 5);
  EXPECT_EQ(Int(ListGet(Codes(frame), 0), "n1DIsGetQuality"), 1);
}

TEST_F(FrameTest, ListsHoldAtMostTheirCapacityAndWaybillsCarryTheirImages) {
  jobject handle = GrabbingPushedFrames(2, 16);
  qsim::Frame pushed;
  for (unsigned int i = 0; i < QUORIN_MAX_BCR_EX_NUM; ++i) pushed.codes.push_back(Code(i, "QN-" + std::to_string(i)));
  qsim::Waybill label;
  label.info.fCenterX = 320.5f;
  label.info.fConfidence = 0.875f;
  label.info.fAngle = -12.0f;
  label.image = {'B', 'M', 9, 9};
  qsim::Waybill empty;
  pushed.waybills = {label, empty};
  pushed.waybillImageType = 2;  // JPEG
  qsim::PushFrame(SdkHandle(handle), pushed);
  pushed.reportedCodeCount = 100000;  // more than the list holds
  pushed.reportedWaybillCount = 500;
  qsim::PushFrame(SdkHandle(handle), pushed);

  jobject frame = NewFrame();
  jbyteArray data = env_->NewByteArray(16);
  ASSERT_EQ(Fetch(handle, data, frame), 0);
  ASSERT_EQ(ListSize(Codes(frame)), 300);
  EXPECT_EQ(String(ListGet(Codes(frame), 299), "chCode"), "QN-299");
  jobject waybillList = Object(frame, "pstWaybillList", "L" + Define("QUORIN_WAYBILL_LIST") + ";");
  EXPECT_EQ(Int(waybillList, "nWaybillNum"), 2);
  EXPECT_EQ(EnumName(Object(waybillList, "enWaybillImageType", "L" + Define("QUORIN_IMAGE_TYPE") + ";")),
            "QUORIN_Image_Jpeg");
  jobject first = ListGet(Waybills(frame), 0);
  EXPECT_EQ(Float(first, "fCenterX"), 320.5f);
  EXPECT_EQ(Float(first, "fConfidence"), 0.875f);
  EXPECT_EQ(Float(first, "fAngle"), -12.0f);
  EXPECT_EQ(Int(first, "nImageLen"), 4);
  EXPECT_EQ(Bytes(static_cast<jbyteArray>(Object(first, "pImageWaybill", "[B"))),
            (std::vector<unsigned char>{'B', 'M', 9, 9}));
  jobject second = ListGet(Waybills(frame), 1);
  jobject noImage = Object(second, "pImageWaybill", "[B");
  ASSERT_NE(noImage, nullptr);  // an empty array, not null
  EXPECT_EQ(env_->GetArrayLength(static_cast<jbyteArray>(noImage)), 0);

  ASSERT_EQ(Fetch(handle, data, frame), 0);
  EXPECT_EQ(ListSize(Codes(frame)), 300);
  EXPECT_EQ(Int(Object(frame, "pstCodeListEx", "L" + Define("QUORIN_RESULT_BCR_EX") + ";"), "nCodeNum"), 300);
  EXPECT_EQ(ListSize(Waybills(frame)), 50);
  EXPECT_EQ(Int(waybillList, "nWaybillNum"), 50);
}

TEST_F(FrameTest, FrameLongerThanTheArrayIsCutToIt) {
  jobject handle = GrabbingPushedFrames(0, 8);
  qsim::Frame pushed;
  pushed.info.nFrameLen = 12;
  pushed.image = std::vector<unsigned char>(12, 0xAB);
  qsim::PushFrame(SdkHandle(handle), pushed);
  jobject frame = NewFrame();
  jbyteArray data = env_->NewByteArray(8);
  ASSERT_EQ(Fetch(handle, data, frame), 0);
  EXPECT_EQ(Bytes(data), std::vector<unsigned char>(8, 0xAB));
  EXPECT_EQ(Int(frame, "nFrameLen"), 12);  // the full length still tells the caller
}

TEST_F(FrameTest, ProducedFramesArriveInOrderPerChannel) {
  jobject handle = OpenReader(1);  // the multi-channel reader
  void* sdk = SdkHandle(handle);
  EXPECT_EQ(CallInt("QUORIN_SetIntValue", ("(" + kHandleSig + "Ljava/lang/String;J)I").c_str(), handle, Str("Width"),
                    jlong{320}), 0);
  EXPECT_EQ(CallInt("QUORIN_SetIntValue", ("(" + kHandleSig + "Ljava/lang/String;J)I").c_str(), handle, Str("Height"),
                    jlong{240}), 0);
  qsim::SetFloatNode(sdk, "AcquisitionFrameRate", 200.0f, 1.0f, 200.0f);
  ASSERT_EQ(Start(handle), 0);
  EXPECT_EQ(Int(handle, "PayloadSize"), 320 * 240);
  jbyteArray data = env_->NewByteArray(320 * 240);
  jobject frame = NewFrame();
  unsigned int previous = 0;
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(FetchChannel(handle, data, frame, 2, 2000), 0);
    EXPECT_EQ(Int(frame, "nChannelID"), 2);
    EXPECT_EQ(Short(frame, "nWidth"), 320);
    EXPECT_EQ(Short(frame, "nHeight"), 240);
    EXPECT_EQ(Int(frame, "nFrameLen"), 320 * 240);
    EXPECT_GE(ListSize(Codes(frame)), 1);
    const auto number = static_cast<unsigned int>(Int(frame, "nFrameNum"));
    if (i > 0) {
      EXPECT_EQ(number, previous + 1);  // none lost, none twice
    }
    previous = number;
  }
  EXPECT_EQ(FetchChannel(handle, data, frame, 4), static_cast<jint>(qsim::kBadParameter));
  EXPECT_EQ(Stop(handle), 0);
}

}  // namespace
}  // namespace quorin_test
