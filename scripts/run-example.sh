#!/usr/bin/env bash
# Builds the library and its tool on the host and shows what the bundled
# example parameter document becomes.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh host
cmake -S . -B build/host -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/host -j"$(nproc)" --target mdvr-param
build/host/mdvr-param show examples/mdvr_parameters.json
