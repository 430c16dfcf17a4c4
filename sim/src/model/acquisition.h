// Grabbing on one reader: a producer thread that makes frames into one bounded queue per
// channel, or hands them to the channel's image callback, and the fetches that take them out.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "QuorinSim.h"
#include "model/callback_table.h"
#include "model/frame_channel.h"
#include "model/frame_synthesis.h"
#include "model/status.h"

namespace qsim {

// What the producer reads from the reader's nodes before each frame.
struct ProducerSettings {
  unsigned int width = 1;
  unsigned int height = 1;
  bool triggered = false;  // TriggerMode On: one frame per software trigger
  double frameRate = 10;   // frames per second in free run
};

enum class StopCause { kRequested, kDeviceLost };

// The channel, checked against what a reader can serve: throws std::invalid_argument beyond it.
unsigned int CheckedChannel(unsigned int channel);

class Acquisition {
 public:
  Acquisition(std::function<ProducerSettings()> settings, FrameSynthesizer synthesizer, CallbackTable& callbacks);
  ~Acquisition();
  Acquisition(const Acquisition&) = delete;
  Acquisition& operator=(const Acquisition&) = delete;

  // Whether producers make frames at all; pushed frames arrive either way.
  static void SetAutoFrames(bool on);

  // Neither waits, so both may run under the registry's lock; Settle does the waiting.
  Status Start(unsigned int channelCount);  // kBusy while grabbing
  // kWrongCallOrder when idle. Fetches are refused from now on: kDeviceGone for a lost device.
  Status Stop(StopCause cause = StopCause::kRequested);
  // Returns once every stopped producer has ended, apart from the calling thread's own.
  void Settle();
  bool Grabbing() const { return activeChannels_.load() != 0; }
  void Trigger();  // one frame on every channel, once the producer sees the trigger

  Status Fetch(unsigned int channel, unsigned int timeoutMs, unsigned char** data,
               QUORIN_IMAGE_OUT_INFO_EX2* info);
  // Test control; a channel of kMaxChannels or more throws std::invalid_argument.
  void Push(const Frame& frame, unsigned int channel);
  bool Fire(const Frame& frame, unsigned int channel);  // to the image callback alone; false without one
  void Repeat(const Frame& frame, unsigned int channel);
  unsigned long long Dropped(unsigned int channel);
  void Release();  // frees the delivered frames; the device is closing

 private:
  using Clock = std::chrono::steady_clock;
  enum class Next { kStop, kAgain, kMake };

  // One start-to-stop of grabbing. `channels` is fixed before its producer starts; the rest is
  // guarded by mutex_.
  struct Session {
    unsigned int channels = 1;
    bool stopping = false;
    bool deviceLost = false;
    bool ended = false;  // its producer has returned
    unsigned int pendingTriggers = 0;
    unsigned int triggersServed = 0;
    std::thread producer;
  };

  void Produce(const std::shared_ptr<Session>& session);
  void AwaitEarlierSessions(const Session& own);
  bool Stopping(const Session& session);
  Next AwaitNextFrame(Session& session, const ProducerSettings& settings, Clock::time_point& due,
                      unsigned int& triggerIndex);
  void MakeFrames(const Session& session, const ProducerSettings& settings, unsigned int triggerIndex);
  void Announce(const char* name, unsigned short eventId);
  // Produced frames carry their session, pushed ones none.
  void Publish(unsigned int channel, QueuedFrame&& frame, const Session* session);
  bool Serve(unsigned int channel, QueuedFrame& frame);  // to the image callback, if there is one

  const std::function<ProducerSettings()> settings_;
  CallbackTable& callbacks_;
  std::array<FrameChannel, kMaxChannels> channels_;
  std::atomic<unsigned int> activeChannels_{0};  // 0 while not grabbing
  DeliveryPool deliveries_;

  // The producers' own state: producers run one at a time, each resetting it first.
  FrameSynthesizer synthesizer_;
  std::array<unsigned int, kMaxChannels> nextFrameNumber_{};
  std::array<unsigned long long, kMaxChannels> sequence_{};
  unsigned long long shots_ = 0;  // frame sets made since grabbing started

  std::mutex mutex_;  // guards the sessions, and each frame's passage into a queue
  std::condition_variable wake_;     // producers: a trigger or a stop
  std::condition_variable changed_;  // a producer ended
  std::shared_ptr<Session> current_;
  std::vector<std::shared_ptr<Session>> stopped_;  // producers not yet joined
};

}  // namespace qsim
