#!/usr/bin/env bash
# The fetch helpers of the setup scripts (scripts/fetch.sh): how often a
# failing command is tried and what is said when it keeps failing, and which
# mirror is taken from apt's sources.
set -uo pipefail
here=$(cd "$(dirname "$0")" && pwd)
# shellcheck source=../../scripts/fetch.sh
. "$here/../../scripts/fetch.sh"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

failures=0
expect() { # what expected actual
    [ "$2" = "$3" ] || { echo "FAIL: $1: expected '$2', got '$3'" >&2; failures=$((failures + 1)); }
}

# A command that fails its first N calls (printing what apt prints), then succeeds.
flaky() { # failures-before-success
    local calls
    calls=$(($(cat "$work/calls") + 1))
    echo "$calls" >"$work/calls"
    if [ "$calls" -le "$1" ]; then
        echo "Get:1 http://mirror.example/debian bookworm/main armhf libfoo1 1.0-1"
        echo "E: Failed to fetch http://mirror.example/debian/pool/main/f/foo/libfoo1_1.0-1_armhf.deb  Hash Sum mismatch"
        echo "E: Unable to fetch some archives"
        return 100
    fi
}

# delays | failures before success | status | calls | lines said
cases=(
    "0 0 0|0|0|1|"
    "0 0 0|2|0|3|2"
    "0 0 0|3|0|4|3"
    "0 0 0|4|1|4|4"
    "0|9|1|2|2"
    "|9|1|1|1"
)
for case in "${cases[@]}"; do
    IFS='|' read -r delays fails status calls lines <<<"$case"
    echo 0 >"$work/calls"
    FETCH_RETRY_DELAYS=$delays retry "fetch libfoo1" flaky "$fails" 2>"$work/err" >"$work/out"
    actual=$?
    name="delays '$delays', $fails failures"
    expect "$name: status" "$status" "$actual"
    expect "$name: calls" "$calls" "$(cat "$work/calls")"
    said=$(grep -c "fetch libfoo1" "$work/err")
    expect "$name: lines about it" "${lines:-0}" "$said"
    # The command's output goes to standard error, nothing to standard output.
    expect "$name: standard output" "" "$(cat "$work/out")"
    if [ "$status" -ne 0 ]; then
        expect "$name: last line" \
            "test-fetch.sh: cannot fetch libfoo1 (gave up after $calls attempts): E: Failed to fetch http://mirror.example/debian/pool/main/f/foo/libfoo1_1.0-1_armhf.deb  Hash Sum mismatch" \
            "$(tail -1 "$work/err")"
    fi
done

# Pauses between the attempts: 1 s and 2 s, nothing after the last.
echo 0 >"$work/calls"
started=$SECONDS
FETCH_RETRY_DELAYS="1 2" retry "fetch libfoo1" flaky 9 2>/dev/null
elapsed=$((SECONDS - started))
[ "$elapsed" -ge 3 ] && [ "$elapsed" -le 5 ] || { echo "FAIL: pauses of 1 + 2 s took $elapsed s" >&2; failures=$((failures + 1)); }

# Mirrors: apt's own view of sources in both formats; the first source of the suite wins.
mkdir -p "$work/apt/parts" "$work/apt/lists/partial"
cat >"$work/apt/apt.conf" <<EOF
Dir::Etc::sourcelist "$work/apt/sources.list";
Dir::Etc::sourceparts "$work/apt/parts";
Dir::State::lists "$work/apt/lists";
EOF
echo 'deb [arch=amd64] http://one.example/debian trixie main contrib' >"$work/apt/sources.list"
cat >"$work/apt/parts/debian.sources" <<EOF
Types: deb-src
URIs: http://source.example/debian
Suites: bookworm
Components: main

Types: deb
URIs: http://two.example/debian
Suites: bookworm-updates bookworm
Components: main

Types: deb
URIs: http://three.example/debian
Suites: bookworm
Components: main
EOF
echo 'deb http://off.example/debian bookworm main' >"$work/apt/parts/off.list.disabled"
# suite | mirror
mirrors=(
    "trixie|http://one.example/debian/"
    "bookworm|http://two.example/debian/"
    "bookworm-updates|http://two.example/debian/"
    "sid|"
)
for case in "${mirrors[@]}"; do
    IFS='|' read -r suite mirror <<<"$case"
    expect "mirror of $suite" "$mirror" "$(APT_CONFIG=$work/apt/apt.conf host_mirror "$suite")"
done

[ "$failures" -eq 0 ] || exit 1
echo "fetch helpers: ${#cases[@]} retry cases, pauses, ${#mirrors[@]} mirror cases as expected"
