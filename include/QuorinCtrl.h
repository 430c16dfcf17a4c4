// Declarations of the code-reader device SDK libQuorinCtrl.so: its records, numbers,
// callback types and functions. The records keep the SDK's binary layout through
// natural alignment alone; the checks at the end pin the 32-bit x86 offsets.
#ifndef QUORIN_CTRL_H
#define QUORIN_CTRL_H

#include <stddef.h>
#include <stdint.h>
#ifndef __cplusplus
#include <assert.h>
#include <stdbool.h>
#endif

// Keeps the SDK functions exported from a library built with -fvisibility=hidden.
#define QUORIN_API __attribute__((visibility("default")))

#ifdef __cplusplus
extern "C" {
#endif

// ---------------------------------------------------------------------------
// Capacities of the fixed arrays in the records.
#define QUORIN_MAX_DEVICE_NUM 256
#define QUORIN_MAX_ENUM_VALUE_NUM 68
#define QUORIN_MAX_BCR_NUM 200
#define QUORIN_MAX_BCR_EX_NUM 300
#define QUORIN_MAX_WAYBILL_NUM 50
#define QUORIN_MAX_BCRINFO_NUM 204

// Transport layers, as the nTLayerType word and the enumeration mask.
#define QUORIN_UNKNOW_DEVICE 0x00000000u
#define QUORIN_GIGE_DEVICE 0x00000001u

// Access modes asked of QUORIN_IsDeviceAccessible.
#define QUORIN_ACCESS_Exclusive 1u
#define QUORIN_ACCESS_ExclusiveWithSwitch 2u
#define QUORIN_ACCESS_Control 3u
#define QUORIN_ACCESS_ControlWithSwitch 4u
#define QUORIN_ACCESS_ControlSwitchEnable 5u
#define QUORIN_ACCESS_ControlSwitchEnableWithKey 6u
#define QUORIN_ACCESS_Monitor 7u

// IP configuration types (QUORIN_GIGE_SetIpConfig, nIpCfgCurrent; OR-ed in nIpCfgOption).
#define QUORIN_IP_CFG_STATIC 0x05000000u
#define QUORIN_IP_CFG_DHCP 0x06000000u
#define QUORIN_IP_CFG_LLA 0x04000000u

// Exception message delivered when an open device stops answering.
#define QUORIN_EXCEPTION_DEV_DISCONNECT 0x00008001u

// Pixel formats: GenICam PFNC numbers, plus the vendor range for compressed frames.
typedef unsigned int QuorinGvspPixelType;
#define PixelType_Gvsp_Undefined 0xFFFFFFFFu
#define PixelType_Gvsp_Mono8 0x01080001u
#define PixelType_Gvsp_Mono10 0x01100003u
#define PixelType_Gvsp_Mono12 0x01100005u
#define PixelType_Gvsp_Mono16 0x01100007u
#define PixelType_Gvsp_BayerGR8 0x01080008u
#define PixelType_Gvsp_BayerRG8 0x01080009u
#define PixelType_Gvsp_BayerGB8 0x0108000Au
#define PixelType_Gvsp_BayerBG8 0x0108000Bu
#define PixelType_Gvsp_RGB8_Packed 0x02180014u
#define PixelType_Gvsp_BGR8_Packed 0x02180015u
#define PixelType_Gvsp_YUV422_Packed 0x02100032u
#define PixelType_Gvsp_Jpeg 0x80180001u

// Image file formats (waybill images, QUORIN_SaveImage).
typedef unsigned int QUORIN_IMAGE_TYPE;
#define QUORIN_Image_Undefined 0u
#define QUORIN_Image_Bmp 1u
#define QUORIN_Image_Jpeg 2u
#define QUORIN_Image_Png 3u
#define QUORIN_Image_Tif 4u

// Access mode of a feature node (QUORIN_XML_GetNodeAccessMode).
typedef unsigned int QUORIN_XML_AccessMode;
#define QUORIN_AM_NI 0u
#define QUORIN_AM_NA 1u
#define QUORIN_AM_WO 2u
#define QUORIN_AM_RO 3u
#define QUORIN_AM_RW 4u
#define QUORIN_AM_Undefined 5u
#define QUORIN_AM_CycleDetect 6u

// ---------------------------------------------------------------------------
// Devices.

typedef struct QUORIN_GIGE_DEVICE_INFO {
  unsigned int nIpCfgOption;
  unsigned int nIpCfgCurrent;
  unsigned int nCurrentIp;  // address words: first octet in the most significant byte
  unsigned int nCurrentSubNetMask;
  unsigned int nDefultGateWay;
  char chManufacturerName[32];
  char chModelName[32];
  char chDeviceVersion[32];
  char chManufacturerSpecificInfo[48];
  char chSerialNumber[16];
  char chUserDefinedName[16];
  unsigned int nNetExport;
  unsigned int nCurUserIP;
  unsigned char nReserved[336];
} QUORIN_GIGE_DEVICE_INFO;

typedef struct QUORIN_DEVICE_INFO {
  unsigned short nMajorVer;
  unsigned short nMinorVer;
  unsigned int nMacAddrHigh;
  unsigned int nMacAddrLow;
  unsigned int nTLayerType;
  unsigned int nReserved0;
  unsigned char bCodeReader;
  unsigned char nReserved1[11];
  QUORIN_GIGE_DEVICE_INFO stGigEInfo;
} QUORIN_DEVICE_INFO;

typedef struct QUORIN_DEVICE_INFO_LIST {
  unsigned int nDeviceNum;
  QUORIN_DEVICE_INFO* pDeviceInfo[QUORIN_MAX_DEVICE_NUM];
} QUORIN_DEVICE_INFO_LIST;

// ---------------------------------------------------------------------------
// Feature node values.

typedef struct QUORIN_INT_VALUE {
  int64_t nCurValue;
  int64_t nMax;
  int64_t nMin;
  int64_t nInc;
  unsigned int nReserved[16];
} QUORIN_INT_VALUE;

typedef struct QUORIN_ENUM_VALUE {
  unsigned int nCurValue;
  unsigned int nSupportedNum;
  unsigned int nSupportValue[QUORIN_MAX_ENUM_VALUE_NUM];
} QUORIN_ENUM_VALUE;

typedef struct QUORIN_FLOAT_VALUE {
  float fCurValue;
  float fMax;
  float fMin;
  unsigned int nReserved[4];
} QUORIN_FLOAT_VALUE;

typedef struct QUORIN_STRING_VALUE {
  char chCurValue[256];
  int64_t nMaxLength;
  unsigned int nReserved[2];
} QUORIN_STRING_VALUE;

// ---------------------------------------------------------------------------
// Device files.

typedef struct QUORIN_FILE_ACCESS {
  const char* pUserFileName;
  const char* pDevFileName;
  unsigned int nReserved[32];
} QUORIN_FILE_ACCESS;

typedef struct QUORIN_FILE_ACCESS_PROGRESS {
  int64_t nCompleted;
  int64_t nTotal;
  unsigned int nReserved[8];
} QUORIN_FILE_ACCESS_PROGRESS;

// ---------------------------------------------------------------------------
// Notifications.

typedef struct QUORIN_EVENT_OUT_INFO {
  char EventName[128];
  unsigned short nEventID;
  unsigned short nStreamChannel;
  unsigned int nBlockIdHigh;
  unsigned int nBlockIdLow;
  unsigned int nTimestampHigh;
  unsigned int nTimestampLow;
  unsigned char* pEventData;  // owned by the SDK, valid during the callback
  unsigned int nEventDataSize;
} QUORIN_EVENT_OUT_INFO;

typedef struct QUORIN_TRIGGER_INFO_DATA {
  unsigned int nTriggerIndex;
  unsigned int nTriggerFlag;
  unsigned int nTriggerTimeHigh;
  unsigned int nTriggerTimeLow;
  unsigned int nOriginalTrigger;
  unsigned short nIsForceOver;
  unsigned short nIsMainCam;
  uint64_t nHostTimeStamp;
} QUORIN_TRIGGER_INFO_DATA;

// ---------------------------------------------------------------------------
// Frame results.

typedef struct QUORIN_POINT_I {
  int nX;
  int nY;
} QUORIN_POINT_I;

// Print-quality grades and scores of one code.
typedef struct QUORIN_CODE_INFO {
  int nOverQuality;
  int nDeCode;
  int nSCGrade;
  int nModGrade;
  int nFPDGrade;
  int nANGrade;
  int nGNGrade;
  int nUECGrade;
  int nPGHGrade;
  int nPGVGrade;
  float fSCScore;
  float fModScore;
  float fFPDScore;
  float fAnScore;
  float fGNScore;
  float fUECScore;
  float fPGHScore;
  float fPGVScore;
  int nRMGrade;
  float fRMScore;
  int n1DEdgeGrade;
  int n1DMinRGrade;
  int n1DMinEGrade;
  int n1DDcdGrade;
  int n1DDefGrade;
  int n1DQZGrade;
  float f1DEdgeScore;
  float f1DMinRScore;
  float f1DMinEScore;
  float f1DDcdScore;
  float f1DDefScore;
  float f1DQZScore;
  int nReserved[18];
} QUORIN_CODE_INFO;

// One decoded code of the plain code list.
typedef struct QUORIN_BCR_INFO {
  unsigned int nID;
  char chCode[256];
  unsigned int nLen;
  unsigned int nBarType;
  QUORIN_POINT_I pt[4];  // left top, right top, right bottom, left bottom
  QUORIN_CODE_INFO stCodeQuality;
  int nAngle;
  unsigned int nMainPackageId;
  unsigned int nSubPackageId;
  unsigned short sAppearCount;
  unsigned short sPPM;
  unsigned short sAlgoCost;
  unsigned short sSharpness;
  unsigned char bIsGetQuality;
  unsigned int nReserved[31];
} QUORIN_BCR_INFO;

typedef struct QUORIN_RESULT_BCR {
  unsigned int nCodeNum;
  QUORIN_BCR_INFO stBcrInfo[QUORIN_MAX_BCR_NUM];
  unsigned int nReserved[4];
} QUORIN_RESULT_BCR;

// One decoded code of the extended code list.
typedef struct QUORIN_BCR_INFO_EX {
  unsigned int nID;
  char chCode[4096];  // UTF-8 or GBK
  unsigned int nLen;
  unsigned int nBarType;
  QUORIN_POINT_I stCornerLeftTop;
  QUORIN_POINT_I stCornerRightTop;
  QUORIN_POINT_I stCornerRightBottom;
  QUORIN_POINT_I stCornerLeftBottom;
  QUORIN_CODE_INFO stCodeQuality;
  int nAngle;
  unsigned int nMainPackageId;
  unsigned int nSubPackageId;
  unsigned short sAppearCount;
  unsigned short sPPM;
  unsigned short sAlgoCost;
  unsigned short sSharpness;
  unsigned char bIsGetQuality;
  unsigned int nIDRScore;
  unsigned int n1DIsGetQuality;
  unsigned int nTotalProcCost;
  unsigned int nTriggerTimeTvHigh;
  unsigned int nTriggerTimeTvLow;
  unsigned int nTriggerTimeUtvHigh;
  unsigned int nTriggerTimeUtvLow;
  unsigned int nReserved[59];
} QUORIN_BCR_INFO_EX;

typedef struct QUORIN_RESULT_BCR_EX {
  unsigned int nCodeNum;
  QUORIN_BCR_INFO_EX stBcrInfoEx[QUORIN_MAX_BCR_EX_NUM];
  unsigned int nReserved[8];
} QUORIN_RESULT_BCR_EX;

// One waybill region cut out of a frame, with its own encoded image.
typedef struct QUORIN_WAYBILL_INFO {
  float fCenterX;
  float fCenterY;
  float fWidth;
  float fHeight;
  float fAngle;
  float fConfidence;
  unsigned char* pImageWaybill;
  unsigned int nImageLen;
  unsigned int nReserved[12];
} QUORIN_WAYBILL_INFO;

typedef struct QUORIN_WAYBILL_LIST {
  unsigned int nWaybillNum;
  QUORIN_IMAGE_TYPE enWaybillImageType;  // format of every image of the list
  QUORIN_WAYBILL_INFO stWaybillInfo[QUORIN_MAX_WAYBILL_NUM];
  unsigned int nReserved[4];
} QUORIN_WAYBILL_LIST;

typedef struct QUORIN_IMAGE_OUT_INFO_EX2 {
  unsigned short nWidth;
  unsigned short nHeight;
  QuorinGvspPixelType enPixelType;
  unsigned int nReserved0;
  unsigned int nTriggerIndex;
  unsigned int nFrameNum;
  unsigned int nFrameLen;  // image bytes of this frame
  unsigned int nTimeStampHigh;
  unsigned int nTimeStampLow;
  unsigned int bFlaseTrigger;
  unsigned int nFocusScore;
  unsigned char bIsGetCode;
  QUORIN_RESULT_BCR* pstCodeList;
  QUORIN_WAYBILL_LIST* pstWaybillList;
  unsigned int nEventID;
  unsigned int nChannelID;
  unsigned int nImageCost;
  QUORIN_RESULT_BCR_EX* pstCodeListEx;
  unsigned int nReserved[29];
} QUORIN_IMAGE_OUT_INFO_EX2;

// One decoded code of the legacy frame record.
typedef struct QUORIN_BcrInfo {
  unsigned int nID;
  char chCode[256];
  unsigned int nLen;
  unsigned int nBarType;
  QUORIN_POINT_I pt[4];  // left top, right top, right bottom, left bottom
  int nAngle;
  unsigned int nMainPackageId;
  unsigned int nSubPackageId;
  unsigned short sAppearCount;
  unsigned short sPPM;
  unsigned short sAlgoCost;
  unsigned short sSharpness;
} QUORIN_BcrInfo;

// Frame record of QUORIN_GetOneFrameTimeout.
typedef struct QUORIN_FRAME_OUT_INFO {
  unsigned short nWidth;
  unsigned short nHeight;
  QuorinGvspPixelType enPixelType;
  unsigned int nReserved0;
  unsigned int nTriggerIndex;
  unsigned int nFrameNum;
  unsigned int nFrameLen;
  unsigned int nTimeStampHigh;
  unsigned int nTimeStampLow;
  unsigned int nReserved1;
  unsigned int nCodeNumber;
  QUORIN_BcrInfo stBcrInfo[QUORIN_MAX_BCRINFO_NUM];
  unsigned char nBcrReserved[256];  // rest of the 65536-byte code area
  unsigned char* pImageWaybill;
  unsigned int nImageWaybillLen;
  QUORIN_IMAGE_TYPE enWaybillImageType;
  unsigned int bFlaseTrigger;
  unsigned int nFocusScore;
  unsigned int nChannelID;
  unsigned int nImageCost;
  unsigned int nReserved[6];
} QUORIN_FRAME_OUT_INFO;

// ---------------------------------------------------------------------------
// Image saving.

typedef struct QUORIN_SAVE_IMAGE_PARAM {
  unsigned char* pData;
  unsigned int nDataLen;
  int64_t enPixelType;  // QuorinGvspPixelType, sign-extended
  unsigned short nWidth;
  unsigned short nHeight;
  unsigned char* pImageBuffer;  // encoded bytes, owned by the SDK
  unsigned int nImageLen;
  unsigned int nBufferSize;
  QUORIN_IMAGE_TYPE enImageType;
  unsigned int nJpgQuality;
  unsigned int iMethodValue;
  unsigned int nReserved[3];
} QUORIN_SAVE_IMAGE_PARAM;

// ---------------------------------------------------------------------------
// Callbacks; each runs on a thread of the SDK with the pUser given at registration.

typedef void (*QuorinExceptionCallBack)(unsigned int nMsgType, void* pUser);
typedef void (*QuorinEventCallBack)(QUORIN_EVENT_OUT_INFO* pEventInfo, void* pUser);
typedef void (*QuorinTriggerCallBack)(QUORIN_TRIGGER_INFO_DATA* pTriggerInfo, void* pUser);
typedef void (*QuorinImageCallBackEx2)(unsigned char* pData, QUORIN_IMAGE_OUT_INFO_EX2* pFrameInfo,
                                       void* pUser);

// ---------------------------------------------------------------------------
// Functions. All but the version and the accessibility test return a status word
// (0 on success); handles are the SDK's opaque pointers.

// Library and devices.
QUORIN_API unsigned int QUORIN_GetSDKVersion(void);
QUORIN_API int QUORIN_EnumDevices(QUORIN_DEVICE_INFO_LIST* pstDevList, unsigned int nTLayerType);
QUORIN_API int QUORIN_EnumIDDevices(QUORIN_DEVICE_INFO_LIST* pstDevList);
QUORIN_API int QUORIN_EnumCodeReader(QUORIN_DEVICE_INFO_LIST* pstDevList);
QUORIN_API bool QUORIN_IsDeviceAccessible(QUORIN_DEVICE_INFO* pstDevInfo, unsigned int nAccessMode);
QUORIN_API int QUORIN_GetDeviceInfo(void* handle, QUORIN_DEVICE_INFO* pstDevInfo);

// Handles.
QUORIN_API int QUORIN_CreateHandle(void** handle, QUORIN_DEVICE_INFO* pstDevInfo);
QUORIN_API int QUORIN_CreateHandleBySerialNumber(void** handle, const char* chSerialNumber);
QUORIN_API int QUORIN_DestroyHandle(void* handle);
QUORIN_API int QUORIN_OpenDevice(void* handle);
QUORIN_API int QUORIN_CloseDevice(void* handle);
QUORIN_API int QUORIN_CreateHandleForUpgradeAndEncryption(void** handle);
QUORIN_API int QUORIN_DestroyHandleForUpgradeAndEncryption(void* handle);

// Firmware upgrade, on an upgrade handle.
QUORIN_API int QUORIN_DiscoveryUpgDevice(QUORIN_DEVICE_INFO_LIST* pstDevList);
QUORIN_API int QUORIN_StartUpgradeDeviceByHandle(void* handle, QUORIN_DEVICE_INFO* pstDevInfo,
                                                 const char* pFilePathName);
QUORIN_API int QUORIN_GetUpgradeProcessByHandle(void* handle, unsigned int* pnProcess);

// GigE network configuration.
QUORIN_API int QUORIN_GIGE_ForceIp(void* handle, unsigned int nIP, unsigned int nSubNetMask,
                                   unsigned int nDefaultGateWay);
QUORIN_API int QUORIN_GIGE_SetIpConfig(void* handle, unsigned int nType);
QUORIN_API int QUORIN_GIGE_SetGvcpTimeout(void* handle, unsigned int nMillisec);
QUORIN_API int QUORIN_GIGE_GetGvcpTimeout(void* handle, unsigned int* pnMillisec);

// Feature nodes.
QUORIN_API int QUORIN_SetIntValue(void* handle, const char* strKey, int64_t nValue);
QUORIN_API int QUORIN_SetEnumValue(void* handle, const char* strKey, unsigned int nValue);
QUORIN_API int QUORIN_SetEnumValueByString(void* handle, const char* strKey, const char* strValue);
QUORIN_API int QUORIN_SetFloatValue(void* handle, const char* strKey, float fValue);
QUORIN_API int QUORIN_SetBoolValue(void* handle, const char* strKey, bool bValue);
QUORIN_API int QUORIN_SetStringValue(void* handle, const char* strKey, const char* strValue);
QUORIN_API int QUORIN_SetCommandValue(void* handle, const char* strKey);
QUORIN_API int QUORIN_GetIntValue(void* handle, const char* strKey, QUORIN_INT_VALUE* pstValue);
QUORIN_API int QUORIN_GetEnumValue(void* handle, const char* strKey, QUORIN_ENUM_VALUE* pstValue);
QUORIN_API int QUORIN_GetFloatValue(void* handle, const char* strKey, QUORIN_FLOAT_VALUE* pstValue);
QUORIN_API int QUORIN_GetBoolValue(void* handle, const char* strKey, bool* pbValue);
QUORIN_API int QUORIN_GetStringValue(void* handle, const char* strKey, QUORIN_STRING_VALUE* pstValue);
QUORIN_API int QUORIN_SetFrameNodeNum(void* handle, unsigned int nNum);

// Decoding algorithm parameters and node metadata.
QUORIN_API int QUORIN_Algorithm_SetIntValue(void* handle, const char* strKey, int nValue);
QUORIN_API int QUORIN_Algorithm_GetIntValue(void* handle, const char* strKey, int* pnValue);
QUORIN_API int QUORIN_XML_GetGenICamXML(void* handle, unsigned char* pData, unsigned int nDataSize,
                                        unsigned int* pnDataLen);
QUORIN_API int QUORIN_XML_GetNodeAccessMode(void* handle, const char* strName,
                                            unsigned int* penAccessMode);

// Device files.
QUORIN_API int QUORIN_FileAccessRead(void* handle, QUORIN_FILE_ACCESS* pstFileAccess);
QUORIN_API int QUORIN_FileAccessWrite(void* handle, QUORIN_FILE_ACCESS* pstFileAccess);
QUORIN_API int QUORIN_GetFileAccessProgress(void* handle, QUORIN_FILE_ACCESS_PROGRESS* pstProgress);

// Notifications; a null callback with null user data unregisters.
QUORIN_API int QUORIN_RegisterExceptionCallBack(void* handle, QuorinExceptionCallBack cbException,
                                                void* pUser);
QUORIN_API int QUORIN_RegisterAllEventCallBack(void* handle, QuorinEventCallBack cbEvent, void* pUser);
QUORIN_API int QUORIN_RegisterTriggerCallBack(void* handle, QuorinTriggerCallBack cbTrigger,
                                              void* pUser);

// Acquisition.
QUORIN_API int QUORIN_StartGrabbing(void* handle);
QUORIN_API int QUORIN_StopGrabbing(void* handle);
QUORIN_API int QUORIN_GetOneFrameTimeoutEx2(void* handle, unsigned char** ppData,
                                            QUORIN_IMAGE_OUT_INFO_EX2* pstFrameInfo,
                                            unsigned int nMsec);
QUORIN_API int QUORIN_MSC_GetOneFrameTimeout(void* handle, unsigned char** ppData,
                                             QUORIN_IMAGE_OUT_INFO_EX2* pstFrameInfo,
                                             unsigned int nChannelID, unsigned int nMsec);
QUORIN_API int QUORIN_RegisterImageCallBackEx2(void* handle, QuorinImageCallBackEx2 cbOutput,
                                               void* pUser);
QUORIN_API int QUORIN_MSC_RegisterImageCallBack(void* handle, unsigned int nChannelID,
                                                QuorinImageCallBackEx2 cbOutput, void* pUser);
QUORIN_API int QUORIN_GetOneFrameTimeout(void* handle, unsigned char** ppData,
                                         QUORIN_FRAME_OUT_INFO* pstFrameInfo, int nMsec);
QUORIN_API int QUORIN_GetWayBillInfoEx(void* handle, unsigned char* pData,
                                       QUORIN_IMAGE_OUT_INFO_EX2* pstFrameInfo);
QUORIN_API int QUORIN_SaveImage(void* handle, QUORIN_SAVE_IMAGE_PARAM* pstSaveParam);
QUORIN_API int QUORIN_SetWayBillEnable(void* handle, unsigned int bEnable);

#ifdef __cplusplus
}  // extern "C"
#endif

// ---------------------------------------------------------------------------
// The 32-bit x86 layout is the SDK's binary interface, byte for byte.
#if defined(__i386__)
#define QUORIN_AT(type, field, offset) \
  static_assert(offsetof(type, field) == (offset), #type "." #field " offset")
#define QUORIN_SIZE(type, size) static_assert(sizeof(type) == (size), #type " size")

QUORIN_SIZE(QUORIN_GIGE_DEVICE_INFO, 540);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, nIpCfgOption, 0);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, nIpCfgCurrent, 4);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, nCurrentIp, 8);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, nCurrentSubNetMask, 12);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, nDefultGateWay, 16);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, chManufacturerName, 20);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, chModelName, 52);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, chDeviceVersion, 84);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, chManufacturerSpecificInfo, 116);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, chSerialNumber, 164);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, chUserDefinedName, 180);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, nNetExport, 196);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, nCurUserIP, 200);
QUORIN_AT(QUORIN_GIGE_DEVICE_INFO, nReserved, 204);

QUORIN_SIZE(QUORIN_DEVICE_INFO, 572);
QUORIN_AT(QUORIN_DEVICE_INFO, nMajorVer, 0);
QUORIN_AT(QUORIN_DEVICE_INFO, nMinorVer, 2);
QUORIN_AT(QUORIN_DEVICE_INFO, nMacAddrHigh, 4);
QUORIN_AT(QUORIN_DEVICE_INFO, nMacAddrLow, 8);
QUORIN_AT(QUORIN_DEVICE_INFO, nTLayerType, 12);
QUORIN_AT(QUORIN_DEVICE_INFO, nReserved0, 16);
QUORIN_AT(QUORIN_DEVICE_INFO, bCodeReader, 20);
QUORIN_AT(QUORIN_DEVICE_INFO, nReserved1, 21);
QUORIN_AT(QUORIN_DEVICE_INFO, stGigEInfo, 32);

QUORIN_SIZE(QUORIN_DEVICE_INFO_LIST, 1028);
QUORIN_AT(QUORIN_DEVICE_INFO_LIST, nDeviceNum, 0);
QUORIN_AT(QUORIN_DEVICE_INFO_LIST, pDeviceInfo, 4);

QUORIN_SIZE(QUORIN_INT_VALUE, 96);
QUORIN_AT(QUORIN_INT_VALUE, nCurValue, 0);
QUORIN_AT(QUORIN_INT_VALUE, nMax, 8);
QUORIN_AT(QUORIN_INT_VALUE, nMin, 16);
QUORIN_AT(QUORIN_INT_VALUE, nInc, 24);
QUORIN_AT(QUORIN_INT_VALUE, nReserved, 32);

QUORIN_SIZE(QUORIN_ENUM_VALUE, 280);
QUORIN_AT(QUORIN_ENUM_VALUE, nCurValue, 0);
QUORIN_AT(QUORIN_ENUM_VALUE, nSupportedNum, 4);
QUORIN_AT(QUORIN_ENUM_VALUE, nSupportValue, 8);

QUORIN_SIZE(QUORIN_FLOAT_VALUE, 28);
QUORIN_AT(QUORIN_FLOAT_VALUE, fCurValue, 0);
QUORIN_AT(QUORIN_FLOAT_VALUE, fMax, 4);
QUORIN_AT(QUORIN_FLOAT_VALUE, fMin, 8);
QUORIN_AT(QUORIN_FLOAT_VALUE, nReserved, 12);

QUORIN_SIZE(QUORIN_STRING_VALUE, 272);
QUORIN_AT(QUORIN_STRING_VALUE, chCurValue, 0);
QUORIN_AT(QUORIN_STRING_VALUE, nMaxLength, 256);
QUORIN_AT(QUORIN_STRING_VALUE, nReserved, 264);

QUORIN_SIZE(QUORIN_FILE_ACCESS, 136);
QUORIN_AT(QUORIN_FILE_ACCESS, pUserFileName, 0);
QUORIN_AT(QUORIN_FILE_ACCESS, pDevFileName, 4);
QUORIN_AT(QUORIN_FILE_ACCESS, nReserved, 8);

QUORIN_SIZE(QUORIN_FILE_ACCESS_PROGRESS, 48);
QUORIN_AT(QUORIN_FILE_ACCESS_PROGRESS, nCompleted, 0);
QUORIN_AT(QUORIN_FILE_ACCESS_PROGRESS, nTotal, 8);
QUORIN_AT(QUORIN_FILE_ACCESS_PROGRESS, nReserved, 16);

QUORIN_SIZE(QUORIN_EVENT_OUT_INFO, 156);
QUORIN_AT(QUORIN_EVENT_OUT_INFO, EventName, 0);
QUORIN_AT(QUORIN_EVENT_OUT_INFO, nEventID, 128);
QUORIN_AT(QUORIN_EVENT_OUT_INFO, nStreamChannel, 130);
QUORIN_AT(QUORIN_EVENT_OUT_INFO, nBlockIdHigh, 132);
QUORIN_AT(QUORIN_EVENT_OUT_INFO, nBlockIdLow, 136);
QUORIN_AT(QUORIN_EVENT_OUT_INFO, nTimestampHigh, 140);
QUORIN_AT(QUORIN_EVENT_OUT_INFO, nTimestampLow, 144);
QUORIN_AT(QUORIN_EVENT_OUT_INFO, pEventData, 148);
QUORIN_AT(QUORIN_EVENT_OUT_INFO, nEventDataSize, 152);

QUORIN_SIZE(QUORIN_TRIGGER_INFO_DATA, 32);
QUORIN_AT(QUORIN_TRIGGER_INFO_DATA, nTriggerIndex, 0);
QUORIN_AT(QUORIN_TRIGGER_INFO_DATA, nTriggerFlag, 4);
QUORIN_AT(QUORIN_TRIGGER_INFO_DATA, nTriggerTimeHigh, 8);
QUORIN_AT(QUORIN_TRIGGER_INFO_DATA, nTriggerTimeLow, 12);
QUORIN_AT(QUORIN_TRIGGER_INFO_DATA, nOriginalTrigger, 16);
QUORIN_AT(QUORIN_TRIGGER_INFO_DATA, nIsForceOver, 20);
QUORIN_AT(QUORIN_TRIGGER_INFO_DATA, nIsMainCam, 22);
QUORIN_AT(QUORIN_TRIGGER_INFO_DATA, nHostTimeStamp, 24);

QUORIN_SIZE(QUORIN_POINT_I, 8);
QUORIN_AT(QUORIN_POINT_I, nX, 0);
QUORIN_AT(QUORIN_POINT_I, nY, 4);

QUORIN_SIZE(QUORIN_CODE_INFO, 200);
QUORIN_AT(QUORIN_CODE_INFO, nOverQuality, 0);
QUORIN_AT(QUORIN_CODE_INFO, nDeCode, 4);
QUORIN_AT(QUORIN_CODE_INFO, nSCGrade, 8);
QUORIN_AT(QUORIN_CODE_INFO, nModGrade, 12);
QUORIN_AT(QUORIN_CODE_INFO, nFPDGrade, 16);
QUORIN_AT(QUORIN_CODE_INFO, nANGrade, 20);
QUORIN_AT(QUORIN_CODE_INFO, nGNGrade, 24);
QUORIN_AT(QUORIN_CODE_INFO, nUECGrade, 28);
QUORIN_AT(QUORIN_CODE_INFO, nPGHGrade, 32);
QUORIN_AT(QUORIN_CODE_INFO, nPGVGrade, 36);
QUORIN_AT(QUORIN_CODE_INFO, fSCScore, 40);
QUORIN_AT(QUORIN_CODE_INFO, fModScore, 44);
QUORIN_AT(QUORIN_CODE_INFO, fFPDScore, 48);
QUORIN_AT(QUORIN_CODE_INFO, fAnScore, 52);
QUORIN_AT(QUORIN_CODE_INFO, fGNScore, 56);
QUORIN_AT(QUORIN_CODE_INFO, fUECScore, 60);
QUORIN_AT(QUORIN_CODE_INFO, fPGHScore, 64);
QUORIN_AT(QUORIN_CODE_INFO, fPGVScore, 68);
QUORIN_AT(QUORIN_CODE_INFO, nRMGrade, 72);
QUORIN_AT(QUORIN_CODE_INFO, fRMScore, 76);
QUORIN_AT(QUORIN_CODE_INFO, n1DEdgeGrade, 80);
QUORIN_AT(QUORIN_CODE_INFO, n1DMinRGrade, 84);
QUORIN_AT(QUORIN_CODE_INFO, n1DMinEGrade, 88);
QUORIN_AT(QUORIN_CODE_INFO, n1DDcdGrade, 92);
QUORIN_AT(QUORIN_CODE_INFO, n1DDefGrade, 96);
QUORIN_AT(QUORIN_CODE_INFO, n1DQZGrade, 100);
QUORIN_AT(QUORIN_CODE_INFO, f1DEdgeScore, 104);
QUORIN_AT(QUORIN_CODE_INFO, f1DMinRScore, 108);
QUORIN_AT(QUORIN_CODE_INFO, f1DMinEScore, 112);
QUORIN_AT(QUORIN_CODE_INFO, f1DDcdScore, 116);
QUORIN_AT(QUORIN_CODE_INFO, f1DDefScore, 120);
QUORIN_AT(QUORIN_CODE_INFO, f1DQZScore, 124);
QUORIN_AT(QUORIN_CODE_INFO, nReserved, 128);

QUORIN_SIZE(QUORIN_BCR_INFO, 648);
QUORIN_AT(QUORIN_BCR_INFO, nID, 0);
QUORIN_AT(QUORIN_BCR_INFO, chCode, 4);
QUORIN_AT(QUORIN_BCR_INFO, nLen, 260);
QUORIN_AT(QUORIN_BCR_INFO, nBarType, 264);
QUORIN_AT(QUORIN_BCR_INFO, pt, 268);
QUORIN_AT(QUORIN_BCR_INFO, pt[1], 276);
QUORIN_AT(QUORIN_BCR_INFO, pt[2], 284);
QUORIN_AT(QUORIN_BCR_INFO, pt[3], 292);
QUORIN_AT(QUORIN_BCR_INFO, stCodeQuality, 300);
QUORIN_AT(QUORIN_BCR_INFO, nAngle, 500);
QUORIN_AT(QUORIN_BCR_INFO, nMainPackageId, 504);
QUORIN_AT(QUORIN_BCR_INFO, nSubPackageId, 508);
QUORIN_AT(QUORIN_BCR_INFO, sAppearCount, 512);
QUORIN_AT(QUORIN_BCR_INFO, sPPM, 514);
QUORIN_AT(QUORIN_BCR_INFO, sAlgoCost, 516);
QUORIN_AT(QUORIN_BCR_INFO, sSharpness, 518);
QUORIN_AT(QUORIN_BCR_INFO, bIsGetQuality, 520);

QUORIN_SIZE(QUORIN_RESULT_BCR, 129620);
QUORIN_AT(QUORIN_RESULT_BCR, nCodeNum, 0);
QUORIN_AT(QUORIN_RESULT_BCR, stBcrInfo, 4);
QUORIN_AT(QUORIN_RESULT_BCR, nReserved, 129604);

QUORIN_SIZE(QUORIN_BCR_INFO_EX, 4628);
QUORIN_AT(QUORIN_BCR_INFO_EX, nID, 0);
QUORIN_AT(QUORIN_BCR_INFO_EX, chCode, 4);
QUORIN_AT(QUORIN_BCR_INFO_EX, nLen, 4100);
QUORIN_AT(QUORIN_BCR_INFO_EX, nBarType, 4104);
QUORIN_AT(QUORIN_BCR_INFO_EX, stCornerLeftTop, 4108);
QUORIN_AT(QUORIN_BCR_INFO_EX, stCornerRightTop, 4116);
QUORIN_AT(QUORIN_BCR_INFO_EX, stCornerRightBottom, 4124);
QUORIN_AT(QUORIN_BCR_INFO_EX, stCornerLeftBottom, 4132);
QUORIN_AT(QUORIN_BCR_INFO_EX, stCodeQuality, 4140);
QUORIN_AT(QUORIN_BCR_INFO_EX, nAngle, 4340);
QUORIN_AT(QUORIN_BCR_INFO_EX, nMainPackageId, 4344);
QUORIN_AT(QUORIN_BCR_INFO_EX, nSubPackageId, 4348);
QUORIN_AT(QUORIN_BCR_INFO_EX, sAppearCount, 4352);
QUORIN_AT(QUORIN_BCR_INFO_EX, sPPM, 4354);
QUORIN_AT(QUORIN_BCR_INFO_EX, sAlgoCost, 4356);
QUORIN_AT(QUORIN_BCR_INFO_EX, sSharpness, 4358);
QUORIN_AT(QUORIN_BCR_INFO_EX, bIsGetQuality, 4360);
QUORIN_AT(QUORIN_BCR_INFO_EX, nIDRScore, 4364);
QUORIN_AT(QUORIN_BCR_INFO_EX, n1DIsGetQuality, 4368);
QUORIN_AT(QUORIN_BCR_INFO_EX, nTotalProcCost, 4372);
QUORIN_AT(QUORIN_BCR_INFO_EX, nTriggerTimeTvHigh, 4376);
QUORIN_AT(QUORIN_BCR_INFO_EX, nTriggerTimeTvLow, 4380);
QUORIN_AT(QUORIN_BCR_INFO_EX, nTriggerTimeUtvHigh, 4384);
QUORIN_AT(QUORIN_BCR_INFO_EX, nTriggerTimeUtvLow, 4388);
QUORIN_AT(QUORIN_BCR_INFO_EX, nReserved, 4392);

QUORIN_SIZE(QUORIN_RESULT_BCR_EX, 1388436);
QUORIN_AT(QUORIN_RESULT_BCR_EX, nCodeNum, 0);
QUORIN_AT(QUORIN_RESULT_BCR_EX, stBcrInfoEx, 4);
QUORIN_AT(QUORIN_RESULT_BCR_EX, nReserved, 1388404);

QUORIN_SIZE(QUORIN_WAYBILL_INFO, 80);
QUORIN_AT(QUORIN_WAYBILL_INFO, fCenterX, 0);
QUORIN_AT(QUORIN_WAYBILL_INFO, fCenterY, 4);
QUORIN_AT(QUORIN_WAYBILL_INFO, fWidth, 8);
QUORIN_AT(QUORIN_WAYBILL_INFO, fHeight, 12);
QUORIN_AT(QUORIN_WAYBILL_INFO, fAngle, 16);
QUORIN_AT(QUORIN_WAYBILL_INFO, fConfidence, 20);
QUORIN_AT(QUORIN_WAYBILL_INFO, pImageWaybill, 24);
QUORIN_AT(QUORIN_WAYBILL_INFO, nImageLen, 28);
QUORIN_AT(QUORIN_WAYBILL_INFO, nReserved, 32);

QUORIN_SIZE(QUORIN_WAYBILL_LIST, 4024);
QUORIN_AT(QUORIN_WAYBILL_LIST, nWaybillNum, 0);
QUORIN_AT(QUORIN_WAYBILL_LIST, enWaybillImageType, 4);
QUORIN_AT(QUORIN_WAYBILL_LIST, stWaybillInfo, 8);

QUORIN_SIZE(QUORIN_IMAGE_OUT_INFO_EX2, 184);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nWidth, 0);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nHeight, 2);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, enPixelType, 4);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nReserved0, 8);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nTriggerIndex, 12);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nFrameNum, 16);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nFrameLen, 20);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nTimeStampHigh, 24);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nTimeStampLow, 28);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, bFlaseTrigger, 32);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nFocusScore, 36);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, bIsGetCode, 40);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, pstCodeList, 44);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, pstWaybillList, 48);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nEventID, 52);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nChannelID, 56);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nImageCost, 60);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, pstCodeListEx, 64);
QUORIN_AT(QUORIN_IMAGE_OUT_INFO_EX2, nReserved, 68);

QUORIN_SIZE(QUORIN_BcrInfo, 320);
QUORIN_AT(QUORIN_BcrInfo, nID, 0);
QUORIN_AT(QUORIN_BcrInfo, chCode, 4);
QUORIN_AT(QUORIN_BcrInfo, nLen, 260);
QUORIN_AT(QUORIN_BcrInfo, nBarType, 264);
QUORIN_AT(QUORIN_BcrInfo, pt, 268);
QUORIN_AT(QUORIN_BcrInfo, nAngle, 300);
QUORIN_AT(QUORIN_BcrInfo, nMainPackageId, 304);
QUORIN_AT(QUORIN_BcrInfo, nSubPackageId, 308);
QUORIN_AT(QUORIN_BcrInfo, sAppearCount, 312);
QUORIN_AT(QUORIN_BcrInfo, sPPM, 314);
QUORIN_AT(QUORIN_BcrInfo, sAlgoCost, 316);
QUORIN_AT(QUORIN_BcrInfo, sSharpness, 318);

QUORIN_SIZE(QUORIN_FRAME_OUT_INFO, 65628);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nWidth, 0);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nHeight, 2);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, enPixelType, 4);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nReserved0, 8);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nTriggerIndex, 12);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nFrameNum, 16);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nFrameLen, 20);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nTimeStampHigh, 24);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nTimeStampLow, 28);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nReserved1, 32);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nCodeNumber, 36);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, stBcrInfo, 40);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nBcrReserved, 65320);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, pImageWaybill, 65576);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nImageWaybillLen, 65580);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, enWaybillImageType, 65584);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, bFlaseTrigger, 65588);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nFocusScore, 65592);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nChannelID, 65596);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nImageCost, 65600);
QUORIN_AT(QUORIN_FRAME_OUT_INFO, nReserved, 65604);

QUORIN_SIZE(QUORIN_SAVE_IMAGE_PARAM, 56);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, pData, 0);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, nDataLen, 4);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, enPixelType, 8);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, nWidth, 16);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, nHeight, 18);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, pImageBuffer, 20);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, nImageLen, 24);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, nBufferSize, 28);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, enImageType, 32);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, nJpgQuality, 36);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, iMethodValue, 40);
QUORIN_AT(QUORIN_SAVE_IMAGE_PARAM, nReserved, 44);

#undef QUORIN_AT
#undef QUORIN_SIZE
#endif  // __i386__

#endif  // QUORIN_CTRL_H
