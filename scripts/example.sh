#!/usr/bin/env bash
# Builds the bridge and the stand-in SDK (x86_64) and runs one example program.
# Usage: scripts/example.sh Demo|FileTransfer|FirmwareUpgrade [arguments...]
set -euo pipefail
cd "$(dirname "$0")/.."
example=${1:-Demo}
shift || true
./scripts/setup.sh --no-i386
cmake -S . -B build/x86_64 -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/x86_64 -j "$(nproc 2>/dev/null || echo 2)" --target QuorinCtrlWrapper quorin_examples >/dev/null
exec java -Djava.library.path=build/x86_64/lib \
  -cp build/x86_64/java/QuorinCtrlWrapper.jar:build/x86_64/examples/examples.jar "$example" "$@"
