#!/usr/bin/env bash
# Makes Debian packages of this tree, on the system that they are for: package.sh [FOLDER], or else build/packages.
# Installs what building them needs. Two runs make the same bytes.
set -euo pipefail
cd "$(dirname "$0")/.."

folder=$(realpath -m "${1:-build/packages}")
source /etc/os-release
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
copy=$scratch/ferrow
mkdir -p "$copy" "$folder"
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
dpkg-buildpackage --build=binary --unsigned-changes
cp ../*.deb ../*.changes ../*.buildinfo "$folder"
printf '%s\n' "$folder"/*.deb
