// Thousands of scripted SDK failures through every fetch, parameter call and registration:
// a failing call may leave no Java object, no JNI reference and no native memory behind.
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

// The interpreter under the emulator is some 50 times slower; a tenth of the calls still shows
// anything a single call leaves behind.
int FailuresPerCall() {
  const char* emulator = std::getenv("QUORIN_TEST_EMULATOR");
  return emulator != nullptr && *emulator != '\0' ? 1000 : 10000;
}
constexpr int kBatch = 500;  // calls between two readings of the stand-in's call log
// Per failing call, what may show as growth without being anything the call kept: a bound that
// no Java object (16 bytes at least) and no C-heap block (16 bytes at least) fits under.
constexpr long kJavaSlackPerCall = 4;
constexpr long kNativeSlackPerCall = 8;
// The C-heap block a short pinned text takes: 32 bytes, 80 with the JNI checker's guard bytes.
constexpr long kPinnedBlock = 128;
// Pages of the Java heap come and go as the collector sizes it; the C-heap figure is the fine one.
constexpr long kResidentSlack = 16L << 20;

// One failing call through Java, with the SDK function scripted to fail and the status it answers.
struct Failure {
  const char* function;
  unsigned int status;
  std::function<bool(jint)> failsAs;  // true when Java saw exactly the scripted failure
  const char* pinned = nullptr;       // the text this failure keeps pinned by design, if any
};

class FaultLeakTest : public JvmTest {
 protected:
  void SetUp() override {
    JvmTest::SetUp();
    jvmti_ = FootprintJvmti(env_);
    ASSERT_NE(jvmti_, nullptr);
  }
  void TearDown() override {
    if (jvmti_ != nullptr) jvmti_->DisposeEnvironment();
    JvmTest::TearDown();
  }

  // Calls the row `count` times; returns how many calls Java did not see fail as scripted. Every
  // call must reach the SDK, and the stand-in's log is emptied as it goes so that it stays small.
  int Run(const Failure& row, int count) {
    qsim::ScriptStatus(row.function, row.status);
    qsim::ClearCalls();
    testing::internal::CaptureStdout();  // the failing enumerations print a line each
    int wrong = 0;
    size_t reached = 0;
    for (int done = 0; done < count; done += kBatch) {
      for (int i = 0; i < kBatch; ++i) wrong += row.failsAs(static_cast<jint>(row.status)) ? 0 : 1;
      reached += qsim::CallsTo(row.function).size();
      qsim::ClearCalls();
    }
    testing::internal::GetCapturedStdout();
    qsim::ScriptStatus(row.function, 0);
    EXPECT_EQ(reached, static_cast<size_t>(count)) << row.function;
    return wrong;
  }

  // The pending exception is a ParameterException carrying `status`; it is cleared, and no
  // local reference of it stays in this frame.
  bool ThrewParameterException(jint status) {
    jthrowable thrown = env_->ExceptionOccurred();
    if (thrown == nullptr) return false;
    env_->ExceptionClear();
    jclass parameterException = env_->FindClass("QuorinCtrlWrapper/ParameterException");
    const bool matches = env_->IsInstanceOf(thrown, parameterException) && Int(thrown, "errCode") == status;
    env_->DeleteLocalRef(parameterException);
    env_->DeleteLocalRef(thrown);
    return matches;
  }

  std::vector<Failure> Failures(jobject handle, jobject deviceInfo);

  jvmtiEnv* jvmti_ = nullptr;
};

constexpr const char* kKey = "Width";
constexpr const char* kSerial = "QN2405C0117";

std::vector<Failure> FaultLeakTest::Failures(jobject handle, jobject deviceInfo) {
  const std::string h = "(" + kHandleSig;
  const std::string ex2 = "L" + Define("QUORIN_IMAGE_OUT_INFO_EX2") + ";";
  const std::string hKey = h + "Ljava/lang/String;";
  auto value = [](const char* record) { return "L" + Define(record) + ";)I"; };
  // Every argument object is made once, here, so that the loops make no references of their own.
  jbyteArray image = env_->NewByteArray(64);
  jstring key = Str(kKey);
  jstring text = Str("Continuous");
  jobject frame = NewDefine("QUORIN_IMAGE_OUT_INFO_EX2");
  jobject saveParam = NewDefine("QUORIN_SAVE_IMAGE_PARAM");
  jobject callback = New("QuorinTest/ImageRecorder");
  // The frame fetches need a known frame size, waybills a pixel type and the save its pixels.
  SetInt(handle, "PayloadSize", 64);
  SetObject(frame, "enPixelType", "L" + Define("QuorinGvspPixelType") + ";",
            Constant("QuorinGvspPixelType", "PixelType_Gvsp_Mono8"));
  SetObject(saveParam, "pData", "[B", image);
  SetInt(saveParam, "nDataLen", 64);

  auto status = [this, handle](const char* method, unsigned int scripted, std::string sig, auto... args) {
    return Failure{method, scripted, [this, handle, method, sig, args...](jint failure) {
                     return CallInt(method, sig.c_str(), handle, args...) == failure;
                   }};
  };
  auto nullList = [this](const char* method, unsigned int scripted) {
    return Failure{method, scripted, [this, method](jint) { return CallObject(method, "()Ljava/util/ArrayList;") == nullptr; }};
  };
  auto thrown = [this](const char* method, unsigned int scripted, std::string sig, jobject arg) {
    return Failure{method, scripted, [this, method, sig, arg](jint failure) {
                     return CallObject(method, sig.c_str(), arg) == nullptr && ThrewParameterException(failure);
                   }};
  };
  auto pinned = [](Failure failure, const char* text) {
    failure.pinned = text;
    return failure;
  };
  using namespace qsim;
  return {
      // Frames and lists.
      status("QUORIN_GetOneFrameTimeoutEx2", kNoData, h + "[B" + ex2 + "I)I", image, frame, 1),
      status("QUORIN_MSC_GetOneFrameTimeout", kNoData, h + "[B" + ex2 + "II)I", image, frame, 2, 1),
      status("QUORIN_GetOneFrameTimeout", kNoData, h + "[B" + "L" + Define("QUORIN_FRAME_OUT_INFO") + ";I)I", image,
             NewDefine("QUORIN_FRAME_OUT_INFO"), 1),
      status("QUORIN_GetWayBillInfoEx", kResource, h + "[B" + ex2 + ")I", image, frame),
      status("QUORIN_SaveImage", kUnsupportedFormat, h + value("QUORIN_SAVE_IMAGE_PARAM"), saveParam),
      status("QUORIN_GetDeviceInfo", kDeviceGone, h + value("QUORIN_DEVICE_INFO"), deviceInfo),
      nullList("QUORIN_EnumDevices", kResource),
      nullList("QUORIN_EnumIDDevices", kResource),
      nullList("QUORIN_EnumCodeReader", kResource),
      nullList("QUORIN_DiscoveryUpgDevice", kResource),
      thrown("QUORIN_CreateHandle", kAccessDenied, "(" + kDeviceInfoSig + ")" + kHandleSig, deviceInfo),
      pinned(thrown("QUORIN_CreateHandleBySerialNumber", kNoSuchDevice, "(Ljava/lang/String;)" + kHandleSig, Str(kSerial)),
             kSerial),
      // Parameters.
      status("QUORIN_SetIntValue", kOutOfRange, hKey + "J)I", key, jlong{7}),
      status("QUORIN_GetIntValue", kNotReadable, hKey + value("QUORIN_INT_VALUE"), key, NewDefine("QUORIN_INT_VALUE")),
      status("QUORIN_SetEnumValue", kOutOfRange, hKey + "I)I", key, 3),
      status("QUORIN_SetEnumValueByString", kOutOfRange, hKey + "Ljava/lang/String;)I", key, text),
      status("QUORIN_GetEnumValue", kWrongNodeType, hKey + value("QUORIN_ENUM_VALUE"), key, NewDefine("QUORIN_ENUM_VALUE")),
      status("QUORIN_SetFloatValue", kNotWritable, hKey + "F)I", key, 2.5),
      status("QUORIN_GetFloatValue", kWrongNodeType, hKey + value("QUORIN_FLOAT_VALUE"), key, NewDefine("QUORIN_FLOAT_VALUE")),
      status("QUORIN_SetBoolValue", kNotWritable, hKey + "Z)I", key, JNI_TRUE),
      status("QUORIN_GetBoolValue", kWrongNodeType, hKey + value("QUORIN_BOOL_VALUE"), key, NewDefine("QUORIN_BOOL_VALUE")),
      status("QUORIN_SetStringValue", kNotWritable, hKey + "Ljava/lang/String;)I", key, text),
      status("QUORIN_GetStringValue", kNotReadable, hKey + value("QUORIN_STRING_VALUE"), key, NewDefine("QUORIN_STRING_VALUE")),
      status("QUORIN_SetCommandValue", kUnknownNode, hKey + ")I", key),
      status("QUORIN_Algorithm_SetIntValue", kOutOfRange, hKey + "I)I", key, 9),
      status("QUORIN_Algorithm_GetIntValue", kUnknownNode, hKey + value("QUORIN_ALGORITHM_INT_VALUE"), key,
             NewDefine("QUORIN_ALGORITHM_INT_VALUE")),
      pinned(status("QUORIN_XML_GetNodeAccessMode", kUnknownNode, hKey + value("QUORIN_XML_NODE_ACCESSMODE"), key,
                    NewDefine("QUORIN_XML_NODE_ACCESSMODE")), kKey),
      status("QUORIN_XML_GetGenICamXML", qsim::kBufferTooSmall, h + "[BLjava/lang/Integer;)I", image, NewInteger(0)),
      status("QUORIN_SetFrameNodeNum", kBadParameter, h + "I)I", 4),
      // Registrations on a Handle that has none standing.
      status("QUORIN_RegisterExceptionCallBack", kBusy, h + "Ljava/lang/Object;)I", callback),
      status("QUORIN_RegisterAllEventCallBack", kBusy, h + "Ljava/lang/Object;)I", callback),
      status("QUORIN_RegisterTriggerCallBack", kBusy, h + "Ljava/lang/Object;)I", callback),
      status("QUORIN_RegisterImageCallBackEx2", kBusy, h + "Ljava/lang/Object;)I", callback),
      status("QUORIN_MSC_RegisterImageCallBack", kBusy, h + "ILjava/lang/Object;)I", 1, callback),
  };
}

TEST_F(FaultLeakTest, ThousandsOfFailingCallsLeaveNothingBehind) {
  jobject devices = CallObject("QUORIN_EnumIDDevices", "()Ljava/util/ArrayList;");
  ASSERT_NE(devices, nullptr);
  jobject deviceInfo = ListGet(devices, 1);
  jobject handle = OpenReader(1);
  const std::vector<Failure> rows = Failures(handle, deviceInfo);
  ASSERT_FALSE(HasFailure());
  const long count = FailuresPerCall();
  // A first round reaches every high-water mark: compiled code, the first registration's context.
  for (const Failure& row : rows) EXPECT_EQ(Run(row, count), 0) << row.function;

  const Footprint start = MeasureFootprint(env_, jvmti_);
  Footprint before = start;
  for (const Failure& row : rows) {
    EXPECT_EQ(Run(row, count), 0) << row.function;
    const Footprint after = MeasureFootprint(env_, jvmti_);
    const long cHeap = after.cHeap - before.cHeap;
    EXPECT_EQ(after.globalRefs, before.globalRefs) << row.function;
    EXPECT_EQ(after.localRefs, before.localRefs) << row.function;
    EXPECT_LT(after.heap - before.heap, count * kJavaSlackPerCall) << row.function;
    // Two failures keep their text's characters pinned by design. No lower bound: the VM hands
    // pooled blocks back to the C heap on its own schedule, so a row may even shrink it.
    const long perCall = row.pinned == nullptr ? kNativeSlackPerCall : kPinnedBlock + kNativeSlackPerCall;
    EXPECT_LT(cHeap, count * perCall) << row.function;
    before = after;
  }
  std::printf("%zu calls failed %ld times each: %ld global and %ld local JNI references throughout; "
              "Java heap %+ld B, C heap %+ld B, resident %+ld B\n",
              rows.size(), count, start.globalRefs, start.localRefs, before.heap - start.heap,
              before.cHeap - start.cHeap, before.resident - start.resident);
#ifndef QUORIN_TEST_ASAN  // the sanitizer's quarantine holds freed memory resident
  EXPECT_LT(before.resident - start.resident, kResidentSlack);
#endif
  EXPECT_EQ(OnHandle("QUORIN_CloseDevice", handle), 0);
  EXPECT_EQ(OnHandle("QUORIN_DestroyHandle", handle), 0);
}

}  // namespace
}  // namespace quorin_test
