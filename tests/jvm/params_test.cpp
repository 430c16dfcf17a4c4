// Feature access through Java: typed nodes with the payload-size rule, algorithm parameters,
// the feature description, access modes and device files.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <iterator>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

const std::string kString = "Ljava/lang/String;";

class ParamsTest : public JvmTest {
 protected:
  void SetUp() override {
    JvmTest::SetUp();
    handle_ = OpenReader(0);
    sdk_ = SdkHandle(handle_);
    qsim::ClearCalls();
  }
  // (Handle, String key, <value>)I
  std::string Sig(const std::string& value) { return "(" + kHandleSig + kString + value + ")I"; }
  template <typename... Value>
  jint Set(const char* method, const std::string& valueSig, const char* key, Value... value) {
    return CallInt(method, Sig(valueSig).c_str(), handle_, Str(key), value...);
  }
  // kind "Int": QUORIN_GetIntValue into a QUORIN_INT_VALUE, and so on.
  static std::string ValueClass(std::string kind) {
    for (char& c : kind) c = static_cast<char>(std::toupper(c));
    return "QUORIN_" + kind + "_VALUE";
  }
  jobject NewValue(const std::string& kind) { return NewDefine(ValueClass(kind).c_str()); }
  jint Into(const std::string& method, const char* key, jobject target, const std::string& record) {
    return CallInt(method.c_str(), Sig("L" + Define(record.c_str()) + ";").c_str(), handle_, Str(key), target);
  }
  jint Get(const std::string& kind, const char* key, jobject target) {
    return Into("QUORIN_Get" + kind + "Value", key, target, ValueClass(kind));
  }
  jobject IntValue(const char* key, jint* status = nullptr) {
    jobject target = NewValue("Int");
    const jint result = Get("Int", key, target);
    if (status != nullptr) *status = result;
    return target;
  }
  jint AccessMode(const char* key, jobject target) {
    return Into("QUORIN_XML_GetNodeAccessMode", key, target, "QUORIN_XML_NODE_ACCESSMODE");
  }
  std::string ModeName(jobject target) {
    return EnumName(Object(target, "accessMode", "L" + Define("QUORIN_XML_AccessMode") + ";"));
  }
  jint Xml(jbyteArray buffer, jobject length) {
    return CallInt("QUORIN_XML_GetGenICamXML", ("(" + kHandleSig + "[BLjava/lang/Integer;)I").c_str(), handle_,
                   buffer, length);
  }
  jobject Request(const std::string& className, const std::string& user, const std::string& device) {
    jobject request = New(className);
    SetString(request, "pUserFileName", user);
    SetString(request, "pDevFileName", device);
    return request;
  }
  jint Transfer(const char* method, jobject request) {
    return CallInt(method, ("(" + kHandleSig + "L" + Define("QUORIN_FILE_ACCESS") + ";)I").c_str(), handle_, request);
  }
  jint Progress(jobject progress) {
    return CallInt("QUORIN_GetFileAccessProgress",
                   ("(" + kHandleSig + "L" + Define("QUORIN_FILE_ACCESS_PROGRESS") + ";)I").c_str(), handle_, progress);
  }
  static std::string Contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  }
  jobject handle_ = nullptr;
  void* sdk_ = nullptr;
};

TEST_F(ParamsTest, EachSetterMakesOneSdkCallWithItsKeyAndValue) {
  const std::string h = "(" + kHandleSig;
  const struct {
    const char* function;
    std::function<jint()> call;
    std::vector<std::string> texts;
    std::vector<unsigned long long> numbers;
  } rows[] = {
      {"QUORIN_SetIntValue", [&] { return Set("QUORIN_SetIntValue", "J", "Width", jlong{640}); }, {"Width"}, {640}},
      {"QUORIN_SetEnumValue", [&] { return Set("QUORIN_SetEnumValue", "I", "TriggerMode", 1); }, {"TriggerMode"}, {1}},
      // The float as its exact bits; any non-zero Java boolean is true.
      {"QUORIN_SetFloatValue", [&] { return Set("QUORIN_SetFloatValue", "F", "ExposureTime", 1234.5); }, {"ExposureTime"},
       {0x449A5000}},
      {"QUORIN_SetBoolValue", [&] { return Set("QUORIN_SetBoolValue", "Z", "ReverseX", 2); }, {"ReverseX"}, {1}},
      {"QUORIN_Algorithm_SetIntValue", [&] { return Set("QUORIN_Algorithm_SetIntValue", "I", "DecodeTimeout", 300); },
       {"DecodeTimeout"}, {300}},
      {"QUORIN_SetFrameNodeNum", [&] { return CallInt("QUORIN_SetFrameNodeNum", (h + "I)I").c_str(), handle_, 0); }, {}, {0}},
      // Invalidation has no SDK function of its own: it is a frame node count of 3.
      {"QUORIN_SetFrameNodeNum", [&] { return OnHandle("QUORIN_InvalidateNodes", handle_); }, {}, {3}},
  };
  for (const auto& row : rows) {
    qsim::ClearCalls();
    EXPECT_EQ(row.call(), 0) << row.function;
    const auto calls = qsim::Calls();
    ASSERT_EQ(calls.size(), 1u) << row.function;
    EXPECT_EQ(calls[0].function, row.function);
    EXPECT_EQ(calls[0].handle, sdk_) << row.function;
    EXPECT_EQ(calls[0].texts, row.texts) << row.function;
    EXPECT_EQ(calls[0].numbers, row.numbers) << row.function;
  }

  jobject width = IntValue("Width");
  for (const auto& [field, value] : {std::pair{"nCurValue", 640}, {"nMax", 2448}, {"nMin", 64}, {"nInc", 8}}) {
    EXPECT_EQ(Long(width, field), value) << field;
  }
  // Floats come back as their exact bits: -0, the smallest denormal, a NaN with a payload.
  const uint32_t bits[] = {0x80000000u, 0x00000001u, 0x7FC12345u};
  QUORIN_FLOAT_VALUE odd{};
  std::memcpy(&odd.fCurValue, &bits[0], 4);
  std::memcpy(&odd.fMax, &bits[1], 4);
  std::memcpy(&odd.fMin, &bits[2], 4);
  qsim::ScriptOutput("QUORIN_GetFloatValue", RecordBytes(odd));
  jobject exposure = NewValue("Float");
  EXPECT_EQ(Get("Float", "ExposureTime", exposure), 0);
  for (const auto& [field, expected] : {std::pair{"fCurValue", bits[0]}, {"fMax", bits[1]}, {"fMin", bits[2]}}) {
    const float value = Float(exposure, field);
    uint32_t read;
    std::memcpy(&read, &value, 4);
    EXPECT_EQ(read, expected) << field;
  }
  jobject flag = NewValue("Bool");
  EXPECT_EQ(Get("Bool", "ReverseX", flag), 0);
  EXPECT_TRUE(Bool(flag, "bCurValue"));
  EXPECT_EQ(Get("Bool", "Width", flag), static_cast<jint>(qsim::kWrongNodeType));
  EXPECT_FALSE(Bool(flag, "bCurValue"));

  // A failed getter still writes the record's zero fill: the status must be looked at first.
  SetLong(width, "nMax", 99);
  EXPECT_EQ(Get("Int", "NoSuchNode", width), static_cast<jint>(qsim::kUnknownNode));
  EXPECT_EQ(Long(width, "nCurValue"), 0);
  EXPECT_EQ(Long(width, "nMax"), 0);
}

TEST_F(ParamsTest, PayloadSizeQueryAlwaysSucceedsAndCachesOnlyTheNodesValue) {
  jint status = -1;
  jobject node = IntValue("PayloadSize", &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Long(node, "nCurValue"), 1280 * 1024);
  EXPECT_EQ(Int(handle_, "PayloadSize"), 1280 * 1024);

  // No node: the maxima's product, nothing cached, and 0 answered anyway.
  SetInt(handle_, "PayloadSize", 7);
  qsim::RemoveNode(sdk_, "PayloadSize");
  jobject fallback = IntValue("PayloadSize", &status);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(Long(fallback, "nCurValue"), 5013504);  // 2448 x 2048
  for (const char* field : {"nMax", "nMin", "nInc"}) EXPECT_EQ(Long(fallback, field), 0) << field;
  EXPECT_EQ(Int(handle_, "PayloadSize"), 7);

  // The product is taken in 32 bits; a reader without one of the maxima gets 60 MiB.
  const std::pair<long long, long long> maxima[] = {{50000, -1794967296}, {65536, 0}};  // 2500000000 in 32 bits
  for (const auto& [max, size] : maxima) {
    qsim::SetIntNode(sdk_, "Width", 1024, 64, max, 8);
    qsim::SetIntNode(sdk_, "Height", 1024, 64, max, 8);
    EXPECT_EQ(Long(IntValue("PayloadSize"), "nCurValue"), size) << max;
  }
  qsim::RemoveNode(sdk_, "Height");
  EXPECT_EQ(Long(IntValue("PayloadSize"), "nCurValue"), 62914560);
  // Both maxima are always asked for, even when the first query fails.
  qsim::ClearCalls();
  qsim::RemoveNode(sdk_, "Width");
  IntValue("PayloadSize");
  const auto calls = qsim::CallsTo("QUORIN_GetIntValue");
  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[1].texts.at(0), "Width");
  EXPECT_EQ(calls[2].texts.at(0), "Height");

  // Only the exact name is special.
  jobject other = IntValue("payloadsize", &status);
  EXPECT_EQ(status, static_cast<jint>(qsim::kUnknownNode));
  EXPECT_EQ(Long(other, "nCurValue"), 0);
}

TEST_F(ParamsTest, EnumerationValuesRefillTheCallersList) {
  jobject target = NewValue("Enum");
  jobject list = Object(target, "lsSupportValue", "Ljava/util/ArrayList;");
  env_->CallBooleanMethod(list, env_->GetMethodID(env_->GetObjectClass(list), "add", "(Ljava/lang/Object;)Z"),
                          Str("stale"));
  Checked();
  EXPECT_EQ(Get("Enum", "PixelFormat", target), 0);
  EXPECT_EQ(Int(target, "nCurValue"), 0x01080001);
  ASSERT_EQ(ListSize(list), 2);
  EXPECT_TRUE(env_->IsInstanceOf(ListGet(list, 0), env_->FindClass("java/lang/Integer")));
  EXPECT_EQ(Int(ListGet(list, 0), "value"), 0x01080001);
  EXPECT_EQ(Int(ListGet(list, 1), "value"), 0x01100003);

  QUORIN_ENUM_VALUE record{};
  qsim::ScriptOutput("QUORIN_GetEnumValue", RecordBytes(record));
  Get("Enum", "PixelFormat", target);
  EXPECT_EQ(ListSize(list), 0);  // cleared even when nothing is supported
  record.nSupportedNum = 1000;    // more than the record holds: never read past it
  for (unsigned int i = 0; i < QUORIN_MAX_ENUM_VALUE_NUM; ++i) record.nSupportValue[i] = i + 100;
  qsim::ScriptOutput("QUORIN_GetEnumValue", RecordBytes(record));
  Get("Enum", "PixelFormat", target);
  ASSERT_EQ(ListSize(list), QUORIN_MAX_ENUM_VALUE_NUM);
  EXPECT_EQ(Int(ListGet(list, QUORIN_MAX_ENUM_VALUE_NUM - 1), "value"), QUORIN_MAX_ENUM_VALUE_NUM - 1 + 100);
}

TEST_F(ParamsTest, StringValuesDecodeGbkAndStayWithinTheirArray) {
  jobject target = NewValue("String");
  EXPECT_EQ(Get("String", "DeviceUserID", target), 0);
  EXPECT_EQ(String(target, "chCurValue"), "分拣线一");
  EXPECT_EQ(Int(target, "nMaxLength"), 16);

  QUORIN_STRING_VALUE full{};
  std::memset(full.chCurValue, 'z', sizeof full.chCurValue);  // no terminator in the array
  full.nMaxLength = 0x100000101LL;                              // only the low 32 bits reach Java
  qsim::ScriptOutput("QUORIN_GetStringValue", RecordBytes(full));
  Get("String", "DeviceUserID", target);
  EXPECT_EQ(String(target, "chCurValue"), std::string(256, 'z'));
  EXPECT_EQ(Int(target, "nMaxLength"), 0x101);

  qsim::ScriptOutput("QUORIN_GetStringValue", {});
  qsim::ScriptStatus("QUORIN_GetStringValue", qsim::kNotReadable);
  EXPECT_EQ(Get("String", "DeviceUserID", target), static_cast<jint>(qsim::kNotReadable));
  EXPECT_EQ(String(target, "chCurValue"), "");
  EXPECT_EQ(Int(target, "nMaxLength"), 0);
}

TEST_F(ParamsTest, AlgorithmParametersComeBackSignExtended) {
  jobject value = NewDefine("QUORIN_ALGORITHM_INT_VALUE");
  qsim::SetAlgorithmInt(sdk_, "Sensitivity", -1, -10, 10);
  EXPECT_EQ(Into("QUORIN_Algorithm_GetIntValue", "Sensitivity", value, "QUORIN_ALGORITHM_INT_VALUE"), 0);
  EXPECT_EQ(Long(value, "lOutValue"), -1);  // sign-extended into the long
  EXPECT_EQ(Into("QUORIN_Algorithm_GetIntValue", "NoSuchParameter", value, "QUORIN_ALGORITHM_INT_VALUE"),
            static_cast<jint>(qsim::kUnknownNode));
  EXPECT_EQ(Long(value, "lOutValue"), 0);  // a failed read leaves 0, not stack garbage
}

TEST_F(ParamsTest, FeatureDescriptionFillsTheCallersArrayAndInteger) {
  qsim::SetIntNode(sdk_, "Gain<&>\"Trim\"", 3, 0, 9, 3, qsim::Access::kNotAvailable);  // must be escaped
  jobject length = NewInteger(-1);
  const jint tooSmall = Xml(env_->NewByteArray(0), length);
  EXPECT_NE(tooSmall, 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_XML_GetGenICamXML").at(0).numbers.at(0), 0u);  // size 0 reached the SDK
  const jint needed = Int(length, "value");
  ASSERT_GT(needed, 100);

  jbyteArray buffer = env_->NewByteArray(needed + 16);
  ASSERT_EQ(Xml(buffer, length), 0);
  EXPECT_EQ(Int(length, "value"), needed);
  // The VM's own XML parser reads it and finds every node with its kind and access.
  jclass nodes = env_->FindClass("QuorinTest/FeatureNodes");
  ASSERT_NE(nodes, nullptr);
  auto list = static_cast<jstring>(env_->CallStaticObjectMethod(
      nodes, env_->GetStaticMethodID(nodes, "list", "([BI)Ljava/lang/String;"), buffer, needed));
  ASSERT_EQ(TakeException(), "");
  EXPECT_EQ(Utf8(list),
            "Float AcquisitionFrameRate RW\nInteger ChannelCount RO\nStringReg DeviceSerialNumber RO\n"
            "StringReg DeviceUserID RW\nFloat ExposureTime RW\nInteger Gain<&>\"Trim\" NA\nInteger Height RW\n"
            "Integer PayloadSize RO\nEnumeration PixelFormat RW\nBoolean ReverseX RW\nEnumeration TriggerMode RW\n"
            "Command TriggerSoftware WO\nInteger Width RW\n");
}

TEST_F(ParamsTest, AccessModesComeFromTheNodeMap) {
  jobject target = NewDefine("QUORIN_XML_NODE_ACCESSMODE");
  for (const auto& [key, name] : {std::pair{"Width", "QUORIN_AM_RW"}, {"PayloadSize", "QUORIN_AM_RO"},
                                  {"TriggerSoftware", "QUORIN_AM_WO"}}) {
    ASSERT_EQ(AccessMode(key, target), 0) << key;
    EXPECT_EQ(ModeName(target), name) << key;
  }
  // An unknown node leaves the object as it was.
  EXPECT_EQ(AccessMode("NoSuchNode", target), static_cast<jint>(qsim::kUnknownNode));
  EXPECT_EQ(ModeName(target), "QUORIN_AM_WO");
  // Numbers without a constant of their own read as undefined.
  for (const auto& [mode, name] : {std::pair{0u, "QUORIN_AM_NI"}, {5u, "QUORIN_AM_Undefined"},
                                   {6u, "QUORIN_AM_CycleDetect"}, {7u, "QUORIN_AM_Undefined"}}) {
    qsim::ScriptOutput("QUORIN_XML_GetNodeAccessMode", RecordBytes(mode));
    ASSERT_EQ(AccessMode("Width", target), 0);
    EXPECT_EQ(ModeName(target), name) << mode;
  }
}

TEST_F(ParamsTest, FilesRoundTripAndProgressIsWrittenOnlyOnSuccessAndInFull) {
  const std::string upload = testing::TempDir() + "quorin-upload.cfg";
  const std::string download = testing::TempDir() + "quorin-download.cfg";
  const std::string payload = "ExposureTime=1500\n" + std::string(20000, '\x7F');
  std::ofstream(upload, std::ios::binary) << payload;
  const std::string fileAccess = Define("QUORIN_FILE_ACCESS");
  ASSERT_EQ(Transfer("QUORIN_FileAccessWrite", Request(fileAccess, upload, "UserSet2")), 0);
  const auto stored = qsim::DeviceFile(sdk_, "UserSet2");
  EXPECT_EQ(std::string(stored.begin(), stored.end()), payload);
  EXPECT_EQ(qsim::CallsTo("QUORIN_FileAccessWrite").at(0).texts, (std::vector<std::string>{upload, "UserSet2"}));
  ASSERT_EQ(Transfer("QUORIN_FileAccessRead", Request(fileAccess, download, "UserSet2")), 0);
  EXPECT_EQ(Contents(download), payload);
  jobject progress = NewDefine("QUORIN_FILE_ACCESS_PROGRESS");
  ASSERT_EQ(Progress(progress), 0);
  EXPECT_EQ(Long(progress, "nCompleted"), static_cast<jlong>(payload.size()));
  EXPECT_EQ(Long(progress, "nTotal"), static_cast<jlong>(payload.size()));
  EXPECT_NE(Transfer("QUORIN_FileAccessRead", Request(fileAccess, download, "NoSuchFile")), 0);

  // A failed query leaves the counts as they were; a successful one writes all 64 bits.
  qsim::ScriptStatus("QUORIN_GetFileAccessProgress", qsim::kWrongCallOrder);
  EXPECT_EQ(Progress(progress), static_cast<jint>(qsim::kWrongCallOrder));
  EXPECT_EQ(Long(progress, "nCompleted"), static_cast<jlong>(payload.size()));
  qsim::ScriptStatus("QUORIN_GetFileAccessProgress", 0);
  QUORIN_FILE_ACCESS_PROGRESS big{};
  big.nCompleted = 3000000000LL;
  big.nTotal = 0x123456789ALL;
  qsim::ScriptOutput("QUORIN_GetFileAccessProgress", RecordBytes(big));
  EXPECT_EQ(Progress(progress), 0);
  EXPECT_EQ(Long(progress, "nCompleted"), 3000000000LL);
  EXPECT_EQ(Long(progress, "nTotal"), 0x123456789ALL);

  // A read takes any object with the two names; a write finds its fields on the record class itself.
  jobject foreign = Request("QuorinTest/ForeignFileAccess", download, "DeviceLog");
  EXPECT_EQ(Transfer("QUORIN_FileAccessRead", foreign), 0);
  EXPECT_EQ(Contents(download).substr(0, 18), "[boot] QR-2020-2D ");
  qsim::ClearCalls();
  EXPECT_EQ(Transfer("QUORIN_FileAccessWrite", foreign), kBadArgument);
  EXPECT_TRUE(qsim::CallsTo("QUORIN_FileAccessWrite").empty());
  std::remove(upload.c_str());
  std::remove(download.c_str());
}

}  // namespace
}  // namespace quorin_test
