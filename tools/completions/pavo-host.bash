_pavo_host() {
    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} offered='' before='' i
    # Behind "--" stands the workbench's command.
    for ((i = 1; i < COMP_CWORD; i++)); do
        [ "${COMP_WORDS[i]}" = -- ] || continue
        ! declare -F _command_offset > /dev/null || _command_offset $((i + 1))
        return
    done
    # The shell takes "--color=al" for three words.
    [ "$word" != = ] || word=''
    [ "$option" != = ] || option=${COMP_WORDS[COMP_CWORD - 2]}
    case $option in
        --color) offered='auto always never' ;;
        --show)
            offered='host sent received output log accounts heading'
            before=${word%"${word##*,}"}
            ;;
        --script | --record | --replay | --messages | --name | --timeout | --application) ;;
        *)
            offered='--help --version --script --record --replay --raw --show --messages --json
                     --color --name --timeout --application'
            ;;
    esac
    mapfile -t COMPREPLY < <(compgen -P "$before" -W "$offered" -- "${word#"$before"}")
}
complete -o default -F _pavo_host pavo-host
