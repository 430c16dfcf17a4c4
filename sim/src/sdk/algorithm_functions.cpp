// SDK functions of the integer parameters of the reader's decoding algorithm.
#include "QuorinCtrl.h"
#include "sdk/dispatch.h"

extern "C" {

QUORIN_API int QUORIN_Algorithm_SetIntValue(void* handle, const char* strKey, int nValue) {
  return qsim::Dispatch(qsim::CallBuilder(__func__).Handle(handle).Text(strKey).Number(nValue), [&] {
    return qsim::Model().WithOpenReader(handle, [&](qsim::VirtualReader& reader) {
      return strKey == nullptr ? qsim::kBadParameter : reader.Algorithm().Set(strKey, nValue);
    });
  });
}

QUORIN_API int QUORIN_Algorithm_GetIntValue(void* handle, const char* strKey, int* pnValue) {
  return qsim::DispatchInto(qsim::CallBuilder(__func__).Handle(handle).Text(strKey), pnValue, sizeof *pnValue, [&] {
    return qsim::Model().WithOpenReader(handle, [&](qsim::VirtualReader& reader) {
      return strKey == nullptr || pnValue == nullptr ? qsim::kBadParameter : reader.Algorithm().Get(strKey, *pnValue);
    });
  });
}

}  // extern "C"
