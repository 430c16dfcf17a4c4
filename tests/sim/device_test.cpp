// The stand-in as the bridge's tests drive it: scripted statuses and outputs, the call recorder,
// the call order of a device, and frames numbered across the wrap.
#include <set>
#include <thread>

#include "sim_harness.h"

namespace qsim_test {
namespace {

TEST_F(StandInTest, ScriptsReplaceTheWorkAndTheRecorderKeepsEveryCall) {
  const unsigned int failure = 0x80000007;
  QUORIN_DEVICE_INFO_LIST list{};
  qsim::ScriptStatus("QUORIN_EnumDevices", failure);
  list.nDeviceNum = 99;
  EXPECT_EQ(failure, AsWord(QUORIN_EnumDevices(&list, 0xFFFFFFFF)));
  EXPECT_EQ(99u, list.nDeviceNum);
  qsim::ScriptStatus("QUORIN_CreateHandleBySerialNumber", failure);
  void* none = nullptr;
  EXPECT_EQ(failure, AsWord(QUORIN_CreateHandleBySerialNumber(&none, k2DReader)));
  EXPECT_EQ(nullptr, none);
  qsim::ScriptStatus("QUORIN_CreateHandleBySerialNumber", 0);
  QUORIN_DEVICE_INFO info = qsim::DefaultReaders()[1];
  qsim::SetAccessible(false);
  EXPECT_FALSE(QUORIN_IsDeviceAccessible(&info, QUORIN_ACCESS_Monitor));
  qsim::SetSdkVersion(0x01020304);
  EXPECT_EQ(0x01020304u, QUORIN_GetSDKVersion());

  void* handle = Open(k2DReader);
  QUORIN_SetIntValue(handle, "Width", -8);
  QUORIN_SetFloatValue(handle, "ExposureTime", 1234.5f);
  QUORIN_SetEnumValueByString(handle, "PixelFormat", "Mono10");
  const std::vector<qsim::Call> calls = qsim::Calls();
  std::vector<std::string> names;
  for (const qsim::Call& call : calls) names.push_back(call.function);
  EXPECT_EQ((std::vector<std::string>{"QUORIN_EnumDevices", "QUORIN_CreateHandleBySerialNumber",
                                      "QUORIN_IsDeviceAccessible", "QUORIN_GetSDKVersion",
                                      "QUORIN_CreateHandleBySerialNumber", "QUORIN_OpenDevice",
                                      "QUORIN_SetIntValue", "QUORIN_SetFloatValue", "QUORIN_SetEnumValueByString"}),
            names);
  EXPECT_EQ(std::vector<unsigned long long>{0xFFFFFFFFull}, calls[0].numbers);  // zero-extended
  EXPECT_EQ(std::vector<std::string>{k2DReader}, calls[1].texts);
  EXPECT_EQ(BytesOf(info), calls[2].record);
  EXPECT_EQ(handle, calls[5].handle);
  EXPECT_EQ(std::vector<unsigned long long>{0xFFFFFFFFFFFFFFF8ull}, calls[6].numbers);
  EXPECT_EQ(std::vector<unsigned long long>{0x449A5000}, calls[7].numbers);  // the float's bits
  EXPECT_EQ((std::vector<std::string>{"PixelFormat", "Mono10"}), calls[8].texts);

  // Outputs: copied up to the record's size, the rest untouched; a fetch leaves the image null.
  QUORIN_INT_VALUE scripted{};
  scripted.nCurValue = 5013504;
  qsim::ScriptOutput("QUORIN_GetIntValue", BytesOf(scripted), qsim::kNotReadable);
  QUORIN_INT_VALUE out{};
  EXPECT_EQ(qsim::kNotReadable, AsWord(QUORIN_GetIntValue(handle, "NoSuchNode", &out)));
  EXPECT_EQ(BytesOf(scripted), BytesOf(out));
  unsigned char guarded[2] = {0, 0x11};
  qsim::ScriptOutput("QUORIN_GetBoolValue", {1, 0xEE});
  EXPECT_EQ(0, QUORIN_GetBoolValue(handle, "Width", reinterpret_cast<bool*>(guarded)));
  EXPECT_EQ((Bytes{1, 0x11}), Bytes(guarded, guarded + 2));
  qsim::ScriptOutput("QUORIN_GetDeviceInfo", {0x07, 0x00, 0x09, 0x00});
  EXPECT_EQ(0, QUORIN_GetDeviceInfo(handle, &info));
  EXPECT_EQ(7, info.nMajorVer);
  EXPECT_STREQ(kMultiChannelReader, info.stGigEInfo.chSerialNumber);
  QUORIN_IMAGE_OUT_INFO_EX2 header{};
  header.nFrameNum = 42;
  qsim::ScriptOutput("QUORIN_MSC_GetOneFrameTimeout", BytesOf(header), qsim::kNoData);
  const Delivered fetched = FetchChannel(handle, 3, 0);
  EXPECT_EQ(qsim::kNoData, AsWord(fetched.status));
  EXPECT_EQ(nullptr, fetched.data);
  EXPECT_EQ(BytesOf(header), BytesOf(fetched.info));
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(FetchEx2(handle, 0).status));  // scripts are per function

  qsim::ClearCalls();
  std::vector<std::thread> callers;
  for (int t = 0; t < 4; ++t) callers.emplace_back([] { for (int i = 0; i < 500; ++i) QUORIN_GetSDKVersion(); });
  for (std::thread& caller : callers) caller.join();
  EXPECT_EQ(2000u, qsim::Calls().size());

  qsim::Reset();  // scripts, readers' state and the version return to their defaults
  EXPECT_EQ(qsim::kDefaultSdkVersion, QUORIN_GetSDKVersion());
  EXPECT_EQ(0, QUORIN_EnumDevices(&list, QUORIN_GIGE_DEVICE));
  EXPECT_EQ(4u, list.nDeviceNum);
  EXPECT_TRUE(QUORIN_IsDeviceAccessible(&info, QUORIN_ACCESS_Monitor));
  QUORIN_INT_VALUE width{};
  EXPECT_EQ(0, QUORIN_GetIntValue(Open(k2DReader), "Width", &width));
  EXPECT_EQ(1280, width.nCurValue);
}

TEST_F(StandInTest, HandlesFollowTheCallOrderOfADevice) {
  void* stale = Create(k2DReader);
  ASSERT_EQ(0, QUORIN_DestroyHandle(stale));
  int notAHandle = 0;
  for (void* bad : {stale, static_cast<void*>(nullptr), static_cast<void*>(&notAHandle)}) {
    EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_OpenDevice(bad)));
    EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_DestroyHandle(bad)));
  }
  std::set<void*> seen = {stale};  // a destroyed handle's address is never handed out again
  for (int i = 0; i < 20; ++i) {
    void* next = Create(k2DReader);
    EXPECT_TRUE(seen.insert(next).second);
    QUORIN_DestroyHandle(next);
  }
  void* upgrade = nullptr;
  ASSERT_EQ(0, QUORIN_CreateHandleForUpgradeAndEncryption(&upgrade));
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_OpenDevice(upgrade)));

  void* first = Create(kMultiChannelReader);
  void* second = Create(kMultiChannelReader);
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_StartGrabbing(first)));
  EXPECT_EQ(0, QUORIN_OpenDevice(first));
  EXPECT_EQ(qsim::kBusy, AsWord(QUORIN_OpenDevice(first)));
  EXPECT_EQ(qsim::kAccessDenied, AsWord(QUORIN_OpenDevice(second)));
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(QUORIN_StopGrabbing(first)));
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(FetchEx2(first, 0).status));
  ASSERT_EQ(0, QUORIN_StartGrabbing(first));
  EXPECT_EQ(qsim::kBusy, AsWord(QUORIN_StartGrabbing(first)));
  EXPECT_EQ(qsim::kNotWritable, AsWord(QUORIN_SetIntValue(first, "Width", 640)));  // not while grabbing
  EXPECT_EQ(0, QUORIN_CloseDevice(first));  // stops grabbing and releases the reader
  EXPECT_EQ(0, QUORIN_OpenDevice(second));
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(FetchEx2(second, 0).status));
  EXPECT_EQ(0, QUORIN_DestroyHandle(second));
  EXPECT_EQ(0, QUORIN_OpenDevice(first));
  // Network settings keep the device's rules: a contiguous mask, a bounded GVCP time-out.
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GIGE_ForceIp(first, 0xC0A8010B, 0xFF00FF00, 0)));
  EXPECT_EQ(0, QUORIN_GIGE_ForceIp(first, 0xC0A8010B, 0xFFFF0000, 0));
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_GIGE_SetGvcpTimeout(first, qsim::kMaxGvcpTimeoutMs + 1)));
  EXPECT_EQ(0, QUORIN_GIGE_SetGvcpTimeout(first, qsim::kMaxGvcpTimeoutMs));
  qsim::Reset();
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_OpenDevice(first)));
}

TEST_F(StandInTest, FramesAreNumberedAcrossTheWrapAndAFullQueueLosesTheOldest) {
  void* handle = Grabbing(k2DReader);
  for (unsigned int i = 0; i < 20; ++i) {  // the numbers pass 0xFFFFFFFF after 16 frames
    const Delivered delivered = FetchEx2(handle);
    ASSERT_EQ(0, delivered.status);
    EXPECT_EQ(qsim::kFirstFrameNumber + i, delivered.info.nFrameNum);
    EXPECT_EQ(64u * 64u, delivered.info.nFrameLen);
    EXPECT_GE(delivered.info.pstCodeListEx->nCodeNum, 1u);
  }
  const unsigned int last = qsim::kFirstFrameNumber + 19;
  while (qsim::FramesDropped(handle) == 0) std::this_thread::yield();
  qsim::SetAutoFrames(false);  // freezes the queue: full, with the newest frames
  std::vector<unsigned int> kept;
  for (Delivered next = FetchEx2(handle, 0); next.status == 0; next = FetchEx2(handle, 0)) {
    kept.push_back(next.info.nFrameNum);
  }
  ASSERT_EQ(qsim::kFrameQueueCapacity, kept.size());
  EXPECT_EQ(last + 1 + qsim::FramesDropped(handle), kept.front());  // what was lost was the oldest
  for (size_t i = 1; i < kept.size(); ++i) EXPECT_EQ(kept[i - 1] + 1, kept[i]);

  // Software triggers make one frame each; a pushed frame takes no number from its channel.
  ASSERT_EQ(0, QUORIN_StopGrabbing(handle));
  ASSERT_EQ(0, QUORIN_SetEnumValue(handle, "TriggerMode", 1));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  qsim::SetAutoFrames(true);
  qsim::Frame pushed;
  pushed.info.nFrameNum = 7;
  pushed.image = {1, 2, 3};
  pushed.codes = {CodeWithText(1, "QN-1")};
  pushed.codes[0].stCornerLeftBottom = {-4, -61};
  qsim::PushFrame(handle, pushed);
  qsim::PushFrame(handle, pushed);
  ASSERT_EQ(0, QUORIN_SetCommandValue(handle, "TriggerSoftware"));
  ASSERT_EQ(0, QUORIN_SetCommandValue(handle, "TriggerSoftware"));
  const Delivered fromPush = FetchEx2(handle);
  EXPECT_EQ(7u, fromPush.info.nFrameNum);
  EXPECT_EQ((Bytes{1, 2, 3}), Bytes(fromPush.data, fromPush.data + 3));
  EXPECT_EQ(-61, fromPush.info.pstCodeList->stBcrInfo[0].pt[3].nY);  // the fourth corner is the left-bottom one
  unsigned char* legacyData = nullptr;
  QUORIN_FRAME_OUT_INFO legacy{};
  ASSERT_EQ(0, QUORIN_GetOneFrameTimeout(handle, &legacyData, &legacy, 2000));  // the same frames, legacy record
  EXPECT_EQ(7u, legacy.nFrameNum);
  EXPECT_EQ(-61, legacy.stBcrInfo[0].pt[3].nY);
  for (unsigned int trigger = 1; trigger <= 2; ++trigger) {
    const Delivered delivered = FetchEx2(handle);
    ASSERT_EQ(0, delivered.status);
    EXPECT_EQ(trigger, delivered.info.nTriggerIndex);
    EXPECT_EQ(qsim::kFirstFrameNumber + trigger - 1, delivered.info.nFrameNum);
  }
  EXPECT_EQ(qsim::kNoData, AsWord(FetchEx2(handle, 0).status));

  // Each channel numbers its own frames; a repeated frame comes back at once, not copied.
  void* channels = Grabbing(kMultiChannelReader);
  for (unsigned int channel : {2u, 3u, 0u}) {
    const Delivered delivered = FetchChannel(channels, channel);
    ASSERT_EQ(0, delivered.status);
    EXPECT_EQ(channel, delivered.info.nChannelID);
    EXPECT_EQ(qsim::kFirstFrameNumber, delivered.info.nFrameNum) << channel;
  }
  EXPECT_EQ(qsim::kBadParameter, AsWord(FetchChannel(channels, 4, 0).status));
  qsim::Frame repeated;
  repeated.info.nFrameNum = 0xFFFFFFFF;
  repeated.image.assign(4096, 0x5A);
  qsim::RepeatFrame(channels, repeated, 1);
  const Delivered first = FetchChannel(channels, 1, 0);
  const Delivered again = FetchChannel(channels, 1, 0);
  EXPECT_EQ(0xFFFFFFFFu, first.info.nFrameNum);
  EXPECT_EQ(0u, again.info.nFrameNum);
  EXPECT_EQ(first.data, again.data);
}

}  // namespace
}  // namespace qsim_test
