#!/usr/bin/env python3
"""gen_payload.py - deterministic test data for the benchmark.

  gen_payload.py payload DIR   the install payload: about 400 files, about 150 MB, in a few
                               subdirectories (names of at most 16 characters, one level)
  gen_payload.py library DIR   a library-heavy payload: 2,000 files of 1 to 64 KB (log-uniform),
                               mostly text-like, some tables and some random, in 8 subdirectories
  gen_payload.py unpack DIR    the unpack microbenchmark's inputs: for each compression ratio
                               1.5, 4, 10 and 100 a plain file of 16 MiB packed as one zlib
                               stream at level 6 (rN.z), and UNPACK.TXT listing
                               "NAME PLAIN_SIZE PACKED_SIZE" per line

Everything comes from one fixed seed: the same command writes the same bytes on every machine
(Python's random.Random is the Mersenne Twister, stable across versions for these calls).
"""
import os
import random
import sys
import zlib

SEED = 20261122

# Words for the text-like files: design-library and documentation flavour, plain ASCII.
WORDS = ("rezistor kondenzator dioda tranzistor pouzdro vyvod napajeni zem signal sbernice "
         "spoj vrstva deska schema soucastka knihovna symbol model simulace proud napeti "
         "odpor kapacita indukcnost frekvence teplota tolerance vykon SMD THT SOT23 SO8 DIP14 "
         "QFP44 0805 1206 R C L D Q U J P GND VCC +5V +3V3 NET PIN PAD VIA TRACK ARC TEXT "
         "LAYER TOP BOTTOM SILK MASK DRILL X Y W H ROT ANGLE VALUE PART REF NAME TYPE").split()


def text_bytes(rng, size):
    """Text lines of words and numbers: deflates about 3 to 4 to 1, like libraries and docs."""
    out = []
    n = 0
    while n < size:
        k = rng.randint(3, 12)
        line = " ".join(rng.choice(WORDS) if rng.random() < 0.8 else str(rng.randint(0, 99999))
                        for _ in range(k)) + "\r\n"
        out.append(line)
        n += len(line)
    return "".join(out).encode("ascii")[:size]


def copy_model_bytes(rng, size, literal, longest):
    """Bytes made of random literals (probability `literal` per token) and copies of 3 to
    `longest` bytes from earlier output within deflate's 32 KiB window: `literal` sets the
    compression ratio (1.0 gives random data, small values give high ratios)."""
    out = bytearray(rng.randbytes(64))
    while len(out) < size:
        if rng.random() < literal:
            out += rng.randbytes(rng.randint(1, 8))
        else:
            length = rng.randint(3, longest)
            reach = min(len(out), 32768)
            if reach < length:
                out += rng.randbytes(length)
                continue
            start = len(out) - rng.randint(length, reach)
            out += out[start:start + length]
    return bytes(out[:size])


def sparse_bytes(rng, size, zeros):
    """Sparse data: a few random bytes, then a run of about `zeros` zero bytes, over and over;
    deflates about 100 to 1 at zeros of 1,500, like sparse simulation arrays."""
    out = bytearray()
    while len(out) < size:
        out += rng.randbytes(rng.randint(4, 16))
        out += bytes(rng.randint(zeros // 2, zeros * 3 // 2))
    return bytes(out[:size])


def records_bytes(rng, size):
    """A binary table: fixed 32-byte records with a counter, small fields and a random word;
    deflates about 2 to 1, like object and model files."""
    out = bytearray()
    i = 0
    while len(out) < size:
        out += i.to_bytes(4, "little") + bytes([i % 7, 0, 1, rng.randint(0, 3)]) + \
            rng.randbytes(8) + bytes(8) + (i * 3).to_bytes(4, "little") + b"KX\x00\x00"
        i += 1
    return bytes(out[:size])


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as f:
        f.write(data)


def payload(root):
    rng = random.Random(SEED)
    files = []  # (relative path, bytes)
    # 300 small text-like files, 2 to 60 KB (log-uniform): libraries and documentation.
    for i in range(300):
        size = int(2048 * (30 ** rng.random()))
        sub = ("ELIB", "SLIB", "LLIB", "DOC")[i % 4]
        ext = ("E32", "S32", "L32", "TXT")[i % 4]
        files.append((f"{sub}/SOUB{i:04d}.{ext}", text_bytes(rng, size)))
    # 60 medium binaries, 100 KB to 1.5 MB: a third random (packed files, images), a third
    # tables (about 2:1), a third copy-model data of about 4:1.
    for i in range(60):
        size = int(100_000 * (15 ** rng.random()))
        kind = i % 3
        if kind == 0:
            data = rng.randbytes(size)
        elif kind == 1:
            data = records_bytes(rng, size)
        else:
            data = copy_model_bytes(rng, size, 0.12, 24)
        files.append((f"DATA/BIN{i:03d}.DAT", data))
    # 30 models of 0.5 to 1.5 MB, text-like.
    for i in range(30):
        files.append((f"MLIB/MODEL{i:03d}.LIB", text_bytes(rng, rng.randint(500_000, 1_500_000))))
    # 5 large files of 10 to 30 MB: one highly compressible (about 100:1), one random, one
    # table, one text-like, one copy-model of about 10:1.
    large = (
        ("BIG/SIMDATA.BIN", lambda: sparse_bytes(rng, 12_000_000, 1500)),
        ("BIG/MEDIA.PAK", lambda: rng.randbytes(18_000_000)),
        ("BIG/FOOTPRNT.TBL", lambda: records_bytes(rng, 22_000_000)),
        ("BIG/PARTS.TXT", lambda: text_bytes(rng, 14_000_000)),
        ("BIG/LAYOUT.DB", lambda: copy_model_bytes(rng, 26_000_000, 0.02, 64)),
    )
    for name, make in large:
        files.append((name, make()))
    total = 0
    for rel, data in files:
        write(os.path.join(root, rel), data)
        total += len(data)
    print(f"gen_payload: {len(files)} files, {total} bytes in {root}")


def library(root):
    rng = random.Random(SEED + 3)
    total = 0
    for i in range(2000):
        size = int(1024 * (64 ** rng.random()))
        sub = ("ELIB", "SLIB", "LLIB", "MLIB", "SYM", "FOOT", "DOC", "DATA")[i % 8]
        pick = rng.random()
        if pick < 0.7:
            data, ext = text_bytes(rng, size), "LIB"
        elif pick < 0.9:
            data, ext = records_bytes(rng, size), "TBL"
        else:
            data, ext = rng.randbytes(size), "BIN"
        write(os.path.join(root, sub, f"K{i:05d}.{ext}"), data)
        total += len(data)
    print(f"gen_payload: 2000 files, {total} bytes in {root}")


# Per ratio: the maker of the data from one knob, and the knob's range (the ratio grows with it).
UNPACK = (
    (1.5, lambda rng, n, k: copy_model_bytes(rng, n, 1 - k, 12), 0.0, 1.0),
    (4, lambda rng, n, k: copy_model_bytes(rng, n, 1 - k, 40), 0.0, 1.0),
    (10, lambda rng, n, k: copy_model_bytes(rng, n, 1 - k, 80), 0.0, 1.0),
    (100, lambda rng, n, k: sparse_bytes(rng, n, int(k)), 16.0, 8000.0),
)


def unpack(root):
    rng = random.Random(SEED + 1)
    size = 16 * 1024 * 1024
    lines = []
    for ratio, make, lo, hi in UNPACK:
        # Tune the knob on a 1 MiB sample until the level-6 ratio is within 5 %.
        knob = (lo + hi) / 2
        for _ in range(20):
            sample = make(random.Random(SEED + 2), 1 << 20, knob)
            got = len(sample) / len(zlib.compress(sample, 6))
            if abs(got - ratio) / ratio < 0.05:
                break
            if got > ratio:
                hi = knob
            else:
                lo = knob
            knob = (lo + hi) / 2
        plain = make(rng, size, knob)
        packed = zlib.compress(plain, 6)
        name = f"r{ratio:g}.z"
        write(os.path.join(root, name), packed)
        lines.append(f"{name} {len(plain)} {len(packed)}")
        print(f"gen_payload: {name}: {len(plain)} -> {len(packed)} bytes, "
              f"ratio {len(plain) / len(packed):.2f}")
    write(os.path.join(root, "UNPACK.TXT"), ("\r\n".join(lines) + "\r\n").encode("ascii"))


def main():
    makers = {"payload": payload, "library": library, "unpack": unpack}
    if len(sys.argv) != 3 or sys.argv[1] not in makers:
        sys.stderr.write("usage: gen_payload.py payload|library|unpack DIR\n")
        return 2
    makers[sys.argv[1]](sys.argv[2])
    return 0


if __name__ == "__main__":
    sys.exit(main())
