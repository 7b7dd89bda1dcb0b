# bash completion for velloran

_velloran() {
    local current previous command word
    COMPREPLY=()
    current=${COMP_WORDS[COMP_CWORD]}
    previous=${COMP_WORDS[COMP_CWORD - 1]}
    # "=" divides words here: the value of a parameter has no completion.
    [[ $current == "=" || $previous == "=" ]] && return

    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
            enhance | batch | describe | params | info | detect)
                command=$word
                break
                ;;
        esac
    done

    case $previous in
        -s | --set)
            COMPREPLY=($(compgen -S = -W "$("${COMP_WORDS[0]}" params 2>/dev/null | cut -f2)" \
                -- "$current"))
            compopt -o nospace
            return
            ;;
        --ext)
            COMPREPLY=($(compgen -W "auto jpg bmp png tif jp2 gif webp" -- "$current"))
            return
            ;;
        --stop)
            COMPREPLY=($(compgen -W "0 14 20 74 77 91 97 134 135 136 137" -- "$current"))
            return
            ;;
        --files)
            COMPREPLY=($(compgen -W "0 1 2 3 4 5 6 7 8 9 10" -- "$current"))
            return
            ;;
        -n | --named | -j | --jobs)
            return
            ;;
        --setting | --settings-store | --save-setting | --log | --list)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
    esac

    if [[ -z $command ]]; then
        COMPREPLY=($(compgen -W "enhance batch describe params info detect --help --version" \
            -- "$current"))
        return
    fi
    if [[ $current != -* ]]; then
        compopt -o filenames
        COMPREPLY=($(compgen -f -- "$current"))
        return
    fi

    local parameters="-s --set --setting --settings-store -n --named"
    local options="-h --help"
    case $command in
        enhance) options+=" $parameters --stop --preview --save-setting -v --verbose" ;;
        batch)
            options+=" $parameters --ext --files --no-recurse --skip-colour --keep-time -j --jobs"
            options+=" --log --memory --skip-existing --keep-dpi --strict -y --yes --list -0 --null --dry-run --json --progress -v --verbose"
            ;;
        describe) options+=" $parameters --crop-summary" ;;
        params | info) options+=" --json" ;;
        detect) options+=" --by-name" ;;
    esac
    COMPREPLY=($(compgen -W "$options" -- "$current"))
}

complete -F _velloran velloran
