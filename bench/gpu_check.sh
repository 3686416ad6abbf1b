#!/usr/bin/env bash
# On a machine with a CUDA device, in one short run:
#   1. the test suite of a CUDA build, every test binary at once in shards (the CUDA settings
#      of the backend tests run instead of being skipped; the pipeline tests take the device);
#   2. the classes of the CUDA backend against the host backend (one thread, the reference)
#      on every LAS file of DATA_DIR and on generated scenes of every kind;
#   3. the pipeline's seconds per step on generated towns of each size, CUDA then host, with
#      points per second without reading and writing, and the device memory's peak.
# Logs go to OUT_DIR; a short table of each part is printed at the end.
#
# Usage: bench/gpu_check.sh BUILD_DIR DATA_DIR OUT_DIR [POINTS ...]   (default 1000000 10000000)
# Environment:
#   VEXARO_CHECK_HOST_THREADS  threads of the host timing (default: every core)
#   VEXARO_CHECK_BACKEND       the backend checked against the host (default cuda; cpu runs the
#                              script itself on a machine without a device)
set -uo pipefail
shopt -s nullglob

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
[[ $# -ge 3 ]] || { echo "usage: $0 BUILD_DIR DATA_DIR OUT_DIR [POINTS ...]" >&2; exit 2; }
build=$1 data=$2 out=$3
shift 3
sizes=("$@")
[[ ${#sizes[@]} -eq 0 ]] && sizes=(1000000 10000000)
vexaro=$build/apps/vexaro/vexaro
work=$out/work
mkdir -p "$out/tests" "$work"
cores=$(nproc)
host_threads=${VEXARO_CHECK_HOST_THREADS:-$cores}

dev=${VEXARO_CHECK_BACKEND:-cuda}
"$vexaro" devices | tee "$out/devices.txt"
if [[ $dev == cuda ]] && ! grep -q "Backend in use  cuda" "$out/devices.txt"; then
    echo "gpu_check: no CUDA device answers" >&2
    exit 1
fi

# The timing scenes are written while the suite runs; neither is timed.
for n in "${sizes[@]}"; do
    "$vexaro" scene -o "$work/town-$n.las" --points "$n" --density 10 --kind town -q &
done

# 1. The suite. The slow binaries are split by gtest's own sharding.
shards_of() {
    case $1 in
    test_cli) echo 8 ;;
    test_pipeline | test_terrain) echo 3 ;;
    test_building | test_ground) echo 2 ;;
    *) echo 1 ;;
    esac
}
suite_start=$SECONDS
for bin in "$build"/tests/test_*; do
    [[ -x $bin && -f $bin ]] || continue
    name=$(basename "$bin")
    total=$(shards_of "$name")
    for ((k = 0; k < total; ++k)); do
        (cd "$build/tests" && GTEST_TOTAL_SHARDS=$total GTEST_SHARD_INDEX=$k OMP_NUM_THREADS=2 \
            timeout 400 "$bin" --gtest_brief=1 >"$out/tests/$name-$k.log" 2>&1
        echo $? >"$out/tests/$name-$k.rc") &
    done
done

# 2. Agreement, while the suite runs: scenes of every kind, then each file on both backends.
agree_files=()
for kind in town hall terraces forest mountain-forest bridges river; do
    "$vexaro" scene -o "$work/scene-$kind.las" --points 150000 --density 4 --kind "$kind" -q
    agree_files+=("$work/scene-$kind.las")
done
for f in "$data"/*.las; do agree_files+=("$f"); done
for f in "${agree_files[@]}"; do
    b=$(basename "$f" .las)
    OMP_NUM_THREADS=1 "$vexaro" classify "$f" -o "$work/cpu-$b.las" -q --backend cpu \
        --set HostThreads=1 >"$work/cpu-$b.log" 2>&1 &
done
for f in "${agree_files[@]}"; do
    b=$(basename "$f" .las)
    "$vexaro" classify "$f" -o "$work/cuda-$b.las" -q --backend "$dev" >"$work/cuda-$b.log" 2>&1 ||
        echo "gpu_check: cuda classify failed on $b" >>"$out/agreement.txt"
done
wait
suite_seconds=$((SECONDS - suite_start))
for f in "${agree_files[@]}"; do
    b=$(basename "$f" .las)
    printf "%-40s %s\n" "$b" "$(python3 "$root/tools/class_agreement.py" "$work/cpu-$b.las" "$work/cuda-$b.las" 2>&1)"
done >>"$out/agreement.txt"

# 3. Timings, alone on the machine. Each size runs twice on CUDA (the first warms the device).
# The step lines read "[ 5/12] terrain ground   0.89 s   100,057 points, ...".
step_table() { grep -E '^\[ ?[0-9]+/[0-9]+\]' "$1"; }
step_seconds() { step_table "$1" | grep -oE '[0-9.]+ s ' | awk '{ print $1 }'; }
without_io() { step_table "$1" | grep -vE '\] (load|save) ' | grep -oE '[0-9.]+ s ' | awk '{ s += $1 } END { print s }'; }
: >"$out/timing.txt"
for n in "${sizes[@]}"; do
    f=$work/town-$n.las
    for run in 1 2; do
        nvidia-smi --query-gpu=memory.used --format=csv,noheader,nounits -lms 50 >"$work/mem-$n.txt" 2>/dev/null &
        smi=$!
        "$vexaro" classify "$f" -o "$work/out-cuda-$n.las" --backend "$dev" >"$out/cuda-$n-$run.log" 2>&1
        kill $smi 2>/dev/null
    done
    OMP_NUM_THREADS=$host_threads "$vexaro" classify "$f" -o "$work/out-cpu-$n.las" --backend cpu \
        --set HostThreads="$host_threads" >"$out/cpu-$n.log" 2>&1
    cuda_s=$(without_io "$out/cuda-$n-2.log") cpu_s=$(without_io "$out/cpu-$n.log")
    peak=$(sort -n "$work/mem-$n.txt" | tail -1)
    {
        echo "== $n points: CUDA (second run), then host with $host_threads threads"
        paste <(step_table "$out/cuda-$n-2.log") <(step_seconds "$out/cpu-$n.log" | sed 's/$/ s host/')
        awk -v n="$n" -v c="$cuda_s" -v h="$cpu_s" -v p="$peak" 'BEGIN {
            printf "without reading and writing: CUDA %.2f s (%.2f M points/s), host %.2f s (%.2f M points/s); device memory peak %s MiB\n",
                c, n / c / 1e6, h, n / h / 1e6, p }'
        printf "%-40s %s\n" "classes CUDA against host" \
            "$(python3 "$root/tools/class_agreement.py" "$work/out-cpu-$n.las" "$work/out-cuda-$n.las" 2>&1)"
    } >>"$out/timing.txt"
done

echo
echo "== suite ($suite_seconds s with the agreement runs beside it)"
passed=0 failed=0
for rc in "$out"/tests/*.rc; do
    log=${rc%.rc}.log
    p=$(grep -oE '\[  PASSED  \] [0-9]+' "$log" | grep -oE '[0-9]+$')
    passed=$((passed + ${p:-0}))
    if [[ $(cat "$rc") != 0 ]]; then
        failed=$((failed + 1))
        echo "FAILED $(basename "$log") (exit $(cat "$rc")):"
        grep -E '^\[  FAILED  \] [A-Za-z]' "$log" | sort -u | head -20
        grep -E '^\[  FAILED  \]' "$log" >/dev/null || tail -5 "$log"
    fi
done
echo "tests passed: $passed; shards failed: $failed"
echo
echo "== classes, CUDA against host (one thread)"
cat "$out/agreement.txt"
echo
cat "$out/timing.txt"
