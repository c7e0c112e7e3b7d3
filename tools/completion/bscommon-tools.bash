# bash completion of the BSCommonLibrary tools: mdvr-param, mdvr-bus, mdvr-busd
# and mdvr-recorder. Installed once per tool as
# share/bash-completion/completions/<tool>; source it to use it without the
# bash-completion package.
#
# Nothing here is a list of its own: every TAB asks the tool being completed.
#   commands and options   from `TOOL --help` and `TOOL COMMAND --help`
#   option values          a default the help states ("=all", "(default 0x101)"),
#                          a choice it lists ("text, json or hex"), file names
#                          where it reads or writes a file
#   section keys           from `mdvr-param types`, where the help says "section
#                          key"; type numbers when the word starts with a digit
#   event ids              where a message id is asked for: the events that the
#                          clients of the running bus subscribed (`mdvr-bus list
#                          --json`, when a bus answers within a second) and the
#                          default the help states

# What a --help says, into _bscommon_options (every option name),
# _bscommon_valued (" NAME " of each option that takes a value),
# _bscommon_commands, _bscommon_positionals (names, in order; a last one
# ending in "..." repeats) and _bscommon_text[NAME] (its head, a tab and its
# description).
_bscommon_read_help()
{
    _bscommon_options=() _bscommon_commands=() _bscommon_positionals=() _bscommon_valued=" "
    declare -gA _bscommon_text=()
    local line section="" last="" head text name
    while IFS= read -r line; do
        if [[ $line =~ ^[[:space:]]*([A-Z][A-Za-z\ ]*):$ ]]; then
            section=${BASH_REMATCH[1]}
            continue
        fi
        if [[ $line =~ ^[[:space:]]*$ ]]; then
            last=""
            continue
        fi
        # The head, then two or more spaces and the description; a long head
        # has its description on the next line.
        if [[ $line =~ ^[[:space:]]{2,}([^[:space:]].*[^[:space:]]|[^[:space:]])[[:space:]]{2,}([^[:space:]].*)$ ]]; then
            head=${BASH_REMATCH[1]} text=${BASH_REMATCH[2]}
        elif [[ $line =~ ^[[:space:]]{2,}([^[:space:]].*)$ ]]; then
            head=${BASH_REMATCH[1]} text=""
        else
            continue
        fi
        if [[ -n $last && $line =~ ^[[:space:]]{20,} ]]; then # the description of the entry above
            [[ ${_bscommon_text[$last]} == *$'\t' ]] || _bscommon_text[$last]+=" "
            _bscommon_text[$last]+=$head
            continue
        fi
        name=${head%% *}
        case $section in
        Options)
            [[ $name == -* ]] || continue
            local IFS=,
            local names=($name)
            unset IFS
            _bscommon_options+=("${names[@]}")
            local rest=${head#"$name"}
            rest=${rest# }
            if [[ -n $rest && $rest != Excludes:* && $rest != Needs:* && $rest != REQUIRED* ]]; then
                local n
                for n in "${names[@]}"; do _bscommon_valued+="$n "; done
            fi
            local n
            for n in "${names[@]}"; do _bscommon_text[$n]=$head$'\t'$text; done
            last=${names[-1]}
            ;;
        Positionals)
            _bscommon_text[$name]=$head$'\t'$text
            last=$name
            [[ $head == *...* ]] && name+="..."
            _bscommon_positionals+=("$name")
            ;;
        Subcommands)
            _bscommon_commands+=("$name")
            last=""
            ;;
        esac
    done
}

# The section keys (or type numbers, for a word that starts with a digit) that
# `TOOL types` lists.
_bscommon_types()
{
    local tool=$1 cur=$2 line
    while IFS= read -r line; do
        [[ $line =~ ^[[:space:]]*([0-9]+)[[:space:]]+([A-Za-z0-9_]+)[[:space:]] ]] || continue
        if [[ $cur == [0-9]* ]]; then echo "${BASH_REMATCH[1]}"; else echo "${BASH_REMATCH[2]}"; fi
    done < <("$tool" types 2>/dev/null)
}

# The events that the clients of the running bus subscribed, as 0x-hex; the
# bus is the one the line names with -p/--port, else the default one.
_bscommon_events()
{
    local tool=$1 port=$2 bus=mdvr-bus
    [[ $tool == */* ]] && bus=${tool%/*}/mdvr-bus
    [[ -x $bus ]] || bus=$(type -P mdvr-bus) || return 0
    if [[ -z $port && -z ${MDVR_BUS-} ]]; then
        # No daemon, no socket: do not wait for one.
        local socket=/tmp/mdvr-bus-$EUID/bus
        [[ -n ${XDG_RUNTIME_DIR-} ]] && socket=$XDG_RUNTIME_DIR/mdvr-bus
        [[ -S $socket ]] || return 0
    fi
    local line id
    while IFS= read -r line; do
        [[ $line =~ \"events\":\[([0-9,]*)\] ]] || continue
        local IFS=,
        for id in ${BASH_REMATCH[1]}; do printf '0x%x\n' "$id"; done
        unset IFS
    done < <(timeout 1 "$bus" list --json ${port:+--port "$port"} 2>/dev/null)
}

# Candidates for the value of option or positional NAME of the help read last.
_bscommon_values()
{
    local tool=$1 name=$2 cur=$3 port=$4
    local text=${_bscommon_text[$name]-}
    local head=${text%%$'\t'*}
    # A default that the help states.
    [[ $head =~ =([^[:space:]]+) ]] && echo "${BASH_REMATCH[1]}"
    [[ $text =~ \(default\ ([^[:space:]:\)]+) ]] && echo "${BASH_REMATCH[1]}"
    local description=${text#*$'\t'}
    if [[ $description =~ ^[a-z0-9]+(,\ [a-z0-9]+)*\ or\ [a-z0-9]+$ ]]; then # "text, json or hex"
        description=${description//,/}
        description=${description// or / }
        printf '%s\n' $description
    fi
    if [[ $text == *"section key"* ]]; then
        _bscommon_types "$tool" "$cur"
    fi
    if [[ $text == *"message id"* ]]; then
        _bscommon_events "$tool" "$port"
    fi
    if [[ ${text,,} =~ (file|path|document|record) && ${text,,} != *"record's"* ]]; then
        compgen -f -- "$cur"
    fi
}

_bscommon_complete()
{
    local tool=${COMP_WORDS[0]} cur=${COMP_WORDS[COMP_CWORD]} prev="" cword=$COMP_CWORD
    local words=("${COMP_WORDS[@]}")
    (( cword > 0 )) && prev=${words[cword - 1]}
    # --option=value, which bash splits at "=".
    if [[ $cur == = && $prev == -* ]]; then
        cur="" 
    elif [[ $prev == = ]] && (( cword > 1 )); then
        prev=${words[cword - 2]}
    else
        [[ $prev == -* ]] || prev=""
    fi
    COMPREPLY=()

    # The command, the positionals given and the bus named, read as the tool reads them.
    _bscommon_read_help < <("$tool" --help 2>/dev/null)
    local commands=("${_bscommon_commands[@]}") top_valued=$_bscommon_valued
    local command="" count=0 port="" i word valued=$top_valued skip=0
    for ((i = 1; i < cword; i++)); do
        word=${words[i]}
        if ((skip)); then
            skip=0
            [[ ${words[i - 1]} == -p || ${words[i - 1]} == --port ]] && port=$word
            continue
        fi
        if [[ $word == = ]]; then
            skip=1
            continue
        fi
        if [[ $word == -* ]]; then
            [[ $valued == *" $word "* ]] && skip=1
            continue
        fi
        if [[ -z $command && ${#commands[@]} -gt 0 ]]; then
            command=$word
            _bscommon_read_help < <("$tool" "$command" --help 2>/dev/null)
            valued=$_bscommon_valued
        else
            count=$((count + 1))
        fi
    done
    if [[ -n $command || ${#commands[@]} -eq 0 ]]; then
        : # _bscommon_* describe the command (or the tool without commands)
    fi
    local candidates=()
    if [[ -n $prev && $valued == *" $prev "* ]]; then
        mapfile -t candidates < <(_bscommon_values "$tool" "$prev" "$cur" "$port")
    elif [[ $cur == -* ]]; then
        candidates=("${_bscommon_options[@]}")
    elif [[ -z $command && ${#commands[@]} -gt 0 ]]; then
        candidates=("${commands[@]}")
    elif ((${#_bscommon_positionals[@]})); then
        local last=$((${#_bscommon_positionals[@]} - 1)) name
        if ((count <= last)); then
            name=${_bscommon_positionals[count]}
        elif [[ ${_bscommon_positionals[last]} == *... ]]; then
            name=${_bscommon_positionals[last]}
        fi
        [[ -n ${name-} ]] && mapfile -t candidates < <(_bscommon_values "$tool" "${name%...}" "$cur" "$port")
    fi
    local candidate
    for candidate in "${candidates[@]}"; do
        [[ $candidate == "$cur"* ]] && COMPREPLY+=("$candidate")
    done
    # One of each, in the order found.
    local -A seen=()
    local unique=()
    for candidate in "${COMPREPLY[@]}"; do
        [[ -n ${seen[$candidate]-} ]] || unique+=("$candidate")
        seen[$candidate]=1
    done
    COMPREPLY=("${unique[@]}")
    compopt -o filenames 2>/dev/null || true
    return 0
}

complete -F _bscommon_complete mdvr-param mdvr-bus mdvr-busd mdvr-recorder
