#!/usr/bin/env bash
# make-medium.sh MKMEDIUM WINBUILD OUT: builds the demo medium.
#   OUT/payload   the tree that is installed (sample libraries and designs, the suite programs)
#   OUT/medium    the medium on 1.44 MB "floppies" DISK1, DISK2, ... (packed)
#   OUT/cd        the same disks merged into one directory, as on a CD: no disk is asked for
set -eu
mkmedium=$1 win=$2 out=$3
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$out/payload" "$out/medium" "$out/cd"
mkdir -p "$out/payload/EXE" "$out/payload/PRIKLADY"
cp -r "$here/payload/." "$out/payload/"
cp "$win/tools/KORV5.exe" "$out/payload/EXE/KORV5.EXE"
cp "$win/tools/CONFIG.exe" "$out/payload/EXE/CONFIG.EXE"
cp "$win/tools/UNINSTAL.exe" "$out/payload/EXE/UNINSTAL.EXE"
# Two sample designs: the 80-byte design header, then a little text.
design() {
  { printf 'KX900 Design file \r\n'; head -c 60 /dev/zero; printf '%s\r\n' "$2"; } >"$out/payload/PRIKLADY/$1"
}
design ZESIL.D32 "NAVRH Zesilovac 2x10W; SOUCASTKY 42; SPOJE 117"
design NAPAJEC.D32 "NAVRH Zdroj 5V/1A; SOUCASTKY 9; SPOJE 21"
iconv -f UTF-8 -t CP1250 "$here/README.TXT" | sed 's/$/\r/' >"$out/README.TXT"
"$mkmedium" --packed --level 9 --capacity 600000 --title "KORVEX 5.003-016 (ukázkové médium)" \
  --descriptions "$here/popisy.txt" --readme "$out/README.TXT" --setup "$win/installer/SETUP.exe" \
  "$out/payload" "$out/medium" >"$out/mkmedium.txt"
mkdir -p "$out/cd"
for d in "$out"/medium/DISK*; do cp "$d"/* "$out/cd/"; done
