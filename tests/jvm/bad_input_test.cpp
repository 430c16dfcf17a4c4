// Every native method called as a hostile program would call it: each reference argument null in
// turn, handles never created or already destroyed, extreme numbers, unusable texts, short arrays,
// and records with null or mistyped parts. Each call must answer as documented, reach the SDK with
// nothing but what the Java side holds, and leave the JVM alive.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <set>

#include "QuorinSim.h"
#include "jvm_harness.h"

// Each row of the table names only the fields it needs; the rest keep their defaults.
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"

namespace quorin_test {
namespace {

// A call's result as one comparable word: the status in hex ("0" for success), "true"/"false",
// "object"/"null", after the simple name of any exception it left pending ("Name|result"); a
// ParameterException also shows its errCode.
using Outcome = std::string;

std::string Hex(jint status) {
  if (status == 0) return "0";
  char text[16];
  std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned int>(status));
  return text;
}

const std::string kBad = Hex(kBadArgument);
const std::string kNull = Hex(kNullHandle);
const std::string kInvalidHandle = Hex(static_cast<jint>(qsim::kInvalidHandle));
const std::string kSdkBadParameter = Hex(static_cast<jint>(qsim::kBadParameter));
const std::string kUnknownNode = Hex(static_cast<jint>(qsim::kUnknownNode));
const std::string kOutOfRange = Hex(static_cast<jint>(qsim::kOutOfRange));

// The parameter descriptors of a method descriptor, "(ILjava/lang/String;[B)I" → {"I", "Ljava/lang/String;", "[B"}.
std::vector<std::string> Parameters(const std::string& descriptor) {
  std::vector<std::string> types;
  for (size_t i = 1; descriptor[i] != ')';) {
    size_t end = i;
    while (descriptor[end] == '[') ++end;
    end = descriptor[end] == 'L' ? descriptor.find(';', end) + 1 : end + 1;
    types.push_back(descriptor.substr(i, end - i));
    i = end;
  }
  return types;
}

const std::string kStringType = "Ljava/lang/String;";
const std::string kCallbackType = "Ljava/lang/Object;";
const std::string kIntegerType = "Ljava/lang/Integer;";

enum class State { kNone, kCreated, kOpen, kGrabbing, kUpgrade };

class BadInputTest;
using Args = std::vector<jvalue>;
using Edit = std::function<void(BadInputTest&, Args&)>;

// What a native needs for a call it accepts, and what it answers where the generic rules below
// (null Handle 0x80020000, other null references 0x80020004, stale handles the SDK's invalid
// handle) do not say it.
struct Case {
  const char* name;
  State state = State::kNone;
  int reader = 0;
  std::vector<std::string> texts;   // a usable value for each text argument, in order
  std::vector<double> numbers;      // a usable value for each number argument, in order
  jsize bytes = 0;                  // the length of a usable byte array
  const char* callback = nullptr;   // the class of a usable callback object
  Outcome ok = "0";                 // the answer to the usable call
  Outcome badText = kUnknownNode;   // the answer when any one text is unusable
  std::map<std::string, Outcome> answers;           // by mutation label, e.g. "2:min"
  Edit prepare;                                     // finishes the usable arguments
  std::vector<std::tuple<std::string, Edit, Outcome>> faults;  // broken records and their answers
};

class BadInputTest : public JvmTest {
 public:
  std::vector<Case> Table();

  jobject Device(int reader) { return ListGet(CallObject("QUORIN_EnumIDDevices", "()Ljava/util/ArrayList;"), reader); }
  jobject Nested(jobject owner, const char* field, const char* nested) {
    return Object(owner, field, "L" + Define(nested) + ";");
  }
  jobject ThrowingList() { return New("QuorinTest/ThrowingList"); }
  // A list field holding one object of the wrong class, as a raw-typed Java caller can make it.
  void MistypedEntry(jobject owner, const char* field) {
    jobject list = Object(owner, field, "Ljava/util/ArrayList;");
    env_->CallBooleanMethod(list, env_->GetMethodID(env_->GetObjectClass(list), "add", "(Ljava/lang/Object;)Z"),
                            Str("not a record"));
    Checked();
  }

  // A Handle in `state` on `reader`, or the upgrade handle.
  jobject HandleIn(State state, int reader) {
    if (state == State::kUpgrade) return CallObject("QUORIN_CreateHandleForUpgradeAndEncryption", ("()" + kHandleSig).c_str());
    jobject handle = OpenReader(reader, state != State::kCreated);
    if (state == State::kGrabbing) {
      // Small frames keep the arrays of every mutation cheap.
      qsim::SetIntNode(SdkHandle(handle), "Width", 64, 64, 64, 1);
      qsim::SetIntNode(SdkHandle(handle), "Height", 48, 48, 48, 1);
      EXPECT_EQ(OnHandle("QUORIN_StartGrabbing", handle), 0);
    }
    return handle;
  }
  // A Handle whose SDK handle was destroyed; it still claims a frame size. Never opened, so that
  // it does not take the reader from the call's own handle.
  jobject DestroyedHandle(const Case& c) {
    const bool upgrade = c.state == State::kUpgrade;
    jobject handle = HandleIn(upgrade ? State::kUpgrade : State::kCreated, c.reader);
    SetInt(handle, "PayloadSize", c.bytes);
    OnHandle(upgrade ? "QUORIN_DestroyHandleForUpgradeAndEncryption" : "QUORIN_DestroyHandle", handle);
    return handle;
  }
  // A Handle object Java made itself: its SDK handles point nowhere, yet it claims a frame size.
  jobject NeverCreatedHandle(const Case& c) {
    jobject handle = NewDefine("Handle");
    SetLong(handle, "hHandle", 0x5A5A5A5A);
    SetLong(handle, "upHandle", 0x5A5A5A5A);
    SetInt(handle, "PayloadSize", c.bytes);
    return handle;
  }
  jstring UnpairedSurrogate() {
    const jchar chars[] = {'K', 0xD800, 'y'};
    return env_->NewString(chars, 3);
  }

  Args UsableArgs(const Case& c, const std::vector<std::string>& types) {
    Args args(types.size());
    size_t text = 0;
    size_t number = 0;
    for (size_t i = 0; i < types.size(); ++i) {
      const std::string& type = types[i];
      jvalue& arg = args[i];
      if (type == kHandleSig) arg.l = HandleIn(c.state, c.reader);
      else if (type == kStringType) arg.l = Str(c.texts.at(text++));
      else if (type == "[B") arg.l = env_->NewByteArray(c.bytes);
      else if (type == kCallbackType) arg.l = New(c.callback);
      else if (type == kIntegerType) arg.l = NewInteger(0);
      else if (type == kDeviceInfoSig) arg.l = Device(c.reader);
      else if (type[0] == 'L') arg.l = New(type.substr(1, type.size() - 2));
      else if (type == "I") arg.i = static_cast<jint>(c.numbers.at(number++));
      else if (type == "J") arg.j = static_cast<jlong>(c.numbers.at(number++));
      else if (type == "F") arg.f = static_cast<jfloat>(c.numbers.at(number++));
      else if (type == "Z") arg.z = JNI_TRUE;
    }
    if (c.prepare) c.prepare(*this, args);
    return args;
  }

  // Every single-argument mutation of a usable call, with its label.
  std::vector<std::pair<std::string, Edit>> Mutations(const Case& c, const std::vector<std::string>& types) {
    std::vector<std::pair<std::string, Edit>> mutations;
    auto add = [&](size_t i, const char* what, std::function<void(BadInputTest&, jvalue&)> edit) {
      mutations.emplace_back(std::to_string(i) + ":" + what, [i, edit](BadInputTest& t, Args& args) { edit(t, args[i]); });
    };
    for (size_t i = 0; i < types.size(); ++i) {
      const std::string& type = types[i];
      if (type[0] == 'L' || type[0] == '[') add(i, "null", [](BadInputTest&, jvalue& v) { v.l = nullptr; });
      if (type == kHandleSig) {
        add(i, "never-created", [&c](BadInputTest& t, jvalue& v) { v.l = t.NeverCreatedHandle(c); });
        add(i, "destroyed", [&c](BadInputTest& t, jvalue& v) { v.l = t.DestroyedHandle(c); });
      } else if (type == kStringType) {
        add(i, "empty", [](BadInputTest& t, jvalue& v) { v.l = t.Str(""); });
        add(i, "1MB", [](BadInputTest& t, jvalue& v) { v.l = t.Str(std::string(1 << 20, 'W')); });
        add(i, "surrogate", [](BadInputTest& t, jvalue& v) { v.l = t.UnpairedSurrogate(); });
        add(i, "format", [](BadInputTest& t, jvalue& v) { v.l = t.Str("%s%n%s%n"); });
      } else if (type == "[B") {
        for (const auto& [what, length] : {std::pair{"len0", 0}, {"len1", 1}, {"short", c.bytes - 1}}) {
          add(i, what, [length = length](BadInputTest& t, jvalue& v) { v.l = t.env_->NewByteArray(length); });
        }
      } else if (type == "I" || type == "J") {
        const bool wide = type == "J";
        using Limits = std::numeric_limits<jlong>;
        for (const auto& [what, value] : {std::pair{"min", wide ? Limits::min() : std::numeric_limits<jint>::min()},
                                          {"-1", jlong{-1}}, {"max", wide ? Limits::max() : std::numeric_limits<jint>::max()}}) {
          add(i, what, [wide, value = value](BadInputTest&, jvalue& v) { wide ? void(v.j = value) : void(v.i = static_cast<jint>(value)); });
        }
      } else if (type == "F") {
        add(i, "-inf", [](BadInputTest&, jvalue& v) { v.f = -INFINITY; });
        add(i, "nan", [](BadInputTest&, jvalue& v) { v.f = NAN; });
      }
    }
    for (const auto& [label, edit, answer] : c.faults) mutations.emplace_back(label, edit);
    return mutations;
  }

  // The answer the generic rules give, or the case's own.
  Outcome Expected(const Case& c, const std::vector<std::string>& types, const std::string& label) {
    if (label == "usable") return c.ok;
    if (c.answers.count(label)) return c.answers.at(label);
    for (const auto& [faultLabel, edit, answer] : c.faults) {
      if (faultLabel == label) return answer;
    }
    const size_t colon = label.find(':');
    const std::string& type = types.at(std::stoul(label.substr(0, colon)));
    const std::string what = label.substr(colon + 1);
    if (what == "null") return type == kHandleSig ? kNull : type == kCallbackType ? "0" : kBad;
    if (what == "never-created" || what == "destroyed") return kInvalidHandle;
    if (type == kStringType) return c.badText;
    return "(no answer given)";
  }

  Outcome Invoke(const Case& c, const std::string& descriptor, const Args& args) {
    static jclass ctrl = static_cast<jclass>(env_->NewGlobalRef(env_->FindClass("QuorinCtrlWrapper/QuorinCtrl")));
    jmethodID method = env_->GetStaticMethodID(ctrl, c.name, descriptor.c_str());
    const char returned = descriptor[descriptor.find(')') + 1];
    Outcome result;
    if (returned == 'I') {
      result = Hex(env_->CallStaticIntMethodA(ctrl, method, args.data()));
    } else if (returned == 'Z') {
      result = env_->CallStaticBooleanMethodA(ctrl, method, args.data()) ? "true" : "false";
    } else {
      jobject object = env_->CallStaticObjectMethodA(ctrl, method, args.data());
      result = object != nullptr ? "object" : "null";
    }
    jthrowable thrown = env_->ExceptionOccurred();
    if (thrown == nullptr) return result;
    env_->ExceptionClear();
    std::string simple = Text(env_->GetObjectClass(thrown), "java/lang/Class", "getSimpleName");
    if (simple == "ParameterException") simple += " " + Hex(Int(thrown, "errCode"));
    return simple + "|" + result;
  }
};

}  // namespace

std::vector<Case> BadInputTest::Table() {
  // A frame as the waybill reader delivered it, for handing back.
  const Edit heldFrame = [](BadInputTest& t, Args& a) {
    const std::string fetch = "(" + kHandleSig + "[BL" + Define("QUORIN_IMAGE_OUT_INFO_EX2") + ";I)I";
    EXPECT_EQ(t.CallInt("QUORIN_GetOneFrameTimeoutEx2", fetch.c_str(), a[0].l, a[1].l, a[2].l, 1000), 0);
  };
  const std::string pixelSig = "L" + Define("QuorinGvspPixelType") + ";";
  const std::string imageSig = "L" + Define("QUORIN_IMAGE_TYPE") + ";";
  const std::string codesSig = "L" + Define("QUORIN_RESULT_BCR_EX") + ";";
  const Edit savable = [pixelSig, imageSig](BadInputTest& t, Args& a) {
    t.SetObject(a[1].l, "pData", "[B", t.env_->NewByteArray(64 * 48));
    t.SetInt(a[1].l, "nDataLen", 64 * 48);
    t.SetShort(a[1].l, "nWidth", 64);
    t.SetShort(a[1].l, "nHeight", 48);
    t.SetObject(a[1].l, "enPixelType", pixelSig, t.Constant("QuorinGvspPixelType", "PixelType_Gvsp_Mono8"));
    t.SetObject(a[1].l, "enImageType", imageSig, t.Constant("QUORIN_IMAGE_TYPE", "QUORIN_Image_Bmp"));
  };
  const Edit fileNames = [](BadInputTest& t, Args& a) {
    t.SetString(a[1].l, "pUserFileName", "/tmp/quorin-bad-input-userset.txt");
    t.SetString(a[1].l, "pDevFileName", "UserSet1");
  };
  auto nulled = [](size_t index, const char* field, std::string sig) {
    return [index, field, sig](BadInputTest& t, Args& a) { t.SetNull(a[index].l, field, sig); };
  };
  auto frameArg = [](size_t index, std::function<void(BadInputTest&, jobject)> edit) {
    return [index, edit](BadInputTest& t, Args& a) { edit(t, a[index].l); };
  };
  // A native that returns with an exception pending is seen by Java as throwing: its status never arrives.
  const std::string throwing = "IllegalStateException|0";
  const std::string missingField = "NoSuchFieldError|0";
  {
    std::ofstream firmware("/tmp/quorin-bad-input-firmware.bin");
    firmware << "firmware";
    std::ofstream userSet("/tmp/quorin-bad-input-userset.txt");
    userSet << "Width=640\n";
  }

  return {
      {"QUORIN_GetSDKVersion", State::kNone, 0, {}, {}, 0, nullptr, "object"},
      {"QUORIN_EnumDevices", State::kNone, 0, {}, {}, 0, nullptr, "object"},
      {"QUORIN_EnumIDDevices", State::kNone, 0, {}, {}, 0, nullptr, "object"},
      {"QUORIN_EnumCodeReader", State::kNone, 0, {}, {}, 0, nullptr, "object"},
      {"QUORIN_DiscoveryUpgDevice", State::kNone, 0, {}, {}, 0, nullptr, "object"},
      {"QUORIN_CreateHandleForUpgradeAndEncryption", State::kNone, 0, {}, {}, 0, nullptr, "object"},
      {"QUORIN_IsDeviceAccessible", State::kNone, 0, {}, {1}, 0, nullptr, "true", "",
       {{"0:null", "false"}, {"1:min", "true"}, {"1:-1", "true"}, {"1:max", "true"}}, nullptr,
       {{"gige=null", nulled(0, "stGigEInfo", kGigESig), "true"}}},
      {"QUORIN_CreateHandle", State::kNone, 0, {}, {}, 0, nullptr, "object", "",
       {{"0:null", "ParameterException " + kBad + "|null"}}, nullptr,
       {{"gige=null", nulled(0, "stGigEInfo", kGigESig), "object"}}},
      {"QUORIN_CreateHandleBySerialNumber", State::kNone, 0, {"QN2405C0117"}, {}, 0, nullptr, "object",
       "ParameterException " + Hex(static_cast<jint>(qsim::kNoSuchDevice)) + "|null",
       {{"0:null", "ParameterException " + kBad + "|null"}, {"0:empty", "ParameterException " + kSdkBadParameter + "|null"}}},
      {"QUORIN_GetDeviceInfo", State::kOpen, 0, {}, {}, 0, nullptr, "0", "", {}, nullptr,
       {{"gige=null", nulled(1, "stGigEInfo", kGigESig), "0"}}},
      {"QUORIN_DestroyHandle", State::kOpen},
      {"QUORIN_OpenDevice", State::kCreated},
      {"QUORIN_CloseDevice", State::kOpen},
      {"QUORIN_DestroyHandleForUpgradeAndEncryption", State::kUpgrade},
      {"QUORIN_StartUpgradeDeviceByHandle", State::kUpgrade, 0, {"/tmp/quorin-bad-input-firmware.bin"}, {}, 0, nullptr,
       "0", Hex(static_cast<jint>(qsim::kNoSuchFile))},
      {"QUORIN_GetUpgradeProcessByHandle", State::kUpgrade},
      // Unusable text converts as inet_addr has it, to 255.255.255.255: no address for a reader, but a
      // valid mask and gateway.
      {"QUORIN_GIGE_ForceIp", State::kOpen, 0, {"192.168.1.50", "255.255.255.0", "192.168.1.1"}, {}, 0, nullptr, "0",
       kSdkBadParameter,
       {{"2:empty", "0"}, {"2:1MB", "0"}, {"2:surrogate", "0"}, {"2:format", "0"},
        {"3:empty", "0"}, {"3:1MB", "0"}, {"3:surrogate", "0"}, {"3:format", "0"}}},
      {"QUORIN_GIGE_SetIpConfig", State::kOpen, 0, {}, {static_cast<double>(QUORIN_IP_CFG_DHCP)}, 0, nullptr, "0", "",
       {{"1:min", kSdkBadParameter}, {"1:-1", kSdkBadParameter}, {"1:max", kSdkBadParameter}}},
      {"QUORIN_GIGE_SetGvcpTimeout", State::kOpen, 0, {}, {1000}, 0, nullptr, "0", "",
       {{"1:min", kBad}, {"1:-1", kBad}, {"1:max", kOutOfRange}}},
      {"QUORIN_GIGE_GetGvcpTimeout", State::kOpen},
      {"QUORIN_SetIntValue", State::kOpen, 0, {"Width"}, {640}, 0, nullptr, "0", kUnknownNode,
       {{"2:min", kOutOfRange}, {"2:-1", kOutOfRange}, {"2:max", kOutOfRange}}},
      {"QUORIN_GetIntValue", State::kOpen, 0, {"Width"}},
      {"QUORIN_SetEnumValue", State::kOpen, 0, {"PixelFormat"}, {static_cast<double>(PixelType_Gvsp_Mono8)}, 0, nullptr,
       "0", kUnknownNode, {{"2:min", kOutOfRange}, {"2:-1", kOutOfRange}, {"2:max", kOutOfRange}}},
      {"QUORIN_SetEnumValueByString", State::kOpen, 0, {"PixelFormat", "Mono8"}, {}, 0, nullptr, "0", kUnknownNode,
       {{"2:empty", kOutOfRange}, {"2:1MB", kOutOfRange}, {"2:surrogate", kOutOfRange}, {"2:format", kOutOfRange}}},
      {"QUORIN_GetEnumValue", State::kOpen, 0, {"PixelFormat"}, {}, 0, nullptr, "0", kUnknownNode, {}, nullptr,
       {{"supported=null", nulled(2, "lsSupportValue", "Ljava/util/ArrayList;"), "0"},
        {"supported refuses clear", [](BadInputTest& t, Args& a) { t.SetObject(a[2].l, "lsSupportValue", "Ljava/util/ArrayList;", t.ThrowingList()); }, throwing}}},
      {"QUORIN_SetFloatValue", State::kOpen, 0, {"ExposureTime"}, {2000}, 0, nullptr, "0", kUnknownNode,
       {{"2:-inf", kOutOfRange}, {"2:nan", kOutOfRange}}},
      {"QUORIN_GetFloatValue", State::kOpen, 0, {"ExposureTime"}},
      {"QUORIN_SetBoolValue", State::kOpen, 0, {"ReverseX"}},
      {"QUORIN_GetBoolValue", State::kOpen, 0, {"ReverseX"}},
      {"QUORIN_SetStringValue", State::kOpen, 0, {"DeviceUserID", "Line 7"}, {}, 0, nullptr, "0", kUnknownNode,
       {{"2:empty", "0"}, {"2:1MB", kOutOfRange}, {"2:surrogate", "0"}, {"2:format", "0"}}},
      {"QUORIN_GetStringValue", State::kOpen, 0, {"DeviceUserID"}},
      {"QUORIN_SetCommandValue", State::kOpen, 0, {"TriggerSoftware"}},
      {"QUORIN_SetFrameNodeNum", State::kOpen, 0, {}, {3}, 0, nullptr, "0", "",
       {{"1:min", kBad}, {"1:-1", kBad}, {"1:max", "0"}}},
      {"QUORIN_InvalidateNodes", State::kOpen},
      {"QUORIN_Algorithm_SetIntValue", State::kOpen, 0, {"MaxCodeCount"}, {5}, 0, nullptr, "0", kUnknownNode,
       {{"2:min", kOutOfRange}, {"2:-1", kOutOfRange}, {"2:max", kOutOfRange}}},
      {"QUORIN_Algorithm_GetIntValue", State::kOpen, 0, {"MaxCodeCount"}},
      {"QUORIN_XML_GetGenICamXML", State::kOpen, 0, {}, {}, 1 << 16, nullptr, "0", "",
       {{"1:len0", Hex(static_cast<jint>(qsim::kBufferTooSmall))}, {"1:len1", Hex(static_cast<jint>(qsim::kBufferTooSmall))},
        {"1:short", "0"}}},
      {"QUORIN_XML_GetNodeAccessMode", State::kOpen, 0, {"Width"}},
      {"QUORIN_FileAccessRead", State::kOpen, 0, {}, {}, 0, nullptr, "0", "", {}, fileNames,
       {{"user=null", nulled(1, "pUserFileName", "Ljava/lang/String;"), kBad},
        {"device=null", nulled(1, "pDevFileName", "Ljava/lang/String;"), kBad}}},
      {"QUORIN_FileAccessWrite", State::kOpen, 0, {}, {}, 0, nullptr, "0", "", {}, fileNames,
       {{"user=null", nulled(1, "pUserFileName", "Ljava/lang/String;"), kBad},
        {"device=null", nulled(1, "pDevFileName", "Ljava/lang/String;"), kBad}}},
      {"QUORIN_GetFileAccessProgress", State::kOpen},
      {"QUORIN_RegisterExceptionCallBack", State::kOpen, 0, {}, {}, 0, "QuorinTest/ExceptionRecorder"},
      {"QUORIN_RegisterAllEventCallBack", State::kOpen, 0, {}, {}, 0, "QuorinTest/EventRecorder"},
      {"QUORIN_RegisterTriggerCallBack", State::kOpen, 0, {}, {}, 0, "QuorinTest/TriggerRecorder"},
      {"QUORIN_RegisterImageCallBackEx2", State::kOpen, 0, {}, {}, 0, "QuorinTest/ImageRecorder"},
      {"QUORIN_MSC_RegisterImageCallBack", State::kOpen, 1, {}, {2}, 0, "QuorinTest/ImageRecorder", "0", "",
       {{"1:min", kBad}, {"1:-1", kBad}, {"1:max", kSdkBadParameter}}},
      {"QUORIN_StartGrabbing", State::kOpen},
      {"QUORIN_StopGrabbing", State::kGrabbing},
      {"QUORIN_GetOneFrameTimeoutEx2", State::kGrabbing, 0, {}, {1000}, 64 * 48, nullptr, "0", "",
       {{"1:len0", Hex(kBufferTooSmall)}, {"1:len1", Hex(kBufferTooSmall)},
        {"1:short", Hex(kBufferTooSmall)}, {"3:min", kBad}, {"3:-1", kBad}, {"3:max", "0"}},
       nullptr,
       {{"codes=null", frameArg(2, [codesSig](BadInputTest& t, jobject f) { t.SetNull(f, "pstCodeListEx", codesSig); }), "0"},
        {"codes refuse clear", frameArg(2, [codesSig](BadInputTest& t, jobject f) {
           t.SetObject(t.Nested(f, "pstCodeListEx", "QUORIN_RESULT_BCR_EX"), "stBcrInfoEx", "Ljava/util/ArrayList;", t.ThrowingList());
         }), throwing}}},
      {"QUORIN_MSC_GetOneFrameTimeout", State::kGrabbing, 1, {}, {1, 1000}, 64 * 48, nullptr, "0", "",
       {{"1:len0", Hex(kBufferTooSmall)}, {"1:len1", Hex(kBufferTooSmall)}, {"1:short", Hex(kBufferTooSmall)},
        {"3:min", kBad}, {"3:-1", kBad}, {"3:max", kSdkBadParameter}, {"4:min", kBad}, {"4:-1", kBad}, {"4:max", "0"}}},
      {"QUORIN_GetOneFrameTimeout", State::kGrabbing, 0, {}, {1000}, 64 * 48, nullptr, "0", "",
       {{"1:len0", Hex(kBufferTooSmall)}, {"1:len1", Hex(kBufferTooSmall)}, {"1:short", Hex(kBufferTooSmall)},
        {"3:min", kBad}, {"3:-1", kBad}, {"3:max", "0"}},
       nullptr,
       {{"codes refuse clear", frameArg(2, [](BadInputTest& t, jobject f) {
           t.SetObject(f, "bcrinfoList", "Ljava/util/ArrayList;", t.ThrowingList());
         }), throwing}}},
      {"QUORIN_GetWayBillInfoEx", State::kGrabbing, 2, {}, {}, 64 * 48, nullptr, "0", "",
       {{"1:len0", kBad}, {"1:len1", kBad}, {"1:short", kBad}}, heldFrame,
       {{"pixel type=null", frameArg(2, [pixelSig](BadInputTest& t, jobject f) { t.SetNull(f, "enPixelType", pixelSig); }), kBad},
        {"codes=null", frameArg(2, [codesSig](BadInputTest& t, jobject f) { t.SetNull(f, "pstCodeListEx", codesSig); }), kBad},
        {"code of another class", frameArg(2, [](BadInputTest& t, jobject f) {
           jobject codes = t.Nested(f, "pstCodeListEx", "QUORIN_RESULT_BCR_EX");
           t.env_->CallVoidMethod(t.Object(codes, "stBcrInfoEx", "Ljava/util/ArrayList;"),
                                  t.env_->GetMethodID(t.env_->FindClass("java/util/ArrayList"), "clear", "()V"));
           t.Checked();
           t.MistypedEntry(codes, "stBcrInfoEx");
           t.SetInt(codes, "nCodeNum", 1);
         }), missingField},
        {"65535x65535", frameArg(2, [](BadInputTest& t, jobject f) {
           t.SetShort(f, "nWidth", -1);
           t.SetShort(f, "nHeight", -1);
         }), kSdkBadParameter},
        {"frame longer than the array", frameArg(2, [](BadInputTest& t, jobject f) { t.SetInt(f, "nFrameLen", 64 * 48 + 1); }), kBad},
        {"waybills refuse clear", frameArg(2, [](BadInputTest& t, jobject f) {
           t.SetObject(t.Nested(f, "pstWaybillList", "QUORIN_WAYBILL_LIST"), "stWaybillInfo", "Ljava/util/ArrayList;", t.ThrowingList());
         }), throwing}}},
      {"QUORIN_SaveImage", State::kOpen, 0, {}, {}, 0, nullptr, "0", "", {}, savable,
       {{"pData=null", nulled(1, "pData", "[B"), kBad},
        {"nDataLen=-1", [](BadInputTest& t, Args& a) { t.SetInt(a[1].l, "nDataLen", -1); }, kBad},
        {"nDataLen past a 1-byte pData", [](BadInputTest& t, Args& a) {
           t.SetObject(a[1].l, "pData", "[B", t.env_->NewByteArray(1));
           t.SetInt(a[1].l, "nDataLen", 2048);
         }, kBad},
        {"pixel type=null", nulled(1, "enPixelType", pixelSig), kBad},
        {"image type=null", nulled(1, "enImageType", imageSig), kBad},
        {"65535x65535", [](BadInputTest& t, Args& a) {
           t.SetShort(a[1].l, "nWidth", -1);
           t.SetShort(a[1].l, "nHeight", -1);
         }, kSdkBadParameter}}},
      {"QUORIN_SetWayBillEnable", State::kOpen, 2},
  };
}

namespace {

TEST_F(BadInputTest, EveryNativeAnswersHostileArgumentsAsDocumented) {
  std::vector<Case> table = Table();
  // The table covers exactly the natives QuorinCtrl declares.
  auto declared = static_cast<jobjectArray>(env_->CallStaticObjectMethod(
      env_->FindClass("QuorinTest/Natives"),
      env_->GetStaticMethodID(env_->FindClass("QuorinTest/Natives"), "declared", "()[Ljava/lang/String;")));
  ASSERT_FALSE(Checked());
  std::map<std::string, std::string> descriptors;
  for (jsize i = 0; i < env_->GetArrayLength(declared); ++i) {
    const std::string entry = Utf8(static_cast<jstring>(env_->GetObjectArrayElement(declared, i)));
    descriptors[entry.substr(0, entry.find(' '))] = entry.substr(entry.find(' ') + 1);
  }
  EXPECT_EQ(descriptors.size(), 54u);
  std::set<std::string> covered;
  for (const Case& c : table) covered.insert(c.name);
  for (const auto& [name, descriptor] : descriptors) EXPECT_TRUE(covered.count(name)) << name << " has no row";
  EXPECT_EQ(covered.size(), table.size()) << "a native has two rows";

  int calls = 0;
  for (const Case& c : table) {
    ASSERT_TRUE(descriptors.count(c.name)) << c.name << " is not a native of QuorinCtrl";
    const std::string& descriptor = descriptors[c.name];
    const std::vector<std::string> types = Parameters(descriptor);
    std::vector<std::pair<std::string, Edit>> variants = Mutations(c, types);
    variants.insert(variants.begin(), {"usable", [](BadInputTest&, Args&) {}});
    for (const auto& [label, edit] : variants) {
      qsim::Reset();
      ASSERT_EQ(env_->PushLocalFrame(512), 0);
      Args args = UsableArgs(c, types);
      edit(*this, args);
      qsim::ClearCalls();
      const Outcome outcome = Invoke(c, descriptor, args);
      EXPECT_EQ(outcome, Expected(c, types, label)) << c.name << " " << label;
      // An argument the bridge could not read stops it before the SDK.
      if (outcome.rfind("NoSuchFieldError", 0) == 0) {
        EXPECT_TRUE(qsim::CallsTo(c.name).empty()) << c.name << " " << label;
      }
      // A text reaches the SDK exactly as Java's modified UTF-8, '%' and all (addresses excepted,
      // which travel as numbers).
      if (label.size() > 7 && label.compare(label.size() - 7, 7, ":format") == 0 &&
          c.name != std::string("QUORIN_GIGE_ForceIp")) {
        const std::vector<qsim::Call> sdkCalls = qsim::Calls();
        const bool received = std::any_of(sdkCalls.begin(), sdkCalls.end(), [](const qsim::Call& call) {
          return std::find(call.texts.begin(), call.texts.end(), "%s%n%s%n") != call.texts.end();
        });
        EXPECT_TRUE(received) << c.name << " " << label;
      }
      EXPECT_FALSE(Checked());
      env_->PopLocalFrame(nullptr);
      ++calls;
    }
  }
  EXPECT_GT(calls, 300);
  // Still alive: the VM answers an ordinary call.
  EXPECT_NE(CallObject("QUORIN_GetSDKVersion", "()Ljava/lang/String;"), nullptr);
}

// The exact limits of the device texts a handle is created from: the text and its terminator
// must fit the array. 15 bytes reach the SDK; 16 end the process.
TEST_F(BadInputTest, SerialNumberLimitIsFifteenBytesBesideItsTerminator) {
  const std::string sig = "(" + kDeviceInfoSig + ")" + kHandleSig;
  jobject device = Device(0);
  jobject gige = Object(device, "stGigEInfo", kGigESig);
  for (const std::string& serial : {std::string(15, 'S'), std::string("分拣线一二")}) {  // 15 bytes each
    SetString(gige, "chSerialNumber", serial);
    EXPECT_EQ(CallObject("QUORIN_CreateHandle", sig.c_str(), device), nullptr);
    std::string message;
    EXPECT_EQ(TakeException(&message), "QuorinCtrlWrapper.ParameterException") << message;
    ASSERT_FALSE(qsim::CallsTo("QUORIN_CreateHandle").empty());
  }
  SetString(gige, "chSerialNumber", std::string(16, 'S'));
  EXPECT_DEATH(CallObject("QUORIN_CreateHandle", sig.c_str(), device), "does not fit its array: chSerialNumber");
}

}  // namespace
}  // namespace quorin_test
