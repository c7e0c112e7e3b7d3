#!/usr/bin/env bash
# Builds and runs every test: on the host, on the host under AddressSanitizer
# and UndefinedBehaviorSanitizer, and for 32-bit ARM (armhf) against the armhf
# sysroot that setup.sh makes, under qemu-arm (the host and armhf suites
# include the installed-consumer and Debian package tests); then compares both
# libraries with their ABI baselines and runs each fuzz target for a short while.
# Exits non-zero on any failure.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh all
jobs=$(nproc)

suite() {
    local name=$1; shift
    echo "=== $name ==="
    cmake -S . -B "build/$name" "$@" >/dev/null
    cmake --build "build/$name" -j"$jobs"
    (cd "build/$name" && ctest --output-on-failure -j"$jobs")
}

suite host -DCMAKE_BUILD_TYPE=RelWithDebInfo
suite asan -DCMAKE_BUILD_TYPE=Debug -DBSCOMMON_SANITIZE=ON
suite armhf -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_TOOLCHAIN_FILE=cmake/armhf-toolchain.cmake
echo "=== abi ==="
scripts/abi-check.sh host armhf
# Short libFuzzer runs of every fuzz target (clang, ASan+UBSan).
suite fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBSCOMMON_FUZZ=ON -DBSCOMMON_TESTS=OFF -DBSCOMMON_BENCH=OFF
echo "all suites passed: host, asan, armhf, abi, fuzz"
