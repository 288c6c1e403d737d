# wine-env.sh - sourced by the test and demo drivers: a private Wine prefix, an X server and a
# persistent wineserver for the programs run under Wine, and their teardown.
#
#   wine_env_start DIR   makes DIR/prefix a fresh WINEPREFIX, starts Xvfb (unless KX_DISPLAY
#                        names a display to use) and the wineserver; exports WINEPREFIX, DISPLAY,
#                        LC_ALL (code page 1250), WINEDEBUG.
#   wine_env_stop        stops the wineserver and our X server.
#
# Wine hands its standard output on to every process it starts (the wineserver and the system
# processes included), so all of them are started here with their output on /dev/null; a test
# program's output pipe then closes when the test program ends.

KX_XVFB_PID=""

wine_env_start() {
  local dir=$1
  export LC_ALL=cs_CZ.UTF-8
  export WINEDEBUG=-all
  export WINEARCH=win32
  # No Mono or Gecko installers at prefix creation; no menu entries on the host for shortcuts.
  export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
  mkdir -p "$dir"
  export WINEPREFIX="$dir/prefix"
  # KX_KEEP_PREFIX=1 reuses a prefix made by an earlier run (for quick rounds while developing);
  # the test command always makes a fresh one.
  local fresh=1
  if [ "${KX_KEEP_PREFIX:-0}" = 1 ] && [ -f "$WINEPREFIX/system.reg" ]; then fresh=0; fi
  [ $fresh = 1 ] && rm -rf "$WINEPREFIX"

  if [ -n "${KX_DISPLAY:-}" ]; then
    export DISPLAY=$KX_DISPLAY
  else
    local n=90
    while [ -e "/tmp/.X11-unix/X$n" ] || [ -e "/tmp/.X$n-lock" ]; do n=$((n + 1)); done
    Xvfb ":$n" -screen 0 1024x768x24 -nolisten tcp >/dev/null 2>&1 &
    KX_XVFB_PID=$!
    export DISPLAY=":$n"
    local i
    for i in $(seq 1 100); do
      [ -e "/tmp/.X11-unix/X$n" ] && break
      sleep 0.1
    done
    if [ ! -e "/tmp/.X11-unix/X$n" ]; then
      echo "wine-env: Xvfb did not start on :$n" >&2
      return 1
    fi
  fi

  wineserver -p >/dev/null 2>&1 </dev/null
  if [ $fresh = 1 ]; then
    wineboot -i >/dev/null 2>&1 </dev/null
    # Xvfb has no window manager: let Wine manage its windows itself. Otherwise every closing
    # box waits two seconds for a manager, and windows have no caption in screenshots.
    wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 </dev/null
    # The user's folders (Desktop, Documents, ...) are links to the host's home: make them
    # folders of the prefix, so that shortcuts and files made in them stay in the prefix.
    local folder
    for folder in "$WINEPREFIX/drive_c/users/$(id -un)"/*; do
      if [ -L "$folder" ]; then rm -f "$folder" && mkdir -p "$folder"; fi
    done
  fi
  # Start the system processes now, with their output on /dev/null.
  wine cmd /c exit >/dev/null 2>&1 </dev/null
  return 0
}

wine_env_stop() {
  if [ -n "${WINEPREFIX:-}" ]; then
    wineserver -k >/dev/null 2>&1 </dev/null || true
  fi
  if [ -n "$KX_XVFB_PID" ]; then
    kill "$KX_XVFB_PID" >/dev/null 2>&1 || true
    wait "$KX_XVFB_PID" 2>/dev/null || true
    KX_XVFB_PID=""
  fi
}
