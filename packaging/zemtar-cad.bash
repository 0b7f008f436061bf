# Completion of zemtar-cad for bash: commands and options come from the program's own help.
_zemtar_cad() {
    local word=${COMP_WORDS[COMP_CWORD]} path=() each help
    for each in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $each in
            import | convert | formats) ((${#path[@]} == 0)) && path=("$each") ;;
            image) ((${#path[@]} == 0)) && path=(image) ;;
            [a-z]*) [[ ${path[*]} == image ]] && path=(image "$each") ;;
        esac
    done
    help=$("${COMP_WORDS[0]}" "${path[@]}" --help 2>/dev/null) || help=
    COMPREPLY=()
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(grep -oE -- '--[a-z][a-z-]*' <<<"$help" | sort -u)" -- "$word")
    elif ((${#path[@]} == 0)) || [[ ${path[*]} == image ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$(sed -n '/^Subcommands:/,$s/^  \([a-z-]*\) .*/\1/p' <<<"$help")" -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    fi
}
complete -o filenames -F _zemtar_cad zemtar-cad
