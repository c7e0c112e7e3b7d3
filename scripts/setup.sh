#!/usr/bin/env bash
# Installs what the build needs from Debian, skipping what is already there.
#   scripts/setup.sh host   compiler, CMake, JsonCpp, GoogleTest, Google Benchmark,
#                           valgrind, ZeroMQ (libzmq, cppzmq) and CLI11 for the development bus
#                           and mdvr-param, Python's JSON Schema validator for the tests,
#                           doxygen (API reference), python3 (the generators of the man pages and
#                           the records' layout pages), man-db and groff-base (the man pages' check),
#                           tshark (the bus tests read a capture back with it)
#   scripts/setup.sh all    the above plus the armhf cross compiler, qemu-user and
#                           mmdebstrap, then the armhf sysroot (scripts/armhf-sysroot.sh:
#                           the armhf libraries and headers, extracted into build/ or
#                           ARMHF_SYSROOT, never installed on the host). Also clang with
#                           libFuzzer (fuzz targets), abigail-tools (ABI check),
#                           pkg-config (consumer test).
# The host keeps its architectures: no armhf package is installed on it.
# apt-get update, the installation and the sysroot are tried again after 5, 15
# and 30 s when the mirror fails them (it may be in the middle of a sync); when
# the last attempt fails too, one line says what could not be had.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=fetch.sh
. "$here/fetch.sh"

want=(cmake make g++ libjsoncpp-dev libgtest-dev libbenchmark-dev valgrind libzmq3-dev cppzmq-dev libcli11-dev
      python3 python3-jsonschema doxygen man-db groff-base tshark)
if [ "${1:-all}" = all ]; then
    want+=(g++-arm-linux-gnueabihf binutils-arm-linux-gnueabihf qemu-user mmdebstrap)
    want+=(clang libclang-rt-14-dev abigail-tools pkg-config)
fi

run() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }

missing=()
for pkg in "${want[@]}"; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' || missing+=("$pkg")
done

if [ ${#missing[@]} -gt 0 ]; then
    echo "installing: ${missing[*]}"
    # Another installation on the machine holds the dpkg lock: wait for it.
    apt=(env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=300)
    retry "update the package lists (apt-get update)" run "${apt[@]}" update -qq
    retry "install ${missing[*]}" \
        run "${apt[@]}" install -y -qq --no-install-recommends "${missing[@]}"
fi

if [ "${1:-all}" = all ]; then
    "$here/armhf-sysroot.sh" >/dev/null
fi
