#!/usr/bin/env python3
"""memwatch.py NAME OUT [FLAG] - the memory of a Windows program running under Wine.

Polls /proc every 20 ms for a process of the Wine prefix WINEPREFIX names whose first
command-line word ends in NAME (compared without regard to case: SETUP.EXE), and follows it
until it ends. Writes to OUT one line:

    pid=P hwm_kb=H base_rss_kb=B base_hwm_kb=W cpu_ms=C

H is the process's peak resident size (VmHWM) at its last sample, C its processor time (user
and system) at that sample, which depends less on the machine's load than the elapsed time.
When FLAG (a file) is given, B and W are VmRSS and VmHWM at the first sample after FLAG has
been deleted (the robot deletes it just before it clicks Start), else 0. Gives up 900 s after it started, or 120 s without
seeing the process.
"""
import os
import sys
import time


def find(name):
    # Only a process of our own Wine prefix: other people may run the same program meanwhile.
    prefix = os.environ.get("WINEPREFIX", "").encode()
    for pid in os.listdir("/proc"):
        if not pid.isdigit():
            continue
        try:
            with open(f"/proc/{pid}/cmdline", "rb") as f:
                first = f.read().split(b"\0")[0].decode("latin-1")
            if first.replace("\\", "/").split("/")[-1].lower() != name.lower():
                continue
            with open(f"/proc/{pid}/environ", "rb") as f:
                if prefix and b"WINEPREFIX=" + prefix not in f.read().split(b"\0"):
                    continue
        except OSError:
            continue
        return int(pid)
    return None


def status(pid):
    values = {}
    try:
        with open(f"/proc/{pid}/status") as f:
            for line in f:
                key, _, rest = line.partition(":")
                if key in ("VmHWM", "VmRSS"):
                    values[key] = int(rest.split()[0])
    except OSError:
        return None
    return values


def cpu_ms(pid):
    try:
        with open(f"/proc/{pid}/stat") as f:
            fields = f.read().rsplit(")", 1)[1].split()
    except OSError:
        return None
    return (int(fields[11]) + int(fields[12])) * 1000 // os.sysconf("SC_CLK_TCK")


def main():
    name, out = sys.argv[1], sys.argv[2]
    flag = sys.argv[3] if len(sys.argv) > 3 else None
    start = time.monotonic()
    pid = None
    while pid is None:
        if time.monotonic() - start > 120:
            open(out, "w").write("pid=0 hwm_kb=0 base_rss_kb=0 base_hwm_kb=0 cpu_ms=0\n")
            return 1
        pid = find(name)
        time.sleep(0.02)
    hwm = base_rss = base_hwm = cpu = 0
    while time.monotonic() - start < 900:
        st = status(pid)
        now = cpu_ms(pid)
        if not st or "VmHWM" not in st or now is None:
            break
        hwm, cpu = st["VmHWM"], now
        if flag and not base_rss and not os.path.exists(flag):
            base_rss, base_hwm = st["VmRSS"], st["VmHWM"]
        time.sleep(0.02)
    with open(out, "w") as f:
        f.write(f"pid={pid} hwm_kb={hwm} base_rss_kb={base_rss} base_hwm_kb={base_hwm} cpu_ms={cpu}\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
