# Staging adb: the system's where it is new enough, else that of the system's archive, else the official scrcpy release's.
# Sourced by stage-tools.
# shellcheck shell=bash disable=SC2154 # what stage-tools and stage/common.sh set

# Puts the fetched adb into the folder $1 with its libraries in `lib` beside it, and makes it find them there: adb stays
# a program of its own, because it starts its server by running itself.
assemble_adb() {
    local unpacked file
    unpacked=$(working_folder) || return 1
    # The C and C++ libraries stay the system's: they are there wherever Varda itself runs.
    unpack_fetched "$apt_root" "$unpacked" 'libc6|libgcc-s1|gcc-[0-9]+-base|libstdc\+\+6' || return 1
    mkdir "$1/lib" || return 1
    cp "$unpacked/usr/lib/android-sdk/platform-tools/adb" "$1/adb" || return 1
    find "$unpacked" -path '*/lib/*' -name '*.so*' \( -type f -o -type l \) -exec cp -P -t "$1/lib" {} + || return 1
    # shellcheck disable=SC2016
    patchelf --set-rpath '$ORIGIN/lib' "$1/adb" || return 1
    for file in "$1"/lib/*; do
        # shellcheck disable=SC2016
        [[ -L $file ]] || patchelf --set-rpath '$ORIGIN' "$file" || return 1
    done
    # Who passes these files on owes their licences with them.
    for file in "$unpacked"/usr/share/doc/*/copyright; do
        file=${file%/copyright}
        install -D -m 644 "$file/copyright" "$1/licences/${file##*/}" || return 1
    done
    rm -rf "$unpacked"
}

# Whether the adb $1 runs and can pair.
is_usable_adb() {
    local version
    version=$(adb_version "$1") && at_least "$version" "$adb_minimum"
}

# Fetches adb from the archive of the release `codename` for the architecture $1 into the cache and sets `private_adb`.
fetch_archive_adb() {
    local work version suites=("$codename")
    if ! have patchelf; then
        reason="patchelf is missing"
        return 1
    fi
    [[ $origin != Debian ]] || suites+=("$codename-backports")
    open_private_apt "$origin" "$([[ $origin == Ubuntu ]] && echo main universe || echo main)" "${suites[@]}" || return 1
    if ! version=$(candidate_version "$apt_root" adb) || ! at_least "${version#*:}" "$adb_minimum"; then
        reason="the adb of $codename is ${version:-not there}"
        return 1
    fi
    private_adb=$cache/adb-${version#*:}-$codename-$1
    if [[ -f $private_adb/SOURCE ]] && is_usable_adb "$private_adb/adb"; then
        touch "$private_adb/SOURCE"
        return
    fi
    say "fetching adb and its libraries from $origin's archive (about 7 MB, once)"
    if ! fetch_with_dependencies "$apt_root" adb; then
        reason="apt cannot fetch adb (see $apt_root/log)"
        return 1
    fi
    if ! work=$(working_folder) || ! assemble_adb "$work" || ! is_usable_adb "$work/adb"; then
        reason="the adb $version of $origin cannot be unpacked or does not run here"
        return 1
    fi
    keep "$work" "$private_adb" "$origin package ${version#*:} for $codename" && rm -rf "$apt_root"
}

# Sets `private_adb` to the cached folder of an adb from the system's archive, with its libraries in `lib` beside it.
archive_adb() {
    local architecture cached
    describe_system /etc/os-release
    architecture=$(dpkg --print-architecture)
    if ! cached=$(newest "$cache"/adb-*-"$codename-$architecture") || ! is_usable_adb "$cached/adb"; then
        cached=
    elif is_recent "$cached"; then
        private_adb=$cached
        return
    fi
    fetch_archive_adb "$architecture" && return
    [[ -n $cached ]] || return 1
    private_adb=$cached
    say "an adb that was fetched more than $tool_days days ago is used, for no newer one can be had ($reason)"
}

stage_adb() {
    local folder=$tools/platform-tools system version reason='' private_adb apt_root release
    local fresh=$folder.new
    rm -rf "$fresh"
    if system=$(type -P adb) && version=$(adb_version "$system") && at_least "$version" "$adb_minimum"; then
        mkdir -p "$fresh" && ln -s "$system" "$fresh/adb" && printf "the system's %s\n" "$system" > "$fresh/SOURCE"
    elif is_debian && archive_adb; then
        cp -a "$private_adb" "$fresh"
    elif official_release && [[ -x $release/adb ]]; then
        mkdir -p "$fresh" && cp -a "$release"/{adb,SOURCE} "$fresh"
    else
        fail "no adb $adb_minimum or later: install Android's platform tools so that adb is on PATH" \
            "(here: ${version:-none}${reason:+; $reason})"
    fi || fail "adb cannot be put into $fresh"
    if ! version=$(adb_version "$fresh/adb") || ! at_least "$version" "$adb_minimum"; then
        fail "no adb $adb_minimum or later: the $(< "$fresh/SOURCE") has the version ${version:-that it cannot tell}"
    fi
    settle "$fresh" "$folder" || fail "adb cannot be put into $folder"
    say "adb $version ($(< "$folder/SOURCE"))"
}

