#include "model/virtual_reader.h"

#include <cstring>

#include "QuorinSim.h"
#include "model/frame_synthesis.h"
#include "model/reader_nodes.h"

namespace qsim {

std::string SerialOf(const QUORIN_DEVICE_INFO& info) {
  const char* serial = info.stGigEInfo.chSerialNumber;
  return std::string(serial, strnlen(serial, sizeof info.stGigEInfo.chSerialNumber));
}

VirtualReader::VirtualReader(const QUORIN_DEVICE_INFO& info)
    : info_(info),
      traits_(TraitsOf(info)),
      waybillsEnabled_(traits_.cutsWaybills),
      files_(info),
      algorithm_(traits_.decodes),
      nodes_(MakeReaderNodes(info, traits_)),
      acquisition_([this] { return nodes_.Inspect(SettingsFrom); },
                   FrameSynthesizer(traits_, MovingBarsPattern(), RunningCodes(traits_.gbkCodeTexts),
                                    [this] { return WaybillsEnabled(); }),
                   callbacks_) {}

QUORIN_DEVICE_INFO VirtualReader::Info() const {
  std::lock_guard<std::mutex> lock(infoMutex_);
  return info_;
}

void VirtualReader::ChangeInfo(const std::function<void(QUORIN_DEVICE_INFO&)>& change) {
  std::lock_guard<std::mutex> lock(infoMutex_);
  change(info_);
}

std::string VirtualReader::SerialNumber() const { return SerialOf(info_); }

bool VirtualReader::Matches(const QUORIN_DEVICE_INFO& wanted) const {
  const std::string serial = SerialOf(wanted);
  if (!serial.empty()) {
    return serial == SerialNumber();
  }
  return wanted.nMacAddrHigh == info_.nMacAddrHigh && wanted.nMacAddrLow == info_.nMacAddrLow;
}

Status VirtualReader::Open(const void* client) {
  if (holder_ == client) {
    return connectionLost_ ? kDeviceGone : kBusy;
  }
  if (holder_ != nullptr) {
    return kAccessDenied;
  }
  holder_ = client;
  return 0;
}

Status VirtualReader::Close(const void* client) {
  if (!IsOpenBy(client)) {
    return kNotOpen;
  }
  if (acquisition_.Grabbing()) {
    StopGrabbing();
  }
  callbacks_.Clear();
  acquisition_.Release();
  holder_ = nullptr;
  connectionLost_ = false;  // the device may be reached again by a new Open
  return 0;
}

bool VirtualReader::Disconnect() {
  if (holder_ == nullptr || connectionLost_) {
    return false;
  }
  connectionLost_ = true;
  if (acquisition_.Grabbing()) {
    StopGrabbing(StopCause::kDeviceLost);
  }
  return true;
}

void VirtualReader::Settle() {
  acquisition_.Settle();
  callbacks_.Drain();
}

unsigned int VirtualReader::ChannelCount() const { return nodes_.Inspect(ChannelCountFrom); }

Status VirtualReader::Execute(const std::string& command) {
  const Status status = nodes_.Execute(command);
  if (status == 0 && command == kTriggerSoftwareNode && nodes_.Inspect(TriggerModeOn)) {
    acquisition_.Trigger();
  }
  return status;
}

Status VirtualReader::StartGrabbing() {
  if (acquisition_.Grabbing()) {
    return kBusy;
  }
  nodes_.SetGrabbing(true);
  return acquisition_.Start(nodes_.Inspect(ChannelCountFrom));
}

Status VirtualReader::StopGrabbing(StopCause cause) {
  const Status status = acquisition_.Stop(cause);
  nodes_.SetGrabbing(false);
  return status;
}

}  // namespace qsim
