#!/usr/bin/env bash
# The library as the recorder carries it: an armhf Release build, measured
#   - .text of libBSCommonLibrary.so by area (from the linker's map) beside
#     the .text of the JSON library it wraps;
#   - instructions of parsing the document and of adapting every section of
#     it, counted under qemu-arm by the plugin in bench/arm-insn (each phase
#     from two runs that differ by one parse or one adaptation);
#   - the deepest stack of any AdaptParaJson call on the document.
#
#   bench/armhf-footprint.sh [FILE]     (default: examples/mdvr_parameters.json)
#
# Exits 1 when .text passes 32 KiB, adaptation costs more than 0.12 of the
# parse or a call needs more than 6 KiB of stack.
set -euo pipefail
cd "$(dirname "$0")/.."
doc=$(realpath "${1:-examples/mdvr_parameters.json}")
scripts/setup.sh all
build=build/armhf-perf
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Release -DCMAKE_TOOLCHAIN_FILE=cmake/armhf-toolchain.cmake \
      -DBSCOMMON_TESTS=OFF -DBSCOMMON_BENCH=ON >/dev/null
cmake --build "$build" -j"$(nproc)" --target BSCommonLibrary adapt_count adapt_stack >/dev/null
# The sysroot the toolchain file takes by default.
sysroot=$(realpath "${ARMHF_SYSROOT:-build/sysroot-armhf}")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The library linked once more, with a map of where each byte of .text comes from.
(cd "$build" && eval "$(cat CMakeFiles/BSCommonLibrary.dir/link.txt) -o $work/lib.so -Wl,-Map=$work/lib.map")
python3 - "$work/lib.map" <<'PY'
import re, sys
areas = [("ParaReader.cpp", "walk and tables"), ("ParaParsers.cpp", "walk and tables"),
         ("CommonParaAdapter.cpp", "readers and dispatcher"), ("MsgClientManage.cpp", "message client"),
         ("CommonUtils.cpp", "utilities")]
size = {}
inside = False
pending = None
for line in open(sys.argv[1]):
    if re.match(r"^\.text\b", line):
        inside = True
        continue
    if inside and re.match(r"^\.\S", line):
        break
    if not inside:
        continue
    m = re.match(r"^ (\.text\S*)\s*$", line)
    if m:
        pending = True
        continue
    m = re.match(r"^ (?:\.text\S*)?\s+0x[0-9a-f]+\s+0x([0-9a-f]+)\s+(\S+)", line)
    if m and (pending or line.startswith(" .text")):
        area = next((a for f, a in areas if f in m.group(2)), "start-up code of the compiler")
        size[area] = size.get(area, 0) + int(m.group(1), 16)
    pending = None
total = sum(size.values())
for area in ["walk and tables", "readers and dispatcher", "message client", "utilities",
             "start-up code of the compiler"]:
    print("  %-30s %7d" % (area, size.get(area, 0)))
PY
text() { arm-linux-gnueabihf-size -A "$1" | awk '$1 == ".text" { print $2 }'; }
data() { arm-linux-gnueabihf-size -A "$1" | awk '$1 == ".rodata" || $1 == ".data.rel.ro" { n += $2 } END { print n }'; }
lib_text=$(text "$build/libBSCommonLibrary.so")
json=$(ls "$sysroot"/usr/lib/arm-linux-gnueabihf/libjsoncpp.so.* | head -1)
printf '%-32s %7d bytes (limit 32768)\n' ".text of libBSCommonLibrary.so" "$lib_text"
printf '%-32s %7d bytes\n' "tables and constants" "$(data "$build/libBSCommonLibrary.so")"
printf '%-32s %7d bytes\n' ".text of $(basename "$json")" "$(text "$json")"

gcc -O2 -shared -fPIC -fvisibility=hidden bench/arm-insn/insncount.c -o "$work/insncount.so"
count() { # PARSES ADAPTS
    qemu-arm -L "$sysroot" -E LD_BIND_NOW=1 -E LD_LIBRARY_PATH="$build" \
        -plugin "$work/insncount.so" -d plugin -D "$work/count.log" "$build/bench/adapt_count" "$doc" "$1" "$2"
    grep -o '[0-9]\+' "$work/count.log" | tail -1
}
one=$(count 1 0); two=$(count 2 0); adapt1=$(count 1 1); adapt2=$(count 1 2)
parse=$((two - one)); adapt=$((adapt2 - adapt1))
ratio=$(awk -v a="$adapt" -v p="$parse" 'BEGIN { printf "%.3f", a / p }')
printf '%-32s %7d\n%-32s %7d\n%-32s %7s (limit 0.12)\n' "parse instructions" "$parse" \
       "adapt instructions" "$adapt" "ratio" "$ratio"
stack=$(qemu-arm -L "$sysroot" -E LD_BIND_NOW=1 -E LD_LIBRARY_PATH="$build" "$build/bench/adapt_stack" "$doc" --quiet-logs |
        tee "$work/stack" | awk '/^deepest/ { print $3 }')
printf '%-32s %7d bytes (limit 6144)\n' "deepest AdaptParaJson stack" "$stack"
sed -n '2,4p' "$work/stack"
awk -v t="$lib_text" -v r="$ratio" -v s="$stack" 'BEGIN { exit !(t <= 32768 && r <= 0.12 && s <= 6144) }'
