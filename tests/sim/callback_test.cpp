// Callbacks of the stand-in: they run on its own threads, frame each run with events, follow their
// trigger notices, may call back into the SDK, and end with a lost device.
#include <atomic>
#include <chrono>
#include <mutex>
#include <set>
#include <thread>

#include "sim_harness.h"

namespace qsim_test {
namespace {

// What one test's callbacks heard, in arrival order; each callback gets the Heard as user data.
struct Heard {
  std::mutex mutex;
  std::vector<std::string> log;  // event names, "trigger", "frame", "exception"
  std::vector<unsigned int> exceptions;
  std::vector<Bytes> eventData;
  std::vector<QUORIN_TRIGGER_INFO_DATA> triggers;
  std::vector<unsigned int> frameNumbers;
  std::vector<Bytes> images;
  std::set<std::thread::id> threads;
  void (*duringImage)(Heard&) = nullptr;  // a test's probe inside each image callback, outside the lock
  void* handle = nullptr;
  std::atomic<int> entered{0};
  std::atomic<bool> left{false};
  std::atomic<int> status{-1};  // what the probe's own SDK call answered

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
  void AwaitImages(size_t count) { while (ImageCount() < count) std::this_thread::yield(); }
};

void HearException(unsigned int type, void* user) {
  Heard& heard = *static_cast<Heard*>(user);
  heard.Record("exception", [&] { heard.exceptions.push_back(type); });
}
void HearEvent(QUORIN_EVENT_OUT_INFO* event, void* user) {
  Heard& heard = *static_cast<Heard*>(user);
  heard.Record(event->EventName, [&] { heard.eventData.emplace_back(event->pEventData, event->pEventData + event->nEventDataSize); });
}
void HearTrigger(QUORIN_TRIGGER_INFO_DATA* trigger, void* user) {
  Heard& heard = *static_cast<Heard*>(user);
  heard.Record("trigger", [&] { heard.triggers.push_back(*trigger); });
}
void HearImage(unsigned char* data, QUORIN_IMAGE_OUT_INFO_EX2* info, void* user) {
  Heard& heard = *static_cast<Heard*>(user);
  heard.Record("frame", [&] {
    heard.frameNumbers.push_back(info->nFrameNum);
    heard.images.emplace_back(data, data + info->nFrameLen);  // the record's pointers hold for the call
  });
  if (heard.duringImage) heard.duringImage(heard);
}

void Listen(void* handle, Heard& heard) {
  ASSERT_EQ(0, QUORIN_RegisterExceptionCallBack(handle, HearException, &heard));
  ASSERT_EQ(0, QUORIN_RegisterAllEventCallBack(handle, HearEvent, &heard));
  ASSERT_EQ(0, QUORIN_RegisterTriggerCallBack(handle, HearTrigger, &heard));
  ASSERT_EQ(0, QUORIN_RegisterImageCallBackEx2(handle, HearImage, &heard));
}

qsim::Frame FrameOf(unsigned int number, Bytes image) {
  qsim::Frame frame;
  frame.info.nFrameNum = number;
  frame.info.nFrameLen = static_cast<unsigned int>(image.size());
  frame.image = std::move(image);
  return frame;
}

using CallbackTest = StandInTest;

TEST_F(CallbackTest, FiredCallbacksRunOnAStandInThreadAndReturnFirst) {
  void* handle = Create(kMultiChannelReader);
  Heard heard;
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_RegisterExceptionCallBack(handle, HearException, &heard)));
  ASSERT_EQ(0, QUORIN_OpenDevice(handle));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_MSC_RegisterImageCallBack(handle, 4, HearImage, &heard)));
  EXPECT_FALSE(qsim::FireException(handle, 1));
  Listen(handle, heard);
  ASSERT_EQ(0, QUORIN_MSC_RegisterImageCallBack(handle, 3, HearImage, &heard));
  EXPECT_TRUE(qsim::FireException(handle, 0x80000001u));
  QUORIN_EVENT_OUT_INFO event{};
  std::strcpy(event.EventName, "Custom");
  EXPECT_TRUE(qsim::FireEvent(handle, event, {1, 2, 3}));
  QUORIN_TRIGGER_INFO_DATA trigger{};
  trigger.nHostTimeStamp = 0x8000000000000123ull;
  EXPECT_TRUE(qsim::FireTrigger(handle, trigger));
  EXPECT_TRUE(qsim::FireImage(handle, FrameOf(12, {4, 5, 6})));
  EXPECT_TRUE(qsim::FireImage(handle, FrameOf(13, {7}), 3));
  EXPECT_FALSE(qsim::FireImage(handle, FrameOf(14, {8}), 1));

  // Everything is there at once: each Fire returned after its callback had.
  EXPECT_EQ((std::vector<std::string>{"exception", "Custom", "trigger", "frame", "frame"}), heard.log);
  EXPECT_EQ(0u, heard.threads.count(std::this_thread::get_id()));
  EXPECT_EQ(std::vector<unsigned int>{0x80000001u}, heard.exceptions);
  EXPECT_EQ((std::vector<Bytes>{{1, 2, 3}}), heard.eventData);
  EXPECT_EQ(0x8000000000000123ull, heard.triggers.at(0).nHostTimeStamp);
  EXPECT_EQ((std::vector<unsigned int>{12, 13}), heard.frameNumbers);
  EXPECT_EQ((std::vector<Bytes>{{4, 5, 6}, {7}}), heard.images);
  EXPECT_EQ(1u, qsim::CallbackDeliveries(handle, 3));

  // A null registration ends it; closing ends them all.
  ASSERT_EQ(0, QUORIN_RegisterExceptionCallBack(handle, nullptr, nullptr));
  EXPECT_FALSE(qsim::FireException(handle, 6));
  ASSERT_EQ(0, QUORIN_CloseDevice(handle));
  ASSERT_EQ(0, QUORIN_OpenDevice(handle));
  EXPECT_FALSE(qsim::FireImage(handle, FrameOf(15, {1})));
  EXPECT_FALSE(qsim::FireTrigger(handle, trigger));
}

TEST_F(CallbackTest, EachRunIsFramedByEventsAndEachFrameFollowsItsTrigger) {
  void* handle = Grabbing(k2DReader, false, true);
  Heard heard;
  Listen(handle, heard);
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  for (int trigger = 0; trigger < 3; ++trigger) ASSERT_EQ(0, QUORIN_SetCommandValue(handle, "TriggerSoftware"));
  heard.AwaitImages(3);
  ASSERT_EQ(0, QUORIN_StopGrabbing(handle));  // the end event is heard before it returns
  EXPECT_EQ((std::vector<std::string>{"AcquisitionStart", "trigger", "frame", "trigger", "frame", "trigger", "frame",
                                      "AcquisitionEnd"}),
            heard.log);
  EXPECT_EQ(0u, heard.threads.count(std::this_thread::get_id()));
  for (unsigned int i = 0; i < 3; ++i) {
    EXPECT_EQ(i + 1, heard.triggers[i].nTriggerIndex);
    EXPECT_EQ(qsim::kSoftwareTriggerFlag, heard.triggers[i].nTriggerFlag);
    EXPECT_EQ(qsim::kFirstFrameNumber + i, heard.frameNumbers[i]);
    EXPECT_EQ(64u * 64u, heard.images[i].size());
  }
  ASSERT_EQ(2u, heard.eventData.size());
  EXPECT_EQ(8u, heard.eventData[0].size());  // the device time

  // Frames of a channel with an image callback skip its queue, the other channels queue theirs.
  void* channels = Grabbing(kMultiChannelReader, false);
  Heard onTwo;
  ASSERT_EQ(0, QUORIN_MSC_RegisterImageCallBack(channels, 2, HearImage, &onTwo));
  ASSERT_EQ(0, QUORIN_StartGrabbing(channels));
  onTwo.AwaitImages(3);
  EXPECT_EQ(0, FetchChannel(channels, 1).status);
  qsim::PushFrame(channels, FrameOf(77, {1, 2, 3}), 2);  // returns after the callback
  EXPECT_EQ(qsim::kNoData, AsWord(FetchChannel(channels, 2, 0).status));
  ASSERT_EQ(0, QUORIN_StopGrabbing(channels));
  EXPECT_EQ(1, std::count(onTwo.frameNumbers.begin(), onTwo.frameNumbers.end(), 77u));
  EXPECT_EQ(onTwo.images.size(), qsim::CallbackDeliveries(channels, 2));
}

TEST_F(CallbackTest, StoppingWaitsForARunningCallbackThatMayCallTheSdkOrStopItself) {
  void* handle = Grabbing(k2DReader, false);
  Heard heard;
  heard.handle = handle;
  heard.duringImage = [](Heard& self) {
    if (self.entered++ > 0) return;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    QUORIN_INT_VALUE width{};
    self.status = QUORIN_GetIntValue(self.handle, "Width", &width);  // the SDK is free while Stop waits
    self.left = true;
  };
  ASSERT_EQ(0, QUORIN_RegisterImageCallBackEx2(handle, HearImage, &heard));
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  while (heard.entered == 0) std::this_thread::yield();
  EXPECT_EQ(0, QUORIN_StopGrabbing(handle));
  EXPECT_TRUE(heard.left);
  EXPECT_EQ(0, heard.status);

  // Destroying waits for a callback fired on another thread.
  heard.entered = 0;
  heard.left = false;
  std::thread firing([&] { EXPECT_TRUE(qsim::FireImage(handle, FrameOf(1, {1}))); });
  while (heard.entered == 0) std::this_thread::yield();
  EXPECT_EQ(0, QUORIN_DestroyHandle(handle));
  EXPECT_TRUE(heard.left);
  firing.join();

  // A callback may stop its own reader: nothing comes after that frame.
  Heard own;
  own.handle = Grabbing(k2DReader, false);
  own.duringImage = [](Heard& self) {
    if (++self.entered == 3) self.left = QUORIN_StopGrabbing(self.handle) == 0;
  };
  ASSERT_EQ(0, QUORIN_RegisterImageCallBackEx2(own.handle, HearImage, &own));
  ASSERT_EQ(0, QUORIN_StartGrabbing(own.handle));
  while (!own.left) std::this_thread::yield();
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(QUORIN_StopGrabbing(own.handle)));
  EXPECT_EQ(0, QUORIN_CloseDevice(own.handle));  // waits for the producer, so the count is final
  EXPECT_EQ(3u, own.ImageCount());
}

TEST_F(CallbackTest, DisconnectReportsOnceEndsTheFramesAndLeavesTheHandleGone) {
  void* handle = Grabbing(k2DReader, false);
  Heard heard;
  Listen(handle, heard);
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  heard.AwaitImages(2);
  Delivered waiting;  // frames go to the callback, so this fetch waits
  std::thread waiter([&] { waiting = FetchEx2(handle, 60000); });
  qsim::SimulateDisconnect(handle);
  waiter.join();
  EXPECT_EQ(qsim::kDeviceGone, AsWord(waiting.status));
  qsim::SimulateDisconnect(handle);
  {
    std::lock_guard<std::mutex> lock(heard.mutex);
    EXPECT_EQ(std::vector<unsigned int>{QUORIN_EXCEPTION_DEV_DISCONNECT}, heard.exceptions);
    EXPECT_EQ("exception", heard.log.back());
    EXPECT_EQ(1, std::count(heard.log.begin(), heard.log.end(), "AcquisitionStart"));
    EXPECT_EQ(0, std::count(heard.log.begin(), heard.log.end(), "AcquisitionEnd"));  // a lost device sends none
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

  EXPECT_EQ(0, QUORIN_CloseDevice(handle));  // closed, the handle reaches the reader again
  EXPECT_THROW(qsim::SimulateDisconnect(handle), std::invalid_argument);
  ASSERT_EQ(0, QUORIN_OpenDevice(handle));
  EXPECT_EQ(0, QUORIN_StartGrabbing(handle));
  EXPECT_EQ(0, FetchEx2(handle).status);
}

}  // namespace
}  // namespace qsim_test
