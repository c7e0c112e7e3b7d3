#!/usr/bin/env bash
# Two processes on the development bus: the daemon, a recorder process built on
# CMsgClientManage, and mdvr-bus sending it examples/mdvr_parameters.json.
# Starts and stops everything itself; exits 0 only when the recorder received
# the document and its records are the ones `mdvr-param show` prints for it.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh host
cmake -S . -B build/host -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/host -j"$(nproc)" --target mdvr-busd mdvr-bus mdvr-recorder mdvr-param >/dev/null
bin=build/host

work=$(mktemp -d)
pids=()
cleanup() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
    for pid in "${pids[@]}"; do
        for _ in $(seq 50); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
        kill -9 "$pid" 2>/dev/null || true
    done
    wait 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "bus-demo: $*" >&2; exit 1; }
# Waits up to five seconds for a command to succeed.
await() { for _ in $(seq 50); do "$@" >/dev/null 2>&1 && return 0; sleep 0.1; done; return 1; }

# A bus of our own on a local socket, so the demonstration never meets
# another bus on this machine.
export MDVR_BUS="ipc://$work/bus"
echo "== mdvr-busd --ipc $work/bus"
"$bin/mdvr-busd" --ipc "$work/bus" >"$work/busd.out" 2>"$work/busd.log" &
pids+=($!)
await grep -q listening "$work/busd.out" || fail "the daemon did not start: $(cat "$work/busd.log")"

echo "== mdvr-recorder --count 1"
"$bin/mdvr-recorder" --count 1 >"$work/recorder.out" 2>"$work/recorder.err" &
recorder=$!
pids+=("$recorder")
await grep -q "listening for parameter messages" "$work/recorder.out" || fail "the recorder did not start"
await sh -c "'$bin/mdvr-bus' dogs | grep -q mdvr-recorder" || fail "the recorder's watchdog is not registered"

echo "== mdvr-bus dogs"
"$bin/mdvr-bus" dogs
echo "== mdvr-bus call 0x101 --file examples/mdvr_parameters.json"
"$bin/mdvr-bus" call 0x101 --file examples/mdvr_parameters.json --timeout 5000 || fail "no answer from the recorder"

for _ in $(seq 50); do kill -0 "$recorder" 2>/dev/null || break; sleep 0.1; done
wait "$recorder" || fail "the recorder failed: $(cat "$work/recorder.err")"

echo "== what the recorder printed (record headings; $(wc -l <"$work/recorder.out") lines in all)"
grep -v '^  ' "$work/recorder.out"
"$bin/mdvr-param" show examples/mdvr_parameters.json >"$work/expected.out"
grep -v '^recorder:\|^MSG_MANAGE:' "$work/recorder.out" | diff -q - "$work/expected.out" >/dev/null ||
    fail "the records that arrived differ from mdvr-param show"
echo "== $(grep -c '^[A-Z].* type [0-9]' "$work/expected.out") records arrived, identical to mdvr-param show"
