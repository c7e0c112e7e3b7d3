#!/usr/bin/env bash
# Checks that a cross build reads nothing of the C library, the C++ runtime
# and the libraries it uses from outside its sysroot: a probe that includes
# what the library and the tests include is compiled (-H lists every header
# read) and linked (--verbose lists every file the linker opens, the
# libraries' own dependencies included); under the emulator each object the
# loader maps (LD_TRACE_LOADED_OBJECTS) must exist in the sysroot, where
# qemu-arm -L finds it before the host's. The probe starts a thread and forks,
# which crash when the loader and the C library are of two builds of glibc.
#   check-sysroot.sh WORK_DIR SYSROOT EMULATOR... -- COMPILER CXX_FLAGS LINK_FLAGS
set -euo pipefail
work=$1
sysroot=$(realpath "$2")
shift 2
emulator=()
while [ $# -gt 0 ] && [ "$1" != -- ]; do
    emulator+=("$1")
    shift
done
[ $# -eq 4 ] || { echo "usage: check-sysroot.sh WORK SYSROOT EMULATOR... -- COMPILER CXX_FLAGS LINK_FLAGS" >&2; exit 2; }
cxx=$2
read -r -a cxxflags <<<"$3"
read -r -a ldflags <<<"$4"
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"

failures=0
# Every absolute path in the list (one a line) must lie in the sysroot.
inside() { # what list-file
    local path real count=0
    while IFS= read -r path; do
        count=$((count + 1))
        real=$(realpath -m "$path")
        case $real/ in
        "$sysroot"/* | "$work"/*) ;;
        *) echo "FAIL: $1 from outside the sysroot: $path" >&2; failures=$((failures + 1)) ;;
        esac
    done <"$2"
    [ "$count" -gt 0 ] || { echo "FAIL: no $1 seen" >&2; failures=$((failures + 1)); }
    echo "$count $1 checked"
}

"$cxx" --sysroot="$sysroot" "${cxxflags[@]}" -isystem =/usr/include/jsoncpp -std=c++17 -H \
    -c "$here/probe.cpp" -o "$work/probe.o" 2>"$work/headers.log"
sed -n 's/^\.\+ \(\/.*\)$/\1/p' "$work/headers.log" | sort -u >"$work/headers"
inside headers "$work/headers"

"$cxx" --sysroot="$sysroot" "${ldflags[@]}" "$work/probe.o" -o "$work/probe" \
    -ljsoncpp -lzmq -pthread -Wl,--verbose >"$work/link.log"
# Inputs opened ("attempt to open X succeeded") and the libraries' own
# dependencies ("found libsodium.so.23 at X").
sed -n -e 's/^attempt to open \(.*\) succeeded$/\1/p' -e 's/^found .* at \(\/.*\)$/\1/p' "$work/link.log" |
    sort -u >"$work/inputs"
inside "linker inputs" "$work/inputs"

"${emulator[@]}" "$work/probe" >"$work/run.log" 2>&1 || {
    cat "$work/run.log" >&2
    echo "FAIL: the probe did not run" >&2
    exit 1
}
grep -qx 'probe: thread ran, child exited 3' "$work/run.log" || { echo "FAIL: no result from the probe" >&2; failures=$((failures + 1)); }
"${emulator[@]}" -E LD_TRACE_LOADED_OBJECTS=1 "$work/probe" >"$work/objects.log"
# "libm.so.6 => /lib/arm-linux-gnueabihf/libm.so.6 (0x...)" and "/lib/ld-linux-armhf.so.3 (0x...)"
sed -n -e 's/.* => \(\/[^ ]*\) (0x.*/\1/p' -e 's/^[[:space:]]*\(\/[^ ]*\) (0x.*/\1/p' "$work/objects.log" | sort -u >"$work/loaded"
grep -q ' => not found' "$work/objects.log" && { echo "FAIL: a library was not found" >&2; failures=$((failures + 1)); }
count=0
while IFS= read -r object; do
    count=$((count + 1))
    [ -e "$sysroot$object" ] || { echo "FAIL: $object is not in the sysroot" >&2; failures=$((failures + 1)); }
done <"$work/loaded"
grep -q 'libc.so.6' "$work/loaded" || { echo "FAIL: the loader mapped no C library" >&2; failures=$((failures + 1)); }
echo "$count loaded objects checked"

[ "$failures" -eq 0 ] || exit 1
echo "probe built and run from $sysroot alone"
