#!/usr/bin/env bash
# The shell shows KORV5.EXE's icons 10, 11 and 12 for design and library files: the three file
# types are registered as an install registers them (what the prefix had is put back after),
# Wine's explorer opens a folder with one file of each type, and the screen is taken
# (shell-icons.png in the current directory, kept for the eye). Each icon's own colour (the design sheet's, the symbol
# library's green, the footprint library's brown) must be on the screen.
#   shell_icons.sh KORV5.exe        (under tests/wine-ctest.sh: WINEPREFIX and DISPLAY set)
set -u
korv5=$1
drive=$WINEPREFIX/drive_c
rm -rf "$drive/KXICONS" && mkdir -p "$drive/KXICONS/EXE" "$drive/KXICONS/Navrhy"
cp "$korv5" "$drive/KXICONS/EXE/KORV5.EXE"
touch "$drive/KXICONS/Navrhy/zesilovac.d32" "$drive/KXICONS/Navrhy/znacky.s32" \
      "$drive/KXICONS/Navrhy/patice.l32"
classes='HKCR'
keys=".d32 .s32 .l32 d32_file s32_file l32_file"
for key in $keys; do
  wine reg export "$classes\\$key" "C:\\KXICONS\\$key.reg" /y >/dev/null 2>&1 </dev/null
  wine reg delete "$classes\\$key" /f >/dev/null 2>&1 </dev/null
done
for t in d:10 s:11 l:12; do
  x=${t%%:*}
  wine reg add "$classes\\.${x}32" /ve /d "${x}32_file" /f >/dev/null 2>&1 </dev/null
  wine reg add "$classes\\${x}32_file\\DefaultIcon" /ve /d "C:\\KXICONS\\EXE\\KORV5.EXE,-${t##*:}" \
       /f >/dev/null 2>&1 </dev/null
done
wine explorer '/root,C:\KXICONS\Navrhy' >/dev/null 2>&1 </dev/null &
# Screens are taken until the three icons are on one (or 40 s have passed).
count() {
  convert shell-icons.png -fuzz 5% -fill black +opaque "$1" -fill white -opaque "$1" \
          -format '%[fx:round(mean*w*h)]' info: 2>/dev/null || echo 0
}
colours="design:#fff0b0 symbols:#2f8a4a footprints:#b05a1a"
for i in $(seq 1 40); do
  sleep 1
  import -display "$DISPLAY" -window root shell-icons.png
  missing=0
  for colour in $colours; do [ "$(count "${colour#*:}")" -ge 40 ] || missing=1; done
  [ $missing = 0 ] && break
done
kill %1 2>/dev/null; wait
for key in $keys; do
  wine reg delete "$classes\\$key" /f >/dev/null 2>&1 </dev/null
  [ -f "$drive/KXICONS/$key.reg" ] && wine reg import "C:\\KXICONS\\$key.reg" >/dev/null 2>&1 </dev/null
done
rm -rf "$drive/KXICONS"
failed=0
for colour in $colours; do
  n=$(count "${colour#*:}")
  echo "${colour%%:*} icon (${colour#*:}): $n pixels"
  [ "$n" -ge 40 ] || { echo "FAILED: the ${colour%%:*} icon is not on the screen"; failed=1; }
done
exit $failed
