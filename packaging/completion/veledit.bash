# Completion of veledit for bash.
complete -f -W '-safe --help --version' veledit
