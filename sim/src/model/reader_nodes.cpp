#include "model/reader_nodes.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace qsim {
namespace {

constexpr long long kDefaultWidth = 1280;
constexpr long long kDefaultHeight = 1024;
constexpr long long kMinSide = 64;
constexpr long long kMaxWidth = 2448;
constexpr long long kMaxHeight = 2048;
constexpr long long kSideIncrement = 8;
constexpr unsigned int kTriggerOff = 0;
constexpr unsigned int kTriggerOn = 1;
constexpr float kDefaultFrameRate = 10;
constexpr long long kTextLength = 16;  // the device record's arrays

FeatureNode Integer(long long value, long long min, long long max, long long inc,
                    Access access = Access::kReadWrite) {
  return {IntegerNode{value, min, max, inc}, access};
}

FeatureNode Float(float value, float min, float max) { return {FloatNode{value, min, max}, Access::kReadWrite}; }

FeatureNode Text(const char* field, size_t size, Access access = Access::kReadWrite) {
  return {StringNode{std::string(field, strnlen(field, size)), kTextLength}, access};
}

// PayloadSize follows the frame size: Mono8 frames, one byte a pixel.
void FollowFrameSize(NodeMap::Table& table, const std::string& changed) {
  if (changed != "Width" && changed != "Height") {
    return;
  }
  auto payload = table.find("PayloadSize");
  if (payload == table.end()) {
    return;
  }
  if (auto* node = std::get_if<IntegerNode>(&payload->second.kind)) {
    node->value = IntegerIn(table, "Width", 0) * IntegerIn(table, "Height", 0);
  }
}

unsigned int FrameSide(long long value) { return static_cast<unsigned int>(std::clamp(value, 1LL, 0xFFFFLL)); }

}  // namespace

NodeMap MakeReaderNodes(const QUORIN_DEVICE_INFO& info, const ReaderTraits& traits) {
  const QUORIN_GIGE_DEVICE_INFO& gige = info.stGigEInfo;
  const long long channels = traits.channelCount;
  NodeMap::Table table = {
      {"Width", Integer(kDefaultWidth, kMinSide, kMaxWidth, kSideIncrement)},
      {"Height", Integer(kDefaultHeight, kMinSide, kMaxHeight, kSideIncrement)},
      {"PayloadSize", Integer(kDefaultWidth * kDefaultHeight, kMinSide * kMinSide, kMaxWidth * kMaxHeight, 1,
                              Access::kReadOnly)},
      {"PixelFormat",
       {EnumNode{PixelType_Gvsp_Mono8, {{"Mono8", PixelType_Gvsp_Mono8}, {"Mono10", PixelType_Gvsp_Mono10}}},
        Access::kReadWrite}},
      {"TriggerMode", {EnumNode{kTriggerOff, {{"Off", kTriggerOff}, {"On", kTriggerOn}}}, Access::kReadWrite}},
      {kTriggerSoftwareNode, {CommandNode{}, Access::kWriteOnly}},
      {"ExposureTime", Float(2000, 20, 100000)},
      {"AcquisitionFrameRate", Float(kDefaultFrameRate, 1, 200)},
      {"DeviceUserID", Text(gige.chUserDefinedName, sizeof gige.chUserDefinedName)},
      {"ReverseX", {BoolNode{false}, Access::kReadWrite}},
      {"DeviceSerialNumber", Text(gige.chSerialNumber, sizeof gige.chSerialNumber, Access::kReadOnly)},
      {"ChannelCount", Integer(channels, 1, channels, 1, Access::kReadOnly)},
  };
  return NodeMap(std::move(table), {"Width", "Height", "PixelFormat"}, FollowFrameSize);
}

ProducerSettings SettingsFrom(const NodeMap::Table& table) {
  ProducerSettings settings;
  settings.width = FrameSide(IntegerIn(table, "Width", kDefaultWidth));
  settings.height = FrameSide(IntegerIn(table, "Height", kDefaultHeight));
  settings.triggered = TriggerModeOn(table);
  const float rate = FloatIn(table, "AcquisitionFrameRate", kDefaultFrameRate);
  settings.frameRate = rate > 0 ? std::min(static_cast<double>(rate), 1000.0) : kDefaultFrameRate;
  return settings;
}

unsigned int ChannelCountFrom(const NodeMap::Table& table) {
  return static_cast<unsigned int>(std::clamp(IntegerIn(table, "ChannelCount", 1), 1LL, 0LL + kMaxChannels));
}

bool TriggerModeOn(const NodeMap::Table& table) { return EnumIn(table, "TriggerMode", kTriggerOff) == kTriggerOn; }

}  // namespace qsim
