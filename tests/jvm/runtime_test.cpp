// Library load, the SDK version text, the field helpers and the enumeration-constant helpers.
#include <fstream>
#include <iterator>

#include "QuorinSim.h"
#include "bridge.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

constexpr const char* kProbe = "QuorinTest/FieldProbe";
constexpr const char* kPixelType = "QuorinCtrlWrapper/QuorinCtrlDefine$QuorinGvspPixelType";

class RuntimeTest : public JvmTest {
 protected:
  std::string Version(unsigned int word) {
    qsim::SetSdkVersion(word);
    return Utf8(static_cast<jstring>(CallObject("QUORIN_GetSDKVersion", "()Ljava/lang/String;")));
  }
  // Name of an enumeration constant, "<null>" for null.
  std::string ConstantName(jobject constant) {
    if (constant == nullptr) return "<null>";
    jclass enumClass = env_->FindClass("java/lang/Enum");
    jmethodID name = env_->GetMethodID(enumClass, "name", "()Ljava/lang/String;");
    jobject text = env_->CallObjectMethod(constant, name);
    Checked();
    return Utf8(static_cast<jstring>(text));
  }
};

TEST_F(RuntimeTest, SdkVersionIsFourUnsignedBytesMostSignificantFirst) {
  EXPECT_EQ(Version(0x01020304u), "1.2.3.4");
  EXPECT_EQ(Version(0xFFFFFFFFu), "255.255.255.255");
  EXPECT_EQ(Version(0x00000000u), "0.0.0.0");
  EXPECT_EQ(Version(0x0A80FF07u), "10.128.255.7");
}

TEST_F(RuntimeTest, LoadedLibraryCarriesItsIdentificationTexts) {
  std::ifstream file(QUORIN_BRIDGE_LIBRARY, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  EXPECT_NE(bytes.find("[LIB_INFO]FileName: libQuorinCtrlWrapper.so"), std::string::npos);
  EXPECT_NE(bytes.find("[LIB_INFO]Version: 1.5.3.1"), std::string::npos);
  EXPECT_NE(bytes.find("[LIB_INFO]Description: BaseLine_L Build20231221"), std::string::npos);
}

TEST_F(RuntimeTest, ReadsCarryEveryTypeInOneZeroExtendedWord) {
  jobject probe = New(kProbe);
  SetInt(probe, "i", -1);
  SetShort(probe, "s", -1);
  SetLong(probe, "j", -2);
  env_->SetByteField(probe, env_->GetFieldID(env_->GetObjectClass(probe), "b", "B"), -1);
  env_->SetCharField(probe, env_->GetFieldID(env_->GetObjectClass(probe), "c", "C"), 0xFFFE);
  env_->SetFloatField(probe, env_->GetFieldID(env_->GetObjectClass(probe), "f", "F"), 1.5f);
  env_->SetDoubleField(probe, env_->GetFieldID(env_->GetObjectClass(probe), "d", "D"), -2.0);
  SetBool(probe, "z", true);

  EXPECT_EQ(GetFieldValue(env_, probe, "i", "I"), 0x00000000FFFFFFFFull);
  EXPECT_EQ(GetFieldValue(env_, probe, "s", "S"), 0xFFFFull);
  EXPECT_EQ(GetFieldValue(env_, probe, "b", "B"), 0xFFull);
  EXPECT_EQ(GetFieldValue(env_, probe, "c", "C"), 0xFFFEull);
  EXPECT_EQ(GetFieldValue(env_, probe, "j", "J"), 0xFFFFFFFFFFFFFFFEull);
  EXPECT_EQ(GetFieldValue(env_, probe, "f", "F"), 0x3FC00000ull);
  EXPECT_EQ(GetFieldValue(env_, probe, "d", "D"), 0xC000000000000000ull);
  EXPECT_EQ(GetFieldValue(env_, probe, "z", "Z"), 1ull);
  // Signatures that name no type read as 0: only the object test looks at one character.
  EXPECT_EQ(GetFieldValue(env_, probe, "i", "II"), 0ull);
  EXPECT_EQ(GetFieldValue(env_, probe, "i", "Q"), 0ull);
}

TEST_F(RuntimeTest, WritesTakeTheLowBitsOfTheWord) {
  jobject probe = New(kProbe);
  SetFieldValue(env_, probe, "z", "Z", 0x100);  // only the lowest byte decides
  EXPECT_FALSE(Bool(probe, "z"));
  SetFieldValue(env_, probe, "z", "Z", 0x1);
  EXPECT_TRUE(Bool(probe, "z"));
  SetFieldValue(env_, probe, "f", "F", 0x3FC00000);
  EXPECT_EQ(Float(probe, "f"), 1.5f);
  SetFieldValue(env_, probe, "i", "I", 0x1234567880000000ull);
  EXPECT_EQ(Int(probe, "i"), static_cast<jint>(0x80000000u));
  SetFieldValue(env_, probe, "s", "S", 0x18000);
  EXPECT_EQ(Short(probe, "s"), static_cast<jshort>(0x8000));
  SetFieldValue(env_, probe, "j", "J", 0x8000000000000001ull);
  EXPECT_EQ(Long(probe, "j"), static_cast<jlong>(0x8000000000000001ull));
  SetInt(probe, "i", 7);
  SetFieldValue(env_, probe, "i", "I;", 9);  // no such type: nothing is written
  EXPECT_EQ(Int(probe, "i"), 7);
}

TEST_F(RuntimeTest, ObjectAndArraySignaturesGoToTheObjectAccessors) {
  jobject probe = New(kProbe);
  jstring text = Str("code 128");
  SetFieldValue(env_, probe, "text", "Ljava/lang/String;", PointerWord(text));
  EXPECT_EQ(String(probe, "text"), "code 128");
  jbyteArray bytes = env_->NewByteArray(3);
  SetFieldValue(env_, probe, "bytes", "[B", PointerWord(bytes));
  jobject read = ObjectFromWord(GetFieldValue(env_, probe, "bytes", "[B"));
  EXPECT_TRUE(env_->IsSameObject(read, bytes));
  EXPECT_EQ(env_->GetArrayLength(static_cast<jbyteArray>(read)), 3);
}

TEST_F(RuntimeTest, MissingFieldLeavesNoSuchFieldErrorForJava) {
  jobject probe = New(kProbe);
  SetInt(probe, "i", 5);
  EXPECT_EQ(GetFieldValue(env_, probe, "nSuchField", "I"), 0ull);
  EXPECT_EQ(TakeException(), "java.lang.NoSuchFieldError");
  SetFieldValue(env_, probe, "i", "J", 3);  // right name, wrong type
  EXPECT_EQ(TakeException(), "java.lang.NoSuchFieldError");
  EXPECT_EQ(Int(probe, "i"), 5);
  // Once an error is pending nothing more is looked up, so Java sees the first one.
  EXPECT_EQ(GetFieldValue(env_, probe, "first", "I"), 0ull);
  EXPECT_EQ(GetFieldValue(env_, probe, "i", "I"), 0ull);
  std::string message;
  EXPECT_EQ(TakeException(&message), "java.lang.NoSuchFieldError");
  EXPECT_NE(message.find("first"), std::string::npos) << message;
}

TEST_F(RuntimeTest, GetMethodIdLooksOnTheObjectsOwnClass) {
  jobject probe = New(kProbe);
  EXPECT_NE(GetMethodID(env_, probe, "toString", "()Ljava/lang/String;"), nullptr);
  EXPECT_EQ(GetMethodID(env_, probe, "OnImageCallBack", "()I"), nullptr);
  EXPECT_EQ(TakeException(), "java.lang.NoSuchMethodError");
}

TEST_F(RuntimeTest, EnumConstantsAreFoundByTheirSdkNumber) {
  jclass pixelType = env_->FindClass(kPixelType);
  auto find = [&](unsigned int number) {
    return ConstantName(GetEnumObject(env_, pixelType, kPixelType, "nValue", "I", number));
  };
  EXPECT_EQ(find(0x01080001u), "PixelType_Gvsp_Mono8");
  EXPECT_EQ(find(0x80180001u), "PixelType_Gvsp_Jpeg");        // negative as a Java int
  EXPECT_EQ(find(0xFFFFFFFFu), "PixelType_Gvsp_Undefined");   // zero-extended -1
  EXPECT_EQ(find(0x12345678u), "<null>");
  EXPECT_EQ(GetEnumObject(env_, nullptr, kPixelType, "nValue", "I", 1), nullptr);
}

TEST_F(RuntimeTest, AccessModesMapToTheirConstantsWithUndefinedForTheRest) {
  const char* expected[] = {"QUORIN_AM_NI", "QUORIN_AM_NA", "QUORIN_AM_WO", "QUORIN_AM_RO",
                            "QUORIN_AM_RW", "QUORIN_AM_Undefined", "QUORIN_AM_CycleDetect"};
  for (int mode = 0; mode < 7; ++mode) EXPECT_EQ(ConstantName(getType(env_, mode)), expected[mode]) << mode;
  EXPECT_EQ(ConstantName(getType(env_, 7)), "QUORIN_AM_Undefined");
  EXPECT_EQ(ConstantName(getType(env_, -1)), "QUORIN_AM_Undefined");
  EXPECT_EQ(ConstantName(getType(env_, 0x7FFFFFFF)), "QUORIN_AM_Undefined");
}

TEST_F(RuntimeTest, GbkTextsBecomeJavaStrings) {
  EXPECT_EQ(Utf8(cToJstringutf(env_, "")), "");
  EXPECT_EQ(Utf8(cToJstringutf(env_, "\xB7\xD6\xBC\xF0\xCF\xDF\xD2\xBB")), "分拣线一");
  EXPECT_EQ(Utf8(cToJstringutf(env_, "Dock 3")), "Dock 3");
  // Device texts: UTF-8 stays UTF-8, anything else is GBK; a long text is never cut.
  EXPECT_EQ(Utf8(DeviceTextToJava(env_, "\xE4\xB8\xAD\xE6\x96\x87")), "中文");
  EXPECT_EQ(Utf8(DeviceTextToJava(env_, "\xD6\xD0\xCE\xC4")), "中文");
  const std::string longText(5000, 'q');
  EXPECT_EQ(Utf8(DeviceTextToJava(env_, longText.c_str())), longText);
}

TEST_F(RuntimeTest, DiagnosticsGoToStandardOutputAsTheyAre) {
  testing::internal::CaptureStdout();
  QN_RunInfo("JNI test %s nRet[%#x]\r\n", "QUORIN_EnumDevices", 0x80060005u);
  QN_RunInfo("no line end");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "JNI test QUORIN_EnumDevices nRet[0x80060005]\r\nno line end");
}

TEST(RuntimeDeathTest, DiagnosticTooLongForItsBufferEndsTheProcess) {
  const std::string huge(9000, 'x');
  EXPECT_DEATH(QN_RunInfo("%s", huge.c_str()), "exceeds 8192 bytes");
}

}  // namespace
}  // namespace quorin_test
