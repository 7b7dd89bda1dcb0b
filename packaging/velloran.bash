# bash completion for velloran

_velloran() {
    local current previous command word options
    COMPREPLY=()
    current=${COMP_WORDS[COMP_CWORD]}
    previous=${COMP_WORDS[COMP_CWORD - 1]}
    # "=" divides words here: the value of a parameter has no completion.
    [[ $current == "=" || $previous == "=" ]] && return

    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
            enhance | batch | describe | params | info | detect | measure | book | merge | compare | rename | stats | set-dpi | settings)
                command=$word
                break
                ;;
        esac
    done

    case $previous in
        --stop)
            COMPREPLY=($(compgen -W "0 14 20 74 77 91 97 134 135 136 137" -- "$current"))
            return
            ;;
        --page)
            return
            ;;
        --save-setting)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        -s | --set)
            COMPREPLY=($(compgen -S = \
                -W "$("${COMP_WORDS[0]}" params 2>/dev/null | cut -f2)" -- "$current"))
            compopt -o nospace
            return
            ;;
        --setting)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --settings-store)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        -n | --named)
            return
            ;;
        --lang)
            COMPREPLY=($(compgen -W "zh en" -- "$current"))
            return
            ;;
        --ext)
            COMPREPLY=($(compgen -W "auto jpg bmp png tif jp2 gif webp" -- "$current"))
            return
            ;;
        --files)
            COMPREPLY=($(compgen -W "0 1 2 3 4 5 6 7 8 9 10" -- "$current"))
            return
            ;;
        --list)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        -j | --jobs)
            return
            ;;
        --memory)
            return
            ;;
        --log)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --review)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --only)
            return
            ;;
        -p | --project)
            return
            ;;
        --rows)
            return
            ;;
        --from)
            return
            ;;
        --what)
            COMPREPLY=($(compgen -W "all tab before after" -- "$current"))
            return
            ;;
        --tab)
            return
            ;;
        --to)
            COMPREPLY=($(compgen -W "all rest every-second" -- "$current"))
            return
            ;;
        --geometry)
            COMPREPLY=($(compgen -W "auto copy keep" -- "$current"))
            return
            ;;
        --kind)
            return
            ;;
        --before)
            return
            ;;
        --target)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --side)
            COMPREPLY=($(compgen -W "left right" -- "$current"))
            return
            ;;
        --state)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --source1)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --source2)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        -m | --merge)
            return
            ;;
        --save-state)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --difference)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --all)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --nonzero)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --levels)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --frequency)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --export)
            compopt -o filenames
            COMPREPLY=($(compgen -f -- "$current"))
            return
            ;;
        --type)
            return
            ;;
        --sort)
            COMPREPLY=($(compgen -W "name created modified" -- "$current"))
            return
            ;;
        --select)
            return
            ;;
        --prefix)
            return
            ;;
        --suffix)
            return
            ;;
        --digits)
            return
            ;;
        --start)
            return
            ;;
        --step)
            return
            ;;
        --types)
            return
            ;;
    esac

    if [[ -z $command ]]; then
        COMPREPLY=($(compgen -W "enhance batch describe params info detect measure book merge compare rename stats set-dpi settings -h --help --lang -q --quiet -v --verbose --version" -- "$current"))
        return
    fi
    if [[ $current != -* ]]; then
        compopt -o filenames
        COMPREPLY=($(compgen -f -- "$current"))
        return
    fi

    case $command in
        enhance) options="--stop --preview --keep-dpi --strip --page --save-setting -s --set --setting --settings-store -n --named --without-page -h --help --lang -q --quiet -v --verbose" ;;
        batch) options="--ext --files --no-recurse --skip-colour --keep-time --keep-dpi --skip-existing --list -0 --null -j --jobs --memory --strict --log -y --yes --dry-run --json --progress --review --each-page --both-halves --strip --all-pages -s --set --setting --settings-store -n --named --without-page -h --help --lang -q --quiet -v --verbose" ;;
        describe) options="--crop-summary -s --set --setting --settings-store -n --named --without-page -h --help --lang -q --quiet -v --verbose" ;;
        params) options="--json -h --help --lang -q --quiet -v --verbose" ;;
        info) options="--json -h --help --lang -q --quiet -v --verbose" ;;
        detect) options="--by-name --page -h --help --lang -q --quiet -v --verbose" ;;
        measure) options="--only --json -s --set --setting --settings-store -n --named --without-page -h --help --lang -q --quiet -v --verbose" ;;
        book) options="-p --project --rows --reset --from --what --tab --to --geometry --kind --before --target --side -y --yes -j --jobs --log --json -s --set --setting --settings-store -n --named --without-page --review -h --help --lang -q --quiet -v --verbose" ;;
        merge) options="--state --source1 --source2 --target -m --merge --save-state --pair --log --json -h --help --lang -q --quiet -v --verbose" ;;
        compare) options="--difference --all --nonzero --levels --frequency --folders --export --exit-code -j --jobs --json -h --help --lang -q --quiet -v --verbose" ;;
        rename) options="--type --sort --descending --select --prefix --suffix --digits --start --step --no-number --no-extension --move --overwrite --undo -y --yes --dry-run --log -h --help --lang -q --quiet -v --verbose" ;;
        stats) options="--types --no-recurse --json -h --help --lang -q --quiet -v --verbose" ;;
        set-dpi) options="--types --no-recurse --log --json -h --help --lang -q --quiet -v --verbose" ;;
        settings) options="-y --yes -s --set --setting --settings-store -n --named --without-page -h --help --lang -q --quiet -v --verbose" ;;
    esac
    COMPREPLY=($(compgen -W "$options" -- "$current"))
}

complete -F _velloran velloran
