#!/usr/bin/python3
"""Reads the programs' resources and headers back with pefile (Debian's python3-pefile).

  check_programs.py SOURCE_DIR BUILD_DIR SETUP.exe UNINSTAL.exe KORV5.exe CONFIG.exe [more.exe...]

The four programs: manifest (execution level, DPI awareness, common controls 6), version
information and icons. Every program given: PE time stamp 0 and neither the source nor the build
directory inside (reproducible builds). Each failure prints the value seen; exit 1 on any."""
import re
import struct
import sys

import pefile

failures = []


def check(row, what, seen, wanted):
    if seen != wanted:
        failures.append(f"row {row}: {what}: seen {seen!r}, wanted {wanted!r}")


def resources(pe):
    """{type id: {name id: [data bytes of each language]}}"""
    found = {}
    for rtype in pe.DIRECTORY_ENTRY_RESOURCE.entries:
        for name in rtype.directory.entries:
            for lang in name.directory.entries:
                d = lang.data.struct
                data = pe.get_data(d.OffsetToData, d.Size)
                found.setdefault(rtype.id, {}).setdefault(name.id, []).append(data)
    return found


def icon_sizes(group):
    """The image sizes of a GRPICONDIR (width byte 0 means 256)."""
    count = struct.unpack_from("<HHH", group)[2]
    return sorted(group[6 + 14 * i] or 256 for i in range(count))


# Row: file, execution level, icon groups, file description.
PROGRAMS = [
    (1, "SETUP", "requireAdministrator", [1], "Instalace návrhového systému KORVEX"),
    (2, "UNINSTAL", "requireAdministrator", [1], "Odinstalace návrhového systému KORVEX"),
    (3, "KORV5", "asInvoker", [1, 10, 11, 12], "KORVEX - Návrhový systém pro elektroniku"),
    (4, "CONFIG", "asInvoker", [1], "Konfigurace KORVEX"),
]

source_dir, build_dir = sys.argv[1].encode(), sys.argv[2].encode()
files = sys.argv[3:]
for (row, name, level, groups, description), path in zip(PROGRAMS, files):
    check(row, "file", path.rsplit("/", 1)[-1].upper(), name + ".EXE")
    pe = pefile.PE(path)
    res = resources(pe)
    manifest = res.get(24, {}).get(1, [b""])[0].decode("utf-8", "replace")
    check(row, "execution level", re.findall(r'requestedExecutionLevel level="(\w+)"', manifest), [level])
    check(row, "dpiAware", re.findall(r">(\w+)</dpiAware>", manifest), ["true"])
    check(row, "supportedOS entries", manifest.count("<supportedOS "), 5)
    check(row, "common controls", re.findall(r'Common-Controls" version="([\d.]+)"', manifest), ["6.0.0.0"])
    fixed = pe.VS_FIXEDFILEINFO[0]
    check(row, "FILEVERSION", (fixed.FileVersionMS, fixed.FileVersionLS), (0x50003, 0x100000))
    check(row, "PRODUCTVERSION", (fixed.ProductVersionMS, fixed.ProductVersionLS), (0x50003, 0x100000))
    tables, translation = {}, None
    for info in pe.FileInfo[0]:
        if info.Key == b"StringFileInfo":
            tables = {t.LangID: {k.decode(): v.decode() for k, v in t.entries.items()}
                      for t in info.StringTable}
        if info.Key == b"VarFileInfo":
            translation = info.Var[0].entry.get(b"Translation")
    strings = tables.get(b"040504E2", {})
    check(row, "string tables", list(tables), [b"040504E2"])
    check(row, "ProductVersion", strings.get("ProductVersion"), "5.003-016")
    check(row, "ProductName", strings.get("ProductName"), "KORVEX")
    check(row, "FileDescription", strings.get("FileDescription"), description)
    check(row, "OriginalFilename", strings.get("OriginalFilename"), name + ".EXE")
    check(row, "Translation", translation, "0x0405 0x04e2")
    check(row, "icon groups", sorted(res.get(14, {})), groups)
    for group in groups:
        data = res.get(14, {}).get(group, [b"\0" * 6])[0]
        check(row, f"icon group {group} sizes", icon_sizes(data), [16, 32, 48, 256])

for row, path in enumerate(files, 1):
    pe = pefile.PE(path)
    check(f"t{row}", f"{path}: PE time stamp", pe.FILE_HEADER.TimeDateStamp, 0)
    data = open(path, "rb").read()
    for directory in (source_dir, build_dir):
        check(f"t{row}", f"{path}: holds {directory!r}", directory in data, False)

for failure in failures:
    print(failure)
print(f"{len(files)} programs, {len(failures)} failures")
sys.exit(1 if failures else 0)
