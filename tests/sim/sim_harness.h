// What the stand-in's suites share: a fresh stand-in per test, its readers, and short ways to
// open, grab and fetch.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "QuorinCtrl.h"
#include "QuorinSim.h"

namespace qsim_test {

using Bytes = std::vector<unsigned char>;

constexpr const char* k2DReader = "QN2405C0117";
constexpr const char* kMultiChannelReader = "QN2403M0042";
constexpr const char* kWaybillReader = "QN2311W0008";

inline unsigned int AsWord(int status) { return static_cast<unsigned int>(status); }

template <typename Record>
Bytes BytesOf(const Record& record) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(&record);
  return Bytes(bytes, bytes + sizeof record);
}

inline std::string TempPath(const std::string& name) { return testing::TempDir() + "qsim-" + name; }

inline QUORIN_BCR_INFO_EX CodeWithText(unsigned int id, const std::string& text) {
  QUORIN_BCR_INFO_EX code{};
  code.nID = id;
  std::memcpy(code.chCode, text.data(), std::min(text.size(), sizeof code.chCode));
  code.nLen = static_cast<unsigned int>(text.size());
  return code;
}

// A frame as a fetch handed it over.
struct Delivered {
  int status = -1;
  unsigned char* data = nullptr;
  QUORIN_IMAGE_OUT_INFO_EX2 info{};
};

inline Delivered FetchEx2(void* handle, unsigned int timeoutMs = 2000) {
  Delivered delivered;
  delivered.status = QUORIN_GetOneFrameTimeoutEx2(handle, &delivered.data, &delivered.info, timeoutMs);
  return delivered;
}

inline Delivered FetchChannel(void* handle, unsigned int channel, unsigned int timeoutMs = 2000) {
  Delivered delivered;
  delivered.status = QUORIN_MSC_GetOneFrameTimeout(handle, &delivered.data, &delivered.info, channel, timeoutMs);
  return delivered;
}

class StandInTest : public ::testing::Test {
 protected:
  void SetUp() override { qsim::Reset(); }

  static void* Create(const char* serial) {
    void* handle = nullptr;
    EXPECT_EQ(0, QUORIN_CreateHandleBySerialNumber(&handle, serial));
    return handle;
  }
  static void* Open(const char* serial) {
    void* handle = Create(serial);
    EXPECT_EQ(0, QUORIN_OpenDevice(handle));
    return handle;
  }
  // Opened and sized small at a brisk rate; started unless asked not to.
  static void* Grabbing(const char* serial, bool start = true, bool triggered = false) {
    void* handle = Open(serial);
    EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Width", 64));
    EXPECT_EQ(0, QUORIN_SetIntValue(handle, "Height", 64));
    EXPECT_EQ(0, QUORIN_SetFloatValue(handle, "AcquisitionFrameRate", 200));
    EXPECT_EQ(0, QUORIN_SetEnumValue(handle, "TriggerMode", triggered ? 1 : 0));
    if (start) {
      EXPECT_EQ(0, QUORIN_StartGrabbing(handle));
    }
    return handle;
  }
};

}  // namespace qsim_test
