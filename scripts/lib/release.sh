# shellcheck shell=bash
# shellcheck disable=SC2154 # see the next line
# Sourced by scripts/package. Needs lib/common.sh and `repository`.

# The date of the commit, or the first that an archive can hold.
set_release_date() {
    local date=
    if [[ -z ${SOURCE_DATE_EPOCH-} && -e $repository/.git ]]; then
        date=$(git -C "$repository" log -1 --format=%ct) || true
    fi
    export SOURCE_DATE_EPOCH=${SOURCE_DATE_EPOCH:-${date:-315532800}}
}

# The version, with the commit behind a plus if there is one. The first build tells it.
full_version() { sed -n 's/.*"\(.*\)"/\1/p' "$repository/build/windows/version/tollmere_version.h"; }

# sign_programs FOLDER
sign_programs() {
    local program
    [[ -n ${SIGN_COMMAND-} ]] || return 0
    for program in "$1"/build/windows/bin/{tollmere_steam_helper,probe}.exe; do
        bash -c "$SIGN_COMMAND \"\$1\"" sign "$program" || {
            say "SIGN_COMMAND has failed for ${program##*/}; nothing is packed" >&2
            return 1
        }
    done
}

# make_package FOLDER [TARGET...]: the archives of the sources there, and those that the targets make. Without targets the
# tests aren't built, and the commit is that of our own build. The programs are linked anew: a signed one must not be signed
# again, and none that was signed is packed without.
make_package() {
    local folder=$1 options=() target version
    shift
    if (($# == 0)); then
        version=$(full_version)
        options=(-DBUILD_TESTING=OFF)
        if [[ $version == *+* ]]; then options+=("-DTOLLMERE_COMMIT=${version#*+}"); fi
    fi
    rm -f "$folder"/build/windows/*.zip "$folder"/build/windows/bin/{tollmere_steam_helper,probe}.exe
    (
        cd "$folder" && quietly cmake --preset windows "${options[@]}" &&
            cmake --build --preset windows -j "$processors" -- --quiet && sign_programs "$folder" || exit
        for target in package "$@"; do
            quietly cmake --build --preset windows -t "$target" || exit
        done
    )
}

# write_sbom FOLDER: of the program's archive there, checked.
write_sbom() {
    local version name
    version=$(full_version)
    name=$1/tollmere-steam-helper-${version%%+*}
    # Not another Python, which lacks what the packages bring along.
    /usr/bin/python3 "$repository/packaging/sbom.py" "$name-win64.zip" "$version" "$repository/build/windows/bin" \
        "$SOURCE_DATE_EPOCH" >"$name.spdx.json"
    /usr/bin/python3 "$repository/packaging/check_sbom.py" "$name.spdx.json" "$name-win64.zip"
}

# gather_release FOLDER WORK: what an earlier call has left there goes.
gather_release() {
    local folder=$1 gathered=$2/gathered
    mkdir "$gathered"
    cp "$repository"/build/windows/tollmere-steam-helper-*.zip "$gathered"
    write_sbom "$gathered"
    (cd "$gathered" && sha256sum -- * >"$2/SHA256SUMS")
    mkdir -p "$folder"
    rm -f "$folder"/tollmere-steam-helper-* "$folder/SHA256SUMS"
    cp "$gathered"/* "$2/SHA256SUMS" "$folder"
}
