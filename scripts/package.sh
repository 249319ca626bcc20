#!/usr/bin/env bash
# Makes Debian packages of this tree, on the system that they are for: package.sh [FOLDER], or else build/packages.
# Installs what building them needs. Two runs make the same bytes.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/progress.sh

folder=$(realpath -m "${1:-build/packages}")
source /etc/os-release
# Not below this folder: where a blank is in the path, the compiler is not told to leave it out of what it writes.
scratch=$(TMPDIR=/tmp mktemp -d)
trap 'rm -rf "$scratch"' EXIT
copy=$scratch/ferrow
mkdir -p "$copy" "$folder"
if command -v ccache >/dev/null 2>&1; then
    # The tools that make packages have a home of their own, and this a new place each time.
    export CCACHE_DIR=${CCACHE_DIR:-${HOME:-$PWD/build}/.cache/ccache} CCACHE_BASEDIR=$copy
    export CMAKE_C_COMPILER_LAUNCHER=ccache CMAKE_CXX_COMPILER_LAUNCHER=ccache
fi
git ls-files -z --cached --others --exclude-standard | tar --null -T - -c | tar -x -C "$copy"
mv "$copy/packaging/debian" "$copy/debian"
# So that whoever moves to the next system gets the packages made for that one.
sed -i "1s/)/~${ID}${VERSION_ID})/" "$copy/debian/changelog"

elevate=()
[ "$(id -u)" -eq 0 ] || elevate=(sudo)
cd "$copy"
if ! dpkg-checkbuilddeps 2>/dev/null; then
    "${elevate[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -y -q build-dep --no-install-recommends "$copy"
fi
if ! dpkg-buildpackage --build=binary --unsigned-changes 2>&1 | progress "$scratch/log" "Building packages"; then
    grep -vE '^\[[0-9]+/[0-9]+\] ' "$scratch/log" >&2
    exit 1
fi
# What an earlier version left here is none of this one.
rm -f "$folder"/ferrow{,-batch}{,-dbgsym}_*
cp ../*.deb ../*.changes ../*.buildinfo "$folder"
printf '%s\n' "$folder"/*.deb
