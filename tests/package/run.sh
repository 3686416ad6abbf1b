#!/usr/bin/env bash
# Installs the built library and tool into a scratch prefix, builds a user's project against the
# library and runs the installed tool, which must find the installed library by its own RPATH.
set -euo pipefail
build=$1
source=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cmake --install "$build" --prefix "$scratch/prefix" > /dev/null
cmake -S "$source/tests/package" -B "$scratch/build" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" > /dev/null
cmake --build "$scratch/build" > /dev/null
"$scratch/build/package_test"

# A LASzip built with the library is installed beside it and found there by the library's RPATH.
if [ -f "$build/lib/libvexaro_laszip.so" ]; then
    laszip=$(env -u LD_LIBRARY_PATH ldd "$scratch/prefix/lib"*/libvexaro.so | awk '/libvexaro_laszip\.so/ {print $3}')
    case "$laszip" in
    "$scratch/prefix/"*) ;;
    *)
        echo "FAIL: the installed library loads LASzip from '$laszip' instead of the installed one" >&2
        exit 1
        ;;
    esac
fi

# The tool is installed only when the build has it (VEXARO_BUILD_APPS).
if [ ! -f "$build/apps/vexaro/vexaro" ]; then
    echo "tool not built: installed tool not checked"
    exit 0
fi
tool="$scratch/prefix/bin/vexaro"
if [ ! -x "$tool" ]; then
    echo "FAIL: the tool is not installed at bin/vexaro" >&2
    exit 1
fi
unset LD_LIBRARY_PATH
library=$(ldd "$tool" | awk '/libvexaro\.so/ {print $3}')
case "$library" in
"$scratch/prefix/"*) ;;
*)
    echo "FAIL: the installed tool loads '$library' instead of the installed library" >&2
    exit 1
    ;;
esac
"$tool" --help > /dev/null
"$tool" devices
echo "installed tool ok"
