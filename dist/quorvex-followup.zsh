#compdef quorvex-followup
# zsh completion of quorvex-followup: its options, read from its own --help.
_arguments -- '*:argument:(auto)'
