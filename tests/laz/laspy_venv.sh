#!/usr/bin/env bash
# Prints the python of a virtual environment holding laspy and lazrs, the independent LAZ codec the
# LAZ tests compare against; makes it in the build folder on first use (once, under a lock, as the
# tests run in parallel). Exits non-zero with the reason on stderr when it cannot be installed.
#
# Usage: laspy_venv.sh BUILD_DIR   (VEXARO_LASPY_VENV overrides the folder)
set -uo pipefail
venv=${VEXARO_LASPY_VENV:-$1/laz-venv}
ready() { [[ -x $venv/bin/python ]] && "$venv/bin/python" -c "import laspy, lazrs, numpy" 2>/dev/null; }
mkdir -p "$(dirname "$venv")"
exec 9>"$venv.lock"
flock 9
if ! ready; then
    # A failed attempt is remembered so that every test does not retry the download.
    if [[ -f $venv.failed ]]; then
        echo "laspy/lazrs could not be installed earlier (see $venv.log; remove $venv.failed to retry)" >&2
        exit 1
    fi
    if ! { python3 -m venv "$venv" && timeout 600 "$venv/bin/pip" install -q --disable-pip-version-check \
        laspy lazrs numpy; } >"$venv.log" 2>&1; then
        touch "$venv.failed"
        echo "laspy/lazrs could not be installed into $venv (see $venv.log)" >&2
        exit 1
    fi
fi
echo "$venv/bin/python"
