#!/usr/bin/env bash
# Builds the bridge and the stand-in SDK (x86_64) and runs the demo against the virtual readers.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh --no-i386
cmake -S . -B build/x86_64 -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/x86_64 -j "$(nproc 2>/dev/null || echo 2)" --target QuorinCtrlWrapper quorin_examples >/dev/null
exec java -Djava.library.path=build/x86_64/lib \
  -cp build/x86_64/java/QuorinCtrlWrapper.jar:build/x86_64/examples/examples.jar Demo "$@"
