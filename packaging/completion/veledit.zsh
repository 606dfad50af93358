#compdef veledit
_arguments '-safe[only what may be changed while the solver runs]' '(- *)--help[print a summary]' '(- *)--version[print the version]' '*:command file:_files'
