// Copying files between the host and the reader, and the progress of a transfer.
#include "QuorinCtrlWrapper_QuorinCtrl.h"
#include "bridge.h"
#include "jmap/records.h"

namespace {

// The two file names of a request, pinned for the length of the SDK call.
class FileNames {
 public:
  FileNames(JNIEnv* env, jstring user, jstring device)
      : user_(env, user), device_(env, device), userChars_(env, user), deviceChars_(env, device) {}
  // Both names pinned; false for a null name, which the SDK would take as a NULL pointer.
  bool complete() const { return userChars_.c_str() != nullptr && deviceChars_.c_str() != nullptr; }
  QUORIN_FILE_ACCESS Record() const {
    QUORIN_FILE_ACCESS record{};
    record.pUserFileName = userChars_.c_str();
    record.pDevFileName = deviceChars_.c_str();
    return record;
  }

 private:
  ScopedLocalRef<jstring> user_;
  ScopedLocalRef<jstring> device_;
  ScopedUtfChars userChars_;
  ScopedUtfChars deviceChars_;
};

template <typename Transfer>
jint TransferFile(JNIEnv* env, jobject handle, jobject request, jclass declaringClass, Transfer transfer) {
  void* sdkHandle = SdkHandleOf(env, handle);
  auto name = [&](jmap::FieldId field) {
    const jmap::FieldInfo& info = jmap::Info(field);
    // A write reads through the named class's own field identifiers; a read finds them on the object.
    const auto word = declaringClass ? GetFieldValue(env, request, declaringClass, info.name, info.sig)
                                     : jmap::Get(env, request, field);
    return static_cast<jstring>(ObjectFromWord(word));
  };
  const FileNames names(env, name(F::FileAccess_pUserFileName), name(F::FileAccess_pDevFileName));
  RETURN_IF_PENDING(env, kStatusBadArgument);
  if (!names.complete()) return kStatusBadArgument;
  QUORIN_FILE_ACCESS record = names.Record();
  return transfer(sdkHandle, &record);
}

}  // namespace

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1FileAccessRead(JNIEnv* env, jclass, jobject handle,
                                                                               jobject request) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(request, kStatusBadArgument);
  // Any object with the two name fields will do for a read.
  return TransferFile(env, handle, request, nullptr, QUORIN_FileAccessRead);
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1FileAccessWrite(JNIEnv* env, jclass, jobject handle,
                                                                                jobject request) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(request, kStatusBadArgument);
  // A write takes its fields from the named class, so the request must be one; any other
  // object is refused rather than read through another class's field identifiers.
  ScopedLocalRef<jclass> fileAccess(env, jmap::FindClass(env, jmap::ClassId::FileAccess));
  RETURN_IF_NULL(fileAccess.get(), kStatusBadArgument);
  if (!env->IsInstanceOf(request, fileAccess.get())) return kStatusBadArgument;
  return TransferFile(env, handle, request, fileAccess.get(), QUORIN_FileAccessWrite);
}

JNIEXPORT jint JNICALL Java_QuorinCtrlWrapper_QuorinCtrl_QUORIN_1GetFileAccessProgress(JNIEnv* env, jclass,
                                                                                      jobject handle,
                                                                                      jobject progress) {
  RETURN_IF_NULL(handle, kStatusNullHandle);
  RETURN_IF_NULL(progress, kStatusBadArgument);
  QUORIN_FILE_ACCESS_PROGRESS record{};
  const int status = QUORIN_GetFileAccessProgress(SdkHandleOf(env, handle), &record);
  if (status != 0) return status;  // the caller's counts stay as they were
  jmap::WriteMembers(jmap::JavaObject(env, progress), &record, jmap::kFileAccessProgress);
  return kStatusOk;
}
