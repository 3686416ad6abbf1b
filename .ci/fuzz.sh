#!/usr/bin/env bash
# Builds the LAS reader fuzz target with clang's libFuzzer (AddressSanitizer and UBSan on) and
# fuzzes it for a bounded time, seeded with cut-down copies of the sample files and small generated
# files of every LAS version and point format. A crash, leak or sanitizer report fails the job;
# the input that caused it is left in $FUZZ_BUILD as crash-*/leak-*/timeout-*.
#
# clang is installed with apt-get when it is missing and the job runs as root (Debian's clang
# package ships libFuzzer); elsewhere the fuzzing is skipped with a note, not failed.
#
# Environment: FUZZ_BUILD (build folder, default build-fuzz), FUZZ_SECONDS (default 50),
# VEXARO_DATA_DIR (sample LAS files, default ../shared/data beside the repository).
set -euo pipefail
cd "$(dirname "$0")/.."

BUILD=${FUZZ_BUILD:-build-fuzz}
SECONDS_TO_FUZZ=${FUZZ_SECONDS:-50}
DATA=${VEXARO_DATA_DIR:-$(pwd)/../shared/data}
[ -d "$DATA" ] || echo "no sample folder at $DATA (set VEXARO_DATA_DIR)"
CXX_FUZZ=${CXX_FUZZ:-clang++}

if ! command -v "$CXX_FUZZ" >/dev/null 2>&1; then
    if [ "$(id -u)" = 0 ] && command -v apt-get >/dev/null 2>&1; then
        echo "clang++ not found: installing Debian's clang"
        apt-get update -qq && apt-get install -y -qq clang >/dev/null
    else
        echo "clang++ not found and cannot be installed here: LAS fuzzing skipped"
        exit 0
    fi
fi

mkdir -p "$BUILD/seeds" "$BUILD/corpus"
SOURCES=(src/las/*.cpp)
FLAGS=(-std=c++17 -g -O1 -Iinclude -Isrc/las/include -Isrc/las)
SANITIZERS=(-fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined)

echo "== building the LAS fuzz target with $CXX_FUZZ"
"$CXX_FUZZ" "${FLAGS[@]}" "${SANITIZERS[@]}" tests/fuzz/las_reader_fuzz.cpp "${SOURCES[@]}" \
    -o "$BUILD/las_reader_fuzz"
"$CXX_FUZZ" "${FLAGS[@]}" tests/fuzz/make_las_seeds.cpp "${SOURCES[@]}" -o "$BUILD/make_las_seeds"

shopt -s nullglob
SAMPLES=("$DATA"/*.las)
shopt -u nullglob
[ ${#SAMPLES[@]} -gt 0 ] || echo "no sample LAS files in $DATA: seeding with generated files only"
"$BUILD/make_las_seeds" "$BUILD/seeds" "${SAMPLES[@]}"

echo "== fuzzing for $SECONDS_TO_FUZZ s"
"$BUILD/las_reader_fuzz" -max_total_time="$SECONDS_TO_FUZZ" -max_len=65536 -timeout=10 -print_final_stats=1 \
    -artifact_prefix="$BUILD/" "$BUILD/corpus" "$BUILD/seeds"
