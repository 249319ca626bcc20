#!/usr/bin/env bash
# Runs the window as a Flatpak would: in a sandbox without network and files, with a stand-in for the desktop's portals.
# Adds, drops, exports to a chosen folder, replaces, opens the folder, and says what was seen:
#     scripts/sandbox-check.sh [PREFIX [PICTURES]]
# PREFIX is where the program is installed, bin/ferrow below it; installed from build/release unless given. Pictures of
# the window go to PICTURES, build/sandbox unless given. Runs as any user; says so where something is missing.
set -euo pipefail
cd "$(dirname "$0")/.."

missing=()
for program in bwrap xdg-dbus-proxy dbus-run-session xvfb-run openbox xdotool; do
    command -v "$program" >/dev/null 2>&1 || missing+=("$program")
done
# The system's own, which has the bindings; another may stand before it.
python=/usr/bin/python3
modules="python3-dbus, python3-gi, gir1.2-atspi-2.0, gir1.2-gtk-3.0 or libseccomp2"
"$python" - 2>/dev/null <<'PYTHON' || missing+=("$modules")
import ctypes, dbus, gi
gi.require_version("Atspi", "2.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Atspi, GdkPixbuf
ctypes.CDLL("libseccomp.so.2")
PYTHON
compgen -G '/usr/lib*/qt6/plugins/platformthemes/libqxdgdesktopportal.so' >/dev/null ||
    compgen -G '/usr/lib/*/qt6/plugins/platformthemes/libqxdgdesktopportal.so' >/dev/null ||
    missing+=("qt6-xdgdesktopportal-platformtheme")
if [ ${#missing[@]} -gt 0 ]; then
    printf 'NOT CHECKED: the window in a sandbox; missing: %s\n' "${missing[@]}"
    exit 0
fi
if ! bwrap --unshare-user --unshare-net --unshare-pid --ro-bind / / true 2>/dev/null; then
    echo "NOT CHECKED: the window in a sandbox; bubblewrap does not work here."
    exit 0
fi

scratch=$(mktemp -d)
trap 'rm -rf --one-file-system "$scratch"' EXIT
pictures=${2:-build/sandbox}
mkdir -p "$pictures" "$scratch/run"
chmod 700 "$scratch/run"
if [ $# -ge 1 ]; then
    prefix=$(realpath "$1")
else
    prefix=$scratch/prefix
    cmake --install build/release --prefix "$prefix" >/dev/null
fi
# Nothing of the user's session is touched: another display, bus, and place for sockets.
env -u WAYLAND_DISPLAY -u AT_SPI_BUS_ADDRESS XDG_RUNTIME_DIR="$scratch/run" XDG_DATA_HOME="$scratch/data" \
    XDG_CONFIG_HOME="$scratch/config" XDG_CACHE_HOME="$scratch/cache" GTK_A11Y=none NO_AT_BRIDGE=1 \
    xvfb-run -a -s "-screen 0 1600x1000x24" dbus-run-session -- \
    "$python" tools/sandboxcheck.py "$prefix" "$(realpath "$pictures")" "$scratch" 2>"$scratch/log" || {
    tail -n 20 "$scratch/log" >&2
    exit 1
}
