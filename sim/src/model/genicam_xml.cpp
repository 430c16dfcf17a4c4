#include "model/genicam_xml.h"

#include <cstdio>
#include <cstring>

namespace qsim {
namespace {

std::string Indent(int depth) { return std::string(2 * static_cast<size_t>(depth), ' '); }

std::string Escaped(const std::string& text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': escaped += "&amp;"; break;
      case '<': escaped += "&lt;"; break;
      case '>': escaped += "&gt;"; break;
      case '"': escaped += "&quot;"; break;
      case '\'': escaped += "&apos;"; break;
      default: escaped += c;
    }
  }
  return escaped;
}

template <size_t N>
std::string TextOf(const char (&field)[N]) {
  return std::string(field, strnlen(field, N));
}

std::string FloatText(float value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
  return text;
}

const char* AccessText(Access access) {
  switch (access) {
    case Access::kReadWrite: return "RW";
    case Access::kReadOnly: return "RO";
    case Access::kWriteOnly: return "WO";
    case Access::kNotAvailable: break;
  }
  return "NA";
}

// Writes the child elements of one node; the values only when the node can be read.
class NodeBody {
 public:
  NodeBody(std::string& out, bool readable, int depth) : out_(out), readable_(readable), depth_(depth) {}

  void operator()(const IntegerNode& node) {
    Value(std::to_string(node.value));
    Child("Min", std::to_string(node.min));
    Child("Max", std::to_string(node.max));
    Child("Inc", std::to_string(node.inc));
  }
  void operator()(const FloatNode& node) {
    Value(FloatText(node.value));
    Child("Min", FloatText(node.min));
    Child("Max", FloatText(node.max));
  }
  void operator()(const EnumNode& node) {
    const std::string indent = Indent(depth_);
    for (const auto& [symbol, value] : node.entries) {
      out_ += indent + "<EnumEntry Name=\"" + Escaped(symbol) + "\">\n";
      NodeBody(out_, true, depth_ + 1).Child("Value", std::to_string(value));
      out_ += indent + "</EnumEntry>\n";
    }
    Value(std::to_string(node.value));
  }
  void operator()(const BoolNode& node) { Value(node.value ? "true" : "false"); }
  // Its bytes are in whatever encoding the writer used, so only the length is described.
  void operator()(const StringNode& node) { Child("Length", std::to_string(node.maxLength)); }
  void operator()(const CommandNode&) {}

  void Child(const char* element, const std::string& text) {
    out_ += Indent(depth_) + "<" + element + ">" + Escaped(text) + "</" + element + ">\n";
  }

 private:
  void Value(const std::string& text) {
    if (readable_) {
      Child("Value", text);
    }
  }

  std::string& out_;
  const bool readable_;
  const int depth_;
};

struct ElementName {
  const char* operator()(const IntegerNode&) const { return "Integer"; }
  const char* operator()(const FloatNode&) const { return "Float"; }
  const char* operator()(const EnumNode&) const { return "Enumeration"; }
  const char* operator()(const BoolNode&) const { return "Boolean"; }
  const char* operator()(const StringNode&) const { return "StringReg"; }
  const char* operator()(const CommandNode&) const { return "Command"; }
};

void WriteNode(std::string& out, const std::string& name, const FeatureNode& node) {
  const char* element = std::visit(ElementName{}, node.kind);
  out += Indent(1) + "<" + element + " Name=\"" + Escaped(name) + "\">\n";
  const bool readable = node.access == Access::kReadWrite || node.access == Access::kReadOnly;
  NodeBody body(out, readable, 2);
  body.Child("AccessMode", AccessText(node.access));
  std::visit(body, node.kind);
  out += Indent(1) + "</" + element + ">\n";
}

}  // namespace

std::string GenICamXml(const NodeMap::Table& table, const QUORIN_DEVICE_INFO& info) {
  const QUORIN_GIGE_DEVICE_INFO& gige = info.stGigEInfo;
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  xml += "<RegisterDescription ModelName=\"" + Escaped(TextOf(gige.chModelName)) + "\" VendorName=\"" +
         Escaped(TextOf(gige.chManufacturerName)) +
         "\" StandardNameSpace=\"None\" SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" "
         "SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" MinorVersion=\"0\" SubMinorVersion=\"0\" "
         "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n";
  xml += Indent(1) + "<Category Name=\"Root\">\n";
  NodeBody root(xml, true, 2);
  for (const auto& entry : table) {
    root.Child("pFeature", entry.first);
  }
  xml += Indent(1) + "</Category>\n";
  for (const auto& [name, node] : table) {
    WriteNode(xml, name, node);
  }
  xml += "</RegisterDescription>\n";
  return xml;
}

unsigned int AccessModeOf(Access access) {
  switch (access) {
    case Access::kReadWrite: return QUORIN_AM_RW;
    case Access::kReadOnly: return QUORIN_AM_RO;
    case Access::kWriteOnly: return QUORIN_AM_WO;
    case Access::kNotAvailable: break;
  }
  return QUORIN_AM_NA;
}

}  // namespace qsim
