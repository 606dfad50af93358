#compdef veltool
# Completion of veltool for zsh: commands, options, files, and the paths in a
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

# The paths in the file $1 that begin with $2, each up to its next slash, into
# reply. Large files are not read, because the user would have to wait.
_veltool_paths() {
    reply=()
    [[ -f $1 && $(wc -c <$1) -lt 20000000 ]] || return 0
    local line rest
    typeset -A seen
    for line in ${(f)"$(veltool diff -- /dev/null $1 2>/dev/null)"}; do
        line=${${line#+ }%% = *}
        [[ $line == ${(b)2}* ]] || continue
        rest=${line#${(b)2}}
        [[ $rest == */* ]] && line=$2${rest%%/*}/
        (( ${+seen[$line]} )) || reply+=($line)
        seen[$line]=1
    done
}

_veltool() {
    local command='' follow flags valued place word i
    local -a plain reply
    _veltool_describe ''
    for ((i = 2; i < CURRENT; i++)); do
        word=${words[i]}
        if [[ -n $follow && $word != -* ]]; then
            command=${command:+$command }$word
            _veltool_describe $command
        elif [[ $word == -* && " $valued " == *" $word "* ]]; then
            i=$((i + 1))
        elif [[ $word != -* || $word == - ]]; then
            plain+=(${(Q)word})
        fi
    done
    if [[ ${words[CURRENT]} == -* ]]; then
        compadd -- ${=flags}
    elif [[ " $valued " == *" ${words[CURRENT - 1]} "* ]]; then
        _files
    elif [[ -n $follow ]]; then
        local -a lines=(${(f)follow})
        _describe command lines
    else
        if [[ $place == $((${#plain} + 1)) || $place == *+ && ${#plain} -gt 0 ]]; then
            _veltool_paths ${plain[1]} ${(Q)words[CURRENT]}
        fi
        if (( ${#reply} )); then
            compadd -S '' -- $reply
        else
            _files
        fi
    fi
}

_veltool "$@"
