# Scenario group: the guarded memory mode over a whole install. Sourced by tests/e2e/run.sh,
# which provides the helpers (make_payload, make_medium, fresh_prefix, robot, ...).

# mmbin_tool LOG OUT: kx_mmbin on LOG (a Unix path), its report in OUT (Unix line ends);
# returns its exit code.
mmbin_tool() {
  wine "$win/tests/e2e/kx_mmbin.exe" "$(winpath "$1")" >"$2.crlf" 2>&1 </dev/null
  local rc=$?
  tr -d '\r' <"$2.crlf" >"$2" && rm -f "$2.crlf"
  return $rc
}

# mmbin_mutate LOG OUT WHAT: a copy of LOG with one fault: "leak" drops the last release of a
# block, "damage" sets the error flag of the first release. Prints the place (name:line) of the
# grant of the block concerned.
mmbin_mutate() {
  python3 - "$@" <<'PY'
import struct, sys
src, out, what = sys.argv[1:4]
data = bytearray(open(src, 'rb').read())
recs, at = [], 0
while at < len(data):
    kind, address = struct.unpack_from('<HI', data, at)
    recs.append((at, kind, address))
    at += 38 + (210 if kind <= 3 else 0)
releases = [r for r in recs if r[1] in (6, 8) and r[2] != 0]
r = releases[-1] if what == 'leak' else releases[0]
grant = [g for g in recs if g[0] < r[0] and g[1] in (4, 5, 7) and g[2] == r[2]][-1]
name = data[grant[0] + 18:grant[0] + 32].split(b'\0')[0].decode('cp1250')
print('%s:%d' % (name, struct.unpack_from('<I', data, grant[0] + 32)[0]))
if what == 'leak':
    del data[r[0]:r[0] + 38]
else:
    struct.pack_into('<H', data, r[0] + 36, 1)
open(out, 'wb').write(bytes(data))
PY
}

# A packed medium of the multi-directory tree, installed with SETUP.EXE "$m" through to its
# success status and exit; the log it writes into its current directory must show no leak and
# no damaged block. The same log with one release dropped, or one flagged damaged, must fail.
scenario_guarded_memory() {
  make_payload "$sdir/payload"
  make_medium "$sdir/payload" "$sdir/medium" --flat --packed || return
  fresh_prefix prefix
  quick_launch_folder
  local script=$sdir/memory.kxr
  sed 's/^start \${SETUP}$/start ${SETUP} "$m"/' "$here/install.kxr" >"$script"
  grep -q '^start ${SETUP} "$m"$' "$script" || { fail "no start line in install.kxr"; return; }
  mkdir -p "$sdir/cwd"
  pushd "$sdir/cwd" >/dev/null || return
  robot "$script" SETUP="$sdir/medium/SETUP.EXE" SOURCE="$(source_of "$sdir/medium")" QUICK=checked \
    TARGET='C:\KORV5\'
  popd >/dev/null || return
  [ -e "$cdrive/KORV5/EXE/KORV5.EXE" ] || fail "the install did not complete"
  local log=$sdir/cwd/MMBIN.MM
  [ -e "$sdir/medium/MMBIN.MM" ] && fail "MMBIN.MM was written beside the program, not in the current directory"
  [ -f "$log" ] || { fail "no MMBIN.MM in the current directory"; return; }
  cp "$log" "$sdir/MMBIN.MM"  # kept with the logs: some hundred kilobytes

  step=$((step + 1))
  say "== $step: kx_mmbin on the log of the install ($(stat -c %s "$log") bytes)"
  local report=$sdir/$step-mmbin.txt
  mmbin_tool "$log" "$report"
  local rc=$?
  sed 's/^/   /' "$report"
  [ $rc = 0 ] || fail "kx_mmbin found faults in the install's log (exit $rc), see $report"
  grep -q '^records: .*statistics started and ended, command line ".*SETUP.EXE \$m "$' "$report" ||
    fail "the log's command line is not the install's with \$m"
  grep -q '^granted: [1-9][0-9][0-9]* blocks' "$report" || fail "the log holds no granted block"

  # The tool fails on the same log with one fault, and names the block.
  local what place
  for what in leak damage; do
    step=$((step + 1))
    say "== $step: kx_mmbin on the log with a $what"
    report=$sdir/$step-mmbin-$what.txt
    place=$(mmbin_mutate "$log" "$sdir/cwd/$what.mm" $what) || { fail "mutating the log ($what)"; continue; }
    mmbin_tool "$sdir/cwd/$what.mm" "$report"
    rc=$?
    sed 's/^/   /' "$report"
    [ $rc = 1 ] || fail "kx_mmbin on the log with a $what: exit $rc, not 1"
    case $what in
      leak) grep -q "^  leak: $place size " "$report" || fail "the leak of the block of $place is not named" ;;
      damage) grep -q "^  damaged: $place size .*, released at " "$report" ||
        fail "the damaged block of $place is not named" ;;
    esac
    grep -q '^result: FAULTS' "$report" || fail "no FAULTS result for the $what"
  done
}
