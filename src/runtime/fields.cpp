// Field access by name and signature, and Java enumeration constants from SDK numbers.
#include <cstdio>
#include <cstring>

#include "bridge.h"
#include "jmap/java_map.h"

namespace {

enum class FieldKind { kInt, kObject, kChar, kLong, kShort, kBoolean, kByte, kFloat, kDouble, kUnknown };

// Only the object test looks at the first character alone; every other signature is one
// character long, so "II" or "I;" matches nothing.
FieldKind KindOf(const char* sig) {
  if (sig[0] == 'L' || sig[0] == '[') return FieldKind::kObject;
  if (sig[0] == '\0' || sig[1] != '\0') return FieldKind::kUnknown;
  switch (sig[0]) {
    case 'I': return FieldKind::kInt;
    case 'C': return FieldKind::kChar;
    case 'J': return FieldKind::kLong;
    case 'S': return FieldKind::kShort;
    case 'Z': return FieldKind::kBoolean;
    case 'B': return FieldKind::kByte;
    case 'F': return FieldKind::kFloat;
    case 'D': return FieldKind::kDouble;
    default: return FieldKind::kUnknown;
  }
}

// The field on the object's own class, or null. A missing field leaves the VM's
// NoSuchFieldError pending for the Java caller; once an error is pending nothing
// more is looked up, so the first failure is the one Java sees.
jfieldID FindField(JNIEnv* env, jobject obj, const char* name, const char* sig) {
  if (env->ExceptionCheck()) return nullptr;
  ScopedLocalRef<jclass> cls(env, env->GetObjectClass(obj));
  return env->GetFieldID(cls.get(), name, sig);
}

template <typename To, typename From>
To BitCast(From from) {
  static_assert(sizeof(To) == sizeof(From), "bit casts keep the size");
  To to;
  std::memcpy(&to, &from, sizeof to);
  return to;
}

unsigned long long ReadField(JNIEnv* env, jobject obj, jfieldID field, FieldKind kind) {
  switch (kind) {
    case FieldKind::kInt: return static_cast<uint32_t>(env->GetIntField(obj, field));
    case FieldKind::kObject: return PointerWord(env->GetObjectField(obj, field));
    case FieldKind::kChar: return env->GetCharField(obj, field);
    case FieldKind::kLong: return static_cast<unsigned long long>(env->GetLongField(obj, field));
    case FieldKind::kShort: return static_cast<uint16_t>(env->GetShortField(obj, field));
    case FieldKind::kBoolean: return env->GetBooleanField(obj, field) ? 1 : 0;
    case FieldKind::kByte: return static_cast<uint8_t>(env->GetByteField(obj, field));
    case FieldKind::kFloat: return BitCast<uint32_t>(env->GetFloatField(obj, field));
    case FieldKind::kDouble: return BitCast<uint64_t>(env->GetDoubleField(obj, field));
    case FieldKind::kUnknown: break;
  }
  return 0;
}

void WriteField(JNIEnv* env, jobject obj, jfieldID field, FieldKind kind, unsigned long long value) {
  switch (kind) {
    case FieldKind::kInt: env->SetIntField(obj, field, static_cast<jint>(value)); break;
    case FieldKind::kObject: env->SetObjectField(obj, field, ObjectFromWord(value)); break;
    case FieldKind::kChar: env->SetCharField(obj, field, static_cast<jchar>(value)); break;
    case FieldKind::kLong: env->SetLongField(obj, field, static_cast<jlong>(value)); break;
    case FieldKind::kShort: env->SetShortField(obj, field, static_cast<jshort>(value)); break;
    // Only the lowest byte decides.
    case FieldKind::kBoolean: env->SetBooleanField(obj, field, (value & 0xFF) != 0 ? JNI_TRUE : JNI_FALSE); break;
    case FieldKind::kByte: env->SetByteField(obj, field, static_cast<jbyte>(value)); break;
    case FieldKind::kFloat: env->SetFloatField(obj, field, BitCast<float>(static_cast<uint32_t>(value))); break;
    case FieldKind::kDouble: env->SetDoubleField(obj, field, BitCast<double>(static_cast<uint64_t>(value))); break;
    case FieldKind::kUnknown: break;
  }
}

}  // namespace

unsigned long long ReadFieldById(JNIEnv* env, jobject obj, jfieldID field, const char* sig) {
  return ReadField(env, obj, field, KindOf(sig));
}

void WriteFieldById(JNIEnv* env, jobject obj, jfieldID field, const char* sig, unsigned long long value) {
  WriteField(env, obj, field, KindOf(sig), value);
}

void SetIntegerValue(JNIEnv* env, jobject integer, unsigned int value) { jmap::Set(env, integer, F::Integer_value, value); }

unsigned long long GetFieldValue(JNIEnv* env, jobject obj, const char* name, const char* sig) {
  const FieldKind kind = KindOf(sig);
  if (kind == FieldKind::kUnknown || obj == nullptr) return 0;
  jfieldID field = FindField(env, obj, name, sig);
  return field == nullptr ? 0 : ReadField(env, obj, field, kind);
}

unsigned long long GetFieldValue(JNIEnv* env, jobject obj, jclass declaringClass, const char* name, const char* sig) {
  const FieldKind kind = KindOf(sig);
  if (kind == FieldKind::kUnknown || obj == nullptr || env->ExceptionCheck()) return 0;
  jfieldID field = env->GetFieldID(declaringClass, name, sig);
  return field == nullptr ? 0 : ReadField(env, obj, field, kind);
}

void SetFieldValue(JNIEnv* env, jobject obj, const char* name, const char* sig, unsigned long long value) {
  const FieldKind kind = KindOf(sig);
  if (kind == FieldKind::kUnknown || obj == nullptr) return;
  jfieldID field = FindField(env, obj, name, sig);
  if (field != nullptr) WriteField(env, obj, field, kind, value);
}

jobject GetEnumObject(JNIEnv* env, jclass enumClass, const char* className, const char* fieldName,
                      const char* fieldSig, unsigned long long value) {
  if (enumClass == nullptr || env->ExceptionCheck()) return nullptr;
  char valuesSig[512] = {};
  std::snprintf(valuesSig, sizeof valuesSig, "()[L%s;", className);
  jmethodID values = env->GetStaticMethodID(enumClass, jmap::kEnumValues, valuesSig);
  if (values == nullptr) return nullptr;
  auto constants = static_cast<jobjectArray>(env->CallStaticObjectMethod(enumClass, values));
  if (env->ExceptionCheck() || constants == nullptr) return nullptr;
  const bool objectField = fieldSig[0] == '[' || fieldSig[0] == 'L';
  for (jsize i = 0; i < env->GetArrayLength(constants); ++i) {
    jobject constant = env->GetObjectArrayElement(constants, i);
    const unsigned long long fieldValue = GetFieldValue(env, constant, fieldName, fieldSig);
    if (fieldValue == value) {
      if (objectField) env->DeleteLocalRef(ObjectFromWord(fieldValue));
      // The values() array is left to the end of the native frame, as the callers expect.
      return constant;
    }
    env->DeleteLocalRef(constant);
  }
  return nullptr;
}

jobject getType(JNIEnv* env, int accessMode) {
  const bool known = accessMode >= 0 && accessMode < static_cast<int>(std::size(jmap::kAccessModeConstants));
  const char* constantName = known ? jmap::kAccessModeConstants[accessMode] : jmap::kAccessModeUndefined;
  RETURN_IF_PENDING(env, nullptr);
  ScopedLocalRef<jclass> cls(env, jmap::FindClass(env, jmap::ClassId::AccessMode));
  RETURN_IF_NULL(cls.get(), nullptr);
  jfieldID field = env->GetStaticFieldID(cls.get(), constantName, jmap::Info(jmap::ClassId::AccessMode).sig);
  RETURN_IF_NULL(field, nullptr);
  return env->GetStaticObjectField(cls.get(), field);
}
