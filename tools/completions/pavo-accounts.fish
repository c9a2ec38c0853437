complete -c pavo-accounts -f
complete -c pavo-accounts -s h -l help -d 'Show the options'
complete -c pavo-accounts -s v -l version -d 'Show the version'
complete -c pavo-accounts -l application -x -d 'The installation to look into'
complete -c pavo-accounts -l json -d 'Print an object a line'
complete -c pavo-accounts -l watch -d 'Print again whenever something has changed'
complete -c pavo-accounts -l yes -d 'Free the lock without asking'
complete -c pavo-accounts -n __fish_use_subcommand -a remove -d 'Take an account out of the list'
complete -c pavo-accounts -n __fish_use_subcommand -a unlock -d 'Look at the lock, and free it'
