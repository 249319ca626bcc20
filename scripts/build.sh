#!/usr/bin/env bash
# Configures and builds one preset: build.sh PRESET [cmake options]. Says how far it has come, and what the compiler said
# when something goes wrong.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/progress.sh

preset=$1
shift
log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "Building ($preset) …"
if ! cmake --preset "$preset" "$@" >"$log" 2>&1; then
    cat "$log" >&2
    exit 1
fi
: >"$log"
if ! cmake --build --preset "$preset" 2>&1 | progress "$log" "Building ($preset)"; then
    grep -vE '^\[[0-9]+/[0-9]+\] ' "$log" >&2
    exit 1
fi
