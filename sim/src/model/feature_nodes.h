// Typed feature nodes of one reader, and the rules the SDK's node functions enforce on them.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "QuorinCtrl.h"
#include "QuorinSim.h"
#include "model/status.h"

namespace qsim {

struct IntegerNode {
  long long value = 0;
  long long min = 0;
  long long max = 0;
  long long inc = 1;
};

struct FloatNode {
  float value = 0;
  float min = 0;
  float max = 0;
};

struct EnumNode {
  unsigned int value = 0;
  std::vector<std::pair<std::string, unsigned int>> entries;  // symbol, value
};

struct BoolNode {
  bool value = false;
};

struct StringNode {
  std::string bytes;  // as stored, in whatever encoding the writer used
  long long maxLength = 0;
};

struct CommandNode {};

struct FeatureNode {
  std::variant<IntegerNode, FloatNode, EnumNode, BoolNode, StringNode, CommandNode> kind;
  Access access = Access::kReadWrite;
};

class NodeMap {
 public:
  using Table = std::map<std::string, FeatureNode>;
  // Runs under the map's lock after a node changed, so that nodes derived from it follow in step.
  using ChangeRule = std::function<void(Table& table, const std::string& changed)>;

  NodeMap(Table table, std::set<std::string> fixedWhileGrabbing, ChangeRule rule);

  // Test control: replaces or removes a node whatever its access.
  void Define(const std::string& name, FeatureNode node);
  void Remove(const std::string& name);
  // While grabbing, the nodes that shape the frames refuse writes.
  void SetGrabbing(bool grabbing);

  Status SetInt(const std::string& name, long long value);
  Status GetInt(const std::string& name, QUORIN_INT_VALUE& out) const;
  Status SetEnum(const std::string& name, unsigned int value);
  Status SetEnumBySymbol(const std::string& name, const std::string& symbol);
  Status GetEnum(const std::string& name, QUORIN_ENUM_VALUE& out) const;
  Status SetFloat(const std::string& name, float value);
  Status GetFloat(const std::string& name, QUORIN_FLOAT_VALUE& out) const;
  Status SetBool(const std::string& name, bool value);
  Status GetBool(const std::string& name, bool& out) const;
  Status SetString(const std::string& name, const std::string& bytes);
  Status GetString(const std::string& name, QUORIN_STRING_VALUE& out) const;
  Status Execute(const std::string& name);  // a command: only its access is checked

  // The model's own reads, which ignore access.
  template <typename Reader>
  auto Inspect(Reader inspect) const {
    std::lock_guard<std::mutex> lock(mutex_);
    return inspect(static_cast<const Table&>(table_));
  }

 private:
  template <typename Kind, typename Change>
  Status WriteNode(const std::string& name, Change change);
  template <typename Kind, typename Visit>
  Status ReadNode(const std::string& name, Visit visit) const;
  bool Writable(const std::string& name, const FeatureNode& node) const;

  mutable std::mutex mutex_;
  Table table_;
  const std::set<std::string> fixedWhileGrabbing_;
  const ChangeRule rule_;
  bool grabbing_ = false;
};

// Current values for the model's own use: `fallback` when the node is missing or of another type.
long long IntegerIn(const NodeMap::Table& table, const std::string& name, long long fallback);
float FloatIn(const NodeMap::Table& table, const std::string& name, float fallback);
unsigned int EnumIn(const NodeMap::Table& table, const std::string& name, unsigned int fallback);

}  // namespace qsim
