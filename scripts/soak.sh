#!/usr/bin/env bash
# Builds the bridge (x86_64, RelWithDebInfo) and runs the soak against virtual readers: frames
# polled and pushed to callbacks, callbacks registered again, parameters read and written, readers
# pulled away and back, for the given minutes after a 20 s warm-up. It prints the resident set, the
# Java heap after collection, the C heap and the JNI global references at the start and every
# 30 s, counts what happened, and fails when memory grew past its bounds.
# Usage: scripts/soak.sh [minutes]   (default 3)
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:-3}
./scripts/setup.sh --no-i386
# A folder of its own, so that a soak never waits on or disturbs the test builds.
cmake -S . -B build/soak -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/soak -j "$(nproc 2>/dev/null || echo 2)" --target bridge_soak >/dev/null
exec build/soak/bin/bridge_soak "$minutes"
