#!/usr/bin/env python3
"""Fails when libvexaro.so exports anything but the public API: the Vexaro<T> instantiations and
the vexaro namespace, with their type information. Usage: check_exports.py LIBRARY"""
import subprocess
import sys

PUBLIC = ("Vexaro<", "vexaro::")
KINDS = ("", "typeinfo for ", "typeinfo name for ", "vtable for ")


def main():
    out = subprocess.run(["nm", "-D", "--defined-only", "-C", sys.argv[1]], check=True,
                         capture_output=True, text=True).stdout
    names = [line.split(" ", 2)[2] for line in out.splitlines() if line.count(" ") >= 2]
    bad = [n for n in names if not any(n.startswith(k + p) for k in KINDS for p in PUBLIC)]
    for n in bad:
        print("exported but not public:", n)
    print(f"{len(names)} exported symbols, {len(bad)} outside the public API")
    return 1 if bad or not names else 0


if __name__ == "__main__":
    sys.exit(main())
