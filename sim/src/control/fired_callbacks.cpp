// Controls that fire a reader's callbacks on a thread of the stand-in, as the device would, and
// count the frames delivered to them.
#include <memory>
#include <stdexcept>
#include <vector>

#include "QuorinSim.h"
#include "control/live_handle.h"
#include "model/stand_in_thread.h"

namespace qsim {
namespace {

// Runs `deliver` on the reader's callbacks on a thread of the stand-in; whether a callback ran.
template <typename Deliver>
bool Fire(void* handle, const char* control, Deliver deliver) {
  const std::shared_ptr<VirtualReader> reader = ReaderFor(handle, control);
  bool delivered = false;
  RunOnStandInThread([&] { delivered = deliver(reader->Callbacks()); });
  return delivered;
}

// What an event's data points to when it has none: a reader of zero bytes never gets null.
unsigned char kNoEventData[1] = {0};

}  // namespace

bool FireException(void* handle, unsigned int msgType) {
  return Fire(handle, __func__, [&](CallbackTable& callbacks) { return callbacks.Exception(msgType); });
}

bool FireEvent(void* handle, const QUORIN_EVENT_OUT_INFO& event, const std::vector<unsigned char>& data) {
  std::vector<unsigned char> bytes = data;  // the callback's own copy, valid for the call
  QUORIN_EVENT_OUT_INFO delivered = event;
  if (!bytes.empty() || event.pEventData == nullptr) {
    delivered.pEventData = bytes.empty() ? kNoEventData : bytes.data();
    delivered.nEventDataSize = static_cast<unsigned int>(bytes.size());
  }
  return Fire(handle, __func__, [&](CallbackTable& callbacks) { return callbacks.Event(delivered); });
}

bool FireTrigger(void* handle, const QUORIN_TRIGGER_INFO_DATA& trigger) {
  return Fire(handle, __func__, [&](CallbackTable& callbacks) { return callbacks.Trigger(trigger); });
}

bool FireImage(void* handle, const Frame& frame, unsigned int channel) {
  return ReaderFor(handle, __func__)->Frames().Fire(frame, channel);
}

void SimulateDisconnect(void* handle) {
  const std::shared_ptr<VirtualReader> reader = ReaderFor(handle, __func__);
  const Status status = ReaderRegistry::Instance().WithOpenReader(handle, [](VirtualReader& open) {
    open.Disconnect();
    return Status{0};
  });
  if (status == kDeviceGone) {
    return;  // lost before: its message went out then
  }
  if (status != 0) {
    throw std::invalid_argument("qsim::SimulateDisconnect: the handle does not hold its reader open");
  }
  reader->Settle();  // no frame follows the message
  RunOnStandInThread([&] { reader->Callbacks().Exception(QUORIN_EXCEPTION_DEV_DISCONNECT); });
}

unsigned long long CallbackDeliveries(void* handle, unsigned int channel) {
  return ReaderFor(handle, __func__)->Callbacks().ImageDeliveries(CheckedChannel(channel));
}

}  // namespace qsim
