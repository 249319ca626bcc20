#!/usr/bin/env bash
# Takes pictures of the window, its sheets and its popovers, light and dark, into FOLDER (build/screenshots unless
# given), and renews those that the README shows:
#     tools/screenshots.sh [FOLDER]
set -euo pipefail
cd "$(dirname "$0")/.."

folder=${1:-build/screenshots}
scripts/prepare.sh
cmake --preset dev >/dev/null
cmake --build --preset dev --target Screenshots >/dev/null
for appearance in light dark; do
    xvfb-run -a -s "-screen 0 1600x1000x24" build/dev/tools/Screenshots "$folder" "$appearance"
done
for shown in docs/pictures/*.png; do
    cp "$folder/$(basename "$shown")" "$shown"
done
ls "$folder"
