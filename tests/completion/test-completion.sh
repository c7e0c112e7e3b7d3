#!/usr/bin/env bash
# The tools' bash completion (tools/completion/bscommon-tools.bash), sourced
# into a bash without the bash-completion package and called as bash calls it:
# COMP_WORDS and COMP_CWORD set, then the function that `complete -p` names.
#   test-completion.sh COMPLETION_FILE BIN_DIR
# BIN_DIR holds mdvr-param and, with the host build of the support library,
# mdvr-bus, mdvr-busd and mdvr-recorder. Each case names what it checks; any
# that fails is named on standard error and the exit status is 1.
set -uo pipefail
completion=$1
bin=$(cd "$2" && pwd)
work=$(mktemp -d)
pids=()
cleanup() {
    for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null; done
    for pid in "${pids[@]}"; do wait "$pid" 2>/dev/null; done
    rm -rf "$work"
}
trap cleanup EXIT

# shellcheck source=/dev/null
source "$completion"
if declare -F _init_completion >/dev/null || declare -F _filedir >/dev/null; then
    echo "FAIL: bash-completion's functions are loaded here; the test must run without them" >&2
    exit 1
fi

passed=0 failed=0
# complete WORD... : COMPREPLY for the last word, as bash would fill it.
complete_words() {
    COMP_WORDS=("$@")
    COMP_CWORD=$(($# - 1))
    COMP_LINE="$*"
    COMP_POINT=${#COMP_LINE}
    COMPREPLY=()
    local function
    function=$(complete -p "$(basename "$1")" 2>/dev/null | sed -n 's/.*-F \([^ ]*\).*/\1/p')
    [ -n "$function" ] || { echo "no completion registered for $(basename "$1")"; return; }
    "$function"
    printf '%s\n' "${COMPREPLY[@]}"
}
# expect WHAT EXPECTED... -- WORD... : each EXPECTED is among the candidates;
# "=N" as the only EXPECTED: exactly N candidates; "!X": X is not among them.
expect() {
    local what=$1
    shift
    local expected=()
    while [ "$1" != -- ]; do expected+=("$1"); shift; done
    shift
    local got
    got=$(complete_words "$@")
    local ok=1 e
    for e in "${expected[@]}"; do
        case $e in
        =*) [ "$(grep -c . <<<"$got")" -eq "${e#=}" ] || ok=0 ;;
        !*) ! grep -qxF -- "${e#!}" <<<"$got" || ok=0 ;;
        *) grep -qxF -- "$e" <<<"$got" || ok=0 ;;
        esac
    done
    if [ $ok = 1 ]; then
        passed=$((passed + 1))
        echo "ok: $what"
    else
        failed=$((failed + 1))
        echo "FAIL: $what: [$*] gave: $(tr '\n' ' ' <<<"$got"), expected ${expected[*]}" >&2
    fi
}

for tool in mdvr-param mdvr-bus mdvr-busd mdvr-recorder; do
    complete -p "$tool" >/dev/null 2>&1 && passed=$((passed + 1)) ||
        { failed=$((failed + 1)); echo "FAIL: no completion registered for $tool" >&2; }
done

p=$bin/mdvr-param
# The section keys as the tool lists them, to compare with.
mapfile -t keys < <("$p" types | awk '$1 ~ /^[0-9]+$/ {print $2}')
[ ${#keys[@]} -gt 0 ] || { echo "FAIL: mdvr-param types listed no key" >&2; exit 1; }
expect "mdvr-param's commands" show layout check types schema encode decode diff -- "$p" ""
expect "a command by its prefix" show =1 -- "$p" sh
expect "an option of show" --format -- "$p" show --f
expect "an option of encode, in its option group" --type --section --output -- "$p" encode --
expect "the values --format lists" text json hex =3 -- "$p" show --format ""
expect "a section key by its prefix (TI)" TIMEP -- "$p" layout TI
expect "every section key after --type (${#keys[@]})" "${keys[@]}" "=${#keys[@]}" -- "$p" show --type ""
expect "a section key after --type" TIMEP =1 -- "$p" show --type TIM
expect "a section key after --section=" TIMEP -- "$p" decode --section = TIM
expect "type numbers after --type 1" 1 10 "!TIMEP" -- "$p" show --type 1
expect "layout's TYPE: all and the keys" all ATP "=$((${#keys[@]} + 1))" -- "$p" layout ""
expect "the value of --type is no positional" TIMEP -- "$p" schema TIM
cd "$work" || exit 1
touch doc-a.json doc-b.json
expect "file names for show's FILE" doc-a.json doc-b.json -- "$p" show doc-
expect "file names for diff's B" doc-b.json -- "$p" diff doc-a.json doc-b
expect "file names for -o" doc-a.json -- "$p" encode --type 1 -o doc-a
expect "nothing after types" =0 -- "$p" types ""

if [ -x "$bin/mdvr-bus" ]; then
    b=$bin/mdvr-bus
    expect "mdvr-bus's commands" send call listen dogs list monitor capture replay =8 -- "$b" ""
    expect "call's options" --file --dest --session --module --timeout --port -- "$b" call --
    expect "list's options" --json --port "!--file" -- "$b" list --
    expect "monitor's options" --json --count --timeout --port -- "$b" monitor --
    expect "replay's options" --speed --port -- "$b" replay --
    expect "the default --timeout of call" 2000 -- "$b" call --timeout ""
    expect "file names for --file" doc-a.json -- "$b" send 0x101 --file doc-
    expect "file names for replay's FILE" doc-a.json -- "$b" replay doc-
    expect "mdvr-busd's options" --port --ipc --version --help -- "$bin/mdvr-busd" --
    expect "mdvr-recorder's options" --name --event --count -- "$bin/mdvr-recorder" --
    expect "mdvr-recorder's default event" 0x101 -- "$bin/mdvr-recorder" --event ""
    # Event ids where known: those that the clients of a running bus subscribed.
    expect "no event without a bus" =0 -- "$b" listen ""
    export XDG_RUNTIME_DIR=$work/run
    unset MDVR_BUS
    mkdir -m 0700 "$XDG_RUNTIME_DIR"
    "$bin/mdvr-busd" >"$work/busd.out" 2>&1 &
    pids+=($!)
    for _ in $(seq 100); do grep -q listening "$work/busd.out" && break; sleep 0.05; done
    "$bin/mdvr-recorder" --event 0x123 >"$work/recorder.out" 2>&1 &
    pids+=($!)
    for _ in $(seq 100); do "$b" list --json 2>/dev/null | grep -q '"events":\[291\]' && break; sleep 0.05; done
    expect "the event a client of the bus subscribed (listen)" 0x123 -- "$b" listen ""
    expect "the event a client of the bus subscribed (call)" 0x123 -- "$b" call 0x1
    expect "the event after another (monitor EVENT...)" 0x123 -- "$b" monitor 0x101 ""
    expect "capture's FILE, then events" doc-a.json "!0x123" -- "$b" capture doc-
    expect "capture's events after its FILE" 0x123 -- "$b" capture out.pcapng ""
fi

echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
