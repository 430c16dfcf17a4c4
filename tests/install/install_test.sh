#!/usr/bin/env bash
# Installs this build as a user would: cmake --install into a prefix, then the Debian packages,
# unpacked into a throw-away root (the machine's own packages are not touched), checked file by
# file and by lintian, and the demo compiled and run from that root alone.
# Usage: install_test.sh BUILD_DIR
set -euo pipefail
build=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

arch=$(dpkg --print-architecture)
multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null)
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
bridge=libquorinctrlwrapper-java
standin=libquorinctrl-virtual
doc=./usr/share/doc/$bridge

# Exactly what each package holds (directories aside): the javadoc is the build's own HTML.
expected_bridge() {
  printf '%s\n' "./usr/lib/$multiarch/jni/libQuorinCtrlWrapper.so" \
    "./usr/share/java/QuorinCtrlWrapper-$version.jar" \
    "./usr/share/java/QuorinCtrlWrapper.jar -> QuorinCtrlWrapper-$version.jar" \
    "$doc/changelog.gz" "$doc/copyright" "$doc/user-guide.md" \
    "$doc/examples/Demo.java" "$doc/examples/FileTransfer.java" "$doc/examples/FirmwareUpgrade.java"
  (cd "$build/javadoc" && find . -type f | sed "s|^\.|$doc/api|")
}
expected_standin() {
  printf '%s\n' "./usr/lib/$multiarch/libQuorinCtrl.so" \
    "./usr/share/doc/$standin/changelog.gz" "./usr/share/doc/$standin/copyright"
}
# "mode owner size date time name [-> target]" of dpkg-deb, or find's listing of a prefix.
deb_files() { dpkg-deb --contents "$1" | grep -v '^d' | sed -E 's/^([^ ]+ +){5}//' | sort; }

# 1. cmake --install: the same layout under any prefix.
cmake --install "$build" --prefix "$work/prefix/usr" >/dev/null
(cd "$work/prefix" && find . ! -type d | sort) >"$work/installed"
sort <(expected_bridge; expected_standin) | sed 's/ -> .*//' >"$work/expected-names"
diff -u "$work/expected-names" "$work/installed" || fail "cmake --install put other files than expected"
[ "$(readlink "$work/prefix/usr/share/java/QuorinCtrlWrapper.jar")" = "QuorinCtrlWrapper-$version.jar" ] ||
  fail "the unversioned jar does not point at QuorinCtrlWrapper-$version.jar"

# 2. The packages, from this build.
(cd "$build" && cpack -G DEB -B "$work/debs" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; exit 1; }
bridge_deb=$work/debs/${bridge}_${version}_${arch}.deb
standin_deb=$work/debs/${standin}_${version}_${arch}.deb
diff -u <(expected_bridge | sort) <(deb_files "$bridge_deb") || fail "$bridge holds other files than expected"
diff -u <(expected_standin | sort) <(deb_files "$standin_deb") || fail "$standin holds other files than expected"

# Control fields: package, field, pattern the value must match.
while read -r deb field pattern; do
  value=$(dpkg-deb -f "$work/debs/${deb}_${version}_${arch}.deb" "$field")
  [[ "$value" =~ $pattern ]] || fail "$deb $field is '$value', expected /$pattern/"
done <<TABLE
$bridge Version ^${version//./\\.}$
$bridge Architecture ^${arch}$
$bridge Section ^java$
$bridge Depends ^libquorinctrl-sdk,\ default-jre-headless\ \(>=\ 2:1\.17\)\ \|\ java17-runtime-headless,
$bridge Depends libc6\ \(>=\ [0-9.]+\)
$bridge Depends libstdc\+\+6\ \(>=\ [0-9.]+\)
$standin Architecture ^${arch}$
$standin Provides ^libquorinctrl-sdk$
$standin Conflicts ^libquorinctrl-sdk$
$standin Replaces ^libquorinctrl-sdk$
$standin Depends libjpeg62-turbo\ \(>=\ [0-9.:]+\)
$standin Depends libpng16-16\ \(>=\ [0-9.-]+\)
$standin Depends libc6\ \(>=\ [0-9.]+\)
TABLE
dpkg-deb --ctrl-tarfile "$standin_deb" | tar -xO ./triggers | grep -qx 'activate-noawait ldconfig' ||
  fail "$standin does not trigger ldconfig"

lintian --tag-display-limit 0 "$bridge_deb" "$standin_deb" 2>&1 | grep -v 'root privileges' >"$work/lintian" || true
cat "$work/lintian"
! grep -q '^E:' "$work/lintian" || fail "lintian reports errors"

# 3. A user's root: the demo from the installed example, against the installed jar and libraries.
root=$work/root
dpkg -x "$bridge_deb" "$root"
dpkg -x "$standin_deb" "$root"
jni=$root/usr/lib/$multiarch/jni
cmp -s "$root/usr/share/java/QuorinCtrlWrapper.jar" "$build/java/QuorinCtrlWrapper.jar" ||
  fail "the installed jar is not the build's"
! readelf -d "$jni/libQuorinCtrlWrapper.so" | grep -E 'RPATH|RUNPATH' || fail "the installed bridge carries a search path"
jar=$root/usr/share/java/QuorinCtrlWrapper.jar
javac -Xlint:all -Werror -encoding UTF-8 -cp "$jar" -d "$work/classes" "$root/${doc#./}/examples/Demo.java"
# The root's multiarch folder stands for the loader's own path; the JVM's default one is replaced.
status=0
(cd "$work" && env -u CLASSPATH -u JAVA_TOOL_OPTIONS -u _JAVA_OPTIONS \
   LD_LIBRARY_PATH="$root/usr/lib/$multiarch" LD_DEBUG=files LD_DEBUG_OUTPUT="$work/ld" \
   java -cp "$jar:$work/classes" -Djava.library.path="$jni" Demo >"$work/demo.out" 2>&1) || status=$?
cat "$work/demo.out"
[ $status -eq 0 ] || fail "Demo exited with $status"
while read -r pattern; do
  grep -Eq "$pattern" "$work/demo.out" || fail "Demo printed no line matching /$pattern/"
done <<'TABLE'
^SDK version [0-9]+\.[0-9]+\.[0-9]+\.[0-9]+$
^4 device\(s\) found$
^\[0\] .* serial QN2405C0117 +name "分拣线一"$
^OpenDevice +ok$
^Width is 800 
^[1-9][0-9]* frames in [0-9.]+ s
^StopGrabbing +ok$
^Saved frame [0-9]+ as .*/quorin-demo-frame\.jpg
^DestroyHandle +ok$
TABLE
[ "$(head -c 2 "$work/quorin-demo-frame.jpg" 2>/dev/null | od -An -tx1 | tr -d ' ')" = ffd8 ] ||
  fail "quorin-demo-frame.jpg is not a JPEG"
# Both libraries were loaded from the root, nothing from the build tree.
loaded=$(cat "$work"/ld.* | sed -n 's/.*calling init: \(.*libQuorinCtrl.*\)/\1/p' | sort -u)
[ "$loaded" = "$(printf '%s\n' "$root/usr/lib/$multiarch/jni/libQuorinCtrlWrapper.so" \
  "$root/usr/lib/$multiarch/libQuorinCtrl.so" | sort)" ] || fail "libraries loaded: $loaded"

[ $failures -eq 0 ] || { echo "$failures check(s) failed"; exit 1; }
echo "install test passed"
