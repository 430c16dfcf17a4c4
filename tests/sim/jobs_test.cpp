// The reader's slower jobs as a user meets them: saved images open with their codec, device files
// travel with visible progress, and firmware upgrades run to a hundred and change the version.
#include <atomic>
#include <chrono>
#include <csetjmp>
#include <cstdio>
#include <thread>

#include <jpeglib.h>
#include <png.h>

#include "sim_harness.h"

namespace qsim_test {
namespace {

// Width and height as the codec library reads them from a file; {0, 0} when it cannot.
std::pair<unsigned int, unsigned int> PngSize(const std::string& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_file(&image, path.c_str())) return {0, 0};
  Bytes pixels(PNG_IMAGE_SIZE(image));
  image.format = PNG_FORMAT_GRAY;
  const bool read = png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr) != 0;
  return read ? std::make_pair(image.width, image.height) : std::make_pair(0u, 0u);
}

struct JpegFailure {
  jpeg_error_mgr manager;
  std::jmp_buf jump;
};

std::pair<unsigned int, unsigned int> JpegSize(const std::string& path) {
  FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return {0, 0};
  jpeg_decompress_struct decoder{};
  JpegFailure failure{};
  decoder.err = jpeg_std_error(&failure.manager);
  failure.manager.error_exit = [](j_common_ptr info) { std::longjmp(reinterpret_cast<JpegFailure*>(info->err)->jump, 1); };
  std::pair<unsigned int, unsigned int> size{0, 0};
  if (setjmp(failure.jump) == 0) {
    jpeg_create_decompress(&decoder);
    jpeg_stdio_src(&decoder, file);
    jpeg_read_header(&decoder, TRUE);
    jpeg_start_decompress(&decoder);
    std::vector<JSAMPLE> row(decoder.output_width * decoder.output_components);
    JSAMPROW rows[] = {row.data()};
    while (decoder.output_scanline < decoder.output_height) jpeg_read_scanlines(&decoder, rows, 1);
    jpeg_finish_decompress(&decoder);
    size = {decoder.output_width, decoder.output_height};
  }
  jpeg_destroy_decompress(&decoder);
  std::fclose(file);
  return size;
}

TEST_F(StandInTest, SavedImagesOpenWithTheirCodecAtTheirSize) {
  void* handle = Open(k2DReader);
  Bytes pixels(61 * 37);
  for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 7);
  QUORIN_SAVE_IMAGE_PARAM param{};
  param.pData = pixels.data();
  param.nDataLen = static_cast<unsigned int>(pixels.size());
  param.enPixelType = PixelType_Gvsp_Mono8;
  param.nWidth = 61;
  param.nHeight = 37;
  param.nJpgQuality = 90;
  for (QUORIN_IMAGE_TYPE type : {QUORIN_Image_Png, QUORIN_Image_Jpeg}) {
    param.enImageType = type;
    ASSERT_EQ(0, QUORIN_SaveImage(handle, &param)) << type;
    const std::string path = TempPath(type == QUORIN_Image_Png ? "saved.png" : "saved.jpg");
    std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(param.pImageBuffer), param.nImageLen);
    EXPECT_EQ(std::make_pair(61u, 37u), type == QUORIN_Image_Png ? PngSize(path) : JpegSize(path)) << type;
    std::remove(path.c_str());
  }
  param.enImageType = QUORIN_Image_Tif;
  EXPECT_EQ(qsim::kUnsupportedFormat, AsWord(QUORIN_SaveImage(handle, &param)));
  param.enImageType = QUORIN_Image_Bmp;
  param.enPixelType = PixelType_Gvsp_Mono10;
  EXPECT_EQ(qsim::kUnsupportedPixelType, AsWord(QUORIN_SaveImage(handle, &param)));
}

QUORIN_FILE_ACCESS FileAccess(const std::string& host, const char* device) {
  QUORIN_FILE_ACCESS access{};
  access.pUserFileName = host.c_str();
  access.pDevFileName = device;
  return access;
}

TEST_F(StandInTest, DeviceFileRoundTripShowsItsProgressToAnotherThread) {
  void* handle = Open(k2DReader);
  Bytes payload(40000);
  for (size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<unsigned char>(i * 7 + i / 256);
  const std::string upload = TempPath("upload.cfg");
  const std::string download = TempPath("download.cfg");
  std::ofstream(upload, std::ios::binary).write(reinterpret_cast<const char*>(payload.data()), payload.size());
  qsim::SetTransferPace(4000, 5);  // ten chunks

  std::atomic<bool> done{false};
  std::vector<std::pair<long long, long long>> seen;
  std::thread poller([&] {
    while (!done) {
      QUORIN_FILE_ACCESS_PROGRESS now{};
      if (QUORIN_GetFileAccessProgress(handle, &now) == 0) seen.emplace_back(now.nCompleted, now.nTotal);
    }
  });
  QUORIN_FILE_ACCESS write = FileAccess(upload, "UserSet2");
  const int written = QUORIN_FileAccessWrite(handle, &write);
  done = true;
  poller.join();
  ASSERT_EQ(0, written);
  EXPECT_EQ(payload, qsim::DeviceFile(handle, "UserSet2"));
  std::set<long long> midway;
  for (size_t i = 0; i < seen.size(); ++i) {
    EXPECT_GE(seen[i].first, i > 0 ? seen[i - 1].first : 0);
    if (seen[i].second == 40000 && seen[i].first > 0 && seen[i].first < 40000) midway.insert(seen[i].first);
  }
  EXPECT_FALSE(midway.empty()) << seen.size() << " samples";
  EXPECT_EQ((std::make_pair(40000LL, 40000LL)), seen.back());

  QUORIN_FILE_ACCESS read = FileAccess(download, "UserSet2");
  ASSERT_EQ(0, QUORIN_FileAccessRead(handle, &read));
  EXPECT_EQ(payload, ReadFile(download));
  EXPECT_EQ((std::vector<std::string>{download, "UserSet2"}), qsim::CallsTo("QUORIN_FileAccessRead").back().texts);
  read = FileAccess(download, "DeviceLog");  // kept from the start
  ASSERT_EQ(0, QUORIN_FileAccessRead(handle, &read));
  const Bytes logged = ReadFile(download);
  EXPECT_NE(std::string::npos, std::string(logged.begin(), logged.end()).find("QR-2020-2D"));
  read = FileAccess(download, "NoSuchFile");
  EXPECT_EQ(qsim::kNoSuchDeviceFile, AsWord(QUORIN_FileAccessRead(handle, &read)));
  const std::string missing = TempPath("no-such-upload");  // the record keeps only its characters
  write = FileAccess(missing, "UserSet1");
  EXPECT_EQ(qsim::kNoSuchFile, AsWord(QUORIN_FileAccessWrite(handle, &write)));
  std::remove(upload.c_str());
  std::remove(download.c_str());
}

class UpgradeTest : public StandInTest {
 protected:
  void SetUp() override {
    StandInTest::SetUp();
    ASSERT_EQ(0, QUORIN_CreateHandleForUpgradeAndEncryption(&upgrader_));
    target_ = qsim::DefaultReaders()[2];
  }
  void TearDown() override { std::remove(file_.c_str()); }
  int Start(const std::string& contents) {
    std::ofstream(file_, std::ios::binary) << contents;
    return QUORIN_StartUpgradeDeviceByHandle(upgrader_, &target_, file_.c_str());
  }
  unsigned int Progress() {
    unsigned int progress = 999;
    EXPECT_EQ(0, QUORIN_GetUpgradeProcessByHandle(upgrader_, &progress));
    return progress;
  }
  std::string Version() {
    QUORIN_DEVICE_INFO_LIST list{};
    EXPECT_EQ(0, QUORIN_EnumDevices(&list, QUORIN_GIGE_DEVICE));
    return list.pDeviceInfo[2]->stGigEInfo.chDeviceVersion;
  }

  void* upgrader_ = nullptr;
  QUORIN_DEVICE_INFO target_{};
  std::string file_ = TempPath("firmware.fw");
};

TEST_F(UpgradeTest, ProgressRunsToAHundredAndTheVersionChanges) {
  qsim::SetUpgradeDuration(200);
  EXPECT_EQ(0u, Progress());
  ASSERT_EQ(0, Start("V2.9.0 build261199\r\n" + std::string(4096, '\xF0')));
  EXPECT_EQ(qsim::kBusy, AsWord(Start("V2.9.0")));
  std::set<unsigned int> seen;
  for (unsigned int last = 0; last < 100;) {
    const unsigned int now = Progress();
    EXPECT_GE(now, last);
    seen.insert(last = now);
  }
  EXPECT_GE(std::count_if(seen.begin(), seen.end(), [](unsigned int p) { return p > 0 && p < 100; }), 3);
  EXPECT_EQ("V2.9.0 build261199", Version());
  qsim::SetUpgradeDuration(0);  // a file that names no version bumps the build, carrying through nines
  ASSERT_EQ(0, Start("\x7F" "ELF"));
  while (Progress() < 100) std::this_thread::yield();
  EXPECT_EQ("V2.9.0 build261200", Version());
}

TEST_F(UpgradeTest, BadStartsFailAndDestroyingOrResettingStopsAnUpgrade) {
  EXPECT_EQ(qsim::kBadFirmware, AsWord(Start("")));
  QUORIN_DEVICE_INFO target = target_;
  std::memcpy(target_.stGigEInfo.chSerialNumber, "QN0000X0000", 12);
  EXPECT_EQ(qsim::kNoSuchDevice, AsWord(Start("V9.0.0")));
  target_ = target;
  EXPECT_EQ(0u, Progress());
  qsim::SetUpgradeDuration(600000);
  ASSERT_EQ(0, Start("V9.0.0"));
  ASSERT_EQ(0, QUORIN_DestroyHandleForUpgradeAndEncryption(upgrader_));  // a test hang here is the fault
  EXPECT_EQ("V2.8.0 build231120", Version());
  unsigned int progress = 0;
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_GetUpgradeProcessByHandle(upgrader_, &progress)));
  ASSERT_EQ(0, QUORIN_CreateHandleForUpgradeAndEncryption(&upgrader_));
  ASSERT_EQ(0, Start("V9.0.0"));
  qsim::Reset();
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_GetUpgradeProcessByHandle(upgrader_, &progress)));
  EXPECT_EQ("V2.8.0 build231120", Version());
}

}  // namespace
}  // namespace qsim_test
