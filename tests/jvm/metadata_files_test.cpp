// Algorithm parameters, the feature description, node access modes and device files.
#include <cstdio>
#include <fstream>
#include <iterator>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

const std::string kStr = "Ljava/lang/String;";

class MetadataTest : public JvmTest {
 protected:
  void SetUp() override {
    JvmTest::SetUp();
    handle_ = OpenReader(0);
    sdk_ = SdkHandle(handle_);
  }
  jint AlgorithmGet(const char* key, jobject target) {
    return CallInt("QUORIN_Algorithm_GetIntValue",
                   ("(" + kHandleSig + kStr + "L" + Define("QUORIN_ALGORITHM_INT_VALUE") + ";)I").c_str(), handle_,
                   key ? Str(key) : nullptr, target);
  }
  jint AccessMode(const char* key, jobject target) {
    return CallInt("QUORIN_XML_GetNodeAccessMode",
                   ("(" + kHandleSig + kStr + "L" + Define("QUORIN_XML_NODE_ACCESSMODE") + ";)I").c_str(), handle_,
                   key ? Str(key) : nullptr, target);
  }
  std::string ModeName(jobject target) {
    return EnumName(Object(target, "accessMode", "L" + Define("QUORIN_XML_AccessMode") + ";"));
  }
  jint Xml(jbyteArray buffer, jobject length) {
    return CallInt("QUORIN_XML_GetGenICamXML", ("(" + kHandleSig + "[BLjava/lang/Integer;)I").c_str(), handle_,
                   buffer, length);
  }
  jobject handle_ = nullptr;
  void* sdk_ = nullptr;
};

TEST_F(MetadataTest, AlgorithmParametersRoundTripSignExtended) {
  const std::string set = "(" + kHandleSig + kStr + "I)I";
  jobject value = NewDefine("QUORIN_ALGORITHM_INT_VALUE");
  EXPECT_EQ(CallInt("QUORIN_Algorithm_SetIntValue", set.c_str(), handle_, Str("DecodeTimeout"), 300), 0);
  EXPECT_EQ(qsim::CallsTo("QUORIN_Algorithm_SetIntValue").at(0).numbers, std::vector<unsigned long long>{300});
  EXPECT_EQ(AlgorithmGet("DecodeTimeout", value), 0);
  EXPECT_EQ(Long(value, "lOutValue"), 300);
  qsim::SetAlgorithmInt(sdk_, "Sensitivity", -1, -10, 10);
  EXPECT_EQ(AlgorithmGet("Sensitivity", value), 0);
  EXPECT_EQ(Long(value, "lOutValue"), -1);  // sign-extended into the long
  EXPECT_EQ(AlgorithmGet("NoSuchParameter", value), static_cast<jint>(qsim::kUnknownNode));
  EXPECT_EQ(Long(value, "lOutValue"), 0);  // a failed read leaves 0, not stack garbage
}

TEST_F(MetadataTest, FeatureDescriptionFillsTheCallersArrayAndInteger) {
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

TEST_F(MetadataTest, AccessModesComeFromTheNodeMap) {
  jobject target = NewDefine("QUORIN_XML_NODE_ACCESSMODE");
  ASSERT_EQ(AccessMode("Width", target), 0);
  EXPECT_EQ(ModeName(target), "QUORIN_AM_RW");
  ASSERT_EQ(AccessMode("PayloadSize", target), 0);
  EXPECT_EQ(ModeName(target), "QUORIN_AM_RO");
  ASSERT_EQ(AccessMode("TriggerSoftware", target), 0);
  EXPECT_EQ(ModeName(target), "QUORIN_AM_WO");
  // An unknown node leaves the object as it was.
  EXPECT_EQ(AccessMode("NoSuchNode", target), static_cast<jint>(qsim::kUnknownNode));
  EXPECT_EQ(ModeName(target), "QUORIN_AM_WO");
  // Numbers without a constant of their own read as undefined.
  const std::pair<unsigned int, const char*> modes[] = {
      {0, "QUORIN_AM_NI"}, {5, "QUORIN_AM_Undefined"}, {6, "QUORIN_AM_CycleDetect"}, {7, "QUORIN_AM_Undefined"}};
  for (const auto& [mode, name] : modes) {
    qsim::ScriptOutput("QUORIN_XML_GetNodeAccessMode", RecordBytes(mode));
    ASSERT_EQ(AccessMode("Width", target), 0);
    EXPECT_EQ(ModeName(target), name) << mode;
  }
}

class FileAccessTest : public MetadataTest {
 protected:
  jobject Request(const char* className, const std::string& user, const std::string& device) {
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
                   ("(" + kHandleSig + "L" + Define("QUORIN_FILE_ACCESS_PROGRESS") + ";)I").c_str(), handle_,
                   progress);
  }
  static std::string Contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  }
};

TEST_F(FileAccessTest, WriteThenReadGivesBackTheSameBytes) {
  const std::string upload = testing::TempDir() + "quorin-upload.cfg";
  const std::string download = testing::TempDir() + "quorin-download.cfg";
  std::string payload = "ExposureTime=1500\n";
  payload += std::string(20000, '\x7F');
  std::ofstream(upload, std::ios::binary) << payload;

  const std::string fileAccess = Define("QUORIN_FILE_ACCESS");
  ASSERT_EQ(Transfer("QUORIN_FileAccessWrite", Request(fileAccess.c_str(), upload, "UserSet2")), 0);
  const auto stored = qsim::DeviceFile(sdk_, "UserSet2");
  EXPECT_EQ(std::string(stored.begin(), stored.end()), payload);
  EXPECT_EQ(qsim::CallsTo("QUORIN_FileAccessWrite").at(0).texts, (std::vector<std::string>{upload, "UserSet2"}));

  ASSERT_EQ(Transfer("QUORIN_FileAccessRead", Request(fileAccess.c_str(), download, "UserSet2")), 0);
  EXPECT_EQ(Contents(download), payload);
  jobject progress = NewDefine("QUORIN_FILE_ACCESS_PROGRESS");
  ASSERT_EQ(Progress(progress), 0);
  EXPECT_EQ(Long(progress, "nCompleted"), static_cast<jlong>(payload.size()));
  EXPECT_EQ(Long(progress, "nTotal"), static_cast<jlong>(payload.size()));
  EXPECT_NE(Transfer("QUORIN_FileAccessRead", Request(fileAccess.c_str(), download, "NoSuchFile")), 0);
  std::remove(upload.c_str());
  std::remove(download.c_str());
}

TEST_F(FileAccessTest, OnlyAReadAcceptsAnObjectOfAnotherClass) {
  const std::string download = testing::TempDir() + "quorin-log.txt";
  jobject foreign = Request("QuorinTest/ForeignFileAccess", download, "DeviceLog");
  EXPECT_EQ(Transfer("QUORIN_FileAccessRead", foreign), 0);
  EXPECT_FALSE(Contents(download).empty());
  // A write finds its fields on the record class itself, so another class is refused.
  EXPECT_EQ(Transfer("QUORIN_FileAccessWrite", foreign), kBadArgument);
  EXPECT_TRUE(qsim::CallsTo("QUORIN_FileAccessWrite").empty());
  std::remove(download.c_str());
}

TEST_F(FileAccessTest, ProgressCountsAreWrittenOnlyOnSuccessAndInFull) {
  jobject progress = NewDefine("QUORIN_FILE_ACCESS_PROGRESS");
  SetLong(progress, "nCompleted", 11);
  SetLong(progress, "nTotal", 22);
  qsim::ScriptStatus("QUORIN_GetFileAccessProgress", qsim::kWrongCallOrder);
  EXPECT_EQ(Progress(progress), static_cast<jint>(qsim::kWrongCallOrder));
  EXPECT_EQ(Long(progress, "nCompleted"), 11);
  EXPECT_EQ(Long(progress, "nTotal"), 22);
  qsim::ScriptStatus("QUORIN_GetFileAccessProgress", 0);
  QUORIN_FILE_ACCESS_PROGRESS big{};
  big.nCompleted = 3000000000LL;
  big.nTotal = 0x123456789ALL;
  qsim::ScriptOutput("QUORIN_GetFileAccessProgress", RecordBytes(big));
  EXPECT_EQ(Progress(progress), 0);
  EXPECT_EQ(Long(progress, "nCompleted"), 3000000000LL);
  EXPECT_EQ(Long(progress, "nTotal"), 0x123456789ALL);
}

}  // namespace
}  // namespace quorin_test
