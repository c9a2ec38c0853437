_pavo_accounts() {
    local word=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} offered=''
    # The shell takes "--application=n" for three words.
    [ "$option" != = ] || option=${COMP_WORDS[COMP_CWORD - 2]}
    [ "$option" = --application ] \
        || offered='--help --version --application --json --watch --yes remove unlock'
    mapfile -t COMPREPLY < <(compgen -W "$offered" -- "$word")
}
complete -F _pavo_accounts pavo-accounts
