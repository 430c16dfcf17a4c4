#!/usr/bin/env bash
# Builds and runs every test on both targets: native x86_64, then 32-bit x86 under a
# 32-bit JVM (through qemu-i386 where this machine cannot run 32-bit programs itself).
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh

jobs=$(nproc 2>/dev/null || echo 2)
root=$PWD

build_and_test() {
  local name=$1; shift
  echo "=== ${name}: configure and build"
  cmake -S . -B "build/${name}" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
  cmake --build "build/${name}" -j "$jobs"
  echo "=== ${name}: test"
  (cd "build/${name}" && ctest --output-on-failure -j "$jobs")
}

# The cached build changes only how the bridge reaches Java: the JVM suite, plain and under the
# JNI checker, runs against it too.
build_and_test_cached() {
  local name=$1-cached; shift
  echo "=== ${name}: configure and build"
  cmake -S . -B "build/${name}" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUORIN_CACHED_IDS=ON "$@" >/dev/null
  cmake --build "build/${name}" -j "$jobs" --target bridge_jvm_tests
  echo "=== ${name}: test"
  (cd "build/${name}" && ctest --output-on-failure -j "$jobs" -R '^jvm')
}

build_and_test x86_64
build_and_test_cached x86_64

i386_args=(-DCMAKE_TOOLCHAIN_FILE="$root/cmake/i386-toolchain.cmake"
           -DQUORIN_JVM_LIBRARY="$(ls "$root"/build/cache/jre-i386/root/usr/lib/jvm/java-17-openjdk-i386/lib/server/libjvm.so)")
probe=$(mktemp -d)
echo 'int main(void){return 0;}' > "$probe/p.c"
gcc -m32 "$probe/p.c" -o "$probe/p32"
if ! "$probe/p32" 2>/dev/null; then
  echo "=== this machine cannot run 32-bit programs; using $(command -v qemu-i386)"
  i386_args+=(-DQUORIN_I386_EMULATOR="$(command -v qemu-i386)")
fi
rm -rf "$probe"
build_and_test i386 "${i386_args[@]}"
build_and_test_cached i386 "${i386_args[@]}"
echo "=== all tests passed on x86_64 and i386, default and cached builds"
