#!/usr/bin/env bash
# run.sh [RUNS] - the performance benchmark in one command (README, "Performance").
#
# Builds what it needs (Windows programs in build/bench-win, a native mkmedium in
# build/bench-host), generates the bench payload and medium (bench/gen_payload.py, fixed seed;
# packed at level 6, flat), makes the NSIS installer of the same payload (makensis, zlib,
# non-solid), and in a Wine prefix of its own (build/bench-out/wine) measures, RUNS rounds
# (at least 5, the default) with the order rotated every round:
#   setup   SETUP.EXE from the medium, driven by the robot (bench/install.kxr): Start click to
#           the success status; also its start-up to the dialog and its peak memory
#   nsis    the NSIS installer run silently (/S /D=...), the whole process
#   floor   bench/floor.cpp: read, one-call uncompress, write, per file; the whole process
# each into a fresh directory under C:\BENCH, checked against the payload and removed. Then
# the unpack microbenchmark (bench/unpack_bench.cpp) and the size and imports of SETUP.EXE.
# Prints the figures as medians and ratios, with the machine, and keeps them in
# build/bench-out/results.txt.
#
# Environment: KX_BENCH_WIN, KX_BENCH_HOST, KX_BENCH_OUT override the three directories;
# KX_KEEP_PREFIX=1 reuses the Wine prefix of an earlier run.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
runs=${1:-5}
[ "$runs" -ge 5 ] 2>/dev/null || runs=5
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
stamp=$(sha256sum "$root/bench/gen_payload.py" | cut -c1-16)
if [ "$(cat "$out/data.stamp" 2>/dev/null)" != "$stamp" ]; then
  say "generating the payload and the unpack inputs"
  rm -rf "$out/payload" "$out/unpack"
  python3 "$root/bench/gen_payload.py" payload "$out/payload" >&2
  python3 "$root/bench/gen_payload.py" unpack "$out/unpack" >&2
  echo "$stamp" >"$out/data.stamp"
fi
# The suite's programs go with it: the installer runs the installed main program at its end.
mkdir -p "$out/payload/EXE"
cp "$win/tools/KORV5.exe" "$out/payload/EXE/KORV5.EXE"
cp "$win/tools/CONFIG.exe" "$out/payload/EXE/CONFIG.EXE"
cp "$win/tools/UNINSTAL.exe" "$out/payload/EXE/UNINSTAL.EXE"
rm -rf "$out/medium"
"$host/tools/mkmedium" --flat --packed --level 6 --cluster 1 --title "KORVEX bench" \
  ${setup_exe:+--setup "$setup_exe"} "$out/payload" "$out/medium" >&2

# ---- The NSIS installer of the same payload
mkdir -p "$out/nsis"
cat >"$out/nsis/bench.nsi" <<EOF
; The peer: the bench payload as an NSIS 3 installer (zlib, non-solid), run with /S /D=...
Name "KORVEX bench"
OutFile "$out/nsis/bench-nsis.exe"
SetCompressor zlib
InstallDir "C:\\BENCH\\NSIS"
RequestExecutionLevel user
ShowInstDetails nevershow
AutoCloseWindow true
Section
  SetOutPath "\$INSTDIR"
  File /r "$out/payload/*"
  ; The same side work as SETUP: shortcuts, registry entries, the main program run once.
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
makensis -V1 "$out/nsis/bench.nsi" >&2

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
$(free -g | awk '/^Mem:/{print $2}') GB RAM, Linux $(uname -r), $(wine --version), $(date -u +%Y-%m-%d)"
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
check_target() {  # the payload's every file, the same bytes
  python3 - "$out/payload" "$1" <<'EOF'
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
: >"$out/runs.txt"
kinds=(setup nsis floor)
[ -n "$setup_exe" ] || kinds=(nsis floor)
mkdir -p "$drive_c/BENCH"
for r in $(seq 1 "$runs"); do
  n=${#kinds[@]}
  for k in $(seq 0 $((n - 1))); do
    kind=${kinds[$(((k + r) % n))]}
    dir=$drive_c/BENCH/$kind$r
    rm -rf "$dir"
    case $kind in
      setup)
        flag=$out/start.flag
        touch "$flag"
        python3 "$root/bench/memwatch.py" SETUP.EXE "$out/mem-setup-$r.txt" "$flag" &
        watch=$!
        if wine "$win/tools/kxrobot.exe" --timeout 600 "$(winpath "$root/bench/install.kxr")" \
          "SETUP=$(winpath "$out/medium/SETUP.EXE")" "SOURCE=$(winpath "$out/medium")\\" \
          "TARGET=C:\\BENCH\\$kind$r\\" "FLAG=$(winpath "$flag")" >"$out/robot-$r.txt" 2>&1 </dev/null; then
          wait "$watch" || true
          ms=$(sed -n 's/^robot: elapsed install \([0-9]*\) ms.*/\1/p' "$out/robot-$r.txt" | tr -d '\r')
          up=$(sed -n 's/^robot: elapsed startup \([0-9]*\) ms.*/\1/p' "$out/robot-$r.txt" | tr -d '\r')
          mem=$(cat "$out/mem-setup-$r.txt")
          check_target "$dir" && ok=ok || ok=DIFFERS
          echo "setup $r $ms $ok startup=$up $mem" >>"$out/runs.txt"
        else
          wait "$watch" || true
          say "round $r: the robot failed (see $out/robot-$r.txt)"
          echo "setup $r - FAILED" >>"$out/runs.txt"
        fi
        ;;
      nsis)
        python3 "$root/bench/memwatch.py" bench-nsis.exe "$out/mem-nsis-$r.txt" &
        watch=$!
        t0=$(now_ms)
        wine "$out/nsis/bench-nsis.exe" /S "/D=C:\\BENCH\\$kind$r" </dev/null >/dev/null 2>&1 || true
        t1=$(now_ms)
        wait "$watch" || true
        check_target "$dir" && ok=ok || ok=DIFFERS
        echo "nsis $r $((t1 - t0)) $ok $(cat "$out/mem-nsis-$r.txt")" >>"$out/runs.txt"
        ;;
      floor)
        t0=$(now_ms)
        inner=$(wine "$win/bench/floor.exe" "$(winpath "$out/medium")" "C:\\BENCH\\$kind$r" </dev/null 2>&1 |
          tr -d '\r' | sed -n 's/^floor: .* \([0-9]*\) ms$/\1/p')
        t1=$(now_ms)
        check_target "$dir" && ok=ok || ok=DIFFERS
        echo "floor $r $((t1 - t0)) $ok inner=$inner" >>"$out/runs.txt"
        ;;
    esac
    rm -rf "$dir"
    say "round $r: $(tail -1 "$out/runs.txt")"
  done
done

echo "load after $(load_now)" >>"$out/load.txt"
python3 "$root/bench/summary.py" "$out" | tee "$out/results.txt"
