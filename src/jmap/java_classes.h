// The Java side of the bridge, in one place: every class it touches and every field it reads or
// writes, by name and JNI signature. Spellings such as nDefultGateWay and bFlaseTrigger are the
// Java interface's own and must stay as they are.
//
// JAVA_CLASS(Id, "class/Name")  and  JAVA_FIELD(Class, field, "signature"); the fields of a class
// follow it.
#pragma once

#define QUORIN_DEFINE(nested) "QuorinCtrlWrapper/QuorinCtrlDefine$" nested
#define QUORIN_DEFINE_SIG(nested) "LQuorinCtrlWrapper/QuorinCtrlDefine$" nested ";"

#define QUORIN_JAVA_MAP(JAVA_CLASS, JAVA_FIELD)                                                     \
  JAVA_CLASS(Handle, QUORIN_DEFINE("Handle"))                                                       \
  JAVA_FIELD(Handle, hHandle, "J")                                                                  \
  JAVA_FIELD(Handle, upHandle, "J")                                                                 \
  JAVA_FIELD(Handle, PayloadSize, "I")                                                              \
  JAVA_FIELD(Handle, lExceptionCallParam, "J")                                                      \
  JAVA_FIELD(Handle, lAllEventCallParam, "J")                                                       \
  JAVA_FIELD(Handle, lImageCallParam, "J")                                                          \
  JAVA_FIELD(Handle, lTriggerCallParam, "J")                                                        \
                                                                                                    \
  JAVA_CLASS(ParameterException, "QuorinCtrlWrapper/ParameterException")                            \
  JAVA_FIELD(ParameterException, errCode, "I")                                                      \
  JAVA_FIELD(ParameterException, message, "Ljava/lang/String;")                                    \
                                                                                                    \
  JAVA_CLASS(Integer, "java/lang/Integer")                                                          \
  JAVA_FIELD(Integer, value, "I")                                                                   \
                                                                                                    \
  JAVA_CLASS(DeviceInfo, QUORIN_DEFINE("QUORIN_DEVICE_INFO"))                                       \
  JAVA_FIELD(DeviceInfo, nMacAddrHigh, "I")                                                         \
  JAVA_FIELD(DeviceInfo, nMacAddrLow, "I")                                                          \
  JAVA_FIELD(DeviceInfo, nMajorVer, "S")                                                            \
  JAVA_FIELD(DeviceInfo, nMinorVer, "S")                                                            \
  JAVA_FIELD(DeviceInfo, nTLayerType, "I")                                                          \
  JAVA_FIELD(DeviceInfo, bCodeReader, "Z")                                                          \
  JAVA_FIELD(DeviceInfo, stGigEInfo, QUORIN_DEFINE_SIG("QUORIN_GIGE_DEVICE_INFO"))                  \
                                                                                                    \
  JAVA_CLASS(GigEInfo, QUORIN_DEFINE("QUORIN_GIGE_DEVICE_INFO"))                                    \
  JAVA_FIELD(GigEInfo, nCurrentIp, "I")                                                             \
  JAVA_FIELD(GigEInfo, nNetExport, "I")                                                             \
  JAVA_FIELD(GigEInfo, nCurUserIP, "I")                                                             \
  JAVA_FIELD(GigEInfo, nCurrentSubNetMask, "I")                                                     \
  JAVA_FIELD(GigEInfo, nDefultGateWay, "I")                                                         \
  JAVA_FIELD(GigEInfo, nIpCfgOption, "I")                                                           \
  JAVA_FIELD(GigEInfo, nIpCfgCurrent, "I")                                                          \
  JAVA_FIELD(GigEInfo, chManufacturerName, "Ljava/lang/String;")                                    \
  JAVA_FIELD(GigEInfo, chModelName, "Ljava/lang/String;")                                           \
  JAVA_FIELD(GigEInfo, chDeviceVersion, "Ljava/lang/String;")                                       \
  JAVA_FIELD(GigEInfo, chManufacturerSpecificInfo, "Ljava/lang/String;")                            \
  JAVA_FIELD(GigEInfo, chSerialNumber, "Ljava/lang/String;")                                        \
  JAVA_FIELD(GigEInfo, chUserDefinedName, "Ljava/lang/String;")                                     \
                                                                                                    \
  JAVA_CLASS(IntValue, QUORIN_DEFINE("QUORIN_INT_VALUE"))                                           \
  JAVA_FIELD(IntValue, nCurValue, "J")                                                              \
  JAVA_FIELD(IntValue, nMax, "J")                                                                   \
  JAVA_FIELD(IntValue, nMin, "J")                                                                   \
  JAVA_FIELD(IntValue, nInc, "J")                                                                   \
  JAVA_CLASS(EnumValue, QUORIN_DEFINE("QUORIN_ENUM_VALUE"))                                         \
  JAVA_FIELD(EnumValue, nCurValue, "I")                                                             \
  JAVA_FIELD(EnumValue, lsSupportValue, "Ljava/util/ArrayList;")                                    \
  JAVA_CLASS(FloatValue, QUORIN_DEFINE("QUORIN_FLOAT_VALUE"))                                       \
  JAVA_FIELD(FloatValue, fCurValue, "F")                                                            \
  JAVA_FIELD(FloatValue, fMax, "F")                                                                 \
  JAVA_FIELD(FloatValue, fMin, "F")                                                                 \
  JAVA_CLASS(BoolValue, QUORIN_DEFINE("QUORIN_BOOL_VALUE"))                                         \
  JAVA_FIELD(BoolValue, bCurValue, "Z")                                                             \
  JAVA_CLASS(StringValue, QUORIN_DEFINE("QUORIN_STRING_VALUE"))                                     \
  JAVA_FIELD(StringValue, chCurValue, "Ljava/lang/String;")                                         \
  JAVA_FIELD(StringValue, nMaxLength, "I")                                                          \
  JAVA_CLASS(AlgorithmIntValue, QUORIN_DEFINE("QUORIN_ALGORITHM_INT_VALUE"))                        \
  JAVA_FIELD(AlgorithmIntValue, lOutValue, "J")                                                     \
  JAVA_CLASS(NodeAccessMode, QUORIN_DEFINE("QUORIN_XML_NODE_ACCESSMODE"))                           \
  JAVA_FIELD(NodeAccessMode, accessMode, QUORIN_DEFINE_SIG("QUORIN_XML_AccessMode"))                \
  JAVA_CLASS(FileAccess, QUORIN_DEFINE("QUORIN_FILE_ACCESS"))                                       \
  JAVA_FIELD(FileAccess, pUserFileName, "Ljava/lang/String;")                                       \
  JAVA_FIELD(FileAccess, pDevFileName, "Ljava/lang/String;")                                        \
  JAVA_CLASS(FileAccessProgress, QUORIN_DEFINE("QUORIN_FILE_ACCESS_PROGRESS"))                      \
  JAVA_FIELD(FileAccessProgress, nCompleted, "J")                                                   \
  JAVA_FIELD(FileAccessProgress, nTotal, "J")                                                       \
                                                                                                    \
  JAVA_CLASS(EventOutInfo, QUORIN_DEFINE("QUORIN_EVENT_OUT_INFO"))                                  \
  JAVA_FIELD(EventOutInfo, EventName, "Ljava/lang/String;")                                         \
  JAVA_FIELD(EventOutInfo, nEventID, "S")                                                           \
  JAVA_FIELD(EventOutInfo, nStreamChannel, "S")                                                     \
  JAVA_FIELD(EventOutInfo, nBlockIdHigh, "I")                                                       \
  JAVA_FIELD(EventOutInfo, nBlockIdLow, "I")                                                        \
  JAVA_FIELD(EventOutInfo, nTimestampHigh, "I")                                                     \
  JAVA_FIELD(EventOutInfo, nTimestampLow, "I")                                                      \
  JAVA_FIELD(EventOutInfo, pEventData, "[B")                                                        \
  JAVA_FIELD(EventOutInfo, nEventDataSize, "I")                                                     \
  JAVA_CLASS(TriggerInfo, QUORIN_DEFINE("QUORIN_TRIGGER_INFO_DATA"))                                \
  JAVA_FIELD(TriggerInfo, nTriggerIndex, "I")                                                       \
  JAVA_FIELD(TriggerInfo, nTriggerFlag, "I")                                                        \
  JAVA_FIELD(TriggerInfo, nTriggerTimeHigh, "I")                                                    \
  JAVA_FIELD(TriggerInfo, nTriggerTimeLow, "I")                                                     \
  JAVA_FIELD(TriggerInfo, nOriginalTrigger, "I")                                                    \
  JAVA_FIELD(TriggerInfo, nIsForceOver, "S")                                                        \
  JAVA_FIELD(TriggerInfo, nIsMainCam, "S")                                                          \
  JAVA_FIELD(TriggerInfo, nHostTimeStamp, "J")                                                      \
                                                                                                    \
  JAVA_CLASS(FrameEx2, QUORIN_DEFINE("QUORIN_IMAGE_OUT_INFO_EX2"))                                  \
  JAVA_FIELD(FrameEx2, nWidth, "S")                                                                 \
  JAVA_FIELD(FrameEx2, nHeight, "S")                                                                \
  JAVA_FIELD(FrameEx2, enPixelType, QUORIN_DEFINE_SIG("QuorinGvspPixelType"))                       \
  JAVA_FIELD(FrameEx2, nTriggerIndex, "I")                                                          \
  JAVA_FIELD(FrameEx2, nFrameNum, "I")                                                              \
  JAVA_FIELD(FrameEx2, nFrameLen, "I")                                                              \
  JAVA_FIELD(FrameEx2, nTimeStampHigh, "I")                                                         \
  JAVA_FIELD(FrameEx2, nTimeStampLow, "I")                                                          \
  JAVA_FIELD(FrameEx2, bFlaseTrigger, "I")                                                          \
  JAVA_FIELD(FrameEx2, nFocusScore, "I")                                                            \
  JAVA_FIELD(FrameEx2, bIsGetCode, "Z")                                                             \
  JAVA_FIELD(FrameEx2, pstCodeListEx, QUORIN_DEFINE_SIG("QUORIN_RESULT_BCR_EX"))                    \
  JAVA_FIELD(FrameEx2, pstWaybillList, QUORIN_DEFINE_SIG("QUORIN_WAYBILL_LIST"))                    \
  JAVA_FIELD(FrameEx2, nEventID, "I")                                                               \
  JAVA_FIELD(FrameEx2, nChannelID, "I")                                                             \
  JAVA_FIELD(FrameEx2, nImageCost, "I")                                                             \
  JAVA_CLASS(CodeList, QUORIN_DEFINE("QUORIN_RESULT_BCR_EX"))                                       \
  JAVA_FIELD(CodeList, nCodeNum, "I")                                                               \
  JAVA_FIELD(CodeList, stBcrInfoEx, "Ljava/util/ArrayList;")                                        \
  JAVA_CLASS(Code, QUORIN_DEFINE("QUORIN_BCR_INFO_EX"))                                             \
  JAVA_FIELD(Code, nID, "I")                                                                        \
  JAVA_FIELD(Code, chCode, "Ljava/lang/String;")                                                    \
  JAVA_FIELD(Code, nLen, "I")                                                                       \
  JAVA_FIELD(Code, nBarType, "I")                                                                   \
  JAVA_FIELD(Code, stCornerLeftTop, QUORIN_DEFINE_SIG("QUORIN_POINT_I"))                            \
  JAVA_FIELD(Code, stCornerRightTop, QUORIN_DEFINE_SIG("QUORIN_POINT_I"))                           \
  JAVA_FIELD(Code, stCornerRightBottom, QUORIN_DEFINE_SIG("QUORIN_POINT_I"))                        \
  JAVA_FIELD(Code, stCornerLeftBottom, QUORIN_DEFINE_SIG("QUORIN_POINT_I"))                         \
  JAVA_FIELD(Code, stCodeQuality, QUORIN_DEFINE_SIG("QUORIN_CODE_INFO"))                            \
  JAVA_FIELD(Code, nAngle, "I")                                                                     \
  JAVA_FIELD(Code, nMainPackageId, "I")                                                             \
  JAVA_FIELD(Code, nSubPackageId, "I")                                                              \
  JAVA_FIELD(Code, sAppearCount, "S")                                                               \
  JAVA_FIELD(Code, sPPM, "S")                                                                       \
  JAVA_FIELD(Code, sAlgoCost, "S")                                                                  \
  JAVA_FIELD(Code, sSharpness, "S")                                                                 \
  JAVA_FIELD(Code, bIsGetQuality, "Z")                                                              \
  JAVA_FIELD(Code, nIDRScore, "I")                                                                  \
  JAVA_FIELD(Code, n1DIsGetQuality, "I")                                                            \
  JAVA_FIELD(Code, nTotalProcCost, "I")                                                             \
  JAVA_FIELD(Code, nTriggerTimeTvHigh, "I")                                                         \
  JAVA_FIELD(Code, nTriggerTimeTvLow, "I")                                                          \
  JAVA_FIELD(Code, nTriggerTimeUtvHigh, "I")                                                        \
  JAVA_FIELD(Code, nTriggerTimeUtvLow, "I")                                                         \
  JAVA_CLASS(PointI, QUORIN_DEFINE("QUORIN_POINT_I"))                                               \
  JAVA_FIELD(PointI, nX, "I")                                                                       \
  JAVA_FIELD(PointI, nY, "I")                                                                       \
  JAVA_CLASS(Quality, QUORIN_DEFINE("QUORIN_CODE_INFO"))                                            \
  JAVA_FIELD(Quality, nOverQuality, "I")                                                            \
  JAVA_FIELD(Quality, nDeCode, "I")                                                                 \
  JAVA_FIELD(Quality, nSCGrade, "I")                                                                \
  JAVA_FIELD(Quality, nModGrade, "I")                                                               \
  JAVA_FIELD(Quality, nFPDGrade, "I")                                                               \
  JAVA_FIELD(Quality, nANGrade, "I")                                                                \
  JAVA_FIELD(Quality, nGNGrade, "I")                                                                \
  JAVA_FIELD(Quality, nUECGrade, "I")                                                               \
  JAVA_FIELD(Quality, nPGHGrade, "I")                                                               \
  JAVA_FIELD(Quality, nPGVGrade, "I")                                                               \
  JAVA_FIELD(Quality, fSCScore, "F")                                                                \
  JAVA_FIELD(Quality, fModScore, "F")                                                               \
  JAVA_FIELD(Quality, fFPDScore, "F")                                                               \
  JAVA_FIELD(Quality, fAnScore, "F")                                                                \
  JAVA_FIELD(Quality, fGNScore, "F")                                                                \
  JAVA_FIELD(Quality, fUECScore, "F")                                                               \
  JAVA_FIELD(Quality, fPGHScore, "F")                                                               \
  JAVA_FIELD(Quality, fPGVScore, "F")                                                               \
  JAVA_FIELD(Quality, nRMGrade, "I")                                                                \
  JAVA_FIELD(Quality, fRMScore, "F")                                                                \
  JAVA_FIELD(Quality, n1DEdgeGrade, "I")                                                            \
  JAVA_FIELD(Quality, n1DMinRGrade, "I")                                                            \
  JAVA_FIELD(Quality, n1DMinEGrade, "I")                                                            \
  JAVA_FIELD(Quality, n1DDcdGrade, "I")                                                             \
  JAVA_FIELD(Quality, n1DDefGrade, "I")                                                             \
  JAVA_FIELD(Quality, n1DQZGrade, "I")                                                              \
  JAVA_FIELD(Quality, f1DEdgeScore, "F")                                                            \
  JAVA_FIELD(Quality, f1DMinRScore, "F")                                                            \
  JAVA_FIELD(Quality, f1DMinEScore, "F")                                                            \
  JAVA_FIELD(Quality, f1DDcdScore, "F")                                                             \
  JAVA_FIELD(Quality, f1DDefScore, "F")                                                             \
  JAVA_FIELD(Quality, f1DQZScore, "F")                                                              \
  JAVA_CLASS(WaybillList, QUORIN_DEFINE("QUORIN_WAYBILL_LIST"))                                     \
  JAVA_FIELD(WaybillList, nWaybillNum, "I")                                                         \
  JAVA_FIELD(WaybillList, enWaybillImageType, QUORIN_DEFINE_SIG("QUORIN_IMAGE_TYPE"))               \
  JAVA_FIELD(WaybillList, stWaybillInfo, "Ljava/util/ArrayList;")                                   \
  JAVA_CLASS(Waybill, QUORIN_DEFINE("QUORIN_WAYBILL_INFO"))                                         \
  JAVA_FIELD(Waybill, fCenterX, "F")                                                                \
  JAVA_FIELD(Waybill, fCenterY, "F")                                                                \
  JAVA_FIELD(Waybill, fWidth, "F")                                                                  \
  JAVA_FIELD(Waybill, fHeight, "F")                                                                 \
  JAVA_FIELD(Waybill, fAngle, "F")                                                                  \
  JAVA_FIELD(Waybill, fConfidence, "F")                                                             \
  JAVA_FIELD(Waybill, pImageWaybill, "[B")                                                          \
  JAVA_FIELD(Waybill, nImageLen, "I")                                                               \
                                                                                                    \
  JAVA_CLASS(LegacyFrame, QUORIN_DEFINE("QUORIN_FRAME_OUT_INFO"))                                   \
  JAVA_FIELD(LegacyFrame, nWidth, "S")                                                              \
  JAVA_FIELD(LegacyFrame, nHeight, "S")                                                             \
  JAVA_FIELD(LegacyFrame, enPixelType, QUORIN_DEFINE_SIG("QuorinGvspPixelType"))                    \
  JAVA_FIELD(LegacyFrame, nTriggerIndex, "I")                                                       \
  JAVA_FIELD(LegacyFrame, nFrameNum, "I")                                                           \
  JAVA_FIELD(LegacyFrame, nFrameLen, "I")                                                           \
  JAVA_FIELD(LegacyFrame, nTimeStampHigh, "I")                                                      \
  JAVA_FIELD(LegacyFrame, nTimeStampLow, "I")                                                       \
  JAVA_FIELD(LegacyFrame, nChannelID, "I")                                                          \
  JAVA_FIELD(LegacyFrame, nImageCost, "I")                                                          \
  JAVA_FIELD(LegacyFrame, pImageWaybill, "[B")                                                      \
  JAVA_FIELD(LegacyFrame, nImageWaybillLen, "I")                                                    \
  JAVA_FIELD(LegacyFrame, enWaybillImageType, QUORIN_DEFINE_SIG("QUORIN_IMAGE_TYPE"))               \
  JAVA_FIELD(LegacyFrame, bFlaseTrigger, "I")                                                       \
  JAVA_FIELD(LegacyFrame, nFocusScore, "I")                                                         \
  JAVA_FIELD(LegacyFrame, nCodeNumber, "I")                                                         \
  JAVA_FIELD(LegacyFrame, bcrinfoList, "Ljava/util/ArrayList;")                                     \
  JAVA_CLASS(LegacyCode, QUORIN_DEFINE("QUORIN_BcrInfo"))                                           \
  JAVA_FIELD(LegacyCode, nID, "I")                                                                  \
  JAVA_FIELD(LegacyCode, chCode, "[B")                                                              \
  JAVA_FIELD(LegacyCode, nLen, "I")                                                                 \
  JAVA_FIELD(LegacyCode, nBarType, "I")                                                             \
  JAVA_FIELD(LegacyCode, pointList, "Ljava/util/ArrayList;")                                        \
  JAVA_FIELD(LegacyCode, nAngle, "I")                                                               \
  JAVA_FIELD(LegacyCode, nMainPackageId, "I")                                                       \
  JAVA_FIELD(LegacyCode, nSubPackageId, "I")                                                        \
  JAVA_FIELD(LegacyCode, sAppearCount, "S")                                                         \
  JAVA_FIELD(LegacyCode, sPPM, "S")                                                                 \
  JAVA_FIELD(LegacyCode, sAlgoCost, "S")                                                            \
  JAVA_FIELD(LegacyCode, sSharpness, "S")                                                           \
  JAVA_CLASS(LegacyPoint, QUORIN_DEFINE("QUORIN_POINT"))                                            \
  JAVA_FIELD(LegacyPoint, x, "I")                                                                   \
  JAVA_FIELD(LegacyPoint, y, "I")                                                                   \
                                                                                                    \
  JAVA_CLASS(SaveImageParam, QUORIN_DEFINE("QUORIN_SAVE_IMAGE_PARAM"))                              \
  JAVA_FIELD(SaveImageParam, pData, "[B")                                                           \
  JAVA_FIELD(SaveImageParam, nDataLen, "I")                                                         \
  JAVA_FIELD(SaveImageParam, enPixelType, QUORIN_DEFINE_SIG("QuorinGvspPixelType"))                 \
  JAVA_FIELD(SaveImageParam, nWidth, "S")                                                           \
  JAVA_FIELD(SaveImageParam, nHeight, "S")                                                          \
  JAVA_FIELD(SaveImageParam, pImageBuffer, "[B")                                                    \
  JAVA_FIELD(SaveImageParam, nImageLen, "I")                                                        \
  JAVA_FIELD(SaveImageParam, nBufferSize, "I")                                                      \
  JAVA_FIELD(SaveImageParam, enImageType, QUORIN_DEFINE_SIG("QUORIN_IMAGE_TYPE"))                   \
  JAVA_FIELD(SaveImageParam, nJpgQuality, "I")                                                      \
  JAVA_FIELD(SaveImageParam, iMethodValue, "I")                                                     \
                                                                                                    \
  JAVA_CLASS(PixelType, QUORIN_DEFINE("QuorinGvspPixelType"))                                       \
  JAVA_FIELD(PixelType, nValue, "I")                                                                \
  JAVA_CLASS(ImageType, QUORIN_DEFINE("QUORIN_IMAGE_TYPE"))                                         \
  JAVA_FIELD(ImageType, nValue, "I")                                                                \
  JAVA_CLASS(AccessMode, QUORIN_DEFINE("QUORIN_XML_AccessMode"))                                    \
                                                                                                    \
  JAVA_CLASS(ArrayList, "java/util/ArrayList")                                                      \
  JAVA_CLASS(String, "java/lang/String")                                                            \
  JAVA_CLASS(Thread, "java/lang/Thread")                                                            \
  JAVA_CLASS(ClassLoader, "java/lang/ClassLoader")
