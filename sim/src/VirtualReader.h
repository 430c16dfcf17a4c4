// The model of one code reader, independent of the SDK functions that reach it.
#pragma once

#include <string>

#include "QuorinCtrl.h"

namespace qsim {

using Status = unsigned int;

class VirtualReader {
 public:
  explicit VirtualReader(const QUORIN_DEVICE_INFO& info) : info_(info) {}

  const QUORIN_DEVICE_INFO& Info() const { return info_; }
  std::string SerialNumber() const;
  bool IsCodeReader() const { return info_.bCodeReader != 0; }
  bool IsOnLayer(unsigned int layerMask) const { return (info_.nTLayerType & layerMask) != 0; }

  // True when `wanted` names this reader: by serial number, or by MAC when it has none.
  bool Matches(const QUORIN_DEVICE_INFO& wanted) const;

  // One client at a time holds the reader open; `client` identifies it (a handle).
  Status Open(const void* client);
  Status Close(const void* client);
  bool IsOpenBy(const void* client) const { return client != nullptr && holder_ == client; }

 private:
  QUORIN_DEVICE_INFO info_;
  const void* holder_ = nullptr;
};

// The serial number of a record, bounded by its array (the device need not terminate it).
std::string SerialOf(const QUORIN_DEVICE_INFO& info);

}  // namespace qsim
