"""The independent side of the LAZ tests: laspy with the lazrs backend.

    laspy_peer.py dump FILE.laz OUT.txt    one line a point: X Y Z intensity return_number
                                           number_of_returns classification gps_time (raw ints, %.17g)
    laspy_peer.py make IN.txt OUT.laz FMT  a LAZ of point format FMT from such lines, scale 0.01
"""
import sys

import laspy
import numpy as np


def dump(path, out):
    las = laspy.read(path, laz_backend=laspy.LazBackend.Lazrs)
    has_time = "gps_time" in las.point_format.dimension_names
    with open(out, "w") as f:
        for i in range(len(las.points)):
            t = float(las.gps_time[i]) if has_time else 0.0
            f.write("%d %d %d %d %d %d %d %.17g\n" % (las.X[i], las.Y[i], las.Z[i], las.intensity[i],
                                                     las.return_number[i], las.number_of_returns[i],
                                                     las.classification[i], t))


def make(src, out, fmt):
    rows = np.loadtxt(src, ndmin=2)
    version = "1.4" if fmt >= 6 else "1.2"
    header = laspy.LasHeader(point_format=fmt, version=version)
    header.scales = np.array([0.01, 0.01, 0.01])
    header.offsets = np.array([500000.0, 5000000.0, 0.0])
    las = laspy.LasData(header)
    las.X = rows[:, 0].astype(np.int32)
    las.Y = rows[:, 1].astype(np.int32)
    las.Z = rows[:, 2].astype(np.int32)
    las.intensity = rows[:, 3].astype(np.uint16)
    las.return_number = rows[:, 4].astype(np.uint8)
    las.number_of_returns = rows[:, 5].astype(np.uint8)
    las.classification = rows[:, 6].astype(np.uint8)
    if "gps_time" in las.point_format.dimension_names:
        las.gps_time = rows[:, 7]
    las.write(out, laz_backend=laspy.LazBackend.Lazrs)


if __name__ == "__main__":
    if sys.argv[1] == "dump":
        dump(sys.argv[2], sys.argv[3])
    else:
        make(sys.argv[2], sys.argv[3], int(sys.argv[4]))
