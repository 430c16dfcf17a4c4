// The stand-in SDK's own behaviour, driven through the SDK functions and the qsim controls.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstring>
#include <functional>
#include <mutex>
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

// ---------------------------------------------------------------------------
// Feature nodes, grabbing and frames.

constexpr const char* k2DReader = "QN2405C0117";
constexpr const char* kMultiChannelReader = "QN2403M0042";
constexpr const char* kWaybillReader = "QN2311W0008";
constexpr const char* kAreaCamera = "QN2408A0230";
const std::string kGbkName = "\xB7\xD6\xBC\xF0\xCF\xDF\xD2\xBB";  // 分拣线一

template <typename Record>
std::vector<unsigned char> BytesOf(const Record& record) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(&record);
  return std::vector<unsigned char>(bytes, bytes + sizeof record);
}

struct Delivered {
  int status = -1;
  unsigned char* data = nullptr;
  QUORIN_IMAGE_OUT_INFO_EX2 info{};

  const QUORIN_RESULT_BCR_EX& Codes() const { return *info.pstCodeListEx; }
  const QUORIN_WAYBILL_LIST& Waybills() const { return *info.pstWaybillList; }
  unsigned char PixelAt(const QUORIN_POINT_I& point) const { return data[point.nY * info.nWidth + point.nX]; }
  std::set<unsigned char> Shades() const { return std::set<unsigned char>(data, data + info.nFrameLen); }
};

Delivered FetchEx2(void* handle, unsigned int timeoutMs = 2000) {
  Delivered delivered;
  delivered.status = QUORIN_GetOneFrameTimeoutEx2(handle, &delivered.data, &delivered.info, timeoutMs);
  return delivered;
}

Delivered FetchChannel(void* handle, unsigned int channel, unsigned int timeoutMs = 2000) {
  Delivered delivered;
  delivered.status = QUORIN_MSC_GetOneFrameTimeout(handle, &delivered.data, &delivered.info, channel, timeoutMs);
  return delivered;
}

QUORIN_BCR_INFO_EX CodeWithText(unsigned int id, const std::string& text) {
  QUORIN_BCR_INFO_EX code{};
  code.nID = id;
  std::memcpy(code.chCode, text.data(), std::min(text.size(), sizeof code.chCode));
  code.nLen = static_cast<unsigned int>(text.size());
  return code;
}

class VirtualReaderTest : public StandInSdk {
 protected:
  static void* Open(const char* serial) {
    void* handle = Create(serial);
    EXPECT_EQ(0, QUORIN_OpenDevice(handle));
    return handle;
  }

  static QUORIN_INT_VALUE Int(void* handle, const char* key) {
    QUORIN_INT_VALUE value{};
    EXPECT_EQ(0, QUORIN_GetIntValue(handle, key, &value)) << key;
    return value;
  }

  // Opened, sized and started at a brisk rate, so frames come quickly.
  static void* Grabbing(const char* serial, long long width = 64, long long height = 64, float rate = 200) {
    void* handle = Open(serial);
    EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Width", width));
    EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Height", height));
    EXPECT_EQ(0, QUORIN_SetFloatValue(handle, "AcquisitionFrameRate", rate));
    EXPECT_EQ(0, QUORIN_StartGrabbing(handle));
    return handle;
  }
};

TEST_F(VirtualReaderTest, NodesKeepTheirTypeRangeIncrementAndAccess) {
  void* handle = Create(k2DReader);
  QUORIN_INT_VALUE integer{};
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_GetIntValue(handle, "Width", &integer)));
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_SetIntValue(handle, "Width", 640)));
  ASSERT_EQ(0, QUORIN_OpenDevice(handle));

  integer = Int(handle, "Width");
  EXPECT_EQ((std::vector<long long>{1280, 64, 2448, 8}),
            (std::vector<long long>{integer.nCurValue, integer.nMin, integer.nMax, integer.nInc}));
  integer = Int(handle, "Height");
  EXPECT_EQ((std::vector<long long>{1024, 64, 2048, 8}),
            (std::vector<long long>{integer.nCurValue, integer.nMin, integer.nMax, integer.nInc}));
  EXPECT_EQ(1280 * 1024, Int(handle, "PayloadSize").nCurValue);
  EXPECT_EQ(1, Int(handle, "ChannelCount").nCurValue);
  EXPECT_EQ(4, Int(Open(kMultiChannelReader), "ChannelCount").nCurValue);

  EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Width", 640));
  EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Height", 480));
  EXPECT_EQ(640 * 480, Int(handle, "PayloadSize").nCurValue);  // follows the frame size
  for (long long offIncrementOrRange : {641LL, 56LL, 2456LL, -8LL}) {
    EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_SetIntValue(handle, "Width", offIncrementOrRange)));
  }
  EXPECT_EQ(640, Int(handle, "Width").nCurValue);
  EXPECT_EQ(qsim::kNotWritable, AsWord(QUORIN_SetIntValue(handle, "PayloadSize", 4096)));
  EXPECT_EQ(qsim::kNotWritable, AsWord(QUORIN_SetIntValue(handle, "ChannelCount", 1)));

  QUORIN_ENUM_VALUE enumeration{};
  ASSERT_EQ(0, QUORIN_GetEnumValue(handle, "PixelFormat", &enumeration));
  EXPECT_EQ(PixelType_Gvsp_Mono8, enumeration.nCurValue);
  ASSERT_EQ(2u, enumeration.nSupportedNum);
  EXPECT_EQ(PixelType_Gvsp_Mono10, enumeration.nSupportValue[1]);
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_SetEnumValue(handle, "PixelFormat", PixelType_Gvsp_Mono12)));
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_SetEnumValueByString(handle, "PixelFormat", "Mono12")));
  EXPECT_EQ(0, QUORIN_SetEnumValueByString(handle, "PixelFormat", "Mono10"));
  ASSERT_EQ(0, QUORIN_GetEnumValue(handle, "PixelFormat", &enumeration));
  EXPECT_EQ(PixelType_Gvsp_Mono10, enumeration.nCurValue);
  EXPECT_EQ(0, QUORIN_SetEnumValue(handle, "TriggerMode", 1));
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_SetEnumValue(handle, "TriggerMode", 2)));

  QUORIN_FLOAT_VALUE real{};
  ASSERT_EQ(0, QUORIN_GetFloatValue(handle, "ExposureTime", &real));
  EXPECT_EQ((std::vector<float>{2000, 20, 100000}), (std::vector<float>{real.fCurValue, real.fMin, real.fMax}));
  ASSERT_EQ(0, QUORIN_GetFloatValue(handle, "AcquisitionFrameRate", &real));
  EXPECT_EQ((std::vector<float>{10, 1, 200}), (std::vector<float>{real.fCurValue, real.fMin, real.fMax}));
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_SetFloatValue(handle, "ExposureTime", 19.5f)));
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_SetFloatValue(handle, "ExposureTime", std::nanf(""))));
  EXPECT_EQ(0, QUORIN_SetFloatValue(handle, "ExposureTime", 100000));

  QUORIN_STRING_VALUE text{};
  ASSERT_EQ(0, QUORIN_GetStringValue(handle, "DeviceUserID", &text));
  EXPECT_EQ(kGbkName, text.chCurValue);  // the bytes as the device stores them
  EXPECT_EQ(16, text.nMaxLength);
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_SetStringValue(handle, "DeviceUserID", "seventeen-bytes-x")));
  EXPECT_EQ(0, QUORIN_SetStringValue(handle, "DeviceUserID", "sixteen-bytes-xx"));
  ASSERT_EQ(0, QUORIN_GetStringValue(handle, "DeviceUserID", &text));
  EXPECT_STREQ("sixteen-bytes-xx", text.chCurValue);
  ASSERT_EQ(0, QUORIN_GetStringValue(handle, "DeviceSerialNumber", &text));
  EXPECT_STREQ(k2DReader, text.chCurValue);
  EXPECT_EQ(qsim::kNotWritable, AsWord(QUORIN_SetStringValue(handle, "DeviceSerialNumber", "QN1")));

  bool flag = true;
  ASSERT_EQ(0, QUORIN_GetBoolValue(handle, "ReverseX", &flag));
  EXPECT_FALSE(flag);
  EXPECT_EQ(0, QUORIN_SetBoolValue(handle, "ReverseX", true));
  ASSERT_EQ(0, QUORIN_GetBoolValue(handle, "ReverseX", &flag));
  EXPECT_TRUE(flag);

  EXPECT_EQ(qsim::kWrongNodeType, AsWord(QUORIN_GetFloatValue(handle, "Width", &real)));
  EXPECT_EQ(qsim::kWrongNodeType, AsWord(QUORIN_SetIntValue(handle, "PixelFormat", 1)));
  EXPECT_EQ(qsim::kWrongNodeType, AsWord(QUORIN_SetCommandValue(handle, "Width")));
  EXPECT_EQ(qsim::kWrongNodeType, AsWord(QUORIN_GetIntValue(handle, "TriggerSoftware", &integer)));
  EXPECT_EQ(qsim::kUnknownNode, AsWord(QUORIN_GetIntValue(handle, "width", &integer)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GetIntValue(handle, nullptr, &integer)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GetIntValue(handle, "Width", nullptr)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_SetStringValue(handle, "DeviceUserID", nullptr)));
  EXPECT_EQ(0, QUORIN_SetFrameNodeNum(handle, 0));

  // Nodes set through the control interface, whatever their access.
  qsim::SetIntNode(handle, "Gain", 5, 0, 10, 1, qsim::Access::kWriteOnly);
  EXPECT_EQ(qsim::kNotReadable, AsWord(QUORIN_GetIntValue(handle, "Gain", &integer)));
  EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Gain", 7));
  qsim::SetBoolNode(handle, "Gain", true, qsim::Access::kNotAvailable);
  EXPECT_EQ(qsim::kNotReadable, AsWord(QUORIN_GetBoolValue(handle, "Gain", &flag)));
  EXPECT_EQ(qsim::kNotWritable, AsWord(QUORIN_SetBoolValue(handle, "Gain", false)));
  qsim::SetEnumNode(handle, "Mode", 3, {{"A", 3}, {"B", 9}});
  EXPECT_EQ(0, QUORIN_SetEnumValueByString(handle, "Mode", "B"));
  ASSERT_EQ(0, QUORIN_GetEnumValue(handle, "Mode", &enumeration));
  EXPECT_EQ(9u, enumeration.nCurValue);
  qsim::SetStringNode(handle, "DeviceUserID", "abc", 3);
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_SetStringValue(handle, "DeviceUserID", "abcd")));
  qsim::SetIntNode(handle, "Width", 100, 0, 65536, 4);
  EXPECT_EQ(100 * 480, Int(handle, "PayloadSize").nCurValue);
  qsim::RemoveNode(handle, "Width");
  EXPECT_EQ(qsim::kUnknownNode, AsWord(QUORIN_GetIntValue(handle, "Width", &integer)));
  int notAHandle = 0;
  EXPECT_THROW(qsim::RemoveNode(&notAHandle, "Width"), std::invalid_argument);

  qsim::Reset();
  EXPECT_EQ(1280, Int(Open(k2DReader), "Width").nCurValue);  // defaults again
}

TEST_F(VirtualReaderTest, NodeCallsAreRecordedAndScriptable) {
  void* handle = Open(k2DReader);
  qsim::ClearCalls();
  QUORIN_SetIntValue(handle, "Width", -8);
  QUORIN_SetFloatValue(handle, "ExposureTime", 1234.5f);
  QUORIN_SetBoolValue(handle, "ReverseX", true);
  QUORIN_SetEnumValueByString(handle, "PixelFormat", "Mono10");
  QUORIN_SetFrameNodeNum(handle, 3);
  const std::vector<qsim::Call> calls = qsim::Calls();
  ASSERT_EQ(5u, calls.size());
  EXPECT_EQ(handle, calls[0].handle);
  EXPECT_EQ(std::vector<std::string>{"Width"}, calls[0].texts);
  EXPECT_EQ(std::vector<unsigned long long>{0xFFFFFFFFFFFFFFF8ull}, calls[0].numbers);
  EXPECT_EQ(std::vector<unsigned long long>{0x449A5000}, calls[1].numbers);  // the float's bits
  EXPECT_EQ(std::vector<unsigned long long>{1}, calls[2].numbers);
  EXPECT_EQ((std::vector<std::string>{"PixelFormat", "Mono10"}), calls[3].texts);
  EXPECT_EQ(std::vector<unsigned long long>{3}, calls[4].numbers);

  qsim::ScriptStatus("QUORIN_SetIntValue", qsim::kResource);
  EXPECT_EQ(qsim::kResource, AsWord(QUORIN_SetIntValue(handle, "Width", 640)));
  EXPECT_EQ(1280, Int(handle, "Width").nCurValue);  // the work was not done

  QUORIN_INT_VALUE scripted{};
  scripted.nCurValue = 5013504;
  scripted.nInc = -1;
  qsim::ScriptOutput("QUORIN_GetIntValue", BytesOf(scripted), qsim::kNotReadable);
  QUORIN_INT_VALUE out{};
  EXPECT_EQ(qsim::kNotReadable, AsWord(QUORIN_GetIntValue(handle, "NoSuchNode", &out)));
  EXPECT_EQ(BytesOf(scripted), BytesOf(out));
  qsim::ScriptOutput("QUORIN_GetIntValue", {});
  EXPECT_EQ(1280, Int(handle, "Width").nCurValue);

  bool flag = false;
  qsim::ScriptOutput("QUORIN_GetBoolValue", {1, 0xEE});  // one byte is all a bool holds
  unsigned char guarded[2] = {0, 0x11};
  EXPECT_EQ(0, QUORIN_GetBoolValue(handle, "Width", reinterpret_cast<bool*>(guarded)));
  EXPECT_EQ(1, guarded[0]);
  EXPECT_EQ(0x11, guarded[1]);
  qsim::ScriptOutput("QUORIN_GetBoolValue", {});
  EXPECT_EQ(qsim::kWrongNodeType, AsWord(QUORIN_GetBoolValue(handle, "Width", &flag)));

  qsim::ScriptOutput("QUORIN_GetDeviceInfo", {0x07, 0x00, 0x09, 0x00});  // fewer bytes than the record
  QUORIN_DEVICE_INFO info = qsim::DefaultReaders()[1];
  EXPECT_EQ(0, QUORIN_GetDeviceInfo(handle, &info));
  EXPECT_EQ(7, info.nMajorVer);
  EXPECT_EQ(9, info.nMinorVer);
  EXPECT_STREQ("QN2403M0042", info.stGigEInfo.chSerialNumber);  // the rest untouched

  // A scripted fetch fills the record and leaves the image pointer null, grabbing or not.
  QUORIN_IMAGE_OUT_INFO_EX2 header{};
  header.nFrameNum = 42;
  header.nFrameLen = 4096;
  qsim::ScriptOutput("QUORIN_MSC_GetOneFrameTimeout", BytesOf(header), qsim::kNoData);
  Delivered fetched = FetchChannel(handle, 3, 0);
  EXPECT_EQ(qsim::kNoData, AsWord(fetched.status));
  EXPECT_EQ(nullptr, fetched.data);
  EXPECT_EQ(BytesOf(header), BytesOf(fetched.info));
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(FetchEx2(handle, 0).status));  // scripts are per function
  qsim::ScriptOutput("QUORIN_MSC_GetOneFrameTimeout", {});
  EXPECT_EQ((std::vector<unsigned long long>{3, 0}), qsim::CallsTo("QUORIN_MSC_GetOneFrameTimeout").at(0).numbers);
  EXPECT_EQ(std::vector<unsigned long long>{0}, qsim::CallsTo("QUORIN_GetOneFrameTimeoutEx2").at(0).numbers);
}

TEST_F(VirtualReaderTest, GrabbingFollowsTheCallOrder) {
  void* handle = Create(k2DReader);
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_StartGrabbing(handle)));
  EXPECT_EQ(qsim::kNotOpen, AsWord(FetchEx2(handle, 0).status));
  ASSERT_EQ(0, QUORIN_OpenDevice(handle));
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(QUORIN_StopGrabbing(handle)));
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(FetchEx2(handle, 0).status));
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(FetchEx2(nullptr, 0).status));

  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  EXPECT_EQ(qsim::kBusy, AsWord(QUORIN_StartGrabbing(handle)));
  EXPECT_EQ(qsim::kNotWritable, AsWord(QUORIN_SetIntValue(handle, "Width", 640)));
  EXPECT_EQ(qsim::kNotWritable, AsWord(QUORIN_SetIntValue(handle, "Height", 480)));
  EXPECT_EQ(qsim::kNotWritable, AsWord(QUORIN_SetEnumValueByString(handle, "PixelFormat", "Mono10")));
  EXPECT_EQ(0, QUORIN_SetFloatValue(handle, "ExposureTime", 500));
  unsigned char* data = nullptr;
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GetOneFrameTimeoutEx2(handle, &data, nullptr, 0)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(FetchChannel(handle, 1, 0).status));
  EXPECT_EQ(0, QUORIN_StopGrabbing(handle));
  EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Width", 640));

  // Closing stops grabbing: after reopening, fetches are refused until a new start.
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  EXPECT_EQ(0, QUORIN_CloseDevice(handle));
  ASSERT_EQ(0, QUORIN_OpenDevice(handle));
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(FetchEx2(handle, 0).status));
  EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Height", 480));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));

  // A fetch waiting on another thread is woken by the stop.
  EXPECT_EQ(0, QUORIN_StopGrabbing(handle));
  EXPECT_EQ(0, QUORIN_SetEnumValue(handle, "TriggerMode", 1));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  Delivered woken;
  std::thread waiter([&] { woken = FetchEx2(handle, 60000); });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(0, QUORIN_StopGrabbing(handle));
  waiter.join();
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(woken.status));
  EXPECT_EQ(nullptr, woken.data);

  // Destroy and Reset stop the producers of the readers they release.
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  EXPECT_EQ(0, QUORIN_DestroyHandle(handle));
  void* again = Open(k2DReader);
  ASSERT_EQ(0, QUORIN_StartGrabbing(again));
  qsim::Reset();
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_StopGrabbing(again)));
  EXPECT_EQ(0, QUORIN_StartGrabbing(Open(k2DReader)));
}

TEST_F(VirtualReaderTest, ProducedFramesShowTheCurrentSizeAndMove) {
  void* handle = Open(k2DReader);
  ASSERT_EQ(0, QUORIN_SetEnumValueByString(handle, "PixelFormat", "Mono10"));  // reported, not produced
  ASSERT_EQ(0, QUORIN_SetIntValue(handle, "Width", 320));
  ASSERT_EQ(0, QUORIN_SetIntValue(handle, "Height", 240));
  ASSERT_EQ(0, QUORIN_SetFloatValue(handle, "AcquisitionFrameRate", 200));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));

  std::set<std::string> texts;
  std::vector<unsigned char> previousImage;
  unsigned long long previousTime = 0;
  bool sawGbk = false;
  for (int frame = 0; frame < 6; ++frame) {
    const Delivered delivered = FetchEx2(handle);
    ASSERT_EQ(0, delivered.status);
    const QUORIN_IMAGE_OUT_INFO_EX2& info = delivered.info;
    EXPECT_EQ(320, info.nWidth);
    EXPECT_EQ(240, info.nHeight);
    EXPECT_EQ(PixelType_Gvsp_Mono8, info.enPixelType);
    EXPECT_EQ(320u * 240u, info.nFrameLen);
    EXPECT_EQ(0u, info.nChannelID);
    EXPECT_EQ(0u, info.nTriggerIndex);  // free run
    EXPECT_EQ(1, info.bIsGetCode);
    const unsigned long long time = 1ULL * info.nTimeStampHigh << 32 | info.nTimeStampLow;
    EXPECT_GE(time, previousTime);
    previousTime = time;

    // Bars in two shades, boxes drawn in white through every code's corners.
    EXPECT_EQ((std::set<unsigned char>{40, 176, 255}), delivered.Shades());
    const std::vector<unsigned char> image(delivered.data, delivered.data + info.nFrameLen);
    EXPECT_NE(previousImage, image);
    previousImage = image;

    const QUORIN_RESULT_BCR_EX& codes = delivered.Codes();
    ASSERT_GE(codes.nCodeNum, 1u);
    ASSERT_LE(codes.nCodeNum, 3u);
    ASSERT_EQ(codes.nCodeNum, info.pstCodeList->nCodeNum);
    for (unsigned int i = 0; i < codes.nCodeNum; ++i) {
      const QUORIN_BCR_INFO_EX& code = codes.stBcrInfoEx[i];
      const std::string text = code.chCode;
      EXPECT_TRUE(texts.insert(text).second) << text;  // never the same text twice
      EXPECT_EQ(text.size(), code.nLen);
      const bool gbk = text.rfind("\xB7\xD6\xBC\xF0-", 0) == 0;
      sawGbk = sawGbk || gbk;
      EXPECT_TRUE(gbk || text.rfind("QN", 0) == 0) << text;
      EXPECT_GE(code.nAngle, -90);
      EXPECT_LE(code.nAngle, 90);
      for (const QUORIN_POINT_I& corner : {code.stCornerLeftTop, code.stCornerRightTop,
                                           code.stCornerRightBottom, code.stCornerLeftBottom}) {
        ASSERT_TRUE(corner.nX >= 0 && corner.nX < 320 && corner.nY >= 0 && corner.nY < 240);
        EXPECT_EQ(255, delivered.PixelAt(corner));
      }
      const QUORIN_BCR_INFO& plain = info.pstCodeList->stBcrInfo[i];
      EXPECT_STREQ(code.chCode, plain.chCode);
      EXPECT_EQ(code.stCornerRightBottom.nX, plain.pt[2].nX);
      EXPECT_EQ(0, std::memcmp(&code.stCodeQuality, &plain.stCodeQuality, sizeof plain.stCodeQuality));
      EXPECT_EQ(1, code.bIsGetQuality);
      EXPECT_GT(code.stCodeQuality.nOverQuality, 0);
      EXPECT_GT(code.stCodeQuality.fSCScore, 0.0f);
    }
    EXPECT_EQ(0u, delivered.Waybills().nWaybillNum);  // only the waybill reader cuts them
  }
  EXPECT_TRUE(sawGbk);  // the first reader's texts are sometimes GBK

  ASSERT_EQ(0, QUORIN_StopGrabbing(handle));
  ASSERT_EQ(0, QUORIN_SetIntValue(handle, "Width", 64));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  const Delivered smaller = FetchEx2(handle);
  ASSERT_EQ(0, smaller.status);
  EXPECT_EQ(64, smaller.info.nWidth);
  EXPECT_EQ(240, smaller.info.nHeight);
  EXPECT_EQ(64u * 240u, smaller.info.nFrameLen);
}

TEST_F(VirtualReaderTest, WaybillReaderCutsGreyBitmapsAndTheAreaCameraDecodesNothing) {
  void* handle = Grabbing(kWaybillReader, 320, 240);
  unsigned int waybills = 0;
  for (int frame = 0; frame < 2; ++frame) {  // one, then two waybills
    const Delivered delivered = FetchEx2(handle);
    ASSERT_EQ(0, delivered.status);
    const QUORIN_WAYBILL_LIST& list = delivered.Waybills();
    EXPECT_EQ(QUORIN_Image_Bmp, list.enWaybillImageType);
    waybills += list.nWaybillNum;
    for (unsigned int i = 0; i < list.nWaybillNum; ++i) {
      const QUORIN_WAYBILL_INFO& waybill = list.stWaybillInfo[i];
      EXPECT_EQ(80.0f, waybill.fWidth);  // a quarter by a fifth of the frame
      EXPECT_EQ(48.0f, waybill.fHeight);
      EXPECT_TRUE(waybill.fCenterX >= 40 && waybill.fCenterX <= 280);
      EXPECT_TRUE(waybill.fConfidence > 0.5f && waybill.fConfidence < 1.0f);
      const unsigned char* bmp = waybill.pImageWaybill;
      ASSERT_EQ(14u + 40 + 1024 + 80 * 48, waybill.nImageLen);
      auto word = [&](size_t at) { return bmp[at] | bmp[at + 1] << 8 | bmp[at + 2] << 16 | bmp[at + 3] << 24; };
      EXPECT_EQ('B', bmp[0]);
      EXPECT_EQ('M', bmp[1]);
      EXPECT_EQ(waybill.nImageLen, static_cast<unsigned int>(word(2)));
      EXPECT_EQ(1078, word(10));  // the pixels follow the palette
      EXPECT_EQ(80, word(18));
      EXPECT_EQ(48, word(22));
      EXPECT_EQ(8, bmp[28]);  // bits per pixel
      EXPECT_EQ(0x00C8C8C8, word(54 + 4 * 200));  // palette entry 200 is grey 200
      const std::set<unsigned char> shades(bmp + 1078, bmp + waybill.nImageLen);
      EXPECT_TRUE(shades.count(40) == 1 && shades.count(176) == 1);
    }
  }
  EXPECT_EQ(3u, waybills);

  const Delivered plain = FetchEx2(Grabbing(kAreaCamera));
  ASSERT_EQ(0, plain.status);
  EXPECT_EQ(0, plain.info.bIsGetCode);
  EXPECT_EQ(0u, plain.Codes().nCodeNum);
  EXPECT_EQ(0u, plain.info.pstCodeList->nCodeNum);
  EXPECT_EQ(0u, plain.Waybills().nWaybillNum);
}

TEST_F(VirtualReaderTest, SteadyConsumerSeesEveryFrameOnceAcrossTheWrap) {
  void* handle = Grabbing(k2DReader, 64, 64, 25);
  for (unsigned int i = 0; i < 20; ++i) {  // the numbers pass 0xFFFFFFFF after 16 frames
    const Delivered delivered = FetchEx2(handle);
    ASSERT_EQ(0, delivered.status);
    EXPECT_EQ(qsim::kFirstFrameNumber + i, delivered.info.nFrameNum);
  }
  EXPECT_EQ(0u, qsim::FramesDropped(handle));
}

TEST_F(VirtualReaderTest, SlowConsumerLosesTheOldestFrames) {
  void* handle = Grabbing(k2DReader);
  const Delivered first = FetchEx2(handle);
  ASSERT_EQ(0, first.status);
  for (int wait = 0; wait < 500 && qsim::FramesDropped(handle) == 0; ++wait) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  qsim::SetAutoFrames(false);  // freezes the queue: full, with the newest frames
  std::vector<unsigned int> kept;
  for (Delivered next = FetchEx2(handle, 100); next.status == 0; next = FetchEx2(handle, 100)) {
    kept.push_back(next.info.nFrameNum);
  }
  const unsigned long long dropped = qsim::FramesDropped(handle);
  ASSERT_GT(dropped, 0u);
  ASSERT_EQ(qsim::kFrameQueueCapacity, kept.size());
  EXPECT_EQ(first.info.nFrameNum + 1 + dropped, kept.front());  // what was lost was the oldest
  for (size_t i = 1; i < kept.size(); ++i) {
    EXPECT_EQ(kept[i - 1] + 1, kept[i]);
  }
}

TEST_F(VirtualReaderTest, FetchTimesOutAndSoftwareTriggersMakeOneFrameEach) {
  void* handle = Open(k2DReader);
  ASSERT_EQ(0, QUORIN_SetEnumValue(handle, "TriggerMode", 1));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  const auto before = std::chrono::steady_clock::now();
  const Delivered none = FetchEx2(handle, 150);
  EXPECT_EQ(qsim::kNoData, AsWord(none.status));
  EXPECT_EQ(nullptr, none.data);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(150));

  ASSERT_EQ(0, QUORIN_SetCommandValue(handle, "TriggerSoftware"));
  ASSERT_EQ(0, QUORIN_SetCommandValue(handle, "TriggerSoftware"));
  for (unsigned int trigger = 1; trigger <= 2; ++trigger) {
    const Delivered delivered = FetchEx2(handle);
    ASSERT_EQ(0, delivered.status);
    EXPECT_EQ(trigger, delivered.info.nTriggerIndex);
    EXPECT_EQ(qsim::kFirstFrameNumber + trigger - 1, delivered.info.nFrameNum);
  }
  EXPECT_EQ(qsim::kNoData, AsWord(FetchEx2(handle, 50).status));
}

TEST_F(VirtualReaderTest, ChannelsOfTheMultiChannelReaderAreIndependent) {
  qsim::SetAutoFrames(false);
  void* handle = Grabbing(kMultiChannelReader, 64, 64, 25);
  qsim::Frame pushed;
  pushed.info.nFrameNum = 7;
  pushed.info.nChannelID = 2;
  qsim::PushFrame(handle, pushed, 2);
  EXPECT_EQ(qsim::kNoData, AsWord(FetchChannel(handle, 1, 30).status));
  EXPECT_EQ(qsim::kNoData, AsWord(FetchEx2(handle, 30).status));
  const Delivered onTwo = FetchChannel(handle, 2);
  ASSERT_EQ(0, onTwo.status);
  EXPECT_EQ(7u, onTwo.info.nFrameNum);
  EXPECT_EQ(qsim::kBadParameter, AsWord(FetchChannel(handle, 4, 0).status));
  EXPECT_THROW(qsim::PushFrame(handle, pushed, qsim::kMaxChannels), std::invalid_argument);

  // Each channel numbers its own frames; the pushed one took no number from channel 2.
  qsim::SetAutoFrames(true);
  for (unsigned int channel : {2u, 3u, 0u}) {
    const Delivered delivered = FetchChannel(handle, channel);
    ASSERT_EQ(0, delivered.status);
    EXPECT_EQ(channel, delivered.info.nChannelID);
    EXPECT_EQ(qsim::kFirstFrameNumber, delivered.info.nFrameNum) << channel;
  }
}

TEST_F(VirtualReaderTest, PushedFramesArriveExactlyAsGiven) {
  qsim::SetAutoFrames(false);
  void* handle = Grabbing(k2DReader);
  qsim::Frame pushed;
  pushed.info.nWidth = 40000;
  pushed.info.nHeight = 2;
  pushed.info.enPixelType = 0x12345678;
  pushed.info.nFrameNum = 0xFFFFFFFF;
  pushed.info.nFrameLen = 10;  // not derived from the image
  pushed.info.nTimeStampHigh = 0x80000001;
  pushed.info.nChannelID = 9;
  pushed.info.nImageCost = 17;
  pushed.image = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  QUORIN_BCR_INFO_EX first = CodeWithText(1, std::string(300, 'L'));  // longer than a plain entry
  first.stCornerLeftBottom = {-4, -61};
  first.nAngle = -45;
  first.sPPM = 40000;
  pushed.codes = {first, CodeWithText(2, "\xE4\xB8\xAD\xE6\x96\x87"), CodeWithText(3, "QN-3")};
  pushed.reportedCodeCount = 5;
  qsim::Waybill label;
  label.info.fCenterX = 320.5f;
  label.info.fAngle = -12.0f;
  label.image = {'B', 'M', 9, 9};
  pushed.waybills = {label, qsim::Waybill{}};
  pushed.waybillImageType = QUORIN_Image_Jpeg;
  qsim::PushFrame(handle, pushed);

  Delivered delivered = FetchEx2(handle);
  ASSERT_EQ(0, delivered.status);
  EXPECT_EQ(pushed.image, std::vector<unsigned char>(delivered.data, delivered.data + 12));
  QUORIN_IMAGE_OUT_INFO_EX2 expected = pushed.info;
  expected.pstCodeList = delivered.info.pstCodeList;
  expected.pstCodeListEx = delivered.info.pstCodeListEx;
  expected.pstWaybillList = delivered.info.pstWaybillList;
  EXPECT_EQ(BytesOf(expected), BytesOf(delivered.info));
  const QUORIN_RESULT_BCR_EX& codes = delivered.Codes();
  EXPECT_EQ(5u, codes.nCodeNum);
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(BytesOf(pushed.codes[i]), BytesOf(codes.stBcrInfoEx[i])) << i;
  }
  const QUORIN_RESULT_BCR& plain = *delivered.info.pstCodeList;
  EXPECT_EQ(3u, plain.nCodeNum);
  EXPECT_EQ(std::string(255, 'L'), plain.stBcrInfo[0].chCode);  // cut to the plain array
  EXPECT_EQ(-61, plain.stBcrInfo[0].pt[3].nY);
  const QUORIN_WAYBILL_LIST& list = delivered.Waybills();
  EXPECT_EQ(2u, list.nWaybillNum);
  EXPECT_EQ(QUORIN_Image_Jpeg, list.enWaybillImageType);
  EXPECT_EQ(320.5f, list.stWaybillInfo[0].fCenterX);
  EXPECT_EQ(-12.0f, list.stWaybillInfo[0].fAngle);
  EXPECT_EQ(label.image, std::vector<unsigned char>(list.stWaybillInfo[0].pImageWaybill,
                                                    list.stWaybillInfo[0].pImageWaybill + list.stWaybillInfo[0].nImageLen));
  EXPECT_EQ(0u, list.stWaybillInfo[1].nImageLen);
  EXPECT_NE(nullptr, list.stWaybillInfo[1].pImageWaybill);

  // The next frame's lists: at most their capacity stored, nothing left over from before.
  pushed.nullImage = true;
  pushed.codes = {CodeWithText(1, "only")};
  pushed.reportedCodeCount = 3;
  pushed.waybills.assign(QUORIN_MAX_WAYBILL_NUM + 1, label);
  pushed.waybills.back().image = {1};
  qsim::PushFrame(handle, pushed);
  delivered = FetchEx2(handle);
  ASSERT_EQ(0, delivered.status);
  EXPECT_EQ(nullptr, delivered.data);
  EXPECT_EQ(3u, delivered.Codes().nCodeNum);
  EXPECT_STREQ("only", delivered.Codes().stBcrInfoEx[0].chCode);
  EXPECT_EQ(BytesOf(QUORIN_BCR_INFO_EX{}), BytesOf(delivered.Codes().stBcrInfoEx[1]));
  EXPECT_EQ(QUORIN_MAX_WAYBILL_NUM + 1, delivered.Waybills().nWaybillNum);
  EXPECT_EQ(4u, delivered.Waybills().stWaybillInfo[QUORIN_MAX_WAYBILL_NUM - 1].nImageLen);

  pushed.codes.assign(QUORIN_MAX_BCR_EX_NUM + 1, CodeWithText(0, "QN"));
  pushed.codes[QUORIN_MAX_BCR_EX_NUM - 1] = CodeWithText(299, "last kept");
  pushed.reportedCodeCount = -1;
  pushed.waybills.clear();
  qsim::PushFrame(handle, pushed);
  delivered = FetchEx2(handle);
  ASSERT_EQ(0, delivered.status);
  EXPECT_EQ(QUORIN_MAX_BCR_EX_NUM + 1, delivered.Codes().nCodeNum);
  EXPECT_STREQ("last kept", delivered.Codes().stBcrInfoEx[QUORIN_MAX_BCR_EX_NUM - 1].chCode);
  EXPECT_EQ(static_cast<unsigned int>(QUORIN_MAX_BCR_NUM), delivered.info.pstCodeList->nCodeNum);
  EXPECT_EQ(0u, delivered.Waybills().nWaybillNum);
  EXPECT_EQ(nullptr, delivered.Waybills().stWaybillInfo[0].pImageWaybill);  // no stale pointer
}

TEST_F(VirtualReaderTest, RepeatedFrameComesBackAtOnceUntilStopped) {
  qsim::SetAutoFrames(false);
  void* handle = Grabbing(k2DReader);
  qsim::Frame repeated;
  repeated.info.nFrameNum = 0xFFFFFFFE;
  repeated.image.assign(1 << 20, 0x5A);
  repeated.info.nFrameLen = 1 << 20;
  repeated.codes = {CodeWithText(1, "QN-R")};
  qsim::RepeatFrame(handle, repeated);
  const Delivered first = FetchEx2(handle, 0);
  ASSERT_EQ(0, first.status);
  for (unsigned int expected : {0xFFFFFFFFu, 0u, 1u}) {
    const Delivered again = FetchEx2(handle, 0);
    ASSERT_EQ(0, again.status);
    EXPECT_EQ(expected, again.info.nFrameNum);
    EXPECT_EQ(first.data, again.data);  // the same bytes, not a copy
    EXPECT_EQ(first.info.pstCodeListEx, again.info.pstCodeListEx);
    EXPECT_STREQ("QN-R", again.Codes().stBcrInfoEx[0].chCode);
  }
  EXPECT_EQ(0x5A, first.data[(1 << 20) - 1]);

  ASSERT_EQ(0, QUORIN_StopGrabbing(handle));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  EXPECT_EQ(qsim::kNoData, AsWord(FetchEx2(handle, 0).status));
}

// ---------------------------------------------------------------------------
// Callbacks, delivered on the stand-in's own threads.

// What one test's callbacks heard, in arrival order; each callback gets the Heard as user data.
struct Heard {
  struct Image {
    unsigned int number = 0;
    unsigned int triggerIndex = 0;
    unsigned long long time = 0;
    std::vector<unsigned char> bytes;
    std::string firstCode;
  };

  std::mutex mutex;
  std::vector<std::string> log;  // event names, "trigger", "frame", "exception"
  std::vector<unsigned int> exceptions;
  std::vector<QUORIN_EVENT_OUT_INFO> events;
  std::vector<std::vector<unsigned char>> eventData;
  std::vector<QUORIN_TRIGGER_INFO_DATA> triggers;
  std::vector<Image> images;
  std::set<std::thread::id> threads;
  std::function<void()> duringImage;  // a test's probe, run inside each image callback, outside the lock

  template <typename Note>
  void Record(const char* entry, Note note) {
    std::lock_guard<std::mutex> lock(mutex);
    threads.insert(std::this_thread::get_id());
    log.emplace_back(entry);
    note();
  }

  size_t ImageCount() {
    std::lock_guard<std::mutex> lock(mutex);
    return images.size();
  }

  bool AwaitImages(size_t count) {
    for (int wait = 0; wait < 1000 && ImageCount() < count; ++wait) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return ImageCount() >= count;
  }

  bool HeardOn(std::thread::id thread) {
    std::lock_guard<std::mutex> lock(mutex);
    return threads.count(thread) != 0;
  }
};

Heard& HeardBy(void* user) { return *static_cast<Heard*>(user); }

void HearException(unsigned int type, void* user) {
  Heard& heard = HeardBy(user);
  heard.Record("exception", [&] { heard.exceptions.push_back(type); });
}

void HearEvent(QUORIN_EVENT_OUT_INFO* event, void* user) {
  Heard& heard = HeardBy(user);
  heard.Record(event->EventName, [&] {
    heard.events.push_back(*event);
    heard.eventData.emplace_back(event->pEventData, event->pEventData + event->nEventDataSize);
  });
}

void HearTrigger(QUORIN_TRIGGER_INFO_DATA* trigger, void* user) {
  Heard& heard = HeardBy(user);
  heard.Record("trigger", [&] { heard.triggers.push_back(*trigger); });
}

void HearImage(unsigned char* data, QUORIN_IMAGE_OUT_INFO_EX2* info, void* user) {
  Heard& heard = HeardBy(user);
  Heard::Image image;
  image.number = info->nFrameNum;
  image.triggerIndex = info->nTriggerIndex;
  image.time = 1ULL * info->nTimeStampHigh << 32 | info->nTimeStampLow;
  image.bytes.assign(data, data + info->nFrameLen);  // the record's pointers hold for the call
  if (info->pstCodeListEx->nCodeNum > 0) image.firstCode = info->pstCodeListEx->stBcrInfoEx[0].chCode;
  heard.Record("frame", [&] { heard.images.push_back(std::move(image)); });
  if (heard.duringImage) heard.duringImage();
}

unsigned long long HostClockUs() {
  return static_cast<unsigned long long>(std::chrono::duration_cast<std::chrono::microseconds>(
                                             std::chrono::system_clock::now().time_since_epoch())
                                             .count());
}

unsigned long long LittleEndian(const std::vector<unsigned char>& bytes) {
  unsigned long long value = 0;
  for (size_t i = bytes.size(); i-- > 0;) value = value << 8 | bytes[i];
  return value;
}

class CallbackTest : public VirtualReaderTest {
 protected:
  // Opened and sized, not started; frames come briskly once it is.
  static void* Ready(const char* serial, bool triggered = false) {
    void* handle = Open(serial);
    EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Width", 64));
    EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Height", 64));
    EXPECT_EQ(0, QUORIN_SetFloatValue(handle, "AcquisitionFrameRate", 200));
    EXPECT_EQ(0, QUORIN_SetEnumValue(handle, "TriggerMode", triggered ? 1 : 0));
    return handle;
  }

  static void Listen(void* handle, Heard& heard) {
    ASSERT_EQ(0, QUORIN_RegisterExceptionCallBack(handle, HearException, &heard));
    ASSERT_EQ(0, QUORIN_RegisterAllEventCallBack(handle, HearEvent, &heard));
    ASSERT_EQ(0, QUORIN_RegisterTriggerCallBack(handle, HearTrigger, &heard));
    ASSERT_EQ(0, QUORIN_RegisterImageCallBackEx2(handle, HearImage, &heard));
  }

  static qsim::Frame FrameOf(unsigned int number, std::vector<unsigned char> image, const std::string& code) {
    qsim::Frame frame;
    frame.info.nFrameNum = number;
    frame.info.nFrameLen = static_cast<unsigned int>(image.size());
    frame.image = std::move(image);
    frame.codes = {CodeWithText(1, code)};
    return frame;
  }
};

TEST_F(CallbackTest, RegistrationNeedsTheOpenReaderAndAChannelItHas) {
  Heard first;
  Heard second;
  void* handle = Create(kMultiChannelReader);
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_RegisterExceptionCallBack(handle, HearException, &first)));
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_RegisterTriggerCallBack(nullptr, HearTrigger, &first)));
  ASSERT_EQ(0, QUORIN_OpenDevice(handle));
  EXPECT_EQ(0, QUORIN_MSC_RegisterImageCallBack(handle, 3, HearImage, &first));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_MSC_RegisterImageCallBack(handle, 4, HearImage, &first)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_RegisterAllEventCallBack(handle, nullptr, &first)));
  const std::vector<qsim::Call> channels = qsim::CallsTo("QUORIN_MSC_RegisterImageCallBack");
  ASSERT_EQ(2u, channels.size());
  EXPECT_EQ(handle, channels[0].handle);
  EXPECT_EQ(std::vector<unsigned long long>{3}, channels[0].numbers);
  EXPECT_TRUE(qsim::CallsTo("QUORIN_RegisterExceptionCallBack").at(0).numbers.empty());

  // The later registration replaces the earlier; a null one with null user data ends it.
  ASSERT_EQ(0, QUORIN_RegisterExceptionCallBack(handle, HearException, &first));
  ASSERT_EQ(0, QUORIN_RegisterExceptionCallBack(handle, HearException, &second));
  EXPECT_TRUE(qsim::FireException(handle, 5));
  EXPECT_TRUE(first.exceptions.empty());
  EXPECT_EQ(std::vector<unsigned int>{5}, second.exceptions);
  ASSERT_EQ(0, QUORIN_RegisterExceptionCallBack(handle, nullptr, nullptr));
  EXPECT_FALSE(qsim::FireException(handle, 6));
  EXPECT_TRUE(qsim::FireImage(handle, FrameOf(1, {1}, "QN-1"), 3));
  EXPECT_FALSE(qsim::FireImage(handle, FrameOf(2, {1}, "QN-2"), 0));  // the Ex2 form would be channel 0

  // A scripted status replaces the registration; closing ends every registration.
  qsim::ScriptStatus("QUORIN_RegisterTriggerCallBack", qsim::kResource);
  EXPECT_EQ(qsim::kResource, AsWord(QUORIN_RegisterTriggerCallBack(handle, HearTrigger, &first)));
  EXPECT_FALSE(qsim::FireTrigger(handle, QUORIN_TRIGGER_INFO_DATA{}));
  ASSERT_EQ(0, QUORIN_RegisterImageCallBackEx2(handle, HearImage, &first));
  ASSERT_EQ(0, QUORIN_CloseDevice(handle));
  ASSERT_EQ(0, QUORIN_OpenDevice(handle));
  EXPECT_FALSE(qsim::FireImage(handle, FrameOf(3, {1}, "QN-3"), 0));
  EXPECT_FALSE(qsim::FireImage(handle, FrameOf(4, {1}, "QN-4"), 3));
  int notAHandle = 0;
  EXPECT_THROW(qsim::FireException(&notAHandle, 1), std::invalid_argument);
  EXPECT_THROW(qsim::FireImage(handle, FrameOf(5, {1}, "QN-5"), qsim::kMaxChannels), std::invalid_argument);
}

TEST_F(CallbackTest, FiredCallbacksRunOnAStandInThreadAndReturnFirst) {
  void* handle = Open(k2DReader);  // not grabbing: fired callbacks need none
  Heard heard;
  Listen(handle, heard);
  EXPECT_TRUE(qsim::FireException(handle, 0x80000001u));
  QUORIN_EVENT_OUT_INFO event{};
  std::strcpy(event.EventName, "Custom");
  event.nEventID = 0xFFFF;
  EXPECT_TRUE(qsim::FireEvent(handle, event, {1, 2, 3}));
  unsigned char given[2] = {7, 8};
  event.pEventData = given;
  event.nEventDataSize = 2;
  EXPECT_TRUE(qsim::FireEvent(handle, event, {}));   // delivered as given
  EXPECT_TRUE(qsim::FireEvent(handle, event, {9}));  // the data replaces it
  event.pEventData = nullptr;
  event.nEventDataSize = 5;
  EXPECT_TRUE(qsim::FireEvent(handle, event, {}));
  QUORIN_TRIGGER_INFO_DATA trigger{};
  trigger.nTriggerIndex = 41;
  trigger.nHostTimeStamp = 0x8000000000000123ull;
  EXPECT_TRUE(qsim::FireTrigger(handle, trigger));
  EXPECT_TRUE(qsim::FireImage(handle, FrameOf(12, {4, 5, 6}, "QN-FIRED")));

  // Everything is there at once: each Fire returned after its callback had.
  EXPECT_FALSE(heard.HeardOn(std::this_thread::get_id()));
  EXPECT_EQ(std::vector<unsigned int>{0x80000001u}, heard.exceptions);
  EXPECT_EQ((std::vector<std::vector<unsigned char>>{{1, 2, 3}, {7, 8}, {9}, {}}), heard.eventData);
  EXPECT_EQ(0xFFFF, heard.events[0].nEventID);
  EXPECT_STREQ("Custom", heard.events[0].EventName);
  EXPECT_EQ(given, heard.events[1].pEventData);
  EXPECT_NE(nullptr, heard.events[3].pEventData);
  EXPECT_EQ(0u, heard.events[3].nEventDataSize);
  ASSERT_EQ(1u, heard.triggers.size());
  EXPECT_EQ(41u, heard.triggers[0].nTriggerIndex);
  EXPECT_EQ(0x8000000000000123ull, heard.triggers[0].nHostTimeStamp);
  ASSERT_EQ(1u, heard.images.size());
  EXPECT_EQ(12u, heard.images[0].number);
  EXPECT_EQ((std::vector<unsigned char>{4, 5, 6}), heard.images[0].bytes);
  EXPECT_EQ("QN-FIRED", heard.images[0].firstCode);
  EXPECT_EQ(1u, qsim::CallbackDeliveries(handle));
}

TEST_F(CallbackTest, FramesOfAChannelWithAnImageCallbackSkipItsQueue) {
  void* handle = Ready(kMultiChannelReader);
  Heard heard;
  ASSERT_EQ(0, QUORIN_MSC_RegisterImageCallBack(handle, 2, HearImage, &heard));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  ASSERT_TRUE(heard.AwaitImages(6));
  EXPECT_EQ(qsim::kNoData, AsWord(FetchChannel(handle, 2, 50).status));  // nothing queued there
  EXPECT_EQ(0, FetchChannel(handle, 1).status);                          // the other channels queue
  qsim::PushFrame(handle, FrameOf(77, {1, 2, 3}, "QN-PUSHED"), 2);      // returns after the callback
  EXPECT_EQ(qsim::kNoData, AsWord(FetchChannel(handle, 2, 0).status));
  ASSERT_EQ(0, QUORIN_StopGrabbing(handle));

  std::vector<unsigned int> produced;
  const Heard::Image* pushed = nullptr;
  for (const Heard::Image& image : heard.images) {
    if (image.number == 77) pushed = &image;
    else produced.push_back(image.number);
  }
  ASSERT_NE(nullptr, pushed);
  EXPECT_EQ((std::vector<unsigned char>{1, 2, 3}), pushed->bytes);
  EXPECT_EQ("QN-PUSHED", pushed->firstCode);
  for (unsigned int i = 0; i < produced.size(); ++i) {
    EXPECT_EQ(qsim::kFirstFrameNumber + i, produced[i]);  // every frame once, in order, across the wrap
  }
  EXPECT_EQ(64u * 64u, heard.images[0].bytes.size());
  EXPECT_EQ(heard.images.size(), qsim::CallbackDeliveries(handle, 2));
  EXPECT_EQ(0u, qsim::CallbackDeliveries(handle, 1));
  EXPECT_FALSE(heard.HeardOn(std::this_thread::get_id()));

  // Unregistered, the channel queues its frames again.
  ASSERT_EQ(0, QUORIN_MSC_RegisterImageCallBack(handle, 2, nullptr, nullptr));
  const size_t heardBefore = heard.images.size();
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  EXPECT_EQ(0, FetchChannel(handle, 2).status);
  EXPECT_EQ(heardBefore, heard.ImageCount());
  EXPECT_EQ(0u, qsim::CallbackDeliveries(handle, 2));  // counted from the start
}

TEST_F(CallbackTest, EachRunIsFramedByEventsAndEachFrameFollowsItsTrigger) {
  void* handle = Ready(k2DReader, true);
  Heard heard;
  Listen(handle, heard);
  const unsigned long long hostBefore = HostClockUs();
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  for (int trigger = 0; trigger < 3; ++trigger) ASSERT_EQ(0, QUORIN_SetCommandValue(handle, "TriggerSoftware"));
  ASSERT_TRUE(heard.AwaitImages(3));
  ASSERT_EQ(0, QUORIN_StopGrabbing(handle));  // the end event is heard before it returns
  const unsigned long long hostAfter = HostClockUs();

  EXPECT_EQ((std::vector<std::string>{"AcquisitionStart", "trigger", "frame", "trigger", "frame", "trigger", "frame",
                                      "AcquisitionEnd"}),
            heard.log);
  EXPECT_FALSE(heard.HeardOn(std::this_thread::get_id()));
  ASSERT_EQ(3u, heard.triggers.size());
  ASSERT_EQ(2u, heard.events.size());
  for (unsigned int i = 0; i < 3; ++i) {
    const QUORIN_TRIGGER_INFO_DATA& trigger = heard.triggers[i];
    EXPECT_EQ(i + 1, trigger.nTriggerIndex);
    EXPECT_EQ(i + 1, heard.images[i].triggerIndex);
    EXPECT_EQ(qsim::kSoftwareTriggerFlag, trigger.nTriggerFlag);
    EXPECT_EQ(heard.images[i].time, 1ULL * trigger.nTriggerTimeHigh << 32 | trigger.nTriggerTimeLow);
    EXPECT_EQ(1, trigger.nIsMainCam);
    EXPECT_TRUE(trigger.nHostTimeStamp >= hostBefore && trigger.nHostTimeStamp <= hostAfter);
  }
  const QUORIN_EVENT_OUT_INFO& start = heard.events[0];
  const QUORIN_EVENT_OUT_INFO& end = heard.events[1];
  EXPECT_EQ(qsim::kAcquisitionStartEventId, start.nEventID);
  EXPECT_EQ(qsim::kAcquisitionEndEventId, end.nEventID);
  EXPECT_EQ(0u, start.nBlockIdLow);
  EXPECT_EQ(3u, end.nBlockIdLow);  // frame sets made in the run
  ASSERT_EQ(8u, heard.eventData[0].size());
  const unsigned long long startTime = LittleEndian(heard.eventData[0]);
  const unsigned long long endTime = LittleEndian(heard.eventData[1]);
  EXPECT_EQ(startTime, 1ULL * start.nTimestampHigh << 32 | start.nTimestampLow);
  EXPECT_EQ(endTime, 1ULL * end.nTimestampHigh << 32 | end.nTimestampLow);
  EXPECT_TRUE(startTime <= heard.images[0].time && heard.images[2].time <= endTime);

  // In free run every frame has its notice too, numbered from 1 again.
  Heard freeRun;
  Listen(handle, freeRun);
  ASSERT_EQ(0, QUORIN_SetEnumValue(handle, "TriggerMode", 0));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  ASSERT_TRUE(freeRun.AwaitImages(5));
  ASSERT_EQ(0, QUORIN_StopGrabbing(handle));
  const size_t images = freeRun.images.size();
  ASSERT_GE(freeRun.triggers.size(), images);
  EXPECT_LE(freeRun.triggers.size(), images + 1);  // the stop may fall between a notice and its frame
  for (unsigned int i = 0; i < images; ++i) {
    EXPECT_EQ(i + 1, freeRun.triggers[i].nTriggerIndex);
    EXPECT_EQ(qsim::kFreeRunTriggerFlag, freeRun.triggers[i].nTriggerFlag);
    EXPECT_EQ(freeRun.images[i].time,
              1ULL * freeRun.triggers[i].nTriggerTimeHigh << 32 | freeRun.triggers[i].nTriggerTimeLow);
  }
}

TEST_F(CallbackTest, StopAndDestroyWaitForARunningCallbackThatMayCallTheSdk) {
  void* handle = Ready(k2DReader);
  Heard heard;
  std::atomic<int> entered{0};
  std::atomic<bool> left{false};
  std::atomic<unsigned int> widthStatus{1};
  heard.duringImage = [&] {
    if (entered++ > 0) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    QUORIN_INT_VALUE width{};
    widthStatus = AsWord(QUORIN_GetIntValue(handle, "Width", &width));  // the SDK is free while Stop waits
    left = true;
  };
  ASSERT_EQ(0, QUORIN_RegisterImageCallBackEx2(handle, HearImage, &heard));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  while (entered == 0) std::this_thread::yield();
  EXPECT_EQ(0, QUORIN_StopGrabbing(handle));
  EXPECT_TRUE(left);
  EXPECT_EQ(0u, widthStatus);
  const size_t heardAtStop = heard.ImageCount();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(heardAtStop, heard.ImageCount());

  // Destroying waits for a callback fired on another thread.
  entered = 0;
  left = false;
  bool fired = false;
  std::thread firing([&] { fired = qsim::FireImage(handle, FrameOf(1, {1}, "QN-1")); });
  while (entered == 0) std::this_thread::yield();
  EXPECT_EQ(0, QUORIN_DestroyHandle(handle));
  EXPECT_TRUE(left);
  firing.join();
  EXPECT_TRUE(fired);
}

TEST_F(CallbackTest, ACallbackMayStopOrCloseItsOwnReader) {
  void* handle = Ready(k2DReader);
  Heard heard;
  std::atomic<int> seen{0};
  std::atomic<unsigned int> stopStatus{1};
  std::atomic<unsigned int> closeStatus{1};
  heard.duringImage = [&] {
    const int frame = ++seen;
    if (frame == 3) stopStatus = AsWord(QUORIN_StopGrabbing(handle));
    if (frame == 6) closeStatus = AsWord(QUORIN_CloseDevice(handle));
  };
  ASSERT_EQ(0, QUORIN_RegisterAllEventCallBack(handle, HearEvent, &heard));
  ASSERT_EQ(0, QUORIN_RegisterImageCallBackEx2(handle, HearImage, &heard));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  while (stopStatus == 1) std::this_thread::yield();
  EXPECT_EQ(0u, stopStatus);
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(QUORIN_StopGrabbing(handle)));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(3u, heard.ImageCount());  // nothing after the frame whose callback stopped

  // A new start while that producer may still be unwinding: it waits its turn, and the events keep order.
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  while (closeStatus == 1) std::this_thread::yield();
  EXPECT_EQ(0u, closeStatus);
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_StopGrabbing(handle)));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  std::lock_guard<std::mutex> lock(heard.mutex);
  EXPECT_EQ(6u, heard.images.size());
  EXPECT_EQ((std::vector<std::string>{"AcquisitionStart", "frame", "frame", "frame", "AcquisitionEnd",
                                      "AcquisitionStart", "frame", "frame", "frame"}),
            heard.log);  // closing dropped the event callback before the second end
}

TEST_F(CallbackTest, DisconnectReportsOnceEndsTheFramesAndLeavesTheHandleGone) {
  void* handle = Ready(k2DReader);
  Heard heard;
  Listen(handle, heard);
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  ASSERT_TRUE(heard.AwaitImages(2));
  Delivered waiting;  // frames go to the callback, so this fetch waits
  std::thread waiter([&] { waiting = FetchEx2(handle, 60000); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  qsim::SimulateDisconnect(handle);
  waiter.join();
  EXPECT_EQ(qsim::kDeviceGone, AsWord(waiting.status));
  const size_t heardAtLoss = heard.ImageCount();
  qsim::SimulateDisconnect(handle);
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  {
    std::lock_guard<std::mutex> lock(heard.mutex);
    EXPECT_EQ(std::vector<unsigned int>{QUORIN_EXCEPTION_DEV_DISCONNECT}, heard.exceptions);
    EXPECT_EQ("exception", heard.log.back());  // no frame after it
    std::vector<std::string> events;
    for (const QUORIN_EVENT_OUT_INFO& event : heard.events) events.emplace_back(event.EventName);
    EXPECT_EQ(std::vector<std::string>{"AcquisitionStart"}, events);  // a lost device sends no end event
    EXPECT_EQ(heardAtLoss, heard.images.size());
    EXPECT_EQ(0u, heard.threads.count(std::this_thread::get_id()));
  }

  QUORIN_INT_VALUE width{};
  QUORIN_DEVICE_INFO info{};
  for (int status : {QUORIN_StopGrabbing(handle), QUORIN_StartGrabbing(handle), QUORIN_GetIntValue(handle, "Width", &width),
                     QUORIN_SetCommandValue(handle, "TriggerSoftware"), FetchEx2(handle, 0).status,
                     QUORIN_GetDeviceInfo(handle, &info), QUORIN_OpenDevice(handle),
                     QUORIN_RegisterExceptionCallBack(handle, nullptr, nullptr)}) {
    EXPECT_EQ(qsim::kDeviceGone, AsWord(status));
  }
  EXPECT_EQ(qsim::kAccessDenied, AsWord(QUORIN_OpenDevice(Create(k2DReader))));  // still held

  // Closed, the handle can reach the reader again.
  EXPECT_EQ(0, QUORIN_CloseDevice(handle));
  EXPECT_THROW(qsim::SimulateDisconnect(handle), std::invalid_argument);
  ASSERT_EQ(0, QUORIN_OpenDevice(handle));
  EXPECT_EQ(0, QUORIN_GetIntValue(handle, "Width", &width));
  EXPECT_EQ(0, QUORIN_StartGrabbing(handle));
  EXPECT_EQ(0, FetchEx2(handle).status);
  EXPECT_FALSE(qsim::FireException(handle, 1));  // the registrations ended with the close
}

}  // namespace
