// Handle creation, opening, closing and destruction, and the upgrade handle.
#include <cstring>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

const std::string kCreate = "(" + kDeviceInfoSig + ")" + kHandleSig;
const std::string kCreateBySerial = "(Ljava/lang/String;)" + kHandleSig;
const std::string kHandleToStatus = "(" + kHandleSig + ")I";

class HandleTest : public JvmTest {
 protected:
  jobject Device(int index) {
    return ListGet(CallObject("QUORIN_EnumDevices", "()Ljava/util/ArrayList;"), index);
  }
  jobject Create(jobject device) { return CallObject("QUORIN_CreateHandle", kCreate.c_str(), device); }
  jint Status(const char* method, jobject handle) { return CallInt(method, kHandleToStatus.c_str(), handle); }
  // The ParameterException the last call left pending: errCode and message.
  void ExpectParameterException(jint errCode, const std::string& message) {
    jthrowable thrown = env_->ExceptionOccurred();
    ASSERT_NE(thrown, nullptr);
    env_->ExceptionClear();
    jclass expected = env_->FindClass("QuorinCtrlWrapper/ParameterException");
    EXPECT_TRUE(env_->IsInstanceOf(thrown, expected));
    EXPECT_EQ(Int(thrown, "errCode"), errCode);
    EXPECT_EQ(String(thrown, "message"), message);
  }
};

TEST_F(HandleTest, CreatorsThrowParameterExceptionsWithTheirTexts) {
  EXPECT_EQ(Create(nullptr), nullptr);
  ExpectParameterException(-2147352572, "QUORIN_CreateHandle pstDevInfo is null");
  EXPECT_EQ(CallObject("QUORIN_CreateHandleBySerialNumber", kCreateBySerial.c_str(), nullptr), nullptr);
  ExpectParameterException(-2147352572, "QUORIN_CreateHandleBySerialNumber strSerialNumber is null");
  EXPECT_TRUE(qsim::Calls().empty());
  // A failing SDK's status becomes the errCode.
  qsim::ScriptStatus("QUORIN_CreateHandle", qsim::kAccessDenied);
  EXPECT_EQ(Create(Device(0)), nullptr);
  ExpectParameterException(static_cast<jint>(qsim::kAccessDenied), "QUORIN_CreateHandle create failed");

  EXPECT_EQ(CallObject("QUORIN_CreateHandleBySerialNumber", kCreateBySerial.c_str(), Str("QN-NOT-THERE")), nullptr);
  ExpectParameterException(static_cast<jint>(qsim::kNoSuchDevice), "QUORIN_CreateHandleBySerialNumber create failed");
  EXPECT_EQ(qsim::CallsTo("QUORIN_CreateHandleBySerialNumber").at(0).texts, std::vector<std::string>{"QN-NOT-THERE"});
}

TEST_F(HandleTest, CreatedHandleCarriesOnlyTheSdkHandle) {
  jobject handle = Create(Device(1));
  ASSERT_NE(handle, nullptr);
  EXPECT_NE(Long(handle, "hHandle"), 0);
  for (const char* field : {"upHandle", "lExceptionCallParam", "lAllEventCallParam", "lImageCallParam",
                            "lTriggerCallParam"}) {
    EXPECT_EQ(Long(handle, field), 0) << field;
  }
  EXPECT_EQ(Int(handle, "PayloadSize"), 0);
  // The record handed back is the one enumerated, byte for byte.
  const auto calls = qsim::CallsTo("QUORIN_CreateHandle");
  ASSERT_EQ(calls.size(), 1u);
  ASSERT_EQ(calls[0].record.size(), sizeof(QUORIN_DEVICE_INFO));
  EXPECT_EQ(0, std::memcmp(calls[0].record.data(), &qsim::DefaultReaders()[1], sizeof(QUORIN_DEVICE_INFO)));

  jobject bySerial = CallObject("QUORIN_CreateHandleBySerialNumber", kCreateBySerial.c_str(), Str("QN2311W0008"));
  ASSERT_NE(bySerial, nullptr);
  EXPECT_NE(Long(bySerial, "hHandle"), Long(handle, "hHandle"));
}

TEST_F(HandleTest, TextsGoBackAsJavaGivesThemAndAFullArrayFits) {
  jobject device = Device(0);
  jobject gige = Object(device, "stGigEInfo", kGigESig);
  SetString(gige, "chModelName", std::string(31, 'M'));  // 31 characters and the terminator fill 32
  ASSERT_NE(Create(device), nullptr);
  QUORIN_DEVICE_INFO sent;
  std::memcpy(&sent, qsim::CallsTo("QUORIN_CreateHandle").at(0).record.data(), sizeof sent);
  EXPECT_EQ(std::string(sent.stGigEInfo.chModelName), std::string(31, 'M'));
  EXPECT_EQ(sent.stGigEInfo.nCurrentIp, 0xC0A80114u);        // the raw word, unchanged
  EXPECT_EQ(std::string(sent.stGigEInfo.chUserDefinedName), "分拣线一");  // UTF-8 now, not GBK
  EXPECT_EQ(sent.bCodeReader, 1);
}

using HandleDeathTest = HandleTest;

TEST_F(HandleDeathTest, TextThatDoesNotFitItsArrayEndsTheProcess) {
  jobject device = Device(0);
  SetString(Object(device, "stGigEInfo", kGigESig), "chModelName", std::string(32, 'M'));
  EXPECT_DEATH(Create(device), "does not fit its array: chModelName");
}

TEST_F(HandleTest, OpenAndCloseReturnTheSdkStatus) {
  jobject handle = Create(Device(0));
  EXPECT_EQ(Status("QUORIN_OpenDevice", handle), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_OpenDevice").at(0).handle, SdkHandle(handle));
  EXPECT_EQ(Status("QUORIN_OpenDevice", handle), static_cast<jint>(qsim::kBusy));
  EXPECT_EQ(Status("QUORIN_CloseDevice", handle), 0);
  EXPECT_EQ(Status("QUORIN_CloseDevice", handle), static_cast<jint>(qsim::kNotOpen));
  qsim::ScriptStatus("QUORIN_OpenDevice", qsim::kAccessDenied);
  EXPECT_EQ(Status("QUORIN_OpenDevice", handle), static_cast<jint>(qsim::kAccessDenied));
}

TEST_F(HandleTest, DestroyCallsTheSdkEachTimeWithTheOldHandle) {
  jobject handle = Create(Device(0));
  void* sdkHandle = SdkHandle(handle);
  // A trigger context outlives the handle: destroy neither reads nor clears it.
  SetLong(handle, "lTriggerCallParam", 0x5A5A);
  qsim::ClearCalls();
  EXPECT_EQ(Status("QUORIN_DestroyHandle", handle), 0);
  ASSERT_EQ(qsim::Calls().size(), 1u);
  EXPECT_EQ(qsim::Calls()[0].function, "QUORIN_DestroyHandle");
  EXPECT_EQ(qsim::Calls()[0].handle, sdkHandle);
  EXPECT_EQ(SdkHandle(handle), sdkHandle);
  EXPECT_EQ(Long(handle, "lTriggerCallParam"), 0x5A5A);

  EXPECT_EQ(Status("QUORIN_DestroyHandle", handle), static_cast<jint>(qsim::kInvalidHandle));
  EXPECT_EQ(qsim::CallsTo("QUORIN_DestroyHandle").size(), 2u);
  EXPECT_EQ(qsim::CallsTo("QUORIN_DestroyHandle")[1].handle, sdkHandle);
}

TEST_F(HandleTest, UpgradeHandleLivesInUpHandleOnly) {
  jobject upgrade = CallObject("QUORIN_CreateHandleForUpgradeAndEncryption", ("()" + kHandleSig).c_str());
  ASSERT_NE(upgrade, nullptr);
  EXPECT_EQ(Long(upgrade, "hHandle"), 0);
  EXPECT_NE(Long(upgrade, "upHandle"), 0);
  // Used as a device handle it passes a null SDK handle, and the SDK says so.
  EXPECT_EQ(Status("QUORIN_OpenDevice", upgrade), static_cast<jint>(qsim::kInvalidHandle));
  EXPECT_EQ(qsim::CallsTo("QUORIN_OpenDevice").at(0).handle, nullptr);

  EXPECT_EQ(Status("QUORIN_DestroyHandleForUpgradeAndEncryption", upgrade), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_DestroyHandleForUpgradeAndEncryption").at(0).handle, SdkHandle(upgrade, "upHandle"));

  // Failure is silent: null, no exception, nothing printed.
  qsim::ScriptStatus("QUORIN_CreateHandleForUpgradeAndEncryption", qsim::kResource);
  testing::internal::CaptureStdout();
  EXPECT_EQ(CallObject("QUORIN_CreateHandleForUpgradeAndEncryption", ("()" + kHandleSig).c_str()), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(TakeException(), "");
}

}  // namespace
}  // namespace quorin_test
