function __pavo_host_command -d 'Complete the workbench\'s command behind "--"'
    set -l words (commandline -opc) (commandline -ct)
    set -e words[1..(contains -i -- -- $words)]
    complete -C "$words"
end
complete -c pavo-host -n 'contains -- -- (commandline -opc)' -x -a '(__pavo_host_command)'
complete -c pavo-host -s h -l help -d 'Show the options and the lines of a script'
complete -c pavo-host -s v -l version -d 'Show the version'
complete -c pavo-host -l script -r -d 'Carry out the lines of a file'
complete -c pavo-host -l record -r -d 'Write the conversation to a file'
complete -c pavo-host -l replay -r -d 'Carry out a recording and compare'
complete -c pavo-host -l raw -d 'Send the bytes of standard input'
complete -c pavo-host -l show -x -d 'Show only these kinds of lines' \
    -a '(__fish_complete_list , "string split , host,sent,received,output,log,accounts,heading")'
complete -c pavo-host -l messages -x -d 'Show only messages with these names'
complete -c pavo-host -l json -d 'Show an object a line'
complete -c pavo-host -l color -x -a 'auto always never' -d 'Use colours'
complete -c pavo-host -l name -x -d "Start the pipes' names with this"
complete -c pavo-host -l timeout -x -d 'Wait for anything at most so many seconds'
complete -c pavo-host -l application -x -d 'The installation whose accounts are expected'
