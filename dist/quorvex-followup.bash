# bash completion of quorvex-followup: its options, read from its own --help.
_quorvex_followup()
{
    local cur prev words cword
    _init_completion || return
    case $prev in
        --deadline)
            return
            ;;
    esac
    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W '$(_parse_help "$1")' -- "$cur"))
    else
        COMPREPLY=($(compgen -W 'auto' -- "$cur"))
    fi
} &&
    complete -F _quorvex_followup quorvex-followup
