// The stand-in SDK's own behaviour, driven through the SDK functions and the qsim controls.
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "QuorinCtrl.h"
#include "QuorinSim.h"

namespace {

unsigned int AsWord(int status) { return static_cast<unsigned int>(status); }

std::vector<std::string> Serials(const QUORIN_DEVICE_INFO_LIST& list) {
  std::vector<std::string> serials;
  for (unsigned int i = 0; i < list.nDeviceNum; ++i) {
    serials.emplace_back(list.pDeviceInfo[i]->stGigEInfo.chSerialNumber);
  }
  return serials;
}

class StandInSdk : public ::testing::Test {
 protected:
  void SetUp() override { qsim::Reset(); }

  static void* Create(const char* serial) {
    void* handle = nullptr;
    EXPECT_EQ(0, QUORIN_CreateHandleBySerialNumber(&handle, serial));
    return handle;
  }

  static std::string ModelOf(void* handle) {
    QUORIN_DEVICE_INFO info{};
    EXPECT_EQ(0, QUORIN_GetDeviceInfo(handle, &info));
    return info.stGigEInfo.chModelName;
  }

  QUORIN_DEVICE_INFO_LIST list_{};
};

TEST_F(StandInSdk, EnumerationsFilterTheReaders) {
  const std::vector<std::string> all = {"QN2405C0117", "QN2403M0042", "QN2311W0008", "QN2408A0230"};
  ASSERT_EQ(0, QUORIN_EnumDevices(&list_, QUORIN_GIGE_DEVICE));
  EXPECT_EQ(all, Serials(list_));
  const QUORIN_GIGE_DEVICE_INFO& first = list_.pDeviceInfo[0]->stGigEInfo;
  EXPECT_EQ(0xC0A80114u, first.nCurrentIp);
  EXPECT_EQ(0xFFFFFF00u, first.nCurrentSubNetMask);
  EXPECT_STREQ("Quorin Vision", first.chManufacturerName);
  EXPECT_STREQ("\xB7\xD6\xBC\xF0\xCF\xDF\xD2\xBB", first.chUserDefinedName);

  ASSERT_EQ(0, QUORIN_EnumDevices(&list_, 0x4));
  EXPECT_EQ(0u, list_.nDeviceNum);
  ASSERT_EQ(0, QUORIN_EnumCodeReader(&list_));
  EXPECT_EQ(std::vector<std::string>(all.begin(), all.begin() + 3), Serials(list_));
  ASSERT_EQ(0, QUORIN_EnumIDDevices(&list_));
  EXPECT_EQ(all, Serials(list_));
  ASSERT_EQ(0, QUORIN_DiscoveryUpgDevice(&list_));
  EXPECT_EQ(all, Serials(list_));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_EnumIDDevices(nullptr)));

  qsim::SetReaders({qsim::DefaultReaders()[2]});
  ASSERT_EQ(0, QUORIN_EnumIDDevices(&list_));
  EXPECT_EQ(std::vector<std::string>{"QN2311W0008"}, Serials(list_));
}

TEST_F(StandInSdk, HandlesAreCreatedBySerialOrRecord) {
  EXPECT_EQ("QR-4040-MC", ModelOf(Create("QN2403M0042")));

  QUORIN_DEVICE_INFO wanted = qsim::DefaultReaders()[2];
  void* bySerial = nullptr;
  ASSERT_EQ(0, QUORIN_CreateHandle(&bySerial, &wanted));
  EXPECT_EQ("QR-WB-800", ModelOf(bySerial));

  std::memset(wanted.stGigEInfo.chSerialNumber, 0, sizeof wanted.stGigEInfo.chSerialNumber);
  wanted.nMacAddrLow = qsim::DefaultReaders()[0].nMacAddrLow;  // no serial: the MAC decides
  void* byMac = nullptr;
  ASSERT_EQ(0, QUORIN_CreateHandle(&byMac, &wanted));
  EXPECT_EQ("QR-2020-2D", ModelOf(byMac));
  EXPECT_NE(bySerial, byMac);

  void* none = nullptr;
  wanted.nMacAddrLow = 0x12345678;
  EXPECT_EQ(qsim::kNoSuchDevice, AsWord(QUORIN_CreateHandle(&none, &wanted)));
  EXPECT_EQ(qsim::kNoSuchDevice, AsWord(QUORIN_CreateHandleBySerialNumber(&none, "QN0000X0000")));
  EXPECT_EQ(nullptr, none);
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_CreateHandleBySerialNumber(&none, nullptr)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_CreateHandle(nullptr, &wanted)));
}

TEST_F(StandInSdk, StaleUnknownAndForeignHandlesAreRefused) {
  void* stale = Create("QN2405C0117");
  ASSERT_EQ(0, QUORIN_DestroyHandle(stale));
  int notAHandle = 0;
  QUORIN_DEVICE_INFO info{};
  for (void* bad : {stale, static_cast<void*>(nullptr), static_cast<void*>(&notAHandle)}) {
    EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_OpenDevice(bad)));
    EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_CloseDevice(bad)));
    EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_GetDeviceInfo(bad, &info)));
    EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_DestroyHandle(bad)));
  }
  std::set<void*> seen = {stale};  // a destroyed handle's address is never handed out again
  for (int i = 0; i < 20; ++i) {
    void* next = Create("QN2405C0117");
    EXPECT_TRUE(seen.insert(next).second);
    QUORIN_DestroyHandle(next);
  }

  void* upgrade = nullptr;
  ASSERT_EQ(0, QUORIN_CreateHandleForUpgradeAndEncryption(&upgrade));
  void* device = Create("QN2405C0117");
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_OpenDevice(upgrade)));
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_DestroyHandleForUpgradeAndEncryption(device)));
  EXPECT_EQ(0, QUORIN_DestroyHandleForUpgradeAndEncryption(upgrade));
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_DestroyHandleForUpgradeAndEncryption(upgrade)));

  qsim::Reset();
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_OpenDevice(device)));
}

TEST_F(StandInSdk, OpenAndCloseFollowTheCallOrder) {
  void* first = Create("QN2403M0042");
  void* second = Create("QN2403M0042");
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_CloseDevice(first)));
  EXPECT_EQ(0, QUORIN_OpenDevice(first));
  EXPECT_EQ(qsim::kBusy, AsWord(QUORIN_OpenDevice(first)));
  EXPECT_EQ(qsim::kAccessDenied, AsWord(QUORIN_OpenDevice(second)));
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_CloseDevice(second)));
  EXPECT_EQ(0, QUORIN_CloseDevice(first));
  EXPECT_EQ(0, QUORIN_OpenDevice(second));
  EXPECT_EQ(0, QUORIN_DestroyHandle(second));  // releases the reader it held
  EXPECT_EQ(0, QUORIN_OpenDevice(first));
}

TEST_F(StandInSdk, ScriptedStatusesReplaceTheWork) {
  const unsigned int failure = 0x80000007;
  qsim::ScriptStatus("QUORIN_EnumDevices", failure);
  list_.nDeviceNum = 99;
  EXPECT_EQ(failure, AsWord(QUORIN_EnumDevices(&list_, QUORIN_GIGE_DEVICE)));
  EXPECT_EQ(99u, list_.nDeviceNum);

  qsim::ScriptStatus("QUORIN_CreateHandleBySerialNumber", failure);
  void* handle = nullptr;
  EXPECT_EQ(failure, AsWord(QUORIN_CreateHandleBySerialNumber(&handle, "QN2405C0117")));
  EXPECT_EQ(nullptr, handle);
  qsim::ScriptStatus("QUORIN_CreateHandleBySerialNumber", 0);
  EXPECT_EQ(0, QUORIN_CreateHandleBySerialNumber(&handle, "QN2405C0117"));

  QUORIN_DEVICE_INFO info = qsim::DefaultReaders()[0];
  EXPECT_TRUE(QUORIN_IsDeviceAccessible(&info, QUORIN_ACCESS_Exclusive));
  EXPECT_FALSE(QUORIN_IsDeviceAccessible(nullptr, QUORIN_ACCESS_Exclusive));
  qsim::SetAccessible(false);
  EXPECT_FALSE(QUORIN_IsDeviceAccessible(&info, QUORIN_ACCESS_Exclusive));
  qsim::SetAccessible(true);
  qsim::ScriptStatus("QUORIN_IsDeviceAccessible", failure);
  EXPECT_FALSE(QUORIN_IsDeviceAccessible(&info, QUORIN_ACCESS_Exclusive));

  qsim::SetSdkVersion(0x01020304);
  EXPECT_EQ(0x01020304u, QUORIN_GetSDKVersion());
  qsim::Reset();
  EXPECT_EQ(qsim::kDefaultSdkVersion, QUORIN_GetSDKVersion());
  EXPECT_EQ(0, QUORIN_EnumDevices(&list_, QUORIN_GIGE_DEVICE));  // Reset dropped the script
}

TEST_F(StandInSdk, RecorderKeepsEveryCallWithItsArguments) {
  QUORIN_DEVICE_INFO info = qsim::DefaultReaders()[1];
  void* byRecord = nullptr;
  QUORIN_GetSDKVersion();
  QUORIN_EnumDevices(&list_, 0xFFFFFFFF);
  QUORIN_CreateHandle(&byRecord, &info);
  void* bySerial = Create("QN2311W0008");
  QUORIN_OpenDevice(bySerial);
  QUORIN_IsDeviceAccessible(&info, QUORIN_ACCESS_Monitor);

  const std::vector<qsim::Call> calls = qsim::Calls();
  std::vector<std::string> names;
  for (const qsim::Call& call : calls) names.push_back(call.function);
  EXPECT_EQ((std::vector<std::string>{"QUORIN_GetSDKVersion", "QUORIN_EnumDevices", "QUORIN_CreateHandle",
                                      "QUORIN_CreateHandleBySerialNumber", "QUORIN_OpenDevice",
                                      "QUORIN_IsDeviceAccessible"}),
            names);
  EXPECT_EQ(std::vector<unsigned long long>{0xFFFFFFFFull}, calls[1].numbers);  // zero-extended
  const auto* bytes = reinterpret_cast<const unsigned char*>(&info);
  EXPECT_EQ(std::vector<unsigned char>(bytes, bytes + sizeof info), calls[2].record);
  EXPECT_EQ(std::vector<std::string>{"QN2311W0008"}, calls[3].texts);
  EXPECT_EQ(bySerial, calls[4].handle);
  EXPECT_EQ(std::vector<unsigned long long>{QUORIN_ACCESS_Monitor}, calls[5].numbers);
  EXPECT_EQ(572u, calls[5].record.size());
  EXPECT_EQ(1u, qsim::CallsTo("QUORIN_OpenDevice").size());

  qsim::ClearCalls();
  EXPECT_TRUE(qsim::Calls().empty());
  std::vector<std::thread> callers;
  for (int t = 0; t < 4; ++t) {
    callers.emplace_back([] {
      for (int i = 0; i < 500; ++i) QUORIN_GetSDKVersion();
    });
  }
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(2000u, qsim::CallsTo("QUORIN_GetSDKVersion").size());
}

}  // namespace
