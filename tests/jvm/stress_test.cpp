// Several readers grabbing at once, thousands of frames to Java callbacks, then stopped,
// closed and destroyed: nothing may crash and memory must not grow with the deliveries.
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

#include <cstring>

#include "QuorinSim.h"
#include "jvm_harness.h"

namespace quorin_test {
namespace {

constexpr int kWarmUpDeliveries = 600;
constexpr int kMeasuredDeliveries = 3000;

long ResidentBytes() {
  std::ifstream statm("/proc/self/statm");
  long pages = 0;
  long resident = 0;
  statm >> pages >> resident;
  return resident * sysconf(_SC_PAGESIZE);
}

class StressTest : public JvmTest {
 protected:
  jint Status(const char* method, jobject handle) {
    return CallInt(method, ("(" + kHandleSig + ")I").c_str(), handle);
  }
  int Deliveries() {
    int total = 0;
    for (jobject recorder : recorders_) {
      jclass recorderClass = env_->GetObjectClass(recorder);
      total += env_->CallIntMethod(recorder, env_->GetMethodID(recorderClass, "calls", "()I"));
      Checked();
      env_->DeleteLocalRef(recorderClass);
    }
    return total;
  }
  bool WaitForDeliveries(int count) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(3);
    while (Deliveries() < count) {
      if (std::chrono::steady_clock::now() > deadline) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
  }
  long UsedHeap() {
    jclass probes = env_->FindClass("QuorinTest/Probes");
    const jlong used = env_->CallStaticLongMethod(probes, env_->GetStaticMethodID(probes, "usedHeapAfterCollection", "()J"));
    Checked();
    return static_cast<long>(used);
  }
  std::vector<jobject> recorders_;
};

TEST_F(StressTest, ThousandsOfCallbackFramesFromSeveralReaders) {
  std::vector<jobject> handles;
  for (int reader : {0, 1, 2}) {
    jobject handle = OpenReader(reader);
    void* sdk = SdkHandle(handle);
    qsim::SetIntNode(sdk, "Width", 64, 64, 2448, 8);
    qsim::SetIntNode(sdk, "Height", 64, 64, 2048, 8);
    qsim::SetFloatNode(sdk, "AcquisitionFrameRate", 200.0f, 1.0f, 200.0f);
    jobject recorder = New("QuorinTest/ImageRecorder");
    const jint channels = reader == 1 ? 4 : 1;
    for (jint channel = 0; channel < channels; ++channel) {
      ASSERT_EQ(CallInt("QUORIN_MSC_RegisterImageCallBack", ("(" + kHandleSig + "ILjava/lang/Object;)I").c_str(),
                        handle, channel, recorder), 0);
    }
    handles.push_back(handle);
    recorders_.push_back(recorder);
  }
  // Memory is measured with every reader stopped, so that no delivery is under way.
  auto grab = [&](int deliveries) {
    for (jobject handle : handles) EXPECT_EQ(Status("QUORIN_StartGrabbing", handle), 0);
    const bool reached = WaitForDeliveries(Deliveries() + deliveries);
    for (jobject handle : handles) EXPECT_EQ(Status("QUORIN_StopGrabbing", handle), 0);
    return reached;
  };
  ASSERT_TRUE(grab(kWarmUpDeliveries)) << Deliveries();
  const long heapBefore = UsedHeap();
  const long residentBefore = ResidentBytes();
  const int deliveredBefore = Deliveries();
  ASSERT_TRUE(grab(kMeasuredDeliveries)) << Deliveries();
  const long heapAfter = UsedHeap();
  const long residentAfter = ResidentBytes();
  const int measured = Deliveries() - deliveredBefore;

  for (jobject handle : handles) {
    EXPECT_EQ(Status("QUORIN_CloseDevice", handle), 0);
    EXPECT_EQ(Status("QUORIN_DestroyHandle", handle), 0);
  }
  // Every reader delivered; the shared frame object was filled by all of them at once, which is
  // why the frames' contents are not checked here.
  for (jobject recorder : recorders_) EXPECT_GT(Int(recorder, "calls"), 0);
  // Per delivery the bridge keeps nothing: a leaked reference or record would show here.
  EXPECT_LT((heapAfter - heapBefore) / measured, 64) << heapBefore << " -> " << heapAfter << " over " << measured;
  EXPECT_LT(residentAfter - residentBefore, 16L << 20) << residentBefore << " -> " << residentAfter;
}

}  // namespace
}  // namespace quorin_test
