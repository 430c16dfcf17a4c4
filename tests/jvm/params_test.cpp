// Typed feature access through Java, with the payload-size rule.
#include <cstring>

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
  jint GetInto(const char* method, const char* key, jobject target, const char* targetClass) {
    return CallInt(method, Sig("L" + Define(targetClass) + ";").c_str(), handle_, key ? Str(key) : nullptr, target);
  }
  jint GetInt(const char* key, jobject target) { return GetInto("QUORIN_GetIntValue", key, target, "QUORIN_INT_VALUE"); }
  jobject IntValue(const char* key, jint* status = nullptr) {
    jobject target = NewDefine("QUORIN_INT_VALUE");
    const jint result = GetInt(key, target);
    if (status != nullptr) *status = result;
    return target;
  }
  jobject handle_ = nullptr;
  void* sdk_ = nullptr;
};

TEST_F(ParamsTest, IntegerNodesRoundTripAndFailuresPassThrough) {
  EXPECT_EQ(CallInt("QUORIN_SetIntValue", Sig("J").c_str(), handle_, Str("Width"), jlong{640}), 0);
  const auto set = qsim::CallsTo("QUORIN_SetIntValue").at(0);
  EXPECT_EQ(set.handle, sdk_);
  EXPECT_EQ(set.texts, std::vector<std::string>{"Width"});
  EXPECT_EQ(set.numbers, std::vector<unsigned long long>{640});

  jobject width = IntValue("Width");
  EXPECT_EQ(Long(width, "nCurValue"), 640);
  EXPECT_EQ(Long(width, "nMax"), 2448);
  EXPECT_EQ(Long(width, "nMin"), 64);
  EXPECT_EQ(Long(width, "nInc"), 8);

  EXPECT_EQ(CallInt("QUORIN_SetIntValue", Sig("J").c_str(), handle_, Str("Width"), jlong{641}),
            static_cast<jint>(qsim::kOutOfRange));
  // A failed getter still writes the record's zero fill: the status must be looked at first.
  jobject stale = NewDefine("QUORIN_INT_VALUE");
  SetLong(stale, "nCurValue", 99);
  SetLong(stale, "nMax", 99);
  EXPECT_EQ(GetInt("NoSuchNode", stale), static_cast<jint>(qsim::kUnknownNode));
  EXPECT_EQ(Long(stale, "nCurValue"), 0);
  EXPECT_EQ(Long(stale, "nMax"), 0);
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
  EXPECT_EQ(Long(fallback, "nMax"), 0);
  EXPECT_EQ(Long(fallback, "nMin"), 0);
  EXPECT_EQ(Long(fallback, "nInc"), 0);
  EXPECT_EQ(Int(handle_, "PayloadSize"), 7);

  qsim::SetIntNode(sdk_, "Width", 1024, 64, 50000, 8);
  qsim::SetIntNode(sdk_, "Height", 1024, 64, 50000, 8);
  EXPECT_EQ(Long(IntValue("PayloadSize"), "nCurValue"), -1794967296);  // 2500000000 in 32 bits
  qsim::SetIntNode(sdk_, "Width", 1024, 64, 65536, 8);
  qsim::SetIntNode(sdk_, "Height", 1024, 64, 65536, 8);
  EXPECT_EQ(Long(IntValue("PayloadSize"), "nCurValue"), 0);  // the product wraps to nothing
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
  jobject target = NewDefine("QUORIN_ENUM_VALUE");
  jobject list = Object(target, "lsSupportValue", "Ljava/util/ArrayList;");
  env_->CallBooleanMethod(list, env_->GetMethodID(env_->GetObjectClass(list), "add", "(Ljava/lang/Object;)Z"),
                          Str("stale"));
  Checked();
  EXPECT_EQ(GetInto("QUORIN_GetEnumValue", "PixelFormat", target, "QUORIN_ENUM_VALUE"), 0);
  EXPECT_EQ(Int(target, "nCurValue"), 0x01080001);
  ASSERT_EQ(ListSize(list), 2);
  jclass integer = env_->FindClass("java/lang/Integer");
  EXPECT_TRUE(env_->IsInstanceOf(ListGet(list, 0), integer));
  EXPECT_EQ(Int(ListGet(list, 0), "value"), 0x01080001);
  EXPECT_EQ(Int(ListGet(list, 1), "value"), 0x01100003);

  EXPECT_EQ(CallInt("QUORIN_SetEnumValueByString", Sig(kString).c_str(), handle_, Str("PixelFormat"), Str("Mono10")), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_SetEnumValueByString").at(0).texts, (std::vector<std::string>{"PixelFormat", "Mono10"}));
  EXPECT_EQ(CallInt("QUORIN_SetEnumValue", Sig("I").c_str(), handle_, Str("TriggerMode"), 1), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_SetEnumValue").at(0).numbers, std::vector<unsigned long long>{1});

  QUORIN_ENUM_VALUE record{};
  qsim::ScriptOutput("QUORIN_GetEnumValue", RecordBytes(record));
  GetInto("QUORIN_GetEnumValue", "PixelFormat", target, "QUORIN_ENUM_VALUE");
  EXPECT_EQ(ListSize(list), 0);  // cleared even when nothing is supported
  record.nSupportedNum = 1000;    // more than the record holds: never read past it
  for (unsigned int i = 0; i < QUORIN_MAX_ENUM_VALUE_NUM; ++i) record.nSupportValue[i] = i + 100;
  qsim::ScriptOutput("QUORIN_GetEnumValue", RecordBytes(record));
  GetInto("QUORIN_GetEnumValue", "PixelFormat", target, "QUORIN_ENUM_VALUE");
  ASSERT_EQ(ListSize(list), QUORIN_MAX_ENUM_VALUE_NUM);
  EXPECT_EQ(Int(ListGet(list, QUORIN_MAX_ENUM_VALUE_NUM - 1), "value"), QUORIN_MAX_ENUM_VALUE_NUM - 1 + 100);
}

TEST_F(ParamsTest, FloatsTravelAsTheirExactBits) {
  EXPECT_EQ(CallInt("QUORIN_SetFloatValue", Sig("F").c_str(), handle_, Str("ExposureTime"), 1234.5), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_SetFloatValue").at(0).numbers, std::vector<unsigned long long>{0x449A5000});
  jobject target = NewDefine("QUORIN_FLOAT_VALUE");
  EXPECT_EQ(GetInto("QUORIN_GetFloatValue", "ExposureTime", target, "QUORIN_FLOAT_VALUE"), 0);
  EXPECT_EQ(Float(target, "fCurValue"), 1234.5f);
  EXPECT_EQ(Float(target, "fMax"), 100000.0f);
  EXPECT_EQ(Float(target, "fMin"), 20.0f);

  QUORIN_FLOAT_VALUE odd{};
  const uint32_t bits[] = {0x80000000u, 0x00000001u, 0x7FC12345u};  // -0, smallest denormal, NaN with payload
  std::memcpy(&odd.fCurValue, &bits[0], 4);
  std::memcpy(&odd.fMax, &bits[1], 4);
  std::memcpy(&odd.fMin, &bits[2], 4);
  qsim::ScriptOutput("QUORIN_GetFloatValue", RecordBytes(odd));
  GetInto("QUORIN_GetFloatValue", "ExposureTime", target, "QUORIN_FLOAT_VALUE");
  const char* fields[] = {"fCurValue", "fMax", "fMin"};
  for (int i = 0; i < 3; ++i) {
    const float value = Float(target, fields[i]);
    uint32_t read;
    std::memcpy(&read, &value, 4);
    EXPECT_EQ(read, bits[i]) << fields[i];
  }
}

TEST_F(ParamsTest, BooleansAndCommands) {
  // Any non-zero Java value is true.
  EXPECT_EQ(CallInt("QUORIN_SetBoolValue", Sig("Z").c_str(), handle_, Str("ReverseX"), 2), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_SetBoolValue").at(0).numbers, std::vector<unsigned long long>{1});
  jobject target = NewDefine("QUORIN_BOOL_VALUE");
  EXPECT_EQ(GetInto("QUORIN_GetBoolValue", "ReverseX", target, "QUORIN_BOOL_VALUE"), 0);
  EXPECT_TRUE(Bool(target, "bCurValue"));
  EXPECT_EQ(GetInto("QUORIN_GetBoolValue", "Width", target, "QUORIN_BOOL_VALUE"), static_cast<jint>(qsim::kWrongNodeType));
  EXPECT_FALSE(Bool(target, "bCurValue"));

  EXPECT_EQ(CallInt("QUORIN_SetCommandValue", Sig("").c_str(), handle_, Str("TriggerSoftware")), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_SetCommandValue").at(0).texts, std::vector<std::string>{"TriggerSoftware"});
}

TEST_F(ParamsTest, StringValuesDecodeGbkAndStayWithinTheirArray) {
  jobject target = NewDefine("QUORIN_STRING_VALUE");
  EXPECT_EQ(GetInto("QUORIN_GetStringValue", "DeviceUserID", target, "QUORIN_STRING_VALUE"), 0);
  EXPECT_EQ(String(target, "chCurValue"), "分拣线一");
  EXPECT_EQ(Int(target, "nMaxLength"), 16);

  EXPECT_EQ(CallInt("QUORIN_SetStringValue", Sig(kString).c_str(), handle_, Str("DeviceUserID"), Str("Dock-9")), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_SetStringValue").at(0).texts, (std::vector<std::string>{"DeviceUserID", "Dock-9"}));
  GetInto("QUORIN_GetStringValue", "DeviceUserID", target, "QUORIN_STRING_VALUE");
  EXPECT_EQ(String(target, "chCurValue"), "Dock-9");

  QUORIN_STRING_VALUE full{};
  std::memset(full.chCurValue, 'z', sizeof full.chCurValue);  // no terminator in the array
  full.nMaxLength = 0x100000101LL;                              // only the low 32 bits reach Java
  qsim::ScriptOutput("QUORIN_GetStringValue", RecordBytes(full));
  GetInto("QUORIN_GetStringValue", "DeviceUserID", target, "QUORIN_STRING_VALUE");
  EXPECT_EQ(String(target, "chCurValue"), std::string(256, 'z'));
  EXPECT_EQ(Int(target, "nMaxLength"), 0x101);

  qsim::ScriptOutput("QUORIN_GetStringValue", {});
  qsim::ScriptStatus("QUORIN_GetStringValue", qsim::kNotReadable);
  EXPECT_EQ(GetInto("QUORIN_GetStringValue", "DeviceUserID", target, "QUORIN_STRING_VALUE"),
            static_cast<jint>(qsim::kNotReadable));
  EXPECT_EQ(String(target, "chCurValue"), "");
  EXPECT_EQ(Int(target, "nMaxLength"), 0);
}

TEST_F(ParamsTest, FrameNodeCountAndInvalidation) {
  const std::string sig = "(" + kHandleSig + "I)I";
  EXPECT_EQ(CallInt("QUORIN_SetFrameNodeNum", sig.c_str(), handle_, 0), 0);
  EXPECT_EQ(CallInt("QUORIN_InvalidateNodes", ("(" + kHandleSig + ")I").c_str(), handle_), 0);
  const auto calls = qsim::CallsTo("QUORIN_SetFrameNodeNum");
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[0].numbers, std::vector<unsigned long long>{0});
  EXPECT_EQ(calls[1].numbers, std::vector<unsigned long long>{3});  // invalidation is a count of 3
  EXPECT_EQ(calls[1].handle, sdk_);
}

}  // namespace
}  // namespace quorin_test
