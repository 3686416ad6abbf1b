#!/usr/bin/env python3
"""Share of points that carry the same class in two LAS files of the same points.

Usage: tools/class_agreement.py A.las B.las

Reads uncompressed LAS 1.0-1.4 with Python alone (so it runs where laspy is absent) and prints
one line: the agreement, the points that differ, and the most frequent class pairs among them.
Exit status 0 when the files hold the same number of points, 1 otherwise.
"""
import struct
import sys
from collections import Counter


def classes(path):
    with open(path, "rb") as f:
        data = f.read()
    if data[:4] != b"LASF":
        sys.exit(f"{path}: not a LAS file")
    minor = data[25]
    offset = struct.unpack_from("<I", data, 96)[0]
    fmt = data[104] & 0x3F
    length = struct.unpack_from("<H", data, 105)[0]
    count = struct.unpack_from("<I", data, 107)[0]
    if minor >= 4 and count == 0:
        count = struct.unpack_from("<Q", data, 247)[0]
    if offset + count * length > len(data):
        sys.exit(f"{path}: truncated")
    # Formats 6-10 keep a whole byte for the class at 16; older ones 5 bits at 15.
    if fmt >= 6:
        return data[offset + 16 : offset + count * length : length]
    return bytes(c & 0x1F for c in data[offset + 15 : offset + count * length : length])


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    a, b = classes(sys.argv[1]), classes(sys.argv[2])
    if len(a) != len(b):
        print(f"different point counts: {len(a)} and {len(b)}")
        return 1
    pairs = Counter((x, y) for x, y in zip(a, b) if x != y)
    differ = sum(pairs.values())
    share = 100.0 * (1.0 - differ / len(a)) if a else 100.0
    listed = ", ".join(f"{x}->{y} {n}" for (x, y), n in pairs.most_common(4))
    print(f"{share:8.3f} % same class, {differ} of {len(a)} differ  {listed}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
