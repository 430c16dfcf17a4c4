// One channel of a grabbing reader: its bounded queue of frames, and the frame it delivered last.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "FrameSynthesis.h"
#include "QuorinCtrl.h"
#include "Status.h"

namespace qsim {

// The frame last handed out on a channel: the memory its record points to. The lists are
// made once per channel and refilled; entries past the current frame's are kept zero.
class Delivery {
 public:
  void Take(QueuedFrame&& queued);
  void NextRepeat() { ++header_.nFrameNum; }
  void HandOut(unsigned char** data, QUORIN_IMAGE_OUT_INFO_EX2* info);

 private:
  void DrawOrTakeImage(QueuedFrame& queued);
  void FillCodeLists(const Frame& frame);
  void FillWaybills(Frame& frame);

  QUORIN_IMAGE_OUT_INFO_EX2 header_{};
  std::vector<unsigned char> image_;
  bool nullImage_ = false;
  std::unique_ptr<QUORIN_RESULT_BCR_EX> codesEx_;
  std::unique_ptr<QUORIN_RESULT_BCR> codes_;
  std::unique_ptr<QUORIN_WAYBILL_LIST> waybills_;
  std::vector<std::vector<unsigned char>> waybillImages_;
  size_t usedCodesEx_ = 0;  // list entries filled by the frame delivered last
  size_t usedCodes_ = 0;
  size_t usedWaybills_ = 0;
};

class FrameChannel {
 public:
  void Open();   // fetches are served; the drop count starts again
  void Close();  // fetches are refused, waiting ones woken; queued and repeated frames dropped
  // Queues a frame, open or not; a full queue loses its oldest frame.
  void Offer(QueuedFrame&& frame);
  void Repeat(QueuedFrame&& frame);
  // Waits up to `timeoutMs` for a frame and delivers it: kNoData when none came.
  Status Fetch(unsigned int timeoutMs, unsigned char** data, QUORIN_IMAGE_OUT_INFO_EX2* info);
  unsigned long long Dropped() const;
  void Release();  // frees the delivered frame's memory; the device is closing

 private:
  mutable std::mutex mutex_;  // everything but the delivery
  std::condition_variable ready_;
  std::deque<QueuedFrame> queue_;
  bool open_ = false;
  unsigned long long dropped_ = 0;
  std::optional<QueuedFrame> repeatPending_;  // delivered by the next fetch, then repeated
  bool repeating_ = false;

  std::mutex deliveryMutex_;  // one fetch at a time per channel; taken before `mutex_`
  Delivery delivery_;
};

}  // namespace qsim
