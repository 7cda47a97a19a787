# Lets 32-bit programs run where the kernel does not run them: through an emulator of the processor,
# registered with the kernel until it starts again.

# The distribution's qemu, version 7.2, does not tell Wine why a program was interrupted; version 10,
# of the backports, does.
readonly emulator_package=qemu-user emulator_version=1:10
# Wine's server as a 64-bit program, which needs no emulator.
readonly emulator_companion=wine64
readonly foreign_programs=/proc/sys/fs/binfmt_misc
readonly emulator_entry=$foreign_programs/i386-on-x86_64

runs_32_bit() { /lib/ld-linux.so.2 --version >/dev/null 2>&1; }

# Whether the figures of 32-bit programs are those of an emulator.
is_emulated() { [[ -e $emulator_entry ]]; }

emulate_32_bit() {
    say "setup: this kernel runs no 32-bit programs; an emulator of the processor shall (everything"
    say "    takes three to four times as long; a kernel started with ia32_emulation=on needs none)"
    [[ $(uname -m) == x86_64 ]] || fail "setup: kel needs a processor of the family x86-64"
    has_emulator || install_emulator
    register_emulator
    runs_32_bit || fail "setup: 32-bit programs do not run with the emulator either"
}

has_emulator() {
    local version
    wanted_packages=("$emulator_package" "$emulator_companion")
    [[ -z $(missing_packages) ]] || return
    version=$(dpkg-query -W -f '${Version}' "$emulator_package")
    dpkg --compare-versions "$version" ge "$emulator_version"
}

# From the backports of the mirrors that serve the main suites, with an index of its own: the
# machine's own sources stay as they are.
install_emulator() {
    local log=$kel_build/log/setup-emulator release
    release=$(. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}")-backports
    use_own_index
    write_main_sources | sed "s/^Suites:.*/Suites: $release/" >"$own_index/sources/backports.sources"
    update_index " (with $release)" "$log" "${own_index_options[@]}"
    logged "setup: installing $emulator_package of $release, $emulator_companion" "$log-install.log" \
        apt_get "${own_index_options[@]}" install --no-install-recommends \
        "$emulator_package/$release" "$emulator_companion" && has_emulator ||
        show_failure "$log-install.log" "setup: cannot install $emulator_package of $release"
}

# The kernel knows the programs by the begin of their files: 32 bits, little-endian, and the
# processor.
register_emulator() {
    local zeros='\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00\x00'
    local begin='\x7fELF\x01\x01'$zeros'\x03\x00' mask='\xff\xff\xff\xff\xff\xff'$zeros'\xff\xff'
    if [[ ! -e $foreign_programs/register ]]; then
        as_root mount -t binfmt_misc binfmt_misc "$foreign_programs" ||
            fail "setup: the kernel lets no emulator be registered; start it with ia32_emulation=on"
    fi
    ! is_emulated || return 0
    say "setup: registering the emulator with the kernel, until it starts again"
    printf '%s' ":${emulator_entry##*/}:M::$begin:$mask:$(command -v qemu-i386):F" |
        as_root tee "$foreign_programs/register" >/dev/null ||
        fail "setup: the kernel does not take the emulator; start it with ia32_emulation=on"
}
