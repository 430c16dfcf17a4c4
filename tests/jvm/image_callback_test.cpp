// The image callback: one shared frame object, one reused array per Handle, delivered on
// the stand-in's threads.
#include <chrono>
#include <thread>

#include <cstring>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

class ImageCallbackTest : public JvmTest {
 protected:
  jint Register(jobject handle, jobject callback) {
    return CallInt("QUORIN_RegisterImageCallBackEx2", ("(" + kHandleSig + "Ljava/lang/Object;)I").c_str(), handle,
                   callback);
  }
  jint RegisterChannel(jobject handle, jint channel, jobject callback) {
    return CallInt("QUORIN_MSC_RegisterImageCallBack", ("(" + kHandleSig + "ILjava/lang/Object;)I").c_str(), handle,
                   channel, callback);
  }
  jint Start(jobject handle) { return CallInt("QUORIN_StartGrabbing", ("(" + kHandleSig + ")I").c_str(), handle); }
  jint Stop(jobject handle) { return CallInt("QUORIN_StopGrabbing", ("(" + kHandleSig + ")I").c_str(), handle); }
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
  bool SameObject(jobject a, const char* fieldA, jobject b, const char* fieldB, const char* sig = "Ljava/lang/Object;") {
    return env_->IsSameObject(Object(a, fieldA, sig), Object(b, fieldB, sig));
  }
};

TEST_F(ImageCallbackTest, EveryDeliveryReusesTheArrayAndTheSharedFrameObject) {
  jobject handle = GrabbingPushedFrames(0, 32);
  jobject recorder = New("QuorinTest/ImageRecorder");
  ASSERT_EQ(Register(handle, recorder), 0);
  ASSERT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(10, {1, 2, 3, 4})));
  ASSERT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(11, {9, 8, 7})));
  EXPECT_EQ(Int(recorder, "calls"), 2);
  EXPECT_EQ(Int(recorder, "lastFrameNum"), 11);
  EXPECT_EQ(Bytes(recorder, "lastBytes"), (std::vector<unsigned char>{9, 8, 7}));
  EXPECT_TRUE(SameObject(recorder, "firstArray", recorder, "lastArray", "[B"));
  EXPECT_TRUE(SameObject(recorder, "firstInfo", recorder, "lastInfo"));
  EXPECT_EQ(env_->GetArrayLength(static_cast<jbyteArray>(Object(recorder, "lastArray", "[B"))), 32);
  // The array holds the first frame's bytes beyond the second's length: only nFrameLen belong to a frame.
  EXPECT_EQ(Bytes(recorder, "lastArray")[3], 4);
  EXPECT_EQ(String(recorder, "firstCode"), "QN-CALLBACK");
  EXPECT_EQ(Int(recorder, "firstCode1DQuality"), 1);  // the callback writes the 1-D flag

  // Another Handle gets its own array but the same frame object.
  jobject other = GrabbingPushedFrames(2, 16);
  jobject otherRecorder = New("QuorinTest/ImageRecorder");
  ASSERT_EQ(Register(other, otherRecorder), 0);
  ASSERT_TRUE(qsim::FireImage(SdkHandle(other), FrameOf(1, {5})));
  EXPECT_TRUE(SameObject(recorder, "lastInfo", otherRecorder, "lastInfo"));
  EXPECT_FALSE(SameObject(recorder, "lastArray", otherRecorder, "lastArray", "[B"));
  EXPECT_EQ(env_->GetArrayLength(static_cast<jbyteArray>(Object(otherRecorder, "lastArray", "[B"))), 16);
}

TEST_F(ImageCallbackTest, FramesWithoutAKnownSizeAreDroppedAndLongFramesCut) {
  jobject handle = OpenReader(0);  // grabbing never started through the bridge: PayloadSize 0
  jobject recorder = New("QuorinTest/ImageRecorder");
  ASSERT_EQ(Register(handle, recorder), 0);
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

TEST_F(ImageCallbackTest, RegistrationsShareOneContextThatOutlivesUnregistering) {
  jobject handle = GrabbingPushedFrames(0, 8);
  jobject thrower = New("QuorinTest/ThrowingCallback");
  ASSERT_EQ(RegisterChannel(handle, 0, thrower), 0);
  const jlong context = Long(handle, "lImageCallParam");
  EXPECT_NE(context, 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_MSC_RegisterImageCallBack").at(0).numbers, std::vector<unsigned long long>{0});
  ASSERT_EQ(Register(handle, thrower), 0);
  EXPECT_EQ(Long(handle, "lImageCallParam"), context);
  EXPECT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(1, {1})));
  EXPECT_TRUE(qsim::FireImage(SdkHandle(handle), FrameOf(2, {1})));
  EXPECT_EQ(Int(thrower, "calls"), 2);
  EXPECT_EQ(Register(handle, nullptr), 0);
  EXPECT_FALSE(qsim::FireImage(SdkHandle(handle), FrameOf(3, {1})));
  EXPECT_EQ(Long(handle, "lImageCallParam"), context);
}

TEST_F(ImageCallbackTest, ProducedFramesOfEveryChannelGoToTheLastRegisteredCallback) {
  jobject handle = OpenReader(1);  // four channels
  void* sdk = SdkHandle(handle);
  qsim::SetIntNode(sdk, "Width", 64, 64, 2448, 8);
  qsim::SetIntNode(sdk, "Height", 64, 64, 2048, 8);
  qsim::SetFloatNode(sdk, "AcquisitionFrameRate", 200.0f, 1.0f, 200.0f);
  jobject first = New("QuorinTest/ImageRecorder");
  jobject second = New("QuorinTest/ImageRecorder");
  for (jint channel = 0; channel < 4; ++channel) ASSERT_EQ(RegisterChannel(handle, channel, first), 0);
  ASSERT_EQ(RegisterChannel(handle, 0, second), 0);  // now owns every channel's frames
  ASSERT_EQ(Start(handle), 0);
  jclass recorderClass = env_->GetObjectClass(second);
  jmethodID calls = env_->GetMethodID(recorderClass, "calls", "()I");
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  for (;;) {
    const jint delivered = env_->CallIntMethod(second, calls);
    Checked();
    if (delivered >= 40 || std::chrono::steady_clock::now() > deadline) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  ASSERT_EQ(Stop(handle), 0);
  EXPECT_GE(Int(second, "calls"), 40);
  EXPECT_EQ(Int(first, "calls"), 0);
  EXPECT_EQ(Int(second, "outOfOrder"), 0);  // in order per channel, none twice
  unsigned long long delivered = 0;
  for (unsigned int channel = 0; channel < 4; ++channel) delivered += qsim::CallbackDeliveries(sdk, channel);
  EXPECT_EQ(delivered, static_cast<unsigned long long>(Int(second, "calls")));
}

}  // namespace
}  // namespace quorin_test
