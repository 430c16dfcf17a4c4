#include "model/feature_nodes.h"

#include <algorithm>
#include <cstring>

namespace qsim {
namespace {

bool Readable(Access access) { return access == Access::kReadWrite || access == Access::kReadOnly; }

bool WritableByAccess(Access access) {
  return access == Access::kReadWrite || access == Access::kWriteOnly;
}

// Off the increment means (value - min) is no multiple of it; the unsigned difference is
// exact for any value at or above the minimum.
bool OnIncrement(const IntegerNode& node, long long value) {
  if (node.inc <= 1) {
    return true;
  }
  const unsigned long long steps =
      static_cast<unsigned long long>(value) - static_cast<unsigned long long>(node.min);
  return steps % static_cast<unsigned long long>(node.inc) == 0;
}

template <typename Kind>
const Kind* KindIn(const NodeMap::Table& table, const std::string& name) {
  auto found = table.find(name);
  return found == table.end() ? nullptr : std::get_if<Kind>(&found->second.kind);
}

}  // namespace

NodeMap::NodeMap(Table table, std::set<std::string> fixedWhileGrabbing, ChangeRule rule)
    : table_(std::move(table)), fixedWhileGrabbing_(std::move(fixedWhileGrabbing)), rule_(std::move(rule)) {}

void NodeMap::Define(const std::string& name, FeatureNode node) {
  std::lock_guard<std::mutex> lock(mutex_);
  table_[name] = std::move(node);
  rule_(table_, name);
}

void NodeMap::Remove(const std::string& name) {
  std::lock_guard<std::mutex> lock(mutex_);
  table_.erase(name);
}

void NodeMap::SetGrabbing(bool grabbing) {
  std::lock_guard<std::mutex> lock(mutex_);
  grabbing_ = grabbing;
}

bool NodeMap::Writable(const std::string& name, const FeatureNode& node) const {
  return WritableByAccess(node.access) && !(grabbing_ && fixedWhileGrabbing_.count(name) != 0);
}

template <typename Kind, typename Change>
Status NodeMap::WriteNode(const std::string& name, Change change) {
  std::lock_guard<std::mutex> lock(mutex_);
  auto found = table_.find(name);
  if (found == table_.end()) {
    return kUnknownNode;
  }
  Kind* node = std::get_if<Kind>(&found->second.kind);
  if (node == nullptr) {
    return kWrongNodeType;
  }
  if (!Writable(name, found->second)) {
    return kNotWritable;
  }
  const Status status = change(*node);
  if (status == 0) {
    rule_(table_, name);
  }
  return status;
}

template <typename Kind, typename Visit>
Status NodeMap::ReadNode(const std::string& name, Visit visit) const {
  std::lock_guard<std::mutex> lock(mutex_);
  auto found = table_.find(name);
  if (found == table_.end()) {
    return kUnknownNode;
  }
  const Kind* node = std::get_if<Kind>(&found->second.kind);
  if (node == nullptr) {
    return kWrongNodeType;
  }
  if (!Readable(found->second.access)) {
    return kNotReadable;
  }
  visit(*node);
  return 0;
}

Status NodeMap::SetInt(const std::string& name, long long value) {
  return WriteNode<IntegerNode>(name, [&](IntegerNode& node) {
    if (value < node.min || value > node.max || !OnIncrement(node, value)) {
      return kOutOfRange;
    }
    node.value = value;
    return Status{0};
  });
}

Status NodeMap::GetInt(const std::string& name, QUORIN_INT_VALUE& out) const {
  return ReadNode<IntegerNode>(name, [&](const IntegerNode& node) {
    out.nCurValue = node.value;
    out.nMax = node.max;
    out.nMin = node.min;
    out.nInc = node.inc;
  });
}

Status NodeMap::SetEnum(const std::string& name, unsigned int value) {
  return WriteNode<EnumNode>(name, [&](EnumNode& node) {
    const bool supported = std::any_of(node.entries.begin(), node.entries.end(),
                                       [&](const auto& entry) { return entry.second == value; });
    if (!supported) {
      return kOutOfRange;
    }
    node.value = value;
    return Status{0};
  });
}

Status NodeMap::SetEnumBySymbol(const std::string& name, const std::string& symbol) {
  return WriteNode<EnumNode>(name, [&](EnumNode& node) {
    auto entry = std::find_if(node.entries.begin(), node.entries.end(),
                              [&](const auto& candidate) { return candidate.first == symbol; });
    if (entry == node.entries.end()) {
      return kOutOfRange;
    }
    node.value = entry->second;
    return Status{0};
  });
}

Status NodeMap::GetEnum(const std::string& name, QUORIN_ENUM_VALUE& out) const {
  return ReadNode<EnumNode>(name, [&](const EnumNode& node) {
    const size_t count = std::min<size_t>(node.entries.size(), QUORIN_MAX_ENUM_VALUE_NUM);
    out.nCurValue = node.value;
    out.nSupportedNum = static_cast<unsigned int>(count);
    for (size_t i = 0; i < count; ++i) {
      out.nSupportValue[i] = node.entries[i].second;
    }
  });
}

Status NodeMap::SetFloat(const std::string& name, float value) {
  return WriteNode<FloatNode>(name, [&](FloatNode& node) {
    if (!(value >= node.min && value <= node.max)) {  // NaN is out of every range
      return kOutOfRange;
    }
    node.value = value;
    return Status{0};
  });
}

Status NodeMap::GetFloat(const std::string& name, QUORIN_FLOAT_VALUE& out) const {
  return ReadNode<FloatNode>(name, [&](const FloatNode& node) {
    out.fCurValue = node.value;
    out.fMax = node.max;
    out.fMin = node.min;
  });
}

Status NodeMap::SetBool(const std::string& name, bool value) {
  return WriteNode<BoolNode>(name, [&](BoolNode& node) {
    node.value = value;
    return Status{0};
  });
}

Status NodeMap::GetBool(const std::string& name, bool& out) const {
  return ReadNode<BoolNode>(name, [&](const BoolNode& node) { out = node.value; });
}

Status NodeMap::SetString(const std::string& name, const std::string& bytes) {
  return WriteNode<StringNode>(name, [&](StringNode& node) {
    if (static_cast<long long>(bytes.size()) > node.maxLength) {
      return kOutOfRange;
    }
    node.bytes = bytes;
    return Status{0};
  });
}

Status NodeMap::GetString(const std::string& name, QUORIN_STRING_VALUE& out) const {
  return ReadNode<StringNode>(name, [&](const StringNode& node) {
    const size_t length = std::min(node.bytes.size(), sizeof out.chCurValue - 1);
    std::memset(out.chCurValue, 0, sizeof out.chCurValue);
    std::memcpy(out.chCurValue, node.bytes.data(), length);
    out.nMaxLength = node.maxLength;
  });
}

Status NodeMap::Execute(const std::string& name) {
  return WriteNode<CommandNode>(name, [](CommandNode&) { return Status{0}; });
}

long long IntegerIn(const NodeMap::Table& table, const std::string& name, long long fallback) {
  const IntegerNode* node = KindIn<IntegerNode>(table, name);
  return node == nullptr ? fallback : node->value;
}

float FloatIn(const NodeMap::Table& table, const std::string& name, float fallback) {
  const FloatNode* node = KindIn<FloatNode>(table, name);
  return node == nullptr ? fallback : node->value;
}

unsigned int EnumIn(const NodeMap::Table& table, const std::string& name, unsigned int fallback) {
  const EnumNode* node = KindIn<EnumNode>(table, name);
  return node == nullptr ? fallback : node->value;
}

}  // namespace qsim
