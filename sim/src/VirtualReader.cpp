#include "VirtualReader.h"

#include <cstring>

#include "QuorinSim.h"

namespace qsim {

std::string SerialOf(const QUORIN_DEVICE_INFO& info) {
  const char* serial = info.stGigEInfo.chSerialNumber;
  return std::string(serial, strnlen(serial, sizeof info.stGigEInfo.chSerialNumber));
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
  holder_ = nullptr;
  return 0;
}

}  // namespace qsim
