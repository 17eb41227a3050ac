# Packages and builds, for ./harbor, ./check and tools/. To be sourced, with `root` set to the tree's folder.

say() { printf 'harbor: %s\n' "$*" >&2; }
fail() {
    say "$@"
    exit 1
}

# quietly LOG COMMAND...: the output goes to LOG and is shown only when the command fails.
quietly() {
    local log=$1
    shift
    if ! "$@" </dev/null >"$log" 2>&1; then
        cat "$log" >&2
        fail "failed: $*"
    fi
}

# need SECTION...: installs the missing packages of these sections of packages.txt, or names them and stops.
need() {
    local section missing stamps=$root/build/setup
    for section; do
        [[ $stamps/$section -nt $root/cmake/packages.txt ]] && continue
        mkdir -p "$stamps"
        missing=$(missing_of "$section")
        # shellcheck disable=SC2086 # package names hold no blanks
        [[ -z $missing ]] || install_packages $missing
        touch "$stamps/$section"
    done
}

packages_of() { sed -n "/^\[$1]/,/^\[/s/^\([a-z0-9][^ ]*\).*/\1/p" "$root/cmake/packages.txt"; }

missing_of() {
    if command -v dpkg-query >/dev/null; then
        comm -23 <(packages_of "$1" | sort) \
            <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' | sed -n 's/^installed //p' | sort)
    elif [[ $1 == program ]] && ! { command -v c++ && command -v cmake && command -v ninja; } >/dev/null; then
        packages_of "$1" # elsewhere CMake reports missing libraries
    fi
}

install_packages() {
    local as_root=(env DEBIAN_FRONTEND=noninteractive)
    command -v apt-get >/dev/null || fail "please install (names as in Debian): $*"
    if ((EUID != 0)); then
        sudo -n true 2>/dev/null || fail "please run: sudo apt-get install $*"
        as_root=(sudo -n "${as_root[@]}")
    fi
    say "installing $* ..."
    # The package lists may be recent enough, so a failing update alone is no reason to stop.
    "${as_root[@]}" apt-get -q update </dev/null >"$root/build/setup/update.log" 2>&1 || true
    quietly "$root/build/setup/install.log" "${as_root[@]}" apt-get -q -y -o DPkg::Lock::Timeout=600 \
        install --no-install-recommends "$@"
}

# configured PRESET [-DOPTION=VALUE...]: whether build/PRESET is a build tree of this source tree with these options.
configured() {
    local tree=$root/build/$1 option
    [[ -f $tree/build.ninja ]] && grep -sqxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$tree/CMakeCache.txt" || return 1
    for option in "${@:2}"; do
        grep -qxF -- "${option#-D}" <(sed 's/:[A-Z]*=/=/' "$tree/CMakeCache.txt") || return 1
    done
}

# build PRESET [-DOPTION=VALUE...] [TARGET...]: brings build/PRESET up to date, one caller at a time.
build() {
    local preset=$1 tree=$root/build/$1 options=() announced=
    shift
    while [[ ${1-} == -D* ]]; do
        options+=("$1")
        shift
    done
    [[ -d $tree ]] || mkdir -p "$tree"
    (
        ! command -v flock >/dev/null || flock 9
        if ! configured "$preset" "${options[@]}"; then
            say "building $preset ..."
            announced=1
            # Warnings of an untested compiler should not keep a newcomer from running the program.
            [[ $preset != release || -n ${CI-} ]] || options+=(-DHARBOR_WERROR=OFF)
            # A build tree that was moved or copied here is configured from scratch.
            grep -sqxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$tree/CMakeCache.txt" || options+=(--fresh)
            quietly "$tree/configure.log" cmake -S "$root" --preset "$preset" "${options[@]}"
        fi
        # Ninja explains before its first command, and only if it has one to run.
        if ! ninja -C "$tree" -d explain "$@" </dev/null 2>&1 | announce "$preset" >"$tree/build.log"; then
            grep -vE '^(\[[0-9]+/|ninja: Entering)' "$tree/build.log" >&2
            fail "failed to build"
        fi
    ) 9>"$tree.lock"
}

announce() {
    local line
    while IFS= read -r line; do
        if [[ -z $announced && $line == 'ninja explain: '* && $line != *[gG]lob* ]]; then
            say "building $1 ..."
            announced=1
        fi
        [[ $line == 'ninja explain: '* ]] || printf '%s\n' "$line"
    done
}
