// The model of one code reader, independent of the SDK functions that reach it.
#pragma once

#include <string>

#include "Acquisition.h"
#include "FeatureNodes.h"
#include "QuorinCtrl.h"
#include "ReaderTraits.h"
#include "Status.h"

namespace qsim {

class VirtualReader {
 public:
  explicit VirtualReader(const QUORIN_DEVICE_INFO& info);

  const QUORIN_DEVICE_INFO& Info() const { return info_; }
  std::string SerialNumber() const;
  bool IsCodeReader() const { return info_.bCodeReader != 0; }
  bool IsOnLayer(unsigned int layerMask) const { return (info_.nTLayerType & layerMask) != 0; }

  // True when `wanted` names this reader: by serial number, or by MAC when it has none.
  bool Matches(const QUORIN_DEVICE_INFO& wanted) const;

  // One client at a time holds the reader open; `client` identifies it (a handle).
  // Closing stops grabbing and frees the frames delivered to the client.
  Status Open(const void* client);
  Status Close(const void* client);
  bool IsOpenBy(const void* client) const { return client != nullptr && holder_ == client; }

  NodeMap& Nodes() { return nodes_; }
  // Runs a command node; TriggerSoftware with TriggerMode On asks for one frame per channel.
  Status Execute(const std::string& command);
  void SetFrameNodeCount(unsigned int count) { frameNodeCount_ = count; }

  Status StartGrabbing();  // the nodes that shape the frames stay fixed until it stops
  Status StopGrabbing();
  Acquisition& Frames() { return acquisition_; }

 private:
  const QUORIN_DEVICE_INFO info_;
  const ReaderTraits traits_;
  const void* holder_ = nullptr;
  unsigned int frameNodeCount_ = 0;  // asked of the device; its queues keep a fixed depth
  NodeMap nodes_;
  Acquisition acquisition_;  // declared after the nodes: its producer reads them until joined
};

// The serial number of a record, bounded by its array (the device need not terminate it).
std::string SerialOf(const QUORIN_DEVICE_INFO& info);

}  // namespace qsim
