#!/bin/sh
# Makes a tool's man page with help2man from its --help and --version and an
# include file; with an emulator (cross builds) the tool runs under it.
#   help2man.sh TOOL INCLUDE OUTPUT [EMULATOR ARGS...]
set -eu
tool=$1 include=$2 output=$3
shift 3
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
# help2man names the page after the program it runs: a wrapper of the tool's name.
name=$(basename "$tool")
{
    echo '#!/bin/sh'
    printf 'exec'
    for word in "$@" "$tool"; do printf " '%s'" "$word"; done
    echo ' "$@"'
} >"$dir/$name"
chmod +x "$dir/$name"
mkdir -p "$(dirname "$output")"
help2man --no-info --section 1 --include "$include" --output "$output" "$dir/$name"
