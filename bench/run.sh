#!/usr/bin/env bash
# run.sh [RUNS] - the performance benchmark in one command (README, "Performance").
#
# Builds what it needs (Windows programs in build/bench-win, a native mkmedium in
# build/bench-host) and generates two payloads (bench/gen_payload.py, fixed seeds): "bench",
# about 400 files of 2 KB to 26 MB (161 MB), and "library", 2,000 files of 1 to 64 KB (30 MB).
# Each is packed at level 6 into a flat medium and made into an NSIS installer (makensis, zlib,
# non-solid, the same side work). In a Wine prefix of its own (build/bench-out/wine) it measures
# RUNS rounds (5 by default; `run.sh 3` is the quick mode, well under ten minutes), the order
# rotated every round, on both payloads:
#   setup   SETUP.EXE from the medium, driven by the robot (bench/install.kxr): Start click to
#           the success status; also its start-up to the dialog and its peak memory
#   silent  SETUP.EXE /VERYSILENT /DIR=... from the medium, the whole process (only when the
#           program knows the switch; otherwise its rows read n/a)
#   nsis    the NSIS installer run silently (/S /D=...), the whole process
#   floor   bench/floor.cpp: read, one-call uncompress, write, per file; the whole process
# each into a fresh directory under C:\BENCH, checked against the payload and removed. Then
# the unpack microbenchmark (bench/unpack_bench.cpp) and the size and imports of SETUP.EXE.
# Prints medians, ratios and the per-file cost of each road ((median - floor median) / files),
# the machine and the load average before and after; keeps them in build/bench-out/results.txt.
#
# Environment: KX_BENCH_WIN, KX_BENCH_HOST, KX_BENCH_OUT override the three directories;
# KX_KEEP_PREFIX=1 reuses the Wine prefix of an earlier run.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
runs=${1:-5}
[ "$runs" -ge 1 ] 2>/dev/null || runs=5
win=${KX_BENCH_WIN:-$root/build/bench-win}
host=${KX_BENCH_HOST:-$root/build/bench-host}
out=${KX_BENCH_OUT:-$root/build/bench-out}
mkdir -p "$out"
log=$out/build.log
: >"$log"
say() { echo "bench: $*" >&2; }
winpath() { local p=$1; echo "Z:${p//\//\\}"; }

# ---- Build
say "building (log: $log)"
if [ ! -f "$win/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$win" -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw32.cmake" >>"$log" 2>&1
fi
cmake --build "$win" -j2 --target floor unpack_bench kxrobot korv5 config uninstal >>"$log" 2>&1
setup_exe=$win/installer/SETUP.exe
if ! cmake --build "$win" -j2 --target setup >>"$log" 2>&1; then
  say "SETUP.EXE does not build: its figures are missing"
  setup_exe=""
fi
if [ ! -f "$host/CMakeCache.txt" ]; then
  cmake -S "$root" -B "$host" -DKX_TESTS=OFF >>"$log" 2>&1
fi
cmake --build "$host" -j2 --target mkmedium >>"$log" 2>&1

# ---- Data (regenerated when the generator changes)
payloads=(bench library)
stamp=$(sha256sum "$root/bench/gen_payload.py" | cut -c1-16)
if [ "$(cat "$out/data.stamp" 2>/dev/null)" != "$stamp" ]; then
  say "generating the payloads and the unpack inputs"
  rm -rf "$out/payload" "$out/payload-bench" "$out/payload-library" "$out/unpack"
  python3 "$root/bench/gen_payload.py" payload "$out/payload-bench" >&2
  python3 "$root/bench/gen_payload.py" library "$out/payload-library" >&2
  python3 "$root/bench/gen_payload.py" unpack "$out/unpack" >&2
  echo "$stamp" >"$out/data.stamp"
fi
rm -rf "$out/medium"  # the layout of earlier runs
mkdir -p "$out/nsis"
for p in "${payloads[@]}"; do
  # The suite's programs go with it: the installer runs the installed main program at its end.
  mkdir -p "$out/payload-$p/EXE"
  cp "$win/tools/KORV5.exe" "$out/payload-$p/EXE/KORV5.EXE"
  cp "$win/tools/CONFIG.exe" "$out/payload-$p/EXE/CONFIG.EXE"
  cp "$win/tools/UNINSTAL.exe" "$out/payload-$p/EXE/UNINSTAL.EXE"
  find "$out/payload-$p" -type f | wc -l >"$out/files-$p.txt"
  rm -rf "$out/medium-$p"
  "$host/tools/mkmedium" --flat --packed --level 6 --cluster 1 --title "KORVEX bench" \
    ${setup_exe:+--setup "$setup_exe"} "$out/payload-$p" "$out/medium-$p" >&2

  # The NSIS installer of the same payload, with the same side work as SETUP: shortcuts,
  # registry entries, the main program run once.
  cat >"$out/nsis/$p.nsi" <<EOF
Name "KORVEX bench"
OutFile "$out/nsis/$p-nsis.exe"
SetCompressor zlib
InstallDir "C:\\BENCH\\NSIS"
RequestExecutionLevel user
ShowInstDetails nevershow
AutoCloseWindow true
Section
  SetOutPath "\$INSTDIR"
  File /r "$out/payload-$p/*"
  CreateDirectory "\$SMPROGRAMS\KORVEX bench"
  CreateShortCut "\$SMPROGRAMS\KORVEX bench\KORV5.lnk" "\$INSTDIR\EXE\KORV5.EXE"
  CreateShortCut "\$SMPROGRAMS\KORVEX bench\CONFIG.lnk" "\$INSTDIR\EXE\CONFIG.EXE"
  CreateShortCut "\$SMPROGRAMS\KORVEX bench\UNINSTAL.lnk" "\$INSTDIR\EXE\UNINSTAL.EXE"
  CreateShortCut "\$DESKTOP\KORVEX bench.lnk" "\$INSTDIR\EXE\KORV5.EXE"
  WriteRegStr HKLM "Software\Microsoft\Windows\CurrentVersion\App Paths\KORV5BENCH.EXE" "" "\$INSTDIR\EXE\KORV5.EXE"
  WriteRegStr HKLM "Software\Microsoft\Windows\CurrentVersion\Uninstall\KORVEX bench" "DisplayName" "KORVEX bench"
  WriteRegStr HKCR ".d32bench" "" "d32_bench"
  SetOutPath "\$INSTDIR\EXE"
  ExecWait '"\$INSTDIR\EXE\KORV5.EXE" \$\$f'
SectionEnd
EOF
  makensis -V1 "$out/nsis/$p.nsi" >&2
done

# SETUP /VERYSILENT is measured when the program knows the switch (its text, ASCII or UTF-16).
silent=""
if [ -n "$setup_exe" ] && { grep -qai verysilent "$setup_exe" ||
  LC_ALL=C grep -qaiP 'V\x00E\x00R\x00Y\x00S\x00I\x00L\x00E\x00N\x00T' "$setup_exe"; }; then
  silent=yes
fi
[ -n "$silent" ] || say "SETUP.EXE does not know /VERYSILENT: its rows read n/a"

# ---- Wine
# shellcheck source=/dev/null
. "$root/cmake/wine-env.sh"
set +e  # wine-env.sh is written for scripts without -e
wine_env_start "$out/wine" >/dev/null 2>&1
started=$?
set -e
trap wine_env_stop EXIT
[ $started = 0 ] || { say "Wine did not start"; exit 1; }
# Wine starts its menu builder for every shortcut saved and waits for it (a second or more on
# a busy machine); Windows does nothing of the kind, so it is switched off for both installers.
export WINEDLLOVERRIDES="$WINEDLLOVERRIDES;winemenubuilder.exe=d"
drive_c=$WINEPREFIX/drive_c
machine="$(lscpu | sed -n 's/^Model name: *//p' | head -1), $(nproc) cores, \
$(free -g | awk '/^Mem:/{print $2}') GB RAM, Linux $(uname -r), $(wine --version), $(date -u "+%Y-%m-%d %H:%M") UTC"
echo "$machine" >"$out/machine.txt"
# The load of the machine (other people's builds and tests) before and after the rounds.
load_now() { cut -d' ' -f1-3 /proc/loadavg; }
echo "load before $(load_now)" >"$out/load.txt"

# ---- Size and imports of SETUP.EXE
: >"$out/size.txt"
if [ -n "$setup_exe" ]; then
  i686-w64-mingw32-strip -o "$out/SETUP.stripped.exe" "$setup_exe"
  echo "built $(stat -c %s "$setup_exe")" >>"$out/size.txt"
  echo "stripped $(stat -c %s "$out/SETUP.stripped.exe")" >>"$out/size.txt"
  i686-w64-mingw32-objdump -p "$setup_exe" | sed -n 's/^\tDLL Name: /dll /p' >>"$out/size.txt"
fi

# ---- Unpack microbenchmark
say "unpack microbenchmark"
(cd "$out" && wine "$win/bench/unpack_bench.exe" "$(winpath "$out/unpack")" "$runs" </dev/null) \
  >"$out/unpack.txt" 2>&1 || say "unpack_bench failed (see $out/unpack.txt)"

# ---- Install rounds
check_target() {  # PAYLOAD DIR: the payload's every file, the same bytes
  python3 - "$1" "$2" <<'EOF'
import filecmp, os, sys
src, dst = sys.argv[1], sys.argv[2]
bad = 0
for d, _, files in os.walk(src):
    for f in files:
        a = os.path.join(d, f)
        b = os.path.join(dst, os.path.relpath(a, src))
        if not os.path.isfile(b) or not filecmp.cmp(a, b, shallow=False):
            bad += 1
sys.exit(1 if bad else 0)
EOF
}
now_ms() { echo $(($(date +%s%N) / 1000000)); }

# One round of one road on one payload: a line "PAYLOAD KIND ROUND MS ok|DIFFERS [k=v ...]"
# in runs.txt, or "PAYLOAD KIND ROUND - FAILED".
measure() {
  local p=$1 kind=$2 r=$3
  local name=$kind$r$p dir=$drive_c/BENCH/$kind$r$p medium=$out/medium-$p payload=$out/payload-$p
  local t0 t1 ok
  rm -rf "$dir"
  case $kind in
    setup)
      local flag=$out/start.flag watch ms up
      touch "$flag"
      python3 "$root/bench/memwatch.py" SETUP.EXE "$out/mem-setup-$p-$r.txt" "$flag" &
      watch=$!
      if wine "$win/tools/kxrobot.exe" --timeout 600 "$(winpath "$root/bench/install.kxr")" \
        "SETUP=$(winpath "$medium/SETUP.EXE")" "SOURCE=$(winpath "$medium")\\" \
        "TARGET=C:\\BENCH\\$name\\" "FLAG=$(winpath "$flag")" >"$out/robot-$p-$r.txt" 2>&1 </dev/null; then
        wait "$watch" || true
        ms=$(sed -n 's/^robot: elapsed install \([0-9]*\) ms.*/\1/p' "$out/robot-$p-$r.txt" | tr -d '\r')
        up=$(sed -n 's/^robot: elapsed startup \([0-9]*\) ms.*/\1/p' "$out/robot-$p-$r.txt" | tr -d '\r')
        check_target "$payload" "$dir" && ok=ok || ok=DIFFERS
        echo "$p setup $r $ms $ok startup=$up $(cat "$out/mem-setup-$p-$r.txt")" >>"$out/runs.txt"
      else
        wait "$watch" || true
        say "round $r: the robot failed (see $out/robot-$p-$r.txt)"
        echo "$p setup $r - FAILED" >>"$out/runs.txt"
      fi
      ;;
    silent)
      local watch rc=0
      python3 "$root/bench/memwatch.py" SETUP.EXE "$out/mem-silent-$p-$r.txt" &
      watch=$!
      t0=$(now_ms)
      wine "$medium/SETUP.EXE" /VERYSILENT "/DIR=C:\\BENCH\\$name\\" \
        "/LOG=$(winpath "$out/silent-$p-$r.log")" </dev/null >/dev/null 2>&1 || rc=$?
      t1=$(now_ms)
      wait "$watch" || true
      check_target "$payload" "$dir" && ok=ok || ok=DIFFERS
      [ $rc = 0 ] || ok="$ok,exit=$rc"
      echo "$p silent $r $((t1 - t0)) $ok $(cat "$out/mem-silent-$p-$r.txt")" >>"$out/runs.txt"
      ;;
    nsis)
      local watch
      python3 "$root/bench/memwatch.py" "$p-nsis.exe" "$out/mem-nsis-$p-$r.txt" &
      watch=$!
      t0=$(now_ms)
      wine "$out/nsis/$p-nsis.exe" /S "/D=C:\\BENCH\\$name" </dev/null >/dev/null 2>&1 || true
      t1=$(now_ms)
      wait "$watch" || true
      check_target "$payload" "$dir" && ok=ok || ok=DIFFERS
      echo "$p nsis $r $((t1 - t0)) $ok $(cat "$out/mem-nsis-$p-$r.txt")" >>"$out/runs.txt"
      ;;
    floor)
      local inner
      t0=$(now_ms)
      inner=$(wine "$win/bench/floor.exe" "$(winpath "$medium")" "C:\\BENCH\\$name" </dev/null 2>&1 |
        tr -d '\r' | sed -n 's/^floor: .* \([0-9]*\) ms$/\1/p')
      t1=$(now_ms)
      check_target "$payload" "$dir" && ok=ok || ok=DIFFERS
      echo "$p floor $r $((t1 - t0)) $ok inner=$inner" >>"$out/runs.txt"
      ;;
  esac
  rm -rf "$dir"
  say "round $r: $(tail -1 "$out/runs.txt")"
}

: >"$out/runs.txt"
kinds=(setup silent nsis floor)
[ -n "$silent" ] || kinds=(setup nsis floor)
[ -n "$setup_exe" ] || kinds=(nsis floor)
mkdir -p "$drive_c/BENCH"
for r in $(seq 1 "$runs"); do
  n=${#kinds[@]}
  for p in "${payloads[@]}"; do
    for k in $(seq 0 $((n - 1))); do
      measure "$p" "${kinds[$(((k + r) % n))]}" "$r"
    done
  done
done

echo "load after $(load_now)" >>"$out/load.txt"
python3 "$root/bench/summary.py" "$out" | tee "$out/results.txt"
