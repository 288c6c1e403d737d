#!/usr/bin/env bash
# Builds everything and runs the demo under Wine: installs what is missing, builds the Windows
# configuration, and runs the demo program in a fresh Wine prefix. With a display (DISPLAY set)
# windows open on it; without one the demo runs under Xvfb and leaves a screenshot.
# Output goes to out/demo/.
set -u
cd "$(dirname "$0")"
root=$(pwd)
jobs=$(nproc 2>/dev/null || echo 2)
out="$root/out/demo"
# The programs the demo runs (the tests are built by ./test.sh).
KX_DEMO_TARGETS="libdemo"

if [ "$(id -u)" = 0 ]; then bash cmake/deps.sh; else sudo -n bash cmake/deps.sh || bash cmake/deps.sh; fi || {
  echo "demo: could not install the dependencies" >&2; exit 1; }

mkdir -p build "$out"
echo "=== building (Windows configuration)"
cmake -S . -B build/win32 -DCMAKE_TOOLCHAIN_FILE=cmake/mingw32.cmake >build/win32-configure.log 2>&1 || {
  cat build/win32-configure.log; exit 1; }
cmake --build build/win32 -j"$jobs" --target $KX_DEMO_TARGETS >build/win32-build.log 2>&1 || { tail -n 60 build/win32-build.log; exit 1; }

source cmake/wine-env.sh
if [ -n "${DISPLAY:-}" ]; then export KX_DISPLAY=$DISPLAY; fi
trap wine_env_stop EXIT
echo "=== starting Wine (fresh prefix, code page 1250)"
wine_env_start "$out/wine" || exit 1

exe="$root/build/win32/tools/libdemo.exe"
rm -f "$out/errorbox.png"
cd "$out"
# The demo closes its own error box after a few seconds; meanwhile the screen is taken.
wine "$exe" --close-box-after 4 >"$out/libdemo.txt" 2>"$out/libdemo.err" </dev/null &
demo_pid=$!
sleep 2.5
import -display "$DISPLAY" -window root "$out/errorbox.png" 2>/dev/null || true
wait $demo_pid
rc=$?
iconv -f CP1250 -t UTF-8 "$out/libdemo.txt"
echo
echo "exit code: $rc"
[ -f "$out/errorbox.png" ] && echo "screenshot of the error box: $out/errorbox.png"
exit $rc
