#!/usr/bin/env bash
# Runs the whole test suite: installs what is missing, builds the native configuration with
# AddressSanitizer and UndefinedBehaviorSanitizer and the Windows configuration, runs the
# native tests, a short run of every fuzz target, then the Windows tests under Wine (a fresh
# prefix, Xvfb, code page 1250).
# Exit code 0 only when every test passed.
set -u
cd "$(dirname "$0")"
root=$(pwd)
jobs=$(nproc 2>/dev/null || echo 2)

step() { printf '\n=== %s\n' "$*"; }

step "dependencies"
if [ "$(id -u)" = 0 ]; then bash cmake/deps.sh; else sudo -n bash cmake/deps.sh || bash cmake/deps.sh; fi || {
  echo "test: could not install the dependencies" >&2; exit 1; }

mkdir -p build
step "native build (sanitizers)"
cmake -S . -B build/host -DKX_SANITIZE=ON >build/host-configure.log 2>&1 || { cat build/host-configure.log; exit 1; }
cmake --build build/host -j"$jobs" >build/host-build.log 2>&1 || { tail -n 60 build/host-build.log; exit 1; }
grep -E 'warning:' build/host-build.log | grep -v '/usr/src/googletest' | head -n 20

step "Windows build (MinGW-w64, i686)"
cmake -S . -B build/win32 -DCMAKE_TOOLCHAIN_FILE=cmake/mingw32.cmake >build/win32-configure.log 2>&1 || {
  cat build/win32-configure.log; exit 1; }
cmake --build build/win32 -j"$jobs" >build/win32-build.log 2>&1 || { tail -n 60 build/win32-build.log; exit 1; }
grep -E 'warning:' build/win32-build.log | grep -v '/usr/src/googletest' | head -n 20

# Runs one CTest, shows its output, and adds its counts to the totals.
total_pass=0; total_fail=0; failed_runs=""
run_ctest() {
  local name=$1 dir=$2; shift 2
  local log="$root/build/$name-ctest.log"
  (cd "$dir" && ctest --output-on-failure -j"$jobs" "$@") >"$log" 2>&1
  local rc=$?
  cat "$log"
  local line
  line=$(grep -E 'tests passed, [0-9]+ tests? failed out of [0-9]+' "$log" | tail -n 1)
  if [ -n "$line" ]; then
    local failed all
    failed=$(echo "$line" | sed -E 's/.*passed, ([0-9]+) tests? failed out of ([0-9]+).*/\1/')
    all=$(echo "$line" | sed -E 's/.*failed out of ([0-9]+).*/\1/')
    total_pass=$((total_pass + all - failed)); total_fail=$((total_fail + failed))
  else
    total_fail=$((total_fail + 1))
  fi
  [ $rc = 0 ] || failed_runs="$failed_runs $name"
}

step "native tests"
run_ctest host build/host

step "fuzzing (each target briefly, clang with libFuzzer)"
if bash fuzz/run.sh 10 >build/fuzz-run.log 2>&1; then
  total_pass=$((total_pass + 1))
else
  total_fail=$((total_fail + 1)); failed_runs="$failed_runs fuzz"
fi
grep -E '^fuzz' build/fuzz-run.log | tail -n 12

step "Windows tests under Wine"
source cmake/wine-env.sh
trap wine_env_stop EXIT
if wine_env_start "$root/build/win32/wine"; then
  run_ctest win32 build/win32
else
  echo "test: could not set up Wine" >&2
  total_fail=$((total_fail + 1)); failed_runs="$failed_runs wine-setup"
fi
wine_env_stop
trap - EXIT

step "summary"
df -h . | tail -n 1 | awk '{print "disk: " $4 " free of " $2 " after the run"}'
echo "native and Windows test runs together:"
echo "$total_pass passed, $total_fail failed"
if [ -n "$failed_runs" ]; then
  echo "failing runs:$failed_runs"
  exit 1
fi
exit 0
