# Completion of the quillo command for bash. Commands and options are asked of the command itself.
_quillo()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} program=${COMP_WORDS[0]} command="" k
    for ((k = 1; k < COMP_CWORD; ++k)); do
        [[ ${COMP_WORDS[k]} == -* ]] || { command=${COMP_WORDS[k]}; break; }
    done
    COMPREPLY=()
    if [[ -z $command ]]; then
        if [[ $word == -* ]]; then
            COMPREPLY=($(compgen -W "--help --version" -- "$word"))
        else
            COMPREPLY=($(compgen -W "$("$program" --help 2>/dev/null | sed -nE '/^Subcommands:/,/^$/s/^  ([a-z]+) .*/\1/p')" -- "$word"))
        fi
        return
    fi
    case $before in
    --log-level | --log) COMPREPLY=($(compgen -W "error warning notice info debug" -- "$word")); return ;;
    --pattern) COMPREPLY=($(compgen -W "bars alpha flash" -- "$word")); return ;;
    --audio) COMPREPLY=($(compgen -W "on off" -- "$word")); return ;;
    --fields) COMPREPLY=($(compgen -W "progressive upper lower" -- "$word")); return ;;
    --format) COMPREPLY=($(compgen -W "vuya bgra" -- "$word")); return ;;
    esac
    if [[ $word == -* ]]; then
        COMPREPLY=($(compgen -W "$("$program" "$command" --help 2>/dev/null | grep -oE -- '--[a-z][a-z-]*' | sort -u)" -- "$word"))
    else
        compopt -o filenames 2>/dev/null
        COMPREPLY=($(compgen -f -- "$word"))
    fi
}
complete -F _quillo quillo
