# Completion of veledit for bash.
complete -f -W -safe veledit
