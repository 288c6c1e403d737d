#!/usr/bin/env bash
# Runs CTest of a Windows build directory under Wine with a private prefix, an X server and a
# persistent wineserver.  Usage: tests/wine-ctest.sh BUILD_DIR [ctest arguments...]
# The prefix lives in BUILD_DIR/wine; KX_KEEP_PREFIX=1 reuses it between rounds.
set -u
here=$(cd "$(dirname "$0")/.." && pwd)
build=$(cd "$1" && pwd); shift
source "$here/cmake/wine-env.sh"
trap wine_env_stop EXIT
wine_env_start "$build/wine" || exit 1
cd "$build" && ctest "$@"
