#!/usr/bin/env bash
# Configures and builds one preset: build.sh PRESET [cmake options]. Quiet unless something goes wrong.
set -euo pipefail
cd "$(dirname "$0")/.."

preset=$1
shift
log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "Building ($preset) …"
if ! { cmake --preset "$preset" "$@" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
