// Control interface of the stand-in device SDK: its own status words, and the
// functions with which tests install readers, script failures and read back the
// calls that the SDK functions received.
#pragma once

#include <string>
#include <vector>

#include "QuorinCtrl.h"

#define QSIM_API __attribute__((visibility("default")))

namespace qsim {

// Status words of the stand-in, in a range of its own so that a test can tell
// them from the bridge's words (0x8002xxxx).
constexpr unsigned int kInvalidHandle = 0x80060001;   // null, unknown or destroyed handle
constexpr unsigned int kNotSupported = 0x80060002;    // the reader lacks the function
constexpr unsigned int kWrongCallOrder = 0x80060003;  // e.g. grabbing before opening
constexpr unsigned int kBadParameter = 0x80060004;    // null pointer or value out of its domain
constexpr unsigned int kNoSuchDevice = 0x80060005;    // no reader matches the record or serial
constexpr unsigned int kBusy = 0x80060006;            // already open (or started) through this handle
constexpr unsigned int kNotOpen = 0x80060007;         // the handle has not opened its reader
constexpr unsigned int kNoData = 0x80060008;          // no frame within the time-out
constexpr unsigned int kAccessDenied = 0x80060009;    // the reader is held through another handle
constexpr unsigned int kResource = 0x8006000A;        // out of memory or buffers
constexpr unsigned int kUnknownNode = 0x80060101;     // no feature node of that name
constexpr unsigned int kWrongNodeType = 0x80060102;   // node exists with another type
constexpr unsigned int kOutOfRange = 0x80060103;      // value outside the node's range or increment
constexpr unsigned int kNotWritable = 0x80060104;
constexpr unsigned int kNotReadable = 0x80060105;
constexpr unsigned int kUnknown = 0x800600FF;

// Version word reported until SetSdkVersion: 3.1.0.5.
constexpr unsigned int kDefaultSdkVersion = 0x03010005;

// Default readers, all reachable, everything recorded from a clean log; handles are dropped.
QSIM_API void Reset();

// From now on `function` returns `status` without doing its work; status 0 clears the script.
// A scripted QUORIN_IsDeviceAccessible answers false; a scripted enumeration leaves the
// list untouched; a scripted creator creates nothing.
QSIM_API void ScriptStatus(const std::string& function, unsigned int status);

// One SDK call as it arrived.
struct Call {
  std::string function;
  void* handle = nullptr;                   // the handle argument, if the function takes one
  std::vector<std::string> texts;           // string arguments in order (a null string is left out)
  std::vector<unsigned long long> numbers;  // integer arguments in order (zero-extended)
  std::vector<unsigned char> record;        // byte copy of the input record, if any
};

QSIM_API std::vector<Call> Calls();  // every SDK call since Reset/ClearCalls, in order
QSIM_API std::vector<Call> CallsTo(const std::string& function);
QSIM_API void ClearCalls();

QSIM_API std::vector<QUORIN_DEVICE_INFO> DefaultReaders();  // the records Reset() installs
// Replaces the readers every enumeration reports and handles can be created on;
// handles made before keep their reader.
QSIM_API void SetReaders(const std::vector<QUORIN_DEVICE_INFO>& readers);
QSIM_API void SetSdkVersion(unsigned int version);
QSIM_API void SetAccessible(bool accessible);  // the answer of QUORIN_IsDeviceAccessible

}  // namespace qsim
