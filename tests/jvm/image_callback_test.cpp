// The image callback: one shared frame object, one reused array per Handle, delivered on
// the stand-in's threads.
#include <cstring>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

constexpr const char* kOnImage = "QUORIN_RegisterImageCallBackEx2";

class ImageCallbackTest : public JvmTest {
 protected:
  jint RegisterChannel(jobject handle, jint channel, jobject callback) {
    return CallInt("QUORIN_MSC_RegisterImageCallBack", ("(" + kHandleSig + "ILjava/lang/Object;)I").c_str(), handle,
                   channel, callback);
  }
  static qsim::Frame FrameOf(unsigned int number, std::vector<unsigned char> image) {
    qsim::Frame frame;
    frame.info.nFrameNum = number;
    frame.info.nFrameLen = static_cast<unsigned int>(image.size());
    frame.info.enPixelType = 0x01080001;
    frame.image = std::move(image);
    QUORIN_BCR_INFO_EX code{};
    std::strcpy(code.chCode, "QN-CALLBACK");
    code.n1DIsGetQuality = 1;
    frame.codes = {code};
    return frame;
  }
  std::vector<unsigned char> Bytes(jobject recorder, const char* field) {
    return JvmTest::Bytes(Object(recorder, field, "[B"));
  }
  jsize ArrayLength(jobject recorder) {
    return env_->GetArrayLength(static_cast<jbyteArray>(Object(recorder, "lastArray", "[B")));
  }
  bool SameObject(jobject a, const char* fieldA, jobject b, const char* fieldB, const char* sig = "Ljava/lang/Object;") {
    return env_->IsSameObject(Object(a, fieldA, sig), Object(b, fieldB, sig));
  }
};

TEST_F(ImageCallbackTest, EveryDeliveryReusesTheArrayAndTheSharedFrameObject) {
  jobject handle = GrabbingPushedFrames(0, 32);
  jobject recorder = New("QuorinTest/ImageRecorder");
  ASSERT_EQ(Register(kOnImage, handle, recorder), 0);
  ASSERT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(10, {1, 2, 3, 4})));
  ASSERT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(11, {9, 8, 7})));
  EXPECT_EQ(Int(recorder, "calls"), 2);
  EXPECT_EQ(Int(recorder, "lastFrameNum"), 11);
  EXPECT_EQ(Int(recorder, "lastFrameLen"), 3);
  EXPECT_TRUE(SameObject(recorder, "firstArray", recorder, "lastArray", "[B"));
  EXPECT_TRUE(SameObject(recorder, "firstInfo", recorder, "lastInfo"));
  // One PayloadSize array; past the second frame's nFrameLen it still holds the first frame's bytes.
  std::vector<unsigned char> filled = {9, 8, 7, 4};
  filled.resize(32);
  EXPECT_EQ(Bytes(recorder, "lastArray"), filled);
  EXPECT_EQ(String(recorder, "firstCode"), "QN-CALLBACK");
  EXPECT_EQ(Int(recorder, "firstCode1DQuality"), 1);  // the callback writes the 1-D flag

  // Another Handle gets its own array but the same frame object.
  jobject other = GrabbingPushedFrames(2, 16);
  jobject otherRecorder = New("QuorinTest/ImageRecorder");
  ASSERT_EQ(Register(kOnImage, other, otherRecorder), 0);
  ASSERT_TRUE(qsim::FireImage(SdkHandle(other), FrameOf(1, {5})));
  EXPECT_TRUE(SameObject(recorder, "lastInfo", otherRecorder, "lastInfo"));
  EXPECT_FALSE(SameObject(recorder, "lastArray", otherRecorder, "lastArray", "[B"));
  EXPECT_EQ(ArrayLength(otherRecorder), 16);
}

TEST_F(ImageCallbackTest, FramesWithoutAKnownSizeAreDroppedAndLongFramesCut) {
  jobject handle = OpenReader(0);  // grabbing never started through the bridge: PayloadSize 0
  jobject recorder = New("QuorinTest/ImageRecorder");
  ASSERT_EQ(Register(kOnImage, handle, recorder), 0);
  testing::internal::CaptureStdout();
  EXPECT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(1, {1})));
  EXPECT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(2, {1})));
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "JNI test ImageCallBack PayloadSize = 0\r\nJNI test ImageCallBack PayloadSize = 0\r\n");
  EXPECT_EQ(Int(recorder, "calls"), 0);

  SetInt(handle, "PayloadSize", 4);
  ASSERT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(3, {1, 2, 3, 4, 5, 6})));
  EXPECT_EQ(Int(recorder, "calls"), 1);
  EXPECT_EQ(Int(recorder, "lastFrameLen"), 6);  // the full length still tells Java
  EXPECT_EQ(Bytes(recorder, "lastArray"), (std::vector<unsigned char>{1, 2, 3, 4}));
}

// Both registrations share one context: the last one owns every channel's frames, a callback that
// throws is survived, and unregistering stops the deliveries but keeps the context.
TEST_F(ImageCallbackTest, RegistrationsShareOneContextAndTheLastOwnsEveryChannel) {
  jobject handle = GrabbingPushedFrames(1, 8);  // four channels
  jobject first = New("QuorinTest/ImageRecorder");
  for (jint channel = 0; channel < 4; ++channel) ASSERT_EQ(RegisterChannel(handle, channel, first), 0);
  const jlong context = Long(handle, "lImageCallParam");
  EXPECT_NE(context, 0);
  jobject thrower = New("QuorinTest/ThrowingCallback");
  ASSERT_EQ(Register(kOnImage, handle, thrower), 0);
  EXPECT_EQ(Long(handle, "lImageCallParam"), context);
  EXPECT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(1, {1}), 3));
  EXPECT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(2, {1}), 3));
  EXPECT_EQ(Int(thrower, "calls"), 2);
  jobject last = New("QuorinTest/ImageRecorder");
  ASSERT_EQ(RegisterChannel(handle, 0, last), 0);
  ASSERT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(3, {1}), 2));
  EXPECT_EQ(Int(last, "lastFrameNum"), 3);
  EXPECT_EQ(Int(first, "calls"), 0);
  EXPECT_EQ(Register(kOnImage, handle, nullptr), 0);
  EXPECT_FALSE(qsim::FireImage(SdkHandle(handle), FrameOf(4, {1})));
  EXPECT_EQ(Long(handle, "lImageCallParam"), context);
}

}  // namespace
}  // namespace quorin_test
