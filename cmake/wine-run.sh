#!/usr/bin/env bash
# Runs a Windows test program under Wine for CTest. The environment (WINEPREFIX, DISPLAY,
# LC_ALL) comes from the test driver; without one, a private prefix beside the build is used.
: "${WINEDEBUG:=-all}"
export WINEDEBUG
if [ -z "${WINEPREFIX:-}" ]; then
  export WINEPREFIX="${TMPDIR:-/tmp}/korvex-wine-$(id -u)"
fi
: "${LC_ALL:=cs_CZ.UTF-8}"
export LC_ALL
exec wine "$@"
