#!/usr/bin/env bash
# Installs what Ferrow needs and this machine lacks, through the system's package manager: prepare.sh [run | test | lint],
# for building and running it, or (where nothing is said) for testing it as well, or for checking how it is written
# and making packages besides. Says what it does; does nothing where nothing is missing.
set -euo pipefail
source "$(dirname "$0")/progress.sh"

packages=(
    # To build.
    g++ cmake ninja-build pkg-config
    qt6-base-dev libjpeg62-turbo-dev libpng-dev libtiff-dev libheif-dev liblcms2-dev libexpat1-dev
    zlib1g-dev libpoppler-glib-dev libcairo2-dev librsvg2-dev libicu-dev qt6-svg-dev libseccomp-dev
    libfontconfig-dev
    # To run: what is loaded by name,
    libqt6svg6 qt6-wayland
    # and the faces that captions are drawn in. Each of the five choices needs its own.
    fontconfig fonts-inter fonts-manrope fonts-paratype fonts-jetbrains-mono fonts-quicksand
    fonts-noto-core fonts-noto-cjk fonts-noto-color-emoji fonts-dejavu-core
)
# What newer systems keep apart: drawing SVG in Qt, and the coder and decoder of HEIC.
wherePackaged=(qt6-svg-plugins libheif-plugin-libde265 libheif-plugin-x265)
case ${1:-test} in
run) ;;
test | lint)
    packages+=(libgtest-dev libgmock-dev libexiv2-dev bubblewrap strace tzdata xvfb xauth dbus appstream clang libclang-rt-dev)
    [ "${1:-test}" = test ] ||
        packages+=(dpkg-dev debhelper lintian debootstrap) wherePackaged+=(clang-format-14 clang-tidy-16)
    ;;
*)
    echo "prepare.sh: run, test or lint, not $1" >&2
    exit 2
    ;;
esac

# One that waits for a trigger, as after an interrupted installation, is unpacked and configured: it can be used.
isInstalled() {
    case $(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null) in
    installed | triggers-awaited | triggers-pending) ;;
    *) return 1 ;;
    esac
}

# Sets `missing`: what to ask the package manager for.
findMissing() {
    missing=()
    local package absent=()
    for package in "${packages[@]}"; do
        isInstalled "$package" || missing+=("$package")
    done
    for package in "${wherePackaged[@]}"; do
        isInstalled "$package" || absent+=("$package")
    done
    [ ${#absent[@]} -eq 0 ] ||
        mapfile -t -O ${#missing[@]} missing < <(LC_ALL=C apt-cache policy "${absent[@]}" 2>/dev/null |
            awk '/^[^ ]/ { name = $1 } /^  Candidate: [^(]/ { sub(":$", "", name); print name }')
}

findMissing
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

log=$(mktemp)
trap 'rm -f "$log"' EXIT
# While another program installs or looks for updates, apt-get gives up at once. Seconds to wait for it.
patience=900

# aptGet LABEL ARGUMENT...: its many lines are shown when it fails. Ends what an earlier installation was interrupted in,
# which apt-get wants done first and doesn't do itself.
aptGet() {
    local label=$1 isWaiting= isMended=
    shift
    while
        : >"$log"
        # sudo closes what is above standard error, and apt-get the descriptor that it reports on to others.
        ! "${elevate[@]}" env LC_ALL=C DEBIAN_FRONTEND=noninteractive \
            sh -c 'exec apt-get -y -q -o Dpkg::Use-Pty=0 -o APT::Status-Fd=3 "$@" 3>&1' apt-get "$@" \
            </dev/null 2>&1 | progress "$log" "$label"
    do
        if [ -z "$isMended" ] && grep -q 'dpkg was interrupted' "$log"; then
            isMended=1
            echo "An earlier installation was interrupted. Completing it …"
            "${elevate[@]}" env LC_ALL=C DEBIAN_FRONTEND=noninteractive dpkg --configure -a </dev/null >"$log" 2>&1 ||
                cat "$log" >&2
            continue
        fi
        if ! grep -q 'Could not get lock' "$log" || [ $SECONDS -gt $patience ]; then
            grep -vE '^(dl|pm)status:' "$log" >&2
            exit 1
        fi
        [ -n "$isWaiting" ] || echo "Another program is installing packages. Waiting for it …"
        isWaiting=1
        sleep 5
    done
}

echo "Looking up packages …"
aptGet "Looking up packages" update
findMissing
echo "Installing what is missing: ${missing[*]}"
aptGet "Installing" install --no-install-recommends "${missing[@]}"
