#!/usr/bin/env bash
# run.sh SCENARIO - one end-to-end scenario of the installer under Wine.
# run.sh --prefix   - makes the pristine prefix that every scenario starts from (CTest runs this
#                     once per test run, as the fixture E2E.Prefix).
#
# A scenario builds its payload and medium with the native mkmedium, takes a fresh copy of the
# pristine prefix, drives SETUP.EXE on the medium with kxrobot (tests/e2e/*.kxr), and runs the
# checks (kx_e2e_check --gtest_filter=SUITE.*). Several SETUP runs may follow each other in one
# scenario. Everything lands in WORK/SCENARIO (the robot's logs, media, prefixes); the exit code
# is the number of failed steps (0: passed).
#
# Environment: KX_E2E_WIN the Windows build directory (default build/e2e-win), KX_E2E_MKMEDIUM
# the native mkmedium (default: build/host, build/e2e-host), KX_E2E_WORK the work directory
# (default WIN/tests/e2e), DISPLAY an X display to use (else an Xvfb of our own).
set -u
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
win=${KX_E2E_WIN:-$root/build/e2e-win}
work=${KX_E2E_WORK:-$win/tests/e2e}
robot_exe=$win/tools/kxrobot.exe
check_exe=$win/tests/e2e/kx_e2e_check.exe
setup_exe=$win/installer/SETUP.exe
mkmedium=${KX_E2E_MKMEDIUM:-}
if [ -z "$mkmedium" ]; then
  for m in "$root/build/host/tools/mkmedium" "$root/build/e2e-host/tools/mkmedium"; do
    [ -x "$m" ] && mkmedium=$m && break
  done
fi

export LC_ALL=cs_CZ.UTF-8 WINEDEBUG=-all WINEARCH=win32
# No Mono or Gecko, and no menu entries in the host's desktop for the shortcuts we make.
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
# Robot scripts read these through ${NAME} as well.
export TITLE="Instalace návrhového systému pro elektroniku KORVEX"

failures=0
step=0
xvfb_pid=""

say() { printf '%s\n' "$*"; }
fail() { say "E2E FAILED: $*"; failures=$((failures + 1)); }
winpath() { local p=$1; p=${p//\//\\}; printf 'Z:%s' "$p"; }

# ---- Wine --------------------------------------------------------------------------------

display_up() {
  [ -n "${DISPLAY:-}" ] && return 0
  local n=120
  while [ -e "/tmp/.X11-unix/X$n" ] || [ -e "/tmp/.X$n-lock" ]; do n=$((n + 1)); done
  Xvfb ":$n" -screen 0 1024x768x24 -nolisten tcp >/dev/null 2>&1 &
  xvfb_pid=$!
  export DISPLAY=":$n"
  for _ in $(seq 1 100); do [ -e "/tmp/.X11-unix/X$n" ] && return 0; sleep 0.1; done
  say "run.sh: Xvfb did not start on :$n"
  return 1
}

wine_down() {
  [ -n "${WINEPREFIX:-}" ] && wineserver -k >/dev/null 2>&1 </dev/null
  return 0
}

wine_up() {
  export WINEPREFIX=$1
  wineserver -p >/dev/null 2>&1 </dev/null
  wine cmd /c exit >/dev/null 2>&1 </dev/null
}

mounted=""

cleanup() {
  wine_down
  if [ -n "$mounted" ]; then umount "$mounted" 2>/dev/null || umount -l "$mounted"; fi
  if [ -n "$xvfb_pid" ]; then kill "$xvfb_pid" 2>/dev/null; wait "$xvfb_pid" 2>/dev/null; fi
}
trap cleanup EXIT

make_pristine() {
  local p=$work/pristine
  mkdir -p "$work"
  rm -rf "$p"
  export WINEPREFIX=$p
  wineserver -p >/dev/null 2>&1 </dev/null
  wineboot -i >/dev/null 2>&1 </dev/null
  # No window manager on Xvfb: Wine manages its windows itself.
  wine reg add 'HKCU\Software\Wine\X11 Driver' /v Managed /d N /f >/dev/null 2>&1 </dev/null
  wine_down
  # The user's folders (Desktop, Documents, ...) are links into the home directory: make them
  # plain directories, so that shortcuts stay inside the prefix.
  local l
  for l in "$p"/drive_c/users/*/*; do
    if [ -L "$l" ]; then rm -f "$l" && mkdir -p "$l"; fi
  done
  [ -f "$p/system.reg" ] || { say "run.sh: the prefix was not made"; return 1; }
}

# fresh_prefix NAME: a copy of the pristine prefix as the running prefix. The system directory,
# most of a prefix's size, is hard-linked: nothing we run writes there, and a scenario costs a
# few megabytes of disk instead of some hundreds.
fresh_prefix() {
  wine_down
  local p=$sdir/$1 sys=drive_c/windows/system32
  rm -rf "$p"
  mkdir -p "$p"
  tar -C "$work/pristine" --exclude="./$sys" -cf - . | tar -C "$p" -xf -
  cp -al "$work/pristine/$sys" "$p/$sys"
  wine_up "$p"
  cdrive=$p/drive_c
  appdata=$(ls -d "$cdrive"/users/*/AppData/Roaming | grep -v /Public/ | head -1)
}

quick_launch_folder() { mkdir -p "$appdata/Microsoft/Internet Explorer/Quick Launch"; }

# ---- media -------------------------------------------------------------------------------

# make_payload DIR: the installed tree: the suite's programs, libraries in subdirectories,
# files in the target directory (random binary, an empty one, one of exactly 4096 bytes).
make_payload() {
  local d=$1
  mkdir -p "$d/EXE" "$d/SLIB" "$d/LLIB" "$d/MLIB" "$d/ELIB"
  cp "$win/tools/KORV5.exe" "$d/EXE/KORV5.EXE"
  cp "$win/tools/CONFIG.exe" "$d/EXE/CONFIG.EXE"
  cp "$win/tools/UNINSTAL.exe" "$d/EXE/UNINSTAL.EXE"
  cp "$root"/tools/demo/payload/SLIB/* "$d/SLIB/"
  cp "$root"/tools/demo/payload/LLIB/* "$d/LLIB/"
  cp "$root"/tools/demo/payload/MLIB/* "$d/MLIB/"
  cp "$root"/tools/demo/payload/ELIB/* "$d/ELIB/"
  head -c 300000 /dev/urandom >"$d/DATA.BIN"
  head -c 4096 /dev/zero | tr '\0' 'K' >"$d/CLUSTER.BIN"
  : >"$d/PRÁZDNÝ.TXT"
}

# write_descriptions FILE PAYLOAD: the descriptions of the payload's files (mkmedium refuses a
# line for a file that is not there).
write_descriptions() {
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

# make_medium PAYLOAD OUT [mkmedium options]: a medium with README.TXT and SETUP.EXE, checked.
make_medium() {
  local payload=$1 out=$2
  shift 2
  write_descriptions "$sdir/popisy.txt" "$payload"
  iconv -f UTF-8 -t CP1250 "$root/tools/demo/README.TXT" | sed 's/$/\r/' >"$sdir/README.TXT"
  rm -rf "$out"
  if ! "$mkmedium" --readme "$sdir/README.TXT" --setup "$setup_exe" --descriptions "$sdir/popisy.txt" \
      "$@" "$payload" "$out" >"$out.log" 2>&1; then
    cat "$out.log"
    fail "mkmedium $*"
    return 1
  fi
  # Every medium made here must pass the builder's own check before a scenario damages it.
  "$mkmedium" --verify "$out" >>"$out.log" 2>&1 || { cat "$out.log"; fail "mkmedium --verify $out"; return 1; }
}

# ---- robot and checks --------------------------------------------------------------------

# robot SCRIPT [NAME=VALUE]...: runs tests/e2e/SCRIPT.kxr.
robot() {
  local script=$1
  shift
  step=$((step + 1))
  local file=$here/$script.kxr
  case $script in */*) file=$script; script=$(basename "$script" .kxr) ;; esac
  local log=$sdir/$step-robot-$script.txt
  say "== $step: robot $script $*"
  wine "$robot_exe" --timeout 30 "$file" "$@" >"$log" 2>&1 </dev/null
  local rc=$?
  sed 's/^/   /' "$log"
  [ $rc = 0 ] || fail "robot $script (exit $rc), see $log"
}

# check SUITE: the checks of one suite with the KX_E2E_* setting of the environment.
check() {
  step=$((step + 1))
  local log=$sdir/$step-check-$1.txt
  say "== $step: checks $1 (target $KX_E2E_TARGET)"
  wine "$check_exe" --gtest_filter="$1.*" --gtest_color=no >"$log" 2>&1 </dev/null
  local rc=$?
  grep -v '^\[ *\(RUN\|OK\) ' "$log" | sed 's/^/   /'
  grep -q '^\[  PASSED  \] [1-9]' "$log" || rc=1
  [ $rc = 0 ] || fail "checks $1, see $log"
}

# setting TARGET PAYLOAD MEDIUM_FIRST_DISK [README]: the checks' environment.
setting() {
  export KX_E2E_TARGET=$1
  export KX_E2E_PAYLOAD="$(winpath "$2")\\"
  export KX_E2E_LIST="$(winpath "$3")\\DISKLIST.LST"
  if [ -f "$3/README.TXT" ]; then export KX_E2E_README="$(winpath "$3")\\README.TXT"; else export KX_E2E_README=""; fi
  export KX_E2E_DESKTOP=1 KX_E2E_QUICK=1 KX_E2E_SKIP="" KX_E2E_PFU=1 KX_E2E_LIBROOT="" KX_E2E_NAVRHY=""
  export KX_E2E_SAVED="" KX_E2E_APPENDED=0 KX_E2E_MISSING="" KX_E2E_EXISTING="" KX_E2E_DESIGN=""
}

# The source field shows the program's own directory, upper-cased, with a trailing "\".
source_of() { printf '%s\\' "$(winpath "$1" | tr 'a-z' 'A-Z')"; }

# unix_of C:\X\Y: the path in the running prefix.
unix_of() { local p=${1#C:}; p=${p//\\//}; printf '%s%s' "$cdrive" "$p"; }

# ---- scenarios ---------------------------------------------------------------------------

# A target with Czech letters that code page 1252 lacks, installed under the ANSI code page 1250
# and again in a fresh prefix under 1252 (an English Windows): the same names on disk, registry
# values (read as UTF-16) and shortcuts both times.
scenario_czech_target() {
  local target='C:\Návrhové systémy\Věda\KORV5\' locale
  make_payload "$sdir/payload"
  make_medium "$sdir/payload" "$sdir/medium" --flat --packed || return
  for locale in cs_CZ.UTF-8 C.UTF-8; do  # C.UTF-8: code page 1252 (an English Windows)
    fresh_prefix "prefix-$locale"
    quick_launch_folder
    LC_ALL=$locale robot install SETUP="$sdir/medium/SETUP.EXE" SOURCE="$(source_of "$sdir/medium")" \
      QUICK=checked TARGET="$target"
    [ -d "$cdrive/Návrhové systémy/Věda/KORV5/EXE" ] || fail "$locale: no EXE directory under the Czech name"
    setting "$target" "$sdir/payload" "$sdir/medium"
    check CzechTarget
  done
}

# 1. A packed medium in one flat directory, with desktop and quick-launch icons.
scenario_fresh_packed() {
  make_payload "$sdir/payload"
  make_medium "$sdir/payload" "$sdir/medium" --flat --packed --level 9 || return
  fresh_prefix prefix
  quick_launch_folder
  robot install SETUP="$sdir/medium/SETUP.EXE" SOURCE="$(source_of "$sdir/medium")" QUICK=checked \
    TARGET='C:\KORV5\'
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  check FreshPacked
}

# 2. The same tree on a plain medium; no quick-launch folder in this profile.
scenario_fresh_plain() {
  make_payload "$sdir/payload"
  make_medium "$sdir/payload" "$sdir/medium" --flat --plain || return
  fresh_prefix prefix
  robot install SETUP="$sdir/medium/SETUP.EXE" SOURCE="$(source_of "$sdir/medium")" QUICK=disabled \
    TARGET='C:\KORV5\'
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  export KX_E2E_QUICK=0
  check FreshPlain
}

# 2a. A signed medium shipped as a CD image: the programs signed with a throwaway certificate
# before they are packed, the image unpacked to the directory that drive D: (a CD drive) shows;
# the install from D: passes the checks of a fresh install, and the installed KORV5.EXE carries a
# signature that verifies against the certificate.
scenario_cdrom_signed() {
  make_payload "$sdir/payload"
  local ca=$sdir/ca
  mkdir -p "$ca"
  openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj "/CN=KORVEX test" -keyout "$ca/key.pem" \
    -out "$ca/cert.pem" >"$ca/openssl.txt" 2>&1 || { fail "openssl"; return; }
  # The signer also puts each signed copy into the expected payload (its path after /tree/).
  cp -r "$sdir/payload" "$sdir/signed"
  printf '%s\n' "osslsigncode sign -certs '$ca/cert.pem' -key '$ca/key.pem' -n KORVEX -in \"\$1\" -out \"\$1.s\" >/dev/null || exit 1" \
    'mv "$1.s" "$1" || exit 1' "case \$1 in */tree/*) cp \"\$1\" '$sdir/signed/'\"\${1#*/tree/}\" ;; esac" >"$ca/sign.sh"
  make_medium "$sdir/payload" "$sdir/medium" --packed --sign "sh $ca/sign.sh {}" --iso "$sdir/korvex.iso" || return
  "$mkmedium" --verify "$sdir/korvex.iso" >"$sdir/verify.txt" 2>&1 || fail "mkmedium --verify: $(cat "$sdir/verify.txt")"
  xorriso -osirrox on -indev "$sdir/korvex.iso" -extract / "$sdir/cd" >"$sdir/xorriso.txt" 2>&1 || { fail "xorriso"; return; }
  fresh_prefix prefix
  quick_launch_folder
  ln -sfn "$sdir/cd" "$WINEPREFIX/dosdevices/d:"
  wine reg add 'HKLM\Software\Wine\Drives' /v d: /d cdrom /f >/dev/null 2>&1 </dev/null
  robot install SETUP='D:\SETUP.EXE' SOURCE='D:\' QUICK=checked TARGET='C:\KORV5\'
  setting 'C:\KORV5\' "$sdir/signed" "$sdir/cd"
  check FreshPacked
  step=$((step + 1))
  say "== $step: osslsigncode verify of the installed KORV5.EXE"
  osslsigncode verify -CAfile "$ca/cert.pem" -in "$(unix_of 'C:\KORV5\EXE\KORV5.EXE')" >"$sdir/signature.txt" 2>&1 ||
    fail "no good signature on the installed KORV5.EXE, see $sdir/signature.txt"
  grep -E '^(Signer|Signature verification)' "$sdir/signature.txt" | sed 's/^/   /'
  chmod -R u+w "$sdir/cd"
}

# 3. Floppies: the source directory holds one disk at a time; the robot changes them.
scenario_floppies() {
  make_payload "$sdir/payload"
  # Disks that hold SETUP.EXE and one of the big files, never two: at least three disks.
  head -c 1500000 /dev/urandom >"$sdir/payload/MLIB/VELKY1.LIB"
  head -c 1500000 /dev/urandom >"$sdir/payload/MLIB/VELKY2.LIB"
  head -c 1500000 /dev/urandom >"$sdir/payload/MLIB/VELKY3.LIB"
  local capacity=$(( $(stat -c %s "$setup_exe") + 1600000 ))
  make_medium "$sdir/payload" "$sdir/disks" --packed --capacity $capacity || return
  [ -d "$sdir/disks/DISK3" ] || { fail "the medium has fewer than three disks"; return; }
  # Disk 2 with the wrong number, and with an unknown keyword.
  cp -r "$sdir/disks/DISK2" "$sdir/disks/WRONG2"
  printf 'DISK: 3\r\n' >"$sdir/disks/WRONG2/B.KORV"
  cp -r "$sdir/disks/DISK2" "$sdir/disks/ODD2"
  printf 'DISK: 2\r\nSVAZEK: KORVEX\r\n' >"$sdir/disks/ODD2/B.KORV"
  mkdir -p "$sdir/setup" "$sdir/floppy"
  cp "$sdir/disks/DISK1/SETUP.EXE" "$sdir/setup/"
  cp "$sdir/disks/DISK1"/* "$sdir/floppy/"
  rm "$sdir/floppy/SETUP.EXE"
  fresh_prefix prefix
  quick_launch_folder
  local last
  last=$(ls -d "$sdir"/disks/DISK* | sed 's/.*DISK//' | sort -n | tail -1)
  # The script: the trials with disk 2, then each later disk, then the end of the install.
  local d script=$sdir/floppies.kxr
  cp "$here/floppies.kxr" "$script"
  for d in $(seq 3 "$last"); do
    printf '%s\n' "wait-box \"Oznámení\" \"Vlož DISK$d\" 300" "delete-file \"\${FLOPPY}*\"" \
      "copy-files \"\${DISKS}\\\\DISK$d\" \"\${FLOPPY}\"" "box \"Oznámení\" \"Vlož DISK$d\" answer \"&O.K.\"" >>"$script"
  done
  sed -n '/^wait text 17/,$p' "$here/install.kxr" >>"$script"
  robot "$script" SETUP="$sdir/setup/SETUP.EXE" FLOPPY="$(winpath "$sdir/floppy")\\" DISKS="$(winpath "$sdir/disks")"
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/disks/DISK1"
  check Floppies
}

# 4. A stored file missing from the medium: skipped (Yes), or the install refused (No) in a
# profile without quick launch, whose check box must stay disabled.
scenario_missing_file() {
  make_payload "$sdir/payload"
  make_medium "$sdir/payload" "$sdir/medium" --flat --plain || return
  rm "$sdir/medium/DATA.BIN"
  fresh_prefix prefix-yes
  quick_launch_folder
  robot missing_yes SETUP="$sdir/medium/SETUP.EXE" \
    MISSING="$(source_of "$sdir/medium")DATA.BIN" QUICK=checked
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  export KX_E2E_SKIP="DATA.BIN"
  check MissingSkipped
  fresh_prefix prefix-no
  robot missing_no SETUP="$sdir/medium/SETUP.EXE" \
    MISSING="$(source_of "$sdir/medium")DATA.BIN" QUICK=disabled
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  export KX_E2E_MISSING="DATA.BIN"
  check MissingRefused
}

# 5. Alternative executables in EXE: each replaces KORV5.EXE in turn, the last one stays.
scenario_alternatives() {
  make_payload "$sdir/payload"
  # The real main program with a tail of its own, so that each copy can be told apart and
  # still runs ($f at the end of the install).
  { cat "$win/tools/KORV5.exe"; printf 'KVWALL'; } >"$sdir/payload/EXE/KVWALL.EXE"
  { cat "$win/tools/KORV5.exe"; printf 'kvwpp'; } >"$sdir/payload/EXE/kvwpp.exe"
  make_medium "$sdir/payload" "$sdir/medium" --flat --packed || return
  fresh_prefix prefix
  quick_launch_folder
  robot install SETUP="$sdir/medium/SETUP.EXE" SOURCE="$(source_of "$sdir/medium")" QUICK=checked \
    TARGET='C:\KORV5\'
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  check Alternatives
}

# 6. Files already in the target: the overwrite question answered No; then Yes and the abort
# button, first answered No (the install runs on), then Yes (it stops).
scenario_existing() {
  make_payload "$sdir/payload"
  local i
  for i in $(seq -w 1 40); do head -c 1500000 /dev/urandom >"$sdir/payload/SLIB/VELKY$i.S32"; done
  make_medium "$sdir/payload" "$sdir/medium" --flat --packed --level 1 || return
  fresh_prefix prefix-no
  quick_launch_folder
  mkdir -p "$cdrive/KORV5"
  printf 'stary soubor\r\n' >"$cdrive/KORV5/DATA.BIN"
  robot overwrite_no SETUP="$sdir/medium/SETUP.EXE"
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  export KX_E2E_EXISTING=DATA.BIN
  check OverwriteRefused
  fresh_prefix prefix-abort
  quick_launch_folder
  mkdir -p "$cdrive/KORV5"
  printf 'stary soubor\r\n' >"$cdrive/KORV5/DATA.BIN"
  robot abort SETUP="$sdir/medium/SETUP.EXE"
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  check AbortStops
}

# 7. The space check on a drive D: of its own, a private tmpfs of 64 MB that nobody else writes:
# declared sizes that need one cluster more than there is fail with the message, exactly enough
# passes (to within the pages of UNINST.LST that the file layer may still buffer). Where no
# tmpfs can be mounted (no root), D: is a directory on /dev/shm and only the failing run is made,
# with a wide margin.
scenario_disk_space() {
  local mnt=$sdir/drive-d private=0
  mkdir -p "$mnt"
  if mount -t tmpfs -o size=64m tmpfs "$mnt" 2>/dev/null; then
    private=1
    mounted=$mnt
  else
    mnt=/dev/shm/kx-e2e-$$
    say "   no private tmpfs (mount refused): D: is $mnt, the boundary run is left out"
  fi
  fresh_prefix prefix
  quick_launch_folder
  local run
  for run in short enough; do
    [ $private = 0 ] && [ $run = enough ] && break
    rm -rf "${mnt:?}"/* && mkdir -p "$mnt"
    ln -sfn "$mnt" "$WINEPREFIX/dosdevices/d:"
    local space cluster free
    space=$(wine "$check_exe" --space D: 2>&1 </dev/null | tr -d '\r')
    cluster=${space% *}
    free=${space#* }
    say "   drive D: cluster $cluster, free clusters $free"
    if [ "$cluster" != 4096 ]; then fail "drive D: has clusters of $cluster bytes, not the page size"; break; fi
    # Payload: the suite's programs and filler files whose declared sizes are patched below.
    rm -rf "$sdir/payload-$run" "$sdir/medium-$run"
    mkdir -p "$sdir/payload-$run/EXE"
    cp "$win/tools/KORV5.exe" "$sdir/payload-$run/EXE/KORV5.EXE"
    cp "$win/tools/CONFIG.exe" "$sdir/payload-$run/EXE/CONFIG.EXE"
    cp "$win/tools/UNINSTAL.exe" "$sdir/payload-$run/EXE/UNINSTAL.EXE"
    local per=1048576 reserve=$((1000000 / cluster)) fillers n
    fillers=$(( (free - reserve) / per + 2 ))
    for n in $(seq 1 $fillers); do printf 'vypln %d\r\n' "$n" >"$sdir/payload-$run/VYPLN$n.BIN"; done
    "$mkmedium" --flat --plain "$sdir/payload-$run" "$sdir/medium-$run" >"$sdir/medium-$run.log" 2>&1 ||
      { fail "mkmedium"; break; }
    local list=$sdir/medium-$run/DISKLIST.LST count i size name
    count=$(od -An -tu2 -j86 -N2 "$list" | tr -d ' ')
    # Before the check the target holds the copy of DISKLIST.LST (closed, in whole pages) and
    # UNINST.LST with 6 records (DISKLIST.LST, three EXE records, Navrhy, the target), of which
    # the file layer may still hold some in its buffer. So the passing run asks for what is
    # free with all of UNINST.LST on the disk, the failing one for one cluster more than is
    # free with none of it there.
    local listpages=$(( (92 + 140 * count + 4095) / 4096 )) uninstpages=$(( (1028 * 6 + 4095) / 4096 ))
    local avail=$((free - listpages - uninstpages))
    [ $run = short ] && avail=$((free - listpages))
    # Clusters the EXE files ask for; the fillers take the rest.
    local fixed=0 filler_idx=()
    for i in $(seq 0 $((count - 1))); do
      name=$(dd if="$list" bs=1 skip=$((92 + 140 * i)) count=16 2>/dev/null | tr -d '\0')
      size=$(od -An -tu4 -j$((92 + 140 * i + 52)) -N4 "$list" | tr -d ' ')
      case $name in VYPLN*) filler_idx+=("$i") ;; *) fixed=$((fixed + size / cluster + 1)) ;; esac
    done
    local want=$((avail - reserve - fixed))
    if [ $run = short ]; then
      want=$((want + 1))
      [ $private = 0 ] && want=$((want + 100000))  # others may write to /dev/shm meanwhile
    fi
    local bytes=0 k
    want=$((want - ${#filler_idx[@]}))  # each filler asks for one cluster at least
    for i in "${filler_idx[@]}"; do
      k=$want
      [ $k -gt $((per - 1)) ] && k=$((per - 1))
      [ $k -lt 0 ] && k=0
      want=$((want - k))
      size=$((k * cluster))
      printf "$(printf '\\x%02x\\x%02x\\x%02x\\x%02x' $((size & 255)) $(((size >> 8) & 255)) $(((size >> 16) & 255)) $(((size >> 24) & 255)))" |
        dd of="$list" bs=1 seek=$((92 + 140 * i + 52)) conv=notrunc 2>/dev/null
    done
    [ $want = 0 ] || { fail "the declared sizes cannot ask for the clusters wanted ($want left)"; break; }
    for i in $(seq 0 $((count - 1))); do
      size=$(od -An -tu4 -j$((92 + 140 * i + 52)) -N4 "$list" | tr -d ' ')
      bytes=$(( (bytes + (size / cluster + 1) * cluster) & 0xFFFFFFFF ))
    done
    local need=$(( (bytes + 1000000) & 0xFFFFFFFF ))
    cp "$setup_exe" "$sdir/medium-$run/SETUP.EXE"
    if [ $run = short ]; then
      robot space_short SETUP="$sdir/medium-$run/SETUP.EXE" NEED="$need"
      setting 'D:\KORV5\' "$sdir/payload-$run" "$sdir/medium-$run"
      check SpaceShort
    else
      robot install SETUP="$sdir/medium-$run/SETUP.EXE" SOURCE="$(source_of "$sdir/medium-$run")" \
        QUICK=checked TARGET='D:\KORV5\'
      setting 'D:\KORV5\' "$sdir/payload-$run" "$sdir/medium-$run"
      check SpaceJustEnough
    fi
    # The next run starts from a fresh prefix.
    fresh_prefix prefix-$run
    quick_launch_folder
  done
  wine_down
  if [ $private = 1 ]; then
    umount "$mnt" 2>/dev/null || umount -l "$mnt"
    mounted=""
  else
    rm -rf "$mnt"
  fi
}

# 8. An earlier installation in the target.
scenario_previous() {
  make_payload "$sdir/payload"
  make_medium "$sdir/payload" "$sdir/medium" --flat --packed || return
  local setup=$sdir/medium/SETUP.EXE src
  src=$(source_of "$sdir/medium")
  fresh_prefix prefix
  quick_launch_folder
  # UNINST.LST alone is no earlier installation: the new records follow the old ones.
  mkdir -p "$cdrive/KORV5"
  printf '\x00\x00C:\\STARY.TXT' | dd of="$cdrive/KORV5/UNINST.LST" bs=1028 conv=sync 2>/dev/null
  cp "$cdrive/KORV5/UNINST.LST" "$sdir/old-uninst.lst"
  robot install SETUP="$setup" SOURCE="$src" QUICK=checked TARGET='C:\KORV5\'
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  export KX_E2E_SAVED="$(winpath "$sdir/old-uninst.lst")" KX_E2E_APPENDED=1
  check PreviousListOnly
  # A complete earlier install: removed by its uninstaller, its configuration taken over. Its
  # library paths point elsewhere and must stay.
  local wco=$cdrive/KORV5/EXE/SYSTEM.WCO
  sed -i 's/^\(   schema_default_library_path *=  \).*/\1E:\\JINAM\\SLIB\\\r/;
          s/^\(   layout_default_library_path *=  \).*/\1E:\\JINAM\\LLIB\\\r/;
          s/^\(   edit_default_library_path *=  \).*/\1E:\\JINAM\\ELIB\\\r/;
          s/^\(   default_model_library_path *=  \).*/\1E:\\JINAM\\MLIB\\\r/;
          s/^\(   initial_directory *=  \).*/\1E:\\JINAM\\Navrhy\r/' "$wco"
  robot previous SETUP="$setup" TAKE='&Ano'
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  export KX_E2E_LIBROOT='E:\JINAM\' KX_E2E_NAVRHY='E:\JINAM\Navrhy'
  check PreviousTakenOver
  robot previous SETUP="$setup" TAKE='&Ne'
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  check PreviousNotTakenOver
  # The removal question answered No: nothing changes.
  cp "$cdrive/KORV5/UNINST.LST" "$sdir/kept-uninst.lst"
  robot previous_no SETUP="$setup"
  export KX_E2E_SAVED="$(winpath "$sdir/kept-uninst.lst")"
  check PreviousKept
  # An uninstaller that fails (exit code 1): the message, and the install stops.
  cp "$win/tests/e2e/kx_e2e_stub1.exe" "$cdrive/KORV5/EXE/UNINSTAL.EXE"
  robot previous_fails SETUP="$setup"
  check PreviousKept
  check PreviousFails
}

# 9. Target paths: without a drive (refused by the field), a drive that does not exist, and a
# source without DISKLIST.LST.
scenario_bad_target() {
  make_payload "$sdir/payload"
  make_medium "$sdir/payload" "$sdir/medium" --flat --plain || return
  fresh_prefix prefix
  rm -f "$WINEPREFIX/dosdevices/q:"
  robot bad_target SETUP="$sdir/medium/SETUP.EXE" SOURCE="$(source_of "$sdir/medium")"
  [ -e "$cdrive/KORV5" ] && fail "a failed start made C:\\KORV5"
}

# 10. The HTML Help library missing (turned off for the run), with and without the help
# package in the installed tree; and a main program that ends with 1 on "$f".
scenario_html_help() {
  make_payload "$sdir/payload"
  make_medium "$sdir/payload" "$sdir/medium" --flat --packed || return
  mkdir -p "$sdir/payload-hh/hhlppack"
  cp -r "$sdir/payload/." "$sdir/payload-hh/"
  cp "$win/tests/e2e/kx_e2e_stub0.exe" "$sdir/payload-hh/hhlppack/hhupd.exe"
  make_medium "$sdir/payload-hh" "$sdir/medium-hh" --flat --packed || return
  mkdir -p "$sdir/payload-f1"
  cp -r "$sdir/payload/." "$sdir/payload-f1/"
  cp "$win/tests/e2e/kx_e2e_stub1.exe" "$sdir/payload-f1/EXE/KORV5.EXE"
  make_medium "$sdir/payload-f1" "$sdir/medium-f1" --flat --packed || return
  local url
  url=$(help_url)
  fresh_prefix prefix
  quick_launch_folder
  # With the library there: no box (the installs of the other scenarios show that too).
  local saved=$WINEDLLOVERRIDES
  export WINEDLLOVERRIDES="$saved;hhctrl.ocx=d"
  robot help_notice SETUP="$sdir/medium/SETUP.EXE" TARGET='C:\A\KORV5\' URL="$url"
  setting 'C:\A\KORV5\' "$sdir/payload" "$sdir/medium"
  check HelpAbsent
  robot help_no SETUP="$sdir/medium-hh/SETUP.EXE" TARGET='C:\B\KORV5\' URL="$url"
  robot help_yes SETUP="$sdir/medium-hh/SETUP.EXE" TARGET='C:\C\KORV5\' URL="$url"
  setting 'C:\C\KORV5\' "$sdir/payload-hh" "$sdir/medium-hh"
  check HelpQuestionYes
  export WINEDLLOVERRIDES=$saved
  robot main_fails SETUP="$sdir/medium-f1/SETUP.EXE" TARGET='C:\D\KORV5\'
  setting 'C:\D\KORV5\' "$sdir/payload-f1" "$sdir/medium-f1"
  export KX_E2E_PFU=0
  check MainProgramFails
}

# The maker's web address in the help notices is a setting of the product.
help_url() {
  grep -ho 'http[s]*://[^" ]*' "$root"/installer/inst*.cpp 2>/dev/null | head -1
}

# 11. Install, a design saved by the user, then the installed uninstaller.
scenario_uninstall() {
  make_payload "$sdir/payload"
  make_medium "$sdir/payload" "$sdir/medium" --flat --packed || return
  fresh_prefix prefix
  quick_launch_folder
  robot install SETUP="$sdir/medium/SETUP.EXE" SOURCE="$(source_of "$sdir/medium")" QUICK=checked \
    TARGET='C:\KORV5\'
  printf 'KX900 Design file \r\nmuj navrh\r\n' >"$cdrive/KORV5/Navrhy/MUJ.D32"
  cp "$cdrive/KORV5/UNINST.LST" "$sdir/installed-uninst.lst"
  robot uninstall UNINSTAL='C:\KORV5\EXE\UNINSTAL.EXE'
  # The running uninstaller leaves itself to the next start of Windows.
  wineboot -r >/dev/null 2>&1 </dev/null
  setting 'C:\KORV5\' "$sdir/payload" "$sdir/medium"
  export KX_E2E_SAVED="$(winpath "$sdir/installed-uninst.lst")" KX_E2E_DESIGN=MUJ.D32
  check Uninstalled
}

# 12. Bad media: lists shorter than their header, and records whose names would leave the
# target (or carry control characters). Each is refused with its box before anything is copied.
# badmedia_patch LIST WHAT VALUE: WHAT is "cut N" (keep N bytes) or FIELD (name, stored, dir)
# of the record of A.TXT set to VALUE (Python escapes), or FIELD of the last record.
badmedia_patch() {
  python3 - "$@" <<'PY'
import sys
path, what, value = sys.argv[1], sys.argv[2], sys.argv[3]
data = bytearray(open(path, 'rb').read())
if what == 'cut':
    data = data[:int(value)]
else:
    field, _, which = what.partition('@')
    offset = {'name': 0, 'stored': 17, 'dir': 34}[field]
    count = (len(data) - 92) // 140
    names = [bytes(data[92 + 140 * i:92 + 140 * i + 17]).split(b'\0')[0] for i in range(count)]
    i = count - 1 if which == 'last' else names.index(b'A.TXT')
    raw = value.encode('latin-1').decode('unicode_escape').encode('latin-1')
    at = 92 + 140 * i + offset
    data[at:at + 17] = raw.ljust(17, b'\0')[:17]
open(path, 'wb').write(bytes(data))
PY
}

scenario_badmedia() {
  mkdir -p "$sdir/payload/SUB"
  printf 'soubor A\r\n' >"$sdir/payload/A.TXT"
  printf 'soubor B\r\n' >"$sdir/payload/B.TXT"
  printf 'soubor C\r\n' >"$sdir/payload/SUB/C.TXT"
  make_medium "$sdir/payload" "$sdir/medium" --flat --plain || return
  local bad_list='Chybná cesta/soubor nenalezen: DISKLIST.LST'
  local bad_record='Chybný záznam v seznamu souborů: '
  # WHAT|VALUE|the box's body
  local cases=(
    "cut|0|$bad_list"
    "cut|50|$bad_list"
    "cut|91|$bad_list"
    "name|..\\\\EVIL.TXT|${bad_record}..\\EVIL.TXT"
    "name|../EVIL.TXT|${bad_record}../EVIL.TXT"
    "name|C:\\\\EVIL.TXT|${bad_record}C:\\EVIL.TXT"
    "name|C:EVIL.TXT|${bad_record}C:EVIL.TXT"
    "name|\\\\EVIL.TXT|${bad_record}\\EVIL.TXT"
    "name|..|${bad_record}.."
    "name|.|${bad_record}."
    "name|A\\x01.TXT|${bad_record}A?.TXT"
    "name|EVIL.TXT\\x09|${bad_record}EVIL.TXT?"
    "name|EVIL\\x7f.TXT|${bad_record}EVIL?.TXT"
    "stored|..\\\\A.TXT|${bad_record}..\\A.TXT"
    "stored|A/B.TXT|${bad_record}A/B.TXT"
    "stored|..|${bad_record}.."
    "dir|..\\\\..\\\\EVIL|${bad_record}..\\..\\EVIL"
    "dir|C:|${bad_record}C:"
    "dir|SUB\\x1f|${bad_record}SUB?"
    "dir|/EVIL|${bad_record}/EVIL"
    "name@last|..\\\\EVIL.TXT|${bad_record}..\\EVIL.TXT"
  )
  local script=$sdir/badmedia.kxr args=() n=0 c what value body
  cp "$here/badmedia.kxr" "$script"
  for c in "${cases[@]}"; do
    n=$((n + 1))
    IFS='|' read -r what value body <<<"$c"
    cp -r "$sdir/medium" "$sdir/m$n"
    if [ "${what%% *}" = cut ]; then
      badmedia_patch "$sdir/m$n/DISKLIST.LST" cut "$value"
    else
      badmedia_patch "$sdir/m$n/DISKLIST.LST" "$what" "$value"
    fi
    args+=("S$n=$(source_of "$sdir/m$n")" "E$n=$body")
    printf '%s\n' "# $n: $what $value" "set 7 \"\${S$n}\"" "leave 7" "set 10 \"C:\\\\T$n\\\\\"" \
      "leave 10" "click 14" "box \" Chyba \" \"\${E$n}\" answer \"OK\" 120" \
      "wait text 17 \"Instalace nebyla úspěšná\" 120" >>"$script"
  done
  # A target of 1,100 characters, and a source of as many: the box cuts the path short.
  local long
  long=$(printf 'A%.0s' $(seq 1 1100))
  args+=("LONG=C:\\$long\\" "ELONG=Příliš dlouhá cesta C:\\${long:0:176}")
  local longsrc
  longsrc="$(source_of "$sdir/medium")$long\\"
  args+=("LONGSRC=$longsrc" "ELONGSRC=Příliš dlouhá cesta ${longsrc:0:179}")
  printf '%s\n' "# target and source of 1,100 characters" "set 7 \"\${S1}\"" "leave 7" \
    "set 10 \"\${LONG}\"" "leave 10" "click 14" "box \" Chyba \" \"\${ELONG}\" answer \"OK\" 120" \
    "wait text 17 \"Instalace nebyla úspěšná\" 120" "set 10 \"C:\\\\TL\\\\\"" "leave 10" \
    "set 7 \"\${LONGSRC}\"" "leave 7" "click 14" \
    "box \" Chyba \" \"\${ELONGSRC}\" answer \"OK\" 120" "wait text 17 \"Instalace nebyla úspěšná\" 120" \
    >>"$script"
  printf '%s\n' "expect enabled 14" "click 15" "wait-exit 0 30" >>"$script"
  fresh_prefix prefix
  robot "$script" SETUP="$sdir/medium/SETUP.EXE" "${args[@]}"
  [ -z "$(find "$cdrive" -maxdepth 1 \( -name 'AAAA*' -o -name TL \))" ] ||
    fail "a directory was made for the long target or for the long source's target"
  # Nothing outside the targets, and no file copied into them.
  local evil
  evil=$(find "$WINEPREFIX" "$sdir" -iname '*EVIL*' 2>/dev/null)
  [ -z "$evil" ] || fail "a bad name reached the disk: $evil"
  # README.TXT and DISKLIST.LST go to the target before the list is read: each must be in
  # UNINST.LST; no file of the list may be there.
  for n in $(seq 1 ${#cases[@]}); do
    local copied
    copied=$(find "$cdrive/T$n" -iname 'A.TXT' -o -iname 'B.TXT' -o -iname 'SUB' 2>/dev/null)
    [ -z "$copied" ] || fail "medium $n: copied from the list: $copied"
    badmedia_recorded "$cdrive/T$n" "C:\\T$n\\" || fail "medium $n: a file not in UNINST.LST"
  done
}

# badmedia_recorded DIR WINDIR: every file in DIR (but UNINST.LST) is a record of its UNINST.LST.
badmedia_recorded() {
  python3 - "$@" <<'PY2'
import os, sys
d, w = sys.argv[1], sys.argv[2]
if not os.path.isdir(d):
    sys.exit(0)
data = open(os.path.join(d, 'UNINST.LST'), 'rb').read() if os.path.exists(os.path.join(d, 'UNINST.LST')) else b''
paths = {data[i:i + 1028][2:].split(b'\0')[0].decode('cp1250').upper() for i in range(0, len(data) - 1027, 1028)}
bad = 0
for f in sorted(os.listdir(d)):
    if f.upper() != 'UNINST.LST' and (w + f).upper() not in paths:
        print('   not in UNINST.LST:', w + f, 'records:', sorted(paths))
        bad = 1
sys.exit(bad)
PY2
}

# 13. A packed medium whose stored DATA.BIN is garbage, cut short, empty, or a directory; and
# one whose disk file has a garbage line; a list whose count is past its records.
scenario_badmedia_packed() {
  make_payload "$sdir/payload"
  make_medium "$sdir/payload" "$sdir/medium" --flat --packed || return
  local stored
  stored=$(cd "$sdir/medium" && ls | grep -i '^DATA\.BI_$')
  [ -n "$stored" ] || { fail "no stored DATA.BIN on the medium"; return; }
  local unzip='Komprese/dekomprese dat - chyba ve vstupních datech'
  local short='Komprese/dekomprese dat - nepostačující buffer'
  # HOW|the box's body|the status at the end
  local cases=(
    "garbage|$unzip|Instalace proběhla úspěšně"
    "cut|$short|Instalace proběhla úspěšně"
    "empty|$short|Instalace proběhla úspěšně"
    "directory|Nelze otevřít soubor @|Instalace nebyla úspěšná|Chyba při kopírování souboru @"
    "korv|Neznámé klíčové slovo v souboru #A.KORV|Instalace nebyla úspěšná"
    "count||Instalace proběhla úspěšně"
  )
  fresh_prefix prefix
  local n=0 c how box end box2
  for c in "${cases[@]}"; do
    n=$((n + 1))
    IFS='|' read -r how box end box2 <<<"$c"
    local m=$sdir/m$n
    cp -r "$sdir/medium" "$m"
    case $how in
      garbage) head -c 5000 /dev/urandom >"$m/$stored" ;;
      cut) head -c 1000 "$sdir/medium/$stored" >"$m/$stored.cut" && mv "$m/$stored.cut" "$m/$stored" ;;
      empty) : >"$m/$stored" ;;
      directory) rm "$m/$stored" && mkdir "$m/$stored" ;;
      count) python3 -c "import sys; d = bytearray(open(sys.argv[1], 'rb').read()); d[86] += 50; open(sys.argv[1], 'wb').write(bytes(d))" "$m/DISKLIST.LST" ;;
      korv) printf 'DISK: 1\r\n\001\377 smeti\r\n' >"$m/A.KORV" ;;
    esac
    box=${box//@/$(source_of "$m")$stored}
    box=${box//#/$(source_of "$m")}
    if [ -z "$box" ]; then
      robot badmedia_packed0 SETUP="$m/SETUP.EXE" TARGET="C:\\P$n\\" END="$end"
    elif [ -n "$box2" ]; then
      robot badmedia_packed2 SETUP="$m/SETUP.EXE" TARGET="C:\\P$n\\" BOX="$box" END="$end" \
        BOX2="${box2//@/$(source_of "$m")$stored}"
    else
      robot badmedia_packed SETUP="$m/SETUP.EXE" TARGET="C:\\P$n\\" BOX="$box" END="$end"
    fi
    if [ "$how" = count ]; then
      # A count past the records: the records that are there are installed, no more.
      [ -e "$cdrive/P$n/DATA.BIN" ] && [ -e "$cdrive/P$n/EXE/KORV5.EXE" ] ||
        fail "medium $n: the records of a list with too large a count were not installed"
    elif [ -e "$cdrive/P$n/DATA.BIN" ]; then fail "medium $n: DATA.BIN was installed from a bad stored file"; fi
    [ -d "$cdrive/P$n" ] && { badmedia_recorded_all "$cdrive/P$n" "C:\\P$n\\" || fail "medium $n: a file not in UNINST.LST"; }
  done
}

# badmedia_recorded_all DIR WINDIR: every file under DIR (but UNINST.LST) is in its UNINST.LST.
badmedia_recorded_all() {
  python3 - "$@" <<'PY2'
import os, sys
d, w = sys.argv[1], sys.argv[2]
u = os.path.join(d, 'UNINST.LST')
data = open(u, 'rb').read() if os.path.exists(u) else b''
paths = {data[i:i + 1028][2:].split(b'\0')[0].decode('cp1250').upper() for i in range(0, len(data) - 1027, 1028)}
bad = 0
for top, dirs, files in os.walk(d):
    for f in files:
        rel = os.path.relpath(os.path.join(top, f), d).replace('/', '\\')
        if rel.upper() != 'UNINST.LST' and (w + rel).upper() not in paths:
            print('   not in UNINST.LST:', w + rel)
            bad = 1
sys.exit(bad)
PY2
}

# Further scenarios, one file a group; each defines scenario_NAME functions with the helpers above.
for f in "$here"/scenarios/*.sh; do
  [ -e "$f" ] && source "$f"
done

# ---- main --------------------------------------------------------------------------------

scenario=${1:-}
if [ -z "$scenario" ]; then
  say "usage: run.sh SCENARIO | --prefix"
  exit 2
fi
display_up || exit 1
if [ "$scenario" = --prefix ]; then
  start=$(date +%s)
  make_pristine || exit 1
  say "pristine prefix in $work/pristine ($(($(date +%s) - start)) s)"
  exit 0
fi
if ! declare -F "scenario_$scenario" >/dev/null; then
  say "run.sh: no scenario $scenario"
  exit 2
fi
for f in "$robot_exe" "$check_exe" "$setup_exe" "$mkmedium" "$win/tools/KORV5.exe" "$win/tools/UNINSTAL.exe" \
    "$win/tools/CONFIG.exe" "$win/tests/e2e/kx_e2e_stub0.exe" "$win/tests/e2e/kx_e2e_stub1.exe"; do
  [ -e "$f" ] || { say "run.sh: $f is missing (build the Windows targets; KX_E2E_MKMEDIUM for the native mkmedium)"; exit 2; }
done
[ -f "$work/pristine/system.reg" ] || make_pristine || exit 1
sdir=$work/$scenario
rm -rf "$sdir"
mkdir -p "$sdir"
start=$(date +%s)
"scenario_$scenario"
say "== $scenario: $failures failed, $(($(date +%s) - start)) s"
# A passed scenario keeps its logs, not its prefixes and media.
if [ $failures = 0 ]; then
  wine_down
  find "$sdir" -mindepth 1 -maxdepth 1 -type d -exec rm -rf {} +
fi
exit $((failures > 0))
