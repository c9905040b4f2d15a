# bash completion for teskcolor: the command first, then that command's
# options (read from its own --help, so they are always the program's) and
# file names.
_teskcolor() {
    local cur=${COMP_WORDS[COMP_CWORD]}
    local commands="info convert separate combine proof profiles settings make-profile chart demo gamma view print setup"
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "$commands --help" -- "$cur")
        return
    fi
    if [[ $cur == -* ]]; then
        local options
        options=$("${COMP_WORDS[0]}" "${COMP_WORDS[1]}" --help 2>/dev/null | grep -o -- '--[a-z][a-z0-9-]*' | sort -u)
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
        return
    fi
    mapfile -t COMPREPLY < <(compgen -f -- "$cur")
    compopt -o filenames 2>/dev/null
}
complete -F _teskcolor teskcolor
