#include "model/acquisition.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

#include "model/stand_in_thread.h"

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

unsigned long long HostClockUs() {
  return static_cast<unsigned long long>(
      std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
          .count());
}

unsigned int High(unsigned long long value) { return static_cast<unsigned int>(value >> 32); }
unsigned int Low(unsigned long long value) { return static_cast<unsigned int>(value); }

QUORIN_TRIGGER_INFO_DATA TriggerNotice(const Shot& shot, unsigned long long shotNumber) {
  QUORIN_TRIGGER_INFO_DATA notice{};
  notice.nTriggerIndex = Low(shotNumber);
  notice.nTriggerFlag = shot.triggerIndex != 0 ? kSoftwareTriggerFlag : kFreeRunTriggerFlag;
  notice.nTriggerTimeHigh = High(shot.timeStampUs);
  notice.nTriggerTimeLow = Low(shot.timeStampUs);
  notice.nOriginalTrigger = notice.nTriggerIndex;
  notice.nIsMainCam = 1;
  notice.nHostTimeStamp = HostClockUs();
  return notice;
}

}  // namespace

unsigned int CheckedChannel(unsigned int channel) {
  if (channel >= kMaxChannels) {
    throw std::invalid_argument("qsim: channel " + std::to_string(channel) + " is beyond the " +
                                std::to_string(kMaxChannels) + " a reader can serve");
  }
  return channel;
}

Acquisition::Acquisition(std::function<ProducerSettings()> settings, FrameSynthesizer synthesizer,
                         CallbackTable& callbacks)
    : settings_(std::move(settings)), callbacks_(callbacks), synthesizer_(std::move(synthesizer)) {}

Acquisition::~Acquisition() {
  Stop();
  Settle();
  // Left only when a producer's own callback let its reader go: that thread cannot join itself.
  for (const std::shared_ptr<Session>& session : stopped_) {
    session->producer.detach();
  }
}

void Acquisition::SetAutoFrames(bool on) { g_autoFrames = on; }

Status Acquisition::Start(unsigned int channelCount) {
  auto session = std::make_shared<Session>();
  session->channels = std::clamp(channelCount, 1u, kMaxChannels);
  std::lock_guard<std::mutex> lock(mutex_);
  if (current_ != nullptr) {
    return kBusy;
  }
  callbacks_.RestartImageCount();
  for (unsigned int channel = 0; channel < session->channels; ++channel) {
    channels_[channel].Open();
  }
  activeChannels_ = session->channels;
  current_ = session;
  session->producer = std::thread(&Acquisition::Produce, this, session);
  return 0;
}

Status Acquisition::Stop(StopCause cause) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (current_ == nullptr) {
      return kWrongCallOrder;
    }
    // From here on no frame of this session enters a queue, so none slips into the next one.
    current_->stopping = true;
    current_->deviceLost = cause == StopCause::kDeviceLost;
    stopped_.push_back(std::move(current_));
    activeChannels_ = 0;
  }
  wake_.notify_all();
  const Status answer = cause == StopCause::kDeviceLost ? kDeviceGone : kWrongCallOrder;
  for (FrameChannel& channel : channels_) {
    channel.Close(answer);
  }
  return 0;
}

void Acquisition::Settle() {
  std::vector<std::shared_ptr<Session>> ended;
  {
    std::unique_lock<std::mutex> lock(mutex_);
    const std::thread::id self = std::this_thread::get_id();
    auto isOwn = [&](const std::shared_ptr<Session>& session) { return session->producer.get_id() == self; };
    changed_.wait(lock, [&] {
      return std::all_of(stopped_.begin(), stopped_.end(),
                         [&](const std::shared_ptr<Session>& session) { return session->ended || isOwn(session); });
    });
    const auto own = std::partition(stopped_.begin(), stopped_.end(), isOwn);
    ended.assign(std::make_move_iterator(own), std::make_move_iterator(stopped_.end()));
    stopped_.erase(own, stopped_.end());
  }
  for (const std::shared_ptr<Session>& session : ended) {
    session->producer.join();  // it has ended: this only reclaims the thread
  }
}

void Acquisition::Trigger() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (current_ == nullptr) {
      return;
    }
    ++current_->pendingTriggers;
  }
  wake_.notify_all();
}

void Acquisition::Produce(const std::shared_ptr<Session>& session) {
  MarkStandInThread();
  AwaitEarlierSessions(*session);
  nextFrameNumber_.fill(kFirstFrameNumber);
  sequence_.fill(0);
  shots_ = 0;
  Announce("AcquisitionStart", kAcquisitionStartEventId);
  Clock::time_point due = Clock::now();
  for (;;) {
    const ProducerSettings settings = settings_();
    unsigned int triggerIndex = 0;
    const Next next = AwaitNextFrame(*session, settings, due, triggerIndex);
    if (next == Next::kStop) {
      break;
    }
    if (next == Next::kMake && g_autoFrames) {
      MakeFrames(*session, settings, triggerIndex);
    }
  }
  bool lost = false;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    lost = session->deviceLost;
  }
  if (!lost) {
    Announce("AcquisitionEnd", kAcquisitionEndEventId);
  }
  std::lock_guard<std::mutex> lock(mutex_);
  session->ended = true;
  changed_.notify_all();  // under the lock: once it is released, this thread touches nothing of ours
}

// A session stopped by its own callback may still be finishing when the next one starts; the new
// producer waits for it, so producers never share their state and events keep their order.
void Acquisition::AwaitEarlierSessions(const Session& own) {
  std::unique_lock<std::mutex> lock(mutex_);
  changed_.wait(lock, [&] {
    return std::all_of(stopped_.begin(), stopped_.end(), [&](const std::shared_ptr<Session>& session) {
      return session->ended || session.get() == &own;
    });
  });
}

bool Acquisition::Stopping(const Session& session) {
  std::lock_guard<std::mutex> lock(mutex_);
  return session.stopping;
}

Acquisition::Next Acquisition::AwaitNextFrame(Session& session, const ProducerSettings& settings,
                                              Clock::time_point& due, unsigned int& triggerIndex) {
  std::unique_lock<std::mutex> lock(mutex_);
  const Clock::time_point recheck = Clock::now() + kSettingsRecheck;
  if (settings.triggered) {
    wake_.wait_until(lock, recheck, [&] { return session.stopping || session.pendingTriggers > 0; });
    if (session.stopping) {
      return Next::kStop;
    }
    if (session.pendingTriggers == 0) {
      return Next::kAgain;
    }
    --session.pendingTriggers;
    triggerIndex = ++session.triggersServed;
    due = Clock::now();  // free run, if switched to, resumes at once
    return Next::kMake;
  }
  wake_.wait_until(lock, std::min(due, recheck), [&] { return session.stopping; });
  if (session.stopping) {
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

// Each frame is announced by its trigger notice, then published.
void Acquisition::MakeFrames(const Session& session, const ProducerSettings& settings, unsigned int triggerIndex) {
  const unsigned long long timeStamp = DeviceClockUs();
  const unsigned long long shot = ++shots_;
  for (unsigned int channel = 0; channel < session.channels && !Stopping(session); ++channel) {
    Shot made;
    made.width = settings.width;
    made.height = settings.height;
    made.channel = channel;
    made.frameNumber = nextFrameNumber_[channel]++;
    made.triggerIndex = triggerIndex;
    made.timeStampUs = timeStamp;
    made.sequence = sequence_[channel]++;
    QueuedFrame frame = synthesizer_.Make(made);
    callbacks_.Trigger(TriggerNotice(made, shot));
    Publish(channel, std::move(frame), &session);
  }
}

void Acquisition::Announce(const char* name, unsigned short eventId) {
  const unsigned long long time = DeviceClockUs();
  unsigned char data[8];
  for (size_t i = 0; i < sizeof data; ++i) {
    data[i] = static_cast<unsigned char>(time >> (8 * i));
  }
  QUORIN_EVENT_OUT_INFO event{};
  std::strncpy(event.EventName, name, sizeof event.EventName - 1);
  event.nEventID = eventId;
  event.nBlockIdHigh = High(shots_);
  event.nBlockIdLow = Low(shots_);
  event.nTimestampHigh = High(time);
  event.nTimestampLow = Low(time);
  event.pEventData = data;
  event.nEventDataSize = sizeof data;
  callbacks_.Event(event);
}

// The one door through which frames, produced or pushed, reach a channel: while grabbing, a
// channel with an image callback gets them there instead of in its queue.
void Acquisition::Publish(unsigned int channel, QueuedFrame&& frame, const Session* session) {
  const bool live = session != nullptr ? !Stopping(*session) : Grabbing();
  if (live && Serve(channel, frame)) {
    return;
  }
  std::lock_guard<std::mutex> lock(mutex_);
  if (session == nullptr || !session->stopping) {
    channels_[channel].Offer(std::move(frame));
  }
}

bool Acquisition::Serve(unsigned int channel, QueuedFrame& frame) {
  bool served = false;
  RunOnStandInThread([&] {
    served = callbacks_.Image(channel, [&](QuorinImageCallBackEx2 function, void* user) {
      std::unique_ptr<Delivery> delivery = deliveries_.Take();
      delivery->Take(std::move(frame));
      unsigned char* data = nullptr;
      QUORIN_IMAGE_OUT_INFO_EX2 info{};
      delivery->HandOut(&data, &info);
      function(data, &info, user);
      deliveries_.Give(std::move(delivery));
    });
  });
  return served;
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
  Publish(CheckedChannel(channel), QueuedFrame{frame, nullptr, 0}, nullptr);
}

bool Acquisition::Fire(const Frame& frame, unsigned int channel) {
  QueuedFrame fired{frame, nullptr, 0};
  return Serve(CheckedChannel(channel), fired);
}

void Acquisition::Repeat(const Frame& frame, unsigned int channel) {
  channels_[CheckedChannel(channel)].Repeat(QueuedFrame{frame, nullptr, 0});
}

unsigned long long Acquisition::Dropped(unsigned int channel) { return channels_[CheckedChannel(channel)].Dropped(); }

void Acquisition::Release() {
  for (FrameChannel& channel : channels_) {
    channel.Release();
  }
  deliveries_.Clear();
}

}  // namespace qsim
