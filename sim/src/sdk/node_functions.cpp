// SDK functions of the feature nodes: typed values by node name, access modes, and the feature
// description file that lists them.
#include <cstring>
#include <string>

#include "QuorinCtrl.h"
#include "sdk/dispatch.h"

using qsim::CallBuilder;
using qsim::Dispatch;
using qsim::DispatchInto;
using qsim::Model;
using qsim::NodeMap;
using qsim::Status;
using qsim::VirtualReader;

namespace {

CallBuilder NodeCall(const char* function, void* handle, const char* key) {
  return CallBuilder(function).Handle(handle).Text(key);
}

// Every node function needs a live handle holding its reader open, then a key.
template <typename Work>
Status OnNodes(void* handle, const char* key, Work work) {
  return Model().WithOpenReader(handle, [&](VirtualReader& reader) {
    return key == nullptr ? qsim::kBadParameter : work(reader);
  });
}

template <typename Work>
int SetNode(const CallBuilder& call, void* handle, const char* key, Work work) {
  return Dispatch(call, [&] { return OnNodes(handle, key, work); });
}

// A getter also needs its record, and a scripted output replaces its work.
template <typename Record, typename Work>
int GetNode(const char* function, void* handle, const char* key, Record* record, Work work) {
  return DispatchInto(NodeCall(function, handle, key), record, sizeof *record, [&] {
    return OnNodes(handle, key, [&](VirtualReader& reader) {
      return record == nullptr ? qsim::kBadParameter : work(reader.Nodes(), *record);
    });
  });
}

// Copies the document when it fits, then a terminating zero when there is room; *length receives
// its length, without the zero, either way.
Status DeliverDocument(const std::string& document, unsigned char* data, unsigned int size, unsigned int* length) {
  if (length == nullptr || (data == nullptr && size > 0)) {
    return qsim::kBadParameter;
  }
  *length = static_cast<unsigned int>(document.size());
  if (size < document.size()) {
    return qsim::kBufferTooSmall;
  }
  std::memcpy(data, document.data(), document.size());
  if (size > document.size()) {
    data[document.size()] = 0;
  }
  return 0;
}

unsigned int BitsOf(float value) {
  unsigned int bits = 0;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

}  // namespace

extern "C" {

QUORIN_API int QUORIN_SetIntValue(void* handle, const char* strKey, int64_t nValue) {
  return SetNode(NodeCall(__func__, handle, strKey).Number(nValue), handle, strKey,
                 [&](VirtualReader& reader) { return reader.Nodes().SetInt(strKey, nValue); });
}

QUORIN_API int QUORIN_SetEnumValue(void* handle, const char* strKey, unsigned int nValue) {
  return SetNode(NodeCall(__func__, handle, strKey).Number(nValue), handle, strKey,
                 [&](VirtualReader& reader) { return reader.Nodes().SetEnum(strKey, nValue); });
}

QUORIN_API int QUORIN_SetEnumValueByString(void* handle, const char* strKey, const char* strValue) {
  return SetNode(NodeCall(__func__, handle, strKey).Text(strValue), handle, strKey, [&](VirtualReader& reader) {
    return strValue == nullptr ? qsim::kBadParameter : reader.Nodes().SetEnumBySymbol(strKey, strValue);
  });
}

QUORIN_API int QUORIN_SetFloatValue(void* handle, const char* strKey, float fValue) {
  return SetNode(NodeCall(__func__, handle, strKey).Number(BitsOf(fValue)), handle, strKey,
                 [&](VirtualReader& reader) { return reader.Nodes().SetFloat(strKey, fValue); });
}

QUORIN_API int QUORIN_SetBoolValue(void* handle, const char* strKey, bool bValue) {
  return SetNode(NodeCall(__func__, handle, strKey).Number(bValue ? 1u : 0u), handle, strKey,
                 [&](VirtualReader& reader) { return reader.Nodes().SetBool(strKey, bValue); });
}

QUORIN_API int QUORIN_SetStringValue(void* handle, const char* strKey, const char* strValue) {
  return SetNode(NodeCall(__func__, handle, strKey).Text(strValue), handle, strKey, [&](VirtualReader& reader) {
    return strValue == nullptr ? qsim::kBadParameter : reader.Nodes().SetString(strKey, strValue);
  });
}

QUORIN_API int QUORIN_SetCommandValue(void* handle, const char* strKey) {
  return SetNode(NodeCall(__func__, handle, strKey), handle, strKey,
                 [&](VirtualReader& reader) { return reader.Execute(strKey); });
}

QUORIN_API int QUORIN_GetIntValue(void* handle, const char* strKey, QUORIN_INT_VALUE* pstValue) {
  return GetNode(__func__, handle, strKey, pstValue,
                 [&](NodeMap& nodes, QUORIN_INT_VALUE& out) { return nodes.GetInt(strKey, out); });
}

QUORIN_API int QUORIN_GetEnumValue(void* handle, const char* strKey, QUORIN_ENUM_VALUE* pstValue) {
  return GetNode(__func__, handle, strKey, pstValue,
                 [&](NodeMap& nodes, QUORIN_ENUM_VALUE& out) { return nodes.GetEnum(strKey, out); });
}

QUORIN_API int QUORIN_GetFloatValue(void* handle, const char* strKey, QUORIN_FLOAT_VALUE* pstValue) {
  return GetNode(__func__, handle, strKey, pstValue,
                 [&](NodeMap& nodes, QUORIN_FLOAT_VALUE& out) { return nodes.GetFloat(strKey, out); });
}

QUORIN_API int QUORIN_GetBoolValue(void* handle, const char* strKey, bool* pbValue) {
  return GetNode(__func__, handle, strKey, pbValue,
                 [&](NodeMap& nodes, bool& out) { return nodes.GetBool(strKey, out); });
}

QUORIN_API int QUORIN_GetStringValue(void* handle, const char* strKey, QUORIN_STRING_VALUE* pstValue) {
  return GetNode(__func__, handle, strKey, pstValue,
                 [&](NodeMap& nodes, QUORIN_STRING_VALUE& out) { return nodes.GetString(strKey, out); });
}

QUORIN_API int QUORIN_SetFrameNodeNum(void* handle, unsigned int nNum) {
  return Dispatch(CallBuilder(__func__).Handle(handle).Number(nNum), [&] {
    return Model().WithOpenReader(handle, [&](VirtualReader& reader) {
      reader.SetFrameNodeCount(nNum);
      return Status{0};
    });
  });
}

// A scripted output stands for the document, delivered by the same rules.
QUORIN_API int QUORIN_XML_GetGenICamXML(void* handle, unsigned char* pData, unsigned int nDataSize,
                                        unsigned int* pnDataLen) {
  const CallBuilder call = CallBuilder(__func__).Handle(handle).Number(nDataSize);
  const qsim::Scripted scripted = qsim::CallRecorder::Instance().Record(call.Get());
  if (scripted.output) {
    const std::string document(scripted.output->begin(), scripted.output->end());
    DeliverDocument(document, pData, nDataSize, pnDataLen);
  }
  if (scripted.ReplacesWork()) {
    return static_cast<int>(scripted.status);
  }
  return static_cast<int>(Model().WithOpenReader(handle, [&](VirtualReader& reader) {
    return DeliverDocument(reader.Description(), pData, nDataSize, pnDataLen);
  }));
}

QUORIN_API int QUORIN_XML_GetNodeAccessMode(void* handle, const char* strName, unsigned int* penAccessMode) {
  return DispatchInto(CallBuilder(__func__).Handle(handle).Text(strName), penAccessMode, sizeof *penAccessMode, [&] {
    return Model().WithOpenReader(handle, [&](VirtualReader& reader) {
      return strName == nullptr || penAccessMode == nullptr ? qsim::kBadParameter
                                                            : reader.NodeAccessMode(strName, *penAccessMode);
    });
  });
}

}  // extern "C"
