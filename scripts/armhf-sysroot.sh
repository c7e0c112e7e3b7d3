#!/usr/bin/env bash
# Makes the armhf sysroot that cmake/armhf-toolchain.cmake builds against: the
# armhf C and C++ runtime, JsonCpp, GoogleTest, ZeroMQ (with cppzmq) and CLI11,
# extracted from the Debian packages of the host's release by mmdebstrap. The
# host's own package set is left alone: no foreign architecture, no armhf
# package on the host.
#
#   scripts/armhf-sysroot.sh        make it unless it is there for the current
#                                   package list; prints its directory
#
#   ARMHF_SYSROOT   where it goes (default: build/sysroot-armhf)
#   ARMHF_SUITE     the release (default: VERSION_CODENAME of /etc/os-release)
#   ARMHF_MIRROR    the archive (default: the one the host's apt takes the
#                   release from)
#
# The packages are only extracted, never configured, so the script finishes
# what their maintainer scripts would have done for a build: the tree is made
# merged-/usr (lib/ moved into usr/lib/, lib -> usr/lib), symlinks that point
# at absolute paths are made relative (a linker or qemu-arm -L following
# /lib/... would leave the sysroot), an empty ld.so.cache keeps the loader from
# reading the host's, and a dpkg database lists what each package holds (for
# the dependencies of the Debian packages the build makes). The sysroot is
# relocatable: copy or move it anywhere.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=fetch.sh
. "$here/fetch.sh"

triple=arm-linux-gnueabihf
sysroot=${ARMHF_SYSROOT:-$here/../build/sysroot-armhf}
stamp_name=.bscommon-sysroot

fail() { echo "armhf-sysroot: $*" >&2; exit 1; }

command -v mmdebstrap >/dev/null || fail "mmdebstrap is not installed (scripts/setup.sh all)"
gcc_version=$($triple-g++ -dumpversion 2>/dev/null) ||
    fail "$triple-g++ is not installed (scripts/setup.sh all)"

suite=${ARMHF_SUITE:-$(. /etc/os-release && echo "${VERSION_CODENAME:-}")}
[ -n "$suite" ] || fail "no VERSION_CODENAME in /etc/os-release: set ARMHF_SUITE"

# The C++ runtime of the cross compiler's version, so that headers, libraries
# and the compiler agree.
packages=(libc6-dev "libstdc++-$gcc_version-dev" libjsoncpp-dev libgtest-dev libzmq3-dev cppzmq-dev libcli11-dev)
stamp="suite $suite
packages ${packages[*]}
layout merged-usr"

mkdir -p "$(dirname "$sysroot")"
sysroot=$(cd "$(dirname "$sysroot")" && pwd)/$(basename "$sysroot")
if [ -f "$sysroot/$stamp_name" ] && [ "$(cat "$sysroot/$stamp_name")" = "$stamp" ]; then
    echo "$sysroot"
    exit 0
fi
# Never replace a directory that this script did not make (a vendor's sysroot).
if [ -e "$sysroot" ] && [ ! -f "$sysroot/$stamp_name" ] && [ -n "$(ls -A "$sysroot" 2>/dev/null)" ]; then
    fail "$sysroot exists and was not made here; remove it or set ARMHF_SYSROOT"
fi

mirror=${ARMHF_MIRROR:-$(host_mirror "$suite")}
[ -n "$mirror" ] || fail "the host's apt sources name no mirror for $suite: set ARMHF_MIRROR"

echo "armhf sysroot: ${packages[*]} from $suite ($mirror) into $sysroot" >&2
new=$sysroot.new
trap 'rm -rf "$new"' EXIT # what a failed run leaves
started=$SECONDS
make_root() {
    rm -rf "$new"
    mmdebstrap --variant=extract --architectures=armhf --components=main \
        --include="$(IFS=,; echo "${packages[*]}")" \
        --aptopt='Acquire::Retries "2"' --skip=cleanup/apt/cache --skip=chroot/mount \
        "$suite" "$new" "$mirror"
}
retry "make the armhf sysroot (${packages[*]} of $suite from $mirror)" make_root

# Device nodes and /proc links: a sysroot is not booted.
rm -rf "${new:?}/dev"

# Merged /usr, as an installed Debian is: the loader searches
# /lib/arm-linux-gnueabihf before /usr/lib/arm-linux-gnueabihf, and qemu-arm -L
# takes from the host whatever path the sysroot lacks, so a library kept only
# in usr/lib here would be taken from the host's /lib/arm-linux-gnueabihf when
# the host has one of that name (an armhf multiarch package). With lib ->
# usr/lib every such path is found in the sysroot. A file in both stops the
# script.
merged=()
for dir in bin sbin lib lib32 lib64 libhf; do
    if [ ! -d "$new/$dir" ] || [ -L "$new/$dir" ]; then continue; fi
    merged+=("$dir")
    mkdir -p "$new/usr/$dir"
    # A relative link that leaves the directory would point elsewhere once
    # moved: it is made absolute here, and relative again below.
    while IFS= read -r -d '' link; do
        target=$(realpath -s -m "$(dirname "$link")/$(readlink "$link")")
        case $target in
        "$new/$dir"/*) ;;
        "$new"/*) ln -sfn "/${target#"$new"/}" "$link" ;;
        *) fail "$link leads out of the new sysroot" ;;
        esac
    done < <(find "$new/$dir" -type l ! -lname '/*' -print0)
    mapfile -d '' entries < <(cd "$new/$dir" && find . -mindepth 1 -printf '%P\0')
    for entry in "${entries[@]}"; do
        from=$new/$dir/$entry to=$new/usr/$dir/$entry
        if [ -d "$from" ] && [ ! -L "$from" ]; then
            if [ -L "$to" ] || { [ -e "$to" ] && [ ! -d "$to" ]; }; then
                fail "cannot merge /$dir into /usr/$dir: /usr/$dir/$entry is not a directory"
            fi
            mkdir -p "$to"
        else
            if [ -e "$to" ] || [ -L "$to" ]; then
                fail "cannot merge /$dir into /usr/$dir: both hold $entry"
            fi
            mv "$from" "$to"
        fi
    done
    find "$new/$dir" -depth -type d -empty -delete
    [ ! -e "$new/$dir" ] || fail "/$dir of the new sysroot is not empty after the merge"
    ln -s "usr/$dir" "$new/$dir"
done

# Absolute symlinks (libm.so -> /lib/arm-linux-gnueabihf/libm.so.6) made
# relative, straight to the merged directory rather than through its link.
while IFS= read -r -d '' link; do
    target=$(readlink "$link")
    for dir in "${merged[@]}"; do
        case $target in "/$dir" | "/$dir"/*) target=/usr$target ;; esac
    done
    ln -sfn "$(realpath -s -m --relative-to="$(dirname "$link")" "$new$target")" "$link"
done < <(find "$new" -type l -lname '/*' -print0)

: >"$new/etc/ld.so.cache"

# The dpkg database: each package unpacked (its maintainer scripts never ran),
# with the list of its files.
admin=$new/var/lib/dpkg
mkdir -p "$admin/info"
echo 1 >"$admin/info/format" # file lists named package:arch for Multi-Arch: same
: >"$admin/status"
for deb in "$new"/var/cache/apt/archives/*.deb; do
    package=$(dpkg-deb -f "$deb" Package)
    name=$package
    [ "$(dpkg-deb -f "$deb" Multi-Arch)" = same ] && name=$package:$(dpkg-deb -f "$deb" Architecture)
    {
        echo "Package: $package"
        echo "Status: install ok unpacked"
        dpkg-deb -f "$deb" | grep -v '^Package:'
        echo
    } >>"$admin/status"
    dpkg-deb --fsys-tarfile "$deb" | tar -t | sed -e 's|^\./|/|' -e 's|/$||' -e 's|^$|/.|' >"$admin/info/$name.list"
done
rm -f "$new"/var/cache/apt/archives/*.deb

# What the toolchain file takes from the sysroot is there, and no link leads out.
for path in "lib/ld-linux-armhf.so.3" "usr/include/c++/$gcc_version" "usr/lib/gcc/$triple/$gcc_version/crtbegin.o" \
            "usr/lib/$triple/libjsoncpp.so" "usr/lib/$triple/libzmq.so" "usr/include/zmq.hpp"; do
    [ -e "$new/$path" ] || fail "the new sysroot lacks /$path"
done
[ "$(readlink "$new/lib")" = usr/lib ] || fail "the new sysroot's /lib is not a link to usr/lib"
outside=$(find "$new" -type l -lname '/*' | head -3)
[ -z "$outside" ] || fail "absolute symlinks left in the new sysroot: $outside"
dangling=$(find "$new" -xtype l | head -3)
[ -z "$dangling" ] || fail "symlinks that lead nowhere in the new sysroot: $dangling"

echo "$stamp" >"$new/$stamp_name"
rm -rf "$sysroot"
mv "$new" "$sysroot"
echo "armhf sysroot: $(du -sh "$sysroot" | cut -f1) in $((SECONDS - started)) s" >&2
echo "$sysroot"
