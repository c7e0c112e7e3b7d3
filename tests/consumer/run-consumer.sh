#!/usr/bin/env bash
# Installs a build and builds the consumer program and the guide's example
# (docs/guide.md) against the installed library as an application of its own
# would be built, then runs the consumer.
#   run-consumer.sh BUILD_DIR cmake|pkg-config [TOOLCHAIN_FILE SYSROOT]
#
# CXX, CXXFLAGS and LDFLAGS are the compiler and flags of the pkg-config build
# (default: g++). With a toolchain file and a sysroot the consumer is cross
# built and runs under qemu-arm:
#   cmake       the library installed in a prefix of its own, found through
#               CMAKE_FIND_ROOT_PATH, everything else in the sysroot
#   pkg-config  the library installed into the sysroot (a copy of it, made of
#               hard links where it can be), found through
#               PKG_CONFIG_SYSROOT_DIR; the flags' sysroot is moved to the copy
# Exits non-zero when any step fails.
set -euo pipefail
build=$(cd "$1" && pwd)
mode=$2
toolchain=${3:-}
sysroot=${4:-}
here=$(cd "$(dirname "$0")" && pwd)
work=$build/consumer-$mode
rm -rf "$work"
mkdir -p "$work"
cxx=${CXX:-g++}
read -r -a cxxflags <<<"${CXXFLAGS:-}"
read -r -a ldflags <<<"${LDFLAGS:-}"

if [ -n "$toolchain" ] && [ -z "$sysroot" ]; then
    echo "run-consumer.sh: a cross build needs its sysroot" >&2
    exit 2
fi

case $mode in
cmake)
    prefix=$work/prefix
    cmake --install "$build" --prefix "$prefix" >/dev/null
    if [ -z "$toolchain" ]; then
        found=(-DCMAKE_PREFIX_PATH="$prefix")
    else
        found=(-DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_SYSROOT="$sysroot" -DCMAKE_FIND_ROOT_PATH="$prefix")
    fi
    cmake -S "$here" -B "$work/build" "${found[@]}" >/dev/null
    cmake --build "$work/build" >/dev/null
    program=$work/build/consumer
    libdir=$(dirname "$(find "$prefix" -name libBSCommonLibrary.so | head -1)")
    ;;
pkg-config)
    multiarch=$("$cxx" -print-multiarch)
    if [ -z "$toolchain" ]; then
        prefix=$work/prefix
        cmake --install "$build" --prefix "$prefix" >/dev/null
        libdir=$(dirname "$(find "$prefix" -name libBSCommonLibrary.so | head -1)")
        # Only the installed tree and the host's own system files.
        export PKG_CONFIG_LIBDIR=$libdir/pkgconfig:/usr/lib/$multiarch/pkgconfig:/usr/share/pkgconfig
    else
        stage=$work/sysroot
        cp -al "$sysroot" "$stage" 2>/dev/null || { rm -rf "$stage"; cp -a "$sysroot" "$stage"; }
        DESTDIR=$stage cmake --install "$build" --prefix /usr/local >/dev/null
        libdir=/usr/local/lib
        export PKG_CONFIG_SYSROOT_DIR=$stage
        export PKG_CONFIG_LIBDIR=$stage/usr/local/lib/pkgconfig:$stage/usr/lib/$multiarch/pkgconfig:$stage/usr/share/pkgconfig
        cxxflags=(--sysroot="$stage" "${cxxflags[@]}")
        ldflags=("${ldflags[@]//"$sysroot"/"$stage"}")
        sysroot=$stage
    fi
    pkg-config --exists --print-errors BSCommonLibrary
    for source in "$here/consumer.cpp" "$here/../../examples/guide_example.cpp"; do
        # shellcheck disable=SC2046
        "$cxx" "${cxxflags[@]}" -std=c++17 -Wall -Wextra -Werror "$source" -o "$work/$(basename "$source" .cpp)" \
            $(pkg-config --cflags --libs BSCommonLibrary) "${ldflags[@]}"
    done
    program=$work/consumer
    ;;
*)
    echo "unknown mode: $mode" >&2
    exit 2
    ;;
esac

if [ -n "$toolchain" ]; then
    qemu-arm -L "$sysroot" -E LD_LIBRARY_PATH="$libdir" "$program"
else
    LD_LIBRARY_PATH=$libdir "$program"
fi
# The staged sysroot is kept only when something failed.
[ -z "${stage:-}" ] || rm -rf "$stage"
