#!/usr/bin/env bash
# Builds the bridge, the stand-in and the tests with AddressSanitizer and UndefinedBehaviorSanitizer
# (x86_64, gcc) into build/asan and runs the whole suite; a failed test or any sanitizer report fails.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh --no-i386

jobs=$(nproc 2>/dev/null || echo 2)
build=build/asan
log=$build/sanitize.log
started=$SECONDS

echo "=== asan: configure and build"
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ \
      -DQUORIN_SANITIZE=ON >/dev/null
cmake --build "$build" -j "$jobs"
built=$SECONDS

# The JVM catches its own SIGSEGV (implicit null checks, safepoint polls) on its own stacks, so the
# sanitizers must leave that signal alone; the VM's allocations still live at exit are not leaks.
export ASAN_OPTIONS="handle_segv=0:allow_user_segv_handler=1:detect_leaks=0:use_sigaltstack=0${ASAN_OPTIONS:+:$ASAN_OPTIONS}"
export UBSAN_OPTIONS="handle_segv=0:print_stacktrace=1:halt_on_error=1${UBSAN_OPTIONS:+:$UBSAN_OPTIONS}"

echo "=== asan: test (full output in $log)"
status=0
(cd "$build" && ctest -V -j "$jobs") >"$log" 2>&1 || status=$?
grep -E '^ *[0-9]+/[0-9]+ Test +#|tests passed|Total Test time' "$log" || true

# A report inside a test that still passed (a caught death, a checked child) fails the run too.
reports=$(grep -nE 'ERROR: AddressSanitizer|runtime error:|SUMMARY: (AddressSanitizer|UndefinedBehaviorSanitizer)' "$log" || true)
echo "=== asan: build $((built - started)) s, tests $((SECONDS - built)) s"
if [ -n "$reports" ]; then
  echo "=== sanitizer reports:"
  echo "$reports"
  first=$(echo "$reports" | head -n1 | cut -d: -f1)
  sed -n "$((first > 5 ? first - 5 : 1)),$((first + 40))p" "$log"
  exit 1
fi
if [ "$status" -ne 0 ]; then
  grep -E '\[  FAILED  \]|Failure$' "$log" | sort -u || true
  echo "=== asan: tests failed (exit $status); see $log"
  exit "$status"
fi
echo "=== asan: every test passed with no sanitizer report"
