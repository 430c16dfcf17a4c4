// Control interface of the reader's slower jobs: waybill extraction, algorithm parameters,
// device files and firmware upgrades. Included by QuorinSim.h; Reset() restores all of it.
#pragma once

#include <string>
#include <vector>

#include "QuorinCtrl.h"

#ifndef QSIM_API
#define QSIM_API __attribute__((visibility("default")))
#endif

namespace qsim {

// What QUORIN_GetWayBillInfoEx received last on a handle, copied before it answered.
struct WaybillRequest {
  QUORIN_IMAGE_OUT_INFO_EX2 info{};   // the record as sent; its pointers are not meaningful here
  std::vector<QUORIN_BCR_INFO> codes;  // the plain code list's entries, nCodeNum of them
  unsigned int extendedCodeCount = 0;  // nCodeNum of the extended list, 0 when none came
  QUORIN_WAYBILL_LIST waybills{};      // the waybill list as sent, before the answer replaced it
  std::vector<unsigned char> image;    // the image argument: nWidth x nHeight bytes, or nFrameLen if fewer
};

// QUORIN_GetWayBillInfoEx cuts one waybill per code of the plain code list: the bounding box of
// the code's first three corners, grown by this many pixels on every side and clipped to the image.
constexpr unsigned int kWaybillMargin = 24;

// The GVCP time-out of a device handle until QUORIN_GIGE_SetGvcpTimeout, and the most it accepts.
constexpr unsigned int kDefaultGvcpTimeoutMs = 500;
constexpr unsigned int kMaxGvcpTimeoutMs = 10000;

// The controls below throw std::invalid_argument for a handle that is not a live device handle.
// Empty (all zero) when the handle has made no waybill request yet.
QSIM_API WaybillRequest LastWaybillRequest(void* handle);
// The reader's waybill switch: on by default for QR-WB-800, off for the others.
QSIM_API bool WaybillEnabled(void* handle);
// Defines or replaces an integer parameter of the reader's decoding algorithm.
QSIM_API void SetAlgorithmInt(void* handle, const std::string& key, int value, int min, int max);
// A file the reader keeps ("UserSet1" and "DeviceLog" from the start); empty if it has none.
QSIM_API std::vector<unsigned char> DeviceFile(void* handle, const std::string& name);
QSIM_API void PutDeviceFile(void* handle, const std::string& name, const std::vector<unsigned char>& bytes);

// Device file transfers move `bytesPerChunk` (at least 1) and then pause `millisecondsPerChunk`
// (default 65536 bytes, 1 ms).
QSIM_API void SetTransferPace(unsigned int bytesPerChunk, unsigned int millisecondsPerChunk);
// Firmware upgrades started from now on take this long from 0 to 100 (default 1000 ms).
QSIM_API void SetUpgradeDuration(unsigned int milliseconds);

}  // namespace qsim
