// Grabbing control, the frame fetches with the frame records' conversion, waybill extraction and
// image saving, through Java.
#include <cstring>
#include <iterator>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

std::string DefineSig(const char* nested) { return "L" + Define(nested) + ";"; }
const std::string kFrameSig = DefineSig("QUORIN_IMAGE_OUT_INFO_EX2");

// The grades and scores of a code's quality record, by the name Java gives them too.
#define QUORIN_TEST_NAMED(member) {#member, &QUORIN_CODE_INFO::member},
#define QUORIN_TEST_SKIP(member)
const std::pair<const char*, int QUORIN_CODE_INFO::*> kGrades[] = {
    QUORIN_QUALITY_MEMBERS(QUORIN_TEST_NAMED, QUORIN_TEST_SKIP)};
const std::pair<const char*, float QUORIN_CODE_INFO::*> kScores[] = {
    QUORIN_QUALITY_MEMBERS(QUORIN_TEST_SKIP, QUORIN_TEST_NAMED)};
#undef QUORIN_TEST_NAMED
#undef QUORIN_TEST_SKIP

// A quality value of its own for each grade and score; grades may be negative, none is zero.
int Grade(size_t i) { return static_cast<int>(i) - 20; }
float Score(size_t i) { return 0.5f * static_cast<float>(i + 1); }

class FrameTest : public JvmTest {
 protected:
  jint Fetch(jobject handle, jbyteArray data, jobject info, jint timeout = 1000) {
    return CallInt("QUORIN_GetOneFrameTimeoutEx2", ("(" + kHandleSig + "[B" + kFrameSig + "I)I").c_str(), handle,
                   data, info, timeout);
  }
  jint FetchChannel(jobject handle, jbyteArray data, jobject info, jint channel, jint timeout = 1000) {
    return CallInt("QUORIN_MSC_GetOneFrameTimeout", ("(" + kHandleSig + "[B" + kFrameSig + "II)I").c_str(), handle,
                   data, info, channel, timeout);
  }
  jint LegacyFetch(jobject handle, jbyteArray data, jobject frame, jint timeout = 1000) {
    return CallInt("QUORIN_GetOneFrameTimeout", ("(" + kHandleSig + "[B" + DefineSig("QUORIN_FRAME_OUT_INFO") + "I)I").c_str(),
                   handle, data, frame, timeout);
  }
  jint RequestWaybills(jobject handle, jbyteArray data, jobject frame) {
    return CallInt("QUORIN_GetWayBillInfoEx", ("(" + kHandleSig + "[B" + kFrameSig + ")I").c_str(), handle, data, frame);
  }
  jint Save(jobject handle, jobject param) {
    return CallInt("QUORIN_SaveImage", ("(" + kHandleSig + DefineSig("QUORIN_SAVE_IMAGE_PARAM") + ")I").c_str(), handle,
                   param);
  }
  std::string EnumField(jobject owner, const char* field, const char* enumClass) {
    return EnumName(Object(owner, field, DefineSig(enumClass)));
  }
  void SetEnumField(jobject owner, const char* field, const char* enumClass, const char* constant) {
    SetObject(owner, field, DefineSig(enumClass), Constant(enumClass, constant));
  }
  jobject NewFrame() { return NewDefine("QUORIN_IMAGE_OUT_INFO_EX2"); }
  jobject CodeList(jobject frame) { return Object(frame, "pstCodeListEx", DefineSig("QUORIN_RESULT_BCR_EX")); }
  jobject Codes(jobject frame) { return Object(CodeList(frame), "stBcrInfoEx", "Ljava/util/ArrayList;"); }
  jobject WaybillList(jobject frame) { return Object(frame, "pstWaybillList", DefineSig("QUORIN_WAYBILL_LIST")); }
  jobject Waybills(jobject frame) { return Object(WaybillList(frame), "stWaybillInfo", "Ljava/util/ArrayList;"); }
  std::string PixelType(jobject frame) { return EnumField(frame, "enPixelType", "QuorinGvspPixelType"); }
  static QUORIN_BCR_INFO_EX Code(unsigned int id, const std::string& text) {
    QUORIN_BCR_INFO_EX code{};
    code.nID = id;
    std::memcpy(code.chCode, text.data(), std::min(text.size(), sizeof code.chCode));
    code.nLen = static_cast<unsigned int>(text.size());
    return code;
  }
};

TEST_F(FrameTest, GrabbingCachesThePayloadSizeThatFetchesCheckBeforeTheSdk) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(OnHandle("QUORIN_StartGrabbing", nullptr), kNullHandle);
  EXPECT_EQ(OnHandle("QUORIN_StopGrabbing", nullptr), kNullHandle);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "JNI QUORIN_StopGrabbing, handle is null");  // Start says nothing

  jobject handle = OpenReader(0);
  void* sdk = SdkHandle(handle);
  qsim::SetIntNode(sdk, "PayloadSize", 4096, 0, 1LL << 40, 1, qsim::Access::kReadOnly);
  EXPECT_EQ(OnHandle("QUORIN_StartGrabbing", handle), 0);
  EXPECT_EQ(OnHandle("QUORIN_StopGrabbing", handle), 0);
  EXPECT_EQ(Int(handle, "PayloadSize"), 4096);  // stopping keeps it
  qsim::RemoveNode(sdk, "PayloadSize");
  EXPECT_EQ(OnHandle("QUORIN_StartGrabbing", handle), 0);
  EXPECT_EQ(Int(handle, "PayloadSize"), 5013504);  // the maxima 2448 x 2048, not the current size
  OnHandle("QUORIN_StopGrabbing", handle);

  qsim::SetIntNode(sdk, "PayloadSize", 3000000000LL, 0, 1LL << 40, 1, qsim::Access::kReadOnly);
  qsim::ScriptStatus("QUORIN_StartGrabbing", qsim::kResource);
  EXPECT_EQ(OnHandle("QUORIN_StartGrabbing", handle), static_cast<jint>(qsim::kResource));
  EXPECT_EQ(Int(handle, "PayloadSize"), static_cast<jint>(3000000000u));  // low 32 bits, cached though refused
  qsim::ScriptStatus("QUORIN_StartGrabbing", 0);

  // Fetches check their arguments before the SDK, and a time-out touches nothing of the caller's.
  jobject frame = NewFrame();
  jobject idle = OpenReader(1);  // never started through the bridge: no frame size known
  testing::internal::CaptureStdout();
  EXPECT_EQ(Fetch(idle, env_->NewByteArray(16), frame), kPayloadUnknown);
  EXPECT_EQ(Fetch(idle, env_->NewByteArray(16), frame), kPayloadUnknown);
  EXPECT_EQ(FetchChannel(idle, env_->NewByteArray(16), frame, 0), kPayloadUnknown);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "JNI GetOneFrameTimeoutEx2 datalegth PayloadSize is 0 \n"
            "JNI GetOneFrameTimeoutEx2 datalegth PayloadSize is 0 \n"
            "JNI test PayloadSize is 0");

  jobject grabbing = GrabbingPushedFrames(2, 4096);
  SetInt(frame, "nFrameNum", 77);
  jbyteArray exact = ArrayOf(std::vector<unsigned char>(4096, 0x55));
  EXPECT_EQ(Fetch(grabbing, exact, frame, 30), static_cast<jint>(qsim::kNoData));
  EXPECT_EQ(qsim::CallsTo("QUORIN_GetOneFrameTimeoutEx2").at(0).numbers, std::vector<unsigned long long>{30});
  EXPECT_EQ(Bytes(exact), std::vector<unsigned char>(4096, 0x55));
  EXPECT_EQ(Int(frame, "nFrameNum"), 77);
  EXPECT_EQ(PixelType(frame), "<null>");
}

TEST_F(FrameTest, FrameHeaderAndImageArriveExactly) {
  jobject handle = GrabbingPushedFrames(0, 64);
  qsim::Frame pushed;
  pushed.info.nWidth = 40000;  // reads back as a negative short
  pushed.info.nHeight = 2;
  pushed.info.enPixelType = 0x80180001;  // negative as a Java int: found by its zero-extended word
  pushed.info.bIsGetCode = 1;
  using Info = QUORIN_IMAGE_OUT_INFO_EX2;
  const std::tuple<const char*, unsigned int Info::*, unsigned int> words[] = {
      {"nTriggerIndex", &Info::nTriggerIndex, 9}, {"nFrameNum", &Info::nFrameNum, 0xFFFFFFFF},
      {"nFrameLen", &Info::nFrameLen, 10}, {"nTimeStampHigh", &Info::nTimeStampHigh, 0x80000001},
      {"nTimeStampLow", &Info::nTimeStampLow, 5}, {"bFlaseTrigger", &Info::bFlaseTrigger, 1},
      {"nFocusScore", &Info::nFocusScore, 812}, {"nEventID", &Info::nEventID, 3}, {"nImageCost", &Info::nImageCost, 17}};
  for (const auto& [field, member, value] : words) pushed.info.*member = value;
  pushed.image = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  qsim::PushFrame(SdkHandle(handle), pushed);

  jobject frame = NewFrame();
  jbyteArray data = ArrayOf(std::vector<unsigned char>(64, 0xFF));
  ASSERT_EQ(Fetch(handle, data, frame), 0);
  std::vector<unsigned char> expected(64, 0xFF);
  for (int i = 0; i < 10; ++i) expected[i] = static_cast<unsigned char>(i + 1);  // only nFrameLen bytes
  EXPECT_EQ(Bytes(data), expected);
  EXPECT_EQ(Short(frame, "nWidth"), -25536);
  EXPECT_EQ(Short(frame, "nHeight"), 2);
  EXPECT_EQ(PixelType(frame), "PixelType_Gvsp_Jpeg");
  for (const auto& [field, member, value] : words) EXPECT_EQ(Int(frame, field), static_cast<jint>(value)) << field;
  EXPECT_TRUE(Bool(frame, "bIsGetCode"));
  EXPECT_EQ(ListSize(Codes(frame)), 0);
  EXPECT_EQ(ListSize(Waybills(frame)), 0);

  // An unknown pixel format leaves the field as it was; a null image skips only the copy.
  pushed.info.enPixelType = 0x12345678;
  pushed.nullImage = true;
  pushed.info.nFrameNum = 0;
  qsim::PushFrame(SdkHandle(handle), pushed);
  jbyteArray untouched = ArrayOf(std::vector<unsigned char>(64, 7));
  ASSERT_EQ(Fetch(handle, untouched, frame), 0);
  EXPECT_EQ(Int(frame, "nFrameNum"), 0);
  EXPECT_EQ(PixelType(frame), "PixelType_Gvsp_Jpeg");
  EXPECT_EQ(Bytes(untouched), std::vector<unsigned char>(64, 7));

  // A frame longer than the array is cut to it; nFrameLen still tells the caller its length.
  pushed.nullImage = false;
  pushed.info.nFrameLen = 70;
  pushed.image.assign(70, 0xAB);
  qsim::PushFrame(SdkHandle(handle), pushed);
  ASSERT_EQ(Fetch(handle, untouched, frame), 0);
  EXPECT_EQ(Bytes(untouched), std::vector<unsigned char>(64, 0xAB));
  EXPECT_EQ(Int(frame, "nFrameLen"), 70);
}

TEST_F(FrameTest, CodeAndWaybillEntriesCarryEveryFieldUpToTheirListsCapacity) {
  jobject handle = GrabbingPushedFrames(0, 16);
  QUORIN_BCR_INFO_EX first = Code(1, "\xB7\xD6\xBC\xF0 QN-1");  // GBK
  const std::tuple<const char*, QUORIN_POINT_I QUORIN_BCR_INFO_EX::*, QUORIN_POINT_I> corners[] = {
      {"stCornerLeftTop", &QUORIN_BCR_INFO_EX::stCornerLeftTop, {-5, 10}},
      {"stCornerRightTop", &QUORIN_BCR_INFO_EX::stCornerRightTop, {100, 11}},
      {"stCornerRightBottom", &QUORIN_BCR_INFO_EX::stCornerRightBottom, {101, 60}},
      {"stCornerLeftBottom", &QUORIN_BCR_INFO_EX::stCornerLeftBottom, {4, -61}}};
  for (const auto& [field, member, point] : corners) first.*member = point;
  // Every grade and score, each with a value of its own; grades may be negative.
  for (size_t i = 0; i < std::size(kGrades); ++i) first.stCodeQuality.*kGrades[i].second = Grade(i);
  for (size_t i = 0; i < std::size(kScores); ++i) first.stCodeQuality.*kScores[i].second = Score(i);
  first.nBarType = 0x20;
  first.nAngle = -45;
  first.nMainPackageId = 0xFFFFFFF0;
  first.sPPM = 40000;
  first.sAppearCount = 3;
  first.sAlgoCost = 12;
  first.sSharpness = 0xFFFF;
  first.bIsGetQuality = 1;
  first.n1DIsGetQuality = 1;
  first.nTriggerTimeUtvLow = 999;
  qsim::Frame pushed;
  pushed.codes = {first, Code(2, ""), Code(3, std::string(4096, 'T'))};  // the last one fills its array, unterminated
  qsim::PushFrame(SdkHandle(handle), pushed);
  qsim::PushFrame(SdkHandle(handle), pushed);

  jobject frame = NewFrame();
  jbyteArray data = env_->NewByteArray(16);
  ASSERT_EQ(Fetch(handle, data, frame), 0);
  jobject codes = Codes(frame);
  ASSERT_EQ(ListSize(codes), 3);
  EXPECT_EQ(Int(CodeList(frame), "nCodeNum"), 3);
  jobject code = ListGet(codes, 0);
  EXPECT_EQ(String(code, "chCode"), "分拣 QN-1");
  for (const auto& [field, member, point] : corners) {
    jobject corner = Object(code, field, DefineSig("QUORIN_POINT_I"));
    EXPECT_EQ(Int(corner, "nX"), point.nX) << field;
    EXPECT_EQ(Int(corner, "nY"), point.nY) << field;
  }
  jobject quality = Object(code, "stCodeQuality", DefineSig("QUORIN_CODE_INFO"));
  for (const auto& [field, member] : kGrades) EXPECT_EQ(Int(quality, field), first.stCodeQuality.*member) << field;
  for (const auto& [field, member] : kScores) EXPECT_EQ(Float(quality, field), first.stCodeQuality.*member) << field;
  // n1DIsGetQuality: this fetch leaves the constructor's value.
  for (const auto& [field, value] : {std::pair{"nID", 1}, {"nBarType", 0x20}, {"nAngle", -45}, {"nMainPackageId", -16},
                                     {"nTriggerTimeUtvLow", 999}, {"n1DIsGetQuality", 0}}) {
    EXPECT_EQ(Int(code, field), value) << field;
  }
  for (const auto& [field, value] :
       {std::pair{"sPPM", -25536}, {"sAppearCount", 3}, {"sAlgoCost", 12}, {"sSharpness", -1}}) {
    EXPECT_EQ(Short(code, field), value) << field;
  }
  EXPECT_TRUE(Bool(code, "bIsGetQuality"));
  EXPECT_EQ(String(ListGet(codes, 1), "chCode"), "");
  EXPECT_EQ(String(ListGet(codes, 2), "chCode"), std::string(4096, 'T'));  // bounded by its array

  // The channel fetch writes the 1-D quality flag too, into a list cleared first.
  ASSERT_EQ(FetchChannel(handle, data, frame, 0), 0);
  ASSERT_EQ(ListSize(Codes(frame)), 3);
  EXPECT_EQ(Int(ListGet(Codes(frame), 0), "n1DIsGetQuality"), 1);

  // Lists hold at most their capacity, whatever count the SDK reports; waybills carry their images.
  pushed.codes.clear();
  for (unsigned int i = 0; i < QUORIN_MAX_BCR_EX_NUM; ++i) pushed.codes.push_back(Code(i, "QN-" + std::to_string(i)));
  qsim::Waybill label;
  label.info.fCenterX = 320.5f;
  label.info.fConfidence = 0.875f;
  label.info.fAngle = -12.0f;
  label.image = {'B', 'M', 9, 9};
  pushed.waybills = {label, qsim::Waybill{}};
  pushed.waybillImageType = 2;  // JPEG
  qsim::PushFrame(SdkHandle(handle), pushed);
  pushed.reportedCodeCount = 100000;  // more than the list holds
  pushed.reportedWaybillCount = 500;
  qsim::PushFrame(SdkHandle(handle), pushed);
  ASSERT_EQ(Fetch(handle, data, frame), 0);
  ASSERT_EQ(ListSize(Codes(frame)), 300);
  EXPECT_EQ(String(ListGet(Codes(frame), 299), "chCode"), "QN-299");
  EXPECT_EQ(Int(WaybillList(frame), "nWaybillNum"), 2);
  EXPECT_EQ(EnumField(WaybillList(frame), "enWaybillImageType", "QUORIN_IMAGE_TYPE"), "QUORIN_Image_Jpeg");
  jobject waybill = ListGet(Waybills(frame), 0);
  for (const auto& [field, value] : {std::pair{"fCenterX", 320.5f}, {"fConfidence", 0.875f}, {"fAngle", -12.0f}}) {
    EXPECT_EQ(Float(waybill, field), value) << field;
  }
  EXPECT_EQ(Int(waybill, "nImageLen"), 4);
  EXPECT_EQ(Bytes(Object(waybill, "pImageWaybill", "[B")), (std::vector<unsigned char>{'B', 'M', 9, 9}));
  jobject noImage = Object(ListGet(Waybills(frame), 1), "pImageWaybill", "[B");
  ASSERT_NE(noImage, nullptr);  // an empty array, not null
  EXPECT_EQ(env_->GetArrayLength(static_cast<jbyteArray>(noImage)), 0);

  ASSERT_EQ(Fetch(handle, data, frame), 0);
  EXPECT_EQ(ListSize(Codes(frame)), 300);
  EXPECT_EQ(Int(CodeList(frame), "nCodeNum"), 300);
  EXPECT_EQ(ListSize(Waybills(frame)), 50);
  EXPECT_EQ(Int(WaybillList(frame), "nWaybillNum"), 50);
}

TEST_F(FrameTest, LegacyFetchChecksPrintTheirTextsAndProducedFramesArrive) {
  jobject frame = NewDefine("QUORIN_FRAME_OUT_INFO");
  testing::internal::CaptureStdout();
  EXPECT_EQ(LegacyFetch(nullptr, env_->NewByteArray(4), frame, 0), kBadArgument);
  EXPECT_EQ(LegacyFetch(nullptr, env_->NewByteArray(4), frame), kNullHandle);
  jobject reader = OpenReader(0);
  EXPECT_EQ(LegacyFetch(reader, env_->NewByteArray(4), frame), kPayloadUnknown);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "JNI QUORIN_GetOneFrameTimeout, param is errorJNI test PayloadSize is 0");

  ASSERT_EQ(OnHandle("QUORIN_StartGrabbing", reader), 0);
  ASSERT_EQ(LegacyFetch(reader, env_->NewByteArray(Int(reader, "PayloadSize")), frame, 5000), 0);
  EXPECT_EQ(Short(frame, "nWidth"), 1280);
  EXPECT_EQ(Int(frame, "nFrameLen"), 1280 * 1024);
  EXPECT_GE(ListSize(Object(frame, "bcrinfoList", "Ljava/util/ArrayList;")), 1);

  jobject handle = GrabbingPushedFrames(1, 64);
  SetInt(frame, "nFrameNum", 5);
  EXPECT_EQ(LegacyFetch(handle, env_->NewByteArray(64), frame, 20), static_cast<jint>(qsim::kNoData));
  EXPECT_EQ(Int(frame, "nFrameNum"), 5);
}

TEST_F(FrameTest, LegacyRecordConvertsCodesPointsAndWaybillImage) {
  jobject handle = GrabbingPushedFrames(0, 64);
  auto record = std::make_unique<QUORIN_FRAME_OUT_INFO>();
  record->nWidth = 0xFFFF;
  record->enPixelType = 0x01080001;
  record->enWaybillImageType = 3;  // PNG
  using Legacy = QUORIN_FRAME_OUT_INFO;
  const std::tuple<const char*, unsigned int Legacy::*, unsigned int> words[] = {
      {"nTriggerIndex", &Legacy::nTriggerIndex, 4}, {"nFrameNum", &Legacy::nFrameNum, 31},
      {"nFrameLen", &Legacy::nFrameLen, 8}, {"nTimeStampHigh", &Legacy::nTimeStampHigh, 0x80000002},
      {"nTimeStampLow", &Legacy::nTimeStampLow, 6}, {"bFlaseTrigger", &Legacy::bFlaseTrigger, 1},
      {"nFocusScore", &Legacy::nFocusScore, 700}, {"nChannelID", &Legacy::nChannelID, 2}, {"nImageCost", &Legacy::nImageCost, 9}};
  for (const auto& [field, member, value] : words) record.get()->*member = value;
  record->nCodeNumber = 2;
  QUORIN_BcrInfo& code = record->stBcrInfo[0];
  code.nID = 7;
  std::memcpy(code.chCode, "QN-LEGACY\0tail", 14);
  code.nLen = 9;  // only the first nLen bytes travel
  code.pt[0] = {-3, 4};
  code.pt[3] = {100, -200};
  code.nAngle = -90;
  code.sPPM = 0xFFFF;
  record->stBcrInfo[1].nLen = 100000;  // never read past its 256-byte array
  qsim::ScriptOutput("QUORIN_GetOneFrameTimeout", RecordBytes(*record));

  jobject frame = NewDefine("QUORIN_FRAME_OUT_INFO");
  jbyteArray data = ArrayOf(std::vector<unsigned char>(64, 1));
  ASSERT_EQ(LegacyFetch(handle, data, frame), 0);
  EXPECT_EQ(Bytes(data), std::vector<unsigned char>(64, 1));  // no image pointer: the array is untouched
  EXPECT_EQ(Short(frame, "nWidth"), -1);
  EXPECT_EQ(EnumField(frame, "enPixelType", "QuorinGvspPixelType"), "PixelType_Gvsp_Mono8");
  for (const auto& [field, member, value] : words) EXPECT_EQ(Int(frame, field), static_cast<jint>(value)) << field;
  EXPECT_EQ(EnumField(frame, "enWaybillImageType", "QUORIN_IMAGE_TYPE"), "QUORIN_Image_Png");
  jobject waybill = Object(frame, "pImageWaybill", "[B");
  ASSERT_NE(waybill, nullptr);  // an empty array, not null
  EXPECT_EQ(Bytes(waybill).size(), 0u);
  jobject codes = Object(frame, "bcrinfoList", "Ljava/util/ArrayList;");
  ASSERT_EQ(ListSize(codes), 2);
  jobject first = ListGet(codes, 0);
  EXPECT_EQ(Int(first, "nID"), 7);
  const auto text = Bytes(Object(first, "chCode", "[B"));
  EXPECT_EQ(std::string(text.begin(), text.end()), "QN-LEGACY");
  EXPECT_EQ(Int(first, "nAngle"), -90);
  EXPECT_EQ(Short(first, "sPPM"), -1);
  jobject points = Object(first, "pointList", "Ljava/util/ArrayList;");
  ASSERT_EQ(ListSize(points), 4);
  EXPECT_EQ(Int(ListGet(points, 0), "x"), -3);
  EXPECT_EQ(Int(ListGet(points, 3), "y"), -200);
  EXPECT_EQ(Bytes(Object(ListGet(codes, 1), "chCode", "[B")).size(), 256u);

  for (const auto& [reported, listed] : {std::pair{100000u, QUORIN_MAX_BCRINFO_NUM}, {0u, 0}}) {
    record->nCodeNumber = reported;  // more than the record holds, then none
    qsim::ScriptOutput("QUORIN_GetOneFrameTimeout", RecordBytes(*record));
    ASSERT_EQ(LegacyFetch(handle, data, frame), 0);
    EXPECT_EQ(ListSize(codes), listed) << reported;
  }
}

TEST_F(FrameTest, WaybillRequestRebuildsTheFrameRecordWithItsQuirks) {
  jobject handle = GrabbingPushedFrames(2, 320 * 240);
  qsim::Frame pushed;
  pushed.info.nWidth = 320;
  pushed.info.nHeight = 240;
  pushed.info.enPixelType = 0x01080001;
  pushed.info.nFrameNum = 12;
  pushed.info.nFrameLen = 320 * 240;
  pushed.image.assign(320 * 240, 0x80);
  QUORIN_BCR_INFO_EX code{};
  code.nID = 3;
  code.nLen = 10;
  code.stCornerLeftTop = {100, 80};
  code.stCornerRightTop = {180, 82};
  code.stCornerRightBottom = {178, 150};
  code.stCornerLeftBottom = {99, 149};
  for (size_t i = 0; i < std::size(kGrades); ++i) code.stCodeQuality.*kGrades[i].second = Grade(i);
  for (size_t i = 0; i < std::size(kScores); ++i) code.stCodeQuality.*kScores[i].second = Score(i);
  pushed.codes = {code};
  qsim::Waybill stale;
  stale.info.fCenterX = 1.5f;
  stale.image = {1, 2, 3};
  pushed.waybills = {stale, stale};
  qsim::PushFrame(SdkHandle(handle), pushed);
  jobject frame = NewDefine("QUORIN_IMAGE_OUT_INFO_EX2");
  jbyteArray data = env_->NewByteArray(320 * 240);
  ASSERT_EQ(Fetch(handle, data, frame), 0);

  testing::internal::CaptureStdout();
  EXPECT_EQ(RequestWaybills(handle, nullptr, frame), kBadArgument);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "mt test pData and stgrameinfo is null");

  ASSERT_EQ(RequestWaybills(handle, data, frame), 0);
  const qsim::WaybillRequest request = qsim::LastWaybillRequest(SdkHandle(handle));
  EXPECT_EQ(request.info.nWidth, 320);
  EXPECT_EQ(request.info.nFrameNum, 12u);
  EXPECT_EQ(request.info.enPixelType, 0x01080001u);
  ASSERT_EQ(request.codes.size(), 1u);
  EXPECT_EQ(request.extendedCodeCount, 1u);
  const QUORIN_BCR_INFO& sent = request.codes[0];
  EXPECT_EQ(sent.nID, 3u);
  EXPECT_EQ(sent.nLen, 10u);
  EXPECT_EQ(sent.pt[0].nX, 100);
  EXPECT_EQ(sent.pt[2].nY, 150);
  EXPECT_EQ(sent.pt[3].nX, 180);  // the fourth corner repeats the right-top one
  EXPECT_EQ(sent.pt[3].nY, 82);
  // The first ten grades and eight scores travel, each score as its bits read as a number.
  for (size_t i = 0; i < std::size(kGrades); ++i) {
    EXPECT_EQ(sent.stCodeQuality.*kGrades[i].second, i < 10 ? Grade(i) : 0) << kGrades[i].first;
  }
  for (size_t i = 0; i < std::size(kScores); ++i) {
    int32_t bits;
    const float score = Score(i);
    std::memcpy(&bits, &score, sizeof bits);
    EXPECT_EQ(sent.stCodeQuality.*kScores[i].second, i < 8 ? static_cast<float>(bits) : 0.0f) << kScores[i].first;
  }
  EXPECT_EQ(request.waybills.nWaybillNum, 2u);
  EXPECT_EQ(request.waybills.stWaybillInfo[0].fCenterX, 1069547520.0f);

  // The SDK's answer replaces the frame's waybill list: one waybill around the one code, a bitmap.
  jobject list = Waybills(frame);
  ASSERT_EQ(ListSize(list), 1);
  EXPECT_EQ(Bytes(Object(ListGet(list, 0), "pImageWaybill", "[B")).at(0), 'B');

  qsim::ScriptStatus("QUORIN_GetWayBillInfoEx", qsim::kResource);
  EXPECT_EQ(RequestWaybills(handle, data, frame), static_cast<jint>(qsim::kResource));
  EXPECT_EQ(ListSize(list), 1);  // untouched after a failure
}

TEST_F(FrameTest, SavedImagesComeBackEncoded) {
  jobject handle = OpenReader(0);
  jobject param = NewDefine("QUORIN_SAVE_IMAGE_PARAM");
  std::vector<unsigned char> pixels(64 * 48);
  for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 7);
  SetObject(param, "pData", "[B", ArrayOf(pixels));
  SetInt(param, "nDataLen", static_cast<jint>(pixels.size()));
  SetShort(param, "nWidth", 64);
  SetShort(param, "nHeight", 48);
  SetInt(param, "nJpgQuality", 90);
  SetEnumField(param, "enPixelType", "QuorinGvspPixelType", "PixelType_Gvsp_Mono8");
  const std::pair<const char*, std::string> formats[] = {
      {"QUORIN_Image_Bmp", "BM"}, {"QUORIN_Image_Jpeg", "\xFF\xD8"}, {"QUORIN_Image_Png", "\x89P"}};
  for (const auto& [type, magic] : formats) {
    SetEnumField(param, "enImageType", "QUORIN_IMAGE_TYPE", type);
    ASSERT_EQ(Save(handle, param), 0) << type;
    const auto encoded = Bytes(Object(param, "pImageBuffer", "[B"));
    ASSERT_GE(encoded.size(), 2u) << type;
    EXPECT_EQ(std::string(encoded.begin(), encoded.begin() + 2), magic) << type;
    EXPECT_EQ(Int(param, "nImageLen"), static_cast<jint>(encoded.size())) << type;
  }

  // A failure leaves the outputs; the record shows the pixel type sign-extended to 8 bytes.
  const jint before = Int(param, "nImageLen");
  SetInt(param, "nJpgQuality", 5);
  SetEnumField(param, "enPixelType", "QuorinGvspPixelType", "PixelType_Gvsp_Jpeg");
  EXPECT_NE(Save(handle, param), 0);
  EXPECT_EQ(Int(param, "nImageLen"), before);
  QUORIN_SAVE_IMAGE_PARAM sent{};
  std::memcpy(&sent, qsim::CallsTo("QUORIN_SaveImage").back().record.data(), sizeof sent);
  EXPECT_EQ(sent.enPixelType, static_cast<int64_t>(static_cast<int32_t>(0x80180001u)));
  EXPECT_EQ(sent.nJpgQuality, 5u);
  EXPECT_EQ(sent.nWidth, 64);
  EXPECT_EQ(sent.enImageType, 3u);  // PNG, the last one set
  EXPECT_EQ(Bytes(Object(param, "pData", "[B")), pixels);  // released and intact after the failure

  // A successful save of nothing gives an empty array, not null.
  qsim::ScriptOutput("QUORIN_SaveImage", RecordBytes(QUORIN_SAVE_IMAGE_PARAM{}));
  EXPECT_EQ(Save(handle, param), 0);
  ASSERT_NE(Object(param, "pImageBuffer", "[B"), nullptr);
  EXPECT_EQ(Bytes(Object(param, "pImageBuffer", "[B")).size(), 0u);
  EXPECT_EQ(Int(param, "nImageLen"), 0);

  const std::string sig = "(" + kHandleSig + "Z)I";
  for (const bool enable : {true, false}) {
    EXPECT_EQ(CallInt("QUORIN_SetWayBillEnable", sig.c_str(), handle, enable ? JNI_TRUE : JNI_FALSE), 0);
    EXPECT_EQ(qsim::WaybillEnabled(SdkHandle(handle)), enable);
    EXPECT_EQ(qsim::CallsTo("QUORIN_SetWayBillEnable").back().numbers, std::vector<unsigned long long>{enable});
  }
}

}  // namespace
}  // namespace quorin_test
