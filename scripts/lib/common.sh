# shellcheck shell=bash
# shellcheck disable=SC2154 # see the next line
# Sourced by the scripts. Needs `repository`, the root of the checkout.

processors=$(nproc)

say() { printf '%s\n' "$*"; }
fail() { printf '%s: %s\n' "${0##*/}" "$*" >&2; exit 1; }

# Runs a command silently; if it fails, shows the end of what it said.
quietly() {
    local log status=0
    log=$(mktemp)
    "$@" </dev/null >"$log" 2>&1 || status=$?
    if ((status != 0)); then
        say "failed with status $status: $*" >&2
        tail -n 40 "$log" >&2
    fi
    rm -f "$log"
    return "$status"
}

# configure PRESET
configure() {
    # Where it is installed it saves time; nothing depends on it.
    if command -v ccache >/dev/null; then export CMAKE_CXX_COMPILER_LAUNCHER=ccache; fi
    (cd "$repository" && quietly cmake --preset "$1")
}

# build PRESET [TARGET...]: prints nothing but what compilers complain about.
build() {
    local preset=$1
    shift
    local targets=()
    if (($# > 0)); then targets=(--target "$@"); fi
    (cd "$repository" && cmake --build --preset "$preset" -j "$processors" "${targets[@]}" -- --quiet)
}

# pin_to_one_processor first|last: holds for the (sub)shell that calls it and all that it starts.
pin_to_one_processor() {
    local allowed
    allowed=$(taskset -cp "$BASHPID")
    allowed=${allowed##*: }
    if [[ $1 == first ]]; then allowed=${allowed%%[-,]*}; else allowed=${allowed##*[-,]}; fi
    taskset -cp "$allowed" "$BASHPID" >/dev/null
}
