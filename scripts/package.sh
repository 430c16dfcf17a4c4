#!/usr/bin/env bash
# Makes the four Debian packages (the bridge and the stand-in SDK, amd64 and i386) from the
# builds the tests use, build/x86_64 and build/i386, into build/packages/.
# QUORIN_BUILD_PREFIX (default "build/") names other build folders, e.g. "build/pkg-".
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh

jobs=$(nproc 2>/dev/null || echo 2)
root=$PWD
prefix=${QUORIN_BUILD_PREFIX:-build/}
out=build/packages
mkdir -p "$out"

# dpkg knows only this machine's own libraries. The i386 ones the binaries link to are unpacked
# one package a folder with their control files, whose symbols files give the i386 dependencies.
deps=build/cache/i386-debdeps
if [ ! -f "$deps/.complete" ]; then
  rm -rf "$deps" && mkdir -p "$deps/debs"
  (cd "$deps/debs" && apt-get download -qq libc6:i386 libgcc-s1:i386 libstdc++6:i386 \
     libjpeg62-turbo:i386 libpng16-16:i386)
  for deb in "$deps"/debs/*.deb; do
    name=$(dpkg-deb -f "$deb" Package)
    dpkg-deb -x "$deb" "$deps/$name"
    dpkg-deb -e "$deb" "$deps/$name/DEBIAN"
  done
  touch "$deps/.complete"
fi

package() {
  local name=$1; shift
  echo "=== ${name}: configure, build and package"
  cmake -S . -B "${prefix}${name}" -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
  cmake --build "${prefix}${name}" -j "$jobs"
  rm -rf "${prefix}${name}/packages"
  (cd "${prefix}${name}" && cpack -G DEB -B "$PWD/packages")
  cp "${prefix}${name}"/packages/*.deb "$out/"
}

package x86_64
package i386 -DCMAKE_TOOLCHAIN_FILE="$root/cmake/i386-toolchain.cmake" \
  -DQUORIN_JVM_LIBRARY="$(ls "$root"/build/cache/jre-i386/root/usr/lib/jvm/java-17-openjdk-i386/lib/server/libjvm.so)" \
  -DQUORIN_DEB_DEPENDS_ROOT="$root/$deps"
ls -l "$out"/*.deb
