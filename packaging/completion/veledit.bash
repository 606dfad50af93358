# Completes veledit in bash.
complete -f -W '-safe --help --version' veledit
