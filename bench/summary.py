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


# The ratios asked for: (road, peer, target) - "SETUP /VERYSILENT / NSIS /S" and so on.
RATIOS = (("silent", "nsis", 1.0), ("setup", "nsis", 1.3), ("silent", "floor", 1.3),
          ("setup", "floor", None), ("nsis", "floor", None))
LABEL = {"setup": "SETUP dialog", "silent": "SETUP /VERYSILENT", "nsis": "NSIS /S", "floor": "floor"}


def main():
    out = sys.argv[1]
    machine = open(os.path.join(out, "machine.txt")).read().strip()
    runs = {}  # (payload, kind) -> [ms]
    extra = {}
    bad = []
    for line in open(os.path.join(out, "runs.txt")):
        w = line.split()
        if len(w) < 5 or w[3] == "-":
            bad.append(line.strip())
            continue
        if w[4] != "ok":
            bad.append(line.strip())
        runs.setdefault((w[0], w[1]), []).append(float(w[3]))
        extra.setdefault((w[0], w[1]), []).append(fields(w[5:]))
    med = {k: statistics.median(v) for k, v in runs.items()}
    print(f"machine: {machine}")
    try:
        load = open(os.path.join(out, "load.txt")).read().split("\n")
        print("load average (1, 5, 15 min): " + "; ".join(l for l in load if l))
    except OSError:
        pass
    payloads = []
    for p, _ in runs:
        if p not in payloads:
            payloads.append(p)
    for p in payloads:
        try:
            files = int(open(os.path.join(out, f"files-{p}.txt")).read())
        except (OSError, ValueError):
            files = 0
        count = max(len(v) for (q, _), v in runs.items() if q == p)
        print(f"payload {p}: {files} files; install rounds (alternated, ms; median of {count}):")
        for k in ("setup", "silent", "nsis", "floor"):
            if (p, k) in runs:
                print(f"  {LABEL[k]:18s} median {med[p, k]:7.0f}   runs {' '.join(f'{x:.0f}' for x in runs[p, k])}")
            else:
                print(f"  {LABEL[k]:18s} n/a")
        inner = [float(e["inner"]) for e in extra.get((p, "floor"), []) if e.get("inner")]
        if inner:
            print(f"  floor inside the process (list read to last close): median {statistics.median(inner):.0f} ms")
        # Ratios: of the medians, and the median of the ratios within each round (the runs of a
        # round are close together in time, so a busy machine disturbs them alike).
        for a, b, target in RATIOS:
            goal = f"   target at most {target:.1f}x" if target else ""
            name = f"{LABEL[a]} / {LABEL[b]}"
            if (p, a) not in runs or (p, b) not in runs:
                print(f"  {name:32s} n/a{goal}")
                continue
            pairs = [x / y for x, y in zip(runs[p, a], runs[p, b])]
            print(f"  {name:32s} {med[p, a] / med[p, b]:.2f}x of the medians, {statistics.median(pairs):.2f}x "
                  f"median of the rounds ({' '.join(f'{q:.2f}' for q in pairs)}){goal}")
        if files and (p, "floor") in runs:
            cost = []
            for k in ("setup", "silent", "nsis"):
                if (p, k) in runs:
                    cost.append(f"{LABEL[k]} {(med[p, k] - med[p, 'floor']) / files:.2f}")
                else:
                    cost.append(f"{LABEL[k]} n/a")
            print(f"  per-file cost over the floor ((median - floor) / {files} files, ms): " + "; ".join(cost))
        setup = extra.get((p, "setup"), [])
        ups = [float(e["startup"]) for e in setup if e.get("startup")]
        if ups:
            print(f"  start-up of SETUP.EXE to the dialog shown: median {statistics.median(ups):.0f} ms")
        hwm = [int(e["hwm_kb"]) for e in setup if e.get("hwm_kb")]
        base = [int(e["base_rss_kb"]) for e in setup if e.get("base_rss_kb")]
        if hwm and base:
            largest = max_file(os.path.join(out, f"medium-{p}"))
            limit = (largest[1] + largest[2]) / 1024 + 2048
            grow = statistics.median(h - b for h, b in zip(hwm, base))
            print(f"  peak memory of SETUP.EXE (VmHWM): median {statistics.median(hwm) / 1024:.1f} MiB; "
                  f"resident before Start {statistics.median(base) / 1024:.1f} MiB; "
                  f"growth during the install {grow / 1024:.1f} MiB")
            print(f"  limit packed + plain of the largest file ({largest[0]}: {largest[2]} + {largest[1]} bytes)"
                  f" + 2 MiB = {limit / 1024:.1f} MiB: growth / limit = {grow / limit:.2f}x   target at most 1.0x")
        cpu = []
        for k in ("setup", "silent", "nsis"):
            ms = [int(e["cpu_ms"]) for e in extra.get((p, k), []) if e.get("cpu_ms")]
            if ms:
                cpu.append(f"{LABEL[k]} {statistics.median(ms):.0f}")
        if cpu:
            print("  processor time of the installer process (user + system, ms, median): " + "; ".join(cpu))
        for k in ("silent", "nsis"):
            hwm = [int(e["hwm_kb"]) for e in extra.get((p, k), []) if e.get("hwm_kb")]
            if hwm:
                print(f"  peak memory of {LABEL[k]} (VmHWM, whole process): median {statistics.median(hwm) / 1024:.1f} MiB")
    if bad:
        print("FAILED OR DIFFERING RUNS: " + "; ".join(bad))

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


def max_file(medium):
    """(name, plain size, packed size) of the file with the largest packed + plain size (the
    most an unpacker holds at once), from the list of the medium in that directory."""
    best = ("?", 0, 0)
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
