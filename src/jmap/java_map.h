// How the bridge reaches the Java side: classes, fields, methods and enumeration constants of the
// map in java_classes.h. The default build finds each field by name at every access, through the
// field helpers; a QUORIN_CACHED_IDS build resolves each once. This folder alone decides which.
#pragma once

#include "bridge.h"
#include "jmap/java_classes.h"

namespace jmap {

#define QUORIN_CLASS_ID(id, name) id,
#define QUORIN_FIELD_ID(cls, field, sig) cls##_##field,
#define QUORIN_NOTHING(...)
enum class ClassId : int { QUORIN_JAVA_MAP(QUORIN_CLASS_ID, QUORIN_NOTHING) kCount };
enum class FieldId : int { QUORIN_JAVA_MAP(QUORIN_NOTHING, QUORIN_FIELD_ID) kCount };
#undef QUORIN_CLASS_ID
#undef QUORIN_FIELD_ID
#undef QUORIN_NOTHING

struct ClassInfo {
  const char* name;  // "pkg/Outer$Inner"
  const char* sig;   // "Lpkg/Outer$Inner;"
};
struct FieldInfo {
  const char* name;
  const char* sig;
  ClassId owner;
};
const ClassInfo& Info(ClassId cls);
const FieldInfo& Info(FieldId field);

// Methods the bridge calls, by name and signature.
struct JavaMethod {
  const char* name;
  const char* sig;
};
inline constexpr JavaMethod kListAdd{"add", "(Ljava/lang/Object;)Z"};
inline constexpr JavaMethod kListClear{"clear", "()V"};
inline constexpr JavaMethod kListGet{"get", "(I)Ljava/lang/Object;"};
inline constexpr JavaMethod kListSize{"size", "()I"};
inline constexpr JavaMethod kNoArgConstructor{"<init>", "()V"};
inline constexpr JavaMethod kIntegerConstructor{"<init>", "(I)V"};
inline constexpr JavaMethod kStringFromBytes{"<init>", "([BLjava/lang/String;)V"};
inline constexpr JavaMethod kEnumNumber{"getnValue", "()I"};
inline constexpr JavaMethod kOnException{"OnExceptionCallBack", "(I)I"};
inline constexpr JavaMethod kOnEvent{"OnAllEventCallBack", "(" QUORIN_DEFINE_SIG("QUORIN_EVENT_OUT_INFO") ")I"};
inline constexpr JavaMethod kOnTrigger{"OnTriggerCallBack", "(" QUORIN_DEFINE_SIG("QUORIN_TRIGGER_INFO_DATA") ")I"};
inline constexpr JavaMethod kOnImage{"OnImageCallBack", "([B" QUORIN_DEFINE_SIG("QUORIN_IMAGE_OUT_INFO_EX2") ")I"};
inline constexpr JavaMethod kCurrentThread{"currentThread", "()Ljava/lang/Thread;"};
// What the VM itself calls for an exception a thread leaves uncaught.
inline constexpr JavaMethod kDispatchUncaught{"dispatchUncaughtException", "(Ljava/lang/Throwable;)V"};
// The charset of device texts that are not UTF-8.
inline constexpr const char* kGbkCharset = "GBK";
// The QUORIN_XML_AccessMode constant for each SDK access mode number. 5 has no constant of its
// own: it shares QUORIN_AM_Undefined with every number outside the table.
inline constexpr const char* kAccessModeConstants[] = {"QUORIN_AM_NI", "QUORIN_AM_NA",        "QUORIN_AM_WO",
                                                       "QUORIN_AM_RO", "QUORIN_AM_RW",        "QUORIN_AM_Undefined",
                                                       "QUORIN_AM_CycleDetect"};
inline constexpr const char* kAccessModeUndefined = "QUORIN_AM_Undefined";
// The static method that lists an enumeration's constants.
inline constexpr const char* kEnumValues = "values";

// A Java object whose fields are read and written through the map. A cached build checks the
// object's class once, at its first access, and reads by resolved field identifiers; an object of
// another class is read by name, so Java sees the same error as in the default build.
class JavaObject {
 public:
  JavaObject(JNIEnv* env, jobject obj) : env_(env), obj_(obj) {}
  // An object known to be of `cls`: made from it here, or read from a field declared with it (a
  // subclass has the same fields), so a cached build does not check its class again.
  JavaObject(JNIEnv* env, jobject obj, ClassId cls);
  jobject get() const { return obj_; }
  explicit operator bool() const { return obj_ != nullptr; }

  unsigned long long Get(FieldId field) const;
  void Set(FieldId field, unsigned long long value) const;
  // An object field's value as a new local reference (the caller deletes it).
  jobject GetObject(FieldId field) const { return ObjectFromWord(Get(field)); }
  void SetObject(FieldId field, jobject value) const { Set(field, PointerWord(value)); }

  // Whether a run of fields of `field`'s class may go straight through resolved identifiers, with
  // no check per field: only in a cached build, for an object of the class whose every field was
  // found, with no exception pending. The default build always answers false.
  bool Direct(FieldId field) const;
  // The same answer without asking the VM for a pending exception: only for a caller that has just
  // had Direct() say yes and made no call since that could raise one.
  bool DirectAfterCheck(FieldId field) const;
  // The same accesses without the checks; only after Direct() said yes.
  void SetDirect(FieldId field, unsigned long long value) const;
  unsigned long long GetDirect(FieldId field) const;

 private:
  bool Verified(ClassId owner) const;

  JNIEnv* env_;
  jobject obj_;
#if defined(QUORIN_CACHED_IDS)
  mutable ClassId checked_ = ClassId::kCount;
  mutable bool instance_ = false;
#endif
};

// One-off accesses, for objects touched once or twice per call.
inline unsigned long long Get(JNIEnv* env, jobject obj, FieldId field) { return JavaObject(env, obj).Get(field); }
inline void Set(JNIEnv* env, jobject obj, FieldId field, unsigned long long value) {
  JavaObject(env, obj).Set(field, value);
}

// A local reference to a mapped class (null, with the VM's error pending, when it is missing).
jclass FindClass(JNIEnv* env, ClassId cls);
// A method of the object's class (the list methods work on any list subclass as on the list).
jmethodID ListMethod(JNIEnv* env, jobject list, const JavaMethod& method);
// A constructor or method of a class reference.
jmethodID MethodOf(JNIEnv* env, jclass cls, ClassId id, const JavaMethod& method);
// The enumeration constant of `enumClass` (a reference to the mapped class `id`) whose SDK number
// is `number`, as a new local reference; null when none carries it.
jobject EnumConstant(JNIEnv* env, ClassId id, jclass enumClass, unsigned int number);
// The SDK number of an enumeration constant (its getnValue()); false with an error pending.
bool EnumNumber(JNIEnv* env, jobject constant, ClassId id, int* number);

// A new object of a mapped class made by its no-argument constructor, as a new local reference;
// null with the VM's error pending when the class or constructor is missing.
jobject NewObject(JNIEnv* env, ClassId cls);

// Resolves what a cached build keeps, on a thread that sees the application's classes.
void ResolveAtLoad(JNIEnv* env);

}  // namespace jmap

using F = jmap::FieldId;
