#compdef veledit
_arguments '-safe[only what may be changed while the solver runs]' '*:command file:_files'
