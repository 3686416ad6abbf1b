#!/usr/bin/env bash
# The whole pipeline against an independent CPU ground filter, the cloth simulation filter, on the
# same generated file in the same run: end-to-end seconds (reading and writing included) and peak
# memory of both, vexaro's points per second and bytes per point, and the ratio of the times. With
# several sizes it also prints the exponent k of t ~ N^k between the smallest and the largest.
# The stray-point and sparse cases of the speed targets follow.
#
# Usage: bench/peer_ratio.sh [BUILD_DIR] [POINTS ...]     (default: build 1000000)
# Environment:
#   VEXARO_BENCH_THREADS   host threads of both tools (default 2)
#   VEXARO_BENCH_VENV      virtual environment of the peer (default BUILD_DIR/bench-venv); made
#                          with laspy, numpy and cloth-simulation-filter from PyPI on first use;
#                          without network the peer is skipped with the reason
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${1:-build}
[[ $# -gt 0 ]] && shift
case $build in /*) ;; *) build=$root/$build ;; esac
sizes=("$@")
[[ ${#sizes[@]} -eq 0 ]] && sizes=(1000000)
vexaro=$build/apps/vexaro/vexaro
[[ -x $vexaro ]] || { echo "peer_ratio: no tool at $vexaro; build first" >&2; exit 1; }
[[ -x /usr/bin/time ]] || { echo "peer_ratio: needs /usr/bin/time (Debian package 'time')" >&2; exit 1; }
threads=${VEXARO_BENCH_THREADS:-2}
venv=${VEXARO_BENCH_VENV:-$build/bench-venv}
out=$build/bench-peer
mkdir -p "$out"

peer=1
if [[ ! -x $venv/bin/python ]] || ! "$venv/bin/python" -c "import CSF, laspy, numpy" 2>/dev/null; then
    echo "peer_ratio: installing the peer into $venv (laspy, numpy, cloth-simulation-filter)"
    if ! { python3 -m venv "$venv" && "$venv/bin/pip" install -q laspy numpy cloth-simulation-filter; } \
        >"$out/venv.log" 2>&1; then
        echo "peer_ratio: the peer could not be installed (see $out/venv.log); timing vexaro alone"
        peer=0
    fi
fi

# Seconds and peak kilobytes of a command, as "S KB".
measure() {
    /usr/bin/time -f "%e %M" -o "$out/time.txt" "$@" >"$out/last.log" 2>&1 ||
        { echo "peer_ratio: failed: $* (see $out/last.log)" >&2; exit 1; }
    cat "$out/time.txt"
}

printf "%12s %10s %10s %12s %8s %10s %10s %8s\n" points "vexaro s" "vexaro MB" "points/s" "B/point" \
    "peer s" "peer MB" ratio
first_n="" first_t="" last_n="" last_t=""
for n in "${sizes[@]}"; do
    scene=$out/scene-$n.las
    [[ -f $scene ]] || "$vexaro" scene -o "$scene" --points "$n" --density 10 --kind town -q
    read -r vs vkb < <(OMP_NUM_THREADS=$threads measure "$vexaro" classify "$scene" -o "$out/vexaro-$n.las" -q \
        --set HostThreads="$threads")
    rate=$(awk -v n="$n" -v s="$vs" 'BEGIN { printf "%.0f", (s > 0 ? n / s : 0) }')
    bpp=$(awk -v n="$n" -v k="$vkb" 'BEGIN { printf "%.0f", k * 1024 / n }')
    ps="-" pmb="-" ratio="-"
    if ((peer)); then
        read -r ps pkb < <(OMP_NUM_THREADS=$threads measure "$venv/bin/python" "$root/bench/csf_peer.py" "$scene" \
            "$out/peer-$n.las")
        pmb=$(awk -v k="$pkb" 'BEGIN { printf "%.0f", k / 1024 }')
        ratio=$(awk -v a="$vs" -v b="$ps" 'BEGIN { printf "%.2f", (b > 0 ? a / b : 0) }')
    fi
    printf "%12s %10s %10.0f %12s %8s %10s %10s %8s\n" "$n" "$vs" "$(awk -v k="$vkb" 'BEGIN{print k/1024}')" \
        "$rate" "$bpp" "$ps" "$pmb" "$ratio"
    [[ -z $first_n ]] && first_n=$n first_t=$vs
    last_n=$n last_t=$vs
done
if [[ $first_n != "$last_n" ]]; then
    awk -v a="$first_n" -v ta="$first_t" -v b="$last_n" -v tb="$last_t" \
        'BEGIN { printf "time grows as N^%.2f from %d to %d points\n", log(tb / ta) / log(b / a), a, b }'
fi

# Far-apart points: 6,000 over 2 km2, and 1,000 in 10 m with one 1,000 km away.
python_gen=$venv/bin/python
((peer)) || python_gen=""
if [[ -n $python_gen ]]; then
    "$python_gen" - "$out" <<'PY'
import sys
import laspy, numpy as np
out = sys.argv[1]
rng = np.random.default_rng(1)
def write(name, x, y, z):
    h = laspy.LasHeader(point_format=1, version="1.2")
    h.scales = [0.01, 0.01, 0.01]
    h.offsets = [0, 0, 0]
    las = laspy.LasData(h)
    las.x, las.y, las.z = x, y, z
    las.classification = np.ones(len(x), dtype=np.uint8)
    las.write(f"{out}/{name}")
n = 6000
x = rng.uniform(0, 2000, n); y = rng.uniform(0, 1000, n)
write("sparse-2km2.las", x, y, 100 + 0.01 * x + rng.normal(0, 0.05, n))
n = 1000
x = rng.uniform(0, 10, n); y = rng.uniform(0, 10, n)
write("stray-1000km.las", np.append(x, 1e6), np.append(y, 1e6), np.append(50 + rng.normal(0, 0.05, n), 50))
PY
    for f in sparse-2km2 stray-1000km; do
        read -r s kb < <(measure "$vexaro" classify "$out/$f.las" -o "$out/$f-out.las" -q)
        printf "%-16s %6s s %8.0f MB (targets: under 2 s and 200 MB)\n" "$f" "$s" "$(awk -v k="$kb" 'BEGIN{print k/1024}')"
    done
fi
