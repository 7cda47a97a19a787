# Installs the packages that are missing: the ordinary way first, then from the main suites alone.

readonly kel_packages=(
    wine wine32:i386 fonts-wine fonts-liberation           # running Windows programs
    g++-mingw-w64-i686-posix mingw-w64-tools libwine-dev   # building them
    g++ cmake ninja-build googletest libgtest-dev          # building and testing natively
)

wanted_packages=("${kel_packages[@]}") # these, and what a verb needs besides

# Prints the wanted packages that are not installed.
missing_packages() {
    local installed package
    installed=$(dpkg-query -W -f '=${db:Status-Status} ${Package}=\n=${db:Status-Status} ${Package}:${Architecture}=\n' \
        "${wanted_packages[@]}" 2>/dev/null) || true
    for package in "${wanted_packages[@]}"; do
        [[ $installed == *"=installed $package="* ]] || printf '%s\n' "$package"
    done
}

# Runs a command as root; only the package tools need it.
as_root() {
    if ((EUID == 0)); then
        "$@"
    else
        sudo "$@"
    fi
}

# One call of apt-get that asks nothing. What failed last is kept for the final report.
apt_get() {
    last_apt_command=$(printf '%q ' apt-get "$@")
    as_root env DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8 apt-get -y -q \
        -o APT::Update::Error-Mode=any -o DPkg::Lock::Timeout=300 \
        -o Dpkg::Options::=--force-confdef -o Dpkg::Options::=--force-confold "$@"
}

# Updates the package index: update_index LABEL LOG [APT OPTIONS...]
update_index() {
    local label=$1 log=$2
    shift 2
    logged "setup: updating the package index$label" "$log-update.log" apt_get "$@" update ||
        say "setup: apt-get update reports errors (see $log-update.log), trying to install all the same"
}

# Installs what is missing: install_missing LABEL LOG [APT OPTIONS...]
install_missing() {
    local label=$1 log=$2 missing
    shift 2
    mapfile -t missing < <(missing_packages)
    logged "setup: installing$label: ${missing[*]}" "$log-install.log" \
        apt_get "$@" install --no-install-recommends "${missing[@]}"
}

# Names the packages that could not be had, the command that failed, its words, and what to do.
report_missing() {
    local log=$1 missing
    missing=$(missing_packages | tr '\n' ' ')
    say "setup: cannot install: $missing"
    say "setup: this failed: $last_apt_command"
    {
        grep -hE '^(E:|W: Failed)' -- "$log"*-update.log | sort -u | head -n 4
        grep -hE '^(E:| +[a-z0-9.+:-]+ : )' -- "$log"*-install.log | sort -u | head -n 6
    } | sed 's/^/kel:     /' >&2 || true
    say "setup: what to do: see that this machine reaches the mirrors named in /etc/apt, run as root"
    say "    apt-get update && apt-get install --no-install-recommends $missing"
    fail "until it succeeds, then ./kel setup again"
}

# Makes the machine ready; does nothing, quickly, when everything is there. A verb that needs more
# packages than the others names them: set_up [PACKAGE...]
set_up() {
    install_packages "$@"
    runs_32_bit || emulate_32_bit
}

install_packages() {
    wanted_packages=("${kel_packages[@]}" "$@")
    command -v dpkg-query apt-get >/dev/null ||
        fail "setup: needs Debian 12 (apt-get is missing); elsewhere provide by hand: ${wanted_packages[*]}"
    [[ -n $(missing_packages) ]] || return 0
    ((EUID == 0)) || command -v sudo >/dev/null ||
        fail "setup: there is no sudo; run ./kel setup as root, to install: $(missing_packages | tr '\n' ' ')"

    local log=$kel_build/log/setup
    if ! dpkg --print-foreign-architectures | grep -qx i386; then
        say "setup: adding the i386 architecture (the 32-bit Wine needs it)"
        as_root dpkg --add-architecture i386
    fi
    update_index "" "$log"
    install_missing "" "$log" || install_from_main_suites "$log" || report_missing "$log"
    [[ -z $(missing_packages) ]] || report_missing "$log"
    say "setup: all packages are installed"
}

# Prepares a package index of our own, of the machine's mirrors but the main suites alone:
# own_index_options make apt-get use it.
use_own_index() {
    own_index=$kel_build/apt
    mkdir -p -- "$own_index/sources" "$own_index/lists/partial"
    at_exit as_root rm -rf -- "$own_index"
    write_main_sources >"$own_index/sources/main.sources"
    [[ -s $own_index/sources/main.sources ]] || fail "setup: no Debian main suite among the sources in /etc/apt"
    own_index_options=(-o Dir::Etc::sourcelist=/dev/null -o "Dir::Etc::sourceparts=$own_index/sources"
        -o "Dir::State::lists=$own_index/lists" -o Dir::Cache::pkgcache= -o Dir::Cache::srcpkgcache=)
}

# The security suite's i386 index may lag behind its amd64 index; then the 32-bit Wine has no
# matching libraries there, while the main suites are consistent in themselves.
install_from_main_suites() {
    local log=$1
    say "setup: the ordinary way failed (see $log-install.log)"
    say "setup: trying the main suites alone, without the security suite, with an index of their own"
    use_own_index
    update_index " (main suites)" "$log-main" "${own_index_options[@]}"
    install_missing " (main suites)" "$log-main" "${own_index_options[@]}" && return

    # A 64-bit library that is newer than its 32-bit twin: only the same version of both goes together.
    say "setup: that failed too; trying again and allowing 64-bit packages to go back to the main suites' versions"
    printf 'Package: *\nPin: release o=Debian\nPin-Priority: 1001\n' >"$own_index/preferences"
    install_missing " (main suites, downgrades allowed)" "$log-downgrade" "${own_index_options[@]}" \
        -o "Dir::Etc::preferences=$own_index/preferences" --allow-downgrades || return
    report_downgrades "$log-downgrade-install.log"
}

# Tells which packages went back.
report_downgrades() {
    local packages
    packages=$(sed -n '/^The following packages will be DOWNGRADED:/,/^[^ ]/{/^ /p}' -- "$1" | tr -s ' \n' ' ')
    [[ -z $packages ]] || say "setup: went back to the main suites' versions:$packages"
}
