// What produced frames look like: their pixels, their decoded codes and their waybills.
// Patterns and code generators are interfaces, so a reader can be given others.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "QuorinCtrl.h"
#include "QuorinSim.h"
#include "model/reader_traits.h"

namespace qsim {

// The moment one frame is made on one channel.
struct Shot {
  unsigned int width = 0;
  unsigned int height = 0;
  unsigned int channel = 0;
  unsigned int frameNumber = 0;
  unsigned int triggerIndex = 0;  // software triggers since grabbing started; 0 in free run
  unsigned long long timeStampUs = 0;
  unsigned long long sequence = 0;  // frames made on this channel since grabbing started
};

// A rectangle of pixels in image coordinates.
struct Region {
  unsigned int x = 0;
  unsigned int y = 0;
  unsigned int width = 0;
  unsigned int height = 0;
};

// Draws produced frames. Any region can be drawn alone: waybill crops are drawn that way.
class FramePattern {
 public:
  virtual ~FramePattern() = default;
  // `phase` moves the picture from frame to frame; `codes` are the frame's decoded codes.
  virtual void Draw(unsigned int phase, const std::vector<QUORIN_BCR_INFO_EX>& codes,
                    const Region& region, unsigned char* out, size_t stride) const = 0;
};

// Makes the decoded codes of produced frames; called on the producer's thread only.
class CodeGenerator {
 public:
  virtual ~CodeGenerator() = default;
  virtual std::vector<QUORIN_BCR_INFO_EX> Codes(const Shot& shot, unsigned int phase) = 0;
};

// Diagonal bars that slide with the phase, and a box drawn through each code's corners.
std::shared_ptr<const FramePattern> MovingBarsPattern();
// 1 to 3 codes per frame with running numbers ("QN" and ten digits) and corners that move
// with the phase; with `gbkTexts`, every fifth code is a GBK text instead.
std::unique_ptr<CodeGenerator> RunningCodes(bool gbkTexts);

// A frame as made, before delivery. A produced frame carries no pixels: they are drawn when it
// is delivered, so a queued frame costs little and a frame lost from a full queue is never drawn.
struct QueuedFrame {
  Frame frame;
  std::shared_ptr<const FramePattern> pattern;  // set: draw nWidth x nHeight pixels at delivery
  unsigned int phase = 0;
};

// Builds the produced frames of one reader; `cutsWaybills` is asked for every frame.
class FrameSynthesizer {
 public:
  FrameSynthesizer(const ReaderTraits& traits, std::shared_ptr<const FramePattern> pattern,
                   std::unique_ptr<CodeGenerator> codes, std::function<bool()> cutsWaybills);
  QueuedFrame Make(const Shot& shot);

 private:
  std::vector<Waybill> CutWaybills(const Shot& shot, unsigned int phase,
                                   const std::vector<QUORIN_BCR_INFO_EX>& codes) const;

  ReaderTraits traits_;
  std::shared_ptr<const FramePattern> pattern_;
  std::unique_ptr<CodeGenerator> codes_;
  std::function<bool()> cutsWaybills_;
};

// An 8-bit grey BMP file: grey palette of 256 entries, bottom-up rows padded to 4 bytes.
std::vector<unsigned char> EncodeGreyBmp(const unsigned char* pixels, unsigned int width,
                                         unsigned int height, size_t stride);

}  // namespace qsim
