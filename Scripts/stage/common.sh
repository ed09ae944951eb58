# What staging adb and staging scrcpy share: versions, the cache, the official release and Debian's archive. Sourced by
# stage-tools, and with it by package.
#
# Most of these functions are called in conditions, where the shell does not end at a command that fails: each step that
# may fail says so itself, a full disk included.
# shellcheck shell=bash disable=SC2154 # constants of stage-tools

# shellcheck source=Scripts/private-apt.sh
source "$(dirname "${BASH_SOURCE[0]}")/../private-apt.sh"

stalled_seconds=15  # a download that stands still for so long is given up
tool_days=30  # after so many days a tool from Debian is looked at again

# Prints the version that the adb $1 states, such as "34.0.5-debian"; fails where it does not run.
adb_version() {
    "$1" version 2> /dev/null | sed -n 's/^Version \([0-9].*\)$/\1/p' | grep .
}

# Prints the version that the scrcpy $1 states, such as "4.1"; fails where it does not run.
scrcpy_version() {
    "$1" --version 2> /dev/null | sed -n '1s/^scrcpy \([0-9][^ ]*\).*/\1/p' | grep .
}

# Whether the version $1 is of the major version $2 or later.
at_least() {
    local major=${1%%[!0-9]*}
    [[ -n $major ]] && ((10#$major >= $2))
}

# Whether the file $1 has the SHA-256 $2.
has_digest() {
    [[ -f $1 ]] && sha256sum --status -c <<< "$2  $1"
}

# Prints the last of the folders that are given in version order; fails where there is none.
newest() {
    local folder found=
    while IFS= read -r folder; do
        [[ -d $folder ]] && found=$folder
    done < <(printf '%s\n' "$@" | sort -V)
    [[ -n $found ]] && printf '%s\n' "$found"
}

# A new folder in the cache, to be renamed when it is complete. What an ended run left is cleared at the next start.
working_folder() {
    local folder
    folder=$(mktemp -d "$cache/tmp.XXXXXX") || return 1
    chmod 755 "$folder"
    printf '%s\n' "$folder"
}

# Downloads the file $1 of the official release with the SHA-256 $2 into the cache, once.
download() {
    local words
    has_digest "$cache/$1" "$2" && return
    [[ -z $unreachable ]] || return 1
    if ! have curl; then
        unreachable="there is no curl to fetch it with"
        return 1
    fi
    if ! words=$(curl -fsSL --proto =https --connect-timeout 5 --speed-limit 1000 --speed-time "$stalled_seconds" --max-time 600 \
        -o "$cache/tmp.$1" "$release_site/$1" 2>&1); then
        unreachable=${words:-curl failed}
        return 1
    fi
    if ! has_digest "$cache/tmp.$1" "$2"; then
        unreachable="what came from $release_site/$1 has another SHA-256"
        rm -f "$cache/tmp.$1"
        return 1
    fi
    mv -f "$cache/tmp.$1" "$cache/$1"
}

# Sets `release` to the folder of the unpacked official release.
official_release() {
    local work
    release=$cache/scrcpy-$release_version-release
    [[ ! -f $release/SOURCE ]] || return 0
    [[ $(uname -m) == x86_64 ]] || return 1
    download "$release_archive" "$release_archive_sha256" || return 1
    work=$(working_folder) || return 1
    if ! tar -xzf "$cache/$release_archive" -C "$work" --strip-components=1 || [[ ! -f $work/scrcpy-server ]]; then
        unreachable="$cache/$release_archive cannot be unpacked"
        return 1
    fi
    keep "$work" "$release" "official scrcpy release $release_version"
}

# Prepares a private apt root for the suites $3 … of the archive that calls itself $1, each with the components $2, and
# fetches their lists. Sets `apt_root`. The suites that a mirror does not have are left out as long as the first is there.
open_private_apt() {
    local archive=$1 components=$2 mirror suites lines suite
    shift 2
    if [[ ! -r $keyring ]]; then
        reason="$keyring is missing, and nothing else tells what is $archive's: install the package ${keyring##*/}"
        reason=${reason%.gpg}
        return 1
    fi
    apt_root=$cache/apt-$1
    reason="apt's sources name no mirror of $archive"
    while IFS= read -r mirror; do
        suites=("$@")
        while ((${#suites[@]})); do
            lines=$(for suite in "${suites[@]}"; do
                printf 'deb [signed-by=%s] %s %s %s\n' "$keyring" "$mirror" "$suite" "$components"
            done)
            prepare_private_root "$apt_root" "$lines" \
                $'Package: adb android-*\nPin: release n=*-backports\nPin-Priority: 500' || return 1
            private_apt_get "$apt_root" update --error-on=any && return
            unset 'suites[-1]'
        done
        reason="apt cannot read the lists of $1 (see $apt_root/log)"
    done < <(machine_mirrors "$archive" "$codename")
    return 1
}

# Whether the cached tool in the folder $1 was looked at lately. Only a complete one has the file SOURCE.
is_recent() {
    [[ -n $(find "$1/SOURCE" -mtime "-$tool_days" 2> /dev/null) ]]
}

# Sets the cached folder $2 in place of what was there, from the complete folder $1, of which $3 says where it came from.
keep() {
    printf '%s\n' "$3" > "$1/SOURCE" && rm -rf "$2" && mv -T "$1" "$2"
}

# Makes the folder $2 what the complete folder $1, built beside it, is: only where they differ.
settle() {
    if diff -rq --no-dereference "$1" "$2" > /dev/null 2>&1; then
        rm -rf "$1"
    else
        rm -rf "$2"
        mv -T "$1" "$2"
    fi
}

