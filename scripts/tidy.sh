#!/usr/bin/env bash
# Runs clang-tidy on the sources, those changed last first, for as long as there is time: tidy.sh SECONDS PRESET, a preset
# that has been built. Findings are told and fail nothing: the whole tree has not been gone through yet.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=$1
preset=$2
# Version 14, Debian 12's usual one, can't read that system's <ranges>.
tidy=clang-tidy-16
if ! command -v $tidy >/dev/null 2>&1; then
    echo "SKIPPED: the sources are gone through by $tidy, which is not here." >&2
    exit 0
fi

findings=$(mktemp -d)
trap 'rm -rf "$findings"' EXIT

# A source that this version crashes on, or never comes to an end with, costs its findings and nothing else.
goThrough() {
    timeout --kill-after=5 "$2" $tidy -p "build/$preset" --quiet "$1" >"$findings/${1//\//.}" 2>/dev/null || true
}

mapfile -t sources < <({ git diff --name-only HEAD; git log --format= --name-only; } 2>/dev/null |
    cat - <(git ls-files) | awk '/^src\/.*\.cpp$/ && !seen[$0]++' | while read -r source; do
        [ ! -f "$source" ] || echo "$source"
    done)
begun=0
for source in "${sources[@]}"; do
    [ "$(jobs -rp | wc -l)" -lt "$(nproc)" ] || wait -n
    [ $SECONDS -lt "$seconds" ] || break
    goThrough "$source" $((seconds - SECONDS)) 2>/dev/null &
    begun=$((begun + 1))
done
wait
cat "$findings"/*
echo "clang-tidy went through $begun of ${#sources[@]} sources."
