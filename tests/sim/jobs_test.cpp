// The reader's slower jobs as a user meets them: saved images open with their codec, device files
// travel with visible progress, and firmware upgrades run to a hundred and change the version.
#include <atomic>
#include <cstdio>
#include <iterator>
#include <set>
#include <thread>

#include <jpeglib.h>
#include <png.h>

#include "sim_harness.h"

namespace qsim_test {
namespace {

// An image as a viewer shows it: size and gray pixels, decoded whole; empty when unreadable.
struct Seen {
  unsigned int width = 0;
  unsigned int height = 0;
  Bytes pixels;
};

Seen Png(const unsigned char* file, size_t size) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, file, size)) return {};
  image.format = PNG_FORMAT_GRAY;
  Bytes pixels(PNG_IMAGE_SIZE(image));
  if (!png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr)) return {};
  return {image.width, image.height, pixels};
}

// libjpeg ends the process on a broken header and only warns about cut data.
Seen Jpeg(const unsigned char* file, size_t size) {
  jpeg_decompress_struct decoder{};
  jpeg_error_mgr errors{};
  decoder.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&decoder);
  jpeg_mem_src(&decoder, file, static_cast<unsigned long>(size));
  jpeg_read_header(&decoder, TRUE);
  decoder.out_color_space = JCS_GRAYSCALE;
  jpeg_start_decompress(&decoder);
  Seen seen{decoder.output_width, decoder.output_height, Bytes(decoder.output_width * decoder.output_height)};
  for (JSAMPROW row = seen.pixels.data(); decoder.output_scanline < decoder.output_height; row += seen.width) {
    jpeg_read_scanlines(&decoder, &row, 1);
  }
  jpeg_finish_decompress(&decoder);
  jpeg_destroy_decompress(&decoder);
  return errors.num_warnings == 0 ? seen : Seen{};
}

TEST_F(StandInTest, SavedImagesOpenWithTheirCodecAtTheirSize) {
  Bytes pixels(61 * 37);
  for (size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<unsigned char>(i * 7);
  QUORIN_SAVE_IMAGE_PARAM param{};
  param.pData = pixels.data();
  param.nDataLen = static_cast<unsigned int>(pixels.size());
  param.enPixelType = PixelType_Gvsp_Mono8;
  param.nWidth = 61;
  param.nHeight = 37;
  param.nJpgQuality = 90;
  void* handle = Open(k2DReader);
  param.enImageType = QUORIN_Image_Png;
  ASSERT_EQ(0, QUORIN_SaveImage(handle, &param));
  const Seen png = Png(param.pImageBuffer, param.nImageLen);
  EXPECT_EQ(pixels, png.pixels);  // lossless
  EXPECT_EQ(61u, png.width);
  param.enImageType = QUORIN_Image_Jpeg;
  ASSERT_EQ(0, QUORIN_SaveImage(handle, &param));
  const Seen jpeg = Jpeg(param.pImageBuffer, param.nImageLen);
  EXPECT_EQ(std::make_pair(61u, 37u), std::make_pair(jpeg.width, jpeg.height));
  param.enImageType = QUORIN_Image_Tif;
  EXPECT_EQ(qsim::kUnsupportedFormat, AsWord(QUORIN_SaveImage(handle, &param)));
  param.enImageType = QUORIN_Image_Bmp;
  param.enPixelType = PixelType_Gvsp_Mono10;
  EXPECT_EQ(qsim::kUnsupportedPixelType, AsWord(QUORIN_SaveImage(handle, &param)));
}

TEST_F(StandInTest, DeviceFileWriteShowsItsProgressToAnotherThread) {
  void* handle = Open(k2DReader);
  Bytes payload(40000);
  for (size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<unsigned char>(i * 7 + i / 256);
  const std::string upload = TempPath("upload.cfg");
  std::ofstream(upload, std::ios::binary).write(reinterpret_cast<const char*>(payload.data()), payload.size());
  qsim::SetTransferPace(4000, 5);  // ten chunks

  std::atomic<bool> done{false};
  std::vector<std::pair<long long, long long>> seen;
  std::thread poller([&] {
    for (QUORIN_FILE_ACCESS_PROGRESS now{}; !done;) {
      if (QUORIN_GetFileAccessProgress(handle, &now) == 0) seen.emplace_back(now.nCompleted, now.nTotal);
    }
  });
  QUORIN_FILE_ACCESS access{upload.c_str(), "UserSet2"};
  const int written = QUORIN_FileAccessWrite(handle, &access);
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
  access.pDevFileName = "DeviceLog";  // kept from the start, naming the model
  ASSERT_EQ(0, QUORIN_FileAccessRead(handle, &access));
  std::ifstream log(upload);
  EXPECT_NE(std::string::npos, std::string(std::istreambuf_iterator<char>(log), {}).find("QR-2020-2D"));
  std::remove(upload.c_str());

  access.pDevFileName = "NoSuchFile";
  EXPECT_EQ(qsim::kNoSuchDeviceFile, AsWord(QUORIN_FileAccessRead(handle, &access)));
  EXPECT_EQ((std::vector<std::string>{upload, "NoSuchFile"}), qsim::CallsTo("QUORIN_FileAccessRead").back().texts);
  access = {"/no/such/upload", "UserSet1"};
  EXPECT_EQ(qsim::kNoSuchFile, AsWord(QUORIN_FileAccessWrite(handle, &access)));
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
