#include "bench_support.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <stdexcept>

#include "QuorinCtrl.h"
#include "jvm_start.h"

namespace bench {

const std::string kDefine = "QuorinCtrlWrapper/QuorinCtrlDefine$";
const std::string kHandleSig = "L" + kDefine + "Handle;";
const std::string kFrameSig = "L" + kDefine + "QUORIN_IMAGE_OUT_INFO_EX2;";

namespace {

const std::string kDeviceSig = "L" + kDefine + "QUORIN_DEVICE_INFO;";

}  // namespace

// ---------------------------------------------------------------------------
// The JVM and calls into it.

void ThrowIfPending(JNIEnv* env, const std::string& what) {
  if (!env->ExceptionCheck()) return;
  env->ExceptionDescribe();
  throw std::runtime_error(what + " threw");
}

void ExpectSuccess(jint status, const char* what) {
  if (status == 0) return;
  char text[96];
  std::snprintf(text, sizeof text, "%s returned 0x%08x", what, static_cast<unsigned int>(status));
  throw std::runtime_error(text);
}

Jvm::Jvm() {
  const std::vector<std::string> options = {
      std::string("-Djna.library.path=") + QUORIN_LIBRARY_DIR,  // JNA's peer finds the stand-in there
      "-Xms512m",  // a fixed heap: no resizing in the middle of a timed loop
      "-Xmx512m",
  };
  std::string error;
  env_ = quorin_test::StartJvm(QUORIN_JVM_LIBRARY, QUORIN_CLASS_PATH, QUORIN_LIBRARY_DIR, options, &vm_, &error);
  if (env_ == nullptr) throw std::runtime_error(error);
}

Jvm::~Jvm() { vm_->DestroyJavaVM(); }

JavaClass::JavaClass(JNIEnv* env, const std::string& name)
    : env_(env), name_(name), class_(env->FindClass(name.c_str())) {
  ThrowIfPending(env_, "loading " + name_);
}

jobject NewObject(JNIEnv* env, const std::string& className) {
  jclass cls = env->FindClass(className.c_str());
  ThrowIfPending(env, "loading " + className);
  jobject object = env->NewObject(cls, env->GetMethodID(cls, "<init>", "()V"));
  ThrowIfPending(env, "constructing " + className);
  env->DeleteLocalRef(cls);
  return object;
}

namespace {

jfieldID FieldOf(JNIEnv* env, jobject object, const char* field, const char* sig) {
  jclass cls = env->GetObjectClass(object);
  const jfieldID id = env->GetFieldID(cls, field, sig);
  env->DeleteLocalRef(cls);
  ThrowIfPending(env, std::string("field ") + field);
  return id;
}

jobject FirstItem(JNIEnv* env, jobject list) {
  jclass cls = env->FindClass("java/util/ArrayList");
  const jint size = env->CallIntMethod(list, env->GetMethodID(cls, "size", "()I"));
  ThrowIfPending(env, "ArrayList.size");
  if (size == 0) throw std::runtime_error("the list is empty");
  jobject item = env->CallObjectMethod(list, env->GetMethodID(cls, "get", "(I)Ljava/lang/Object;"), 0);
  ThrowIfPending(env, "ArrayList.get");
  env->DeleteLocalRef(cls);
  return item;
}

// ---------------------------------------------------------------------------
// Frames as a reader reports them.

constexpr double kPi = 3.14159265358979323846;
constexpr unsigned int kQrCode = 1;
constexpr unsigned int kDataMatrix = 2;
constexpr unsigned int kCode128 = 3;
constexpr unsigned int kBarTypes[] = {kQrCode, kDataMatrix, kCode128};

// Grades 1..4 with scores to match, different from code to code.
QUORIN_CODE_INFO QualityOf(unsigned int index) {
  QUORIN_CODE_INFO quality{};
  for (size_t i = 0; i < std::size(qsim::kQualityGrades); ++i) quality.*qsim::kQualityGrades[i] = 1 + static_cast<int>((index + i) % 4);
  for (size_t i = 0; i < std::size(qsim::kQualityScores); ++i) {
    quality.*qsim::kQualityScores[i] = 55.0f + static_cast<float>((index * 7 + i * 3) % 45) + 0.25f;
  }
  return quality;
}

// The codes lie on a grid over the image, each a square tilted by its own angle.
void PlaceCorners(QUORIN_BCR_INFO_EX& code, unsigned int index, unsigned int count, unsigned int width,
                  unsigned int height) {
  const unsigned int columns = std::max(1u, static_cast<unsigned int>(std::ceil(std::sqrt(
                                                  static_cast<double>(count) * width / height))));
  const unsigned int rows = (count + columns - 1) / columns;
  const double cellWidth = static_cast<double>(width) / columns;
  const double cellHeight = static_cast<double>(height) / rows;
  const double centreX = cellWidth * (index % columns + 0.5);
  const double centreY = cellHeight * (index / columns + 0.5);
  const double half = 0.35 * std::min(cellWidth, cellHeight);
  const double angle = code.nAngle * kPi / 180.0;
  const double cosine = std::cos(angle) * half;
  const double sine = std::sin(angle) * half;
  auto corner = [&](double dx, double dy) {
    return QUORIN_POINT_I{static_cast<int>(std::lround(centreX + dx * cosine - dy * sine)),
                          static_cast<int>(std::lround(centreY + dx * sine + dy * cosine))};
  };
  code.stCornerLeftTop = corner(-1, -1);
  code.stCornerRightTop = corner(1, -1);
  code.stCornerRightBottom = corner(1, 1);
  code.stCornerLeftBottom = corner(-1, 1);
}

QUORIN_BCR_INFO_EX CodeOf(unsigned int index, unsigned int count, unsigned int width, unsigned int height) {
  QUORIN_BCR_INFO_EX code{};
  code.nID = index;
  // A parcel number: 21 characters.
  const int length = std::snprintf(code.chCode, sizeof code.chCode, "QN%013llu-%03u-%u",
                                   7312000000000ULL + 7919ULL * index, 100 + index % 900, 1 + index % 3);
  code.nLen = static_cast<unsigned int>(length);
  code.nBarType = kBarTypes[index % std::size(kBarTypes)];
  code.nAngle = static_cast<int>(index * 37 % 181) - 90;
  PlaceCorners(code, index, count, width, height);
  code.stCodeQuality = QualityOf(index);
  code.nMainPackageId = 4711;
  code.nSubPackageId = index + 1;
  code.sAppearCount = static_cast<unsigned short>(1 + index % 4);
  code.sPPM = static_cast<unsigned short>(180 + index % 60);
  code.sAlgoCost = static_cast<unsigned short>(3 + index % 12);
  code.sSharpness = static_cast<unsigned short>(60 + index % 40);
  code.bIsGetQuality = 1;
  code.nIDRScore = 70 + index % 30;
  code.n1DIsGetQuality = code.nBarType == kCode128 ? 1 : 0;
  code.nTotalProcCost = 12 + index % 20;
  code.nTriggerTimeTvLow = 1718000000;
  code.nTriggerTimeUtvLow = 250000 + index;
  return code;
}

}  // namespace

qsim::Frame FrameOf(const Scenario& scenario) {
  qsim::Frame frame;
  const unsigned int bytes = scenario.width * scenario.height;
  frame.image.resize(bytes);
  for (unsigned int i = 0; i < bytes; ++i) {
    frame.image[i] = static_cast<unsigned char>((i % scenario.width) ^ (i / scenario.width));  // a grey pattern
  }
  QUORIN_IMAGE_OUT_INFO_EX2& info = frame.info;
  info.nWidth = static_cast<unsigned short>(scenario.width);
  info.nHeight = static_cast<unsigned short>(scenario.height);
  info.enPixelType = PixelType_Gvsp_Mono8;
  info.nFrameNum = 1;
  info.nFrameLen = bytes;
  info.nTimeStampLow = 123456789;
  info.nFocusScore = 640;
  info.bIsGetCode = scenario.codes > 0;
  info.nEventID = 1;
  info.nImageCost = 18;
  for (unsigned int i = 0; i < scenario.codes; ++i) {
    frame.codes.push_back(CodeOf(i, scenario.codes, scenario.width, scenario.height));
  }
  return frame;
}

// ---------------------------------------------------------------------------
// A reader through the Java API.

Session OpenGrabbingReader(JNIEnv* env, JavaClass& ctrl, jobject imageCallback) {
  Session session;
  jobject devices = ctrl.Call<jobject>("QUORIN_EnumDevices", "()Ljava/util/ArrayList;");
  if (devices == nullptr) throw std::runtime_error("QUORIN_EnumDevices failed");
  session.handle = ctrl.Call<jobject>("QUORIN_CreateHandle", "(" + kDeviceSig + ")" + kHandleSig,
                                      FirstItem(env, devices));
  const std::string handleOnly = "(" + kHandleSig + ")I";
  ExpectSuccess(ctrl.Call<jint>("QUORIN_OpenDevice", handleOnly, session.handle), "QUORIN_OpenDevice");

  const jlong sdk = env->GetLongField(session.handle, FieldOf(env, session.handle, "hHandle", "J"));
  session.sdk = reinterpret_cast<void*>(static_cast<uintptr_t>(sdk));
  qsim::SetAutoFrames(false);  // only the frames the benchmark hands in arrive
  qsim::SetIntNode(session.sdk, "PayloadSize", kLargestFrame, 0, kLargestFrame, 1, qsim::Access::kReadOnly);
  if (imageCallback != nullptr) {
    ExpectSuccess(ctrl.Call<jint>("QUORIN_RegisterImageCallBackEx2", "(" + kHandleSig + "Ljava/lang/Object;)I",
                                  session.handle, imageCallback),
                  "QUORIN_RegisterImageCallBackEx2");
  }
  ExpectSuccess(ctrl.Call<jint>("QUORIN_StartGrabbing", handleOnly, session.handle), "QUORIN_StartGrabbing");
  return session;
}

void CloseReader(JavaClass& ctrl, const Session& session) {
  const std::string handleOnly = "(" + kHandleSig + ")I";
  ExpectSuccess(ctrl.Call<jint>("QUORIN_StopGrabbing", handleOnly, session.handle), "QUORIN_StopGrabbing");
  ExpectSuccess(ctrl.Call<jint>("QUORIN_CloseDevice", handleOnly, session.handle), "QUORIN_CloseDevice");
  ExpectSuccess(ctrl.Call<jint>("QUORIN_DestroyHandle", handleOnly, session.handle), "QUORIN_DestroyHandle");
}

jint PayloadSizeOf(JNIEnv* env, const Session& session) {
  return env->GetIntField(session.handle, FieldOf(env, session.handle, "PayloadSize", "I"));
}

double Median(std::vector<double> values) {
  std::nth_element(values.begin(), values.begin() + values.size() / 2, values.end());
  return values[values.size() / 2];
}

}  // namespace bench
