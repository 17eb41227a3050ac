#compdef harbor
# Completion of harbor's command line for zsh.

_harbor() {
    local -a every common verbose work commands
    commands=(
        'expand:write the files of archives to disk'
        'list:show what archives contain'
        'test:read archives completely, test checksums and names'
        'find:find archives anywhere inside files'
        'formats:show the formats that the plug-ins provide'
    )
    every=(
        '--help[print the help]'
        '--json[print one JSON object a line]'
        '--formats[folder of further format plug-ins]:folder:_files -/'
        '--no-sandbox[keep rights that reading archives does not need]'
        '(-q --quiet)'{-q,--quiet}'[print less]'
        '--color[when to use colors]:when:(auto never always)'
    )
    verbose=('(-v --verbose)'{-v,--verbose}'[print more]')
    common=(
        $every
        '*--only[take only files that match]:pattern:'
        '*--exclude[leave out files that match]:pattern:'
        '--ignore-case[patterns match capital and small letters alike]'
        '--encoding[code page of names]:code page:(CP437 CP850 CP932 CP936 CP949 CP950 CP1250 CP1251 CP1252 UTF-8)'
        '*:cabinet:_files'
    )
    work=(
        $verbose
        '(-j --jobs)'{-j,--jobs}'[archives at a time]:number:'
    )
    if ((CURRENT == 2)); then
        _describe command commands
        compadd -- --help --version
        _files
        return
    fi
    case $words[2] in
        expand | x)
            _arguments $common $work \
                '(-C --directory)'{-C,--directory}'[write into a folder]:folder:_files -/' \
                '--overwrite[what happens to existing files]:when:(ask never always rename newer)' \
                '--lower[write all names in lower case]' \
                '--flat[write all files into one folder]' \
                '--strip[leave out folders of each path]:number:' \
                '--ignore-checksums[keep data whose checksum is wrong]' \
                '--keep-broken[keep what came of an incomplete file]' \
                '--no-mtime[do not set times]' \
                '--no-attributes[do not make files read-only or executable]' \
                '(-n --dry-run)'{-n,--dry-run}'[only show what would be written]' \
                '--stdout[write the files to the standard output]' \
                '--sync[end only when all files are on the disk]' \
                '--nested[expand archives inside archives too]' \
                '--depth[how many levels of them]:number:' \
                '--no-limits[let them expand to any size]'
            ;;
        list | l)
            _arguments $common \
                '(-v --long --verbose)'{-v,--long,--verbose}'[add method, folder and place]' \
                '(-h --human)'{-h,--human}'[sizes such as 3.4 MB]' \
                '--tree[show the folders as a tree]' \
                '--check[read and test the data too]'
            ;;
        test | t) _arguments $common $work '--sha256[print the digest of each file]' ;;
        find) _arguments $every $verbose '*:file:_files' ;;
        formats) _arguments $every $verbose ':command:' ;;
    esac
}

_harbor "$@"
