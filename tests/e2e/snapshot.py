#!/usr/bin/env python3
"""snapshot.py - what a Wine prefix holds, taken before and after a run, and compared.

  snapshot.py take PREFIX OUT            writes the snapshot of PREFIX (wineserver down) to OUT
  snapshot.py compare BEFORE AFTER [--kept WINPATH]...
                                         prints the differences; exit 0 only when nothing changed
                                         but Wine's own keys (IGNORED below) and the files given
                                         with --kept and the directories that hold them

A snapshot (gzip, one line an item, sorted) holds every file of the prefix (path, size,
SHA-1; a shortcut's without the times it keeps, link_hash), every directory and symbolic link (not followed), and every registry key and value of
system.reg, user.reg and userdef.reg. Wine's time stamps of the keys (the number after the
key's name, "#time=") are left out: they change whenever Wine saves a key, whatever it holds.
"""
import gzip
import hashlib
import os
import re
import sys

HIVES = {'system.reg': 'HKLM', 'user.reg': 'HKCU', 'userdef.reg': 'HKU\\.Default'}

# Keys and values that Wine itself changes once per prefix, at the first start of any program
# (found with snapshots around "wine cmd /c exit" and "rundll32 user32.dll,MessageBeep"; the
# plug-and-play service may do its part after the first snapshot). Entries: (hive, key, value
# name); None stands for the key and all below it, "" for the key alone; case is ignored.
IGNORED = [
    # The display driver registers the adapter and the monitor again (date of that start).
    ('HKLM', r'System\\CurrentControlSet\\Control\\Class\\{4D36E968-E325-11CE-BFC1-08002BE10318}', '@'),
    ('HKLM', r'System\\CurrentControlSet\\Control\\Class\\{4D36E968-E325-11CE-BFC1-08002BE10318}\\0000',
     '"DriverDateData"'),
    ('HKLM', r'System\\CurrentControlSet\\Control\\Class\\{4D36E968-E325-11CE-BFC1-08002BE10318}\\0000',
     '"SymbolicLinkValue"'),
    ('HKLM', r'System\\CurrentControlSet\\Control\\Class\\{4D36E96E-E325-11CE-BFC1-08002BE10318}', '@'),
    # Wine's virtual HID device (vendor 845E) registered; the empty NetworkCards key gone.
    ('HKLM', r'System\\CurrentControlSet\\Control\\DeviceClasses\\{378DE44C-56EF-11D1-BC8C-00A0C91405DD}', ''),
    ('HKLM', r'System\\CurrentControlSet\\Control\\DeviceClasses\\{4D1E55B2-F16F-11CF-88CB-001111000030}', ''),
    ('HKLM', r'System\\CurrentControlSet\\Control\\DeviceClasses\\{378DE44C-56EF-11D1-BC8C-00A0C91405DD}'
             r'\\##?#hid#vid_845e&pid_0001#0&0000&0&0#{378de44c-56ef-11d1-bc8c-00a0c91405dd}', None),
    ('HKLM', r'System\\CurrentControlSet\\Control\\DeviceClasses\\{4D1E55B2-F16F-11CF-88CB-001111000030}'
             r'\\##?#hid#vid_845e&pid_0001#0&0000&0&0#{4d1e55b2-f16f-11cf-88cb-001111000030}', None),
    ('HKLM', r'Software\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards', None),
]


def _ignored(hive, key, name):
    k = key.lower()
    for h, ik, iv in IGNORED:
        if h != hive:
            continue
        ik = ik.lower()
        if iv is None and (k == ik or k.startswith(ik + '\\\\')):
            return True
        if iv == '' and k == ik and name is None:
            return True
        if iv and k == ik and name is not None and name.lower() == iv.lower():
            return True
    return False


# ---- taking ---------------------------------------------------------------------------------

def file_hash(path):
    h = hashlib.sha1()
    with open(path, 'rb') as f:
        while True:
            block = f.read(1 << 20)
            if not block:
                break
            h.update(block)
    return h.hexdigest()


def link_hash(path):
    """SHA-1 of a shortcut without the times it keeps of its target's folders and file: they
    tell when the install ran, not what it made. Zeroed: the header's three times, and in each
    file item of the item list its time and the creation and access times of its extension."""
    with open(path, 'rb') as f:
        data = bytearray(f.read())
    if data[:4] != b'L\0\0\0' or len(data) < 78:
        return file_hash(path)
    data[28:52] = bytes(24)
    at = 78 if data[20] & 1 else len(data)
    while at + 2 <= len(data):
        size = int.from_bytes(data[at:at + 2], 'little')
        if size < 2:
            break
        if size >= 16 and data[at + 2] & 0x70 == 0x30:
            data[at + 8:at + 12] = bytes(4)
            ext = int.from_bytes(data[at + size - 2:at + size], 'little')
            if 14 <= ext <= size - 18:
                data[at + ext + 8:at + ext + 16] = bytes(8)
        at += size
    return hashlib.sha1(data).hexdigest()


def files_of(prefix):
    """Lines F/D/L of the prefix's tree; paths relative to it with '/'."""
    out = []
    for top, dirs, files in os.walk(prefix):
        rel_top = os.path.relpath(top, prefix)
        for d in list(dirs):
            p = os.path.join(top, d)
            rel = os.path.normpath(os.path.join(rel_top, d))
            if os.path.islink(p):
                dirs.remove(d)
                out.append('L\t%s\t%s' % (rel, os.readlink(p)))
            else:
                out.append('D\t%s' % rel)
        for f in files:
            p = os.path.join(top, f)
            rel = os.path.normpath(os.path.join(rel_top, f))
            if os.path.islink(p):
                out.append('L\t%s\t%s' % (rel, os.readlink(p)))
            elif rel == 'wineserver':
                continue  # the server's lock of the prefix: there while a server runs
            else:
                hashed = link_hash(p) if f.lower().endswith('.lnk') else file_hash(p)
                out.append('F\t%s\t%d\t%s' % (rel, os.path.getsize(p), hashed))
    return out


def registry_of(path, hive):
    """Lines K (key) and V (value) of one Wine registry file."""
    out = []
    key = None
    pending = ''
    with open(path, 'r', encoding='utf-8', errors='surrogateescape') as f:
        for raw in f:
            line = raw.rstrip('\n')
            if pending:
                line = pending + line.lstrip()
                pending = ''
            if line.endswith('\\') and key is not None and not line.startswith('['):
                pending = line[:-1]
                continue
            if line.startswith('['):
                m = re.match(r'^\[(.*)\](?: \d+)?$', line)
                if not m:
                    raise SystemExit('%s: not a key line: %r' % (path, line))
                key = m.group(1)
                # Wine writes a key only when it has values or no sub-keys: its parents are
                # there all the same.
                parts = key.split('\\\\')
                for n in range(1, len(parts) + 1):
                    out.append('K\t%s\t%s' % (hive, '\\\\'.join(parts[:n])))
            elif key is None or not line or line.startswith(';') or line.startswith('#time='):
                continue
            elif line.startswith('#'):
                out.append('V\t%s\t%s\t%s\t' % (hive, key, line))  # #class, #link
            else:
                m = re.match(r'^(@|"(?:[^"\\]|\\.)*")=(.*)$', line)
                if not m:
                    raise SystemExit('%s: not a value line under [%s]: %r' % (path, key, line))
                out.append('V\t%s\t%s\t%s\t%s' % (hive, key, m.group(1), m.group(2)))
    return out


def take(prefix, out):
    lines = files_of(prefix)
    for name, hive in HIVES.items():
        lines += registry_of(os.path.join(prefix, name), hive)
    lines = sorted(set(lines))
    with gzip.open(out, 'wt', encoding='utf-8', errors='surrogateescape') as f:
        f.write('\n'.join(lines) + '\n')
    files = sum(1 for l in lines if l[0] == 'F')
    keys = sum(1 for l in lines if l[0] == 'K')
    print('snapshot %s: %d files, %d keys, %d values, %d bytes' %
          (out, files, keys, sum(1 for l in lines if l[0] == 'V'), os.path.getsize(out)))


# ---- comparing ------------------------------------------------------------------------------

def load(path):
    """{identity: rest}: F/D/L by path (with the registry files' lines left out), K by key,
    V by key and value name."""
    items = {}
    with gzip.open(path, 'rt', encoding='utf-8', errors='surrogateescape') as f:
        for line in f:
            p = line.rstrip('\n').split('\t')
            if p[0] in 'FDL':
                if p[1] in HIVES:
                    continue  # compared key by key
                items[(p[0], p[1])] = tuple(p[2:])
            elif p[0] == 'K':
                items[('K', p[1], p[2])] = ()
            else:
                items[('V', p[1], p[2], p[3])] = (p[4],)
    return items


def shown(identity, rest):
    return ' '.join(identity) + ('  ' + ' '.join(rest) if rest else '')


def differences(before, after):
    """(what, identity, before's rest, after's rest) for every item that differs."""
    out = []
    for i in sorted(set(before) | set(after)):
        if i not in after:
            out.append(('gone', i, before[i], None))
        elif i not in before:
            out.append(('new', i, None, after[i]))
        elif before[i] != after[i]:
            out.append(('changed', i, before[i], after[i]))
    return out


def print_difference(d):
    what, i, b, a = d
    if what == 'changed':
        print('  changed %s\n      before: %s\n      after:  %s' % (' '.join(i), ' '.join(b), ' '.join(a)))
    else:
        print('  %s %s' % (what, shown(i, b if a is None else a)))


def unix_rel(winpath):
    """C:\\KORV5\\X -> drive_c/KORV5/X (the form of the snapshot's paths)."""
    m = re.match(r'^([A-Za-z]):\\?(.*)$', winpath)
    if not m:
        raise SystemExit('not a path with a drive: %s' % winpath)
    rest = m.group(2).rstrip('\\').replace('\\', '/')
    return 'drive_%s/%s' % (m.group(1).lower(), rest) if rest else 'drive_%s' % m.group(1).lower()


def compare(before_path, after_path, kept):
    before, after = load(before_path), load(after_path)
    allowed = set()
    for k in kept:
        rel = unix_rel(k)
        allowed.add(('F', rel))
        parts = rel.split('/')
        for n in range(2, len(parts)):
            allowed.add(('D', '/'.join(parts[:n])))
    bad = 0
    ignored = 0
    for d in differences(before, after):
        what, i, b, a = d
        if i[0] in ('K', 'V') and _ignored(i[1], i[2], i[3] if i[0] == 'V' else None):
            ignored += 1
            continue
        if (i[0], i[1]) in allowed and what == 'new':
            allowed.discard((i[0], i[1]))
            continue
        bad += 1
        print_difference(d)
    for i in sorted(allowed):
        bad += 1
        print('  missing: the kept %s %s is not there (or was there before)' %
              ('file' if i[0] == 'F' else 'directory', i[1]))
    print('compare %s %s: %d items before, %d after, %d differences (%d of Wine\'s own keys ignored)' %
          (before_path, after_path, len(before), len(after), bad, ignored))
    return 1 if bad else 0


def main(argv):
    if len(argv) == 4 and argv[1] == 'take':
        take(argv[2], argv[3])
        return 0
    if len(argv) >= 4 and argv[1] == 'compare' and len(argv) % 2 == 0:
        kept = []
        for n in range(4, len(argv), 2):
            if argv[n] != '--kept':
                break
            kept.append(argv[n + 1])
        else:
            return compare(argv[2], argv[3], kept)
    print(__doc__)
    return 2


if __name__ == '__main__':
    sys.exit(main(sys.argv))
