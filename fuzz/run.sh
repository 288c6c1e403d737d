#!/bin/bash
# run.sh [SECONDS] - builds the libFuzzer targets with clang 14 (AddressSanitizer and
# UndefinedBehaviorSanitizer) into build/fuzz and runs each for SECONDS (default 10) on a
# scratch copy of its seed corpus in fuzz/corpus/<name>. Prints one line per target; exits
# non-zero when a target does not build, or finds a crash, a leak, a timeout or too much memory.
# The inputs that failed are kept in build/fuzz/artifacts/. The seed corpus is never written.
#   KX_FUZZ_TARGETS="date ssc"   run only these targets
#   KX_FUZZ_RUNS=N               stop each target after N executions instead of the time
#   KX_FUZZ_KEEP=DIR             copy each grown corpus to DIR/<name> (to merge by hand)
set -u
here=$(cd "$(dirname "$0")" && pwd)
root=$(dirname "$here")
build=$root/build/fuzz
seconds=${1:-10}
targets=${KX_FUZZ_TARGETS:-"wco ilst diskid zip date ssc fn verify"}

# Per-target input limit (bytes).
max_len() { case $1 in date) echo 256 ;; ssc) echo 512 ;; diskid) echo 1024 ;; fn) echo 3000 ;; *) echo 4096 ;; esac; }

if ! command -v clang++-14 >/dev/null; then
  echo "fuzz: clang++-14 is missing (bash cmake/deps.sh installs it)" >&2
  exit 2
fi
mkdir -p "$build"
cmake -S "$root" -B "$build" -DCMAKE_C_COMPILER=clang-14 -DCMAKE_CXX_COMPILER=clang++-14 \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKX_SANITIZE=ON -DKX_FUZZ=ON -DKX_TESTS=OFF >"$build/configure.log" 2>&1 \
  || { cat "$build/configure.log" >&2; echo "fuzz: configure failed" >&2; exit 2; }
build_targets=()
for t in $targets; do build_targets+=("fuzz_$t"); done
cmake --build "$build" -j2 --target "${build_targets[@]}" >"$build/build.log" 2>&1 \
  || { tail -40 "$build/build.log" >&2; echo "fuzz: build failed (log: $build/build.log)" >&2; exit 2; }

# Scratch files (the corpus copy, the targets' own files) go to memory when there is /dev/shm.
if [ -z "${TMPDIR:-}" ] && [ -d /dev/shm ] && [ -w /dev/shm ]; then export TMPDIR=/dev/shm; fi
scratch=$(mktemp -d "${TMPDIR:-/tmp}/kxfuzz-run.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
mkdir -p "$build/artifacts"
status=0
for t in $targets; do
  corpus=$scratch/$t
  mkdir -p "$corpus"
  if [ -d "$here/corpus/$t" ]; then cp -r "$here/corpus/$t/." "$corpus/"; fi
  seeds=$(ls "$corpus" | wc -l)
  limit=(-max_total_time="$seconds")
  if [ -n "${KX_FUZZ_RUNS:-}" ]; then limit=(-runs="$KX_FUZZ_RUNS"); fi
  log=$build/$t.log
  start=$(date +%s.%N)
  (cd "$scratch" && ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 \
     UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
     "$build/fuzz/fuzz_$t" "${limit[@]}" -rss_limit_mb=512 -malloc_limit_mb=512 -timeout=10 \
       -max_len="$(max_len "$t")" -print_final_stats=1 -close_fd_mask=1 \
       -artifact_prefix="$build/artifacts/$t-" "$corpus") >"$log" 2>&1
  rc=$?
  end=$(date +%s.%N)
  runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -1)
  speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log" | tail -1)
  size=$(ls "$corpus" | wc -l)
  if [ -n "${KX_FUZZ_KEEP:-}" ]; then mkdir -p "$KX_FUZZ_KEEP/$t" && cp "$corpus"/* "$KX_FUZZ_KEEP/$t/" 2>/dev/null; fi
  if [ $rc -eq 0 ]; then verdict=ok; else verdict="FAILED (exit $rc, log $log)"; status=1; fi
  printf 'fuzz_%-7s %10s execs %8s exec/s %6.1f s  corpus %d -> %d  %s\n' "$t" "${runs:-?}" \
    "${speed:-?}" "$(echo "$end - $start" | bc)" "$seeds" "$size" "$verdict"
  if [ $rc -ne 0 ]; then
    grep -E 'ERROR|SUMMARY|FUZZ CHECK|runtime error|Test unit written' "$log" | head -8 | sed 's/^/    /'
  fi
done
exit $status
