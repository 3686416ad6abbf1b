"""The peer of the whole-pipeline benchmark: the cloth simulation filter (PyPI
cloth-simulation-filter) with its default settings, end to end as a user runs it: read the LAS
file, filter, write it with class 2 for ground and 1 for the rest.

Usage: csf_peer.py INPUT.las OUTPUT.las
"""
import sys
import time

import CSF
import laspy
import numpy as np


def main():
    start = time.perf_counter()
    las = laspy.read(sys.argv[1])
    xyz = np.vstack((las.x, las.y, las.z)).transpose()
    csf = CSF.CSF()
    csf.setPointCloud(xyz)
    ground, other = CSF.VecInt(), CSF.VecInt()
    csf.do_filtering(ground, other, False)
    classes = np.ones(len(xyz), dtype=np.uint8)
    classes[np.array(ground, dtype=np.int64)] = 2
    las.classification = classes
    las.write(sys.argv[2])
    print(f"csf {len(xyz)} points, {len(ground)} ground, {time.perf_counter() - start:.2f} s")


if __name__ == "__main__":
    main()
