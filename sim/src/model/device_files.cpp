#include "model/device_files.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <thread>

#include "QuorinSim.h"
#include "model/handle_state.h"
#include "model/pace.h"

namespace qsim {
namespace {

template <size_t N>
std::string TextOf(const char (&field)[N]) {
  return std::string(field, strnlen(field, N));
}

std::string DottedQuad(unsigned int address) {
  return std::to_string(address >> 24) + "." + std::to_string(address >> 16 & 0xFF) + "." +
         std::to_string(address >> 8 & 0xFF) + "." + std::to_string(address & 0xFF);
}

DeviceFiles::Bytes BytesOf(const std::string& text) { return DeviceFiles::Bytes(text.begin(), text.end()); }

DeviceFiles::Bytes StartUpSettings(const QUORIN_DEVICE_INFO& info) {
  const QUORIN_GIGE_DEVICE_INFO& gige = info.stGigEInfo;
  return BytesOf("# UserSet1 of " + TextOf(gige.chSerialNumber) + " (" + TextOf(gige.chModelName) + ")\n" +
                 "Width=1280\nHeight=1024\nPixelFormat=Mono8\nTriggerMode=Off\nExposureTime=2000\n"
                 "AcquisitionFrameRate=10\n");
}

DeviceFiles::Bytes BootLog(const QUORIN_DEVICE_INFO& info) {
  const QUORIN_GIGE_DEVICE_INFO& gige = info.stGigEInfo;
  return BytesOf("[boot] " + TextOf(gige.chModelName) + " " + TextOf(gige.chDeviceVersion) + ", serial " +
                 TextOf(gige.chSerialNumber) + "\n[net] " + DottedQuad(gige.nCurrentIp) + "/" +
                 DottedQuad(gige.nCurrentSubNetMask) + " gateway " + DottedQuad(gige.nDefultGateWay) +
                 "\n[boot] ready\n");
}

template <typename Transfer>
Status OnFiles(const void* handle, const char* hostPath, const char* deviceName, Transfer transfer) {
  return WithAdmittedReader(handle, Needs::kOpenReader, [&](VirtualReader& reader) {
    if (hostPath == nullptr || deviceName == nullptr || *deviceName == '\0') {
      return kBadParameter;
    }
    return transfer(reader.Files());
  });
}

}  // namespace

DeviceFiles::DeviceFiles(const QUORIN_DEVICE_INFO& info)
    : files_{{"UserSet1", StartUpSettings(info)}, {"DeviceLog", BootLog(info)}} {}

template <typename Start, typename Move>
Status DeviceFiles::Transfer(size_t total, Start start, Move move) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (transferring_) {
      return kBusy;
    }
    transferring_ = true;
    completed_ = 0;
    total_ = static_cast<long long>(total);
  }
  Status status = start();
  const TransferPace pace = CurrentTransferPace();
  for (size_t offset = 0; status == 0 && offset < total; offset += pace.bytesPerChunk) {
    const size_t length = std::min<size_t>(pace.bytesPerChunk, total - offset);
    status = move(offset, length);
    if (status == 0) {
      std::lock_guard<std::mutex> lock(mutex_);
      completed_ += static_cast<long long>(length);
    }
    std::this_thread::sleep_for(pace.pause);
  }
  std::lock_guard<std::mutex> lock(mutex_);
  transferring_ = false;
  return status;
}

Status DeviceFiles::Upload(const std::string& hostPath, const std::string& deviceName) {
  std::ifstream host(hostPath, std::ios::binary);
  if (!host) {
    return kNoSuchFile;
  }
  const Bytes sent((std::istreambuf_iterator<char>(host)), std::istreambuf_iterator<char>());
  if (host.bad()) {
    return kNoSuchFile;
  }
  Bytes received;
  const Status status = Transfer(
      sent.size(), [] { return Status{0}; },
      [&](size_t offset, size_t length) {
        received.insert(received.end(), sent.begin() + offset, sent.begin() + offset + length);
        return Status{0};
      });
  if (status == 0) {
    Put(deviceName, std::move(received));
  }
  return status;
}

Status DeviceFiles::Download(const std::string& deviceName, const std::string& hostPath) {
  Bytes stored;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = files_.find(deviceName);
    if (found == files_.end()) {
      return kNoSuchDeviceFile;
    }
    stored = found->second;
  }
  std::ofstream host;
  return Transfer(
      stored.size(),
      [&] {
        host.open(hostPath, std::ios::binary | std::ios::trunc);
        return host ? Status{0} : kNoSuchFile;
      },
      [&](size_t offset, size_t length) {
        host.write(reinterpret_cast<const char*>(stored.data() + offset), static_cast<std::streamsize>(length));
        return host.flush() ? Status{0} : kNoSuchFile;
      });
}

void DeviceFiles::Progress(QUORIN_FILE_ACCESS_PROGRESS& out) const {
  std::lock_guard<std::mutex> lock(mutex_);
  out.nCompleted = completed_;
  out.nTotal = total_;
}

DeviceFiles::Bytes DeviceFiles::Get(const std::string& name) const {
  std::lock_guard<std::mutex> lock(mutex_);
  auto found = files_.find(name);
  return found == files_.end() ? Bytes{} : found->second;
}

void DeviceFiles::Put(const std::string& name, Bytes bytes) {
  std::lock_guard<std::mutex> lock(mutex_);
  files_[name] = std::move(bytes);
}

Status UploadFile(const void* handle, const char* hostPath, const char* deviceName) {
  return OnFiles(handle, hostPath, deviceName, [&](DeviceFiles& files) { return files.Upload(hostPath, deviceName); });
}

Status DownloadFile(const void* handle, const char* deviceName, const char* hostPath) {
  return OnFiles(handle, hostPath, deviceName,
                 [&](DeviceFiles& files) { return files.Download(deviceName, hostPath); });
}

}  // namespace qsim
