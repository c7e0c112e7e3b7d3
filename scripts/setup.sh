#!/usr/bin/env bash
# Installs what the build needs from Debian, skipping what is already there.
#   scripts/setup.sh host   compiler, CMake, JsonCpp, GoogleTest, Google Benchmark,
#                           valgrind, ZeroMQ (libzmq, cppzmq) and CLI11 for the development bus
#                           and mdvr-param, Python's JSON Schema validator for the tests,
#                           doxygen (API reference), help2man and man-db (man pages and their check)
#   scripts/setup.sh all    the above plus the armhf cross toolchain, armhf
#                           libraries (multiarch) and qemu-user. Of ZeroMQ the
#                           armhf build needs only the runtime library (headers
#                           are the host's): libzmq3-dev:armhf would pull in a
#                           chain of -dev packages for nothing. Also clang with
#                           libFuzzer (fuzz targets), abigail-tools (ABI check),
#                           pkg-config (consumer test).
set -euo pipefail

want=(cmake make g++ libjsoncpp-dev libgtest-dev libbenchmark-dev valgrind libzmq3-dev cppzmq-dev libcli11-dev
      python3-jsonschema doxygen help2man man-db)
if [ "${1:-all}" = all ]; then
    want+=(g++-arm-linux-gnueabihf binutils-arm-linux-gnueabihf qemu-user libc6:armhf libjsoncpp-dev:armhf libgtest-dev:armhf libzmq5:armhf)
    want+=(clang libclang-rt-14-dev abigail-tools pkg-config)
fi

run() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }

missing=()
for pkg in "${want[@]}"; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q 'install ok installed' || missing+=("$pkg")
done
[ ${#missing[@]} -eq 0 ] && exit 0

if printf '%s\n' "${missing[@]}" | grep -q ':armhf$' && ! dpkg --print-foreign-architectures | grep -qx armhf; then
    run dpkg --add-architecture armhf
fi
echo "installing: ${missing[*]}"
# A mirror in the middle of a sync can fail one index; what is needed is
# usually still there, so an incomplete update is retried once, then tolerated.
run apt-get update -qq || { sleep 5; run apt-get update -qq; } || true
run env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
