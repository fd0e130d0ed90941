# shellcheck shell=bash
# shellcheck disable=SC2034 # the lists are for those who source this
# Sourced by the scripts: the packages of Debian 12 that the project needs. Needs lib/common.sh.

native_packages=(
    cmake g++ ninja-build
    googletest libgtest-dev         # built from its sources, for each target
    libcli11-dev nlohmann-json3-dev # headers for the tools
    nodejs                          # runs the client for launchers in Node.js
)
windows_packages=(
    clang-14 lld-14 llvm-14         # compiler and linker; reads the symbols
    binutils-mingw-w64-x86-64       # resources
    g++-mingw-w64-x86-64-posix mingw-w64-x86-64-dev # libraries and headers alone
    wine wine64
    zip                             # the package
)
asan_packages=(clang-14 libclang-rt-14-dev)
release_packages=(
    dpkg python3                # versions of what is linked in; the SBOM
    python3-jsonschema python3-license-expression # check it
)
bench_packages=(
    dpkg-dev                # unpacks the sources of libuv, for Windows
    libboost-dev libuv1-dev # other servers
    python3
)
format_packages=(clang-format-14)
lint_packages=(clang-tidy-14)

is_installed() {
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null) == installed ]]
}

apt_install() {
    apt-get update && apt-get install -y --no-install-recommends "$@"
}

# need_packages PACKAGE...: installs those that are missing.
need_packages() {
    local missing=() package
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    ((${#missing[@]} > 0)) || return 0
    if ((EUID != 0)); then
        fail "these packages are missing and only root can install them: apt-get install ${missing[*]}"
    fi
    say "installing ${missing[*]}"
    export DEBIAN_FRONTEND=noninteractive
    # Mirrors hiccup: once more, then give up.
    quietly apt_install "${missing[@]}" || quietly apt_install "${missing[@]}" || fail "the packages can't be installed"
}
