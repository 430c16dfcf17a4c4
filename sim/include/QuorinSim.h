// Control interface of the stand-in device SDK: its own status words, and the
// functions with which tests install readers, script failures and read back the
// calls that the SDK functions received.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "QuorinCtrl.h"
#include "QuorinCtrlMembers.h"

#define QSIM_API __attribute__((visibility("default")))

namespace qsim {

// The grade and score members of a code's quality record, for filling one field by field.
#define QSIM_GRADE(member) &QUORIN_CODE_INFO::member,
#define QSIM_SCORE(member) &QUORIN_CODE_INFO::member,
#define QSIM_SKIP(member)
inline constexpr int QUORIN_CODE_INFO::*kQualityGrades[] = {QUORIN_QUALITY_MEMBERS(QSIM_GRADE, QSIM_SKIP)};
inline constexpr float QUORIN_CODE_INFO::*kQualityScores[] = {QUORIN_QUALITY_MEMBERS(QSIM_SKIP, QSIM_SCORE)};
#undef QSIM_GRADE
#undef QSIM_SCORE
#undef QSIM_SKIP

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
constexpr unsigned int kDeviceGone = 0x8006000B;      // the connection to the open reader was lost
constexpr unsigned int kUnknownNode = 0x80060101;     // no feature node of that name
constexpr unsigned int kWrongNodeType = 0x80060102;   // node exists with another type
constexpr unsigned int kOutOfRange = 0x80060103;      // value outside the node's range or increment
constexpr unsigned int kNotWritable = 0x80060104;
constexpr unsigned int kNotReadable = 0x80060105;
constexpr unsigned int kBufferTooSmall = 0x80060201;        // the output does not fit; its length is reported
constexpr unsigned int kNoSuchFile = 0x80060202;            // a host file that cannot be read or written
constexpr unsigned int kNoSuchDeviceFile = 0x80060203;      // the reader keeps no file of that name
constexpr unsigned int kUnsupportedFormat = 0x80060204;     // an image type other than BMP, JPEG or PNG
constexpr unsigned int kUnsupportedPixelType = 0x80060205;  // pixels other than Mono8
constexpr unsigned int kBadFirmware = 0x80060207;           // an empty firmware file
constexpr unsigned int kUnknown = 0x800600FF;

// Version word reported until SetSdkVersion: 3.1.0.5.
constexpr unsigned int kDefaultSdkVersion = 0x03010005;

// Device events of grabbing, with 8 bytes of data: the device time in microseconds, little-endian.
constexpr unsigned short kAcquisitionStartEventId = 0x9001;  // "AcquisitionStart"
constexpr unsigned short kAcquisitionEndEventId = 0x9002;    // "AcquisitionEnd"; none when the device is lost
// nTriggerFlag of a trigger notice: the frame was made in free run, or by a software trigger.
constexpr unsigned int kFreeRunTriggerFlag = 0;
constexpr unsigned int kSoftwareTriggerFlag = 1;

// Frames waiting per channel; when a queue is full the oldest frame is lost.
constexpr unsigned int kFrameQueueCapacity = 8;
// The first frame number of every channel after grabbing starts: close to the 32-bit wrap.
constexpr unsigned int kFirstFrameNumber = 0xFFFFFFF0;
// Channels a reader can serve; a larger ChannelCount node is served as this many.
constexpr unsigned int kMaxChannels = 16;

// Default readers with default nodes, all reachable, everything recorded from a clean log,
// automatic frames on; producers are stopped and handles are dropped.
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

// From now on `function` copies `bytes` into its output record (at most the record's size) and
// returns `status`, without doing its work; an empty vector clears it. For the getters whose
// output is a record: QUORIN_GetIntValue, GetEnumValue, GetFloatValue, GetStringValue,
// GetBoolValue (1 byte), GetDeviceInfo, GetOneFrameTimeoutEx2 and MSC_GetOneFrameTimeout (the
// EX2 record; *ppData is then left null).
QSIM_API void ScriptOutput(const std::string& function, const std::vector<unsigned char>& bytes,
                           unsigned int status = 0);

// Feature nodes of the reader behind an SDK handle, open or not. Each call replaces the node
// whatever it was; a handle that is not a live device handle throws std::invalid_argument.
enum class Access { kReadWrite, kReadOnly, kWriteOnly, kNotAvailable };
QSIM_API void SetIntNode(void* handle, const std::string& name, long long value, long long min,
                         long long max, long long inc, Access access = Access::kReadWrite);
QSIM_API void SetFloatNode(void* handle, const std::string& name, float value, float min, float max,
                           Access access = Access::kReadWrite);
QSIM_API void SetStringNode(void* handle, const std::string& name, const std::string& bytes,
                            long long maxLength, Access access = Access::kReadWrite);
QSIM_API void SetEnumNode(void* handle, const std::string& name, unsigned int value,
                          const std::vector<std::pair<std::string, unsigned int>>& entries,
                          Access access = Access::kReadWrite);
QSIM_API void SetBoolNode(void* handle, const std::string& name, bool value,
                          Access access = Access::kReadWrite);
QSIM_API void RemoveNode(void* handle, const std::string& name);  // then kUnknownNode

// A waybill of a frame; the stand-in sets info.pImageWaybill and info.nImageLen from `image`.
struct Waybill {
  QUORIN_WAYBILL_INFO info{};
  std::vector<unsigned char> image;
};

// A frame as a fetch delivers it.
struct Frame {
  QUORIN_IMAGE_OUT_INFO_EX2 info{};       // header as delivered, nFrameLen included (not derived);
                                          // the list pointers are set by the stand-in
  std::vector<unsigned char> image;       // bytes behind *ppData
  bool nullImage = false;                 // *ppData stays null
  std::vector<QUORIN_BCR_INFO_EX> codes;  // copied into the extended code list (at most its capacity)
  long long reportedCodeCount = -1;       // nCodeNum as delivered; -1 means codes.size()
  unsigned int waybillImageType = QUORIN_Image_Bmp;
  std::vector<Waybill> waybills;          // at most the list's capacity are stored
  long long reportedWaybillCount = -1;    // nWaybillNum as delivered; -1 means waybills.size()
};

// Whether producers make frames (default on; Reset turns it on). Pushed frames come either way.
QSIM_API void SetAutoFrames(bool on);
// Queued like a produced frame, grabbing or not; StopGrabbing drops what is queued. While grabbing,
// a channel with an image callback hands the frame to it instead, on a thread of the stand-in, and
// PushFrame returns after the callback. A channel of kMaxChannels or more throws std::invalid_argument.
QSIM_API void PushFrame(void* handle, const Frame& frame, unsigned int channel = 0);
// Every later fetch on that channel returns this frame at once, its nFrameNum one higher each
// time, with no waiting and no copying per fetch (for benchmarks); cleared by Reset or StopGrabbing.
QSIM_API void RepeatFrame(void* handle, const Frame& frame, unsigned int channel = 0);
// Oldest frames lost to a full queue on that channel since grabbing last started.
QSIM_API unsigned long long FramesDropped(void* handle, unsigned int channel = 0);

// Callbacks. Registrations need the reader held open through the handle and end when it closes;
// QUORIN_RegisterImageCallBackEx2 registers for channel 0. Every callback runs on a thread of the
// stand-in: produced frames, their trigger notices (one per frame, before it) and the grabbing events
// on the reader's producer, the rest on a thread made for the call. StopGrabbing, CloseDevice,
// DestroyHandle and Reset return only once no callback of the reader runs any more, apart from one
// the caller is itself inside. The controls below throw std::invalid_argument for a handle that is
// not a live device handle, and for a channel of kMaxChannels or more.

// Each Fire* runs the reader's registered callback once on a thread of the stand-in and returns after
// it has returned; false when no callback is registered for it.
QSIM_API bool FireException(void* handle, unsigned int msgType);
// pEventData/nEventDataSize are set from `data` unless data is empty and event.pEventData is non-null
// (then the event is delivered as given).
QSIM_API bool FireEvent(void* handle, const QUORIN_EVENT_OUT_INFO& event, const std::vector<unsigned char>& data);
QSIM_API bool FireTrigger(void* handle, const QUORIN_TRIGGER_INFO_DATA& trigger);
// The frame is materialised as a fetch would deliver it; grabbing or not.
QSIM_API bool FireImage(void* handle, const Frame& frame, unsigned int channel = 0);
// The reader held open through `handle` drops off the network: grabbing ends (waiting fetches answer
// kDeviceGone), the exception callback gets QUORIN_EXCEPTION_DEV_DISCONNECT once, on a thread of the
// stand-in, before this returns, and every later SDK call on the handle answers kDeviceGone until it
// is closed or destroyed; after closing, the reader can be opened again. Throws std::invalid_argument
// when the handle does not hold its reader open.
QSIM_API void SimulateDisconnect(void* handle);
// Image callbacks delivered on that channel since grabbing last started.
QSIM_API unsigned long long CallbackDeliveries(void* handle, unsigned int channel = 0);

}  // namespace qsim

#include "QuorinSimJobs.h"
