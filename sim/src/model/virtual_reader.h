// The model of one code reader, independent of the SDK functions that reach it.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>

#include "QuorinCtrl.h"
#include "model/acquisition.h"
#include "model/algorithm_params.h"
#include "model/callback_table.h"
#include "model/device_files.h"
#include "model/feature_nodes.h"
#include "model/reader_traits.h"
#include "model/status.h"

namespace qsim {

class VirtualReader {
 public:
  explicit VirtualReader(const QUORIN_DEVICE_INFO& info);

  QUORIN_DEVICE_INFO Info() const;  // a copy: the network settings and the firmware change it
  std::string DeviceVersion() const;
  void InstallVersion(const std::string& version);  // cut to the record's array
  // A usable address (neither 0 nor broadcast) and a contiguous mask, else kBadParameter.
  Status ForceIp(unsigned int ip, unsigned int mask, unsigned int gateway);
  // One of the SDK's IP configurations (kBadParameter) that the reader offers (kNotSupported).
  Status SetIpConfig(unsigned int type);
  std::string SerialNumber() const;
  bool IsCodeReader() const { return info_.bCodeReader != 0; }
  bool IsOnLayer(unsigned int layerMask) const { return (info_.nTLayerType & layerMask) != 0; }

  // True when `wanted` names this reader: by serial number, or by MAC when it has none.
  bool Matches(const QUORIN_DEVICE_INFO& wanted) const;

  // One client at a time holds the reader open; `client` identifies it (a handle).
  // Closing stops grabbing, drops the client's callbacks and frees the frames delivered to it.
  Status Open(const void* client);
  Status Close(const void* client);
  bool IsOpenBy(const void* client) const { return client != nullptr && holder_ == client; }
  // The connection to the open reader drops: grabbing ends; false when it was not open or already lost.
  bool Disconnect();
  bool ConnectionLost() const { return connectionLost_; }
  // Waits until no stopped producer and no callback of the reader runs, apart from the caller's own.
  // Never under the registry's lock: those may be calling the SDK meanwhile.
  void Settle();

  NodeMap& Nodes() { return nodes_; }
  std::string Description();  // the feature description file, written from the nodes as they are now
  Status NodeAccessMode(const std::string& name, unsigned int& mode);  // kUnknownNode
  // Runs a command node; TriggerSoftware with TriggerMode On asks for one frame per channel.
  Status Execute(const std::string& command);
  void SetFrameNodeCount(unsigned int count) { frameNodeCount_ = count; }

  Status StartGrabbing();  // the nodes that shape the frames stay fixed until it stops
  Status StopGrabbing(StopCause cause = StopCause::kRequested);
  Acquisition& Frames() { return acquisition_; }
  CallbackTable& Callbacks() { return callbacks_; }
  Status SetImageCallback(unsigned int channel, QuorinImageCallBackEx2 function, void* user);  // kBadParameter
  unsigned int ChannelCount() const;

  // Jobs besides acquisition: the device's files, its decoder's parameters, and the waybill switch
  // that the frame producer reads for every frame it makes.
  DeviceFiles& Files() { return files_; }
  AlgorithmParams& Algorithm() { return algorithm_; }
  bool WaybillsEnabled() const { return waybillsEnabled_; }
  void EnableWaybills(bool on) { waybillsEnabled_ = on; }

 private:
  mutable std::mutex infoMutex_;  // the serial number and MAC, which identify the reader, never change
  QUORIN_DEVICE_INFO info_;
  const ReaderTraits traits_;
  const void* holder_ = nullptr;
  bool connectionLost_ = false;  // until the holder closes
  unsigned int frameNodeCount_ = 0;  // asked of the device; its queues keep a fixed depth
  std::atomic<bool> waybillsEnabled_;
  DeviceFiles files_;
  AlgorithmParams algorithm_;
  NodeMap nodes_;
  CallbackTable callbacks_;
  Acquisition acquisition_;  // declared last: its producer reads the nodes and runs the callbacks until joined
};

// The serial number of a record, bounded by its array (the device need not terminate it).
std::string SerialOf(const QUORIN_DEVICE_INFO& info);

}  // namespace qsim
