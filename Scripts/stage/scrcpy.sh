# Staging scrcpy: the system's with its server file, else the official release, else Debian's client in a folder of its
# own. Sourced by stage-tools.
# shellcheck shell=bash disable=SC2154 # what stage-tools and stage/common.sh set

# Fetches scrcpy with everything it needs from Debian's archive for the architecture $1 into the cache, and sets
# `private_scrcpy`.
fetch_scrcpy() {
    local work version
    if [[ $origin != Debian ]]; then
        reason="this is not Debian, whose archive has a scrcpy $scrcpy_minimum"
        return 1
    fi
    open_private_apt Debian "main contrib" sid || return 1
    if ! version=$(candidate_version "$apt_root" scrcpy); then
        reason="Debian's archive has no scrcpy"
        return 1
    fi
    private_scrcpy=$cache/scrcpy-${version#*:}-sid-$1
    if [[ -f $private_scrcpy/SOURCE ]]; then
        touch "$private_scrcpy/SOURCE"
        return
    fi
    say "fetching scrcpy and all it needs from Debian's archive (about 150 MB, once)"
    if ! fetch_with_dependencies "$apt_root" scrcpy; then
        reason="apt cannot fetch scrcpy (see $apt_root/log)"
        return 1
    fi
    if ! work=$(working_folder) || ! unpack_fetched "$apt_root" "$work" ''; then
        reason="scrcpy $version cannot be unpacked into $cache"
        return 1
    fi
    rm -rf "$work"/usr/share/{doc,fonts,info,lintian,locale,man,mime,perl5}
    keep "$work" "$private_scrcpy" "Debian package ${version#*:} with its libraries" && rm -rf "$apt_root"
}

# Sets `private_scrcpy` to the cached folder of Debian's scrcpy and everything it needs, down to the C library.
debian_scrcpy() {
    local architecture cached
    describe_system /etc/os-release
    architecture=$(dpkg --print-architecture)
    if ! cached=$(newest "$cache"/scrcpy-*-"sid-$architecture") || [[ ! -f $cached/SOURCE ]]; then
        cached=
    elif is_recent "$cached"; then
        private_scrcpy=$cached
        return
    fi
    fetch_scrcpy "$architecture" && return
    [[ -n $cached ]] || return 1
    private_scrcpy=$cached
    say "a scrcpy that was fetched more than $tool_days days ago is used, for no newer one can be had ($reason)"
}

# Prints the text $1 as one word of a POSIX shell.
quoted() {
    local quote="'\\''"
    printf "'%s'" "${1//\'/"$quote"}"
}

# Writes the program $1, which runs the scrcpy of the prefix $2 with the libraries and the loader of that prefix.
#
# The prefix has no OpenGL (nothing in it depends on one). The loader finds this system's in its default folders, and that
# has to find its own drivers, so none of the variables that name drivers is set: neither LIBGL_DRIVERS_PATH nor
# __EGL_VENDOR_LIBRARY_DIRS. SDL draws without OpenGL where this system has none, and obeys the user's SDL_RENDER_DRIVER.
write_scrcpy_launcher() {
    local loader libraries
    loader=$(find "$2/usr/lib" -name 'ld-linux-*.so*' | sed -n 1p)
    libraries=$(dirname "$loader")
    cat > "$1" << LAUNCHER
#!/bin/sh
# Runs a scrcpy that was built for a newer system, with the libraries of that system, kept apart from this one's.
prefix=$(quoted "$2")
libraries=$(quoted "$libraries")
export SCRCPY_ICON_DIR="\${SCRCPY_ICON_DIR:-\$prefix/usr/share/icons/hicolor/256x256/apps}"
exec "\$libraries/$(basename "$loader")" --inhibit-cache --argv0 scrcpy \\
    --library-path "\$libraries:\$libraries/pulseaudio" "\$prefix/usr/bin/scrcpy" "\$@"
LAUNCHER
    chmod +x "$1"
}

# Prints the path of the server file that belongs to the system's scrcpy $1.
system_server() {
    local program candidate
    program=$(readlink -f "$1")
    for candidate in "${program%/*}/scrcpy-server" "${program%/*}/../share/scrcpy/scrcpy-server"; do
        if [[ -f $candidate ]]; then
            readlink -f "$candidate"
            return
        fi
    done
    return 1
}

# Puts the unpacked official release into the folder $1, its licences in a folder `licences` there. Its adb stays out: Varda
# tells scrcpy which adb to run.
add_release() {
    local file
    for file in "$release"/*; do
        case ${file##*/} in
            adb) ;;
            LICEN[CS]E* | NOTICE* | COPYING*) install -D -m 644 -t "$1/licences" "$file" || return 1 ;;
            *) cp -a "$file" "$1" || return 1 ;;
        esac
    done
}

# Says how the server file of the client of version $1 can be had.
server_advice() {
    if [[ $1 == "$release_version" ]]; then
        printf 'with %s at %s' "$release_site/$release_server" "$cache/$release_server"
    elif [[ $(uname -m) == x86_64 ]]; then
        printf 'with %s at %s' "$release_site/$release_archive" "$cache/$release_archive"
    else
        printf 'with a scrcpy %s or later and its server file installed' "$scrcpy_minimum"
    fi
}

# Puts a scrcpy client into the folder $1, and the server file where it is to be had. Fails where there is no client.
collect_scrcpy() {
    local system version server
    if system=$(type -P scrcpy) && version=$(scrcpy_version "$system") && at_least "$version" "$scrcpy_minimum" &&
        server=$(system_server "$system"); then
        ln -s "$system" "$1/scrcpy" && ln -s "$server" "$1/scrcpy-server" &&
            printf "the system's %s and %s\n" "$system" "$server" > "$1/SOURCE"
    elif official_release; then
        add_release "$1"
    elif is_debian && debian_scrcpy; then
        write_scrcpy_launcher "$1/scrcpy" "$private_scrcpy" &&
            printf 'Debian package with its libraries, %s\n' "$private_scrcpy" > "$1/SOURCE" || return 1
        if [[ $(scrcpy_version "$1/scrcpy") == "$release_version" ]] &&
            download "$release_server" "$release_server_sha256"; then
            cp "$cache/$release_server" "$1/scrcpy-server" || return 1
        fi
    else
        return 1
    fi
}

# Stages scrcpy where client and server file are both there; Varda names the missing program otherwise. The client alone
# goes into the simulated phone's tree, with a placeholder for the server file.
stage_scrcpy() {
    local folder=$tools/scrcpy simulated=$simulated_tools/scrcpy version reason='' private_scrcpy apt_root release
    local fresh=$simulated.new
    rm -rf "$fresh"
    mkdir -p "$fresh"
    if ! collect_scrcpy "$fresh" || ! version=$(scrcpy_version "$fresh/scrcpy"); then
        rm -rf "$fresh" "$simulated" "$folder"
        say "mirroring is not available: no scrcpy $scrcpy_minimum or later is installed, and none could be fetched" \
            "(${unreachable:+$release_site: $unreachable}${unreachable:+${reason:+; }}${reason})"
        return
    fi
    say "scrcpy $version ($(< "$fresh/SOURCE"))"
    if [[ -f $fresh/scrcpy-server ]]; then
        rm -rf "$folder.new"
        if ! cp -a "$fresh" "$folder.new" || ! settle "$folder.new" "$folder"; then
            fail "scrcpy cannot be put into $folder"
        fi
    else
        rm -rf "$folder"
        printf 'Stands in for the scrcpy server: good for the simulated phone only.\n' > "$fresh/scrcpy-server"
        say "mirroring a real phone is not available: the scrcpy client is here, its server file is not" \
            "(${unreachable:-$release_server is not of version $version});" \
            "$(server_advice "$version"), run Scripts/stage-tools again"
    fi
    settle "$fresh" "$simulated" || fail "scrcpy cannot be put into $simulated"
}

