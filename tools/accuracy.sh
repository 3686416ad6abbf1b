#!/usr/bin/env bash
# Accuracy of the recommended pipeline: classifies the shared sample files and a set of synthetic
# scenes with `vexaro classify`, then prints the `vexaro eval` table against their references
# (the sample files' own classes, the scenes' truth files).
#
# Usage: tools/accuracy.sh [BUILD_DIR]        (BUILD_DIR holds a built tree; default: build)
# Environment:
#   VEXARO_DATA_DIR          folder of the sample LAS files (default: ../shared/data beside the
#                            checkout); missing: the samples are skipped
#   VEXARO_ACCURACY_POINTS   points of a scene at 4 pts/m2 and above (default 150000); the scenes
#                            at 0.5 to 2 pts/m2 get half, those at 0.2 and 0.3 pts/m2 a fifth
#   VEXARO_ACCURACY_SEED     seed of every scene that names none (default 1)
#   VEXARO_ACCURACY_OUT      output folder (default: BUILD_DIR/accuracy), emptied first
#   VEXARO_ACCURACY_ARGS     further arguments of every `vexaro classify` (e.g. "--preset city",
#                            "--set TerrainSlope=0.4"), split at spaces
# Output folder: ref/ (references: links to the samples, the scenes' truth files), input/ (the
# scenes as a classifier gets them), result/ (NAME.las classified, NAME.seconds its time, NAME.log
# the tool's output), table.txt and table.csv (the eval table).
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${1:-build}
case $build in /*) ;; *) build=$root/$build ;; esac
vexaro=$build/apps/vexaro/vexaro
if [[ ! -x $vexaro ]]; then
    echo "accuracy: no tool at $vexaro; build first (make build)" >&2
    exit 1
fi
points=${VEXARO_ACCURACY_POINTS:-150000}
seed=${VEXARO_ACCURACY_SEED:-1}
if ! [[ $points =~ ^[0-9]+$ ]] || ((points < 1000)); then
    echo "accuracy: VEXARO_ACCURACY_POINTS must be a whole number of at least 1000, not '$points'" >&2
    exit 2
fi
out=${VEXARO_ACCURACY_OUT:-$build/accuracy}
rm -rf "$out/ref" "$out/input" "$out/result" "$out/table.txt" "$out/table.csv"
mkdir -p "$out/ref" "$out/input" "$out/result"

# References and inputs. The samples are their own input: classify starts from class 1 whatever
# the file carries.
data=${VEXARO_DATA_DIR:-$root/../shared/data}
inputs=()
if [[ -d $data ]] && compgen -G "$data/*.las" >/dev/null; then
    data=$(cd "$data" && pwd)
    for f in "$data"/*.las; do
        ln -s "$f" "$out/ref/$(basename "$f")"
        inputs+=("$out/ref/$(basename "$f")")
    done
else
    echo "accuracy: no sample LAS files in '$data' (set VEXARO_DATA_DIR); skipping the samples"
fi

# Synthetic scenes: KIND DENSITY [feet | stray | seedN]. A few take another seed than the rest,
# so that the table shows rules that hold beyond one layout of each kind.
scenes=(
    "town 0.2" "town 1" "town 4" "town 10" "town 30"
    "town 10 feet"
    "hall 4" "hall 10"
    "terraces 0.2" "terraces 2" "terraces 10"
    "forest 1" "forest 10"
    "mountain-forest 0.2" "mountain-forest 4" "bridges 4" "river 4"
    "town 10 stray"
    "terraces 4 seed2" "forest 0.5 seed2" "town 0.3 seed3"
)
if "$vexaro" scene --help >/dev/null 2>&1; then
    for spec in "${scenes[@]}"; do
        read -r kind density extra <<<"$spec"
        name=scene-$kind-$density${extra:+-$extra}
        n=$points
        case $density in
        0.2 | 0.3) n=$((points / 5)) ;;
        0.5 | 1 | 2) n=$((points / 2)) ;;
        esac
        sceneSeed=$seed
        [[ $extra == seed* ]] && sceneSeed=${extra#seed}
        args=(scene -o "$out/input/$name.las" --truth "$out/ref/$name.las" --kind "$kind"
            --density "$density" --seed "$sceneSeed" --points "$n" -q)
        [[ $extra == feet ]] && args+=(--units feet)
        [[ $extra == stray ]] && args+=(--stray)
        if "$vexaro" "${args[@]}" >"$out/input/$name.log" 2>&1; then
            inputs+=("$out/input/$name.las")
        else
            echo "accuracy: scene $name failed (see $out/input/$name.log); skipped"
            rm -f "$out/ref/$name.las"
        fi
    done
else
    echo "accuracy: skipping the synthetic scenes: 'vexaro scene --help' fails (no scene command in this build)"
fi

# Classification, timed.
for input in "${inputs[@]}"; do
    name=$(basename "$input" .las)
    start=$(date +%s.%N)
    # shellcheck disable=SC2086 # the extra arguments are meant to split at spaces
    if "$vexaro" classify "$input" -o "$out/result/$name.las" -q ${VEXARO_ACCURACY_ARGS:-} \
        >"$out/result/$name.log" 2>&1; then
        end=$(date +%s.%N)
        awk -v a="$start" -v b="$end" 'BEGIN { printf "%.3f\n", b - a }' >"$out/result/$name.seconds"
    else
        echo "accuracy: classify failed on $name (see $out/result/$name.log)"
        rm -f "$out/result/$name.las"
    fi
done

# The table; eval's status is 1 where a file has no result, which the table shows.
echo
status=0
"$vexaro" eval "$out/ref" "$out/result" >"$out/table.txt" || status=$?
"$vexaro" eval "$out/ref" "$out/result" --csv >"$out/table.csv" || true
cat "$out/table.txt"
echo
echo "Outputs in $out: ref/ references, input/ scenes, result/ classified files with .seconds and .log,"
echo "table.txt and table.csv."
exit "$status"
