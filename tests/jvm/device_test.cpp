// Enumeration, the device query, the accessibility test, network configuration and firmware
// upgrade, through Java.
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <thread>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

const std::string kInfoToHandle = "(" + kDeviceInfoSig + ")" + kHandleSig;
const std::string kString = "Ljava/lang/String;";
const std::string kInteger = "Ljava/lang/Integer;";

class DeviceTest : public JvmTest {
 protected:
  jobject Enumerate(const char* method) { return CallObject(method, "()Ljava/util/ArrayList;"); }
  jobject Gige(jobject device) { return Object(device, "stGigEInfo", kGigESig); }

  // A default reader with its serial number and user-defined name replaced by raw bytes.
  static QUORIN_DEVICE_INFO ReaderWithTexts(const char* serial, const char* userName) {
    QUORIN_DEVICE_INFO reader = qsim::DefaultReaders()[1];
    std::strncpy(reader.stGigEInfo.chSerialNumber, serial, sizeof reader.stGigEInfo.chSerialNumber);  // zero-filled
    std::strncpy(reader.stGigEInfo.chUserDefinedName, userName, sizeof reader.stGigEInfo.chUserDefinedName);
    return reader;
  }

  // The device record the SDK received with the one call to `function` since the calls were cleared.
  static QUORIN_DEVICE_INFO Sent(const char* function) {
    const auto calls = qsim::CallsTo(function);
    QUORIN_DEVICE_INFO record{};
    EXPECT_EQ(calls.size(), 1u) << function;
    if (calls.size() == 1 && calls[0].record.size() == sizeof record) std::memcpy(&record, calls[0].record.data(), sizeof record);
    return record;
  }
  bool IsAccessible(jobject device, jint mode) {
    qsim::ClearCalls();
    return CallBoolean("QUORIN_IsDeviceAccessible", ("(" + kDeviceInfoSig + "I)Z").c_str(), device, mode);
  }
  jobject Upgrader() { return CallObject("QUORIN_CreateHandleForUpgradeAndEncryption", ("()" + kHandleSig).c_str()); }
  jint StartUpgrade(jobject upgrader, jobject device, const std::string& path) {
    qsim::ClearCalls();
    return CallInt("QUORIN_StartUpgradeDeviceByHandle", ("(" + kHandleSig + kDeviceInfoSig + kString + ")I").c_str(),
                   upgrader, device, Str(path));
  }
  jint UpgradeProgress(jobject upgrader, jobject progress) {
    return CallInt("QUORIN_GetUpgradeProcessByHandle", ("(" + kHandleSig + kInteger + ")I").c_str(), upgrader,
                   progress);
  }
  jint ForceIp(jobject handle, const char* ip, const char* mask, const char* gateway) {
    return CallInt("QUORIN_GIGE_ForceIp", ("(" + kHandleSig + kString + kString + kString + ")I").c_str(), handle,
                   Str(ip), Str(mask), Str(gateway));
  }
};

TEST_F(DeviceTest, EnumDevicesReportsEveryReaderWithItsRawWordsAndTexts) {
  jobject devices = Enumerate("QUORIN_EnumDevices");
  ASSERT_NE(devices, nullptr);
  ASSERT_EQ(ListSize(devices), 4);
  EXPECT_EQ(qsim::CallsTo("QUORIN_EnumDevices").at(0).numbers, std::vector<unsigned long long>{1});

  jobject first = ListGet(devices, 0);
  EXPECT_EQ(Int(first, "nMacAddrHigh"), 0x34BD);
  EXPECT_EQ(Int(first, "nMacAddrLow"), 0x20140117);
  EXPECT_EQ(Short(first, "nMajorVer"), 1);
  EXPECT_EQ(Short(first, "nMinorVer"), 2);
  EXPECT_EQ(Int(first, "nTLayerType"), 1);
  EXPECT_TRUE(Bool(first, "bCodeReader"));
  jobject gige = Gige(first);
  // 192.168.1.20 with the first octet most significant, and the other words as the SDK gave them.
  const std::pair<const char*, unsigned int> words[] = {{"nCurrentIp", 0xC0A80114u}, {"nCurrentSubNetMask", 0xFFFFFF00u},
      {"nDefultGateWay", 0xC0A80101u}, {"nNetExport", 0xC0A80164u}, {"nCurUserIP", 0},
      {"nIpCfgOption", 0x07000000u}, {"nIpCfgCurrent", 0x05000000u}};
  for (const auto& [field, word] : words) EXPECT_EQ(static_cast<unsigned int>(Int(gige, field)), word) << field;
  const std::pair<const char*, const char*> texts[] = {{"chManufacturerName", "Quorin Vision"},
      {"chModelName", "QR-2020-2D"}, {"chDeviceVersion", "V3.2.1 build240516"},
      {"chManufacturerSpecificInfo", "2D code reader, 5 MP"}, {"chSerialNumber", "QN2405C0117"}};
  for (const auto& [field, text] : texts) EXPECT_EQ(String(gige, field), text) << field;
  EXPECT_EQ(String(gige, "chUserDefinedName"), "分拣线一");  // stored as GBK

  jobject last = ListGet(devices, 3);
  EXPECT_FALSE(Bool(last, "bCodeReader"));
  EXPECT_EQ(String(Gige(last), "chModelName"), "QR-AC-500");
  // Every device gets a GigE object of its own.
  EXPECT_FALSE(env_->IsSameObject(Gige(first), Gige(last)));
}

TEST_F(DeviceTest, EachEnumerationListsNothingAsAnEmptyListAndAFailureAsNullWithItsStatus) {
  qsim::SetReaders({});
  for (const char* method : {"QUORIN_EnumDevices", "QUORIN_EnumIDDevices", "QUORIN_EnumCodeReader"}) {
    jobject none = Enumerate(method);
    ASSERT_NE(none, nullptr) << method;
    EXPECT_EQ(ListSize(none), 0) << method;
    // A failure gives null and one line with the status.
    qsim::ScriptStatus(method, qsim::kResource);
    testing::internal::CaptureStdout();
    jobject failed = Enumerate(method);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string("JNI test ") + method + " error nRet[0x8006000a]\r\n");
    EXPECT_EQ(failed, nullptr) << method;
  }
}

TEST_F(DeviceTest, TextsDecodeByEachCallsRuleOddRecordsReadAsGigEAndTheQueryFillsTheCallersObjects) {
  QUORIN_DEVICE_INFO odd = qsim::DefaultReaders()[2];
  odd.nTLayerType = 4;     // not GigE: still read as GigE information
  odd.bCodeReader = 2;     // any non-zero byte is true
  odd.nMajorVer = 0xFFFF;  // same bits in a Java short
  qsim::SetReaders({ReaderWithTexts("\xD6\xD0\xCE\xC4-07", "\xB7\xD6\xBC\xF0"), odd});  // 中文-07, 分拣 in GBK
  EXPECT_EQ(String(Gige(ListGet(Enumerate("QUORIN_EnumDevices"), 0)), "chSerialNumber"), "中文-07");
  // The others hand the bytes to the VM as they stand, which does not decode GBK.
  for (const char* method : {"QUORIN_EnumIDDevices", "QUORIN_EnumCodeReader"}) {
    const std::string serial = String(Gige(ListGet(Enumerate(method), 0)), "chSerialNumber");
    EXPECT_NE(serial, "中文-07") << method;
    EXPECT_EQ(serial.substr(serial.size() - 3), "-07") << method;
  }
  jobject device = ListGet(Enumerate("QUORIN_EnumIDDevices"), 1);
  EXPECT_EQ(Int(device, "nTLayerType"), 4);
  EXPECT_TRUE(Bool(device, "bCodeReader"));
  EXPECT_EQ(Short(device, "nMajorVer"), -1);
  EXPECT_EQ(String(Gige(device), "chSerialNumber"), "QN2311W0008");
  EXPECT_EQ(static_cast<unsigned int>(Int(Gige(device), "nCurUserIP")), 0xC0A8024Du);

  // The device query fills the caller's objects, only on success, and decodes only the user's name.
  // With no serial number to go by, the stand-in finds the reader by its MAC address.
  const std::string query = "(" + kHandleSig + kDeviceInfoSig + ")I";
  jobject info = NewDefine("QUORIN_DEVICE_INFO");
  jobject gige = Gige(info);
  device = ListGet(Enumerate("QUORIN_EnumIDDevices"), 0);
  SetString(Gige(device), "chSerialNumber", "");
  jobject handle = CallObject("QUORIN_CreateHandle", kInfoToHandle.c_str(), device);
  ASSERT_NE(handle, nullptr);
  qsim::ScriptStatus("QUORIN_GetDeviceInfo", qsim::kNotOpen);
  EXPECT_EQ(CallInt("QUORIN_GetDeviceInfo", query.c_str(), handle, info), static_cast<jint>(qsim::kNotOpen));
  EXPECT_EQ(Int(info, "nMacAddrLow"), 0);
  EXPECT_EQ(String(gige, "chModelName"), "");
  qsim::ScriptStatus("QUORIN_GetDeviceInfo", 0);
  EXPECT_EQ(CallInt("QUORIN_GetDeviceInfo", query.c_str(), handle, info), 0);
  EXPECT_EQ(Int(info, "nMacAddrLow"), 0x20140042);
  EXPECT_TRUE(env_->IsSameObject(Gige(info), gige));  // the caller's GigE object, not a new one
  EXPECT_EQ(String(gige, "chModelName"), "QR-4040-MC");
  EXPECT_EQ(String(gige, "chUserDefinedName"), "分拣");
  EXPECT_NE(String(gige, "chSerialNumber"), "中文-07");

  // An ASCII serial number arrives as it is everywhere; UTF-8 names stay UTF-8.
  qsim::SetReaders({ReaderWithTexts("QN-ASCII-1", "\xE4\xB8\xAD\xE6\x96\x87")});
  for (const char* method : {"QUORIN_EnumDevices", "QUORIN_EnumIDDevices", "QUORIN_EnumCodeReader"}) {
    jobject gige = Gige(ListGet(Enumerate(method), 0));
    EXPECT_EQ(String(gige, "chSerialNumber"), "QN-ASCII-1") << method;
    EXPECT_EQ(String(gige, "chUserDefinedName"), "中文") << method;
  }
}

TEST_F(DeviceTest, AccessibilityTestAndUpgradeCopyCountedTexts) {
  jobject device = ListGet(Enumerate("QUORIN_EnumDevices"), 1);
  EXPECT_TRUE(IsAccessible(device, QUORIN_ACCESS_Monitor));
  EXPECT_EQ(qsim::CallsTo("QUORIN_IsDeviceAccessible").at(0).numbers, std::vector<unsigned long long>{7});
  QUORIN_DEVICE_INFO sent = Sent("QUORIN_IsDeviceAccessible");
  EXPECT_EQ(0, std::memcmp(&sent, &qsim::DefaultReaders()[1], sizeof sent));  // ASCII texts round-trip
  qsim::SetAccessible(false);
  EXPECT_FALSE(IsAccessible(device, QUORIN_ACCESS_Exclusive));

  // Texts are cut to their length in UTF-16 units; the accessibility test alone counts the
  // manufacturer's name in UTF-8 bytes.
  jobject gige = Gige(device);
  SetString(gige, "chSerialNumber", "QN0123456789ABCD");  // 16 characters: the whole array
  SetString(gige, "chModelName", "分拣线一号");           // 5 characters, 15 bytes: 5 bytes go
  SetString(gige, "chManufacturerName", "中文");
  IsAccessible(device, QUORIN_ACCESS_Exclusive);
  sent = Sent("QUORIN_IsDeviceAccessible");
  EXPECT_EQ(std::string(sent.stGigEInfo.chSerialNumber, 16), "QN0123456789ABCD");
  EXPECT_EQ(std::string(sent.stGigEInfo.chUserDefinedName), "Tunnel-4ch");
  EXPECT_EQ(std::string(sent.stGigEInfo.chModelName, 6), std::string("\xE5\x88\x86\xE6\x8B\x00", 6));
  EXPECT_EQ(std::string(sent.stGigEInfo.chManufacturerName), "中文");
  qsim::ScriptStatus("QUORIN_StartUpgradeDeviceByHandle", qsim::kBusy);
  EXPECT_EQ(StartUpgrade(Upgrader(), device, "/tmp/fw.bin"), static_cast<jint>(qsim::kBusy));
  sent = Sent("QUORIN_StartUpgradeDeviceByHandle");
  EXPECT_EQ(std::string(sent.stGigEInfo.chManufacturerName), "\xE4\xB8");
  EXPECT_EQ(std::string(sent.stGigEInfo.chModelName, 6), std::string("\xE5\x88\x86\xE6\x8B\x00", 6));
}

TEST_F(DeviceTest, NetworkSettingsGoToTheSdkAsWordsAndShowInEnumeration) {
  jobject handle = OpenReader(1);
  ASSERT_EQ(ForceIp(handle, "192.168.1.10", "255.255.255.0", "192.168.1.1"), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_GIGE_ForceIp").at(0).numbers,
            (std::vector<unsigned long long>{0xC0A8010A, 0xFFFFFF00, 0xC0A80101}));
  const std::string setInt = "(" + kHandleSig + "I)I";
  EXPECT_EQ(CallInt("QUORIN_GIGE_SetIpConfig", setInt.c_str(), handle, QUORIN_IP_CFG_STATIC), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_GIGE_SetIpConfig").at(0).numbers, std::vector<unsigned long long>{0x05000000});
  jobject gige = Gige(ListGet(Enumerate("QUORIN_EnumDevices"), 1));
  for (const auto& [field, word] : {std::pair{"nCurrentIp", 0xC0A8010Au}, {"nDefultGateWay", 0xC0A80101u},
                                    {"nIpCfgCurrent", 0x05000000u}}) {
    EXPECT_EQ(static_cast<unsigned int>(Int(gige, field)), word) << field;
  }
  // Text that is not an address is not refused here: it goes as inet_addr reads it.
  qsim::ScriptStatus("QUORIN_GIGE_ForceIp", qsim::kBadParameter);
  EXPECT_EQ(ForceIp(handle, "bad", "255.255.0.0", "0.0.0.0"), static_cast<jint>(qsim::kBadParameter));
  EXPECT_EQ(qsim::CallsTo("QUORIN_GIGE_ForceIp").at(1).numbers,
            (std::vector<unsigned long long>{0xFFFFFFFF, 0xFFFF0000, 0}));

  EXPECT_EQ(CallInt("QUORIN_GIGE_SetGvcpTimeout", setInt.c_str(), handle, 0), 0);
  EXPECT_EQ(CallInt("QUORIN_GIGE_SetGvcpTimeout", setInt.c_str(), handle, 750), 0);
  jobject timeout = NewInteger(-5);
  EXPECT_EQ(CallInt("QUORIN_GIGE_GetGvcpTimeout", ("(" + kHandleSig + kInteger + ")I").c_str(), handle, timeout), 0);
  EXPECT_EQ(Int(timeout, "value"), 750);  // the caller's own Integer changed
}

TEST_F(DeviceTest, UpgradeRunsToCompletionOrFailsCleanly) {
  jobject upgrader = Upgrader();
  jobject progress = NewInteger(77);
  const std::string missing = testing::TempDir() + "no-such-firmware.bin";
  EXPECT_NE(StartUpgrade(upgrader, ListGet(Enumerate("QUORIN_EnumDevices"), 2), missing), 0);
  qsim::ScriptStatus("QUORIN_GetUpgradeProcessByHandle", qsim::kWrongCallOrder);
  EXPECT_EQ(UpgradeProgress(upgrader, progress), static_cast<jint>(qsim::kWrongCallOrder));
  EXPECT_EQ(Int(progress, "value"), 0);  // the Integer is written even when the SDK fails
  qsim::ScriptStatus("QUORIN_GetUpgradeProcessByHandle", 0);

  const std::string firmware = testing::TempDir() + "qr-wb-800.fw";
  std::ofstream(firmware) << "V2.9.0 build261123\n" << std::string(4096, 'F');
  qsim::SetUpgradeDuration(300);
  ASSERT_EQ(StartUpgrade(upgrader, ListGet(Enumerate("QUORIN_EnumDevices"), 2), firmware), 0);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  int last = -1;
  while (Int(progress, "value") < 100 && std::chrono::steady_clock::now() < deadline) {
    ASSERT_EQ(UpgradeProgress(upgrader, progress), 0);
    EXPECT_GE(Int(progress, "value"), last);  // never goes back
    last = Int(progress, "value");
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  EXPECT_EQ(Int(progress, "value"), 100);
  EXPECT_EQ(OnHandle("QUORIN_DestroyHandleForUpgradeAndEncryption", upgrader), 0);
  std::remove(firmware.c_str());

  // Discovery lists the same readers; failing, it answers null without a word.
  EXPECT_EQ(ListSize(Enumerate("QUORIN_DiscoveryUpgDevice")), 4);
  qsim::ScriptStatus("QUORIN_DiscoveryUpgDevice", qsim::kResource);
  testing::internal::CaptureStdout();
  EXPECT_EQ(Enumerate("QUORIN_DiscoveryUpgDevice"), nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

using DeviceDeathTest = DeviceTest;

TEST_F(DeviceDeathTest, AccessibilityTestWithATextLongerThanItsArrayEndsTheProcess) {
  jobject device = ListGet(Enumerate("QUORIN_EnumDevices"), 1);
  SetString(Gige(device), "chSerialNumber", "QN0123456789ABCDE");  // 17 characters
  EXPECT_DEATH(IsAccessible(device, QUORIN_ACCESS_Exclusive), "does not fit its array: chSerialNumber");
}

}  // namespace
}  // namespace quorin_test
