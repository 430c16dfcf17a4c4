// How a GigE reader sits on the network: forced address, configuration type, GVCP time-out.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GIGE_1ForceIp(JNIEnv* env, jclass, jobject handle,
                                                                              jstring ip, jstring subnetMask,
                                                                              jstring defaultGateway) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  if (ip == nullptr || subnetMask == nullptr || defaultGateway == nullptr) return kStatusBadArgument;
  void* sdkHandle = SdkHandleOf(env, handle);
  ScopedUtfChars ipText(env, ip);
  ScopedUtfChars maskText(env, subnetMask);
  ScopedUtfChars gatewayText(env, defaultGateway);
  RETURN_IF_PENDING(env, kStatusBadArgument);
  // Text that is not an address is not refused here: it converts as inet_addr has it.
  const unsigned int address = iptoint(ipText.c_str());
  const unsigned int mask = iptoint(maskText.c_str());
  const unsigned int gateway = iptoint(gatewayText.c_str());
  // Intended: the characters stay pinned after the call, as this entry point is defined to keep them.
  ipText.leak();
  maskText.leak();
  gatewayText.leak();
  return QUORIN_GIGE_ForceIp(sdkHandle, address, mask, gateway);
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GIGE_1SetIpConfig(JNIEnv* env, jclass,
                                                                                  jobject handle, jint type) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  return QUORIN_GIGE_SetIpConfig(SdkHandleOf(env, handle), static_cast<unsigned int>(type));
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GIGE_1SetGvcpTimeout(JNIEnv* env, jclass,
                                                                                     jobject handle,
                                                                                     jint milliseconds) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  if (milliseconds < 0) return kStatusBadArgument;
  return QUORIN_GIGE_SetGvcpTimeout(SdkHandleOf(env, handle), static_cast<unsigned int>(milliseconds));
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GIGE_1GetGvcpTimeout(JNIEnv* env, jclass,
                                                                                     jobject handle,
                                                                                     jobject milliseconds) {
  return GetIntoInteger(env, handle, milliseconds, HandleKind::kDevice, QUORIN_GIGE_GetGvcpTimeout);
}
