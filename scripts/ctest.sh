#!/usr/bin/env bash
# Runs a preset's tests: ctest.sh PRESET [ctest options]. What was left out on this machine is named at the end: a test
# that skips passes, and ctest would not say that it did.
set -euo pipefail
cd "$(dirname "$0")/.."

preset=$1
shift
# Where the session has none, Qt would make a folder for the run beside the temporary files, and leave it there.
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
    XDG_RUNTIME_DIR=$(mktemp -d)
    export XDG_RUNTIME_DIR
    trap 'rm -rf "$XDG_RUNTIME_DIR"' EXIT
fi
status=0
ctest --preset "$preset" "$@" || status=$?
skipped=$(grep -hE '^\[  SKIPPED \] .* \(|NOT TESTED' "build/$preset/Testing/Temporary/LastTest.log" || true)
if [ -n "$skipped" ]; then
    printf '\n*** Not tested on this machine (%s):\n%s\n' "$preset" "$skipped"
fi
exit $status
