# bash completion for copperwick.
#
# Commands, their subcommands and options are read from the program's own
# --help as they are typed, so what is offered is always what the installed
# program takes.

_copperwick_help_section() {
    # The first words of the lines of one section ("Options:", "Subcommands:")
    # of a help text; option lines give each of their spellings.
    awk -v section="$1" '
        $0 == section { inside = 1; next }
        /^[A-Z][A-Za-z ]*:$/ { inside = 0 }
        inside && /^  [^ ]/ {
            n = split($1, names, ",")
            for (i = 1; i <= n; i++) print names[i]
        }'
}

_copperwick() {
    local cur prev words cword
    _init_completion || return

    # The command and subcommand typed so far, stepping over the global
    # options and the value of --data-dir.
    local i path=()
    for ((i = 1; i < cword; i++)); do
        case ${words[i]} in
            --data-dir) ((i++)) ;;
            -*) ;;
            *)
                [[ ${#path[@]} -lt 2 ]] && path+=("${words[i]}")
                ;;
        esac
    done

    case $prev in
        --data-dir | --archive)
            _filedir -d
            return
            ;;
        --help | --version)
            return
            ;;
    esac

    local help
    help=$("${words[0]}" "${path[@]}" --help 2>/dev/null) || help=$("${words[0]}" "${path[@]:0:1}" --help 2>/dev/null)

    if [[ $cur == -* ]]; then
        COMPREPLY=($(compgen -W "$(_copperwick_help_section Options: <<<"$help")" -- "$cur"))
        return
    fi

    local subcommands
    subcommands=$(_copperwick_help_section Subcommands: <<<"$help")
    if [[ -n $subcommands ]]; then
        COMPREPLY=($(compgen -W "$subcommands" -- "$cur"))
        return
    fi

    # Bank files, layout files, backups and exports are named by path.
    _filedir
}

complete -F _copperwick copperwick
