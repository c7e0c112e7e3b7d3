#!/usr/bin/env bash
# Compares the binary interface of built libBSCommonLibrary.so files with the
# baselines kept in abi/ (one abidw XML per target) and fails on any change:
# a record's size or a field's type, offset or signedness, an enumerator, an
# exported function added, removed or changed.
#
#   scripts/abi-check.sh [TARGET...]            check (default: host armhf)
#   scripts/abi-check.sh --update [TARGET...]   write the baselines anew
#
# TARGET is host (build/host) or armhf (build/armhf); the builds must exist
# and carry debug information (RelWithDebInfo or Debug), as scripts/test-all.sh
# makes them. BUILD_ROOT overrides build/. Updating is the deliberate way to
# accept a change of the interface: commit the new abi/*.abi with it.
set -euo pipefail
cd "$(dirname "$0")/.."

update=false
if [ "${1:-}" = --update ]; then
    update=true
    shift
fi
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=(host armhf)
build_root=${BUILD_ROOT:-build}
headers=(--headers-dir basicservice/basebusiness/BSCommonLibrary/include
         --headers-dir platform/toolkit/include)

dump() { # library output
    # Only what the exported headers declare; no paths of the machine that built it.
    abidw "${headers[@]}" --drop-private-types --no-corpus-path --no-comp-dir-path --no-show-locs \
          --type-id-style hash --out-file "$2" "$1"
}

status=0
for target in "${targets[@]}"; do
    library=$build_root/$target/libBSCommonLibrary.so
    baseline=abi/$target.abi
    if [ ! -f "$library" ]; then
        echo "abi-check: $library not built (see scripts/test-all.sh)" >&2
        exit 2
    fi
    if $update; then
        mkdir -p abi
        dump "$library" "$baseline"
        echo "abi-check: $baseline written from $library"
        continue
    fi
    if [ ! -f "$baseline" ]; then
        echo "abi-check: no baseline $baseline (scripts/abi-check.sh --update $target)" >&2
        exit 2
    fi
    current=$(mktemp)
    dump "$library" "$current"
    # --harmless: added enumerators and the like count as changes too.
    if abidiff --harmless "$baseline" "$current" > "$current.report"; then
        echo "abi-check: $target matches $baseline"
    else
        echo "abi-check: $target differs from $baseline:" >&2
        cat "$current.report" >&2
        echo "abi-check: if the change is intended: scripts/abi-check.sh --update $target" >&2
        status=1
    fi
    rm -f "$current" "$current.report"
done
exit $status
