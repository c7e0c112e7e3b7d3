#!/usr/bin/env bash
# The built API reference: the guide is a page the main page links, the
# search runs in the browser, every parameter type that `mdvr-param types`
# lists has its layout page holding what `mdvr-param layout` prints, the
# message header and the watchdog record have pages, and the main page warns
# of the two success values.
#   check-docs.sh HTML_DIR MDVR_PARAM
set -uo pipefail
html=$1 tool=$2 failed=0
fail() { echo "FAIL: $*" >&2; failed=$((failed + 1)); }
[ -f "$html/index.html" ] || { echo "FAIL: no $html/index.html" >&2; exit 1; }
grep -q 'href="md_docs_guide.html"' "$html/index.html" || fail "the main page does not link the guide"
grep -q 'Using BSCommonLibrary from your own process' "$html/md_docs_guide.html" || fail "no guide page"
[ -f "$html/search/search.js" ] || fail "no client-side search (search/search.js)"
grep -q 'returns <b>1</b>' "$html/index.html" && grep -q 'return <b>0</b>' "$html/index.html" ||
    fail "the main page does not warn of ParseJsonMessage's 1 and AdaptParaJson's 0"
for page in structCommon_1_1SMessageHead.html structWatchDogInfo.html; do
    [ -f "$html/$page" ] || fail "no page $page"
done
types=0
while read -r number key _; do
    [[ $number =~ ^[0-9]+$ ]] || continue
    types=$((types + 1))
    page=$html/layout_$key.html
    [ -f "$page" ] || { fail "no layout page for $key"; continue; }
    # The layout's last line ("/* size: N */") is on the page as the tool prints it.
    size_line=$("$tool" layout "$key" | grep -o 'size: [0-9]*')
    grep -q "$size_line" "$page" || fail "layout_$key.html lacks \"$size_line\""
done < <("$tool" types)
[ "$types" -gt 0 ] || fail "mdvr-param types listed no type"
[ "$failed" -eq 0 ] || exit 1
echo "API reference: guide, search, message header and watchdog pages, $types layout pages"
