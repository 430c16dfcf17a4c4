#!/usr/bin/env bash
# Installs what the build needs on a fresh Debian machine and fetches the 32-bit JVM.
# Safe to run again: it only installs what is missing.
# Usage: scripts/setup.sh [--no-i386]
set -euo pipefail
cd "$(dirname "$0")/.."
want_i386=1
[ "${1:-}" = "--no-i386" ] && want_i386=0

SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"

# libjna-java: the benchmark's JNA peer.
packages=(cmake make g++ openjdk-17-jdk-headless libgtest-dev libjpeg62-turbo-dev libpng-dev libjna-java)
# Debian packages of the bridge: dpkg-shlibdeps and file for CPack's DEB generator, lintian for the install test.
packages+=(dpkg-dev file lintian)
[ $want_i386 -eq 1 ] && packages+=(g++-multilib lib32z1)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done

apt_updated=0
# A mirror caught mid-sync fails one index; the others still serve, so carry on.
apt_update() { $SUDO apt-get update -qq || echo "setup: apt-get update reported errors; going on" >&2; apt_updated=1; }
apt_install() {
  [ $apt_updated -eq 1 ] || apt_update
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "$@"
}
[ ${#missing[@]} -eq 0 ] || apt_install "${missing[@]}"

[ $want_i386 -eq 1 ] || exit 0

# Some machines cannot execute 32-bit programs at all; those run them under qemu-i386.
probe_dir=$(mktemp -d)
trap 'rm -rf "$probe_dir"' EXIT
echo 'int main(void){return 0;}' > "$probe_dir/p.c"
gcc -m32 "$probe_dir/p.c" -o "$probe_dir/p32"
if ! "$probe_dir/p32" 2>/dev/null; then
  command -v qemu-i386 >/dev/null || apt_install qemu-user
fi

# 32-bit packages are unpacked under DIR/root, not installed: they often cannot install beside
# the 64-bit ones, whose versions the archive's two architectures do not keep in step.
# Usage: unpack_i386 DIR PACKAGE...; done once, then marked complete.
unpack_i386() {
  local dir=$1; shift
  [ -f "$dir/.complete" ] && return 0
  rm -rf "$dir" && mkdir -p "$dir/debs"
  if ! dpkg --print-foreign-architectures | grep -qx i386; then
    $SUDO dpkg --add-architecture i386
    apt_update
  fi
  apt-cache show "$1:i386" >/dev/null 2>&1 || apt_update
  (cd "$dir/debs" && apt-get download -qq "${@/%/:i386}")
  for deb in "$dir"/debs/*.deb; do dpkg -x "$deb" "$dir/root"; done
  touch "$dir/.complete"
}

# A 32-bit JVM for the in-process tests.
unpack_i386 build/cache/jre-i386 openjdk-17-jre-headless

# The 32-bit JPEG, PNG and zlib libraries of the stand-in; cmake/i386-toolchain.cmake finds them.
libs_dir=build/cache/i386-libs
unpack_i386 "$libs_dir" libjpeg62-turbo libjpeg62-turbo-dev libpng16-16 libpng-dev zlib1g zlib1g-dev
# Development links that name their library by an absolute path are pointed at the unpacked copy.
find "$libs_dir/root" -type l -lname '/*' | while read -r link; do
  ln -sfnr "$libs_dir/root$(readlink "$link")" "$link"
done
