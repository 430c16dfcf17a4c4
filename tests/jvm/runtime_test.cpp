// Library load, the SDK version text, device texts and the diagnostics.
#include <fstream>
#include <iterator>

#include "QuorinSim.h"
#include "bridge.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

class RuntimeTest : public JvmTest {
 protected:
  std::string Version(unsigned int word) {
    qsim::SetSdkVersion(word);
    return Utf8(static_cast<jstring>(CallObject("QUORIN_GetSDKVersion", "()Ljava/lang/String;")));
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

TEST_F(RuntimeTest, GbkTextsBecomeJavaStrings) {
  EXPECT_EQ(Utf8(cToJstringutf(env_, "")), "");
  EXPECT_EQ(Utf8(cToJstringutf(env_, "\xB7\xD6\xBC\xF0\xCF\xDF\xD2\xBB")), "分拣线一");
  EXPECT_EQ(Utf8(cToJstringutf(env_, "Dock 3")), "Dock 3");
  // Device texts: UTF-8 stays UTF-8, anything else is GBK; a long text is never cut.
  EXPECT_EQ(Utf8(DeviceTextToJava(env_, "\xE4\xB8\xAD\xE6\x96\x87")), "中文");
  EXPECT_EQ(Utf8(DeviceTextToJava(env_, "\xD6\xD0\xCE\xC4")), "中文");
  EXPECT_EQ(Utf8(DeviceTextToJava(env_, "a\xE4\xB8\x42")), "a涓B");  // a three-byte lead short of its last continuation
  const std::string longText(5000, 'q');
  EXPECT_EQ(Utf8(DeviceTextToJava(env_, longText.c_str())), longText);
}

TEST(RuntimeDeathTest, DiagnosticTooLongForItsBufferEndsTheProcess) {
  const std::string huge(9000, 'x');
  EXPECT_DEATH(QN_RunInfo("%s", huge.c_str()), "exceeds 8192 bytes");
}

}  // namespace
}  // namespace quorin_test
