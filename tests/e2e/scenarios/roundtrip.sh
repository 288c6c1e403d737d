# Scenario group: the uninstall round trip. Sourced by tests/e2e/run.sh, which provides the
# helpers (fresh_prefix, robot, source_of, ...).
#
# The demo medium is installed with both icons, the user saves a design in Navrhy, the installed
# UNINSTAL.EXE removes the installation (its own program goes at the next start of Windows). A
# snapshot of the prefix taken before the install (files with size and content hash, registry
# keys and values: tests/e2e/snapshot.py) must then equal the one taken after the uninstall,
# but for Wine's own keys and the user's design with the directories that hold it.

# roundtrip_snapshot NAME: the running prefix's snapshot $sdir/snapshots/NAME.gz, taken with
# the wineserver down (it writes the registry files as it ends), then Wine started again.
roundtrip_snapshot() {
  mkdir -p "$sdir/snapshots"
  wine_down
  python3 "$here/snapshot.py" take "$WINEPREFIX" "$sdir/snapshots/$1.gz" | sed 's/^/   /'
  local rc=${PIPESTATUS[0]}
  wine_up "$WINEPREFIX"
  [ "$rc" = 0 ] || fail "snapshot $1 (exit $rc)"
  return "$rc"
}

scenario_roundtrip() {
  local demo=$sdir/demo
  if ! bash "$root/tools/demo/make-medium.sh" "$mkmedium" "$win" "$demo" >"$sdir/demo-medium.log" 2>&1; then
    cat "$sdir/demo-medium.log"
    fail "the demo medium (tools/demo/make-medium.sh)"
    return
  fi
  fresh_prefix prefix
  quick_launch_folder
  roundtrip_snapshot before || return

  robot install SETUP="$demo/cd/SETUP.EXE" SOURCE="$(source_of "$demo/cd")" QUICK=checked \
    TARGET='C:\KORV5\'
  local design=$cdrive/KORV5/Navrhy/MUJ.D32
  [ -d "$cdrive/KORV5/Navrhy" ] || { fail "the install made no C:\\KORV5\\Navrhy"; return; }
  { printf 'KX900 Design file \r\n'; head -c 60 /dev/zero; printf 'NAVRH Muj navrh; SOUCASTKY 3\r\n'; } >"$design"
  cp "$design" "$sdir/design.d32"

  # The check can fail: the installed prefix differs from the one before, in the installed
  # files, the uninstall entry and the shortcuts at least.
  roundtrip_snapshot installed || return
  step=$((step + 1))
  say "== $step: the installed prefix differs from the one before"
  local log=$sdir/$step-compare-installed.txt
  python3 "$here/snapshot.py" compare "$sdir/snapshots/before.gz" "$sdir/snapshots/installed.gz" \
    --kept 'C:\KORV5\Navrhy\MUJ.D32' >"$log" 2>&1
  local rc=$? what
  tail -1 "$log" | sed 's/^/   /'
  [ $rc = 1 ] || fail "compare before and installed: exit $rc, not 1 (see $log)"
  for what in 'new F drive_c/KORV5/EXE/KORV5.EXE ' 'new F drive_c/KORV5/UNINST.LST ' \
      'new K HKLM Software\\\\Microsoft\\\\Windows\\\\CurrentVersion\\\\Uninstall\\\\KORVEX$' \
      'new K HKLM Software\\\\Classes\\\\d32_file$' 'new F .*/Desktop/KORVEX.lnk ' \
      'new F .*/Quick Launch/KORVEX.lnk ' 'new F .*/Start Menu/Programs/KORVEX/'; do
    grep -qi "^  $what" "$log" || fail "compare before and installed does not show: $what"
  done

  # KX_E2E_ROUNDTRIP_SKIP=TEXT drops the UNINST.LST records whose path holds TEXT before the
  # uninstall: what they name stays, and the compare below must show it.
  if [ -n "${KX_E2E_ROUNDTRIP_SKIP:-}" ]; then
    python3 - "$cdrive/KORV5/UNINST.LST" "$KX_E2E_ROUNDTRIP_SKIP" <<'PY'
import sys
path, text = sys.argv[1], sys.argv[2].encode('cp1250')
data = open(path, 'rb').read()
records = [data[i:i + 1028] for i in range(0, len(data), 1028)]
kept = [r for r in records if text not in r[2:].split(b'\0')[0]]
print('   UNINST.LST: %d records dropped (%s)' % (len(records) - len(kept), sys.argv[2]))
open(path, 'wb').write(b''.join(kept))
PY
  fi
  robot uninstall UNINSTAL='C:\KORV5\EXE\UNINSTAL.EXE'
  # The running uninstaller leaves itself to the next start of Windows.
  wineboot -r >/dev/null 2>&1 </dev/null
  roundtrip_snapshot after || return
  step=$((step + 1))
  say "== $step: the prefix after the uninstall equals the one before, with the user's design"
  log=$sdir/$step-compare-after.txt
  python3 "$here/snapshot.py" compare "$sdir/snapshots/before.gz" "$sdir/snapshots/after.gz" \
    --kept 'C:\KORV5\Navrhy\MUJ.D32' >"$log" 2>&1
  rc=$?
  sed 's/^/   /' "$log"
  [ $rc = 0 ] || fail "compare before and after the uninstall (exit $rc), see $log"
  cmp -s "$design" "$sdir/design.d32" || fail "the user's design changed"
}
