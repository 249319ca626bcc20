#!/usr/bin/env bash
# Installs what Ferrow needs and this machine lacks, through the system's package manager: prepare.sh [run | test], for
# building and running it, or (where nothing is said) for testing it as well. Says what it does; does nothing where
# nothing is missing.
set -euo pipefail

packages=(
    # To build.
    g++ cmake ninja-build pkg-config
    qt6-base-dev libjpeg62-turbo-dev libpng-dev libtiff-dev libheif-dev liblcms2-dev libexpat1-dev
    zlib1g-dev libpoppler-glib-dev libcairo2-dev libicu-dev qt6-svg-dev libqt6svg6 libseccomp-dev
    libfontconfig-dev
    # To run: the faces that captions are drawn in. Each of the five choices needs its own.
    fontconfig fonts-inter fonts-manrope fonts-paratype fonts-jetbrains-mono fonts-quicksand
    fonts-noto-core fonts-noto-cjk fonts-noto-color-emoji fonts-dejavu-core
)
case ${1:-test} in
run) ;;
test) packages+=(libgtest-dev libgmock-dev libexiv2-dev strace tzdata xvfb xauth dbus clang libclang-rt-14-dev) ;;
*)
    echo "prepare.sh: run or test, not $1" >&2
    exit 2
    ;;
esac

missing=()
for package in "${packages[@]}"; do
    state=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$state" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

if ! command -v apt-get >/dev/null 2>&1; then
    echo "Ferrow needs these Debian packages or their like: ${missing[*]}" >&2
    echo "This system has no apt-get: please install them, then run this again." >&2
    exit 1
fi
elevate=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null 2>&1; then
        echo "Please run as root: apt-get install --no-install-recommends ${missing[*]}" >&2
        exit 1
    fi
    elevate=(sudo)
fi
echo "Installing what is missing: ${missing[*]}"
"${elevate[@]}" apt-get update -q
"${elevate[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
