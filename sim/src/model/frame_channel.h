// One channel of a grabbing reader: its bounded queue of frames, and the frame it delivered last.
#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "QuorinCtrl.h"
#include "model/frame_synthesis.h"
#include "model/status.h"

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

// Deliveries for image callbacks, reused from frame to frame. A delivery brought on inside another's
// callback takes a second one instead of overwriting the frame the first callback is reading.
class DeliveryPool {
 public:
  std::unique_ptr<Delivery> Take();
  void Give(std::unique_ptr<Delivery> delivery);
  void Clear();  // frees the idle ones; the device is closing

 private:
  std::mutex mutex_;
  std::vector<std::unique_ptr<Delivery>> idle_;
};

class FrameChannel {
 public:
  void Open();  // fetches are served; the drop count starts again
  // Fetches are refused with `answer`, waiting ones woken; queued and repeated frames dropped.
  void Close(Status answer);
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
  Status closedAnswer_ = kWrongCallOrder;
  unsigned long long dropped_ = 0;
  std::optional<QueuedFrame> repeatPending_;  // delivered by the next fetch, then repeated
  bool repeating_ = false;

  std::mutex deliveryMutex_;  // one fetch at a time per channel; taken before `mutex_`
  Delivery delivery_;
};

}  // namespace qsim
