# What the tests of the scripts share, which source it. A test's functions in camel case are its claims; each runs in a
# shell and an empty folder of its own after `set_up`, and fails with the first expectation that does not hold.
# shellcheck shell=bash

# shellcheck disable=SC2034 # used by the tests
project=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)

# Fails the claim unless the command $2 … succeeds; $1 says what is expected.
expect() {
    local what=$1
    shift
    "$@" && return
    printf '  line %s: not so: %s\n' "${BASH_LINENO[0]}" "$what"
    exit 1
}

# Fails the claim if the command $2 … succeeds; $1 says what must not be.
refuse() {
    local what=$1
    shift
    "$@" || return 0
    printf '  line %s: accepted: %s\n' "${BASH_LINENO[0]}" "$what"
    exit 1
}

# Runs all claims of the test program $1 and returns whether all hold.
run_claims() {
    local claim failed=0 count=0 status home
    home=$(mktemp -d /tmp/varda-claims.XXXXXX)
    # shellcheck disable=SC2013 # names have no spaces
    for claim in $(sed -n 's/^\([a-z]\+[A-Z][A-Za-z]*\)() {$/\1/p' "$1"); do
        count=$((count + 1))
        mkdir "$home/$claim"
        set +e
        (
            set -e
            cd "$home/$claim"
            set_up
            "$claim"
        )
        status=$?
        set -e
        if ((status == 0)); then
            printf 'PASS   : %s\n' "$claim"
        else
            printf 'FAIL!  : %s\n' "$claim"
            failed=$((failed + 1))
        fi
    done
    rm -rf "$home"
    printf '%s claims, %s failed\n' "$count" "$failed"
    ((count > 0 && failed == 0))
}
