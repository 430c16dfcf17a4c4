#include "jmap/java_map.h"

#include <atomic>
#include <iterator>
#include <vector>

namespace jmap {
namespace {

#define QUORIN_CLASS_INFO(id, name) ClassInfo{name, "L" name ";"},
#define QUORIN_FIELD_INFO(cls, field, sig) FieldInfo{#field, sig, ClassId::cls},
#define QUORIN_NOTHING(...)
const ClassInfo kClasses[] = {QUORIN_JAVA_MAP(QUORIN_CLASS_INFO, QUORIN_NOTHING)};
const FieldInfo kFields[] = {QUORIN_JAVA_MAP(QUORIN_NOTHING, QUORIN_FIELD_INFO)};
#undef QUORIN_CLASS_INFO
#undef QUORIN_FIELD_INFO
#undef QUORIN_NOTHING

constexpr size_t kClassCount = static_cast<size_t>(ClassId::kCount);
constexpr size_t kFieldCount = static_cast<size_t>(FieldId::kCount);
static_assert(std::size(kClasses) == kClassCount && std::size(kFields) == kFieldCount, "one entry per id");

size_t IndexOf(ClassId cls) { return static_cast<size_t>(cls); }
size_t IndexOf(FieldId field) { return static_cast<size_t>(field); }

// The field an enumeration's constants carry their SDK number in.
FieldId EnumNumberField(ClassId id) {
  return id == ClassId::ImageType ? FieldId::ImageType_nValue : FieldId::PixelType_nValue;
}

}  // namespace

const ClassInfo& Info(ClassId cls) { return kClasses[IndexOf(cls)]; }
const FieldInfo& Info(FieldId field) { return kFields[IndexOf(field)]; }

jobject NewObject(JNIEnv* env, ClassId cls) {
  ScopedLocalRef<jclass> local(env, FindClass(env, cls));
  RETURN_IF_NULL(local.get(), nullptr);
  jmethodID constructor = MethodOf(env, local.get(), cls, kNoArgConstructor);
  RETURN_IF_NULL(constructor, nullptr);
  return env->NewObject(local.get(), constructor);
}

bool EnumNumber(JNIEnv* env, jobject constant, ClassId id, int* number) {
  ScopedLocalRef<jclass> enumClass(env, FindClass(env, id));
  if (!enumClass) return false;
  jmethodID getnValue = MethodOf(env, enumClass.get(), id, kEnumNumber);
  if (getnValue == nullptr) return false;
  *number = env->CallIntMethod(constant, getnValue);
  return !env->ExceptionCheck();
}

#if !defined(QUORIN_CACHED_IDS)

// ---------------------------------------------------------------------------
// Default build: every access finds its field, class or method by name; nothing is kept between accesses.

JavaObject::JavaObject(JNIEnv* env, jobject obj, ClassId) : env_(env), obj_(obj) {}
bool JavaObject::Verified(ClassId) const { return false; }
bool JavaObject::Direct(FieldId) const { return false; }
bool JavaObject::DirectAfterCheck(FieldId) const { return false; }
void JavaObject::SetDirect(FieldId field, unsigned long long value) const { Set(field, value); }
unsigned long long JavaObject::GetDirect(FieldId field) const { return Get(field); }

unsigned long long JavaObject::Get(FieldId field) const {
  const FieldInfo& info = Info(field);
  return GetFieldValue(env_, obj_, info.name, info.sig);
}

void JavaObject::Set(FieldId field, unsigned long long value) const {
  const FieldInfo& info = Info(field);
  SetFieldValue(env_, obj_, info.name, info.sig, value);
}

jclass FindClass(JNIEnv* env, ClassId cls) {
  RETURN_IF_PENDING(env, nullptr);
  return env->FindClass(Info(cls).name);
}

jmethodID ListMethod(JNIEnv* env, jobject list, const JavaMethod& method) {
  return GetMethodID(env, list, method.name, method.sig);
}

jmethodID MethodOf(JNIEnv* env, jclass cls, ClassId, const JavaMethod& method) {
  RETURN_IF_PENDING(env, nullptr);
  return env->GetMethodID(cls, method.name, method.sig);
}

jobject EnumConstant(JNIEnv* env, ClassId id, jclass enumClass, unsigned int number) {
  const FieldInfo& numberField = Info(EnumNumberField(id));
  return GetEnumObject(env, enumClass, Info(id).name, numberField.name, numberField.sig, number);
}

void ResolveAtLoad(JNIEnv*) {}

#else

// ---------------------------------------------------------------------------
// Cached build: classes become global references once, each class's field identifiers are found
// at its first use, and an object's class is checked once. Whatever cannot be resolved is left
// to the lookup by name, so that Java sees exactly the error the default build raises.

namespace {

std::atomic<jclass> g_classes[kClassCount];
std::atomic<bool> g_fieldsResolved[kClassCount];
std::atomic<bool> g_classComplete[kClassCount];  // every field of the class was found
std::atomic<jfieldID> g_fieldIds[kFieldCount];

// The global reference to a class, made on first use; null when the class cannot be found.
jclass GlobalClass(JNIEnv* env, ClassId cls) {
  std::atomic<jclass>& slot = g_classes[IndexOf(cls)];
  jclass global = slot.load(std::memory_order_acquire);
  if (global != nullptr || env->ExceptionCheck()) return global;
  ScopedLocalRef<jclass> local(env, env->FindClass(Info(cls).name));
  if (!local) {
    env->ExceptionClear();  // the lookup by name raises it again where it matters
    return nullptr;
  }
  auto made = static_cast<jclass>(env->NewGlobalRef(local.get()));
  if (slot.compare_exchange_strong(global, made)) return made;
  env->DeleteGlobalRef(made);  // another thread resolved it first
  return global;
}

// Fills the field identifiers of a class; a field it lacks keeps a null identifier.
void ResolveFields(JNIEnv* env, ClassId cls, jclass global) {
  if (g_fieldsResolved[IndexOf(cls)].load(std::memory_order_acquire)) return;
  bool complete = true;
  for (size_t i = 0; i < kFieldCount; ++i) {
    if (kFields[i].owner != cls) continue;
    jfieldID id = env->GetFieldID(global, kFields[i].name, kFields[i].sig);
    if (id == nullptr) {
      env->ExceptionClear();
      complete = false;
    }
    g_fieldIds[i].store(id, std::memory_order_relaxed);
  }
  g_classComplete[IndexOf(cls)].store(complete, std::memory_order_relaxed);
  g_fieldsResolved[IndexOf(cls)].store(true, std::memory_order_release);
}

// Method identifiers a class keeps, one slot per method the bridge calls on it.
constexpr const JavaMethod* kMethods[] = {&kListAdd,         &kListClear,  &kListGet,  &kListSize,
                                          &kNoArgConstructor, &kIntegerConstructor, &kStringFromBytes,
                                          &kEnumNumber};
std::atomic<jmethodID> g_methods[kClassCount][std::size(kMethods)];

size_t MethodSlot(const JavaMethod& method) {
  for (size_t i = 0; i < std::size(kMethods); ++i) {
    if (kMethods[i] == &method) return i;
  }
  return std::size(kMethods);
}

jmethodID CachedMethod(JNIEnv* env, jclass cls, ClassId id, const JavaMethod& method) {
  RETURN_IF_PENDING(env, nullptr);
  const size_t slot = MethodSlot(method);
  if (slot == std::size(kMethods)) return env->GetMethodID(cls, method.name, method.sig);
  std::atomic<jmethodID>& cached = g_methods[IndexOf(id)][slot];
  jmethodID found = cached.load(std::memory_order_acquire);
  if (found != nullptr) return found;
  found = env->GetMethodID(cls, method.name, method.sig);
  if (found != nullptr) cached.store(found, std::memory_order_release);
  return found;
}

// The constants of an enumeration with their SDK numbers, read once per class.
struct EnumTable {
  std::vector<std::pair<unsigned int, jobject>> constants;  // global references, kept for good
};
std::atomic<EnumTable*> g_enums[kClassCount];

EnumTable* ReadEnumTable(JNIEnv* env, ClassId id, jclass enumClass) {
  const std::string valuesSig = std::string("()[") + Info(id).sig;
  jmethodID values = env->GetStaticMethodID(enumClass, kEnumValues, valuesSig.c_str());
  if (values == nullptr) return nullptr;
  ScopedLocalRef<jobjectArray> array(env, static_cast<jobjectArray>(env->CallStaticObjectMethod(enumClass, values)));
  if (env->ExceptionCheck() || !array) return nullptr;
  auto table = new EnumTable;
  const jsize count = env->GetArrayLength(array.get());
  for (jsize i = 0; i < count; ++i) {
    ScopedLocalRef<jobject> constant(env, env->GetObjectArrayElement(array.get(), i));
    const auto number = static_cast<unsigned int>(Get(env, constant.get(), EnumNumberField(id)));
    if (env->ExceptionCheck()) break;
    table->constants.emplace_back(number, env->NewGlobalRef(constant.get()));
  }
  return table;
}

}  // namespace

JavaObject::JavaObject(JNIEnv* env, jobject obj, ClassId cls) : env_(env), obj_(obj), checked_(cls) {
  if (obj == nullptr) return;
  // Resolved already: nothing to call, so no need to ask the VM for a pending exception.
  if (g_classes[IndexOf(cls)].load(std::memory_order_acquire) != nullptr &&
      g_fieldsResolved[IndexOf(cls)].load(std::memory_order_acquire)) {
    instance_ = true;
    return;
  }
  if (env->ExceptionCheck()) return;
  jclass global = GlobalClass(env, cls);
  if (global == nullptr) return;
  ResolveFields(env, cls, global);
  instance_ = true;
}

bool JavaObject::Verified(ClassId owner) const {
  if (checked_ == owner) return instance_;
  checked_ = owner;
  instance_ = false;
  if (obj_ == nullptr || env_->ExceptionCheck()) return false;
  jclass global = GlobalClass(env_, owner);
  if (global == nullptr || !env_->IsInstanceOf(obj_, global)) return false;
  ResolveFields(env_, owner, global);
  instance_ = true;
  return true;
}

bool JavaObject::Direct(FieldId field) const { return !env_->ExceptionCheck() && DirectAfterCheck(field); }

bool JavaObject::DirectAfterCheck(FieldId field) const {
  const ClassId owner = Info(field).owner;
  if (obj_ == nullptr || !Verified(owner)) return false;
  return g_classComplete[IndexOf(owner)].load(std::memory_order_relaxed);
}

void JavaObject::SetDirect(FieldId field, unsigned long long value) const {
  WriteFieldById(env_, obj_, g_fieldIds[IndexOf(field)].load(std::memory_order_relaxed), Info(field).sig, value);
}

unsigned long long JavaObject::GetDirect(FieldId field) const {
  return ReadFieldById(env_, obj_, g_fieldIds[IndexOf(field)].load(std::memory_order_relaxed), Info(field).sig);
}

unsigned long long JavaObject::Get(FieldId field) const {
  const FieldInfo& info = Info(field);
  if (obj_ == nullptr || env_->ExceptionCheck()) return 0;  // as the lookup by name would answer
  jfieldID id = Verified(info.owner) ? g_fieldIds[IndexOf(field)].load(std::memory_order_relaxed) : nullptr;
  return id != nullptr ? ReadFieldById(env_, obj_, id, info.sig) : GetFieldValue(env_, obj_, info.name, info.sig);
}

void JavaObject::Set(FieldId field, unsigned long long value) const {
  const FieldInfo& info = Info(field);
  if (obj_ == nullptr || env_->ExceptionCheck()) return;  // as the lookup by name would do
  jfieldID id = Verified(info.owner) ? g_fieldIds[IndexOf(field)].load(std::memory_order_relaxed) : nullptr;
  if (id != nullptr) {
    WriteFieldById(env_, obj_, id, info.sig, value);
  } else {
    SetFieldValue(env_, obj_, info.name, info.sig, value);
  }
}

jclass FindClass(JNIEnv* env, ClassId cls) {
  RETURN_IF_PENDING(env, nullptr);
  jclass global = GlobalClass(env, cls);
  // Not found: the lookup by name leaves the VM's own error pending, as in the default build.
  return global != nullptr ? static_cast<jclass>(env->NewLocalRef(global)) : env->FindClass(Info(cls).name);
}

jmethodID ListMethod(JNIEnv* env, jobject list, const JavaMethod& method) {
  RETURN_IF_PENDING(env, nullptr);
  jclass arrayList = GlobalClass(env, ClassId::ArrayList);
  // A list field holds an ArrayList or a subclass; the call still dispatches to the subclass.
  if (arrayList == nullptr || !env->IsInstanceOf(list, arrayList)) return GetMethodID(env, list, method.name, method.sig);
  return CachedMethod(env, arrayList, ClassId::ArrayList, method);
}

jmethodID MethodOf(JNIEnv* env, jclass cls, ClassId id, const JavaMethod& method) {
  return CachedMethod(env, cls, id, method);
}

jobject EnumConstant(JNIEnv* env, ClassId id, jclass enumClass, unsigned int number) {
  if (enumClass == nullptr || env->ExceptionCheck()) return nullptr;
  std::atomic<EnumTable*>& slot = g_enums[IndexOf(id)];
  EnumTable* table = slot.load(std::memory_order_acquire);
  if (table == nullptr) {
    EnumTable* made = ReadEnumTable(env, id, enumClass);
    if (made == nullptr) return nullptr;
    if (slot.compare_exchange_strong(table, made)) {
      table = made;
    } else {
      for (auto& constant : made->constants) env->DeleteGlobalRef(constant.second);
      delete made;  // another thread read the same constants first
    }
  }
  // The first constant carrying the number wins.
  for (const auto& [constantNumber, constant] : table->constants) {
    if (constantNumber == number) return env->NewLocalRef(constant);
  }
  return nullptr;
}

void ResolveAtLoad(JNIEnv* env) {
  // Looked up by name at every load, on the loading thread, which sees the application's classes
  // (SDK threads do not). A class the loader no longer finds is forgotten, so that its use raises
  // the lookup's own error as in the default build.
  for (size_t i = 0; i < kClassCount; ++i) {
    ScopedLocalRef<jclass> local(env, env->FindClass(kClasses[i].name));
    if (!local) env->ExceptionClear();
    jclass made = local ? static_cast<jclass>(env->NewGlobalRef(local.get())) : nullptr;
    jclass previous = g_classes[i].exchange(made, std::memory_order_acq_rel);
    if (previous != nullptr) env->DeleteGlobalRef(previous);
  }
}

#endif

}  // namespace jmap
