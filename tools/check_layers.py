#!/usr/bin/env python3
"""Fails when a file under src/ includes a header of a layer above its own.

Layers, from the top: api -> steps -> core -> grid -> store -> exec. A step folder
(steps/ground, ...) may include steps/common and itself, never another step. The LAS
codec (src/las) is a target of its own: it includes only itself and the public header,
and only api may include it. Usage: check_layers.py [SOURCE_ROOT]
"""
import pathlib
import re
import sys

RANK = {"exec": 0, "store": 1, "grid": 2, "core": 3, "steps": 4, "api": 5}
INCLUDE = re.compile(r'^\s*#\s*include\s+"([^"]+)"')


def unit(path):
    """The layer of a path relative to src/, and its step folder when it is a step."""
    parts = path.split("/")
    if parts[0] == "steps" and len(parts) > 2:
        return "steps", parts[1]
    return parts[0], None


def allowed(src, dst):
    (sl, ss), (dl, ds) = unit(src), unit(dst)
    if sl == "las" or dl == "las":
        return dl == "las" and sl in ("las", "api")
    if sl not in RANK or dl not in RANK:
        return False
    if sl == dl == "steps":
        return ds == ss or ds == "common"
    if sl == dl:
        return True
    return RANK[dl] < RANK[sl]


def main():
    root = pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent.parent)
    src = root / "src"
    bad = []
    for f in sorted(src.rglob("*")):
        if f.suffix not in (".h", ".cpp", ".cu"):
            continue
        rel = f.relative_to(src).as_posix()
        for n, line in enumerate(f.read_text().splitlines(), 1):
            m = INCLUDE.match(line)
            if not m:
                continue
            target = m.group(1)
            if not (src / target).exists():
                continue  # the public header or a system header
            if not allowed(rel, target):
                bad.append(f"src/{rel}:{n}: includes {target} against the layering")
    for b in bad:
        print(b)
    if bad:
        print(f"{len(bad)} include(s) against the layering api -> steps -> core -> grid -> store -> exec")
        return 1
    print("layering: every include under src/ points down")
    return 0


if __name__ == "__main__":
    sys.exit(main())
