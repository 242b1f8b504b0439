#!/usr/bin/env bash
# Makes the packages of a build, installs them in a fresh root, lets them work there, and removes them: then nothing is
# left. The root is this machine's own as far as programs and libraries go, seen through mounts that only this test
# has; what is written stays in memory.
# usage: install.sh BUILD-FOLDER [FOLDER-OF-PACKAGES-THAT-ARE-MADE]
set -euo pipefail
build=$(realpath "$1")
here=$(realpath "$(dirname "$0")")
packages=$(realpath "${2:-$build/package-test}")
export PATH=$PATH:/usr/sbin:/sbin

fail()
{
    echo "FAILED: $*"
    exit 1
}

make_packages()
{
    rm -rf "$packages"
    cpack --config "$build/CPackConfig.cmake" -G DEB -B "$packages" >"$build/package-test.log" 2>&1 || {
        cat "$build/package-test.log"
        fail "the packages cannot be made"
    }
    ls "$packages"/*.deb >/dev/null
}

# Then the machine's own files would be taken for what the packages leave.
skip_where_they_are_installed()
{
    if dpkg-query -W -f='${db:Status-Status}\n' carvoy-service carvoy-appliance 2>/dev/null | grep -q '^installed$'; then
        echo "SKIPPED: the packages are installed on this machine"
        exit 77
    fi
}

# As any user; then as a root who may not have user namespaces.
enter_own_mounts()
{
    local way scratch status
    scratch=$(mktemp -d)
    trap 'rmdir "$scratch"' EXIT
    [ $# -gt 1 ] || make_packages
    for way in -Urm -m; do
        export CARVOY_SCRATCH=$scratch CARVOY_WAY=$way
        if CARVOY_PROBE=yes unshare $way "$0" "$build" "$packages" 2>/dev/null; then
            status=0
            unshare $way "$0" "$build" "$packages" || status=$?
            exit $status
        fi
    done
    echo "SKIPPED: this system lets nobody mount here: unshare -Urm and unshare -m both fail to lay a folder over /usr"
    exit 77
}

# The packages' folders that /usr has as well. Only root could write to those of root's, so that the layer has its own.
folders_in_usr()
{
    local package
    for package in "$packages"/*.deb; do
        dpkg-deb --fsys-tarfile "$package" | tar -t | sed -n 's,^\./usr/\(.\+\)/$,\1,p'
    done | sort -u | while read -r folder; do
        [ ! -d "/usr/$folder" ] || echo "$folder"
    done
}

# The fresh root: /usr is this machine's with a layer over it, in which folders can be given their names as dpkg does.
prepare_mounts()
{
    local options=lowerdir=/usr,upperdir=$scratch/upper,workdir=$scratch/work
    [ "$CARVOY_WAY" = -m ] || options+=,userxattr
    mount -t tmpfs none "$scratch"
    mkdir -p "$scratch"/{upper,work,root/{usr,etc,proc,dev,tmp,run,root,var/lib,var/tmp}}
    (cd "$scratch/upper" && xargs mkdir -p) < <(folders_in_usr)
    mount -t overlay overlay -o "$options" "$scratch/root/usr"
    mount --rbind /proc "$scratch/root/proc"
    mount --rbind /dev "$scratch/root/dev"
    mkdir "$scratch/root/usr/new"
    mv "$scratch/root/usr/new" "$scratch/root/usr/newer"
    rmdir "$scratch/root/usr/newer"
}

prepare_root()
{
    local name database=$root/var/lib/dpkg
    for name in bin sbin lib lib32 lib64 libx32; do
        [ ! -L /$name ] || ln -s "usr/$name" "$root/$name"
    done
    for name in passwd group nsswitch.conf hosts ld.so.cache ssl/openssl.cnf alternatives groff; do
        [ ! -e /etc/$name ] || cp -r --no-dereference --parents /etc/$name "$root/"
    done
    # A database of its own that knows what is installed here, so that the packages' needs are looked into.
    mkdir -p "$database"/{info,triggers,updates}
    cp /var/lib/dpkg/status "$database/"
    cp /var/lib/dpkg/info/*.list "$database/info/"
    find "$root" -xdev -mindepth 1 | sort >"$scratch/before"
}

in_database()
{
    # Slim machines leave documents out.
    dpkg --root="$root" --log=/dev/null --path-include='*' "$@" >"$scratch/dpkg.log" 2>&1 || {
        cat "$scratch/dpkg.log"
        fail "dpkg $*"
    }
}

# Whatever lies in the layer, but for the folders that /usr has itself.
left_behind()
{
    (cd "$scratch/upper" && find . -mindepth 1 \( ! -type d -o ! -exec test -d /usr/{} \; \) -print)
}

try_packages()
{
    in_database --install "$packages"/*.deb
    [ -n "$(left_behind)" ] || fail "the packages hold nothing"
    cp "$here/installed.sh" "$root/tmp/"
    env -i PATH=/usr/bin:/bin:/usr/sbin LANG=C.UTF-8 HOME=/root chroot "$root" /tmp/installed.sh
    rm "$root/tmp/installed.sh"
    in_database --purge carvoy-appliance carvoy-service
    [ -z "$(left_behind)" ] || fail "this is left of the packages: $(left_behind)"
    ! grep -q '^Package: carvoy-' "$root/var/lib/dpkg/status" || fail "the packages are known still"
}

if [ -z "${CARVOY_SCRATCH:-}" ]; then
    skip_where_they_are_installed
    enter_own_mounts "$@"
fi
scratch=$CARVOY_SCRATCH
root=$scratch/root
prepare_mounts
[ -z "${CARVOY_PROBE:-}" ] || exit 0
prepare_root
try_packages
echo "OK: the packages come, work and go"
