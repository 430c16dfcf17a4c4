// Network configuration and firmware upgrade through Java.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <thread>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

const std::string kStr = "Ljava/lang/String;";
const std::string kInteger = "Ljava/lang/Integer;";

class DeviceConfigTest : public JvmTest {
 protected:
  jint ForceIp(jobject handle, jstring ip, jstring mask, jstring gateway) {
    return CallInt("QUORIN_GIGE_ForceIp", ("(" + kHandleSig + kStr + kStr + kStr + ")I").c_str(), handle, ip, mask,
                   gateway);
  }
  jobject EnumeratedGige(int index) {
    return Object(ListGet(CallObject("QUORIN_EnumDevices", "()Ljava/util/ArrayList;"), index), "stGigEInfo", kGigESig);
  }
  jobject Upgrader() { return CallObject("QUORIN_CreateHandleForUpgradeAndEncryption", ("()" + kHandleSig).c_str()); }
  jint StartUpgrade(jobject upgrader, jobject device, jstring path) {
    return CallInt("QUORIN_StartUpgradeDeviceByHandle", ("(" + kHandleSig + kDeviceInfoSig + kStr + ")I").c_str(),
                   upgrader, device, path);
  }
  jint UpgradeProgress(jobject upgrader, jobject progress) {
    return CallInt("QUORIN_GetUpgradeProcessByHandle", ("(" + kHandleSig + kInteger + ")I").c_str(), upgrader,
                   progress);
  }
  jobject Device(int index) { return ListGet(CallObject("QUORIN_EnumDevices", "()Ljava/util/ArrayList;"), index); }
  QUORIN_DEVICE_INFO SentForUpgrade() {
    QUORIN_DEVICE_INFO sent{};
    const auto calls = qsim::CallsTo("QUORIN_StartUpgradeDeviceByHandle");
    if (!calls.empty() && calls.back().record.size() == sizeof sent) {
      std::memcpy(&sent, calls.back().record.data(), sizeof sent);
    }
    return sent;
  }
};

TEST_F(DeviceConfigTest, ForcedAddressesGoToTheSdkAsWordsAndShowInEnumeration) {
  jobject handle = OpenReader(1);

  ASSERT_EQ(ForceIp(handle, Str("192.168.1.10"), Str("255.255.255.0"), Str("192.168.1.1")), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_GIGE_ForceIp").at(0).numbers,
            (std::vector<unsigned long long>{0xC0A8010A, 0xFFFFFF00, 0xC0A80101}));
  jobject gige = EnumeratedGige(1);
  EXPECT_EQ(static_cast<unsigned int>(Int(gige, "nCurrentIp")), 0xC0A8010Au);
  EXPECT_EQ(static_cast<unsigned int>(Int(gige, "nDefultGateWay")), 0xC0A80101u);

  // Text that is not an address is not refused here: it goes as inet_addr reads it.
  qsim::ScriptStatus("QUORIN_GIGE_ForceIp", qsim::kBadParameter);
  EXPECT_EQ(ForceIp(handle, Str("bad"), Str("255.255.0.0"), Str("0.0.0.0")), static_cast<jint>(qsim::kBadParameter));
  EXPECT_EQ(qsim::CallsTo("QUORIN_GIGE_ForceIp").at(1).numbers,
            (std::vector<unsigned long long>{0xFFFFFFFF, 0xFFFF0000, 0}));
}

TEST_F(DeviceConfigTest, IpConfigurationAndGvcpTimeOut) {
  jobject handle = OpenReader(1);
  const std::string setInt = "(" + kHandleSig + "I)I";
  EXPECT_EQ(CallInt("QUORIN_GIGE_SetIpConfig", setInt.c_str(), handle, QUORIN_IP_CFG_STATIC), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_GIGE_SetIpConfig").at(0).numbers, std::vector<unsigned long long>{0x05000000});
  EXPECT_EQ(static_cast<unsigned int>(Int(EnumeratedGige(1), "nIpCfgCurrent")), 0x05000000u);

  EXPECT_EQ(CallInt("QUORIN_GIGE_SetGvcpTimeout", setInt.c_str(), handle, 0), 0);
  EXPECT_EQ(CallInt("QUORIN_GIGE_SetGvcpTimeout", setInt.c_str(), handle, 750), 0);

  const std::string get = "(" + kHandleSig + kInteger + ")I";
  jobject timeout = NewInteger(-5);
  EXPECT_EQ(CallInt("QUORIN_GIGE_GetGvcpTimeout", get.c_str(), handle, timeout), 0);
  EXPECT_EQ(Int(timeout, "value"), 750);  // the caller's own Integer changed
  qsim::ScriptStatus("QUORIN_GIGE_GetGvcpTimeout", qsim::kNotOpen);
  EXPECT_EQ(CallInt("QUORIN_GIGE_GetGvcpTimeout", get.c_str(), handle, timeout), static_cast<jint>(qsim::kNotOpen));
  EXPECT_EQ(Int(timeout, "value"), 0);  // written even after a failure
}

TEST_F(DeviceConfigTest, UpgradeCopiesCountedTexts) {
  jobject upgrader = Upgrader();
  ASSERT_NE(upgrader, nullptr);
  jobject device = Device(0);

  // Every text, the manufacturer's too, is cut to its length in UTF-16 units.
  jobject gige = Object(device, "stGigEInfo", kGigESig);
  SetString(gige, "chManufacturerName", "中文");
  SetString(gige, "chSerialNumber", "QN2405C0117ABCDE");  // 16 characters: the whole array
  qsim::ScriptStatus("QUORIN_StartUpgradeDeviceByHandle", qsim::kBusy);
  EXPECT_EQ(StartUpgrade(upgrader, device, Str("/tmp/fw.bin")), static_cast<jint>(qsim::kBusy));
  const QUORIN_DEVICE_INFO sent = SentForUpgrade();
  EXPECT_EQ(std::string(sent.stGigEInfo.chManufacturerName), "\xE4\xB8");
  EXPECT_EQ(std::string(sent.stGigEInfo.chSerialNumber, 16), "QN2405C0117ABCDE");
  EXPECT_EQ(sent.nMacAddrLow, 0x20140117u);
  EXPECT_EQ(sent.stGigEInfo.nCurrentIp, 0xC0A80114u);
  EXPECT_EQ(qsim::CallsTo("QUORIN_StartUpgradeDeviceByHandle").at(0).texts, std::vector<std::string>{"/tmp/fw.bin"});
  EXPECT_EQ(qsim::CallsTo("QUORIN_StartUpgradeDeviceByHandle").at(0).handle, SdkHandle(upgrader, "upHandle"));
}

TEST_F(DeviceConfigTest, UpgradeRunsToCompletionOrFailsCleanly) {
  jobject upgrader = Upgrader();
  jobject progress = NewInteger(77);
  const std::string missing = testing::TempDir() + "no-such-firmware.bin";
  EXPECT_NE(StartUpgrade(upgrader, Device(2), Str(missing)), 0);
  qsim::ScriptStatus("QUORIN_GetUpgradeProcessByHandle", qsim::kWrongCallOrder);
  EXPECT_EQ(UpgradeProgress(upgrader, progress), static_cast<jint>(qsim::kWrongCallOrder));
  EXPECT_EQ(Int(progress, "value"), 0);  // the Integer is written even when the SDK fails
  qsim::ScriptStatus("QUORIN_GetUpgradeProcessByHandle", 0);

  const std::string firmware = testing::TempDir() + "qr-wb-800.fw";
  std::ofstream(firmware) << "V2.9.0 build261123\n" << std::string(4096, 'F');
  qsim::SetUpgradeDuration(300);
  ASSERT_EQ(StartUpgrade(upgrader, Device(2), Str(firmware)), 0);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  int last = -1;
  while (Int(progress, "value") < 100 && std::chrono::steady_clock::now() < deadline) {
    ASSERT_EQ(UpgradeProgress(upgrader, progress), 0);
    EXPECT_GE(Int(progress, "value"), last);  // never goes back
    last = Int(progress, "value");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_EQ(Int(progress, "value"), 100);
  EXPECT_EQ(CallInt("QUORIN_DestroyHandleForUpgradeAndEncryption", ("(" + kHandleSig + ")I").c_str(), upgrader), 0);
  std::remove(firmware.c_str());

  // Discovery lists the same readers; failing, it answers null without a word.
  EXPECT_EQ(ListSize(CallObject("QUORIN_DiscoveryUpgDevice", "()Ljava/util/ArrayList;")), 4);
  qsim::ScriptStatus("QUORIN_DiscoveryUpgDevice", qsim::kResource);
  testing::internal::CaptureStdout();
  EXPECT_EQ(CallObject("QUORIN_DiscoveryUpgDevice", "()Ljava/util/ArrayList;"), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

using DeviceConfigDeathTest = DeviceConfigTest;

TEST_F(DeviceConfigDeathTest, UpgradeWithATextLongerThanItsArrayEndsTheProcess) {
  jobject device = Device(0);
  SetString(Object(device, "stGigEInfo", kGigESig), "chSerialNumber", "QN2405C0117ABCDEF");  // 17 characters
  EXPECT_DEATH(StartUpgrade(Upgrader(), device, Str("/tmp/fw.bin")), "does not fit its array: chSerialNumber");
}

}  // namespace
}  // namespace quorin_test
