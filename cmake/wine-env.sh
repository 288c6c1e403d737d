# wine-env.sh - sourced by the test and demo drivers: a private Wine prefix, an X server and a
# persistent wineserver for the programs run under Wine, and their teardown.
#
#   wine_env_start DIR      makes DIR/prefix a fresh WINEPREFIX (wine_env_display, then
#                           wine_env_prefix); KX_KEEP_PREFIX=1 reuses one made before.
#   wine_env_display        exports DISPLAY: KX_DISPLAY when set, else an Xvfb of our own.
#   wine_env_prefix DIR     makes DIR a fresh prefix (the user's folders plain directories of the
#                           prefix, Wine managing its windows itself) and starts its wineserver;
#                           exports WINEPREFIX, LC_ALL (code page 1250), WINEDEBUG, ...
#   wine_env_copy SRC DST   DST a copy of the prefix SRC (its system directory hard-linked: no
#                           program we run writes there), made the running prefix.
#   wine_env_use DIR        DIR (an existing prefix) the running prefix, its wineserver started.
#   wine_env_down           stops the running prefix's wineserver (it writes the registry files).
#   wine_env_stop           wine_env_down, and our X server stopped.
#
# Wine hands its standard output on to every process it starts (the wineserver and the system
# processes included), so all of them are started here with their output on /dev/null; a test
# program's output pipe then closes when the test program ends.

KX_XVFB_PID=""
KX_WINE_RUNNING=""  # the prefix whose wineserver we started

wine_env_vars() {
  export LC_ALL=cs_CZ.UTF-8
  export WINEDEBUG=-all
  export WINEARCH=win32
  # No Mono or Gecko installers at prefix creation; no menu entries on the host for shortcuts.
  export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
}

wine_env_display() {
  if [ -n "${KX_DISPLAY:-}" ]; then
    export DISPLAY=$KX_DISPLAY
    return 0
  fi
  local n=90 i
  while [ -e "/tmp/.X11-unix/X$n" ] || [ -e "/tmp/.X$n-lock" ]; do n=$((n + 1)); done
  Xvfb ":$n" -screen 0 1024x768x24 -nolisten tcp >/dev/null 2>&1 &
  KX_XVFB_PID=$!
  export DISPLAY=":$n"
  for i in $(seq 1 100); do
    [ -e "/tmp/.X11-unix/X$n" ] && return 0
    sleep 0.1
  done
  echo "wine-env: Xvfb did not start on :$n" >&2
  return 1
}

wine_env_use() {
  wine_env_down
  wine_env_vars
  export WINEPREFIX=$1
  KX_WINE_RUNNING=$1
  wineserver -p >/dev/null 2>&1 </dev/null
  # Start the system processes now, with their output on /dev/null.
  wine cmd /c exit >/dev/null 2>&1 </dev/null
  return 0
}

wine_env_prefix() {
  wine_env_down
  wine_env_vars
  rm -rf "$1"
  mkdir -p "$(dirname "$1")"
  export WINEPREFIX=$1
  KX_WINE_RUNNING=$1
  wineserver -p >/dev/null 2>&1 </dev/null
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
  wine cmd /c exit >/dev/null 2>&1 </dev/null
  return 0
}

wine_env_copy() {
  local src=$1 dst=$2 sys=drive_c/windows/system32
  wine_env_down
  rm -rf "$dst"
  mkdir -p "$dst"
  tar -C "$src" --exclude="./$sys" --exclude=./wineserver -cf - . | tar -C "$dst" -xf -
  cp -al "$src/$sys" "$dst/$sys"
  wine_env_use "$dst"
}

wine_env_start() {
  local dir=$1
  mkdir -p "$dir"
  wine_env_display || return 1
  # KX_KEEP_PREFIX=1 reuses a prefix made by an earlier run (for quick rounds while developing);
  # the test command always makes a fresh one.
  if [ "${KX_KEEP_PREFIX:-0}" = 1 ] && [ -f "$dir/prefix/system.reg" ]; then
    wine_env_use "$dir/prefix"
  else
    wine_env_prefix "$dir/prefix"
  fi
}

wine_env_down() {
  if [ -n "$KX_WINE_RUNNING" ] && [ -d "$KX_WINE_RUNNING" ]; then
    WINEPREFIX=$KX_WINE_RUNNING wineserver -k >/dev/null 2>&1 </dev/null || true
  fi
  KX_WINE_RUNNING=""
  return 0
}

wine_env_stop() {
  wine_env_down
  if [ -n "$KX_XVFB_PID" ]; then
    kill "$KX_XVFB_PID" >/dev/null 2>&1 || true
    wait "$KX_XVFB_PID" 2>/dev/null || true
    KX_XVFB_PID=""
  fi
}
