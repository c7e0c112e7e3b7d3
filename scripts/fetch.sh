# Sourced by scripts/setup.sh and scripts/armhf-sysroot.sh: what they fetch
# from the distribution's mirror.
#
#   retry WHAT COMMAND...   runs COMMAND; when it fails (a mirror in the middle
#                           of a sync serves an index that does not match its
#                           packages for a few minutes), runs it again after
#                           5, 15 and 30 s. When the last attempt fails too it
#                           prints one line, "SCRIPT: cannot WHAT ...", with
#                           the command's first error, and returns 1.
#                           FETCH_RETRY_DELAYS="5 15 30" sets the pauses.
#   host_mirror SUITE       the URI that the host's apt takes SUITE from
#                           (/etc/apt/sources.list, sources.list.d/, either format)

retry() {
    local what=$1
    shift
    local delays pause attempt=1 log
    read -r -a delays <<<"${FETCH_RETRY_DELAYS-5 15 30}"
    log=$(mktemp)
    while :; do
        # The command's output goes to standard error as it comes, and is
        # kept for the error line.
        if (set -o pipefail; "$@" 2>&1 | tee "$log" >&2); then
            rm -f "$log"
            return 0
        fi
        if [ "$attempt" -gt "${#delays[@]}" ]; then
            local reason
            # apt's and mmdebstrap's first error names the file or package.
            reason=$(grep -m1 '^E: ' "$log" || grep -i -E 'error|fail' "$log" | tail -1 || true)
            rm -f "$log"
            echo "${0##*/}: cannot $what (gave up after $attempt attempts)${reason:+: $reason}" >&2
            return 1
        fi
        pause=${delays[attempt - 1]}
        echo "${0##*/}: could not $what (attempt $attempt of $((${#delays[@]} + 1))), again in ${pause} s" >&2
        sleep "$pause"
        attempt=$((attempt + 1))
    done
}

host_mirror() {
    apt-get indextargets --no-release-info --format '$(REPO_URI) $(RELEASE)' \
        'Identifier: Packages' 'Target-Of: deb' 2>/dev/null |
        awk -v suite="$1" '$2 == suite { print $1; exit }'
}
