complete -c pavo-workbench -f
complete -c pavo-workbench -s h -l help -d 'Show the options and the commands'
complete -c pavo-workbench -s v -l version -d 'Show the version'
complete -c pavo-workbench -l headless -d 'Run without a window'
complete -c pavo-workbench -l application -x -d 'The installation to take part in'
complete -c pavo-workbench -l account -x -d 'An account that can log in, as PIN:TOKEN'
complete -c pavo-workbench -l pin -x -d 'Log this account in'
complete -c pavo-workbench -l wait-enter -d 'Enter the main window when told'
complete -c pavo-workbench -l log -x -a 'off error warn info debug' -d 'Log from this level on'
