#include "model/frame_synthesis.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

namespace qsim {
namespace {

constexpr unsigned int kPhaseStepPerFrame = 5;  // pixels the bars slide per frame
constexpr unsigned int kPhaseStepPerChannel = 12;
constexpr unsigned int kBarPeriod = 48;
constexpr unsigned char kDark = 40;
constexpr unsigned char kLight = 176;
constexpr unsigned char kMark = 255;

// Bar types the stand-in reports, and the source event of a frame (nEventID).
constexpr unsigned int kBarTypes[] = {1 /* QR code */, 2 /* Data Matrix */, 3 /* Code 128 */};
constexpr unsigned int kOneDimensionalType = 3;
constexpr unsigned int kFreeRunEvent = 1;
constexpr unsigned int kSoftwareTriggerEvent = 2;

unsigned int PhaseOf(const Shot& shot) {
  return static_cast<unsigned int>(shot.sequence * kPhaseStepPerFrame + shot.channel * kPhaseStepPerChannel);
}

// ---------------------------------------------------------------------------
// Pixels.

void DrawBars(unsigned int phase, const Region& region, unsigned char* out, size_t stride) {
  // One run of bars long enough for any start; each row is a slice of it, shifted by the row.
  std::vector<unsigned char> run(region.width + kBarPeriod);
  for (size_t i = 0; i < run.size(); ++i) {
    run[i] = i % kBarPeriod < kBarPeriod / 2 ? kDark : kLight;
  }
  for (unsigned int row = 0; row < region.height; ++row) {
    const unsigned long long diagonal = 0ULL + region.x + region.y + row + phase;
    std::memcpy(out + row * stride, run.data() + diagonal % kBarPeriod, region.width);
  }
}

void Plot(long long x, long long y, const Region& region, unsigned char* out, size_t stride) {
  if (x >= region.x && y >= region.y && x < 0LL + region.x + region.width &&
      y < 0LL + region.y + region.height) {
    out[static_cast<size_t>(y - region.y) * stride + static_cast<size_t>(x - region.x)] = kMark;
  }
}

void DrawLine(QUORIN_POINT_I from, QUORIN_POINT_I to, const Region& region, unsigned char* out,
              size_t stride) {
  const long long dx = std::llabs(0LL + to.nX - from.nX);
  const long long dy = -std::llabs(0LL + to.nY - from.nY);
  const int stepX = from.nX < to.nX ? 1 : -1;
  const int stepY = from.nY < to.nY ? 1 : -1;
  long long error = dx + dy;
  long long x = from.nX;
  long long y = from.nY;
  for (;;) {
    Plot(x, y, region, out, stride);
    if (x == to.nX && y == to.nY) {
      return;
    }
    const long long doubled = 2 * error;
    if (doubled >= dy) {
      error += dy;
      x += stepX;
    }
    if (doubled <= dx) {
      error += dx;
      y += stepY;
    }
  }
}

class MovingBars : public FramePattern {
 public:
  void Draw(unsigned int phase, const std::vector<QUORIN_BCR_INFO_EX>& codes, const Region& region,
            unsigned char* out, size_t stride) const override {
    DrawBars(phase, region, out, stride);
    for (const QUORIN_BCR_INFO_EX& code : codes) {
      const QUORIN_POINT_I corners[] = {code.stCornerLeftTop, code.stCornerRightTop,
                                        code.stCornerRightBottom, code.stCornerLeftBottom};
      for (size_t i = 0; i < 4; ++i) {
        DrawLine(corners[i], corners[(i + 1) % 4], region, out, stride);
      }
    }
  }
};

// ---------------------------------------------------------------------------
// Codes.

// Grades from 4 (best) down to 1, neighbouring fields one apart so a swap shows.
QUORIN_CODE_INFO QualityOf(unsigned long long number) {
  QUORIN_CODE_INFO quality{};
  const int grade = 4 - static_cast<int>(number % 4);
  for (size_t i = 0; i < std::size(kQualityGrades); ++i) {
    quality.*kQualityGrades[i] = std::max(0, grade - static_cast<int>(i % 2));
  }
  for (size_t i = 0; i < std::size(kQualityScores); ++i) {
    quality.*kQualityScores[i] = static_cast<float>(grade) - 0.05f * static_cast<float>(i);
  }
  return quality;
}

std::string TextOf(unsigned long long number, bool gbk) {
  char text[32];
  if (gbk && number % 5 == 0) {
    std::snprintf(text, sizeof text, "\xB7\xD6\xBC\xF0-%06llu", number % 1000000);  // 分拣- in GBK
  } else {
    std::snprintf(text, sizeof text, "QN%010llu", number % 10000000000ULL);
  }
  return text;
}

// A square of half-side `half` around (x, y), turned by `degrees`, every corner kept inside.
void PlaceCorners(QUORIN_BCR_INFO_EX& code, long long x, long long y, int half, int degrees,
                  const Shot& shot) {
  const double radians = degrees * 3.14159265358979 / 180.0;
  const double cosine = std::cos(radians);
  const double sine = std::sin(radians);
  const int offsets[4][2] = {{-half, -half}, {half, -half}, {half, half}, {-half, half}};
  QUORIN_POINT_I* corners[4] = {&code.stCornerLeftTop, &code.stCornerRightTop, &code.stCornerRightBottom,
                                &code.stCornerLeftBottom};
  for (size_t i = 0; i < 4; ++i) {
    const long long cornerX = x + std::lround(offsets[i][0] * cosine - offsets[i][1] * sine);
    const long long cornerY = y + std::lround(offsets[i][0] * sine + offsets[i][1] * cosine);
    corners[i]->nX = static_cast<int>(std::clamp(cornerX, 0LL, shot.width - 1LL));
    corners[i]->nY = static_cast<int>(std::clamp(cornerY, 0LL, shot.height - 1LL));
  }
}

void SetTimes(QUORIN_BCR_INFO_EX& code, unsigned long long timeStampUs) {
  const unsigned long long seconds = timeStampUs / 1000000;
  const unsigned long long micros = timeStampUs % 1000000;
  code.nTriggerTimeTvHigh = static_cast<unsigned int>(seconds >> 32);
  code.nTriggerTimeTvLow = static_cast<unsigned int>(seconds);
  code.nTriggerTimeUtvHigh = static_cast<unsigned int>(micros >> 32);
  code.nTriggerTimeUtvLow = static_cast<unsigned int>(micros);
}

class RunningCodeGenerator : public CodeGenerator {
 public:
  explicit RunningCodeGenerator(bool gbkTexts) : gbkTexts_(gbkTexts) {}

  std::vector<QUORIN_BCR_INFO_EX> Codes(const Shot& shot, unsigned int phase) override {
    const unsigned int count = 1 + static_cast<unsigned int>(shot.sequence % 3);
    std::vector<QUORIN_BCR_INFO_EX> codes(count);
    for (unsigned int i = 0; i < count; ++i) {
      Fill(codes[i], shot, phase, i, count, next_++);
    }
    return codes;
  }

 private:
  void Fill(QUORIN_BCR_INFO_EX& code, const Shot& shot, unsigned int phase, unsigned int index,
            unsigned int count, unsigned long long number) const {
    const std::string text = TextOf(number, gbkTexts_);
    std::memcpy(code.chCode, text.data(), text.size());
    code.nID = index;
    code.nLen = static_cast<unsigned int>(text.size());
    code.nBarType = kBarTypes[number % std::size(kBarTypes)];

    // Codes drift right with the phase, one above the other, with room to turn in any direction.
    const int half = std::max(2, static_cast<int>(std::min(shot.width, shot.height) / 10));
    const long long margin = half * 3 / 2 + 1;
    const long long spanX = std::max(1LL, shot.width - 2 * margin);
    const long long spanY = std::max(1LL, shot.height - 2 * margin);
    const long long x = margin + (3LL * phase + 1LL * index * shot.width / 3) % spanX;
    const long long y = margin + (index + 1) * spanY / (count + 1);
    code.nAngle = static_cast<int>(number * 37 % 181) - 90;
    PlaceCorners(code, x, y, half, code.nAngle, shot);

    code.stCodeQuality = QualityOf(number);
    code.nMainPackageId = static_cast<unsigned int>(shot.sequence + 1);
    code.nSubPackageId = index + 1;
    code.sAppearCount = static_cast<unsigned short>(1 + number % 4);
    code.sPPM = static_cast<unsigned short>(2 * half);
    code.sAlgoCost = static_cast<unsigned short>(3 + index);
    code.sSharpness = static_cast<unsigned short>(60 + number % 40);
    code.bIsGetQuality = 1;
    code.nIDRScore = static_cast<unsigned int>(70 + number % 30);
    code.n1DIsGetQuality = code.nBarType == kOneDimensionalType ? 1 : 0;
    code.nTotalProcCost = 5 + 2 * index;
    SetTimes(code, shot.timeStampUs);
  }

  const bool gbkTexts_;
  unsigned long long next_ = 1;  // running over every frame the reader ever makes
};

// ---------------------------------------------------------------------------
// Frames.

QUORIN_IMAGE_OUT_INFO_EX2 HeaderOf(const Shot& shot, size_t codeCount) {
  QUORIN_IMAGE_OUT_INFO_EX2 info{};
  info.nWidth = static_cast<unsigned short>(shot.width);
  info.nHeight = static_cast<unsigned short>(shot.height);
  info.enPixelType = PixelType_Gvsp_Mono8;  // frames are made as Mono8 whatever PixelFormat says
  info.nTriggerIndex = shot.triggerIndex;
  info.nFrameNum = shot.frameNumber;
  info.nFrameLen = shot.width * shot.height;
  info.nTimeStampHigh = static_cast<unsigned int>(shot.timeStampUs >> 32);
  info.nTimeStampLow = static_cast<unsigned int>(shot.timeStampUs);
  info.bFlaseTrigger = 0;
  info.nFocusScore = static_cast<unsigned int>(400 + shot.sequence * 37 % 600);
  info.bIsGetCode = codeCount > 0 ? 1 : 0;
  info.nEventID = shot.triggerIndex != 0 ? kSoftwareTriggerEvent : kFreeRunEvent;
  info.nChannelID = shot.channel;
  info.nImageCost = static_cast<unsigned int>(6 + 3 * codeCount);
  return info;
}

void Put16(std::vector<unsigned char>& bytes, size_t at, unsigned int value) {
  bytes[at] = static_cast<unsigned char>(value);
  bytes[at + 1] = static_cast<unsigned char>(value >> 8);
}

void Put32(std::vector<unsigned char>& bytes, size_t at, unsigned int value) {
  Put16(bytes, at, value & 0xFFFF);
  Put16(bytes, at + 2, value >> 16);
}

}  // namespace

std::shared_ptr<const FramePattern> MovingBarsPattern() { return std::make_shared<MovingBars>(); }

std::unique_ptr<CodeGenerator> RunningCodes(bool gbkTexts) {
  return std::make_unique<RunningCodeGenerator>(gbkTexts);
}

FrameSynthesizer::FrameSynthesizer(const ReaderTraits& traits, std::shared_ptr<const FramePattern> pattern,
                                   std::unique_ptr<CodeGenerator> codes, std::function<bool()> cutsWaybills)
    : traits_(traits), pattern_(std::move(pattern)), codes_(std::move(codes)), cutsWaybills_(std::move(cutsWaybills)) {}

QueuedFrame FrameSynthesizer::Make(const Shot& shot) {
  QueuedFrame made;
  made.pattern = pattern_;
  made.phase = PhaseOf(shot);
  Frame& frame = made.frame;
  if (traits_.decodes) {
    frame.codes = codes_->Codes(shot, made.phase);
  }
  if (cutsWaybills_()) {
    frame.waybills = CutWaybills(shot, made.phase, frame.codes);
  }
  frame.info = HeaderOf(shot, frame.codes.size());
  return made;
}

std::vector<Waybill> FrameSynthesizer::CutWaybills(const Shot& shot, unsigned int phase,
                                                   const std::vector<QUORIN_BCR_INFO_EX>& codes) const {
  const unsigned int count = 1 + static_cast<unsigned int>(shot.sequence % 2);
  const unsigned int width = std::max(1u, shot.width / 4);
  const unsigned int height = std::max(1u, shot.height / 5);
  std::vector<Waybill> waybills(count);
  std::vector<unsigned char> pixels(static_cast<size_t>(width) * height);
  for (unsigned int i = 0; i < count; ++i) {
    const Region crop{(2 * phase + i * shot.width / 2) % (shot.width - width + 1),
                      (shot.height / 8 + i * shot.height / 2) % (shot.height - height + 1), width, height};
    pattern_->Draw(phase, codes, crop, pixels.data(), width);
    QUORIN_WAYBILL_INFO& info = waybills[i].info;
    info.fCenterX = static_cast<float>(crop.x) + static_cast<float>(width) / 2;
    info.fCenterY = static_cast<float>(crop.y) + static_cast<float>(height) / 2;
    info.fWidth = static_cast<float>(width);
    info.fHeight = static_cast<float>(height);
    info.fAngle = -8.5f + static_cast<float>((shot.sequence + i) % 17);
    info.fConfidence = 0.80f + 0.01f * static_cast<float>((shot.sequence + i) % 20);
    waybills[i].image = EncodeGreyBmp(pixels.data(), width, height, width);
  }
  return waybills;
}

std::vector<unsigned char> EncodeGreyBmp(const unsigned char* pixels, unsigned int width,
                                         unsigned int height, size_t stride) {
  constexpr unsigned int kFileHeader = 14;
  constexpr unsigned int kInfoHeader = 40;
  constexpr unsigned int kPalette = 256 * 4;
  constexpr unsigned int kPixelsAt = kFileHeader + kInfoHeader + kPalette;
  constexpr unsigned int kPixelsPerMetre = 2835;  // 72 dpi
  const unsigned int rowBytes = (width + 3) & ~3u;
  const unsigned int pixelBytes = rowBytes * height;

  std::vector<unsigned char> file(kPixelsAt + pixelBytes, 0);
  Put16(file, 0, 'B' | 'M' << 8);
  Put32(file, 2, kPixelsAt + pixelBytes);
  Put32(file, 10, kPixelsAt);
  Put32(file, 14, kInfoHeader);
  Put32(file, 18, width);
  Put32(file, 22, height);  // positive: the rows run bottom-up
  Put16(file, 26, 1);       // planes
  Put16(file, 28, 8);       // bits per pixel
  Put32(file, 34, pixelBytes);
  Put32(file, 38, kPixelsPerMetre);
  Put32(file, 42, kPixelsPerMetre);
  Put32(file, 46, 256);  // colours used
  Put32(file, 50, 256);  // colours important
  for (unsigned int grey = 0; grey < 256; ++grey) {
    std::memset(&file[kFileHeader + kInfoHeader + 4 * grey], static_cast<int>(grey), 3);
  }
  for (unsigned int row = 0; row < height; ++row) {
    std::memcpy(&file[kPixelsAt + static_cast<size_t>(height - 1 - row) * rowBytes], pixels + row * stride, width);
  }
  return file;
}

}  // namespace qsim
