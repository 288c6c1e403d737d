#!/usr/bin/env bash
# run.sh SCENARIO | --prefix | --list: one end-to-end scenario of the installer under Wine (the
# rows of the table below with that name, in order); the pristine prefix every scenario copies
# (CTest's fixture E2E.Prefix); the scenarios' names.
#
# A row is one run of a program under Wine:  scenario | medium | prefix | prep | robot | exit | checks
#   medium  PAYLOAD [mkmedium options] [bare]: the tree payload_PAYLOAD (below) made a medium with
#           README.TXT and descriptions (bare: without); "demo" the demo medium; "=" or "-" the
#           row before's. Sets P (payload), M (medium), M1 (its first disk), SRC (the source field).
#   prefix  "quick" a fresh copy of the pristine prefix with a quick-launch folder, "plain" one
#           without (both set TARGET to C:\KORV5\), "-" the running one.
#   prep    shell commands: damages to apply, files to put in place (ROBOT_LC=LOCALE: the robot
#           and the program under another locale, C.UTF-8 for code page 1252); "-" none.
#   robot   PIECE+PIECE... [NAME=VALUE]...: the robot on tests/e2e/PIECE.kxr joined (@PIECE: made
#           by prep in $sdir) with SETUP, SOURCE, TARGET, UNINSTAL, QUICK/QUICKBOX (the quick-launch
#           box at the start and after a failure), URL and the values given (also shell
#           variables for the checks); or !PROGRAM ARGS...: that program run under Wine.
#           $RUNLOG names the row's log file for a /LOG= switch (the checks logged, logged_files).
#   exit    the exit code expected of the robot or the program.
#   checks  items separated by ";": a shell check below (lower case), or SUITE... [NAME=VALUE]...:
#           suites of kx_e2e_check (checks.cpp) with KX_E2E_NAME=VALUE in the environment.
# prep, robot and checks are evaluated by the shell when the row runs.
#
# Everything lands in WORK/SCENARIO (a passed scenario keeps its logs only); exit 0 when every
# step passed. KX_E2E_WIN: the Windows build (default build/e2e-win), KX_E2E_MKMEDIUM: the
# native mkmedium (default: build/host's), KX_E2E_WORK: the work directory (WIN/tests/e2e),
# DISPLAY or KX_DISPLAY: an X display to use.
set -u
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
win=${KX_E2E_WIN:-$root/build/e2e-win}
work=${KX_E2E_WORK:-$win/tests/e2e}
robot_exe=$win/tools/kxrobot.exe
check_exe=$win/tests/e2e/kx_e2e_check.exe
setup_exe=$win/installer/SETUP.exe
mkmedium=${KX_E2E_MKMEDIUM:-}
for m in "$root/build/host/tools/mkmedium" "$root/build/e2e-host/tools/mkmedium"; do
  [ -n "$mkmedium" ] || { [ -x "$m" ] && mkmedium=$m; }
done
source "$root/cmake/wine-env.sh"
export KX_DISPLAY=${KX_DISPLAY:-${DISPLAY:-}}
export TITLE="Instalace návrhového systému pro elektroniku KORVEX"

scenarios() {
  cat <<'EOF'
fresh_packed   | full --flat --packed --level 9 | quick | - | open+install+target+done | 0 | snapshot dialog; Install
# The same medium very silent in a fresh prefix: no window shows, the prefix ends as the dialog
# left it, the log names every file. The uninstaller's silent mode then leaves nothing.
fresh_packed   | = | quick | snapshot before; watch | !"$M1/SETUP.EXE" /VERYSILENT "/LOG=$RUNLOG" | 0
               | windows none; snapshot silent; compare silent 0 dialog; logged_files; Install
fresh_packed   | = | - | design | !'C:\KORV5\EXE\UNINSTAL.EXE' /SILENT "/LOG=$RUNLOG" | 0 | restart; snapshot after; compare after 0
fresh_plain    | full --flat --plain | plain | - | open+install+target+done | 0 | snapshot dialog; Install
fresh_plain    | = | plain | watch | !"$M1/SETUP.EXE" /SILENT "/LOG=$RUNLOG" | 0
               | windows shown; snapshot silent; compare silent 0 dialog; logged_files; Install
# A signed medium shipped as a CD image, installed from drive D: of type cdrom; the installed
# KORV5.EXE carries a signature that verifies against the throwaway certificate.
cdrom_signed   | signed --packed --sign "sh $sdir/ca/sign.sh {}" --iso "$sdir/korvex.iso" | quick | cd_drive
               | open+install+target+done SETUP='D:\SETUP.EXE' SOURCE='D:\' | 0 | Install; signature
# Floppies: the source directory holds one disk at a time, the robot changes them.
floppies       | floppies --packed --capacity $(capacity 1600000) | quick | floppy_disks
               | open+floppies+@disks+done SETUP="$sdir/setup/SETUP.EXE" FLOPPY="$FLOPPY" DISKS="$(winpath "$M")" | 0 | Install
missing_file   | full --flat --plain | quick | rm "$M/DATA.BIN"
               | open+target+missing+done MISSING="${SRC}DATA.BIN" ANSWER='&Ano' | 0 | Install SKIP=DATA.BIN
missing_file   | = | plain | - | open+target+missing+failed MISSING="${SRC}DATA.BIN" ANSWER='&Ne' | 0 | Stopped STOP=DATA.BIN INSTLIST=lines
alternatives   | alternatives --flat --packed | quick | - | open+install+target+done | 0 | Install
existing       | large --flat --packed --level 1 | quick | old_file | open+target+overwrite_no+failed | 0 | Stopped INSTLIST=none FOREIGN=DATA.BIN EXISTING=DATA.BIN
existing       | = | quick | old_file | open+target+abort+failed | 0 | Abort
# The space check on a drive D: of its own: one cluster short, then exactly enough.
disk_space     | - | quick | space short | open+target+box+failed TARGET='D:\KORV5\' BOX="Málo místa na disku, je třeba $NEED B" | 0 | Stopped INSTLIST=none
disk_space     | - | quick | space enough | open+install+target+done TARGET='D:\KORV5\' | 0 | Install
# An earlier installation in the target: UNINST.LST alone is none; then a complete one.
previous       | full --flat --packed | quick | old_list | open+install+target+done | 0 | Install APPENDED=1 SAVED="$(winpath "$sdir/old.lst")"
previous       | = | - | other_libraries | open+target+previous+take+overwrite+done REMOVE='&Ano' TAKE='&Ano' | 0 | Install LIBROOT='E:\JINAM\' NAVRHY='E:\JINAM\Navrhy'
previous       | = | - | - | open+target+previous+take+overwrite+done REMOVE='&Ano' TAKE='&Ne' | 0 | Install
previous       | = | - | cp "$C/KORV5/UNINST.LST" "$sdir/kept.lst" | open+target+previous+failed REMOVE='&Ne' | 0 | PreviousKept SAVED="$(winpath "$sdir/kept.lst")"
previous       | = | - | cp "$win/tests/e2e/kx_e2e_stub1.exe" "$C/KORV5/EXE/UNINSTAL.EXE"
               | open+target+previous+take+box+failed REMOVE='&Ano' TAKE='&Ne' BOX="Chyba při spuštění odinstalačního programu KORVEX" | 0 | PreviousKept Ran SAVED="$(winpath "$sdir/kept.lst")" RAN='EXE\UNINSTAL.EXE' ARGS=-r
bad_target     | full --flat --plain | plain | rm -f "$WINEPREFIX/dosdevices/q:" | open+bad_target+failed | 0 | absent 'C:\KORV5'
# HTML Help turned off for the run: with and without the help package; a main program that
# ends with 1 on "$f".
html_help      | full --flat --packed | quick | hhctrl d | open+target+help_notice+done TARGET='C:\A\KORV5\' NOTICE="$help_missing" | 0 | Install
html_help      | helppack --flat --packed | - | - | open+target+help+help_notice+done TARGET='C:\B\KORV5\' HELP='&Ne' NOTICE="$help_later" | 0 | -
html_help      | = | - | - | open+target+help+done TARGET='C:\C\KORV5\' HELP='&Ano' | 0 | Install Ran RAN='hhlppack\hhupd.exe'
html_help      | mainfails --flat --packed | - | hhctrl b | open+target+main_fails+done TARGET='C:\D\KORV5\' | 0 | Install Ran PFU=0 RAN='EXE\KORV5.EXE' ARGS='$f'
uninstall      | full --flat --packed | quick | - | open+install+target+done | 0 | -
uninstall      | = | - | design | uninstall | 0 | restart; Removed SAVED="$(winpath "$sdir/installed.lst")" DESIGN=MUJ.D32
# Bad media: lists shorter than their header, records that would leave the target, all in
# one run of SETUP; then stored files that are garbage, cut short, empty, a directory; a bad
# disk file; a count past the records.
badmedia       | small --flat --plain | plain | badmedia_script | open+@badmedia | 0 | badmedia_untouched
badmedia_packed | full --flat --packed | quick | variant 1; head -c 5000 /dev/urandom >"$M/$DATA"
               | open+target+box+done TARGET='C:\P1\' BOX="$unzip_error" | 0 | absent 'C:\P1\DATA.BIN'; recorded 'C:\P1\'
badmedia_packed | = | - | variant 2; head -c 1000 "$BASE/$DATA" >"$M/$DATA"
               | open+target+box+done TARGET='C:\P2\' BOX="$unzip_short" | 0 | absent 'C:\P2\DATA.BIN'; recorded 'C:\P2\'
badmedia_packed | = | - | variant 3; : >"$M/$DATA" | open+target+box+done TARGET='C:\P3\' BOX="$unzip_short" | 0 | absent 'C:\P3\DATA.BIN'; recorded 'C:\P3\'
badmedia_packed | = | - | variant 4; rm "$M/$DATA"; mkdir "$M/$DATA"
               | open+target+box+box2+failed TARGET='C:\P4\' BOX="Nelze otevřít soubor $SRC$DATA" BOX2="Chyba při kopírování souboru $SRC$DATA" | 0 | absent 'C:\P4\DATA.BIN'; recorded 'C:\P4\'
badmedia_packed | = | - | variant 5; printf 'DISK: 1\r\n\001\377 smeti\r\n' >"$M/A.KORV"
               | open+target+box+failed TARGET='C:\P5\' BOX="Neznámé klíčové slovo v souboru ${SRC}A.KORV" | 0 | absent 'C:\P5\DATA.BIN'; recorded 'C:\P5\'
badmedia_packed | = | - | variant 6; edit count=$(($(list_count "$M") + 50))
               | open+target+done TARGET='C:\P6\' | 0 | present 'C:\P6\DATA.BIN' 'C:\P6\EXE\KORV5.EXE'; recorded 'C:\P6\'
# Bad inputs: fields without their zero, refused records, a decompression bomb, an earlier
# SYSTEM.WCO that is no configuration file.
badinput       | names --flat --plain bare | quick | names_damage | open+target+done | 0 | Install
badinput       | refused --flat --plain bare | plain | refused_script | open+@refused | 0 | refused_untouched
badinput       | bomb --flat --packed bare | quick | bomb | open+target+box+done BOX="$unzip_short" | 0 | Bomb SAVED="$(winpath "$sdir/petkrat.plain")"; recorded 'C:\KORV5\'
badinput       | wco --flat --packed bare | quick | earlier random | open+target+previous+overwrite+done REMOVE='&Ano' TARGET='C:\W-random\' | 0 | Install Ran RAN='EXE\UNINSTAL.EXE' ARGS=-r
badinput       | = | - | earlier longline | open+target+previous+overwrite+done REMOVE='&Ano' TARGET='C:\W-longline\' | 0 | Install Ran RAN='EXE\UNINSTAL.EXE' ARGS=-r
badinput       | = | - | earlier empty | open+target+previous+overwrite+done REMOVE='&Ano' TARGET='C:\W-empty\' | 0 | Install Ran RAN='EXE\UNINSTAL.EXE' ARGS=-r
badinput       | = | - | earlier outside | open+target+previous+overwrite+done REMOVE='&Ano' TARGET='C:\W-outside\' | 0 | Install Ran RAN='EXE\UNINSTAL.EXE' ARGS=-r
# Faults: D: (a tmpfs of 8 MB) fills up in a copy of a file declared small, plain and packed;
# a read-only drive E:, a read-only directory in D:; the source disk taken away, or cut. Each
# partial install is then taken away by its uninstaller.
faults         | big --flat --plain | plain | drives; edit VELKY.BIN:size=1000
               | open+source+target+faults_plain+failed TARGET='D:\KORV5\' | 0 | Stopped FaultCut STOP=VELKY.BIN AHEAD=VELKY.BIN INSTLIST=any CUT=VELKY.BIN
faults         | = | - | keep_list | uninstall | 0 | restart; Removed SAVED="$SAVED"
faults         | zeros --flat --packed | - | drives clear; edit VELKY.BIN:size=1000
               | open+source+target+faults_packed+failed TARGET='D:\KORV5\' | 0 | Stopped STOP=VELKY.BIN AHEAD='VELKY.BI_,VELKY.BIN,ZBYTEK.TX_' INSTLIST=any
faults         | = | - | keep_list | uninstall | 0 | restart; Removed SAVED="$SAVED"
faults         | slib --flat --plain | - | drives readonly | open+source+target+box+failed TARGET='E:\KORV5\' BOX='Nelze vytvořit adresář KORV5 na disku E:\KORV5\' | 0 | untouched "$sdir/drive-e"
faults         | = | - | drives clear; readonly_slib
               | open+source+target+box+box2+failed TARGET='D:\KORV5\' BOX="Nelze otevřít soubor D:\KORV5\SLIB\\${first[0]}" BOX2="Chyba při kopírování souboru $SRC${first[1]}" | 0 | Stopped STOP="${first[0]}" INSTLIST=lines FOREIGN=SLIB
faults         | = | - | keep_list | uninstall | 0 | restart; Removed SAVED="$SAVED" FOREIGN=SLIB
faults         | disks --packed --capacity $(capacity 450000) | - | floppy_source gone
               | open+source+target+faults_gone+failed SETUP="$sdir/setup/SETUP.EXE" SOURCE="$FLOPPY" FLOPPY="$FLOPPY" TARGET='C:\Fgone\' | 0 | Stopped STOP="${second[0]}" INSTLIST=lines
faults         | = | - | keep_list | uninstall | 0 | restart; Removed SAVED="$SAVED"
faults         | = | - | floppy_source cut
               | open+source+target+faults_cut+failed SETUP="$sdir/setup/SETUP.EXE" SOURCE="$FLOPPY" FLOPPY="$FLOPPY" TARGET='C:\Fcut\' SECOND="${second[1]}" DISKS="$(winpath "$M")" | 0 | Stopped STOP="${second[0]}" INSTLIST=lines
faults         | = | - | keep_list | uninstall | 0 | restart; Removed SAVED="$SAVED"
# A target with Czech letters that code page 1252 lacks, installed under the ANSI code page 1250
# and again in a fresh prefix under 1252 (C.UTF-8: an English Windows): the same names on disk,
# registry values (read as UTF-16) and shortcuts both times.
czech_target   | full --flat --packed | quick | - | open+install+target+done TARGET='C:\Návrhové systémy\Věda\KORV5\' | 0
               | present 'C:\Návrhové systémy\Věda\KORV5\EXE'; Install
czech_target   | = | quick | ROBOT_LC=C.UTF-8 | open+install+target+done TARGET='C:\Návrhové systémy\Věda\KORV5\' | 0
               | present 'C:\Návrhové systémy\Věda\KORV5\EXE'; Install
# The round trip: the prefix after install, a saved design and the uninstall equals the one
# before but for the design.
roundtrip      | demo | quick | snapshot before | open+install+target+done | 0 | design; snapshot installed; compare installed 1
roundtrip      | - | - | - | uninstall | 0 | restart; snapshot after; compare after 0
# A log that cannot be written (no such directory) is no failure. An earlier installation
# replaced very silently, its configuration taken over or not; the new uninstaller stays after
# the next start of Windows. A file held open during a silent uninstall; an earlier uninstaller
# that fails (4).
unattended     | full --flat --packed | quick | - | !"$M1/SETUP.EXE" /VERYSILENT "/LOG=$(winpath "$sdir/chybi")\\x.log" | 0 | Install
unattended     | = | - | other_libraries | !"$M1/SETUP.EXE" /VERYSILENT /KEEPCONFIG=1 "/LOG=$RUNLOG" | 0
               | restart; Install LIBROOT='E:\JINAM\' NAVRHY='E:\JINAM\Navrhy'
unattended     | = | - | other_libraries | !"$M1/SETUP.EXE" /VERYSILENT /KEEPCONFIG=0 "/LOG=$RUNLOG" | 0 | restart; Install
unattended     | = | - | hold 'C:\KORV5\DATA.BIN' | !'C:\KORV5\EXE\UNINSTAL.EXE' /SILENT "/LOG=$RUNLOG" | 3
               | release; logged 'Nelze smazat C:\KORV5\DATA.BIN: soubor je používán jiným programem'
unattended     | = | - | cp "$win/tests/e2e/kx_e2e_stub1.exe" "$C/KORV5/EXE/UNINSTAL.EXE" | !"$M1/SETUP.EXE" /VERYSILENT "/LOG=$RUNLOG" | 4
               | logged 'Chyba při spuštění odinstalačního programu KORVEX'
# Exit codes: a question declined in the dialog started with a switch (2); malformed switches
# (1, nothing written; the reason in a box unless very silent); a damaged packed file (7); a
# full target disk (the faults' D:); a floppy set without disk 2 (5).
unattended_faults | full --flat --packed | quick | old_file; switched
               | @open_s+target+overwrite_no+@failed_s ARG1="/LOG=$RUNLOG" ARG2="/SOURCE=$(winpath "$M1")\\" SOURCE="$(winpath "$M1")\\" | 0
               | Stopped INSTLIST=none FOREIGN=DATA.BIN EXISTING=DATA.BIN
unattended_faults | = | quick | snapshot before | refused | 0 | bad_switches; snapshot after; compare after 0
unattended_faults | = | - | - | !"$M1/SETUP.EXE" /HELP | 0 | helped
unattended_faults | = | - | variant 1; head -c 5000 /dev/urandom >"$M/$DATA" | !"$M1/SETUP.EXE" /VERYSILENT "/LOG=$RUNLOG" '/DIR=C:\Program Files\KORV5' | 7
               | logged "$unzip_error"; recorded 'C:\Program Files\KORV5\'; present 'C:\Program Files\KORV5\EXE\KORV5.EXE'
unattended_faults | big --flat --plain | plain | drives; edit VELKY.BIN:size=1000 | !"$M1/SETUP.EXE" /VERYSILENT '/DIR=D:\KORV5\' "/LOG=$RUNLOG" | 6
               | logged 'plný disk'; Stopped STOP=VELKY.BIN AHEAD=VELKY.BIN INSTLIST=any TARGET='D:\KORV5\'
unattended_faults | floppies --packed --capacity $(capacity 1600000) | - | floppy_source | !"$sdir/setup/SETUP.EXE" /VERYSILENT "/SOURCE=$FLOPPY" "/LOG=$RUNLOG" | 5
               | logged 'Vlož DISK2'
# The guarded memory mode over a whole install: the log MMBIN.MM in the current directory.
guarded_memory | full --flat --packed | quick | memory_script | @open_m+install+target+done | 0 | present 'C:\KORV5\EXE\KORV5.EXE'; memory_log; MemoryLog SAVED="$(winpath "$sdir/cwd/MMBIN.MM")"
EOF
}

help_missing="Nebyla nalezena knihovna HHCTRL.OCX. Pro práci s nápovědou je třeba nainstalovat aplikaci HTML HELP (Microsoft). "
help_later="Do systému je třeba doinstalovat aplikaci HTML HELP (Microsoft). "
unzip_error="Komprese/dekomprese dat - chyba ve vstupních datech"
unzip_short="Komprese/dekomprese dat - nepostačující buffer"
bad_list="Chybná cesta/soubor nenalezen: DISKLIST.LST"
bad_record="Chybný záznam v seznamu souborů: "

failures=0
step=0
cleanups=()
say() { printf '%s\n' "$*"; }
fail() { say "E2E FAILED: $*"; failures=$((failures + 1)); }
winpath() { local p=$1; p=${p//\//\\}; printf 'Z:%s' "$p"; }
# The source field shows the program's own directory, upper-cased, with a trailing "\".
source_of() { printf '%s\\' "$(winpath "$1" | tr 'a-z' 'A-Z')"; }
# unix_of C:\X\Y: the path in the running prefix.
unix_of() { local p=${1#?:}; p=${p//\\//}; printf '%s/dosdevices/%s%s' "$WINEPREFIX" "$(printf '%s' "${1:0:1}" | tr 'A-Z' 'a-z'):" "$p"; }
trim() { local v=$2; v=${v#"${v%%[![:space:]]*}"}; printf -v "$1" '%s' "${v%"${v##*[![:space:]]}"}"; }

cleanup() {
  wine_env_down
  local i
  for ((i = ${#cleanups[@]} - 1; i >= 0; i--)); do eval "${cleanups[i]}"; done
  cleanups=()
  wine_env_stop
}
trap cleanup EXIT

# ---- payloads and media ----------------------------------------------------------------------

programs() { mkdir -p "$1/EXE" && for p in KORV5 CONFIG UNINSTAL; do cp "$win/tools/$p.exe" "$1/EXE/$p.EXE"; done; }

# The installed tree: the suite's programs, libraries in subdirectories, files in the target
# directory (random binary, an empty one, one of exactly 4096 bytes).
payload_full() {
  programs "$1"
  cp -r "$root"/tools/demo/payload/{SLIB,LLIB,MLIB,ELIB} "$1/"
  head -c 300000 /dev/urandom >"$1/DATA.BIN"
  head -c 4096 /dev/zero | tr '\0' 'K' >"$1/CLUSTER.BIN"
  : >"$1/PRÁZDNÝ.TXT"
}
# The real main program with a tail of its own: each copy can be told apart and runs.
payload_alternatives() {
  payload_full "$1" && { cat "$win/tools/KORV5.exe"; printf 'KVWALL'; } >"$1/EXE/KVWALL.EXE" &&
    { cat "$win/tools/KORV5.exe"; printf 'kvwpp'; } >"$1/EXE/kvwpp.exe"
}
payload_large() { payload_full "$1" && for i in $(seq -w 1 40); do head -c 1500000 /dev/urandom >"$1/SLIB/VELKY$i.S32"; done; }
payload_floppies() { payload_full "$1" && for i in 1 2 3; do head -c 1500000 /dev/urandom >"$1/MLIB/VELKY$i.LIB"; done; }
# The programs signed with a throwaway certificate as mkmedium --sign packs them; the signer
# also puts each signed copy into the expected payload $sdir/signed (its path after /tree/).
payload_signed() {
  payload_full "$1" && cp -r "$1" "$sdir/signed" && mkdir -p "$sdir/ca" || return 1
  openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=KORVEX test" -keyout "$sdir/ca/key.pem" \
    -out "$sdir/ca/cert.pem" >"$sdir/ca/openssl.txt" 2>&1 || return 1
  printf '%s\n' "osslsigncode sign -certs '$sdir/ca/cert.pem' -key '$sdir/ca/key.pem' -n KORVEX -in \"\$1\" -out \"\$1.s\" >/dev/null || exit 1" \
    'mv "$1.s" "$1" || exit 1' "case \$1 in */tree/*) cp \"\$1\" '$sdir/signed/'\"\${1#*/tree/}\" ;; esac" >"$sdir/ca/sign.sh"
}
payload_helppack() { payload_full "$1" && mkdir -p "$1/hhlppack" && cp "$win/tests/e2e/kx_e2e_stub0.exe" "$1/hhlppack/hhupd.exe"; }
payload_mainfails() { payload_full "$1" && cp "$win/tests/e2e/kx_e2e_stub1.exe" "$1/EXE/KORV5.EXE"; }
payload_small() { mkdir -p "$1/SUB" && for f in A.TXT B.TXT SUB/C.TXT; do printf 'soubor %s\r\n' "$f" >"$1/$f"; done; }
payload_names() {
  programs "$1" && mkdir -p "$1/ADRESAR_BEZ_NULY"
  for f in JMENO_BEZ_NULY.T ULOZENY_SOUBOR.B ADRESAR_BEZ_NULY/SOUBOR.TXT POPIS.TXT RIDICI.TXT; do printf '%s\r\n' "$f" >"$1/$f"; done
}
payload_refused() { programs "$1" && payload_small "$1" && rm "$1/B.TXT"; }
payload_bomb() { programs "$1" && head -c 20000 /dev/urandom >"$1/BOMBA.BIN" && head -c 20000 /dev/urandom >"$1/PETKRAT.BIN"; }
payload_wco() { programs "$1" && printf 'soubor\r\n' >"$1/A.TXT"; }
payload_big() { programs "$1" && head -c 12000000 /dev/urandom >"$1/VELKY.BIN" && printf 'zbytek\r\n' >"$1/ZBYTEK.TXT"; }
payload_zeros() { programs "$1" && head -c 12000000 /dev/zero >"$1/VELKY.BIN" && printf 'zbytek\r\n' >"$1/ZBYTEK.TXT"; }
payload_slib() { programs "$1" && rm "$1/EXE/CONFIG.EXE" && cp -r "$root"/tools/demo/payload/SLIB "$1/" && printf 'data\r\n' >"$1/DATA.TXT"; }
payload_disks() { programs "$1" && rm "$1/EXE/CONFIG.EXE" && head -c 400000 /dev/urandom >"$1/VELKY1.BIN" && head -c 400000 /dev/urandom >"$1/VELKY2.BIN"; }

# capacity BYTES: a disk that holds SETUP.EXE and BYTES more.
capacity() { echo $(($(stat -c %s "$setup_exe") + $1)); }

# The descriptions of the payload's files (mkmedium refuses a line for a file that is not there).
descriptions() {
  local path text
  while IFS=$'\t' read -r path text; do
    [ -f "$2/${path//\\//}" ] && printf '%s\t%s\n' "$path" "$text"
  done >"$1" <<'EOF'
EXE\KORV5.EXE	Hlavní program systému KORVEX – návrhový systém
EXE\CONFIG.EXE	Konfigurace systému KORVEX
EXE\UNINSTAL.EXE	Odinstalace systému KORVEX
SLIB\ZAKLAD.S32	Knihovna značek - základní součástky
LLIB\SMD.L32	Knihovna patic - SMD
DATA.BIN	Data: náhodné bajty, nestlačitelné
CLUSTER.BIN	Právě 4096 bajtů
PRÁZDNÝ.TXT	Prázdný soubor (0 B) s českým jménem
EXE\KVWALL.EXE	Varianta hlavního programu (vše)
EXE\kvwpp.exe	Varianta hlavního programu (PP), malými písmeny
hhlppack\hhupd.exe	Instalace HTML Help
EOF
}

# medium RECIPE: the row's medium (see the table's head).
media=0
medium() {
  media=$((media + 1))
  P=$sdir/payload$media M=$sdir/medium$media
  local kind options=() bare=0 w
  eval "set -- $1"
  kind=$1
  shift
  for w in "$@"; do if [ "$w" = bare ]; then bare=1; else options+=("$w"); fi; done
  if [ "$kind" = demo ]; then
    bash "$root/tools/demo/make-medium.sh" "$mkmedium" "$win" "$sdir/demo" >"$M.log" 2>&1 || { cat "$M.log"; return 1; }
    P=$sdir/demo/payload M=$sdir/demo/cd
  else
    mkdir -p "$P"
    "payload_$kind" "$P" || return 1
    if [ $bare = 0 ]; then
      descriptions "$sdir/popisy.txt" "$P"
      iconv -f UTF-8 -t CP1250 "$root/tools/demo/README.TXT" | sed 's/$/\r/' >"$sdir/README.TXT"
      options+=(--readme "$sdir/README.TXT" --descriptions "$sdir/popisy.txt")
    fi
    "$mkmedium" --setup "$setup_exe" "${options[@]}" "$P" "$M" >"$M.log" 2>&1 || { cat "$M.log"; return 1; }
    # Every medium made here passes the builder's own check before a scenario damages it.
    "$mkmedium" --verify "$M" >>"$M.log" 2>&1 || { cat "$M.log"; return 1; }
  fi
  BASE=$M
  point_at "$M"
}

point_at() {
  M=$1 M1=$1
  [ -d "$M/DISK1" ] && M1=$M/DISK1
  SRC=$(source_of "$M1")
  DATA=$(list_records "$M1" | awk -F'\t' '$1 == "DATA.BIN" { print $2 }')
}

# variant N: a copy of the row's first medium as medium mN, to be damaged.
variant() { rm -rf "$sdir/m$1" && cp -r "$BASE" "$sdir/m$1" && point_at "$sdir/m$1"; }

# list_records DIR: the records of DIR's DISKLIST.LST, one a line: name, stored, directory,
# size, disk (tab-separated, as mkmedium --list shows them).
list_records() {
  "$mkmedium" --list "$1" | awk '
    /^record / { if (n) print r; n = 1; r = "" }
    /^  (name|stored|directory|size|disk) / { v = substr($0, 15); gsub(/^"|"$/, "", v); if ($1 == "disk") sub(/ .*/, "", v)
      r = r (r == "" ? "" : "\t") v }
    END { if (n) print r }'
}
list_count() { "$mkmedium" --list "$1" | awk '$1 == "count" { print $2 }'; }
edit() { "$mkmedium" --edit "$M1/DISKLIST.LST" "$@"; }

# ---- prefix, robot, checks -------------------------------------------------------------------

fresh_prefix() {
  wine_env_copy "$work/pristine" "$sdir/prefix$step" || return 1
  TARGET='C:\KORV5\'  # until a row sets another
  C=$WINEPREFIX/drive_c
  APPDATA=$(ls -d "$C"/users/*/AppData/Roaming | grep -v /Public/ | head -1)
  if [ "$1" = quick ]; then
    mkdir -p "$APPDATA/Microsoft/Internet Explorer/Quick Launch"
    QUICK=checked QUICKBOX=enabled KX_QUICK=1
  else
    QUICK=disabled QUICKBOX=disabled KX_QUICK=0
  fi
}

# The maker's web address in the help notices is a setting of the product.
help_url() { grep -ho 'http[s]*://[^" ]*' "$root"/installer/inst*.cpp 2>/dev/null | head -1; }

robot() {
  local spec=$1 expected=$2 log=$sdir/$step-robot.txt rc piece script=$sdir/$step.kxr
  eval "set -- $spec"
  if [ "${1:0:1}" = '!' ]; then
    local program=${1:1}
    shift
    (cd "${RUN_DIR:-$sdir}" && wine "$program" "$@" >"$log" 2>&1 </dev/null)
    rc=$?
  else
    : >"$script"
    local IFS=+
    for piece in $1; do
      case $piece in @*) cat "$sdir/${piece:1}.kxr" ;; *) cat "$here/$piece.kxr" ;; esac
    done >>"$script"
    unset IFS
    shift
    local a more=()
    for a in "$@"; do
      printf -v "${a%%=*}" '%s' "${a#*=}"
      case ${a%%=*} in SETUP|SOURCE|TARGET|QUICK|QUICKBOX) ;; *) more+=("$a") ;; esac
    done
    (cd "${RUN_DIR:-$sdir}" && LC_ALL=$ROBOT_LC wine "$robot_exe" --timeout 30 "$script" SETUP="${SETUP:-$M1/SETUP.EXE}" \
      SOURCE="${SOURCE:-$SRC}" TARGET="$TARGET" UNINSTAL="${TARGET}EXE\\UNINSTAL.EXE" QUICK="$QUICK" \
      QUICKBOX="$QUICKBOX" URL="$(help_url)" "${more[@]}" "${ROBOT_ARGS[@]}" >"$log" 2>&1 </dev/null)
    rc=$?
  fi
  sed 's/^/   /' "$log"
  [ "$rc" = "$expected" ] || fail "step $step: exit $rc, not $expected (see $log)"
}

# check ITEM: a shell check (lower case) or suites of kx_e2e_check with their setting.
check() {
  eval "set -- $1"
  [ $# = 0 ] && return
  if declare -F "$1" >/dev/null && [ "${1,,}" = "$1" ]; then
    "$@"
    return
  fi
  local suites="" a log=$sdir/$step-check.txt
  (
    export KX_E2E_TARGET=$TARGET KX_E2E_PAYLOAD="$(winpath "$P")\\" KX_E2E_LIST="$(winpath "$M1")\\DISKLIST.LST"
    export KX_E2E_README="" KX_E2E_DESKTOP=1 KX_E2E_QUICK=$KX_QUICK
    [ -f "$M1/README.TXT" ] && export KX_E2E_README="$(winpath "$M1")\\README.TXT"
    for a in "$@"; do
      case $a in *=*) export "KX_E2E_$a" ;; *) suites+="${suites:+:}$a.*" ;; esac
    done
    wine "$check_exe" --gtest_filter="$suites" --gtest_color=no >"$log" 2>&1 </dev/null
    rc=$?
    grep -v '^\[ *\(RUN\|OK\) ' "$log" | sed 's/^/   /'
    grep -q '^\[  PASSED  \] [1-9]' "$log" || rc=1
    exit $rc
  ) || fail "step $step: checks $*, see $log"
}

row() {
  local scenario=$1 recipe=$2 prefix=$3 prep=$4 spec=$5 expected=$6 checks=$7 item
  step=$((step + 1))
  say "== $step: $spec"
  case $recipe in -|=) ;; *) medium "$recipe" || { fail "step $step: the medium $recipe"; return; } ;; esac
  case $prefix in -) ;; *) fresh_prefix "$prefix" || { fail "step $step: no prefix"; return; } ;; esac
  SETUP="" SOURCE="" RUN_DIR="" ROBOT_LC=$LC_ALL skip=0 ROBOT_ARGS=() RUNLOG=$(winpath "$sdir/$step.log")
  # A row that goes on from a row left out (same medium, same prefix) is left out too.
  [ "$recipe$prefix" = "=-" ] && [ "$skipped" = 1 ] && return
  skipped=0
  if [ "$prep" != - ]; then eval "$prep" || { fail "step $step: $prep"; return; }; fi
  if [ $skip = 1 ]; then skipped=1 && say "   left out" && return; fi
  robot "$spec" "$expected"
  local IFS=';'
  for item in $checks; do
    unset IFS
    [ "$item" = - ] || check "$item"
  done
}

# ---- shell checks ----------------------------------------------------------------------------

absent() { local p; for p in "$@"; do [ ! -e "$(unix_of "$p")" ] || fail "step $step: $p is there"; done; }
present() { local p; for p in "$@"; do [ -e "$(unix_of "$p")" ] || fail "step $step: $p is missing"; done; }
untouched() { [ -z "$(ls -A "$1")" ] || fail "step $step: $1 holds $(ls -A "$1")"; }
# The running uninstaller leaves itself to the next start of Windows.
restart() { wineboot -r >/dev/null 2>&1 </dev/null; }

# recorded C:\DIR\: every file under DIR (but UNINST.LST) is a record of its UNINST.LST.
recorded() {
  local dir list f
  dir=$(unix_of "$1")
  [ -d "$dir" ] || return 0
  list=$([ -f "$dir/UNINST.LST" ] && "$mkmedium" --uninstall-list "$dir/UNINST.LST" | cut -f2 | tr 'a-z' 'A-Z')
  while IFS= read -r f; do
    f="$1${f//\//\\}"
    grep -qxF "$(printf '%s' "$f" | tr 'a-z' 'A-Z')" <<<"$list" || fail "step $step: $f is not in UNINST.LST"
  done < <(cd "$dir" && find . -type f ! -name UNINST.LST | sed 's|^\./||')
}

# ---- preps -----------------------------------------------------------------------------------

floppy_disks() {
  [ -d "$M/DISK3" ] || { fail "the medium has fewer than three disks"; return 1; }
  # Disk 2 with the wrong number, and with an unknown keyword.
  cp -r "$M/DISK2" "$M/WRONG2" && printf 'DISK: 3\r\n' >"$M/WRONG2/B.KORV"
  cp -r "$M/DISK2" "$M/ODD2" && printf 'DISK: 2\r\nSVAZEK: KORVEX\r\n' >"$M/ODD2/B.KORV"
  floppy_source
  local d
  for d in $(ls -d "$M"/DISK* | sed 's/.*DISK//' | sort -n | tail -n +3); do
    printf '%s\n' "wait-box \"Oznámení\" \"Vlož DISK$d\" 300" "delete-file \"\${FLOPPY}*\"" \
      "copy-files \"\${DISKS}\\\\DISK$d\" \"\${FLOPPY}\"" "box \"Oznámení\" \"Vlož DISK$d\" answer \"&O.K.\""
  done >"$sdir/disks.kxr"
}

# floppy_source: SETUP.EXE alone in $sdir/setup, disk 1's files in the source directory FLOPPY.
floppy_source() {
  rm -rf "$sdir/setup" "$sdir/floppy" && mkdir -p "$sdir/setup" "$sdir/floppy"
  cp "$M/DISK1/SETUP.EXE" "$sdir/setup/" && cp "$M/DISK1"/* "$sdir/floppy/" && rm "$sdir/floppy/SETUP.EXE"
  FLOPPY="$(winpath "$sdir/floppy")\\"
  read -r -a second <<<"$(list_records "$M1" | awk -F'\t' '$5 == 2 { print $1, $2; exit }')"
}

# The CD image checked, unpacked to the directory that drive D: (a CD drive) shows.
cd_drive() {
  "$mkmedium" --verify "$sdir/korvex.iso" >"$sdir/verify.txt" 2>&1 || { cat "$sdir/verify.txt"; return 1; }
  xorriso -osirrox on -indev "$sdir/korvex.iso" -extract / "$sdir/cd" >"$sdir/xorriso.txt" 2>&1 || return 1
  cleanups+=("chmod -R u+w '$sdir/cd'")
  point_at "$sdir/cd" && P=$sdir/signed && ln -sfn "$sdir/cd" "$WINEPREFIX/dosdevices/d:" &&
    wine reg add 'HKLM\Software\Wine\Drives' /v d: /d cdrom /f >/dev/null 2>&1 </dev/null
}
signature() {
  osslsigncode verify -CAfile "$sdir/ca/cert.pem" -in "$(unix_of 'C:\KORV5\EXE\KORV5.EXE')" >"$sdir/signature.txt" 2>&1 ||
    fail "step $step: no good signature on the installed KORV5.EXE, see $sdir/signature.txt"
  grep -E '^(Signer|Signature verification)' "$sdir/signature.txt" | sed 's/^/   /'
}

old_file() { mkdir -p "$C/KORV5" && printf 'stary soubor\r\n' >"$C/KORV5/DATA.BIN"; }
old_list() { mkdir -p "$C/KORV5" && printf '0\tC:\\STARY.TXT\n' | "$mkmedium" --uninstall-write "$sdir/old.lst" && cp "$sdir/old.lst" "$C/KORV5/UNINST.LST"; }
# The earlier install's library paths point elsewhere and must stay when taken over.
other_libraries() {
  sed -i 's/^\(   schema_default_library_path *=  \).*/\1E:\\JINAM\\SLIB\\\r/;
          s/^\(   layout_default_library_path *=  \).*/\1E:\\JINAM\\LLIB\\\r/;
          s/^\(   edit_default_library_path *=  \).*/\1E:\\JINAM\\ELIB\\\r/;
          s/^\(   default_model_library_path *=  \).*/\1E:\\JINAM\\MLIB\\\r/;
          s/^\(   initial_directory *=  \).*/\1E:\\JINAM\\Navrhy\r/' "$C/KORV5/EXE/SYSTEM.WCO"
}
# hhctrl d|b: the HTML Help library turned off for the programs run from now on, or back.
hhctrl() {
  if [ "$1" = d ]; then WINEDLLOVERRIDES="$WINEDLLOVERRIDES;hhctrl.ocx=d"; else WINEDLLOVERRIDES=${WINEDLLOVERRIDES%;hhctrl.ocx=d}; fi
}
# design: the user saves a design in Navrhy (a copy kept in $sdir/design.d32); UNINST.LST kept.
design() {
  printf 'KX900 Design file \r\nmuj navrh\r\n' | tee "$sdir/design.d32" >"$C/KORV5/Navrhy/MUJ.D32" &&
    cp "$C/KORV5/UNINST.LST" "$sdir/installed.lst"
}
keep_list() { SAVED=$(winpath "$sdir/saved$step.lst") && cp "$(unix_of "${TARGET}UNINST.LST")" "$sdir/saved$step.lst"; }

# space short|enough: D: a private tmpfs of 64 MB; the fillers' declared sizes ask for one
# cluster more than is free (short), or for all that is free with UNINST.LST and the copied list
# on the disk (enough: to within the pages the file layer may still buffer). Where no tmpfs
# can be mounted, D: is a directory on /dev/shm and only the short run is made, with a margin.
space() {
  local mnt=$sdir/drive-d
  if [ -z "${space_private:-}" ]; then
    mkdir -p "$mnt"
    if mount -t tmpfs -o size=64m tmpfs "$mnt" 2>/dev/null; then
      space_private=1
      cleanups+=("umount '$mnt' 2>/dev/null || umount -l '$mnt'")
    else
      space_private=0 mnt=/dev/shm/kx-e2e-$$
      cleanups+=("rm -rf '$mnt'")
      say "   no private tmpfs (mount refused): D: is $mnt, the boundary run is left out"
    fi
  fi
  [ $space_private = 0 ] && mnt=/dev/shm/kx-e2e-$$
  if [ $space_private = 0 ] && [ "$1" = enough ]; then skip=1; return 0; fi
  rm -rf "${mnt:?}"/* && mkdir -p "$mnt" && ln -sfn "$mnt" "$WINEPREFIX/dosdevices/d:"
  local cluster free
  read -r cluster free <<<"$(wine "$check_exe" --space D: 2>&1 </dev/null | tr -d '\r')"
  say "   drive D: cluster $cluster, free clusters $free"
  [ "$cluster" = 4096 ] || { fail "drive D: has clusters of $cluster bytes, not the page size"; return 1; }
  # Fillers whose declared sizes are set below.
  local per=1048576 reserve=$((1000000 / cluster)) n
  P=$sdir/payload-$1 M=$sdir/medium-$1
  rm -rf "$P" "$M" && programs "$P"
  for n in $(seq 1 $(((free - reserve) / per + 2))); do printf 'vypln %d\r\n' "$n" >"$P/VYPLN$n.BIN"; done
  "$mkmedium" --flat --plain --setup "$setup_exe" "$P" "$M" >"$M.log" 2>&1 || return 1
  point_at "$M"
  local count name size fixed=0 fillers=()
  count=$(list_count "$M")
  # The copied list (whole pages) and UNINST.LST's 6 records before the check.
  local list_pages=$(((92 + 140 * count + 4095) / 4096)) uninst_pages=$(((1028 * 6 + 4095) / 4096))
  local want=$((free - list_pages - uninst_pages - reserve))
  while IFS=$'\t' read -r name _ _ size _; do
    case $name in VYPLN*) fillers+=("$name") ;; *) fixed=$((fixed + size / cluster + 1)) ;; esac
  done < <(list_records "$M")
  want=$((want - fixed - ${#fillers[@]}))
  if [ "$1" = short ]; then want=$((want + uninst_pages + 1)); [ $space_private = 0 ] && want=$((want + 100000)); fi
  local edits=() bytes=0 k
  for name in "${fillers[@]}"; do
    k=$want
    [ $k -gt $((per - 1)) ] && k=$((per - 1))
    [ $k -lt 0 ] && k=0
    want=$((want - k))
    edits+=("$name:size=$((k * cluster))")
    bytes=$((bytes + (k + 1) * cluster))
  done
  [ $want = 0 ] || { fail "the declared sizes cannot ask for the clusters wanted ($want left)"; return 1; }
  edit "${edits[@]}" || return 1
  while IFS=$'\t' read -r name _ _ size _; do
    case $name in VYPLN*) ;; *) bytes=$((bytes + (size / cluster + 1) * cluster)) ;; esac
  done < <(list_records "$M")
  NEED=$(((bytes + 1000000) & 0xFFFFFFFF))
}

# attempt SCRIPT ID SOURCE TARGET BOX...: one more try in the running SETUP, appended to
# $sdir/SCRIPT.kxr: the source and target set, Start, the boxes (TITLE|BODY|BUTTON), the failed end.
attempt() {
  local script=$sdir/$1.kxr n=$2 b title body button k=0
  ROBOT_ARGS+=("S$n=$3" "T$n=$4")
  printf '%s\n' "# try $n" "set 7 \"\${S$n}\"" "leave 7" "set 10 \"\${T$n}\"" "leave 10" "click 14" >>"$script"
  shift 4
  for b in "$@"; do
    IFS='|' read -r title body button <<<"$b"
    k=$((k + 1))
    ROBOT_ARGS+=("B${n}_$k=$body")
    printf '%s\n' "box \"$title\" \"\${B${n}_$k}\" answer \"$button\" 120" >>"$script"
  done
  printf '%s\n' 'wait text 17 "Instalace nebyla úspěšná" 120' >>"$script"
}
attempts_end() { printf '%s\n' "expect enabled 14" "click 15" "wait-exit 0 30" >>"$sdir/$1.kxr"; }

# Each damaged medium is refused with its box before anything is copied.
badmedia_script() {
  local cases=(
    "cut 0|$bad_list" "cut 50|$bad_list" "cut 91|$bad_list"
    'A.TXT:name=..\EVIL.TXT|..\EVIL.TXT' 'A.TXT:name=../EVIL.TXT|../EVIL.TXT'
    'A.TXT:name=C:\EVIL.TXT|C:\EVIL.TXT' 'A.TXT:name=C:EVIL.TXT|C:EVIL.TXT' 'A.TXT:name=\EVIL.TXT|\EVIL.TXT'
    'A.TXT:name=..|..' 'A.TXT:name=.|.' 'A.TXT:name=A\x01.TXT|A?.TXT' 'A.TXT:name=EVIL.TXT\x09|EVIL.TXT?'
    'A.TXT:name=EVIL\x7f.TXT|EVIL?.TXT' 'A.TXT:stored=..\A.TXT|..\A.TXT' 'A.TXT:stored=A/B.TXT|A/B.TXT'
    'A.TXT:stored=..|..' 'A.TXT:directory=..\..\EVIL|..\..\EVIL' 'A.TXT:directory=C:|C:'
    'A.TXT:directory=SUB\x1f|SUB?' 'A.TXT:directory=/EVIL|/EVIL' 'last:name=..\EVIL.TXT|..\EVIL.TXT'
  )
  local n=0 c what box long
  : >"$sdir/badmedia.kxr"
  for c in "${cases[@]}"; do
    n=$((n + 1))
    what=${c%%|*} box=${c#*|}
    variant $n
    case $what in
      cut*) truncate -s "${what#cut }" "$M/DISKLIST.LST" ;;
      *) edit "$what" || return 1; box=$bad_record$box ;;
    esac
    attempt badmedia $n "$SRC" "C:\\T$n\\" " Chyba |$box|OK"
  done
  badmedia_count=$n
  # A target of 1,100 characters, and a source of as many: the box cuts the path short.
  long=$(printf 'A%.0s' $(seq 1 1100))
  attempt badmedia L1 "$(source_of "$BASE")" "C:\\$long\\" " Chyba |Příliš dlouhá cesta C:\\${long:0:176}|OK"
  long="$(source_of "$BASE")$long\\"
  attempt badmedia L2 "$long" 'C:\TL\' " Chyba |Příliš dlouhá cesta ${long:0:179}|OK"
  attempts_end badmedia
}

# Nothing outside the targets; README.TXT and DISKLIST.LST go to the target before the list is
# read, so each is recorded; no file of the list was copied.
badmedia_untouched() {
  [ -z "$(find "$C" -maxdepth 1 \( -name 'AAAA*' -o -name TL \))" ] ||
    fail "a directory was made for the long target or for the long source's target"
  local evil n
  evil=$(find "$WINEPREFIX" "$sdir" -iname '*EVIL*' 2>/dev/null)
  [ -z "$evil" ] || fail "a bad name reached the disk: $evil"
  for n in $(seq 1 "$badmedia_count"); do
    absent "C:\\T$n\\A.TXT" "C:\\T$n\\B.TXT" "C:\\T$n\\SUB"
    recorded "C:\\T$n\\"
  done
}

# Name, stored-name and directory fields of 17 bytes with no zero, descriptions of 82 and with
# control characters; a decoy file under the 17-character stored name.
names_damage() {
  edit 'JMENO_BEZ_NULY.T:name=JMENO_BEZ_NULY.TX' 'ULOZENY_SOUBOR.B:stored=ULOZENY_SOUBOR.BZ' \
    'SOUBOR.TXT:directory=ADRESAR_BEZ_NULYQ' \
    'POPIS.TXT:description=Popis bez nuly: české znaky ľščřľýáíé, sahá až do konce pole: ------------------XY' \
    'RIDICI.TXT:description=Popis\x01s\x09ridicimi\x1bznaky\x7fa CR\x0dLF\x0a.' &&
    printf 'navnada: jmeno za koncem pole\r\n' >"$M/ULOZENY_SOUBOR.BZ"
}

# Refused in one run of SETUP: a name and a directory whose cut 16 characters are bad (the box
# shows the cut text), a record on a disk past the last whose file is not there, a DISKLIST.LST
# that is a directory.
refused_script() {
  : >"$sdir/refused.kxr"
  variant 1 && edit 'A.TXT:name=ZLY\x01AAAAAAAAAAAAX' || return 1
  attempt refused 1 "$SRC" 'C:\R1\' " Chyba |${bad_record}ZLY?AAAAAAAAAAAA|OK"
  variant 2 && edit 'C.TXT:directory=..SUBSUBSUBSUBSUB' || return 1
  attempt refused 2 "$SRC" 'C:\R2\' " Chyba |${bad_record}..SUBSUBSUBSUBSU|OK"
  variant 3 && edit 'A.TXT:disk=30' && rm "$M/A.TXT" || return 1
  attempt refused 3 "$SRC" 'C:\R3\' "Oznámení|Vlož DISK30|&O.K." " Chyba |Nesprávná disketa|OK" "Dotaz|Zkusit znovu|&Ne"
  variant 4 && rm "$M/DISKLIST.LST" && mkdir "$M/DISKLIST.LST" || return 1
  attempt refused 4 "$SRC" 'C:\R4\' " Chyba |Nelze otevřít soubor ${SRC}DISKLIST.LST|OK" \
    " Chyba |Chyba při kopírování souboru ${SRC}DISKLIST.LST|OK"
  attempts_end refused
}
refused_untouched() {
  local i stray
  for i in 1 2 3 4; do recorded "C:\\R$i\\"; done
  absent 'C:\R1\A.TXT' 'C:\R2\SUB'
  stray=$(find "$WINEPREFIX" "$sdir" -name 'ZLY*' -o -name '..SUB*' 2>/dev/null)
  [ -z "$stray" ] || fail "a bad name reached the disk: $stray"
}

# BOMBA.BIN (declared 20,000 bytes) inflates to 1 GiB of zeros; PETKRAT.BIN to five times its
# declared size, which is no reason to refuse it.
bomb() {
  python3 -c 'import sys, zlib
c, z = zlib.compressobj(9), bytes(1 << 20)
with open(sys.argv[1], "wb") as o:
    for _ in range(1024): o.write(c.compress(z))
    o.write(c.flush())' "$M/BOMBA.BI_" &&
    python3 -c 'import sys, zlib
p = bytes((i * 7 + i // 256) & 255 for i in range(100000))
open(sys.argv[1], "wb").write(p)
open(sys.argv[2], "wb").write(zlib.compress(p, 9))' "$sdir/petkrat.plain" "$M/PETKRAT.BI_"
}

# earlier KIND: an earlier install in C:\W-KIND\ (its UNINST.LST, a stand-in uninstaller that
# leaves everything) whose SYSTEM.WCO is no configuration file. The one before goes: the
# registry names its SYSTEM.WCO, the new target's own file must be the one found.
earlier() {
  rm -rf "$C"/W-*
  local t=$C/W-$1
  mkdir -p "$t/EXE" && : >"$t/UNINST.LST" && cp "$win/tests/e2e/kx_e2e_stub0.exe" "$t/EXE/UNINSTAL.EXE"
  case $1 in
    # (no Ctrl-Z: a text read on Windows would end there, before the garbage)
    random) head -c 30000 /dev/urandom | tr -d '\n\r\032' ;;
    longline) printf 'Konfiguracni soubor KORVEX\r\n\r\n'; yes 'klic=hodnota ' | head -c 100000 | tr -d '\n' ;;
    empty) printf '\r\n\r\n\r\n\r\n' ;;
    outside) printf 'system_path=\\JINDE\\\r\nBEGIN[]\r\nx=1\r\n' ;;
  esac >"$t/EXE/SYSTEM.WCO"
}

# drives [clear|readonly]: D: a tmpfs of 8 MB, E: a read-only one (root only; where mounting
# is refused, the rows that need them are left out).
drives() {
  local d=$sdir/drive-d e=$sdir/drive-e
  if [ -z "${drives_made:-}" ]; then
    drives_made=0
    mkdir -p "$d" "$e"
    if mount -t tmpfs -o size=8m tmpfs "$d" 2>/dev/null; then
      cleanups+=("umount '$d' 2>/dev/null || umount -l '$d'")
      mount -t tmpfs -o ro,size=1m tmpfs "$e" 2>/dev/null && drives_made=1 &&
        cleanups+=("umount '$e' 2>/dev/null || umount -l '$e'")
    fi
    ln -sfn "$d" "$WINEPREFIX/dosdevices/d:" && ln -sfn "$e" "$WINEPREFIX/dosdevices/e:"
  fi
  [ $drives_made = 1 ] || { say "   no private tmpfs (mount refused)"; skip=1; return 0; }
  [ "${1:-}" != clear ] || rm -rf "${d:?}"/*
}
# D:\KORV5\SLIB a read-only mount: first the installed and stored name of its first file.
readonly_slib() {
  local s=$sdir/drive-d/KORV5/SLIB
  mkdir -p "$s"
  mount -t tmpfs -o ro,size=1m tmpfs "$s" 2>/dev/null || { say "   a read-only mount inside D: was refused"; skip=1; return 0; }
  cleanups+=("umount '$s' 2>/dev/null || umount -l '$s'")
  read -r -a first <<<"$(list_records "$M1" | awk -F'\t' '$3 == "SLIB" { print $1, $2; exit }')"
}

# snapshot NAME: the running prefix (files, registry) as $sdir/NAME.gz, with the wineserver down.
snapshot() {
  wine_env_down
  python3 "$here/snapshot.py" take "$WINEPREFIX" "$sdir/$1.gz" | sed 's/^/   /'
  local rc=${PIPESTATUS[0]}
  wine_env_use "$WINEPREFIX"
  [ "$rc" = 0 ] || fail "step $step: snapshot $1 (exit $rc)"
}

# compare NAME CODE [BASE]: the snapshot BASE (before) against NAME, with the user's design kept
# when one was saved; CODE 1: the compare must fail and show what an install makes, 0: nothing
# else changed.
compare() {
  local log=$sdir/$step-compare-$1.txt rc what kept=()
  [ -f "$sdir/design.d32" ] && kept=(--kept 'C:\KORV5\Navrhy\MUJ.D32')
  python3 "$here/snapshot.py" compare "$sdir/${3:-before}.gz" "$sdir/$1.gz" "${kept[@]}" >"$log" 2>&1
  rc=$?
  sed 's/^/   /' "$log" | tail -"$((30 - 29 * $2))"
  [ $rc = "$2" ] || fail "step $step: compare ${3:-before} and $1: exit $rc, not $2 (see $log)"
  if [ "$2" = 1 ]; then
    for what in 'new F drive_c/KORV5/EXE/KORV5.EXE ' 'new F drive_c/KORV5/UNINST.LST ' \
        'new K HKLM Software\\\\Microsoft\\\\Windows\\\\CurrentVersion\\\\Uninstall\\\\KORVEX$' \
        'new K HKLM Software\\\\Classes\\\\d32_file$' 'new F .*/Desktop/KORVEX.lnk ' \
        'new F .*/Quick Launch/KORVEX.lnk ' 'new F .*/Start Menu/Programs/KORVEX/'; do
      grep -qi "^  $what" "$log" || fail "step $step: the compare does not show: $what"
    done
  elif [ ${#kept[@]} != 0 ]; then
    cmp -s "$C/KORV5/Navrhy/MUJ.D32" "$sdir/design.d32" || fail "step $step: the user's design changed"
  fi
}

# watch: xev records the X server's top-level windows from now on; windows none|shown: none of
# them was mapped since, or one was. Each waits until xev has seen a change of a property of the
# root window made after what went before, so that it has seen all that went before.
watch() {
  : >"$sdir/$step-xev.txt"
  xev -root -event substructure -event property >>"$sdir/$step-xev.txt" 2>&1 &
  xev_pid=$!
  cleanups+=("kill $xev_pid 2>/dev/null")
  xev_seen
}
xev_seen() {
  local n i
  n=$(grep -c KX_E2E_SYNC "$sdir/$step-xev.txt")
  for i in $(seq 1 300); do
    xprop -root -f KX_E2E_SYNC 8s -set KX_E2E_SYNC "$i" && sleep 0.1
    [ "$(grep -c KX_E2E_SYNC "$sdir/$step-xev.txt")" -gt "$n" ] && return 0
  done
  fail "step $step: xev does not report the root window's changes"
  return 1
}
windows() {
  xev_seen && kill $xev_pid
  local maps
  maps=$(grep -c '^MapNotify' "$sdir/$step-xev.txt")
  [ "$1" = none ] && [ "$maps" != 0 ] && fail "step $step: $maps window(s) shown (see $sdir/$step-xev.txt)"
  [ "$1" = shown ] && [ "$maps" = 0 ] && fail "step $step: no window shown"
  say "   top-level windows shown: $maps"
}

# logged TEXT...: the row's log ($RUNLOG) holds each text; logged_files: the target path of each
# file of the medium's list, as a file installed.
logged() { local t; for t in "$@"; do grep -qF -- "$t" "$sdir/$step.log" || fail "step $step: the log lacks: $t"; done; }
logged_files() {
  local name dir
  while IFS=$'\t' read -r name _ dir _ _; do
    [ "$dir" = . ] && dir="" || dir="$dir\\"
    logged " -> $TARGET$dir$name ("
  done < <(list_records "$M1")
}

# hold C:\FILE: the stand-in program holds FILE open without sharing until release.
hold() {
  local h=$sdir/hold/hold.exe
  rm -rf "$sdir/hold" && mkdir "$sdir/hold" && cp "$win/tests/e2e/kx_e2e_stub0.exe" "$h" || return 1
  wine "$h" --hold "$1" >"$sdir/hold.txt" 2>&1 </dev/null &
  hold_pid=$!
  cleanups+=("touch '$h.END'")
  until [ -f "$h.RAN" ]; do
    kill -0 $hold_pid 2>/dev/null || { fail "step $step: the holder ended"; return 1; }
    sleep 0.1
  done
}
release() { touch "$sdir/hold/hold.exe.END" && wait $hold_pid; }

# switched: SETUP started with ${ARG1} ${ARG2} (@open_s), its failed run ending with 2 (@failed_s).
switched() {
  sed 's/^start \${SETUP}$/start ${SETUP} ${ARG1} ${ARG2}/' "$here/open.kxr" >"$sdir/open_s.kxr"
  sed 's/^wait-exit 0 /wait-exit 2 /' "$here/failed.kxr" >"$sdir/failed_s.kxr"
}
# bad_switches: each malformed switch ends a very silent SETUP with 1, its reason in the log.
bad_switches() {
  local long a n=0 rc
  long=$(printf 'A%.0s' $(seq 1 1100))
  for a in /DESKTOP=2 /DIR=KORV5 "/DIR=C:\\$long" /QUICKLAUNCH=ano /KEEPCONFIG= '/LOG=C:\KORV5\SETUP.LOG'; do
    n=$((n + 1))
    (cd "$sdir" && wine "$M1/SETUP.EXE" /VERYSILENT "/LOG=$(winpath "$sdir/bad$n.log")" "$a" >"$sdir/bad$n.txt" 2>&1 </dev/null)
    rc=$?
    [ $rc = 1 ] || fail "step $step: SETUP ${a:0:40} ended with $rc, not 1"
    [ $n = 6 ] || grep -q 'Chybný příkazový řádek: Chybný přepínač' "$sdir/bad$n.log" || fail "step $step: no reason in $sdir/bad$n.log"
  done
  absent 'C:\KORV5'
}

# helped: /HELP wrote the switches and exit codes to its output (a file: UTF-8), installed nothing.
helped() { grep -q '^7  nainstalováno, ale' "$sdir/$step-robot.txt" || fail "step $step: no help text"; absent 'C:\KORV5'; }

# SETUP "$m" from the directory $sdir/cwd, where it writes its log MMBIN.MM.
memory_script() {
  sed 's/^start \${SETUP}$/start ${SETUP} "$m"/' "$here/open.kxr" >"$sdir/open_m.kxr"
  RUN_DIR=$sdir/cwd
  mkdir -p "$RUN_DIR"
}
# The log is in the current directory, not beside the program.
memory_log() {
  [ ! -e "$M1/MMBIN.MM" ] || fail "MMBIN.MM was written beside the program, not in the current directory"
  [ -f "$sdir/cwd/MMBIN.MM" ] || fail "no MMBIN.MM in the current directory"
}

# ---- main ------------------------------------------------------------------------------------

# rows_of [SCENARIO]: the rows of SCENARIO, continuation lines joined; without one, the names.
rows_of() {
  scenarios | awk -v want="${1:-}" '
    function flush(name) {
      if (row == "") return
      name = row
      sub(/[[:space:]]*\|.*/, "", name)
      if (want == "") print name
      else if (name == want) print row
    }
    /^[[:space:]]*(#|$)/ { next }
    /^[[:space:]]+\|/ { row = row $0; next }
    { flush(); row = $0 }
    END { flush() }' | { if [ -z "${1:-}" ]; then uniq; else cat; fi; }
}

case ${1:-} in
  "") say "usage: run.sh SCENARIO | --prefix | --list"; exit 2 ;;
  --list) rows_of; exit 0 ;;
  --prefix)
    start=$(date +%s)
    wine_env_display && wine_env_prefix "$work/pristine" && wine_env_down || exit 1
    [ -f "$work/pristine/system.reg" ] || { say "run.sh: no prefix was made in $work/pristine"; exit 1; }
    say "pristine prefix in $work/pristine ($(($(date +%s) - start)) s)"
    exit 0 ;;
esac
scenario=$1
mapfile -t rows < <(rows_of "$scenario")
[ ${#rows[@]} -gt 0 ] || { say "run.sh: no scenario $scenario"; exit 2; }
for f in "$robot_exe" "$check_exe" "$setup_exe" "$mkmedium" "$win/tools/KORV5.exe" "$win/tools/UNINSTAL.exe" \
    "$win/tools/CONFIG.exe" "$win/tests/e2e/kx_e2e_stub0.exe" "$win/tests/e2e/kx_e2e_stub1.exe"; do
  [ -e "$f" ] || { say "run.sh: $f is missing (build the Windows targets; KX_E2E_MKMEDIUM for the native mkmedium)"; exit 2; }
done
wine_env_display || exit 1
[ -f "$work/pristine/system.reg" ] || wine_env_prefix "$work/pristine" || exit 1
sdir=$work/$scenario
rm -rf "$sdir" && mkdir -p "$sdir"
TARGET='C:\KORV5\' P="" M="" M1="" SRC="" BASE="" DATA="" C="" QUICK="" QUICKBOX="" KX_QUICK=0 skipped=0 SAVED="" NEED=""
start=$(date +%s)
for r in "${rows[@]}"; do
  IFS='|' read -r c1 c2 c3 c4 c5 c6 c7 <<<"$r"
  for v in c2 c3 c4 c5 c6 c7; do trim $v "${!v}"; done
  row "$scenario" "$c2" "$c3" "$c4" "$c5" "$c6" "$c7"
done
say "== $scenario: $failures failed, $(($(date +%s) - start)) s"
cleanup
# A passed scenario keeps its logs, not its prefixes and media.
[ $failures = 0 ] && find "$sdir" -mindepth 1 -maxdepth 1 -type d -exec rm -rf {} +
exit $((failures > 0))
