#!/usr/bin/env bash
# Instructions of adapting every section of a parameter document against
# those of parsing it with the JSON library, counted by callgrind, and the
# heap allocations of adaptation.
#
#   bench/adapt-cost.sh [FILE]     (default: examples/mdvr_parameters.json)
#
# Exits 1 when adaptation costs more than 0.15 of the parse or allocates.
set -euo pipefail
cd "$(dirname "$0")/.."
doc=$(realpath "${1:-examples/mdvr_parameters.json}")
scripts/setup.sh host
build=build/perf
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBSCOMMON_TESTS=OFF >/dev/null
cmake --build "$build" -j"$(nproc)" --target adapt_cost >/dev/null
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
# Symbols bound at load time, so that no phase pays for the dynamic linker.
native=$(LD_BIND_NOW=1 "$build/bench/adapt_cost" "$doc")
LD_BIND_NOW=1 valgrind --tool=callgrind --callgrind-out-file="$out/cg" \
    "$build/bench/adapt_cost" "$doc" --dump >/dev/null 2>"$out/log" || { cat "$out/log" >&2; exit 2; }
allocations=$(awk '/^adapt allocations/ {print $3}' <<<"$native")
sections=$(awk '/^sections/ {print $2}' <<<"$native")
awk -v allocations="$allocations" -v sections="$sections" -v doc="$doc" '
    /^desc: Trigger: Client Request: / { sub(/^desc: Trigger: Client Request: /, ""); what = $0 }
    /^totals: / {
        if (what == "parse") parse = $2
        else if (what ~ /^adapt /) { key = substr(what, 7); cost[key] = $2; adapt += $2 }
        what = ""
    }
    END {
        printf "document               %s\n", doc
        printf "sections adapted       %d\n", sections
        printf "parse instructions     %d\n", parse
        printf "adapt instructions     %d\n", adapt
        printf "ratio                  %.3f\n", adapt / parse
        printf "adapt allocations      %d\n", allocations
        printf "most expensive sections:\n"
        for (n = 0; n < 5; ++n) {
            best = ""
            for (k in cost) if (best == "" || cost[k] > cost[best]) best = k
            if (best == "") break
            printf "  %-8s %9d\n", best, cost[best]
            delete cost[best]
        }
        exit (adapt > 0.15 * parse || allocations != 0) ? 1 : 0
    }' "$out"/cg.*
