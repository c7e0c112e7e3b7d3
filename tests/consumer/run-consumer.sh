#!/usr/bin/env bash
# Installs a build into a scratch prefix, then builds the consumer program and
# the guide's example against that installed tree and runs the consumer.
#   run-consumer.sh BUILD_DIR cmake|pkg-config [TOOLCHAIN_FILE]
# With a toolchain file (armhf) the consumer is cross built and run under
# qemu-arm. Exits non-zero when any step fails.
set -euo pipefail
build=$(cd "$1" && pwd)
mode=$2
toolchain=${3:-}
here=$(cd "$(dirname "$0")" && pwd)
work=$build/consumer-$mode
prefix=$work/prefix
rm -rf "$work"
cmake --install "$build" --prefix "$prefix" >/dev/null

libdir=$(dirname "$(find "$prefix" -name libBSCommonLibrary.so | head -1)")
run=()
if [ -n "$toolchain" ]; then
    run=(qemu-arm)
    cxx=arm-linux-gnueabihf-g++
    multiarch=arm-linux-gnueabihf
else
    cxx=${CXX:-g++}
    multiarch=$(gcc -print-multiarch)
fi

case $mode in
cmake)
    cmake -S "$here" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" \
          ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$toolchain"} >/dev/null
    cmake --build "$work/build" >/dev/null
    program=$work/build/consumer
    ;;
pkg-config)
    # Only the installed tree and the target's own system files.
    export PKG_CONFIG_LIBDIR=$libdir/pkgconfig:/usr/lib/$multiarch/pkgconfig:/usr/share/pkgconfig
    pkg-config --exists --print-errors BSCommonLibrary
    for program in "$here/consumer.cpp" "$here/../../examples/guide_example.cpp"; do
        # shellcheck disable=SC2046
        $cxx -std=c++17 -Wall -Wextra -Werror "$program" -o "$work/$(basename "$program" .cpp)" \
            $(pkg-config --cflags --libs BSCommonLibrary)
    done
    program=$work/consumer
    ;;
*)
    echo "unknown mode: $mode" >&2
    exit 2
    ;;
esac

LD_LIBRARY_PATH=$libdir "${run[@]}" "$program"
