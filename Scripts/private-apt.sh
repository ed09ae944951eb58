# Fetches Debian packages without installing them: sourced by stage-tools.
#
# Packages of other suites than the machine's own are resolved in an apt root of our own and unpacked into a folder, so
# that neither /etc/apt nor the installed packages change. The machine's apt options (proxy, date checks, …) stay in
# force, and apt checks the archive's signatures and every package's digest as always.
# shellcheck shell=bash

# Reads what `apt-get update --print-uris` prints and prints the base address of the first archive that has the suite
# $1 or, where the sources name suites by their role, one of Debian's moving suites. A sample line:
#   'http://mirror.example/debian/dists/bookworm/InRelease' mirror.example_debian_dists_bookworm_InRelease 0
mirror_in_uris() {
    local uris suite address
    uris=$(cat)
    for suite in "$1" stable oldstable oldoldstable testing unstable sid; do
        address=$(sed -n "s|^'\(.*[^/]\)/*/dists/$suite/InRelease'.*|\1|p" <<< "$uris" | sed -n 1p)
        if [[ -n $address ]]; then
            printf '%s\n' "$address"
            return
        fi
    done
    return 1
}

# Prints the base address of the machine's own Debian mirror. apt itself reads its sources, in either of their formats.
machine_mirror() {
    LC_ALL=C apt-get update --print-uris 2> /dev/null | mirror_in_uris "$1"
}

# Prints a sources line for suite $2 of the mirror $1 with the components $3.
source_line() {
    local keyring=/usr/share/keyrings/debian-archive-keyring.gpg
    if [[ -r $keyring ]]; then
        printf 'deb [signed-by=%s] %s %s %s\n' "$keyring" "$1" "$2" "$3"
    else
        printf 'deb %s %s %s\n' "$1" "$2" "$3"
    fi
}

# apt-get in the private root $1, with its output kept in the log there.
private_apt_get() {
    local base=$1
    shift
    LC_ALL=C apt-get -c "$base/apt.conf" -q -y "$@" >> "$base/log" 2>&1 < /dev/null
}

# Prepares the private root $1 for the sources lines $2; $3 is an apt preferences text, empty for none.
prepare_private_root() {
    local base=$1
    mkdir -p "$base/state/lists/partial" "$base/cache/archives/partial"
    : > "$base/log"
    : > "$base/state/status"
    printf '%s\n' "$2" > "$base/sources.list"
    printf '%s\n' "$3" > "$base/preferences"
    cat > "$base/apt.conf" << CONF
Dir::State "$base/state";
Dir::State::status "$base/state/status";
Dir::Cache "$base/cache";
Dir::Etc::sourcelist "$base/sources.list";
Dir::Etc::sourceparts "/dev/null";
Dir::Etc::preferences "$base/preferences";
Dir::Etc::preferencesparts "/dev/null";
Dir::Log "$base";
APT::Install-Recommends "false";
APT::Sandbox::User "root";
APT::Keep-Downloaded-Packages "true";
Acquire::Languages "none";
Acquire::http::Timeout "20";
Acquire::https::Timeout "20";
#clear APT::Update::Pre-Invoke;
#clear APT::Update::Post-Invoke;
#clear APT::Update::Post-Invoke-Success;
#clear DPkg::Pre-Invoke;
#clear DPkg::Pre-Install-Pkgs;
#clear DPkg::Post-Invoke;
CONF
}

# Fetches the package $2 and all that it depends on, down to the C library, with the private root $1. An interrupted
# download goes on where it stopped. The files are in $1/cache/archives afterwards.
fetch_with_dependencies() {
    private_apt_get "$1" install --download-only "$2"
}

# Prints the version of the package $2 among the files that the private root $1 fetched, without its epoch.
fetched_version() {
    local version
    version=$(dpkg-deb -f "$1"/cache/archives/"$2"_*.deb Version) || return 1
    printf '%s\n' "${version#*:}"
}

# Unpacks what the private root $1 fetched into the folder $2, but for the packages that the pattern $3 names.
unpack_fetched() {
    local file
    for file in "$1"/cache/archives/*.deb; do
        if [[ -n $3 && ${file##*/} =~ ^($3)_ ]]; then
            continue
        fi
        dpkg-deb -x "$file" "$2" || return 1
    done
}
