#include "model/frame_channel.h"

#include <algorithm>
#include <chrono>
#include <cstring>

#include "QuorinSim.h"

namespace qsim {
namespace {

// What an empty waybill image points to: a reader of nImageLen = 0 bytes never gets null.
unsigned char kNoImageBytes[1] = {0};

unsigned int Reported(long long reported, size_t actual) {
  return static_cast<unsigned int>(reported < 0 ? static_cast<long long>(actual) : reported);
}

// The plain list's entry: the same code with its text cut to the plain array.
QUORIN_BCR_INFO PlainCode(const QUORIN_BCR_INFO_EX& code) {
  QUORIN_BCR_INFO plain{};
  plain.nID = code.nID;
  std::memcpy(plain.chCode, code.chCode, strnlen(code.chCode, sizeof plain.chCode - 1));
  plain.nLen = code.nLen;
  plain.nBarType = code.nBarType;
  plain.pt[0] = code.stCornerLeftTop;
  plain.pt[1] = code.stCornerRightTop;
  plain.pt[2] = code.stCornerRightBottom;
  plain.pt[3] = code.stCornerLeftBottom;
  plain.stCodeQuality = code.stCodeQuality;
#define QSIM_COPY(member) plain.member = code.member;
  QUORIN_CODE_SHARED_MEMBERS(QSIM_COPY)
#undef QSIM_COPY
  plain.bIsGetQuality = code.bIsGetQuality;
  return plain;
}

// Fills entries [0, count) and zeroes those the previous frame used beyond them, so no entry
// keeps a stale value (or a pointer into freed memory) from an earlier frame.
template <typename Entry, typename Make>
void Refill(Entry* entries, size_t count, size_t& used, Make make) {
  for (size_t i = 0; i < count; ++i) {
    entries[i] = make(i);
  }
  if (used > count) {
    std::memset(static_cast<void*>(entries + count), 0, (used - count) * sizeof(Entry));
  }
  used = count;
}

}  // namespace

void Delivery::Take(QueuedFrame&& queued) {
  header_ = queued.frame.info;
  nullImage_ = queued.frame.nullImage;
  DrawOrTakeImage(queued);
  FillCodeLists(queued.frame);
  FillWaybills(queued.frame);
}

void Delivery::DrawOrTakeImage(QueuedFrame& queued) {
  if (queued.pattern == nullptr) {
    image_ = std::move(queued.frame.image);
    return;
  }
  const Region whole{0, 0, header_.nWidth, header_.nHeight};
  image_.resize(static_cast<size_t>(whole.width) * whole.height);  // keeps its capacity between frames
  queued.pattern->Draw(queued.phase, queued.frame.codes, whole, image_.data(), whole.width);
}

void Delivery::FillCodeLists(const Frame& frame) {
  if (codesEx_ == nullptr) {
    codesEx_ = std::make_unique<QUORIN_RESULT_BCR_EX>();
    codes_ = std::make_unique<QUORIN_RESULT_BCR>();
  }
  const std::vector<QUORIN_BCR_INFO_EX>& codes = frame.codes;
  Refill(codesEx_->stBcrInfoEx, std::min<size_t>(codes.size(), QUORIN_MAX_BCR_EX_NUM), usedCodesEx_,
         [&](size_t i) { return codes[i]; });
  codesEx_->nCodeNum = Reported(frame.reportedCodeCount, codes.size());
  Refill(codes_->stBcrInfo, std::min<size_t>(codes.size(), QUORIN_MAX_BCR_NUM), usedCodes_,
         [&](size_t i) { return PlainCode(codes[i]); });
  codes_->nCodeNum = static_cast<unsigned int>(usedCodes_);
  header_.pstCodeListEx = codesEx_.get();
  header_.pstCodeList = codes_.get();
}

void Delivery::FillWaybills(Frame& frame) {
  if (waybills_ == nullptr) {
    waybills_ = std::make_unique<QUORIN_WAYBILL_LIST>();
  }
  const size_t stored = std::min<size_t>(frame.waybills.size(), QUORIN_MAX_WAYBILL_NUM);
  waybillImages_.resize(stored);
  Refill(waybills_->stWaybillInfo, stored, usedWaybills_, [&](size_t i) {
    std::vector<unsigned char>& image = waybillImages_[i];
    image = std::move(frame.waybills[i].image);
    QUORIN_WAYBILL_INFO entry = frame.waybills[i].info;
    entry.pImageWaybill = image.empty() ? kNoImageBytes : image.data();
    entry.nImageLen = static_cast<unsigned int>(image.size());
    return entry;
  });
  waybills_->nWaybillNum = Reported(frame.reportedWaybillCount, frame.waybills.size());
  waybills_->enWaybillImageType = frame.waybillImageType;
  header_.pstWaybillList = waybills_.get();
}

void Delivery::HandOut(unsigned char** data, QUORIN_IMAGE_OUT_INFO_EX2* info) {
  *data = nullImage_ ? nullptr : image_.data();
  *info = header_;
}

std::unique_ptr<Delivery> DeliveryPool::Take() {
  std::lock_guard<std::mutex> lock(mutex_);
  if (idle_.empty()) {
    return std::make_unique<Delivery>();
  }
  std::unique_ptr<Delivery> delivery = std::move(idle_.back());
  idle_.pop_back();
  return delivery;
}

void DeliveryPool::Give(std::unique_ptr<Delivery> delivery) {
  std::lock_guard<std::mutex> lock(mutex_);
  idle_.push_back(std::move(delivery));
}

void DeliveryPool::Clear() {
  std::lock_guard<std::mutex> lock(mutex_);
  idle_.clear();
}

void FrameChannel::Open() {
  std::lock_guard<std::mutex> lock(mutex_);
  open_ = true;
  dropped_ = 0;
}

void FrameChannel::Close(Status answer) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    open_ = false;
    closedAnswer_ = answer;
    queue_.clear();
    repeatPending_.reset();
    repeating_ = false;
  }
  ready_.notify_all();
}

void FrameChannel::Offer(QueuedFrame&& frame) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (queue_.size() == kFrameQueueCapacity) {
      queue_.pop_front();
      ++dropped_;
    }
    queue_.push_back(std::move(frame));
  }
  ready_.notify_all();
}

void FrameChannel::Repeat(QueuedFrame&& frame) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    repeatPending_ = std::move(frame);
  }
  ready_.notify_all();
}

Status FrameChannel::Fetch(unsigned int timeoutMs, unsigned char** data, QUORIN_IMAGE_OUT_INFO_EX2* info) {
  std::lock_guard<std::mutex> delivering(deliveryMutex_);
  std::unique_lock<std::mutex> lock(mutex_);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  ready_.wait_until(lock, deadline,
                    [&] { return !open_ || repeatPending_ || repeating_ || !queue_.empty(); });
  if (!open_) {
    return closedAnswer_;
  }
  if (repeatPending_) {
    QueuedFrame frame = std::move(*repeatPending_);
    repeatPending_.reset();
    repeating_ = true;
    lock.unlock();
    delivery_.Take(std::move(frame));
  } else if (repeating_) {
    lock.unlock();
    delivery_.NextRepeat();
  } else if (!queue_.empty()) {
    QueuedFrame frame = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    delivery_.Take(std::move(frame));  // drawn outside the queue's lock: the producer never waits on it
  } else {
    return kNoData;
  }
  delivery_.HandOut(data, info);
  return 0;
}

unsigned long long FrameChannel::Dropped() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return dropped_;
}

void FrameChannel::Release() {
  std::lock_guard<std::mutex> delivering(deliveryMutex_);
  delivery_ = Delivery{};
}

}  // namespace qsim
