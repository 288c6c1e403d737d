#!/usr/bin/env python3
"""summary.py OUT - the benchmark's figures from the files bench/run.sh left in OUT: medians of
the install rounds, the ratios asked for, the unpack table, memory, start-up, size and imports."""
import os
import statistics
import sys

# Windows system DLLs SETUP.EXE may import (anything else must be shipped with it).
SYSTEM_DLLS = {"kernel32.dll", "user32.dll", "gdi32.dll", "advapi32.dll", "shell32.dll",
               "ole32.dll", "oleaut32.dll", "comctl32.dll", "comdlg32.dll", "msvcrt.dll",
               "shlwapi.dll", "version.dll", "uuid.dll", "winmm.dll"}


def fields(words):
    return dict(w.split("=", 1) for w in words if "=" in w)


def main():
    out = sys.argv[1]
    machine = open(os.path.join(out, "machine.txt")).read().strip()
    runs = {}
    extra = {}
    bad = []
    for line in open(os.path.join(out, "runs.txt")):
        w = line.split()
        if len(w) < 4 or w[2] == "-":
            bad.append(line.strip())
            continue
        if w[3] != "ok":
            bad.append(line.strip())
        runs.setdefault(w[0], []).append(float(w[2]))
        extra.setdefault(w[0], []).append(fields(w[4:]))
    med = {k: statistics.median(v) for k, v in runs.items()}
    print(f"machine: {machine}")
    try:
        load = open(os.path.join(out, "load.txt")).read().split("\n")
        print("load average (1, 5, 15 min): " + "; ".join(l for l in load if l))
    except OSError:
        pass
    print(f"install rounds (alternated, ms; median of {max(map(len, runs.values()), default=0)}):")
    for k in ("setup", "nsis", "floor"):
        if k in runs:
            print(f"  {k:6s} median {med[k]:7.0f}   runs {' '.join(f'{x:.0f}' for x in runs[k])}")
        else:
            print(f"  {k:6s} not measured")
    floor_inner = [float(e["inner"]) for e in extra.get("floor", []) if e.get("inner")]
    if floor_inner:
        print(f"  floor inside the process (list read to last close): median {statistics.median(floor_inner):.0f} ms")
    # Ratios: of the medians, and the median of the ratios within each round (the two runs of
    # a round are next to each other in time, so a busy machine disturbs them alike).
    def ratio(a, b, target):
        if a not in runs or b not in runs:
            return
        pairs = [x / y for x, y in zip(runs[a], runs[b])]
        print(f"  {a.upper() if a == 'nsis' else a.replace('setup', 'SETUP'):5s} / {b.replace('nsis', 'NSIS'):5s} = "
              f"{med[a] / med[b]:.2f}x of the medians, {statistics.median(pairs):.2f}x median of the "
              f"rounds ({' '.join(f'{p:.2f}' for p in pairs)}){target}")
    ratio("setup", "nsis", "   target at most 1.0x")
    ratio("setup", "floor", "   target at most 1.5x")
    ratio("nsis", "floor", "")
    if bad:
        print("  FAILED OR DIFFERING RUNS: " + "; ".join(bad))

    if "setup" in extra:
        ups = [float(e["startup"]) for e in extra["setup"] if e.get("startup")]
        if ups:
            print(f"start-up of SETUP.EXE to the dialog shown: median {statistics.median(ups):.0f} ms")
        hwm = [int(e["hwm_kb"]) for e in extra["setup"] if e.get("hwm_kb")]
        base = [int(e["base_rss_kb"]) for e in extra["setup"] if e.get("base_rss_kb")]
        if hwm:
            largest = max_file(out)
            limit = (largest[1] + largest[2]) / 1024 + 2048
            grow = statistics.median(h - b for h, b in zip(hwm, base)) if base else float("nan")
            print(f"peak memory of SETUP.EXE (VmHWM): median {statistics.median(hwm) / 1024:.1f} MiB; "
                  f"resident before Start {statistics.median(base) / 1024:.1f} MiB; "
                  f"growth during the install {grow / 1024:.1f} MiB")
            print(f"  limit packed + plain of the largest file ({largest[0]}: {largest[2]} + {largest[1]} bytes)"
                  f" + 2 MiB = {limit / 1024:.1f} MiB: "
                  f"growth / limit = {grow / limit:.2f}x")
    for k in ("nsis",):
        hwm = [int(e["hwm_kb"]) for e in extra.get(k, []) if e.get("hwm_kb")]
        if hwm:
            print(f"peak memory of the NSIS installer (VmHWM): median {statistics.median(hwm) / 1024:.1f} MiB")

    path = os.path.join(out, "unpack.txt")
    if os.path.exists(path):
        print("unpack microbenchmark (16 MiB plain per file; speed = raw zlib time / our time):")
        for line in open(path):
            print("  " + line.rstrip().replace("\r", ""))

    path = os.path.join(out, "size.txt")
    if os.path.exists(path) and os.path.getsize(path):
        size = {}
        dlls = []
        for line in open(path):
            w = line.split()
            if w[0] == "dll":
                dlls.append(w[1])
            else:
                size[w[0]] = int(w[1])
        print(f"SETUP.EXE: {size.get('built', 0)} bytes as built, {size.get('stripped', 0)} stripped "
              f"({size.get('stripped', 0) / 262144:.2f}x of 256 KB)")
        odd = [d for d in dlls if d.lower() not in SYSTEM_DLLS]
        print(f"  imports: {', '.join(dlls)}" + (f"   NOT SYSTEM: {', '.join(odd)}" if odd else "   (all system DLLs)"))
    else:
        print("SETUP.EXE: not built, size and imports not measured")
    return 0


def max_file(out):
    """(name, plain size, packed size) of the file with the largest packed + plain size (the
    most an unpacker holds at once), from the medium's list."""
    best = ("?", 0, 0)
    medium = os.path.join(out, "medium")
    data = open(os.path.join(medium, "DISKLIST.LST"), "rb").read()
    count = int.from_bytes(data[86:88], "little")
    for i in range(count):
        rec = data[92 + 140 * i: 92 + 140 * (i + 1)]
        name = rec[0:17].split(b"\0")[0].decode("cp1250")
        stored = rec[17:34].split(b"\0")[0].decode("cp1250")
        size = int.from_bytes(rec[52:56], "little")
        packed = os.path.getsize(os.path.join(medium, stored))
        if size + packed > best[1] + best[2]:
            best = (name, size, packed)
    return best


if __name__ == "__main__":
    sys.exit(main())
