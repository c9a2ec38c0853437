_pavo_host() {
    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} offered=''
    # The shell takes "--color=al" for three words.
    [ "$word" != = ] || word=''
    [ "$option" != = ] || option=${COMP_WORDS[COMP_CWORD - 2]}
    case $option in
        --color) offered='auto always never' ;;
        --show) offered='host sent received output log accounts heading' ;;
        --script | --record | --replay | --messages | --name | --timeout | --application) ;;
        *)
            # Behind "--" stands the workbench's command.
            [[ " ${COMP_WORDS[*]:1:COMP_CWORD-1} " = *' -- '* ]] \
                || offered='--help --version --script --record --replay --raw --show --messages
                            --json --color --name --timeout --application'
            ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$offered" -- "$word")
}
complete -o default -F _pavo_host pavo-host
