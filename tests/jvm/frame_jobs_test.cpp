// The legacy fetch, waybill extraction and image saving through Java.
#include <cstring>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

class FrameJobsTest : public JvmTest {
 protected:
  jint LegacyFetch(jobject handle, jbyteArray data, jobject frame, jint timeout = 1000) {
    return CallInt("QUORIN_GetOneFrameTimeout",
                   ("(" + kHandleSig + "[BL" + Define("QUORIN_FRAME_OUT_INFO") + ";I)I").c_str(), handle, data, frame,
                   timeout);
  }
  jint Fetch(jobject handle, jbyteArray data, jobject frame) {
    return CallInt("QUORIN_GetOneFrameTimeoutEx2",
                   ("(" + kHandleSig + "[BL" + Define("QUORIN_IMAGE_OUT_INFO_EX2") + ";I)I").c_str(), handle, data,
                   frame, 1000);
  }
  jint Waybills(jobject handle, jbyteArray data, jobject frame) {
    return CallInt("QUORIN_GetWayBillInfoEx",
                   ("(" + kHandleSig + "[BL" + Define("QUORIN_IMAGE_OUT_INFO_EX2") + ";)I").c_str(), handle, data,
                   frame);
  }
  jint Save(jobject handle, jobject param) {
    return CallInt("QUORIN_SaveImage", ("(" + kHandleSig + "L" + Define("QUORIN_SAVE_IMAGE_PARAM") + ";)I").c_str(),
                   handle, param);
  }
};

TEST_F(FrameJobsTest, LegacyFetchChecksPrintTheirTexts) {
  jobject frame = NewDefine("QUORIN_FRAME_OUT_INFO");
  testing::internal::CaptureStdout();
  EXPECT_EQ(LegacyFetch(nullptr, env_->NewByteArray(4), frame, 0), kBadArgument);
  EXPECT_EQ(LegacyFetch(nullptr, env_->NewByteArray(4), frame), kNullHandle);
  jobject idle = OpenReader(0);
  EXPECT_EQ(LegacyFetch(idle, env_->NewByteArray(4), frame), kPayloadUnknown);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "JNI QUORIN_GetOneFrameTimeout, param is errorJNI test PayloadSize is 0");
  jobject handle = GrabbingPushedFrames(1, 64);
  EXPECT_EQ(LegacyFetch(handle, env_->NewByteArray(63), frame), kBufferTooSmall);
  SetInt(frame, "nFrameNum", 5);
  EXPECT_EQ(LegacyFetch(handle, env_->NewByteArray(64), frame, 20), static_cast<jint>(qsim::kNoData));
  EXPECT_EQ(Int(frame, "nFrameNum"), 5);
}

TEST_F(FrameJobsTest, LegacyRecordConvertsCodesPointsAndWaybillImage) {
  jobject handle = GrabbingPushedFrames(0, 64);
  auto record = std::make_unique<QUORIN_FRAME_OUT_INFO>();
  record->nWidth = 0xFFFF;
  record->enPixelType = 0x01080001;
  record->nFrameNum = 31;
  record->nChannelID = 2;
  record->nImageCost = 9;
  record->bFlaseTrigger = 1;
  record->enWaybillImageType = 3;  // PNG
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
  EXPECT_EQ(EnumName(Object(frame, "enPixelType", "L" + Define("QuorinGvspPixelType") + ";")), "PixelType_Gvsp_Mono8");
  EXPECT_EQ(Int(frame, "nFrameNum"), 31);
  EXPECT_EQ(Int(frame, "nChannelID"), 2);
  EXPECT_EQ(Int(frame, "nImageCost"), 9);
  EXPECT_EQ(Int(frame, "bFlaseTrigger"), 1);
  EXPECT_EQ(EnumName(Object(frame, "enWaybillImageType", "L" + Define("QUORIN_IMAGE_TYPE") + ";")), "QUORIN_Image_Png");
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

  record->nCodeNumber = 100000;  // more than the record holds
  qsim::ScriptOutput("QUORIN_GetOneFrameTimeout", RecordBytes(*record));
  ASSERT_EQ(LegacyFetch(handle, data, frame), 0);
  EXPECT_EQ(ListSize(codes), QUORIN_MAX_BCRINFO_NUM);
  record->nCodeNumber = 0;
  qsim::ScriptOutput("QUORIN_GetOneFrameTimeout", RecordBytes(*record));
  ASSERT_EQ(LegacyFetch(handle, data, frame), 0);
  EXPECT_EQ(ListSize(codes), 0);
}

TEST_F(FrameJobsTest, LegacyFetchServesTheProducedFrames) {
  jobject handle = OpenReader(0);
  ASSERT_EQ(CallInt("QUORIN_StartGrabbing", ("(" + kHandleSig + ")I").c_str(), handle), 0);
  jbyteArray data = env_->NewByteArray(Int(handle, "PayloadSize"));
  jobject frame = NewDefine("QUORIN_FRAME_OUT_INFO");
  ASSERT_EQ(LegacyFetch(handle, data, frame, 5000), 0);
  EXPECT_EQ(Short(frame, "nWidth"), 1280);
  EXPECT_EQ(Int(frame, "nFrameLen"), 1280 * 1024);
  EXPECT_GE(ListSize(Object(frame, "bcrinfoList", "Ljava/util/ArrayList;")), 1);
}

TEST_F(FrameJobsTest, WaybillRequestRebuildsTheFrameRecordWithItsQuirks) {
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
  std::strcpy(code.chCode, "QN-WAYBILL");
  code.nLen = 10;
  code.stCornerLeftTop = {100, 80};
  code.stCornerRightTop = {180, 82};
  code.stCornerRightBottom = {178, 150};
  code.stCornerLeftBottom = {99, 149};
  code.stCodeQuality.nSCGrade = 4;
  code.stCodeQuality.fSCScore = 1.5f;
  code.stCodeQuality.fModScore = 0.0f;
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
  EXPECT_EQ(Waybills(handle, nullptr, frame), kBadArgument);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "mt test pData and stgrameinfo is null");
  EXPECT_EQ(Waybills(handle, data, NewDefine("QUORIN_IMAGE_OUT_INFO_EX2")), kBadArgument);  // no pixel type

  ASSERT_EQ(Waybills(handle, data, frame), 0);
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
  EXPECT_EQ(sent.stCodeQuality.nSCGrade, 4);
  EXPECT_EQ(sent.stCodeQuality.fSCScore, 1069547520.0f);  // 1.5f's bits, read as a number
  EXPECT_EQ(sent.stCodeQuality.fModScore, 0.0f);
  EXPECT_EQ(request.waybills.nWaybillNum, 2u);
  EXPECT_EQ(request.waybills.stWaybillInfo[0].fCenterX, 1069547520.0f);

  // The SDK's answer replaces the frame's waybill list.
  jobject list = Object(Object(frame, "pstWaybillList", "L" + Define("QUORIN_WAYBILL_LIST") + ";"), "stWaybillInfo",
                        "Ljava/util/ArrayList;");
  ASSERT_EQ(ListSize(list), 1);  // one waybill around the one code
  const auto crop = Bytes(Object(ListGet(list, 0), "pImageWaybill", "[B"));
  ASSERT_GT(crop.size(), 2u);
  EXPECT_EQ(crop[0], 'B');
  EXPECT_EQ(crop[1], 'M');
  EXPECT_EQ(Int(ListGet(list, 0), "nImageLen"), static_cast<jint>(crop.size()));

  qsim::ScriptStatus("QUORIN_GetWayBillInfoEx", qsim::kResource);
  EXPECT_EQ(Waybills(handle, data, frame), static_cast<jint>(qsim::kResource));
  EXPECT_EQ(ListSize(list), 1);  // untouched after a failure
}

TEST_F(FrameJobsTest, SavedImagesComeBackEncoded) {
  jobject handle = OpenReader(0);
  jobject param = NewDefine("QUORIN_SAVE_IMAGE_PARAM");
  EXPECT_EQ(Save(handle, param), kBadArgument);  // no pixels
  std::vector<unsigned char> pixels(64 * 48);
  for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 7);
  SetObject(param, "pData", "[B", ArrayOf(pixels));
  SetInt(param, "nDataLen", static_cast<jint>(pixels.size()));
  SetShort(param, "nWidth", 64);
  SetShort(param, "nHeight", 48);
  const std::string pixelSig = "L" + Define("QuorinGvspPixelType") + ";";
  const std::string imageSig = "L" + Define("QUORIN_IMAGE_TYPE") + ";";
  auto setEnum = [&](const char* field, const std::string& sig, jobject constant) { SetObject(param, field, sig, constant); };
  setEnum("enPixelType", pixelSig, Constant("QuorinGvspPixelType", "PixelType_Gvsp_Mono8"));

  const std::pair<const char*, std::vector<unsigned char>> formats[] = {
      {"QUORIN_Image_Bmp", {'B', 'M'}}, {"QUORIN_Image_Jpeg", {0xFF, 0xD8}}, {"QUORIN_Image_Png", {0x89, 'P'}}};
  size_t fine = 0;  // the JPEG at quality 90
  for (const auto& [type, magic] : formats) {
    setEnum("enImageType", imageSig, Constant("QUORIN_IMAGE_TYPE", type));
    SetInt(param, "nJpgQuality", 90);
    ASSERT_EQ(Save(handle, param), 0) << type;
    const auto encoded = Bytes(Object(param, "pImageBuffer", "[B"));
    ASSERT_GE(encoded.size(), 2u) << type;
    EXPECT_EQ(std::vector<unsigned char>(encoded.begin(), encoded.begin() + 2), magic) << type;
    EXPECT_EQ(Int(param, "nImageLen"), static_cast<jint>(encoded.size())) << type;
    if (magic[0] == 0xFF) fine = encoded.size();
  }
  setEnum("enImageType", imageSig, Constant("QUORIN_IMAGE_TYPE", "QUORIN_Image_Jpeg"));
  SetInt(param, "nJpgQuality", 5);
  ASSERT_EQ(Save(handle, param), 0);
  EXPECT_LT(Bytes(Object(param, "pImageBuffer", "[B")).size(), fine);  // quality reaches the encoder

  // A failure leaves the outputs; the record shows the pixel type sign-extended to 8 bytes.
  const jint before = Int(param, "nImageLen");
  setEnum("enPixelType", pixelSig, Constant("QuorinGvspPixelType", "PixelType_Gvsp_Jpeg"));
  EXPECT_NE(Save(handle, param), 0);
  EXPECT_EQ(Int(param, "nImageLen"), before);
  QUORIN_SAVE_IMAGE_PARAM sent{};
  std::memcpy(&sent, qsim::CallsTo("QUORIN_SaveImage").back().record.data(), sizeof sent);
  EXPECT_EQ(sent.enPixelType, static_cast<int64_t>(static_cast<int32_t>(0x80180001u)));
  EXPECT_EQ(sent.nJpgQuality, 5u);
  EXPECT_EQ(sent.nWidth, 64);
  EXPECT_EQ(sent.enImageType, 2u);
  EXPECT_EQ(Bytes(Object(param, "pData", "[B")), pixels);  // released and intact after the failure

  // A successful save of nothing gives an empty array, not null.
  QUORIN_SAVE_IMAGE_PARAM empty{};
  qsim::ScriptOutput("QUORIN_SaveImage", RecordBytes(empty));
  EXPECT_EQ(Save(handle, param), 0);
  ASSERT_NE(Object(param, "pImageBuffer", "[B"), nullptr);
  EXPECT_EQ(Bytes(Object(param, "pImageBuffer", "[B")).size(), 0u);
  EXPECT_EQ(Int(param, "nImageLen"), 0);

  const std::string sig = "(" + kHandleSig + "Z)I";
  EXPECT_EQ(CallInt("QUORIN_SetWayBillEnable", sig.c_str(), handle, JNI_TRUE), 0);
  EXPECT_TRUE(qsim::WaybillEnabled(SdkHandle(handle)));
  EXPECT_EQ(CallInt("QUORIN_SetWayBillEnable", sig.c_str(), handle, JNI_FALSE), 0);
  EXPECT_FALSE(qsim::WaybillEnabled(SdkHandle(handle)));
  EXPECT_EQ(qsim::CallsTo("QUORIN_SetWayBillEnable").back().numbers, std::vector<unsigned long long>{0});
}

}  // namespace
}  // namespace quorin_test
