#!/usr/bin/env bash
# Checks the packages that scripts/package.sh has made: package-check.sh [FOLDER [OTHER]], or else build/packages. lintian
# has nothing to say of them, each has what it should, and what runs is hardened. Packages in OTHER, made by a second run,
# have the same bytes. In a bare system, and as an ordinary user there, photos are framed; once the packages are purged
# nothing of them is left. Says what could not be checked on this machine.
set -euo pipefail
cd "$(dirname "$0")/.."

folder=$(realpath "${1:-build/packages}")
other=${2:-}
source /etc/os-release
scratch=$(mktemp -d)
trap 'rm -rf --one-file-system "$scratch"' EXIT

fail() {
    echo "$*" >&2
    exit 1
}

package() {
    local found=("$folder/$1"_*.deb)
    [ ${#found[@]} -eq 1 ] && [ -f "${found[0]}" ] || fail "$folder: there should be one package $1"
    printf '%s\n' "${found[0]}"
}

batch=$(package ferrow-batch)
window=$(package ferrow)

if [ -n "$other" ]; then
    for deb in "$batch" "$window"; do
        cmp "$deb" "$other/$(basename "$deb")"
    done
    echo "Two builds have the same bytes."
fi

if command -v lintian >/dev/null 2>&1; then
    lintian --allow-root --fail-on error,warning "$batch" "$window"
    echo "lintian has nothing to say."
else
    echo "NOT CHECKED: what lintian says; it is not here."
fi

for deb in "$batch" "$window"; do
    dpkg-deb -x "$deb" "$scratch/$(basename "$deb" | cut -d_ -f1)"
done
# holds PACKAGE PATH...: PATH below /usr.
holds() {
    local name=$1 path
    shift
    for path in "$@"; do
        [ -e "$scratch/$name/usr/$path" ] || fail "$name: /usr/$path is missing"
    done
}
holds ferrow-batch bin/ferrow-batch libexec/ferrow/ferrow-{worker,logo-worker} share/man/man1/ferrow-batch.1.gz \
    share/doc/ferrow-batch/{copyright,changelog.gz} share/bash-completion/completions/ferrow-batch \
    share/zsh/vendor-completions/_ferrow-batch share/fish/vendor_completions.d/ferrow-batch.fish
holds ferrow bin/ferrow share/man/man1/ferrow.1.gz share/doc/ferrow/{copyright,changelog.gz} \
    share/applications/app.ferrow.Ferrow.desktop share/dbus-1/services/app.ferrow.Ferrow.service \
    share/metainfo/app.ferrow.Ferrow.metainfo.xml \
    share/icons/hicolor/{48x48/apps/app.ferrow.Ferrow.png,scalable/apps/app.ferrow.Ferrow.svg} \
    share/kio/servicemenus/app.ferrow.Ferrow.desktop share/nemo/actions/app.ferrow.Ferrow.nemo_action \
    share/nautilus-python/extensions/ferrow.py share/Thunar/sendto/app.ferrow.Ferrow.desktop
if dpkg-deb -f "$batch" Depends | grep -q 'qt6widgets'; then
    fail "ferrow-batch: it needs Qt Widgets"
fi
for program in ferrow/usr/bin/ferrow ferrow-batch/usr/{bin/ferrow-batch,libexec/ferrow/ferrow-{,logo-}worker}; do
    LC_ALL=C readelf -hdl "$scratch/$program" >"$scratch/headers"
    LC_ALL=C readelf --dyn-syms -W "$scratch/$program" >"$scratch/symbols"
    for sign in 'Type: *DYN' GNU_RELRO BIND_NOW; do
        grep -q "$sign" "$scratch/headers" || fail "$program: not hardened: no $sign"
    done
    grep -q __stack_chk_fail "$scratch/symbols" || fail "$program: not hardened: no __stack_chk_fail"
    # Checked copies are there only where something is copied whose room the compiler knows: ferrow-batch has none such.
    [ "$program" = ferrow-batch/usr/bin/ferrow-batch ] || grep -q '_chk@' "$scratch/symbols" ||
        fail "$program: not hardened: no _chk@"
done
echo "The packages hold what they should, and their programs are hardened."

# What a bare system needs: root, debootstrap, the right to mount, and a mirror within reach.
if [ "$(id -u)" -ne 0 ] || ! command -v debootstrap >/dev/null 2>&1; then
    echo "NOT CHECKED: installing into a bare system; that takes root and debootstrap."
    exit 0
fi
root=$scratch/root
if ! unshare --mount true 2>/dev/null ||
    ! timeout 600 debootstrap --variant=minbase "$VERSION_CODENAME" "$root" >"$scratch/log" 2>&1; then
    tail -n 3 "$scratch/log" >&2 2>/dev/null || true
    echo "NOT CHECKED: installing into a bare system; none could be made here."
    exit 0
fi
mkdir "$root/packages"
cp "$batch" "$window" packaging/debian/tests/frame "$root/packages"
chmod -R a+rX "$root/packages"
cp /etc/resolv.conf "$root/etc/resolv.conf"
unshare --mount --propagation private bash -euc '
    mount -t proc proc "$0/proc"
    mount --rbind /dev "$0/dev"
    exec chroot "$0" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 \
        bash -eu -o pipefail -s' "$root" <<'BARE'
quietly() { "$@" >/log 2>&1 || { tail -n 20 /log >&2; exit 1; }; }
names() { dpkg-query -W -f '${binary:Package}\n' | sort; }
quietly apt-get update -q
names >/before
quietly apt-get install -y -q --no-install-recommends /packages/ferrow-batch_*.deb
echo "ferrow-batch brings $(names | comm -13 /before - | wc -l) packages to a bare system."
# The test of the package, with what that needs.
quietly apt-get install -y -q --no-install-recommends libjpeg-turbo-progs fonts-dejavu-core
useradd -m someone
setpriv --reuid=someone --regid=someone --init-groups env HOME=/home/someone sh /packages/frame
ferrow-batch --version
quietly apt-get install -y -q --no-install-recommends /packages/ferrow_*.deb
setpriv --reuid=someone --regid=someone --init-groups env HOME=/home/someone ferrow --version
dpkg -L ferrow ferrow-batch | sort -u | while read -r path; do [ -d "$path" ] || echo "$path"; done >/ours
echo "Both together bring $(names | comm -13 /before - | wc -l)."
quietly apt-get purge -y -q ferrow ferrow-batch
while read -r path; do
    [ ! -e "$path" ] || { echo "left behind: $path" >&2; exit 1; }
done </ours
find / -xdev -iname '*ferrow*' -not -path '/packages/*' -not -path '/home/*' -not -path '/tmp/*' -not -path '/proc/*' >/left
[ ! -s /left ] || { echo 'left behind:' >&2; cat /left >&2; exit 1; }
find /home/someone -mindepth 1 -newer /packages -not -name '.bash*' -not -name .profile >/left
[ ! -s /left ] || { echo 'left in a home:' >&2; cat /left >&2; exit 1; }
BARE
echo "Installed into a bare system, they frame photos for an ordinary user; purged, nothing of them is left."
