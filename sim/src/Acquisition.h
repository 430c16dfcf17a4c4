// Grabbing on one reader: a producer thread that makes frames into one bounded queue per
// channel, and the fetches that take them out.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "FrameChannel.h"
#include "FrameSynthesis.h"
#include "QuorinSim.h"
#include "Status.h"

namespace qsim {

// What the producer reads from the reader's nodes before each frame.
struct ProducerSettings {
  unsigned int width = 1;
  unsigned int height = 1;
  bool triggered = false;  // TriggerMode On: one frame per software trigger
  double frameRate = 10;   // frames per second in free run
};

class Acquisition {
 public:
  Acquisition(std::function<ProducerSettings()> settings, FrameSynthesizer synthesizer);
  ~Acquisition();
  Acquisition(const Acquisition&) = delete;
  Acquisition& operator=(const Acquisition&) = delete;

  // Whether producers make frames at all; pushed frames arrive either way.
  static void SetAutoFrames(bool on);

  Status Start(unsigned int channelCount);  // kBusy while grabbing
  Status Stop();                             // joins the producer; kWrongCallOrder when idle
  bool Grabbing() const { return activeChannels_.load() != 0; }
  void Trigger();  // one frame on every channel, once the producer sees the trigger

  Status Fetch(unsigned int channel, unsigned int timeoutMs, unsigned char** data,
               QUORIN_IMAGE_OUT_INFO_EX2* info);
  // Test control; a channel of kMaxChannels or more throws std::invalid_argument.
  void Push(const Frame& frame, unsigned int channel);
  void Repeat(const Frame& frame, unsigned int channel);
  unsigned long long Dropped(unsigned int channel);
  void Release();  // frees the delivered frames; the device is closing

 private:
  using Clock = std::chrono::steady_clock;
  enum class Next { kStop, kAgain, kMake };

  void Run();
  Next AwaitNextFrame(const ProducerSettings& settings, Clock::time_point& due, unsigned int& triggerIndex);
  void MakeFrames(const ProducerSettings& settings, unsigned int triggerIndex);
  void Publish(unsigned int channel, QueuedFrame&& frame);
  static unsigned int Checked(unsigned int channel);  // throws beyond kMaxChannels

  const std::function<ProducerSettings()> settings_;
  std::array<FrameChannel, kMaxChannels> channels_;
  std::atomic<unsigned int> activeChannels_{0};  // 0 while not grabbing

  // The producer's own state: set by Start before the thread runs, then touched by it alone.
  FrameSynthesizer synthesizer_;
  unsigned int producedChannels_ = 0;
  std::array<unsigned int, kMaxChannels> nextFrameNumber_{};
  std::array<unsigned long long, kMaxChannels> sequence_{};
  std::thread producer_;

  std::mutex mutex_;  // guards the three below
  std::condition_variable wake_;
  bool stopping_ = false;
  unsigned int pendingTriggers_ = 0;
  unsigned int triggersServed_ = 0;
};

}  // namespace qsim
