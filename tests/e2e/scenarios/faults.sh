# faults.sh - faults during an install: a target drive that fills up in the middle of a copy, a
# read-only target, a source disk that goes away after Start. Each install ends with its boxes,
# keeps what it wrote, and its UNINST.LST names all of that, so that the installed uninstaller
# takes the partial install away.
#
# The drives are private tmpfs mounts (root only); where mounting is refused, the cases that need
# them are left out with a note.

faults_mounts=()

# faults_mount DIR [mount options]: a tmpfs on DIR, unmounted again by faults_unmount (also when
# the script ends early). 1 when mounting is refused.
faults_mount() {
  local d=$1
  shift
  mkdir -p "$d"
  mount -t tmpfs "$@" tmpfs "$d" 2>/dev/null || return 1
  faults_mounts+=("$d")
}

faults_unmount() {
  wine_down
  local i
  for ((i = ${#faults_mounts[@]} - 1; i >= 0; i--)); do
    umount "${faults_mounts[i]}" 2>/dev/null || umount -l "${faults_mounts[i]}"
  done
  faults_mounts=()
}

faults_cleanup() {
  faults_unmount
  cleanup
}

# faults_script NAME: starts $sdir/NAME.kxr from faults.kxr; faults_box and plain lines follow,
# faults_run ends it with faults_end.kxr and runs it.
faults_script() {
  faults_kxr=$sdir/$1.kxr
  cp "$here/faults.kxr" "$faults_kxr"
}

# faults_box TITLE BODY ANSWER: a box the install must show (texts as they are, escaped here).
faults_box() {
  local body=${2//\\/\\\\}
  body=${body//\"/\\\"}
  printf 'box "%s" "%s" answer "%s" 120\n' "$1" "$body" "$3" >>"$faults_kxr"
}

faults_run() {
  cat "$here/faults_end.kxr" >>"$faults_kxr"
  robot "$faults_kxr" "$@"
}

# faults_declare LIST NAME SIZE: the size that the list declares for the file NAME.
faults_declare() {
  python3 - "$@" <<'PY'
import struct, sys
path, name, size = sys.argv[1], sys.argv[2].encode('cp1250'), int(sys.argv[3])
data = bytearray(open(path, 'rb').read())
count = struct.unpack_from('<H', data, 86)[0]
for i in range(count):
    at = 92 + 140 * i
    if bytes(data[at:at + 17]).split(b'\0')[0] == name:
        struct.pack_into('<I', data, at + 52, size)
        open(path, 'wb').write(bytes(data))
        sys.exit(0)
sys.exit('no record ' + sys.argv[2])
PY
}

# faults_first LIST disk N | dir NAME: installed and stored name (separated by a blank) of the
# first record on the 0-based disk N, or in the subdirectory NAME.
faults_first() {
  python3 - "$@" <<'PY'
import struct, sys
data = open(sys.argv[1], 'rb').read()
for i in range(struct.unpack_from('<H', data, 86)[0]):
    at = 92 + 140 * i
    name = lambda o: data[at + o:at + o + 17].split(b'\0')[0].decode('cp1250')
    if (sys.argv[2] == 'disk' and struct.unpack_from('<H', data, at + 56)[0] == int(sys.argv[3])) or \
       (sys.argv[2] == 'dir' and name(34) == sys.argv[3]):
        print(name(0), name(17))
        break
PY
}

# faults_uninstall TARGET(C:\X\ form) UNIXDIR: saves UNINST.LST, runs the installed uninstaller,
# lets Wine's restart take the running program, and checks what is left.
faults_uninstall() {
  local target=$1 dir=$2 saved=$sdir/saved-$step.lst
  cp "$dir/UNINST.LST" "$saved"
  robot faults_uninstall UNINSTAL="${target}EXE\\UNINSTAL.EXE" ROOT="$target"
  wineboot -r >/dev/null 2>&1 </dev/null
  export KX_E2E_SAVED="$(winpath "$saved")"
  check FaultsRemoved
}

# faults_setting TARGET PAYLOAD MEDIUM STOP AHEAD INSTLIST [CUT] [FOREIGN]
faults_setting() {
  setting "$1" "$2" "$3"
  export KX_E2E_STOP=$4 KX_E2E_AHEAD=$5 KX_E2E_INSTLIST=$6 KX_E2E_CUT=${7:-} KX_E2E_FOREIGN=${8:-}
}

scenario_faults() {
  trap faults_cleanup EXIT
  fresh_prefix prefix
  local d=$sdir/drive-d e=$sdir/drive-e have_d=0 have_e=0 src
  faults_mount "$d" -o size=8m && have_d=1
  [ $have_d = 1 ] && faults_mount "$e" -o ro,size=1m && have_e=1
  [ $have_d = 1 ] || say "   no private tmpfs (mount refused): the full and read-only targets are left out"
  ln -sfn "$d" "$WINEPREFIX/dosdevices/d:"
  ln -sfn "$e" "$WINEPREFIX/dosdevices/e:"

  # 1. D: of 8 MB fills up during the copy of VELKY.BIN (12 MB), which the list declares at
  # 1000 bytes, so that the space check lets it through; ZBYTEK.TXT comes after it.
  if [ $have_d = 1 ]; then
    mkdir -p "$sdir/p1/EXE"
    cp "$win/tools/KORV5.exe" "$sdir/p1/EXE/KORV5.EXE"
    cp "$win/tools/CONFIG.exe" "$sdir/p1/EXE/CONFIG.EXE"
    cp "$win/tools/UNINSTAL.exe" "$sdir/p1/EXE/UNINSTAL.EXE"
    head -c 12000000 /dev/urandom >"$sdir/p1/VELKY.BIN"
    printf 'zbytek\r\n' >"$sdir/p1/ZBYTEK.TXT"
    make_medium "$sdir/p1" "$sdir/m1" --flat --plain || return
    faults_declare "$sdir/m1/DISKLIST.LST" VELKY.BIN 1000 || { fail "declared size"; return; }
    src=$(source_of "$sdir/m1")
    faults_script full_plain
    faults_box " Chyba " "Chyba při kopírování (zapsaná délka != přečtené délce)" OK
    faults_box " Chyba " "Chyba při kopírování souboru ${src}VELKY.BIN" OK
    faults_box " Chyba " "Do souboru INST.LST nelze zapisovat (plný disk?)" OK
    faults_run SETUP="$sdir/m1/SETUP.EXE" SOURCE="$src" TARGET='D:\KORV5\'
    faults_setting 'D:\KORV5\' "$sdir/p1" "$sdir/m1" VELKY.BIN VELKY.BIN any VELKY.BIN
    check FaultStopped
    check FaultCut
    faults_uninstall 'D:\KORV5\' "$d/KORV5"

    # The same on a packed medium: VELKY.BIN is 12 MB of zeros, its packed copy small, so the
    # disk fills while it is unpacked; the loop goes on and ZBYTEK.TXT's copy fails.
    rm -rf "${d:?}"/*
    head -c 12000000 /dev/zero >"$sdir/p1/VELKY.BIN"
    make_medium "$sdir/p1" "$sdir/m2" --flat --packed || return
    faults_declare "$sdir/m2/DISKLIST.LST" VELKY.BIN 1000 || { fail "declared size"; return; }
    src=$(source_of "$sdir/m2")
    faults_script full_packed
    faults_box " Chyba " "Do souboru D:\\KORV5\\VELKY.BIN nelze zapisovat (plný disk?)" OK
    faults_box " Chyba " "Komprese/dekomprese dat - chyba při práci se soubory" OK
    faults_box " Chyba " "Chyba při kopírování (zapsaná délka != přečtené délce)" OK
    faults_box " Chyba " "Chyba při kopírování souboru ${src}ZBYTEK.TX_" OK
    faults_box " Chyba " "Do souboru INST.LST nelze zapisovat (plný disk?)" OK
    faults_run SETUP="$sdir/m2/SETUP.EXE" SOURCE="$src" TARGET='D:\KORV5\'
    # The parts of VELKY.BIN and ZBYTEK.TX_ that the disk took, and INST.LST, are recorded in
    # the room the list held ahead; nothing torn.
    faults_setting 'D:\KORV5\' "$sdir/p1" "$sdir/m2" VELKY.BIN 'VELKY.BI_|VELKY.BIN|ZBYTEK.TX_' any
    check FaultStopped
    faults_uninstall 'D:\KORV5\' "$d/KORV5"
  fi

  # 2. A read-only drive E: the target can't be made; nothing is written. Then a target on D:
  # whose SLIB is a read-only mount: the files before it are installed, its file can't be made.
  local p2=$sdir/p2
  mkdir -p "$p2/EXE" "$p2/SLIB"
  cp "$win/tools/KORV5.exe" "$p2/EXE/KORV5.EXE"
  cp "$win/tools/UNINSTAL.exe" "$p2/EXE/UNINSTAL.EXE"
  cp "$root"/tools/demo/payload/SLIB/* "$p2/SLIB/"
  printf 'data\r\n' >"$p2/DATA.TXT"
  make_medium "$p2" "$sdir/m3" --flat --plain || return
  src=$(source_of "$sdir/m3")
  if [ $have_e = 1 ]; then
    faults_script readonly_drive
    faults_box " Chyba " 'Nelze vytvořit adresář KORV5 na disku E:\KORV5\' OK
    faults_run SETUP="$sdir/m3/SETUP.EXE" SOURCE="$src" TARGET='E:\KORV5\'
    [ -z "$(ls -A "$e")" ] || fail "the read-only drive E: holds $(ls -A "$e")"
  fi
  if [ $have_d = 1 ]; then
    rm -rf "${d:?}"/*
    mkdir -p "$d/KORV5/SLIB"
    if faults_mount "$d/KORV5/SLIB" -o ro,size=1m; then
      local first
      read -r -a first <<<"$(faults_first "$sdir/m3/DISKLIST.LST" dir SLIB)"
      faults_script readonly_dir
      faults_box " Chyba " "Nelze otevřít soubor D:\\KORV5\\SLIB\\${first[0]}" OK
      faults_box " Chyba " "Chyba při kopírování souboru ${src}${first[1]}" OK
      faults_run SETUP="$sdir/m3/SETUP.EXE" SOURCE="$src" TARGET='D:\KORV5\'
      faults_setting 'D:\KORV5\' "$p2" "$sdir/m3" "${first[0]}" "" lines "" SLIB
      check FaultStopped
      faults_uninstall 'D:\KORV5\' "$d/KORV5"
    else
      say "   a read-only mount inside D: was refused: that case is left out"
    fi
  fi

  # 3. Disks: the source directory holds one disk at a time. At "Vlož DISK2" the medium is
  # taken away (the retry refused), or disk 2 comes without its first file (skipping refused).
  local p3=$sdir/p3
  mkdir -p "$p3/EXE"
  cp "$win/tools/KORV5.exe" "$p3/EXE/KORV5.EXE"
  cp "$win/tools/UNINSTAL.exe" "$p3/EXE/UNINSTAL.EXE"
  head -c 400000 /dev/urandom >"$p3/VELKY1.BIN"
  head -c 400000 /dev/urandom >"$p3/VELKY2.BIN"
  local capacity=$(($(stat -c %s "$setup_exe") + 450000))
  make_medium "$p3" "$sdir/disks" --packed --capacity $capacity || return
  [ -d "$sdir/disks/DISK2" ] || { fail "the medium has one disk"; return; }
  local second
  read -r -a second <<<"$(faults_first "$sdir/disks/DISK1/DISKLIST.LST" disk 1)"
  mkdir -p "$sdir/setup" "$sdir/floppy"
  cp "$sdir/disks/DISK1/SETUP.EXE" "$sdir/setup/"
  local floppy
  floppy="$(winpath "$sdir/floppy")\\"
  local run
  for run in gone cut; do
    rm -f "$sdir/floppy"/*
    cp "$sdir/disks/DISK1"/* "$sdir/floppy/"
    rm "$sdir/floppy/SETUP.EXE"
    faults_script "source_$run"
    printf '%s\n' 'wait-box "Oznámení" "Vlož DISK2" 300' 'delete-file "${FLOPPY}*"' >>"$faults_kxr"
    if [ $run = cut ]; then
      printf '%s\n' 'copy-files "${DISKS}\\DISK2" "${FLOPPY}"' "delete-file \"\${FLOPPY}${second[1]}\"" >>"$faults_kxr"
    fi
    faults_box "Oznámení" "Vlož DISK2" "&O.K."
    if [ $run = gone ]; then
      faults_box " Chyba " "Nesprávná disketa" OK
      faults_box "Dotaz" "Zkusit znovu" "&Ne"
    else
      faults_box "Dotaz" "Soubor ${floppy}${second[1]} nenalezen, vynechat" "&Ne"
    fi
    faults_run SETUP="$sdir/setup/SETUP.EXE" SOURCE="$floppy" TARGET="C:\\F$run\\" \
      FLOPPY="$floppy" DISKS="$(winpath "$sdir/disks")"
    faults_setting "C:\\F$run\\" "$p3" "$sdir/disks/DISK1" "${second[0]}" "" lines
    check FaultStopped
    faults_uninstall "C:\\F$run\\" "$cdrive/F$run"
  done

  faults_unmount
  rm -f "$WINEPREFIX/dosdevices/d:" "$WINEPREFIX/dosdevices/e:"
  trap cleanup EXIT
}
