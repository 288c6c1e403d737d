# badinput.sh - bad media and inputs beyond those of badmedia and badmedia_packed: list fields
# without their terminating zero, a decompression bomb, an earlier SYSTEM.WCO that is not a
# configuration file, a record on a disk past the last one, a DISKLIST.LST that is a directory.
# Sourced by run.sh, whose helpers it uses.

# badinput_patch LIST NAME FIELD VALUE: FIELD (name, stored, dir, description, disk) of the first
# record whose installed name is NAME set to VALUE (Python escapes; disk: a number). A text
# value fills its field to the last byte when it is as long as the field: no zero is left.
badinput_patch() {
  python3 - "$@" <<'PY'
import sys
path, name, field, value = sys.argv[1:5]
data = bytearray(open(path, 'rb').read())
count = (len(data) - 92) // 140
names = [bytes(data[92 + 140 * i:92 + 140 * i + 17]).split(b'\0')[0] for i in range(count)]
at = 92 + 140 * names.index(name.encode('cp1250'))
if field == 'disk':
    data[at + 56:at + 58] = int(value).to_bytes(2, 'little')
else:
    offset, size = {'name': (0, 17), 'stored': (17, 17), 'dir': (34, 17), 'description': (58, 82)}[field]
    raw = value.encode('utf-8').decode('unicode_escape').encode('latin-1')
    data[at + offset:at + offset + size] = raw.ljust(size, b'\0')[:size]
open(path, 'wb').write(bytes(data))
PY
}

# badinput_programs DIR: the suite's programs in DIR/EXE (the later steps of an install use them).
badinput_programs() {
  mkdir -p "$1/EXE"
  cp "$win/tools/KORV5.exe" "$1/EXE/KORV5.EXE"
  cp "$win/tools/CONFIG.exe" "$1/EXE/CONFIG.EXE"
  cp "$win/tools/UNINSTAL.exe" "$1/EXE/UNINSTAL.EXE"
}

# badinput_peak_rss OUT FLAG: while the file FLAG is there, the highest VmHWM (kB) of the
# processes whose command line names this scenario's bomb/SETUP.EXE; written to OUT at the end.
badinput_peak_rss() {
  local out=$1 flag=$2 peak=0 f hwm
  while [ -e "$flag" ]; do
    for f in $(grep -l -a -i 'badinput.bomb.SETUP\.EXE' /proc/[0-9]*/cmdline 2>/dev/null); do
      hwm=$(awk '/^VmHWM:/ {print $2}' "${f%/cmdline}/status" 2>/dev/null)
      [ -n "$hwm" ] && [ "$hwm" -gt "$peak" ] && peak=$hwm
    done
    sleep 0.1
  done
  echo "$peak" >"$out"
}

scenario_badinput() {
  badinput_names
  badinput_refused
  badinput_bomb
  badinput_wco
}

# 1. Name, stored-name and directory fields of 17 bytes with no zero, a description of 82: each
# is taken up to its limit (16, 80 characters) and the install ends cleanly with the cut names.
# A file on the medium under the 17-character stored name (what a reader running past the field
# would open) must not be taken. The medium has no README.TXT.
badinput_names() {
  local p=$sdir/payload-names m=$sdir/names
  badinput_programs "$p"
  mkdir -p "$p/ADRESAR_BEZ_NULY"
  printf 'jmeno bez nuly\r\n' >"$p/JMENO_BEZ_NULY.T"
  printf 'ulozene jmeno bez nuly\r\n' >"$p/ULOZENY_SOUBOR.B"
  printf 'adresar bez nuly\r\n' >"$p/ADRESAR_BEZ_NULY/SOUBOR.TXT"
  printf 'popis bez nuly\r\n' >"$p/POPIS.TXT"
  printf 'ridici znaky v popisu\r\n' >"$p/RIDICI.TXT"
  "$mkmedium" --flat --plain --setup "$setup_exe" "$p" "$m" >"$m.log" 2>&1 || { fail "mkmedium (names)"; return; }
  local l=$m/DISKLIST.LST
  badinput_patch "$l" JMENO_BEZ_NULY.T name 'JMENO_BEZ_NULY.TX'
  badinput_patch "$l" ULOZENY_SOUBOR.B stored 'ULOZENY_SOUBOR.BZ'
  badinput_patch "$l" SOUBOR.TXT dir 'ADRESAR_BEZ_NULYQ'
  badinput_patch "$l" POPIS.TXT description \
    "Popis bez nuly: \\xe8esk\\xe9 znaky \\xbe\\x9a\\xe8\\xf8\\xbe\\xfd\\xe1\\xed\\xe9, sahaj\\xedc\\xed a\\x9e do posledn\\xedho bajtu pole, 81. a 82. znak: XY"
  badinput_patch "$l" RIDICI.TXT description 'Popis\x01s\x09ridicimi\x1bznaky\x7fa CR\rLF\n.'
  printf 'navnada: jmeno za koncem pole\r\n' >"$m/ULOZENY_SOUBOR.BZ"
  fresh_prefix prefix-names
  quick_launch_folder
  robot badinput SETUP="$m/SETUP.EXE" TARGET='C:\KORV5\'
  setting 'C:\KORV5\' "$p" "$m"
  check BadinputNames
}

# 2. Refused in one run of SETUP, one medium after the other: a name and a directory whose cut
# 16 characters are bad themselves (the box shows the cut text), a record on a disk past the
# last letter whose file is not there, and a DISKLIST.LST that is a directory.
badinput_refused() {
  local p=$sdir/payload-refused
  badinput_programs "$p"
  printf 'soubor A\r\n' >"$p/A.TXT"
  mkdir -p "$p/SUB"
  printf 'soubor C\r\n' >"$p/SUB/C.TXT"
  "$mkmedium" --flat --plain --setup "$setup_exe" "$p" "$sdir/refused" >"$sdir/refused.log" 2>&1 ||
    { fail "mkmedium (refused)"; return; }
  local bad_record='Chybný záznam v seznamu souborů: '
  local script=$sdir/badinput_refused.kxr args=() n=0
  cp "$here/badinput_refused.kxr" "$script"
  # badinput_case BOXES...: a copy of the medium as medium n (patched by the caller after), its
  # run appended to the script; each box is TITLE|BODY|BUTTON.
  badinput_case() {
    local b title body button
    args+=("S$n=$(source_of "$sdir/r$n")")
    printf '%s\n' "# $n" "set 7 \"\${S$n}\"" "leave 7" "set 10 \"C:\\\\R$n\\\\\"" "leave 10" "click 14" >>"$script"
    for b in "$@"; do
      IFS='|' read -r title body button <<<"$b"
      args+=("B${n}_${#args[@]}=$body")
      printf '%s\n' "box \"$title\" \"\${B${n}_$((${#args[@]} - 1))}\" answer \"$button\" 120" >>"$script"
    done
    printf '%s\n' "wait text 17 \"Instalace nebyla úspěšná\" 120" >>"$script"
  }
  n=1; cp -r "$sdir/refused" "$sdir/r$n"
  badinput_patch "$sdir/r$n/DISKLIST.LST" A.TXT name 'ZLY\x01AAAAAAAAAAAAX'
  badinput_case " Chyba |${bad_record}ZLY?AAAAAAAAAAAA|OK"
  n=2; cp -r "$sdir/refused" "$sdir/r$n"
  badinput_patch "$sdir/r$n/DISKLIST.LST" C.TXT dir '..SUBSUBSUBSUBSUB'
  badinput_case " Chyba |${bad_record}..SUBSUBSUBSUBSU|OK"
  n=3; cp -r "$sdir/refused" "$sdir/r$n"
  badinput_patch "$sdir/r$n/DISKLIST.LST" A.TXT disk 29
  rm "$sdir/r$n/A.TXT"
  badinput_case "Oznámení|Vlož DISK30|&O.K." " Chyba |Nesprávná disketa|OK" "Dotaz|Zkusit znovu|&Ne"
  n=4; cp -r "$sdir/refused" "$sdir/r$n"
  rm "$sdir/r$n/DISKLIST.LST" && mkdir "$sdir/r$n/DISKLIST.LST"
  badinput_case " Chyba |Nelze otevřít soubor $(source_of "$sdir/r$n")DISKLIST.LST|OK" \
    " Chyba |Chyba při kopírování souboru $(source_of "$sdir/r$n")DISKLIST.LST|OK"
  printf '%s\n' "expect enabled 14" "click 15" "wait-exit 0 30" >>"$script"
  fresh_prefix prefix-refused
  robot "$script" SETUP="$sdir/refused/SETUP.EXE" "${args[@]}"
  local i
  for i in 1 2 3 4; do
    [ -d "$cdrive/R$i" ] || continue
    badmedia_recorded_all "$cdrive/R$i" "C:\\R$i\\" || fail "medium $i: a file not in UNINST.LST"
  done
  if [ -e "$cdrive/R1/A.TXT" ] || [ -e "$cdrive/R2/SUB" ]; then fail "a refused list was installed from"; fi
  local stray
  stray=$(find "$WINEPREFIX" "$sdir" -name 'ZLY*' -o -name '..SUB*' 2>/dev/null)
  [ -z "$stray" ] || fail "a bad name reached the disk: $stray"
}

# 3. A packed medium whose stored BOMBA.BIN (declared 20,000 bytes) inflates to 1 GiB of zeros
# (about 1 MB packed): the unpacking stops at its limit with the box, quickly and with little
# memory, and the install goes on. PETKRAT.BIN inflates to five times its declared 20,000
# bytes: that is no reason to refuse it.
badinput_bomb() {
  local p=$sdir/payload-bomb m=$sdir/bomb
  badinput_programs "$p"
  head -c 20000 /dev/urandom >"$p/BOMBA.BIN"
  head -c 20000 /dev/urandom >"$p/PETKRAT.BIN"
  "$mkmedium" --flat --packed --setup "$setup_exe" "$p" "$m" >"$m.log" 2>&1 || { fail "mkmedium (bomb)"; return; }
  python3 - "$m/BOMBA.BI_" 1024 <<'PY'
import sys, zlib
# A zlib stream of N MiB of zeros, made without holding them: after a full flush every MiB of
# zeros packs to the same bytes, so they are written again and again.
out, mib = sys.argv[1], int(sys.argv[2])
chunk = bytes(1 << 20)
c = zlib.compressobj(9)
first = c.compress(chunk) + c.flush(zlib.Z_FULL_FLUSH)
again = c.compress(chunk) + c.flush(zlib.Z_FULL_FLUSH)
adler = ((mib << 20) % 65521) << 16 | 1
with open(out, 'wb') as f:
    f.write(first)
    for _ in range(mib - 1):
        f.write(again)
    f.write(b'\x03\x00' + adler.to_bytes(4, 'big'))  # a last empty fixed block, then Adler-32
PY
  python3 -c "
import sys, zlib
plain = bytes((i * 7 + i // 256) & 255 for i in range(100000))
open(sys.argv[1], 'wb').write(plain)
open(sys.argv[2], 'wb').write(zlib.compress(plain, 9))" "$sdir/petkrat.plain" "$m/PETKRAT.BI_"
  fresh_prefix prefix-bomb
  quick_launch_folder
  : >"$sdir/rss.wait"
  badinput_peak_rss "$sdir/rss" "$sdir/rss.wait" &
  local watcher=$!
  robot badinput_bomb SETUP="$m/SETUP.EXE" TARGET='C:\KORV5\'
  rm -f "$sdir/rss.wait"
  wait "$watcher"
  local ms peak
  ms=$(sed -n 's/.*robot: elapsed bomb \([0-9]*\) ms.*/\1/p' "$sdir/$step-robot-badinput_bomb.txt")
  peak=$(cat "$sdir/rss" 2>/dev/null)
  [ "$peak" = 0 ] && peak=""  # the process was not seen
  say "   the bomb's box $ms ms after Start; SETUP's peak resident memory ${peak:-?} kB"
  if [ -z "$ms" ] || [ "$ms" -gt 15000 ]; then fail "the bomb's box came after ${ms:-no} ms"; fi
  if [ -n "$peak" ] && [ "$peak" -gt 300000 ]; then fail "SETUP took $peak kB at its peak"; fi
  setting 'C:\KORV5\' "$p" "$m"
  export KX_E2E_SAVED="$(winpath "$sdir/petkrat.plain")"
  check BadinputBomb
  badmedia_recorded_all "$cdrive/KORV5" 'C:\KORV5\' || fail "bomb: a file not in UNINST.LST"
}

# 4. An earlier install (its UNINST.LST, a stand-in uninstaller that leaves everything) whose
# SYSTEM.WCO is not a configuration file: random bytes with zeros and no line end, one line of
# 100,000 characters, only empty lines, entries outside any section. It is not offered, and the
# new SYSTEM.WCO is written with this install's paths.
badinput_wco() {
  local p=$sdir/payload-wco m=$sdir/wco
  badinput_programs "$p"
  printf 'soubor\r\n' >"$p/A.TXT"
  "$mkmedium" --flat --packed --setup "$setup_exe" "$p" "$m" >"$m.log" 2>&1 || { fail "mkmedium (wco)"; return; }
  fresh_prefix prefix-wco
  quick_launch_folder
  local kind
  for kind in random longline empty outside; do
    local t="$cdrive/W-$kind" wco
    mkdir -p "$t/EXE"
    : >"$t/UNINST.LST"
    cp "$win/tests/e2e/kx_e2e_stub0.exe" "$t/EXE/UNINSTAL.EXE"
    wco=$t/EXE/SYSTEM.WCO
    case $kind in
      # (no Ctrl-Z: a text read on Windows would end there, before the garbage)
      random) head -c 30000 /dev/urandom | tr -d '\n\r\032' >"$wco" ;;
      longline) { printf 'Konfiguracni soubor KORVEX\r\n\r\n'; yes 'klic=hodnota ' | head -c 100000 | tr -d '\n'; } >"$wco" ;;
      empty) printf '\r\n\r\n\r\n\r\n' >"$wco" ;;
      outside) printf 'system_path=\\JINDE\\\r\nBEGIN[]\r\nx=1\r\n' >"$wco" ;;
    esac
    robot badinput_wco SETUP="$m/SETUP.EXE" TARGET="C:\\W-$kind\\"
    setting "C:\\W-$kind\\" "$p" "$m"
    check BadinputWco
    # The registry now names this target's SYSTEM.WCO: the next target's own file must be the
    # one found.
    rm -rf "$t"
  done
}
