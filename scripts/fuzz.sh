#!/usr/bin/env bash
# Builds the libFuzzer targets with clang in build/fuzz and runs each for a bounded time;
# any finding fails the run. New corpus entries stay under build/fuzz, never in the repo.
# Usage: scripts/fuzz.sh [seconds-per-target]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
root=$PWD
build=$root/build/fuzz

./scripts/setup.sh --no-i386
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"
missing=()
for p in clang libclang-rt-14-dev; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  $SUDO apt-get update -qq || echo "fuzz: apt-get update reported errors; going on" >&2
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DQUORIN_FUZZ=ON -DQUORIN_BUILD_TESTS=OFF >/dev/null
cmake --build "$build" -j 2 --target quorin_fuzzers

# The JVM keeps its own SIGSEGV handler (implicit null checks, safepoints): neither ASan nor
# libFuzzer may take it, nor the other signals HotSpot uses.
export ASAN_OPTIONS=handle_segv=0:allow_user_segv_handler=1:detect_leaks=0:use_sigaltstack=0
export UBSAN_OPTIONS=handle_segv=0:print_stacktrace=1:halt_on_error=1
jvm_flags=(-rss_limit_mb=8192 -detect_leaks=0 -handle_segv=0 -handle_bus=0 -handle_ill=0 -handle_fpe=0
           -handle_usr1=0 -handle_usr2=0)

# target max_len [jvm]
targets=("fuzz_address 64" "fuzz_text 10000 jvm" "fuzz_frame_record 20000 jvm")
failed=()
for entry in "${targets[@]}"; do
  read -r target max_len jvm <<<"$entry"
  flags=(-max_len="$max_len" -timeout=120 -print_final_stats=1)
  [ -n "${jvm:-}" ] && flags+=("${jvm_flags[@]}")
  corpus=$build/corpus/$target
  findings=$build/findings/$target
  mkdir -p "$corpus" "$findings" "$build/logs"
  echo "=== $target: ${seconds}s"
  # Run from the build folder: a crashing JVM writes its hs_err file into the current folder.
  status=0
  (cd "$build" &&
    "bin/$target" "${flags[@]}" -merge=1 "$corpus" "$root/tests/fuzz/corpus/$target" &&
    "bin/$target" "${flags[@]}" -max_total_time="$seconds" -artifact_prefix="$findings/" "$corpus") \
    >"$build/logs/$target.log" 2>&1 || status=$?
  grep -E "^#[0-9]+[[:space:]]+DONE|^stat::number_of_executed_units|^stat::average_exec_per_sec" "$build/logs/$target.log" | tail -n 3 || true
  if [ $status -ne 0 ]; then
    echo "=== $target FAILED (exit $status); log: build/fuzz/logs/$target.log, inputs: build/fuzz/findings/$target/"
    tail -n 40 "$build/logs/$target.log"
    failed+=("$target")
  fi
done
if [ ${#failed[@]} -gt 0 ]; then
  echo "=== findings in: ${failed[*]}"
  exit 1
fi
echo "=== no findings"
