#include "VirtualReader.h"

#include <cstring>

#include "FrameSynthesis.h"
#include "QuorinSim.h"
#include "ReaderNodes.h"

namespace qsim {

std::string SerialOf(const QUORIN_DEVICE_INFO& info) {
  const char* serial = info.stGigEInfo.chSerialNumber;
  return std::string(serial, strnlen(serial, sizeof info.stGigEInfo.chSerialNumber));
}

VirtualReader::VirtualReader(const QUORIN_DEVICE_INFO& info)
    : info_(info),
      traits_(TraitsOf(info)),
      nodes_(MakeReaderNodes(info, traits_)),
      acquisition_([this] { return nodes_.Inspect(SettingsFrom); },
                   FrameSynthesizer(traits_, MovingBarsPattern(), RunningCodes(traits_.gbkCodeTexts))) {}

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
    return kBusy;
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
  acquisition_.Release();
  holder_ = nullptr;
  return 0;
}

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

Status VirtualReader::StopGrabbing() {
  const Status status = acquisition_.Stop();
  nodes_.SetGrabbing(false);
  return status;
}

}  // namespace qsim
