# Fresh Debian systems in folders of their own: sourced by in-debian and test-package. Needs root and debootstrap.
#
# A system is unpacked from a base that is made once per suite and kept in the cache. Nothing of the machine is mounted in
# it: what it shall have is copied. What it mounts itself lies in a mount namespace that ends with the command in it, and
# so do all processes that the command left.
# shellcheck shell=bash disable=SC2154 # what common.sh sets

# shellcheck source=Scripts/private-apt.sh
source "$(dirname "${BASH_SOURCE[0]}")/private-apt.sh"

base_days=7  # how long a base is taken to be fresh

# Prints the mount points at or below the folder $1 that the lines of /proc/self/mountinfo on standard input name.
mounts_below() {
    awk -v folder="$1" '$5 == folder || index($5, folder "/") == 1 { print $5 }'
}

# Removes the system $1. Never one with anything mounted in it: that would remove what is mounted.
remove_system() {
    local mounts
    mounts=$(mounts_below "$1" < /proc/self/mountinfo)
    [[ -z $mounts ]] || fail "$1 stays, for this is mounted in it: ${mounts//$'\n'/, }"
    rm -rf --one-file-system -- "$1"
}

# Prints the machine's apt options that decide whether packages can be fetched here: proxies and date checks.
apt_fetch_options() {
    apt-config dump | grep -E '^Acquire::(https?::([^ :]+::)?Proxy|Check-Date|Check-Valid-Until|Retries) ' || true
}

# Makes the base of suite $1 in the folder $2 from the first of the machine's mirrors that debootstrap can verify.
# debootstrap's words are in $2.log.
make_base() {
    local codename mirror http_proxy="${http_proxy:-}" updates=
    codename=$(describe_system /etc/os-release && echo "$codename")
    [[ $1 == sid ]] || updates="$1-updates"
    eval "$(apt-config shell http_proxy Acquire::http::Proxy)"
    export http_proxy
    : > "$2.log"
    while IFS= read -r mirror; do
        rm -rf "$2"
        if debootstrap --variant=minbase "$1" "$2" "$mirror" >> "$2.log" 2>&1 < /dev/null; then
            printf 'deb %s %s main\n' "$mirror" "$1" ${updates:+"$mirror" "$updates"} > "$2/etc/apt/sources.list"
            apt_fetch_options > "$2/etc/apt/apt.conf.d/90fetching"
            return
        fi
    done < <(machine_mirrors Debian "$codename")
    return 1
}

# Sets `base` to the archive of a fresh base of suite $1, which is made where it is missing or too old.
fresh_base() {
    local work
    base=$cache/debian-$1-$(dpkg --print-architecture).tar.gz
    [[ -z $(find "$base" -mtime "-$base_days" 2> /dev/null) ]] || return 0
    have debootstrap || fail "there is no debootstrap: install the package of that name"
    say "making a fresh Debian $1 (kept in $base for $base_days days)"
    mkdir -p "$cache"
    work=$(mktemp -d "${TMPDIR:-/var/tmp}/varda-base.XXXXXX")
    if ! make_base "$1" "$work/base"; then
        tail -n 5 "$work/base.log" >&2
        remove_system "$work"
        fail "debootstrap cannot make a Debian $1 from the mirrors that apt's sources name"
    fi
    tar -C "$work/base" --numeric-owner -czf "$base.new" .
    mv "$base.new" "$base"
    remove_system "$work"
}

# Makes a fresh system of suite $1 in the empty folder $2.
make_system() {
    local base
    fresh_base "$1"
    tar -C "$2" --numeric-owner -xpzf "$base"
    cp -L /etc/resolv.conf "$2/etc/resolv.conf"
}

# Runs the command that follows in the system $1, as root there. It gets an empty environment but for a path, a home folder
# and the terminal; its processes see no others, and end with it.
run_in_system() {
    local system=$1 status=0 runner
    shift
    # The shell that mounts stays the first process of the namespace: it collects those whose parents have ended.
    # shellcheck disable=SC2016
    unshare --mount --propagation private --pid --ipc --fork --kill-child -- bash -euc '
        system=$1
        shift
        mount -t proc -o nosuid,nodev,noexec proc "$system/proc"
        mount -t devpts -o newinstance,gid=5,mode=620,ptmxmode=666 devpts "$system/dev/pts"
        mount -t tmpfs -o mode=1777,nosuid,nodev tmpfs "$system/dev/shm"
        status=0
        chroot "$system" /usr/bin/env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root \
            TERM="${TERM:-dumb}" DEBIAN_FRONTEND=noninteractive "$@" || status=$?
        exit "$status"' in-system "$system" "$@" < /dev/null &
    runner=$!
    # shellcheck disable=SC2064
    trap "kill -KILL $runner 2> /dev/null || true; exit 143" INT TERM HUP
    wait "$runner" || status=$?
    trap - INT TERM HUP
    return "$status"
}
