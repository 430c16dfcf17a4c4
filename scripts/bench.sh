#!/usr/bin/env bash
# Builds the bridge twice for x86_64 in Release, the default build and the cached one
# (-DQUORIN_CACHED_IDS=ON), each with the benchmark; runs each build's benchmark in its own process,
# beside JNA and the copy floor, on virtual readers; then prints the table of both builds.
# Usage: scripts/bench.sh [--frames N]
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh --no-i386
builds=(default cached)
# Folders of their own: the x86_64 test build stays RelWithDebInfo. Both are built before either
# runs, so that no compiler shares the cores with a measurement.
for build in "${builds[@]}"; do
  cached=OFF
  [ "$build" = cached ] && cached=ON
  cmake -S . -B "build/bench-$build" -DCMAKE_BUILD_TYPE=Release -DQUORIN_BUILD_TESTS=OFF \
    -DQUORIN_CACHED_IDS=$cached >/dev/null
  cmake --build "build/bench-$build" -j 2 --target quorin_bench >/dev/null
done
figures=$(mktemp -d)
trap 'rm -rf "$figures"' EXIT
for build in "${builds[@]}"; do
  echo "=== The $build build"
  "build/bench-$build/bin/quorin_bench" "$@" --figures "$figures/$build.tsv"
  echo
done
echo "=== Both builds, JNA and the floor"
build/bench-default/bin/quorin_bench --table "$figures/default.tsv" "$figures/cached.tsv"
