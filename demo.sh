#!/usr/bin/env bash
# Builds everything, makes the demo medium and runs SETUP.EXE on it under Wine.
#  - With a display (DISPLAY set) the installer opens there for you to use.
#  - Without one it runs under Xvfb: the UI robot clicks a default install (tools/demo/
#    install.kxr), and the script prints what was installed: the tree, INST.LST, the registry
#    entries, the shortcuts, and where the screenshots are.
# Everything goes to out/demo/ (the Wine prefix too: out/demo/wine).
set -u
cd "$(dirname "$0")"
root=$(pwd)
jobs=$(nproc 2>/dev/null || echo 2)
out="$root/out/demo"

if [ "$(id -u)" = 0 ]; then bash cmake/deps.sh; else sudo -n bash cmake/deps.sh || bash cmake/deps.sh; fi || {
  echo "demo: could not install the dependencies" >&2; exit 1; }

mkdir -p build "$out"
echo "=== building (Windows configuration, and the medium builder natively)"
cmake -S . -B build/win32 -DCMAKE_TOOLCHAIN_FILE=cmake/mingw32.cmake >build/win32-configure.log 2>&1 || {
  cat build/win32-configure.log; exit 1; }
cmake --build build/win32 -j"$jobs" --target setup korv5 config uninstal kxrobot >build/win32-build.log 2>&1 || {
  tail -n 60 build/win32-build.log; exit 1; }
cmake -S . -B build/tools -DKX_TESTS=OFF >build/tools-configure.log 2>&1 || { cat build/tools-configure.log; exit 1; }
cmake --build build/tools -j"$jobs" --target mkmedium >build/tools-build.log 2>&1 || { tail -n 60 build/tools-build.log; exit 1; }

echo "=== making the demo medium"
bash tools/demo/make-medium.sh build/tools/tools/mkmedium build/win32 "$out" || exit 1
cat "$out/mkmedium.txt"
echo "    floppies: $out/medium/DISK*   all disks in one directory: $out/cd"

source cmake/wine-env.sh
interactive=0
if [ -n "${DISPLAY:-}" ] && [ -z "${KX_DEMO_ROBOT:-}" ]; then export KX_DISPLAY=$DISPLAY; interactive=1; fi
trap wine_env_stop EXIT
echo "=== starting Wine (fresh prefix, code page 1250)"
wine_env_start "$out/wine" || exit 1
drive_c="$WINEPREFIX/drive_c"

cd "$out"
if [ $interactive = 1 ]; then
  echo "=== SETUP.EXE is open on your display; install, then press Konec"
  wine "$out/cd/SETUP.EXE" >"$out/setup.txt" 2>&1 </dev/null
  rc=$?
else
  echo "=== SETUP.EXE under Xvfb, driven by the UI robot (tools/demo/install.kxr)"
  wine "$root/build/win32/tools/kxrobot.exe" "$root/tools/demo/install.kxr" SETUP="$out/cd/SETUP.EXE" \
    >"$out/robot.txt" 2>&1 </dev/null
  rc=$?
  cat "$out/robot.txt"
  for b in setup-start setup-done; do
    [ -f "$out/$b.bmp" ] && convert "$out/$b.bmp" "$out/$b.png" 2>/dev/null && rm -f "$out/$b.bmp"
  done
fi

target="$drive_c/KORV5"
if [ -d "$target" ]; then
  echo "=== installed tree (C:\\KORV5)"
  (cd "$target" && find . -print | sort | sed 's/^\.\/\{0,1\}/    /')
  if [ -f "$target/INST.LST" ]; then
    echo "=== INST.LST"
    iconv -f CP1250 -t UTF-8 "$target/INST.LST" | sed 's/^/    /'
  fi
  echo "=== registry"
  for key in 'HKLM\SOFTWARE\KORV\KORVEX\5' 'HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\AppPaths\KORV5.EXE' \
             'HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\KORVEX' 'HKCR\.d32' 'HKCR\.s32' 'HKCR\.l32' \
             'HKCR\d32_file' 'HKCR\d32_file\DefaultIcon' 'HKCR\d32_file\Shell\Open\command'; do
    # reg writes in the console (OEM) code page, 852 for Czech
    wine reg query "$key" >"$out/reg.txt" 2>/dev/null </dev/null && iconv -f CP852 -t UTF-8 "$out/reg.txt" | tr -d '\r' | sed '/^$/d; s/^/    /'
  done
  echo "=== shortcuts"
  find "$drive_c" -iname '*.lnk' -newer "$out/cd/SETUP.EXE" 2>/dev/null | sed "s|^$drive_c/|    C:/|"
fi
echo
echo "exit code: $rc"
for b in setup-start setup-done; do [ -f "$out/$b.png" ] && echo "screenshot: $out/$b.png"; done
exit $rc
