// Java lists the bridge refills: it never creates a list, it clears and adds.
#pragma once

#include "bridge.h"
#include "jmap/java_map.h"

// Each list entry is built inside a local frame of its own, so that a long list never
// exhausts the local reference table, whatever the text conversion leaves behind.
constexpr jint kEntryLocalRefs = 16;

// A Java list held in an object's field, emptied so that it can be refilled.
class RefilledList {
 public:
  RefilledList(JNIEnv* env, jobject owner, jmap::FieldId field)
      : env_(env), list_(env, jmap::JavaObject(env, owner).GetObject(field)) {
    if (!list_) return;
    jmethodID clear = jmap::ListMethod(env, list_.get(), jmap::kListClear);
    add_ = jmap::ListMethod(env, list_.get(), jmap::kListAdd);
    // Looked up though never called: a list class without it is not a list this code accepts.
    jmethodID get = jmap::ListMethod(env, list_.get(), jmap::kListGet);
    if (clear == nullptr || add_ == nullptr || get == nullptr) return;
    env->CallVoidMethod(list_.get(), clear);
    ready_ = !env->ExceptionCheck();
  }
  bool ready() const { return ready_; }
  bool Add(jobject item) {
    env_->CallBooleanMethod(list_.get(), add_, item);
    return !env_->ExceptionCheck();
  }

 private:
  JNIEnv* env_;
  ScopedLocalRef<jobject> list_;
  jmethodID add_ = nullptr;
  bool ready_ = false;
};

// Fills a cleared list with one new object of `entryClass` (the mapped class `entryId`) per
// native entry, each written by `write`.
template <typename Entry, typename Write>
void FillList(JNIEnv* env, jobject owner, jmap::FieldId field, jmap::ClassId entryId, jclass entryClass,
              const Entry* entries, unsigned int count, Write write) {
  RefilledList list(env, owner, field);
  if (!list.ready() || entryClass == nullptr) return;
  jmethodID constructor = jmap::MethodOf(env, entryClass, entryId, jmap::kNoArgConstructor);
  if (constructor == nullptr) return;
  for (unsigned int i = 0; i < count; ++i) {
    ScopedLocalFrame frame(env, kEntryLocalRefs);
    if (!frame.ok()) return;
    jobject entry = env->NewObject(entryClass, constructor);
    if (entry == nullptr) return;
    write(jmap::JavaObject(env, entry, entryId), entries[i]);
    if (env->ExceptionCheck()) return;  // the entry's conversion failed: Java sees that error
    if (!list.Add(entry)) return;
  }
}

// A Java list held in an object's field, read entry by entry; no list reads as empty.
class ListReader {
 public:
  ListReader(JNIEnv* env, jobject owner, jmap::FieldId field)
      : env_(env), list_(env, jmap::JavaObject(env, owner).GetObject(field)) {
    if (!list_) return;
    get_ = jmap::ListMethod(env, list_.get(), jmap::kListGet);
    jmethodID size = jmap::ListMethod(env, list_.get(), jmap::kListSize);
    if (get_ == nullptr || size == nullptr) return;
    size_ = env->CallIntMethod(list_.get(), size);
    if (env->ExceptionCheck()) size_ = 0;
  }
  jint size() const { return size_; }
  // A new local reference to entry `index` (< size()), or null.
  jobject At(jint index) {
    RETURN_IF_PENDING(env_, nullptr);
    jobject entry = env_->CallObjectMethod(list_.get(), get_, index);
    return env_->ExceptionCheck() ? nullptr : entry;
  }

 private:
  JNIEnv* env_;
  ScopedLocalRef<jobject> list_;
  jmethodID get_ = nullptr;
  jint size_ = 0;
};
