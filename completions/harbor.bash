# Completion of harbor's command line for bash.

_harbor() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local command=${COMP_WORDS[1]} words i
    if ((COMP_CWORD == 1)); then
        mapfile -t COMPREPLY < <(
            compgen -W 'expand list test find formats --help --version' -- "$current"
            compgen -f -- "$current"
        )
        return
    fi
    # Behind -- are patterns.
    for ((i = 2; i < COMP_CWORD; ++i)); do
        [[ ${COMP_WORDS[i]} == -- ]] && return
    done
    case $previous in
        -C | --directory | --formats) mapfile -t COMPREPLY < <(compgen -d -- "$current") && return ;;
        --overwrite) mapfile -t COMPREPLY < <(compgen -W 'ask never always rename newer' -- "$current") && return ;;
        --color) mapfile -t COMPREPLY < <(compgen -W 'auto never always' -- "$current") && return ;;
        --encoding) mapfile -t COMPREPLY < <(compgen -W 'CP437 CP850 CP932 CP936 CP949 CP950 CP1250 CP1251 CP1252 UTF-8' -- "$current") && return ;;
        --only | --exclude | --strip | --depth | -j | --jobs) return ;;
    esac
    local every='--help --json --formats --no-sandbox --quiet --verbose --color'
    local common="$every --only --exclude --ignore-case --encoding"
    case $command in
        expand | x)
            words="$common --directory --overwrite --lower --flat --strip --ignore-checksums --keep-broken --no-mtime --no-attributes
                --dry-run --stdout --sync --nested --depth --no-limits --jobs"
            ;;
        list | l) words="$common --long --human --tree --check" ;;
        test | t) words="$common --sha256 --jobs" ;;
        find | formats) words=$every ;;
    esac
    if [[ $current == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
    fi
}

complete -o filenames -F _harbor harbor
