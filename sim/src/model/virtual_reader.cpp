#include "model/virtual_reader.h"

#include <algorithm>
#include <cstring>

#include "QuorinSim.h"
#include "model/frame_synthesis.h"
#include "model/genicam_xml.h"
#include "model/reader_nodes.h"

namespace qsim {

namespace {

bool UsableAddress(unsigned int address) { return address != 0 && address != 0xFFFFFFFFu; }

// Ones from the top, then zeros: 255.255.255.0, never 255.0.255.0.
bool ContiguousMask(unsigned int mask) {
  const unsigned int host = ~mask;
  return mask != 0 && (host & (host + 1)) == 0;
}

bool KnownIpConfig(unsigned int type) {
  return type == QUORIN_IP_CFG_STATIC || type == QUORIN_IP_CFG_DHCP || type == QUORIN_IP_CFG_LLA;
}

}  // namespace

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

std::string VirtualReader::DeviceVersion() const {
  std::lock_guard<std::mutex> lock(infoMutex_);
  const char* version = info_.stGigEInfo.chDeviceVersion;
  return std::string(version, strnlen(version, sizeof info_.stGigEInfo.chDeviceVersion));
}

void VirtualReader::InstallVersion(const std::string& version) {
  std::lock_guard<std::mutex> lock(infoMutex_);
  char (&field)[sizeof info_.stGigEInfo.chDeviceVersion] = info_.stGigEInfo.chDeviceVersion;
  std::memset(field, 0, sizeof field);
  std::memcpy(field, version.data(), std::min(version.size(), sizeof field - 1));
}

Status VirtualReader::ForceIp(unsigned int ip, unsigned int mask, unsigned int gateway) {
  if (!UsableAddress(ip) || !ContiguousMask(mask)) {
    return kBadParameter;
  }
  std::lock_guard<std::mutex> lock(infoMutex_);
  QUORIN_GIGE_DEVICE_INFO& gige = info_.stGigEInfo;
  gige.nCurrentIp = ip;
  gige.nCurrentSubNetMask = mask;
  gige.nDefultGateWay = gateway;
  return 0;
}

Status VirtualReader::SetIpConfig(unsigned int type) {
  if (!KnownIpConfig(type)) {
    return kBadParameter;
  }
  std::lock_guard<std::mutex> lock(infoMutex_);
  if ((info_.stGigEInfo.nIpCfgOption & type) == 0) {
    return kNotSupported;
  }
  info_.stGigEInfo.nIpCfgCurrent = type;
  return 0;
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

std::string VirtualReader::Description() {
  const QUORIN_DEVICE_INFO info = Info();
  return nodes_.Inspect([&](const NodeMap::Table& table) { return GenICamXml(table, info); });
}

Status VirtualReader::NodeAccessMode(const std::string& name, unsigned int& mode) {
  return nodes_.Inspect([&](const NodeMap::Table& table) {
    auto found = table.find(name);
    if (found == table.end()) {
      return kUnknownNode;
    }
    mode = AccessModeOf(found->second.access);
    return Status{0};
  });
}

Status VirtualReader::SetImageCallback(unsigned int channel, QuorinImageCallBackEx2 function, void* user) {
  return channel < ChannelCount() ? callbacks_.SetImage(channel, function, user) : kBadParameter;
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
