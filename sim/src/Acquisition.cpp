#include "Acquisition.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace qsim {
namespace {

// The producer reads its settings again at least this often, so that a change of trigger mode
// or frame rate takes effect while it waits.
constexpr std::chrono::milliseconds kSettingsRecheck{50};

// The reader's microsecond clock starts with its low word close to wrapping, so that time
// stamp wrap bugs show within the first second of a run.
constexpr unsigned long long kClockStartUs = 0x1FFF00000ULL;

std::atomic<bool> g_autoFrames{true};

unsigned long long DeviceClockUs() {
  static const auto origin = std::chrono::steady_clock::now();
  const auto elapsed = std::chrono::steady_clock::now() - origin;
  return kClockStartUs + static_cast<unsigned long long>(
                             std::chrono::duration_cast<std::chrono::microseconds>(elapsed).count());
}

}  // namespace

Acquisition::Acquisition(std::function<ProducerSettings()> settings, FrameSynthesizer synthesizer)
    : settings_(std::move(settings)), synthesizer_(std::move(synthesizer)) {}

Acquisition::~Acquisition() {
  if (Grabbing()) {
    Stop();
  }
}

void Acquisition::SetAutoFrames(bool on) { g_autoFrames = on; }

// Device events for the start and the end of acquisition belong in Start and Stop.
Status Acquisition::Start(unsigned int channelCount) {
  if (Grabbing()) {
    return kBusy;
  }
  producedChannels_ = std::clamp(channelCount, 1u, kMaxChannels);
  nextFrameNumber_.fill(kFirstFrameNumber);
  sequence_.fill(0);
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = false;
    pendingTriggers_ = 0;
    triggersServed_ = 0;
  }
  for (unsigned int channel = 0; channel < producedChannels_; ++channel) {
    channels_[channel].Open();
  }
  activeChannels_ = producedChannels_;
  producer_ = std::thread(&Acquisition::Run, this);
  return 0;
}

Status Acquisition::Stop() {
  if (!Grabbing()) {
    return kWrongCallOrder;
  }
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stopping_ = true;
  }
  wake_.notify_all();
  producer_.join();
  // Closed only after the join, so no frame of this run can slip into the next one.
  activeChannels_ = 0;
  for (FrameChannel& channel : channels_) {
    channel.Close();
  }
  return 0;
}

void Acquisition::Trigger() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (stopping_ || !Grabbing()) {
      return;
    }
    ++pendingTriggers_;
  }
  wake_.notify_all();
}

void Acquisition::Run() {
  Clock::time_point due = Clock::now();
  for (;;) {
    const ProducerSettings settings = settings_();
    unsigned int triggerIndex = 0;
    const Next next = AwaitNextFrame(settings, due, triggerIndex);
    if (next == Next::kStop) {
      return;
    }
    if (next == Next::kMake && g_autoFrames) {
      MakeFrames(settings, triggerIndex);
    }
  }
}

Acquisition::Next Acquisition::AwaitNextFrame(const ProducerSettings& settings, Clock::time_point& due,
                                              unsigned int& triggerIndex) {
  std::unique_lock<std::mutex> lock(mutex_);
  const Clock::time_point recheck = Clock::now() + kSettingsRecheck;
  if (settings.triggered) {
    wake_.wait_until(lock, recheck, [&] { return stopping_ || pendingTriggers_ > 0; });
    if (stopping_) {
      return Next::kStop;
    }
    if (pendingTriggers_ == 0) {
      return Next::kAgain;
    }
    --pendingTriggers_;
    triggerIndex = ++triggersServed_;
    due = Clock::now();  // free run, if switched to, resumes at once
    return Next::kMake;
  }
  wake_.wait_until(lock, std::min(due, recheck), [&] { return stopping_; });
  if (stopping_) {
    return Next::kStop;
  }
  const Clock::time_point now = Clock::now();
  if (now < due) {
    return Next::kAgain;
  }
  const auto period =
      std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(1.0 / settings.frameRate));
  // A producer that fell behind (a stalled machine) skips ahead instead of making a burst.
  due = due + period < now ? now + period : due + period;
  return Next::kMake;
}

void Acquisition::MakeFrames(const ProducerSettings& settings, unsigned int triggerIndex) {
  const unsigned long long timeStamp = DeviceClockUs();
  for (unsigned int channel = 0; channel < producedChannels_; ++channel) {
    Shot shot;
    shot.width = settings.width;
    shot.height = settings.height;
    shot.channel = channel;
    shot.frameNumber = nextFrameNumber_[channel]++;
    shot.triggerIndex = triggerIndex;
    shot.timeStampUs = timeStamp;
    shot.sequence = sequence_[channel]++;
    Publish(channel, synthesizer_.Make(shot));
  }
}

// The one door through which frames, produced or pushed, reach a channel: an image callback
// registered for the channel would be served from here instead of the queue.
void Acquisition::Publish(unsigned int channel, QueuedFrame&& frame) {
  channels_[channel].Offer(std::move(frame));
}

unsigned int Acquisition::Checked(unsigned int channel) {
  if (channel >= kMaxChannels) {
    throw std::invalid_argument("qsim: channel " + std::to_string(channel) + " is beyond the " +
                                std::to_string(kMaxChannels) + " a reader can serve");
  }
  return channel;
}

Status Acquisition::Fetch(unsigned int channel, unsigned int timeoutMs, unsigned char** data,
                          QUORIN_IMAGE_OUT_INFO_EX2* info) {
  const unsigned int active = activeChannels_.load();
  if (active == 0) {
    return kWrongCallOrder;
  }
  if (channel >= active) {
    return kBadParameter;
  }
  return channels_[channel].Fetch(timeoutMs, data, info);
}

void Acquisition::Push(const Frame& frame, unsigned int channel) {
  Publish(Checked(channel), QueuedFrame{frame, nullptr, 0});
}

void Acquisition::Repeat(const Frame& frame, unsigned int channel) {
  channels_[Checked(channel)].Repeat(QueuedFrame{frame, nullptr, 0});
}

unsigned long long Acquisition::Dropped(unsigned int channel) { return channels_[Checked(channel)].Dropped(); }

void Acquisition::Release() {
  for (FrameChannel& channel : channels_) {
    channel.Release();
  }
}

}  // namespace qsim
