_pavo_workbench() {
    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} offered=''
    # The shell takes "--log=de" for three words.
    [ "$word" != = ] || word=''
    [ "$option" != = ] || option=${COMP_WORDS[COMP_CWORD - 2]}
    case $option in
        --log) offered='off error warn info debug' ;;
        --application | --account | --pin) ;;
        *)
            offered='--help --version --headless --application --account --pin --wait-enter --log'
            ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$offered" -- "$word")
}
complete -F _pavo_workbench pavo-workbench
