# Completion of veltool for bash: commands, options, files, and the paths in a
# file.

# What may follow the command $1; sets follow, flags, valued and place.
_veltool_describe() {
    case $1 in
@table@
    *)
        follow='' flags='' valued='' place=0
        ;;
    esac
}

# The words of the line up to the cursor. Bash splits them at colons and equals
# signs; this joins them again. Sets words.
_veltool_words() {
    local line=${COMP_LINE:0:COMP_POINT} piece before
    words=()
    for piece in "${COMP_WORDS[@]:0:COMP_CWORD+1}"; do
        before=${line%%[! $'\t']*}
        line=${line#"$before"}
        line=${line#"$piece"}
        if [[ -z $before && ${#words[@]} -gt 0 ]]; then
            words[${#words[@]} - 1]+=$piece
        else
            words+=("$piece")
        fi
    done
}

# The text of a typed word, without its quotes and backslashes.
_veltool_plain() {
    local word=$1
    case $word in
    [\"\']*) word=${word:1} word=${word%[\"\']} ;;
    *) word=${word//\\/} ;;
    esac
    printf '%s' "$word"
}

# The paths in the file $1 that begin with $2, each up to its next slash. Large files
# are not read, because the user would have to wait.
_veltool_paths() {
    [[ -f $1 && $(wc -c <"$1") -lt 20000000 ]] || return 0
    veltool diff -- /dev/null "$1" 2>/dev/null | begin=$2 awk '
        {
            sub(/^[+] /, "")
            sub(/ = .*/, "")
            if (index($0, ENVIRON["begin"]) != 1)
                next
            slash = index(substr($0, length(ENVIRON["begin"]) + 1), "/")
            if (slash)
                $0 = substr($0, 1, length(ENVIRON["begin"]) + slash)
            if (!seen[$0]++)
                print
        }'
}

# Offers each line of $1. (A process substitution would need /dev/fd, which a minimal
# system does not have.)
_veltool_propose() {
    COMPREPLY=()
    [[ -z $1 ]] || mapfile -t COMPREPLY <<<"$1"
}

_veltool_complete_path() {
    local typed=$1 file current found kept quote=''
    file=$(_veltool_plain "$2")
    current=$(_veltool_plain "$typed")
    [[ $typed == [\"\']* ]] && quote=${typed:0:1}
    # Bash replaces only the text after the last place where it splits.
    kept=${typed%"${COMP_WORDS[COMP_CWORD]}"}
    while IFS= read -r found; do
        [[ -n $found ]] || continue
        [[ $found == */ ]] && compopt -o nospace 2>/dev/null
        [[ -n $quote ]] || found=$(printf '%q' "$found")
        COMPREPLY+=("${found#"$kept"}")
    done <<<"$(_veltool_paths "$file" "$current")"
}

_veltool() {
    local words command='' follow flags valued place i plain=() word previous
    local IFS=$' \t\n'
    COMPREPLY=()
    _veltool_words
    local current=${words[${#words[@]} - 1]}
    _veltool_describe ''
    for ((i = 1; i < ${#words[@]} - 1; i++)); do
        word=${words[i]}
        if [[ -n $follow && $word != -* ]]; then
            command=${command:+$command }$word
            _veltool_describe "$command"
        elif [[ $word == -* && " $valued " == *" $word "* ]]; then
            i=$((i + 1))
        elif [[ $word != -* || $word == - ]]; then
            plain+=("$word")
        fi
    done
    previous=${words[${#words[@]} - 2]}
    if [[ $current == -* && $current != *=* ]]; then
        _veltool_propose "$(compgen -W "$flags" -- "$current")"
    elif [[ " $valued " == *" $previous "* ]]; then
        _veltool_propose "$(compgen -f -- "$current")"
    elif [[ -n $follow ]]; then
        _veltool_propose "$(compgen -W "$(cut -d : -f 1 <<<"$follow")" -- "$current")"
    else
        if [[ $place == $((${#plain[@]} + 1)) || $place == *+ && ${#plain[@]} -gt 0 ]]; then
            _veltool_complete_path "$current" "${plain[0]}"
            [[ ${#COMPREPLY[@]} -eq 0 ]] || return 0
        fi
        compopt -o filenames 2>/dev/null
        _veltool_propose "$(compgen -f -- "$(_veltool_plain "$current")")"
    fi
}

complete -F _veltool veltool
