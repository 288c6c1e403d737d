#!/usr/bin/env python3
"""memwatch.py NAME OUT [FLAG] - the memory of a Windows program running under Wine.

Polls /proc every 20 ms for a process whose first command-line word ends in NAME (compared
without regard to case: SETUP.EXE), and follows it until it ends. Writes to OUT one line:

    pid=P hwm_kb=H base_rss_kb=B base_hwm_kb=W

H is the process's peak resident size (VmHWM) at its last sample. When FLAG (a file) is given,
B and W are VmRSS and VmHWM at the first sample after FLAG has been deleted (the robot deletes
it just before it clicks Start), else 0. Gives up 900 s after it started, or 120 s without
seeing the process.
"""
import os
import sys
import time


def find(name):
    for pid in os.listdir("/proc"):
        if not pid.isdigit():
            continue
        try:
            with open(f"/proc/{pid}/cmdline", "rb") as f:
                first = f.read().split(b"\0")[0].decode("latin-1")
        except OSError:
            continue
        if first.replace("\\", "/").split("/")[-1].lower() == name.lower():
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


def main():
    name, out = sys.argv[1], sys.argv[2]
    flag = sys.argv[3] if len(sys.argv) > 3 else None
    start = time.monotonic()
    pid = None
    while pid is None:
        if time.monotonic() - start > 120:
            open(out, "w").write("pid=0 hwm_kb=0 base_rss_kb=0 base_hwm_kb=0\n")
            return 1
        pid = find(name)
        time.sleep(0.02)
    hwm = base_rss = base_hwm = 0
    while time.monotonic() - start < 900:
        st = status(pid)
        if not st or "VmHWM" not in st:
            break
        hwm = st["VmHWM"]
        if flag and not base_rss and not os.path.exists(flag):
            base_rss, base_hwm = st["VmRSS"], st["VmHWM"]
        time.sleep(0.02)
    with open(out, "w") as f:
        f.write(f"pid={pid} hwm_kb={hwm} base_rss_kb={base_rss} base_hwm_kb={base_hwm}\n")
    return 0


if __name__ == "__main__":
    sys.exit(main())
