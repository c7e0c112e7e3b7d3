#!/usr/bin/env bash
# Builds the Debian packages of a build with CPack and inspects them: names,
# architecture, declared dependencies, the files each one holds, and that the
# libraries inside are built for the package's architecture.
#   check-debs.sh BUILD_DIR ARCH      ARCH: amd64 or armhf
set -euo pipefail
build=$(cd "$1" && pwd)
arch=$2
out=$build/packages
rm -rf "$out"
(cd "$build" && cpack -G DEB -B "$out" >/dev/null)

failures=0
fail() { echo "FAIL: $*" >&2; failures=$((failures + 1)); }
expect_field() { # deb field expected-regex
    local value
    value=$(dpkg-deb -f "$1" "$2")
    [[ $value =~ $3 ]] || fail "$(basename "$1"): $2 is '$value', expected /$3/"
}
expect_files() { # deb path...
    local deb=$1 listing
    shift
    listing=$(dpkg-deb -c "$deb" | awk '{print $6}' | sed 's|^\./|/|')
    for path in "$@"; do
        grep -qx -- "$path" <<<"$listing" || fail "$(basename "$deb"): no $path"
    done
    echo "$listing"
}

runtime=$(ls "$out"/libbscommonlibrary_*_"$arch".deb 2>/dev/null || true)
dev=$(ls "$out"/libbscommonlibrary-dev_*_"$arch".deb 2>/dev/null || true)
[ -f "$runtime" ] || { echo "FAIL: no runtime package for $arch in $out" >&2; ls "$out" >&2; exit 1; }
[ -f "$dev" ] || { echo "FAIL: no development package for $arch in $out" >&2; ls "$out" >&2; exit 1; }

expect_field "$runtime" Package '^libbscommonlibrary$'
expect_field "$runtime" Architecture "^$arch\$"
expect_field "$runtime" Depends '(^|, )libjsoncpp[0-9]+ \(>= [^)]+\)'
expect_field "$runtime" Depends 'libstdc\+\+6'
expect_field "$dev" Package '^libbscommonlibrary-dev$'
expect_field "$dev" Architecture "^$arch\$"
expect_field "$dev" Depends "libbscommonlibrary \(= $(dpkg-deb -f "$runtime" Version)\)"
expect_field "$dev" Depends 'libjsoncpp-dev'

runtime_expected=(/usr/lib/libBSCommonLibrary.so /usr/lib/libtoolkit.so /usr/bin/mdvr-param)
# The host build of the support library is a ZeroMQ client and brings the
# development bus with it.
if [ -x "$build/mdvr-busd" ]; then
    runtime_expected+=(/usr/bin/mdvr-busd /usr/bin/mdvr-bus /usr/bin/mdvr-recorder)
    expect_field "$runtime" Depends '(^|, )libzmq5 \(>= [^)]+\)'
fi
# Each package's doc directory, a man page for every tool the build made one for.
docs=()
for package in libbscommonlibrary libbscommonlibrary-dev; do
    docs+=("/usr/share/doc/$package/changelog.gz" "/usr/share/doc/$package/copyright")
done
man_pages=()
for page in "$build"/man/*.1; do
    [ -e "$page" ] && man_pages+=("/usr/share/man/man1/$(basename "$page").gz")
done
[ ${#man_pages[@]} -gt 0 ] || fail "the build made no man pages"
# What the man pages' examples name, and each tool's bash completion.
runtime_data=(/usr/share/doc/libbscommonlibrary/examples/mdvr_parameters.json)
for tool in "${runtime_expected[@]}"; do
    case $tool in /usr/bin/*) runtime_data+=("/usr/share/bash-completion/completions/$(basename "$tool")") ;; esac
done
if [ -x "$build/mdvr-bus" ]; then runtime_data+=(/usr/share/bscommonlibrary/mdvr-bus.lua); fi
runtime_files=$(expect_files "$runtime" "${runtime_expected[@]}" "${runtime_data[@]}" "${man_pages[@]}" \
    "${docs[@]:0:2}")
dev_files=$(expect_files "$dev" \
    /usr/include/BSCommonLibrary/CommonParaAdapter.h /usr/include/BSCommonLibrary/MsgClientManage.h \
    /usr/include/BSCommonLibrary/CommonUtils.h /usr/include/BSCommonLibrary/CommonToolkit.h \
    /usr/lib/cmake/BSCommonLibrary/BSCommonLibraryConfig.cmake \
    /usr/lib/cmake/BSCommonLibrary/BSCommonLibraryConfigVersion.cmake \
    /usr/lib/cmake/BSCommonLibrary/BSCommonLibraryTargets.cmake \
    /usr/lib/pkgconfig/BSCommonLibrary.pc /usr/share/doc/libbscommonlibrary-dev/html/index.html \
    "${docs[@]:2:2}")
# Every exported header of the source tree is in the development package,
# and no header or build file slipped into the runtime package.
for header in "$(dirname "$0")"/../../basicservice/basebusiness/BSCommonLibrary/include/*.h; do
    grep -qx "/usr/include/BSCommonLibrary/$(basename "$header")" <<<"$dev_files" ||
        fail "development package lacks $(basename "$header")"
done
grep -E '\.(h|cmake|pc|html)$' <<<"$runtime_files" && fail "runtime package holds development files"
grep -E '\.so' <<<"$dev_files" && fail "development package holds libraries"

# The ELF machine of what the runtime package holds.
case $arch in amd64) machine='X86-64' ;; armhf) machine='ARM' ;; *) machine='?' ;; esac
unpacked=$out/unpacked
dpkg-deb -x "$runtime" "$unpacked"
for file in "${runtime_expected[@]}"; do
    readelf -h "$unpacked$file" | grep -q "Machine:.*$machine" || fail "$file is not built for $machine"
done

[ "$failures" -eq 0 ] || exit 1
echo "packages of $arch as expected: $(basename "$runtime") $(basename "$dev")"
