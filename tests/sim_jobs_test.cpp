// The stand-in's slower jobs, driven through the SDK functions and the qsim controls: image saving,
// waybill extraction, the legacy fetch, algorithm parameters, the feature description, device
// files, network configuration and firmware upgrades.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <jpeglib.h>
#include <png.h>

#include "QuorinCtrl.h"
#include "QuorinSim.h"

namespace {

using Bytes = std::vector<unsigned char>;
using Clock = std::chrono::steady_clock;

constexpr const char* k2DReader = "QN2405C0117";
constexpr const char* kMultiChannelReader = "QN2403M0042";
constexpr const char* kWaybillReader = "QN2311W0008";
constexpr const char* kAreaCamera = "QN2408A0230";

unsigned int AsWord(int status) { return static_cast<unsigned int>(status); }

// ---------------------------------------------------------------------------
// Images: a test picture, and readers of the three formats.

struct Picture {
  unsigned int width = 0;
  unsigned int height = 0;
  Bytes pixels;  // Mono8, rows top-down without padding

  unsigned char At(unsigned int x, unsigned int y) const { return pixels[y * width + x]; }
};

// A smooth ramp with a raised 8 x 8 checkerboard: every pixel differs from its neighbours.
Picture TestPicture(unsigned int width, unsigned int height) {
  Picture picture{width, height, Bytes(static_cast<size_t>(width) * height)};
  for (unsigned int y = 0; y < height; ++y) {
    for (unsigned int x = 0; x < width; ++x) {
      picture.pixels[y * width + x] = static_cast<unsigned char>((x + 2 * y) % 200 + ((x / 8 + y / 8) % 2) * 40);
    }
  }
  return picture;
}

unsigned int LittleEndian(const Bytes& bytes, size_t at, size_t size) {
  unsigned int value = 0;
  for (size_t i = 0; i < size; ++i) {
    value |= static_cast<unsigned int>(bytes.at(at + i)) << (8 * i);
  }
  return value;
}

// An 8-bit BMP as the stand-in writes it: rows bottom-up, padded to 4 bytes.
Picture ReadBmp(const Bytes& file) {
  Picture picture{LittleEndian(file, 18, 4), LittleEndian(file, 22, 4), {}};
  const unsigned int pixelsAt = LittleEndian(file, 10, 4);
  const unsigned int rowBytes = (picture.width + 3) & ~3u;
  for (unsigned int y = 0; y < picture.height; ++y) {
    const size_t row = pixelsAt + static_cast<size_t>(picture.height - 1 - y) * rowBytes;
    picture.pixels.insert(picture.pixels.end(), file.begin() + row, file.begin() + row + picture.width);
  }
  return picture;
}

Picture ReadJpeg(const Bytes& file) {
  jpeg_decompress_struct decompress;
  jpeg_error_mgr errors;
  decompress.err = jpeg_std_error(&errors);
  jpeg_create_decompress(&decompress);
  jpeg_mem_src(&decompress, file.data(), file.size());
  jpeg_read_header(&decompress, TRUE);
  jpeg_start_decompress(&decompress);
  Picture picture{decompress.output_width, decompress.output_height, {}};
  picture.pixels.resize(static_cast<size_t>(picture.width) * picture.height * decompress.output_components);
  while (decompress.output_scanline < decompress.output_height) {
    JSAMPROW row = picture.pixels.data() + static_cast<size_t>(decompress.output_scanline) * picture.width;
    jpeg_read_scanlines(&decompress, &row, 1);
  }
  jpeg_finish_decompress(&decompress);
  jpeg_destroy_decompress(&decompress);
  return picture;
}

Picture ReadPng(const Bytes& file) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (!png_image_begin_read_from_memory(&image, file.data(), file.size())) {
    ADD_FAILURE() << image.message;
    return {};
  }
  image.format = PNG_FORMAT_GRAY;
  Picture picture{image.width, image.height, Bytes(PNG_IMAGE_SIZE(image))};
  EXPECT_TRUE(png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr)) << image.message;
  return picture;
}

int LargestDifference(const Picture& a, const Picture& b) {
  int largest = 0;
  for (size_t i = 0; i < std::min(a.pixels.size(), b.pixels.size()); ++i) {
    largest = std::max(largest, std::abs(a.pixels[i] - b.pixels[i]));
  }
  return largest;
}

// ---------------------------------------------------------------------------
// A small XML reader: enough to hold the feature description to well-formedness.

struct XmlElement {
  std::string name;
  std::map<std::string, std::string> attributes;
  std::string text;
  std::vector<XmlElement> children;

  const XmlElement* Child(const std::string& wanted) const {
    for (const XmlElement& child : children) {
      if (child.name == wanted) return &child;
    }
    return nullptr;
  }
  std::string ChildText(const std::string& wanted) const {
    const XmlElement* child = Child(wanted);
    return child == nullptr ? "<none>" : child->text;
  }
};

// Appends `raw` unescaped; false for a '<' or an '&' that starts none of the five entities.
bool Unescape(const std::string& raw, std::string& out) {
  static const std::map<std::string, char> kEntities = {
      {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
  for (size_t i = 0; i < raw.size(); ++i) {
    if (raw[i] == '<') return false;
    if (raw[i] != '&') {
      out += raw[i];
      continue;
    }
    const size_t end = raw.find(';', i);
    auto entity = end == std::string::npos ? kEntities.end() : kEntities.find(raw.substr(i + 1, end - i - 1));
    if (entity == kEntities.end()) return false;
    out += entity->second;
    i = end;
  }
  return true;
}

// The single root element of a document, or false: every '<' must open a well-formed tag with
// quoted attributes, and tags must nest and close in order.
bool ReadXml(const std::string& xml, XmlElement& root) {
  static const std::regex kTag(R"re(<(/?)([A-Za-z_][\w:.-]*)((?:\s+[A-Za-z_][\w:.-]*="[^"<]*")*)\s*(/?)>)re");
  static const std::regex kAttribute(R"re(([A-Za-z_][\w:.-]*)="([^"]*)")re");
  XmlElement document;  // holds the root as its one child
  std::vector<XmlElement*> open = {&document};
  size_t at = xml.compare(0, 5, "<?xml") == 0 ? xml.find("?>") + 2 : 0;
  for (std::smatch tag; at < xml.size(); at += tag.length(0)) {
    const size_t next = std::min(xml.find('<', at), xml.size());
    if (!Unescape(xml.substr(at, next - at), open.back()->text)) return false;
    at = next;
    if (at == xml.size()) break;
    if (!std::regex_search(xml.begin() + static_cast<long>(at), xml.end(), tag, kTag,
                           std::regex_constants::match_continuous)) {
      return false;
    }
    if (tag[1] == "/") {
      if (open.size() < 2 || open.back()->name != tag[2] || tag[3].length() != 0 || tag[4] == "/") return false;
      open.pop_back();
      continue;
    }
    XmlElement& element = open.back()->children.emplace_back();
    element.name = tag[2];
    const std::string attributes = tag[3];
    for (std::sregex_iterator it(attributes.begin(), attributes.end(), kAttribute), end; it != end; ++it) {
      if (!Unescape((*it)[2], element.attributes[(*it)[1]])) return false;
    }
    if (tag[4] != "/") open.push_back(&element);
  }
  if (open.size() != 1 || document.children.size() != 1 ||
      document.text.find_first_not_of(" \r\n\t") != std::string::npos) {
    return false;
  }
  root = std::move(document.children[0]);
  return true;
}

// ---------------------------------------------------------------------------

std::string TempPath(const std::string& name) { return testing::TempDir() + "qsim-jobs-" + name; }

void WriteFile(const std::string& path, const Bytes& bytes) {
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()),
                                              static_cast<std::streamsize>(bytes.size()));
}

Bytes ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
}

class JobsTest : public ::testing::Test {
 protected:
  void SetUp() override { qsim::Reset(); }

  static void* Create(const char* serial) {
    void* handle = nullptr;
    EXPECT_EQ(0, QUORIN_CreateHandleBySerialNumber(&handle, serial));
    return handle;
  }
  static void* Open(const char* serial) {
    void* handle = Create(serial);
    EXPECT_EQ(0, QUORIN_OpenDevice(handle));
    return handle;
  }
  static QUORIN_GIGE_DEVICE_INFO Enumerated(const char* serial) {
    QUORIN_DEVICE_INFO_LIST list{};
    EXPECT_EQ(0, QUORIN_EnumDevices(&list, QUORIN_GIGE_DEVICE));
    for (unsigned int i = 0; i < list.nDeviceNum; ++i) {
      if (std::string(list.pDeviceInfo[i]->stGigEInfo.chSerialNumber) == serial) {
        return list.pDeviceInfo[i]->stGigEInfo;
      }
    }
    ADD_FAILURE() << serial << " is not enumerated";
    return {};
  }
};

// ---------------------------------------------------------------------------
// Image saving.

class SaveImageTest : public JobsTest {
 protected:
  void SetUp() override {
    JobsTest::SetUp();
    handle_ = Open(k2DReader);
    param_.pData = picture_.pixels.data();
    param_.nDataLen = static_cast<unsigned int>(picture_.pixels.size());
    param_.enPixelType = PixelType_Gvsp_Mono8;
    param_.nWidth = static_cast<unsigned short>(picture_.width);
    param_.nHeight = static_cast<unsigned short>(picture_.height);
    param_.nJpgQuality = 90;
  }
  Bytes Save(QUORIN_IMAGE_TYPE type, unsigned int quality = 90) {
    param_.enImageType = type;
    param_.nJpgQuality = quality;
    EXPECT_EQ(0, QUORIN_SaveImage(handle_, &param_)) << type;
    return Bytes(param_.pImageBuffer, param_.pImageBuffer + param_.nImageLen);
  }

  Picture picture_ = TestPicture(61, 37);  // odd sizes: BMP rows need padding
  void* handle_ = nullptr;
  QUORIN_SAVE_IMAGE_PARAM param_{};
};

TEST_F(SaveImageTest, EachFormatDecodesBackToThePicture) {
  const Bytes bmp = Save(QUORIN_Image_Bmp);
  ASSERT_GE(bmp.size(), 2u);
  EXPECT_EQ('B', bmp[0]);
  EXPECT_EQ('M', bmp[1]);
  EXPECT_EQ(14u + 40 + 1024 + 64 * 37, bmp.size());
  const Picture fromBmp = ReadBmp(bmp);
  EXPECT_EQ(61u, fromBmp.width);
  EXPECT_EQ(37u, fromBmp.height);
  EXPECT_EQ(picture_.pixels, fromBmp.pixels);

  const Bytes png = Save(QUORIN_Image_Png);
  EXPECT_EQ((Bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}), Bytes(png.begin(), png.begin() + 8));
  const Picture fromPng = ReadPng(png);
  EXPECT_EQ(61u, fromPng.width);
  EXPECT_EQ(37u, fromPng.height);
  EXPECT_EQ(picture_.pixels, fromPng.pixels);  // lossless

  const Bytes fine = Save(QUORIN_Image_Jpeg, 100);
  EXPECT_EQ((Bytes{0xFF, 0xD8, 0xFF}), Bytes(fine.begin(), fine.begin() + 3));
  EXPECT_EQ((Bytes{0xFF, 0xD9}), Bytes(fine.end() - 2, fine.end()));
  const Picture fromJpeg = ReadJpeg(fine);
  EXPECT_EQ(61u, fromJpeg.width);
  EXPECT_EQ(37u, fromJpeg.height);
  EXPECT_LE(LargestDifference(picture_, fromJpeg), 8);
  const Bytes coarse = Save(QUORIN_Image_Jpeg, 10);
  EXPECT_LT(coarse.size(), fine.size());
  EXPECT_GT(LargestDifference(picture_, ReadJpeg(coarse)), LargestDifference(picture_, fromJpeg));
}

TEST_F(SaveImageTest, RefusalsHaveTheirOwnStatusesAndKeepTheLastImage) {
  const Bytes saved = Save(QUORIN_Image_Png);
  const unsigned char* buffer = param_.pImageBuffer;
  QUORIN_SAVE_IMAGE_PARAM bad = param_;
  for (QUORIN_IMAGE_TYPE type : {QUORIN_Image_Undefined, QUORIN_Image_Tif, 7u}) {
    bad.enImageType = type;
    EXPECT_EQ(qsim::kUnsupportedFormat, AsWord(QUORIN_SaveImage(handle_, &bad))) << type;
  }
  bad = param_;
  bad.enImageType = QUORIN_Image_Bmp;
  bad.enPixelType = static_cast<int32_t>(PixelType_Gvsp_Jpeg);  // sign-extended, as the record carries it
  EXPECT_EQ(qsim::kUnsupportedPixelType, AsWord(QUORIN_SaveImage(handle_, &bad)));
  bad.enPixelType = PixelType_Gvsp_Mono10;
  EXPECT_EQ(qsim::kUnsupportedPixelType, AsWord(QUORIN_SaveImage(handle_, &bad)));
  bad = param_;
  bad.enImageType = QUORIN_Image_Bmp;
  bad.nDataLen = 61 * 37 - 1;
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_SaveImage(handle_, &bad)));
  bad = param_;
  bad.enImageType = QUORIN_Image_Jpeg;
  for (unsigned int quality : {0u, 101u}) {
    bad.nJpgQuality = quality;
    EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_SaveImage(handle_, &bad))) << quality;
  }
  bad = param_;
  bad.pData = nullptr;
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_SaveImage(handle_, &bad)));
  bad = param_;
  bad.nHeight = 0;
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_SaveImage(handle_, &bad)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_SaveImage(handle_, nullptr)));
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_SaveImage(Create(kWaybillReader), &param_)));
  // None of the refusals touched the bytes handed out by the last save.
  EXPECT_EQ(saved, Bytes(buffer, buffer + saved.size()));

  // The call is recorded with its record; a scripted output replaces the work.
  EXPECT_EQ(Bytes(reinterpret_cast<const unsigned char*>(&param_), reinterpret_cast<const unsigned char*>(&param_ + 1)),
            qsim::CallsTo("QUORIN_SaveImage").back().record);
  QUORIN_SAVE_IMAGE_PARAM scripted{};
  scripted.nImageLen = 3;
  qsim::ScriptOutput("QUORIN_SaveImage", Bytes(reinterpret_cast<const unsigned char*>(&scripted),
                                               reinterpret_cast<const unsigned char*>(&scripted + 1)),
                     qsim::kResource);
  EXPECT_EQ(qsim::kResource, AsWord(QUORIN_SaveImage(handle_, &param_)));
  EXPECT_EQ(3u, param_.nImageLen);
  EXPECT_EQ(nullptr, param_.pData);
}

// ---------------------------------------------------------------------------
// Waybill extraction and the waybill switch.

QUORIN_BCR_INFO PlainCode(unsigned int id, QUORIN_POINT_I leftTop, QUORIN_POINT_I rightTop,
                          QUORIN_POINT_I rightBottom) {
  QUORIN_BCR_INFO code{};
  code.nID = id;
  code.nLen = 8;
  code.pt[0] = leftTop;
  code.pt[1] = rightTop;
  code.pt[2] = rightBottom;
  code.pt[3] = rightTop;  // as the bridge sends it
  return code;
}

class WaybillTest : public JobsTest {
 protected:
  void SetUp() override {
    JobsTest::SetUp();
    handle_ = Open(kWaybillReader);
    info_.nWidth = static_cast<unsigned short>(picture_.width);
    info_.nHeight = static_cast<unsigned short>(picture_.height);
    info_.enPixelType = PixelType_Gvsp_Mono8;
    info_.nFrameLen = static_cast<unsigned int>(picture_.pixels.size());
    info_.nFrameNum = 77;
    info_.pstCodeList = codes_.get();
    info_.pstCodeListEx = codesEx_.get();
    info_.pstWaybillList = waybills_.get();
  }
  int Cut() { return QUORIN_GetWayBillInfoEx(handle_, picture_.pixels.data(), &info_); }
  Picture Crop(unsigned int x, unsigned int y, unsigned int width, unsigned int height) const {
    Picture crop{width, height, {}};
    for (unsigned int row = y; row < y + height; ++row) {
      crop.pixels.insert(crop.pixels.end(), picture_.pixels.begin() + row * picture_.width + x,
                         picture_.pixels.begin() + row * picture_.width + x + width);
    }
    return crop;
  }

  Picture picture_ = TestPicture(320, 240);
  void* handle_ = nullptr;
  std::unique_ptr<QUORIN_RESULT_BCR> codes_ = std::make_unique<QUORIN_RESULT_BCR>();
  std::unique_ptr<QUORIN_RESULT_BCR_EX> codesEx_ = std::make_unique<QUORIN_RESULT_BCR_EX>();
  std::unique_ptr<QUORIN_WAYBILL_LIST> waybills_ = std::make_unique<QUORIN_WAYBILL_LIST>();
  QUORIN_IMAGE_OUT_INFO_EX2 info_{};
};

TEST_F(WaybillTest, OneWaybillIsCutAroundEachCode) {
  constexpr int m = static_cast<int>(qsim::kWaybillMargin);
  codes_->nCodeNum = 2;
  codes_->stBcrInfo[0] = PlainCode(1, {100, 80}, {180, 82}, {178, 150});
  codes_->stBcrInfo[0].pt[3] = {-500, 9000};  // never read: it only repeats a corner
  codes_->stBcrInfo[1] = PlainCode(2, {-10, 200}, {20, 200}, {20, 230});  // runs off the left edge
  codesEx_->nCodeNum = 2;
  waybills_->nWaybillNum = 3;  // what the frame had: replaced by the answer
  waybills_->stWaybillInfo[2].fCenterX = 9.5f;
  ASSERT_EQ(0, Cut());

  const QUORIN_WAYBILL_LIST& list = *waybills_;
  ASSERT_EQ(2u, list.nWaybillNum);
  EXPECT_EQ(QUORIN_Image_Bmp, list.enWaybillImageType);
  const QUORIN_WAYBILL_INFO& inside = list.stWaybillInfo[0];
  const unsigned int insideWidth = 180 - 100 + 1 + 2 * m;
  const unsigned int insideHeight = 150 - 80 + 1 + 2 * m;
  EXPECT_EQ(static_cast<float>(insideWidth), inside.fWidth);
  EXPECT_EQ(static_cast<float>(insideHeight), inside.fHeight);
  EXPECT_EQ(100 - m + insideWidth / 2.0f, inside.fCenterX);
  EXPECT_EQ(80 - m + insideHeight / 2.0f, inside.fCenterY);
  EXPECT_EQ(0.0f, inside.fAngle);
  EXPECT_EQ(1.0f, inside.fConfidence);
  const Picture insideCrop = ReadBmp(Bytes(inside.pImageWaybill, inside.pImageWaybill + inside.nImageLen));
  EXPECT_EQ(Crop(100 - m, 80 - m, insideWidth, insideHeight).pixels, insideCrop.pixels);

  const QUORIN_WAYBILL_INFO& clipped = list.stWaybillInfo[1];
  const unsigned int clippedWidth = 20 + 1 + m;                  // from x 0
  const unsigned int clippedHeight = 239 - (200 - m) + 1;        // to the last row
  EXPECT_EQ(static_cast<float>(clippedWidth), clipped.fWidth);
  EXPECT_EQ(static_cast<float>(clippedHeight), clipped.fHeight);
  const float grownArea = (30.0f + 1 + 2 * m) * (30.0f + 1 + 2 * m);
  EXPECT_FLOAT_EQ(clippedWidth * clippedHeight / grownArea, clipped.fConfidence);
  const Picture clippedCrop = ReadBmp(Bytes(clipped.pImageWaybill, clipped.pImageWaybill + clipped.nImageLen));
  EXPECT_EQ(Crop(0, 200 - m, clippedWidth, clippedHeight).pixels, clippedCrop.pixels);
  EXPECT_EQ(0.0f, list.stWaybillInfo[2].fCenterX);  // nothing left of the list that came in

  // What the call received is kept, the waybill list as it came in.
  const qsim::WaybillRequest request = qsim::LastWaybillRequest(handle_);
  EXPECT_EQ(77u, request.info.nFrameNum);
  ASSERT_EQ(2u, request.codes.size());
  EXPECT_EQ(-500, request.codes[0].pt[3].nX);
  EXPECT_EQ(2u, request.codes[1].nID);
  EXPECT_EQ(2u, request.extendedCodeCount);
  EXPECT_EQ(3u, request.waybills.nWaybillNum);
  EXPECT_EQ(9.5f, request.waybills.stWaybillInfo[2].fCenterX);
  EXPECT_EQ(picture_.pixels, request.image);

  // A frame without codes has no waybills; the images of the call before are gone with it.
  codes_->nCodeNum = 0;
  ASSERT_EQ(0, Cut());
  EXPECT_EQ(0u, waybills_->nWaybillNum);
  EXPECT_EQ(nullptr, waybills_->stWaybillInfo[0].pImageWaybill);
  EXPECT_TRUE(qsim::LastWaybillRequest(handle_).codes.empty());
}

TEST_F(WaybillTest, RefusalsScriptsAndTheHandleRules) {
  codes_->nCodeNum = 1;
  codes_->stBcrInfo[0] = PlainCode(1, {10, 10}, {20, 10}, {20, 20});
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GetWayBillInfoEx(handle_, nullptr, &info_)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GetWayBillInfoEx(handle_, picture_.pixels.data(), nullptr)));
  info_.enPixelType = PixelType_Gvsp_Mono10;
  EXPECT_EQ(qsim::kUnsupportedPixelType, AsWord(Cut()));
  info_.enPixelType = PixelType_Gvsp_Mono8;
  codes_->nCodeNum = QUORIN_MAX_BCR_NUM + 1;
  EXPECT_EQ(qsim::kBadParameter, AsWord(Cut()));
  codes_->nCodeNum = 1;
  info_.pstWaybillList = nullptr;
  EXPECT_EQ(qsim::kBadParameter, AsWord(Cut()));
  info_.pstWaybillList = waybills_.get();
  const unsigned short width = info_.nWidth;
  info_.nWidth = 0;
  EXPECT_EQ(qsim::kBadParameter, AsWord(Cut()));
  info_.nWidth = width;
  info_.nFrameLen -= 1;  // one pixel short of what the header declares: refused, never read past
  EXPECT_EQ(qsim::kBadParameter, AsWord(Cut()));
  EXPECT_EQ(info_.nFrameLen, qsim::LastWaybillRequest(handle_).image.size());
  info_.nFrameLen += 1;
  EXPECT_EQ(0u, waybills_->nWaybillNum);  // no refusal answered
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_GetWayBillInfoEx(Create(k2DReader), picture_.pixels.data(), &info_)));

  ASSERT_EQ(0, Cut());
  EXPECT_EQ(1u, waybills_->nWaybillNum);
  EXPECT_EQ(Bytes(reinterpret_cast<const unsigned char*>(&info_), reinterpret_cast<const unsigned char*>(&info_ + 1)),
            qsim::CallsTo("QUORIN_GetWayBillInfoEx").back().record);
  QUORIN_WAYBILL_LIST scripted{};
  scripted.nWaybillNum = 4;
  scripted.enWaybillImageType = QUORIN_Image_Jpeg;
  qsim::ScriptOutput("QUORIN_GetWayBillInfoEx", Bytes(reinterpret_cast<const unsigned char*>(&scripted),
                                                      reinterpret_cast<const unsigned char*>(&scripted + 1)));
  EXPECT_EQ(0, Cut());
  EXPECT_EQ(4u, waybills_->nWaybillNum);
  EXPECT_EQ(QUORIN_Image_Jpeg, waybills_->enWaybillImageType);
  EXPECT_THROW(qsim::LastWaybillRequest(nullptr), std::invalid_argument);
}

TEST_F(JobsTest, ProducersCutWaybillsOnlyWhileTheSwitchIsOn) {
  void* waybillReader = Open(kWaybillReader);
  void* codeReader = Open(k2DReader);
  EXPECT_TRUE(qsim::WaybillEnabled(waybillReader));
  EXPECT_FALSE(qsim::WaybillEnabled(codeReader));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_SetWayBillEnable(codeReader, 2)));
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_SetWayBillEnable(Create(kAreaCamera), 1)));
  ASSERT_EQ(0, QUORIN_SetWayBillEnable(waybillReader, 0));
  ASSERT_EQ(0, QUORIN_SetWayBillEnable(codeReader, 1));
  EXPECT_FALSE(qsim::WaybillEnabled(waybillReader));
  EXPECT_TRUE(qsim::WaybillEnabled(codeReader));

  auto waybillsOf = [](void* handle) {
    EXPECT_EQ(0, QUORIN_SetFloatValue(handle, "AcquisitionFrameRate", 200));
    EXPECT_EQ(0, QUORIN_StartGrabbing(handle));
    unsigned int total = 0;
    for (int i = 0; i < 3; ++i) {
      unsigned char* data = nullptr;
      QUORIN_IMAGE_OUT_INFO_EX2 info{};
      if (QUORIN_GetOneFrameTimeoutEx2(handle, &data, &info, 2000) == 0) {
        total += info.pstWaybillList->nWaybillNum;
      } else {
        ADD_FAILURE() << "no frame";
      }
    }
    EXPECT_EQ(0, QUORIN_StopGrabbing(handle));
    return total;
  };
  EXPECT_EQ(0u, waybillsOf(waybillReader));
  EXPECT_GE(waybillsOf(codeReader), 3u);

  qsim::Reset();
  EXPECT_TRUE(qsim::WaybillEnabled(Create(kWaybillReader)));
  EXPECT_FALSE(qsim::WaybillEnabled(Create(k2DReader)));
}

// ---------------------------------------------------------------------------
// The legacy fetch.

QUORIN_BCR_INFO_EX CodeWithText(unsigned int id, const std::string& text) {
  QUORIN_BCR_INFO_EX code{};
  code.nID = id;
  std::memcpy(code.chCode, text.data(), std::min(text.size(), sizeof code.chCode));
  code.nLen = static_cast<unsigned int>(text.size());
  return code;
}

TEST_F(JobsTest, LegacyFetchDeliversTheFramesOfTheExtendedOne) {
  void* handle = Open(k2DReader);
  unsigned char* data = nullptr;
  auto record = std::make_unique<QUORIN_FRAME_OUT_INFO>();
  EXPECT_EQ(qsim::kWrongCallOrder, AsWord(QUORIN_GetOneFrameTimeout(handle, &data, record.get(), 10)));
  qsim::SetAutoFrames(false);
  ASSERT_EQ(0, QUORIN_StartGrabbing(handle));
  const auto before = Clock::now();
  EXPECT_EQ(qsim::kNoData, AsWord(QUORIN_GetOneFrameTimeout(handle, &data, record.get(), 30)));
  EXPECT_GE(Clock::now() - before, std::chrono::milliseconds(30));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GetOneFrameTimeout(handle, &data, record.get(), -1)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GetOneFrameTimeout(handle, nullptr, record.get(), 10)));
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_GetOneFrameTimeout(nullptr, &data, record.get(), 10)));

  qsim::Frame pushed;
  pushed.info.nWidth = 16;
  pushed.info.nHeight = 4;
  pushed.info.enPixelType = PixelType_Gvsp_Mono8;
  pushed.info.nTriggerIndex = 6;
  pushed.info.nFrameNum = 0xFFFFFFFF;
  pushed.info.nFrameLen = 64;
  pushed.info.nTimeStampHigh = 0x80000001;
  pushed.info.nTimeStampLow = 7;
  pushed.info.bFlaseTrigger = 1;
  pushed.info.nFocusScore = 512;
  pushed.info.nChannelID = 3;
  pushed.info.nImageCost = 11;
  pushed.image.resize(64);
  for (size_t i = 0; i < pushed.image.size(); ++i) pushed.image[i] = static_cast<unsigned char>(i * 3);
  QUORIN_BCR_INFO_EX first = CodeWithText(4, std::string(300, 'L'));  // longer than a legacy entry
  first.nBarType = 2;
  first.stCornerLeftTop = {-3, 4};
  first.stCornerLeftBottom = {100, -200};
  first.nAngle = -90;
  first.nMainPackageId = 8;
  first.nSubPackageId = 9;
  first.sAppearCount = 2;
  first.sPPM = 0xFFFF;
  first.sAlgoCost = 13;
  first.sSharpness = 14;
  pushed.codes = {first, CodeWithText(5, "QN-5")};
  qsim::Waybill label;
  label.image = {'B', 'M', 1, 2, 3};
  pushed.waybills = {label, qsim::Waybill{}};
  pushed.waybillImageType = QUORIN_Image_Png;
  qsim::PushFrame(handle, pushed);
  qsim::PushFrame(handle, pushed);

  unsigned char* extendedData = nullptr;
  QUORIN_IMAGE_OUT_INFO_EX2 extended{};
  ASSERT_EQ(0, QUORIN_GetOneFrameTimeoutEx2(handle, &extendedData, &extended, 1000));
  const Bytes extendedImage(extendedData, extendedData + extended.nFrameLen);
  ASSERT_EQ(0, QUORIN_GetOneFrameTimeout(handle, &data, record.get(), 1000));
  EXPECT_EQ(extendedImage, Bytes(data, data + record->nFrameLen));
  const QUORIN_FRAME_OUT_INFO& legacy = *record;
  EXPECT_EQ(16, legacy.nWidth);
  EXPECT_EQ(4, legacy.nHeight);
  EXPECT_EQ(PixelType_Gvsp_Mono8, legacy.enPixelType);
  EXPECT_EQ(6u, legacy.nTriggerIndex);
  EXPECT_EQ(0xFFFFFFFFu, legacy.nFrameNum);
  EXPECT_EQ(0x80000001u, legacy.nTimeStampHigh);
  EXPECT_EQ(7u, legacy.nTimeStampLow);
  EXPECT_EQ(1u, legacy.bFlaseTrigger);
  EXPECT_EQ(512u, legacy.nFocusScore);
  EXPECT_EQ(3u, legacy.nChannelID);
  EXPECT_EQ(11u, legacy.nImageCost);
  ASSERT_EQ(2u, legacy.nCodeNumber);
  const QUORIN_BcrInfo& code = legacy.stBcrInfo[0];
  EXPECT_EQ(4u, code.nID);
  EXPECT_EQ(256u, code.nLen);  // cut to the legacy array, which it fills without a terminator
  EXPECT_EQ(std::string(256, 'L'), std::string(code.chCode, sizeof code.chCode));
  EXPECT_EQ(2u, code.nBarType);
  EXPECT_EQ(-3, code.pt[0].nX);
  EXPECT_EQ(-200, code.pt[3].nY);  // the fourth corner is the left-bottom one
  EXPECT_EQ(-90, code.nAngle);
  EXPECT_EQ(8u, code.nMainPackageId);
  EXPECT_EQ(9u, code.nSubPackageId);
  EXPECT_EQ(2, code.sAppearCount);
  EXPECT_EQ(0xFFFF, code.sPPM);
  EXPECT_EQ(13, code.sAlgoCost);
  EXPECT_EQ(14, code.sSharpness);
  EXPECT_STREQ("QN-5", legacy.stBcrInfo[1].chCode);
  EXPECT_EQ(label.image, Bytes(legacy.pImageWaybill, legacy.pImageWaybill + legacy.nImageWaybillLen));
  EXPECT_EQ(QUORIN_Image_Png, legacy.enWaybillImageType);

  // More codes than the record holds: the first 204 travel.
  pushed.codes.assign(250, CodeWithText(0, "QN"));
  pushed.codes[QUORIN_MAX_BCRINFO_NUM - 1] = CodeWithText(203, "last kept");
  pushed.waybills.clear();
  qsim::PushFrame(handle, pushed);
  ASSERT_EQ(0, QUORIN_GetOneFrameTimeout(handle, &data, record.get(), 1000));
  EXPECT_EQ(static_cast<unsigned int>(QUORIN_MAX_BCRINFO_NUM), legacy.nCodeNumber);
  EXPECT_STREQ("last kept", legacy.stBcrInfo[QUORIN_MAX_BCRINFO_NUM - 1].chCode);
  EXPECT_EQ(nullptr, legacy.pImageWaybill);
  EXPECT_EQ(0u, legacy.nImageWaybillLen);

  const auto calls = qsim::CallsTo("QUORIN_GetOneFrameTimeout");
  EXPECT_EQ(handle, calls.back().handle);
  EXPECT_EQ(std::vector<unsigned long long>{1000}, calls.back().numbers);
}

// ---------------------------------------------------------------------------
// Algorithm parameters, the feature description and the access modes.

TEST_F(JobsTest, AlgorithmParametersKeepTheirRanges) {
  void* handle = Open(k2DReader);
  int value = -1;
  for (const auto& [key, expected] : std::map<std::string, int>{
           {"DecodeTimeout", 200}, {"MaxCodeCount", 3}, {"CodeTypes", 7}, {"Sensitivity", 0}}) {
    ASSERT_EQ(0, QUORIN_Algorithm_GetIntValue(handle, key.c_str(), &value)) << key;
    EXPECT_EQ(expected, value) << key;
  }
  EXPECT_EQ(0, QUORIN_Algorithm_SetIntValue(handle, "DecodeTimeout", 5000));
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_Algorithm_SetIntValue(handle, "DecodeTimeout", 5001)));
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_Algorithm_SetIntValue(handle, "DecodeTimeout", 9)));
  EXPECT_EQ(0, QUORIN_Algorithm_SetIntValue(handle, "Sensitivity", -10));
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_Algorithm_SetIntValue(handle, "Sensitivity", 11)));
  ASSERT_EQ(0, QUORIN_Algorithm_GetIntValue(handle, "DecodeTimeout", &value));
  EXPECT_EQ(5000, value);
  ASSERT_EQ(0, QUORIN_Algorithm_GetIntValue(handle, "Sensitivity", &value));
  EXPECT_EQ(-10, value);

  EXPECT_EQ(qsim::kUnknownNode, AsWord(QUORIN_Algorithm_SetIntValue(handle, "Width", 8)));  // not a feature node
  EXPECT_EQ(qsim::kUnknownNode, AsWord(QUORIN_Algorithm_GetIntValue(handle, "NoSuchParameter", &value)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_Algorithm_GetIntValue(handle, nullptr, &value)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_Algorithm_GetIntValue(handle, "MaxCodeCount", nullptr)));
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_Algorithm_SetIntValue(Create(kMultiChannelReader), "MaxCodeCount", 2)));
  EXPECT_EQ(qsim::kUnknownNode, AsWord(QUORIN_Algorithm_GetIntValue(Open(kAreaCamera), "DecodeTimeout", &value)));

  qsim::SetAlgorithmInt(handle, "RoiMargin", -4, -8, 8);
  ASSERT_EQ(0, QUORIN_Algorithm_GetIntValue(handle, "RoiMargin", &value));
  EXPECT_EQ(-4, value);
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_Algorithm_SetIntValue(handle, "RoiMargin", 9)));
  // -10 was recorded as its 32 bits, zero-extended.
  EXPECT_EQ((std::vector<unsigned long long>{0xFFFFFFF6}), qsim::CallsTo("QUORIN_Algorithm_SetIntValue").at(3).numbers);

  qsim::Reset();
  handle = Open(k2DReader);
  ASSERT_EQ(0, QUORIN_Algorithm_GetIntValue(handle, "DecodeTimeout", &value));
  EXPECT_EQ(200, value);
  EXPECT_EQ(qsim::kUnknownNode, AsWord(QUORIN_Algorithm_GetIntValue(handle, "RoiMargin", &value)));
}

TEST_F(JobsTest, FeatureDescriptionIsWellFormedAndListsEveryNodeWithItsAccess) {
  void* handle = Open(k2DReader);
  qsim::SetIntNode(handle, "Gain<&>\"Trim\"", 3, 0, 9, 3, qsim::Access::kNotAvailable);
  unsigned int length = 0;
  ASSERT_EQ(qsim::kBufferTooSmall, AsWord(QUORIN_XML_GetGenICamXML(handle, nullptr, 0, &length)));
  ASSERT_GT(length, 500u);
  std::vector<unsigned char> buffer(length + 1, 0xEE);
  unsigned int shortLength = 0;
  EXPECT_EQ(qsim::kBufferTooSmall, AsWord(QUORIN_XML_GetGenICamXML(handle, buffer.data(), length - 1, &shortLength)));
  EXPECT_EQ(length, shortLength);
  EXPECT_EQ(std::vector<unsigned char>(length + 1, 0xEE), buffer);  // nothing copied
  ASSERT_EQ(0, QUORIN_XML_GetGenICamXML(handle, buffer.data(), length + 1, &length));
  EXPECT_EQ(0, buffer[length]);  // terminated when there is room
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_XML_GetGenICamXML(handle, buffer.data(), length, nullptr)));
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_XML_GetGenICamXML(Create(kWaybillReader), nullptr, 0, &length)));

  XmlElement root;
  EXPECT_FALSE(ReadXml("<a><b></a></b>", root));     // the reader tells bad nesting
  EXPECT_FALSE(ReadXml("<a x=\"1 & 2\"/>", root));  // and a bare ampersand
  ASSERT_TRUE(ReadXml(std::string(buffer.begin(), buffer.begin() + length), root));
  EXPECT_EQ("RegisterDescription", root.name);
  EXPECT_EQ("QR-2020-2D", root.attributes["ModelName"]);
  std::set<std::string> listed;
  std::map<std::string, const XmlElement*> nodes;
  for (const XmlElement& child : root.children) {
    if (child.name == "Category") {
      for (const XmlElement& feature : child.children) listed.insert(feature.text);
    } else {
      nodes[child.attributes.at("Name")] = &child;
    }
  }
  const std::map<std::string, std::pair<std::string, std::string>> expected = {
      {"Width", {"Integer", "RW"}},           {"Height", {"Integer", "RW"}},
      {"PayloadSize", {"Integer", "RO"}},     {"PixelFormat", {"Enumeration", "RW"}},
      {"TriggerMode", {"Enumeration", "RW"}}, {"TriggerSoftware", {"Command", "WO"}},
      {"ExposureTime", {"Float", "RW"}},      {"AcquisitionFrameRate", {"Float", "RW"}},
      {"DeviceUserID", {"StringReg", "RW"}},  {"ReverseX", {"Boolean", "RW"}},
      {"DeviceSerialNumber", {"StringReg", "RO"}}, {"ChannelCount", {"Integer", "RO"}},
      {"Gain<&>\"Trim\"", {"Integer", "NA"}}};
  ASSERT_EQ(expected.size(), nodes.size());
  for (const auto& [name, kindAndAccess] : expected) {
    ASSERT_EQ(1u, nodes.count(name)) << name;
    EXPECT_EQ(kindAndAccess.first, nodes[name]->name) << name;
    EXPECT_EQ(kindAndAccess.second, nodes[name]->ChildText("AccessMode")) << name;
    EXPECT_EQ(1u, listed.count(name)) << name;
  }
  EXPECT_EQ(expected.size(), listed.size());
  const XmlElement& width = *nodes["Width"];
  EXPECT_EQ("1280", width.ChildText("Value"));
  EXPECT_EQ("64", width.ChildText("Min"));
  EXPECT_EQ("2448", width.ChildText("Max"));
  EXPECT_EQ("8", width.ChildText("Inc"));
  const XmlElement& pixelFormat = *nodes["PixelFormat"];
  ASSERT_EQ(4u, pixelFormat.children.size());  // AccessMode, two entries, then the value
  EXPECT_EQ("Mono10", pixelFormat.children[2].attributes.at("Name"));
  EXPECT_EQ(std::to_string(PixelType_Gvsp_Mono10), pixelFormat.children[2].ChildText("Value"));
  EXPECT_EQ(std::to_string(PixelType_Gvsp_Mono8), pixelFormat.ChildText("Value"));
  EXPECT_EQ("2000", nodes["ExposureTime"]->ChildText("Value"));
  EXPECT_EQ("false", nodes["ReverseX"]->ChildText("Value"));
  EXPECT_EQ("16", nodes["DeviceUserID"]->ChildText("Length"));
  EXPECT_EQ(nullptr, nodes["Gain<&>\"Trim\""]->Child("Value"));  // unreadable: no value
  EXPECT_EQ("9", nodes["Gain<&>\"Trim\""]->ChildText("Max"));

  // A scripted output stands for the document.
  qsim::ScriptOutput("QUORIN_XML_GetGenICamXML", {'<', 'a', '/', '>'});
  std::fill(buffer.begin(), buffer.end(), 0xEE);
  ASSERT_EQ(0, QUORIN_XML_GetGenICamXML(handle, buffer.data(), 4, &length));
  EXPECT_EQ(4u, length);
  EXPECT_EQ("<a/>", std::string(buffer.begin(), buffer.begin() + 4));
  EXPECT_EQ(0xEE, buffer[4]);
}

TEST_F(JobsTest, AccessModesComeFromTheNodeMap) {
  void* handle = Open(k2DReader);
  qsim::SetBoolNode(handle, "Hidden", true, qsim::Access::kNotAvailable);
  unsigned int mode = 99;
  const std::map<std::string, unsigned int> expected = {{"Width", QUORIN_AM_RW},
                                                        {"PayloadSize", QUORIN_AM_RO},
                                                        {"TriggerSoftware", QUORIN_AM_WO},
                                                        {"Hidden", QUORIN_AM_NA}};
  for (const auto& [name, wanted] : expected) {
    ASSERT_EQ(0, QUORIN_XML_GetNodeAccessMode(handle, name.c_str(), &mode)) << name;
    EXPECT_EQ(wanted, mode) << name;
  }
  mode = 99;
  EXPECT_EQ(qsim::kUnknownNode, AsWord(QUORIN_XML_GetNodeAccessMode(handle, "NoSuchNode", &mode)));
  EXPECT_EQ(99u, mode);
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_XML_GetNodeAccessMode(handle, nullptr, &mode)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_XML_GetNodeAccessMode(handle, "Width", nullptr)));
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_XML_GetNodeAccessMode(Create(kWaybillReader), "Width", &mode)));
  qsim::RemoveNode(handle, "Width");
  EXPECT_EQ(qsim::kUnknownNode, AsWord(QUORIN_XML_GetNodeAccessMode(handle, "Width", &mode)));
}

// ---------------------------------------------------------------------------
// Device files.

// The record points into `host`, which must outlive it.
QUORIN_FILE_ACCESS FileAccess(const std::string& host, const char* device) {
  QUORIN_FILE_ACCESS access{};
  access.pUserFileName = host.c_str();
  access.pDevFileName = device;
  return access;
}

TEST_F(JobsTest, DeviceFileRoundTripShowsItsProgressToAnotherThread) {
  void* handle = Open(k2DReader);
  QUORIN_FILE_ACCESS_PROGRESS progress{};
  ASSERT_EQ(0, QUORIN_GetFileAccessProgress(handle, &progress));
  EXPECT_EQ(0, progress.nCompleted);
  EXPECT_EQ(0, progress.nTotal);

  Bytes payload(40000);
  for (size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<unsigned char>(i * 7 + i / 256);
  const std::string upload = TempPath("upload.cfg");
  const std::string download = TempPath("download.cfg");
  WriteFile(upload, payload);
  qsim::SetTransferPace(4000, 5);  // ten chunks, 50 ms

  std::atomic<bool> done{false};
  std::vector<std::pair<long long, long long>> seen;
  std::thread poller([&] {
    while (!done) {
      QUORIN_FILE_ACCESS_PROGRESS now{};
      if (QUORIN_GetFileAccessProgress(handle, &now) == 0) seen.emplace_back(now.nCompleted, now.nTotal);
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  });
  QUORIN_FILE_ACCESS write = FileAccess(upload, "UserSet2");
  const int written = QUORIN_FileAccessWrite(handle, &write);
  done = true;
  poller.join();
  ASSERT_EQ(0, written);
  EXPECT_EQ(payload, qsim::DeviceFile(handle, "UserSet2"));
  long long last = 0;
  bool midway = false;
  for (const auto& [completed, total] : seen) {
    EXPECT_GE(completed, last);
    last = completed;
    if (total == 40000 && completed > 0 && completed < total) midway = true;
  }
  EXPECT_TRUE(midway) << seen.size() << " samples";
  ASSERT_EQ(0, QUORIN_GetFileAccessProgress(handle, &progress));
  EXPECT_EQ(40000, progress.nCompleted);
  EXPECT_EQ(40000, progress.nTotal);

  QUORIN_FILE_ACCESS read = FileAccess(download, "UserSet2");
  ASSERT_EQ(0, QUORIN_FileAccessRead(handle, &read));
  EXPECT_EQ(payload, ReadFile(download));
  EXPECT_EQ((std::vector<std::string>{download, "UserSet2"}), qsim::CallsTo("QUORIN_FileAccessRead").back().texts);

  // While one transfer runs, another is refused.
  qsim::SetTransferPace(1000, 5);
  std::thread slow([&] {
    QUORIN_FILE_ACCESS again = FileAccess(upload, "UserSet3");
    EXPECT_EQ(0, QUORIN_FileAccessWrite(handle, &again));
  });
  const auto deadline = Clock::now() + std::chrono::seconds(5);
  do {
    ASSERT_EQ(0, QUORIN_GetFileAccessProgress(handle, &progress));
  } while (progress.nCompleted == 40000 && Clock::now() < deadline);  // until the new one has begun
  EXPECT_EQ(qsim::kBusy, AsWord(QUORIN_FileAccessRead(handle, &read)));
  slow.join();
  EXPECT_EQ(payload, qsim::DeviceFile(handle, "UserSet3"));
  std::remove(upload.c_str());
  std::remove(download.c_str());
}

TEST_F(JobsTest, DeviceFilesStartWithTheirDefaultsAndRefuseWhatIsMissing) {
  void* handle = Open(kWaybillReader);
  const Bytes settings = qsim::DeviceFile(handle, "UserSet1");
  EXPECT_NE(std::string::npos, std::string(settings.begin(), settings.end()).find("Width=1280"));
  const std::string log = TempPath("device.log");
  QUORIN_FILE_ACCESS read = FileAccess(log, "DeviceLog");
  ASSERT_EQ(0, QUORIN_FileAccessRead(handle, &read));
  const Bytes logged = ReadFile(log);
  EXPECT_NE(std::string::npos, std::string(logged.begin(), logged.end()).find("QR-WB-800"));
  std::remove(log.c_str());

  qsim::PutDeviceFile(handle, "Calibration", {1, 2, 3});
  const std::string calibration = TempPath("calibration.bin");
  read = FileAccess(calibration, "Calibration");
  ASSERT_EQ(0, QUORIN_FileAccessRead(handle, &read));
  EXPECT_EQ((Bytes{1, 2, 3}), ReadFile(calibration));
  std::remove(calibration.c_str());

  const std::string never = TempPath("never.bin");
  read = FileAccess(never, "NoSuchFile");
  EXPECT_EQ(qsim::kNoSuchDeviceFile, AsWord(QUORIN_FileAccessRead(handle, &read)));
  const std::string missing = TempPath("no-such-upload.bin");
  QUORIN_FILE_ACCESS write = FileAccess(missing, "UserSet1");
  EXPECT_EQ(qsim::kNoSuchFile, AsWord(QUORIN_FileAccessWrite(handle, &write)));
  const std::string unwritable = TempPath("no-such-folder/out.bin");
  read = FileAccess(unwritable, "DeviceLog");
  EXPECT_EQ(qsim::kNoSuchFile, AsWord(QUORIN_FileAccessRead(handle, &read)));
  read = FileAccess(log, nullptr);
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_FileAccessRead(handle, &read)));
  read = FileAccess(log, "");
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_FileAccessRead(handle, &read)));
  read.pUserFileName = nullptr;
  read.pDevFileName = "DeviceLog";
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_FileAccessRead(handle, &read)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_FileAccessWrite(handle, nullptr)));
  QUORIN_FILE_ACCESS_PROGRESS progress{};
  EXPECT_EQ(qsim::kNotOpen, AsWord(QUORIN_GetFileAccessProgress(Create(k2DReader), &progress)));
  EXPECT_EQ(settings, qsim::DeviceFile(handle, "UserSet1"));  // the failed write changed nothing

  qsim::Reset();
  EXPECT_TRUE(qsim::DeviceFile(Create(kWaybillReader), "Calibration").empty());
  EXPECT_THROW(qsim::DeviceFile(handle, "UserSet1"), std::invalid_argument);
}

// ---------------------------------------------------------------------------
// Network configuration.

TEST_F(JobsTest, ForcedAddressShowsInEveryEnumerationUntilReset) {
  void* handle = Create(kMultiChannelReader);  // not opened: GigE settings reach any reader on the link
  ASSERT_EQ(0, QUORIN_GIGE_ForceIp(handle, 0xC0A8010A, 0xFFFF0000, 0xC0A80101));
  const QUORIN_GIGE_DEVICE_INFO forced = Enumerated(kMultiChannelReader);
  EXPECT_EQ(0xC0A8010Au, forced.nCurrentIp);
  EXPECT_EQ(0xFFFF0000u, forced.nCurrentSubNetMask);
  EXPECT_EQ(0xC0A80101u, forced.nDefultGateWay);
  QUORIN_DEVICE_INFO_LIST list{};
  ASSERT_EQ(0, QUORIN_EnumCodeReader(&list));
  EXPECT_EQ(0xC0A8010Au, list.pDeviceInfo[1]->stGigEInfo.nCurrentIp);
  QUORIN_DEVICE_INFO info{};
  ASSERT_EQ(0, QUORIN_GetDeviceInfo(handle, &info));
  EXPECT_EQ(0xC0A8010Au, info.stGigEInfo.nCurrentIp);
  EXPECT_EQ(0xC0A80114u, Enumerated(k2DReader).nCurrentIp);  // the others keep theirs

  for (const auto& [ip, mask] : std::vector<std::pair<unsigned int, unsigned int>>{
           {0, 0xFFFFFF00}, {0xFFFFFFFF, 0xFFFFFF00}, {0xC0A8010B, 0}, {0xC0A8010B, 0xFF00FF00}}) {
    EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GIGE_ForceIp(handle, ip, mask, 0))) << std::hex << ip << " " << mask;
  }
  EXPECT_EQ(0xC0A8010Au, Enumerated(kMultiChannelReader).nCurrentIp);

  ASSERT_EQ(0, QUORIN_GIGE_SetIpConfig(handle, QUORIN_IP_CFG_LLA));
  EXPECT_EQ(QUORIN_IP_CFG_LLA, Enumerated(kMultiChannelReader).nIpCfgCurrent);
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GIGE_SetIpConfig(handle, 0x07000000)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GIGE_SetIpConfig(handle, 0)));
  EXPECT_EQ(QUORIN_IP_CFG_LLA, Enumerated(kMultiChannelReader).nIpCfgCurrent);
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_GIGE_ForceIp(nullptr, 0xC0A8010A, 0xFFFF0000, 0)));

  qsim::Reset();
  const QUORIN_GIGE_DEVICE_INFO restored = Enumerated(kMultiChannelReader);
  EXPECT_EQ(0xC0A80115u, restored.nCurrentIp);
  EXPECT_EQ(0xFFFFFF00u, restored.nCurrentSubNetMask);
  EXPECT_EQ(QUORIN_IP_CFG_DHCP, restored.nIpCfgCurrent);
}

TEST_F(JobsTest, GvcpTimeOutBelongsToEachHandle) {
  void* first = Open(k2DReader);
  void* second = Create(k2DReader);
  unsigned int timeout = 0;
  ASSERT_EQ(0, QUORIN_GIGE_GetGvcpTimeout(first, &timeout));
  EXPECT_EQ(qsim::kDefaultGvcpTimeoutMs, timeout);
  ASSERT_EQ(0, QUORIN_GIGE_SetGvcpTimeout(first, 750));
  ASSERT_EQ(0, QUORIN_GIGE_GetGvcpTimeout(first, &timeout));
  EXPECT_EQ(750u, timeout);
  ASSERT_EQ(0, QUORIN_GIGE_GetGvcpTimeout(second, &timeout));
  EXPECT_EQ(500u, timeout);
  EXPECT_EQ(0, QUORIN_GIGE_SetGvcpTimeout(second, 0));
  EXPECT_EQ(0, QUORIN_GIGE_SetGvcpTimeout(second, qsim::kMaxGvcpTimeoutMs));
  EXPECT_EQ(qsim::kOutOfRange, AsWord(QUORIN_GIGE_SetGvcpTimeout(second, qsim::kMaxGvcpTimeoutMs + 1)));
  ASSERT_EQ(0, QUORIN_GIGE_GetGvcpTimeout(second, &timeout));
  EXPECT_EQ(10000u, timeout);
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GIGE_GetGvcpTimeout(first, nullptr)));
  ASSERT_EQ(0, QUORIN_CloseDevice(first));
  ASSERT_EQ(0, QUORIN_GIGE_GetGvcpTimeout(first, &timeout));
  EXPECT_EQ(750u, timeout);  // kept while the handle lives
  ASSERT_EQ(0, QUORIN_DestroyHandle(first));
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_GIGE_GetGvcpTimeout(first, &timeout)));
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_GIGE_SetGvcpTimeout(first, 10)));
}

// ---------------------------------------------------------------------------
// Firmware upgrades.

class UpgradeTest : public JobsTest {
 protected:
  void SetUp() override {
    JobsTest::SetUp();
    ASSERT_EQ(0, QUORIN_CreateHandleForUpgradeAndEncryption(&upgrader_));
    target_ = qsim::DefaultReaders()[2];
  }
  void TearDown() override {
    for (const std::string& path : files_) std::remove(path.c_str());
  }
  std::string Firmware(const std::string& name, const std::string& contents) {
    files_.push_back(TempPath(name));
    std::ofstream(files_.back(), std::ios::binary) << contents;
    return files_.back();
  }
  int Start(const std::string& path) {
    return QUORIN_StartUpgradeDeviceByHandle(upgrader_, &target_, path.c_str());
  }
  unsigned int Progress() {
    unsigned int progress = 999;
    EXPECT_EQ(0, QUORIN_GetUpgradeProcessByHandle(upgrader_, &progress));
    return progress;
  }
  // Polls until 100, checking that progress never goes back; returns the values seen.
  std::set<unsigned int> AwaitCompletion() {
    std::set<unsigned int> seen;
    unsigned int last = 0;
    const auto deadline = Clock::now() + std::chrono::seconds(20);
    while (last < 100 && Clock::now() < deadline) {
      const unsigned int now = Progress();
      EXPECT_GE(now, last);
      seen.insert(last = now);
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return seen;
  }
  std::string Version() { return Enumerated(kWaybillReader).chDeviceVersion; }

  void* upgrader_ = nullptr;
  QUORIN_DEVICE_INFO target_{};
  std::vector<std::string> files_;
};

TEST_F(UpgradeTest, ProgressRunsToAHundredAndTheVersionChanges) {
  qsim::SetUpgradeDuration(200);
  EXPECT_EQ(0u, Progress());
  const std::string named = Firmware("named.fw", "V2.9.0 build261199\r\n" + std::string(4096, '\xF0'));
  ASSERT_EQ(0, Start(named));
  EXPECT_EQ(qsim::kBusy, AsWord(Start(named)));
  const std::set<unsigned int> seen = AwaitCompletion();
  EXPECT_EQ(100u, *seen.rbegin());
  EXPECT_GE(std::count_if(seen.begin(), seen.end(), [](unsigned int p) { return p > 0 && p < 100; }), 3);
  EXPECT_EQ("V2.9.0 build261199", Version());

  // A file that names no version bumps the build, carrying through nines.
  qsim::SetUpgradeDuration(0);
  ASSERT_EQ(0, Start(Firmware("plain.fw", "\x7F" "ELF")));
  AwaitCompletion();
  EXPECT_EQ("V2.9.0 build261200", Version());
  target_ = qsim::DefaultReaders()[0];
  std::memset(target_.stGigEInfo.chSerialNumber, 0, sizeof target_.stGigEInfo.chSerialNumber);  // by MAC
  ASSERT_EQ(0, Start(Firmware("nine.fw", "image")));
  AwaitCompletion();
  EXPECT_EQ("V3.2.1 build240517", std::string(Enumerated(k2DReader).chDeviceVersion));
  EXPECT_EQ((std::vector<std::string>{files_.back()}), qsim::CallsTo("QUORIN_StartUpgradeDeviceByHandle").back().texts);
}

TEST_F(UpgradeTest, BadStartsFailAtOnceAndStoppingWaitsForTheThread) {
  EXPECT_EQ(qsim::kNoSuchFile, AsWord(Start(TempPath("no-such-firmware.fw"))));
  EXPECT_EQ(qsim::kBadFirmware, AsWord(Start(Firmware("empty.fw", ""))));
  EXPECT_EQ(0u, Progress());
  const std::string firmware = Firmware("slow.fw", "V9.0.0");
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_StartUpgradeDeviceByHandle(upgrader_, &target_, nullptr)));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_StartUpgradeDeviceByHandle(upgrader_, nullptr, firmware.c_str())));
  EXPECT_EQ(qsim::kBadParameter, AsWord(QUORIN_GetUpgradeProcessByHandle(upgrader_, nullptr)));
  std::memcpy(target_.stGigEInfo.chSerialNumber, "QN0000X0000", 12);
  EXPECT_EQ(qsim::kNoSuchDevice, AsWord(Start(firmware)));
  target_ = qsim::DefaultReaders()[2];
  void* device = Create(kWaybillReader);
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_StartUpgradeDeviceByHandle(device, &target_, firmware.c_str())));

  // Destroying the upgrade handle stops a long upgrade at once; the reader keeps its version.
  qsim::SetUpgradeDuration(60000);
  ASSERT_EQ(0, Start(firmware));
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_LT(Progress(), 100u);
  auto before = Clock::now();
  ASSERT_EQ(0, QUORIN_DestroyHandleForUpgradeAndEncryption(upgrader_));
  EXPECT_LT(Clock::now() - before, std::chrono::seconds(2));
  EXPECT_EQ("V2.8.0 build231120", Version());
  unsigned int progress = 0;
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_GetUpgradeProcessByHandle(upgrader_, &progress)));

  // So does Reset.
  ASSERT_EQ(0, QUORIN_CreateHandleForUpgradeAndEncryption(&upgrader_));
  ASSERT_EQ(0, Start(firmware));
  before = Clock::now();
  qsim::Reset();
  EXPECT_LT(Clock::now() - before, std::chrono::seconds(2));
  EXPECT_EQ(qsim::kInvalidHandle, AsWord(QUORIN_GetUpgradeProcessByHandle(upgrader_, &progress)));
  EXPECT_EQ("V2.8.0 build231120", Version());
}

}  // namespace
