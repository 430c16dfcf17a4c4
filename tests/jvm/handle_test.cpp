// Handle creation, and the upgrade handle.
#include <cstring>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

const std::string kCreate = "(" + kDeviceInfoSig + ")" + kHandleSig;
const std::string kCreateBySerial = "(Ljava/lang/String;)" + kHandleSig;
const std::string kCreateUpgrade = "()" + kHandleSig;

class HandleTest : public JvmTest {
 protected:
  jobject Device(int index) { return ListGet(CallObject("QUORIN_EnumDevices", "()Ljava/util/ArrayList;"), index); }
  jobject Create(jobject device) { return CallObject("QUORIN_CreateHandle", kCreate.c_str(), device); }
  jobject BySerial(jstring serial) { return CallObject("QUORIN_CreateHandleBySerialNumber", kCreateBySerial.c_str(), serial); }
  // "errCode message" of the ParameterException the last call left pending.
  std::string Thrown() {
    jthrowable thrown = env_->ExceptionOccurred();
    env_->ExceptionClear();
    if (thrown == nullptr || !env_->IsInstanceOf(thrown, env_->FindClass("QuorinCtrlWrapper/ParameterException"))) return "not thrown";
    return std::to_string(Int(thrown, "errCode")) + " " + String(thrown, "message");
  }
};

TEST_F(HandleTest, CreatorsThrowParameterExceptionsWithTheirTexts) {
  EXPECT_EQ(Create(nullptr), nullptr);
  EXPECT_EQ(Thrown(), "-2147352572 QUORIN_CreateHandle pstDevInfo is null");
  EXPECT_EQ(BySerial(nullptr), nullptr);
  EXPECT_EQ(Thrown(), "-2147352572 QUORIN_CreateHandleBySerialNumber strSerialNumber is null");
  EXPECT_TRUE(qsim::Calls().empty());
  // A failing SDK's status becomes the errCode.
  qsim::ScriptStatus("QUORIN_CreateHandle", qsim::kAccessDenied);
  EXPECT_EQ(Create(Device(0)), nullptr);
  EXPECT_EQ(Thrown(), std::to_string(static_cast<jint>(qsim::kAccessDenied)) + " QUORIN_CreateHandle create failed");
  EXPECT_EQ(BySerial(Str("QN-NOT-THERE")), nullptr);
  EXPECT_EQ(Thrown(), std::to_string(static_cast<jint>(qsim::kNoSuchDevice)) +
                          " QUORIN_CreateHandleBySerialNumber create failed");
  EXPECT_EQ(qsim::CallsTo("QUORIN_CreateHandleBySerialNumber").at(0).texts, std::vector<std::string>{"QN-NOT-THERE"});
}

// The record handed back is the one enumerated, byte for byte, a text filling its whole array
// included; the new Handle carries the SDK handle and nothing else.
TEST_F(HandleTest, CreationHandsBackTheEnumeratedRecord) {
  jobject device = Device(1);
  SetString(Object(device, "stGigEInfo", kGigESig), "chModelName", std::string(31, 'M'));  // and the terminator: 32
  jobject handle = Create(device);
  ASSERT_NE(handle, nullptr);
  EXPECT_NE(Long(handle, "hHandle"), 0);
  for (const char* field : {"upHandle", "lExceptionCallParam", "lAllEventCallParam", "lImageCallParam",
                            "lTriggerCallParam"}) {
    EXPECT_EQ(Long(handle, field), 0) << field;
  }
  EXPECT_EQ(Int(handle, "PayloadSize"), 0);
  QUORIN_DEVICE_INFO expected = qsim::DefaultReaders()[1];
  std::memset(expected.stGigEInfo.chModelName, 'M', 31);
  ASSERT_EQ(qsim::CallsTo("QUORIN_CreateHandle").at(0).record, RecordBytes(expected));

  // Device texts go back as UTF-8, not re-encoded to the GBK they may have come in.
  ASSERT_NE(Create(Device(0)), nullptr);
  QUORIN_DEVICE_INFO sent;
  std::memcpy(&sent, qsim::CallsTo("QUORIN_CreateHandle").at(1).record.data(), sizeof sent);
  EXPECT_EQ(std::string(sent.stGigEInfo.chUserDefinedName), "分拣线一");

  jobject bySerial = BySerial(Str("QN2311W0008"));
  ASSERT_NE(bySerial, nullptr);
  EXPECT_EQ(OnHandle("QUORIN_OpenDevice", bySerial), 0);
}

TEST_F(HandleTest, UpgradeHandleLivesInUpHandleOnly) {
  jobject upgrade = CallObject("QUORIN_CreateHandleForUpgradeAndEncryption", kCreateUpgrade.c_str());
  ASSERT_NE(upgrade, nullptr);
  EXPECT_EQ(Long(upgrade, "hHandle"), 0);
  // Used as a device handle it passes a null SDK handle, and the SDK says so.
  EXPECT_EQ(OnHandle("QUORIN_OpenDevice", upgrade), static_cast<jint>(qsim::kInvalidHandle));
  EXPECT_EQ(qsim::CallsTo("QUORIN_OpenDevice").at(0).handle, nullptr);

  // Failure is silent: null, no exception, nothing printed.
  qsim::ScriptStatus("QUORIN_CreateHandleForUpgradeAndEncryption", qsim::kResource);
  testing::internal::CaptureStdout();
  EXPECT_EQ(CallObject("QUORIN_CreateHandleForUpgradeAndEncryption", kCreateUpgrade.c_str()), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(TakeException(), "");
}

}  // namespace
}  // namespace quorin_test
