// The feature nodes a reader starts with, and what the model reads back from them.
#pragma once

#include "QuorinCtrl.h"
#include "model/acquisition.h"
#include "model/feature_nodes.h"
#include "model/reader_traits.h"

namespace qsim {

inline constexpr char kTriggerSoftwareNode[] = "TriggerSoftware";

// Width, Height, PayloadSize (kept at Width x Height), PixelFormat, TriggerMode,
// TriggerSoftware, ExposureTime, AcquisitionFrameRate, DeviceUserID, ReverseX,
// DeviceSerialNumber and ChannelCount, at their defaults for this reader.
NodeMap MakeReaderNodes(const QUORIN_DEVICE_INFO& info, const ReaderTraits& traits);

ProducerSettings SettingsFrom(const NodeMap::Table& table);
unsigned int ChannelCountFrom(const NodeMap::Table& table);
bool TriggerModeOn(const NodeMap::Table& table);

}  // namespace qsim
