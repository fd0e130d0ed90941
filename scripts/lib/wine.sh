# shellcheck shell=bash
# shellcheck disable=SC2154 # see the next lines
# Sourced by the scripts that run Windows programs. Needs `repository`, the root of the checkout.

# Chooses our own prefix and what Wine does without a screen.
wine_environment() {
    export WINEPREFIX=${WINEPREFIX:-$repository/build/wine-prefix}
    export WINEARCH=win64 WINEDEBUG=-all
    export WINEDLLOVERRIDES='mscoree,mshtml,winemenubuilder.exe,winedbg.exe='
    # Without a locale Wine can't name files with letters beyond ASCII.
    export LC_ALL=C.UTF-8
    unset DISPLAY WAYLAND_DISPLAY
}

# Every program of Wine runs away from our streams here: its services inherit those of the first program and keep them
# open, and whoever reads the other end would wait for ever.
wine_quietly() {
    timeout --kill-after=10 300 "$@" </dev/null >/dev/null 2>&1
}

wine_make_prefix() {
    echo "wine: making $WINEPREFIX, once" >&2
    mkdir -p "$WINEPREFIX"
    wine_quietly wineboot -i || { echo "wine: wineboot failed" >&2; return 1; }
    # Right after its making a prefix is slow; a new server is not.
    wine_quietly wineserver -k || true
    wine_quietly wineserver -w
    touch "$WINEPREFIX/.ready"
}

# Signal 0 only asks whether there is a server.
wine_is_running() { wine_quietly wineserver -k0; }

# The first window in a while starts a process for the desktop, which inherits streams as well and ends a second after
# the last program. Here it starts quietly, and for so many seconds a program keeps it.
wine_keep_desktop() {
    local system='C:\windows\system32'
    wine "$system\ping.exe" -n "$1" 127.0.0.1 </dev/null >/dev/null 2>&1 &
    wine_quietly wine "$system\rundll32.exe" shell32.dll,Control_RunDLL none.cpl || true
}

# Sees to it that the prefix exists and its server runs. The argument is how long the server
# stays without programs, in seconds; empty: until wine_stop. Two that come here at once wait for each other.
wine_start() {
    local stay=$1
    mkdir -p "$(dirname "$WINEPREFIX")"
    (
        flock 9
        [[ -e $WINEPREFIX/.ready ]] || wine_make_prefix 9>&- || exit 1
        if ! wine_is_running 9>&-; then
            # It refuses if one runs after all: the question isn't always answered.
            wine_quietly wineserver "-p$stay" 9>&- || wine_is_running 9>&- ||
                { echo "wine: no server starts" >&2; exit 1; }
            wine_quietly wine cmd /c exit 0 9>&-
            wine_keep_desktop "${stay:-1000000}" 9>&-
        fi
    ) 9>"$WINEPREFIX.lock"
}

# Ends all programs of our prefix, the server included.
wine_stop() {
    wine_quietly wineserver -k || true
}
