#!/usr/bin/env bash
# Builds the bridge and the benchmarks (x86_64, Release) and runs them against virtual readers:
# frame polling, then image callbacks. Usage: scripts/bench.sh [--frames N]
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh --no-i386
# A folder of its own: the x86_64 test build stays RelWithDebInfo.
cmake -S . -B build/x86_64-release -DCMAKE_BUILD_TYPE=Release -DQUORIN_BUILD_TESTS=OFF >/dev/null
cmake --build build/x86_64-release -j "$(nproc 2>/dev/null || echo 2)" --target quorin_bench >/dev/null
exec build/x86_64-release/bin/quorin_bench "$@"
