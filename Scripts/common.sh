# Shared by the scripts of this folder, which source it: where the project is, and how they speak.
# shellcheck shell=bash

# Used by the scripts that source this file.
# shellcheck disable=SC2034
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# What is fetched is kept here. A system service may have no HOME; the shell knows the user's home folder then.
# shellcheck disable=SC2034
cache=${XDG_CACHE_HOME:-${HOME:-$(unset HOME && echo ~)}/.cache}/varda

# Says on one line what a script does or used.
say() {
    printf '%s: %s\n' "${0##*/}" "$*"
}

# Says on one line, on standard error, why a script cannot go on, and ends it.
fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

have() {
    command -v "$1" > /dev/null 2>&1
}

# Debian and the systems made from it, where packages can be looked up and fetched.
is_debian() {
    have apt-get && have dpkg-query
}
