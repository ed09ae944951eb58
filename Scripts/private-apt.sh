# Fetches packages of Debian or of a system made from it without installing them: sourced by stage-tools.
#
# Packages of other suites than the machine's own are resolved in an apt root of our own and unpacked into a folder, so
# that neither /etc/apt nor the installed packages change. The machine's apt options (proxy, date checks, …) stay in
# force but for those that let apt take what is not signed: only what the archive's own keyring vouches for is taken.
# shellcheck shell=bash disable=SC2034 # describe_system tells its callers

# Sets `codename`, `origin` and `keyring` by the os-release file $1: the release whose packages run here, how their archive
# calls itself, and the keys that it is signed with.
describe_system() {
    local kind debian ubuntu release
    # shellcheck source=/dev/null
    { read -r kind && read -r debian && read -r ubuntu && read -r release; } < <(. "$1" && printf '%s\n' \
        "${ID:-} ${ID_LIKE:-}" "${DEBIAN_CODENAME:-}" "${UBUNTU_CODENAME:-}" "${VERSION_CODENAME:-}")
    if [[ " $kind " == *" ubuntu "* && -z $debian ]]; then
        origin=Ubuntu
        codename=${ubuntu:-$release}
        keyring=/usr/share/keyrings/ubuntu-archive-keyring.gpg
    else
        origin=Debian
        codename=${debian:-$release}
        keyring=/usr/share/keyrings/debian-archive-keyring.gpg
    fi
}

# Reads what `apt-get update --print-uris` prints and prints the base addresses of the archives that have the suite $1 or,
# where the sources name suites by their role, one of Debian's moving suites. A sample line:
#   'http://mirror.example/debian/dists/bookworm/InRelease' mirror.example_debian_dists_bookworm_InRelease 0
mirrors_in_uris() {
    local uris suite
    uris=$(cat)
    for suite in "$1" stable oldstable oldoldstable testing unstable sid; do
        sed -n "s|^'\(.*[^/]\)/*/dists/$suite/InRelease'.*|\1|p" <<< "$uris"
    done
}

# Reads "ORIGIN|LABEL|ADDRESS" lines and prints the addresses of the archive that calls itself $1.
mirrors_of_origin() {
    sed -n "s,^$1|$1|\(.*[^/]\)/*$,\1,p"
}

# Prints the base addresses that may be the machine's mirrors of the archive $1 with the suite $2, the likeliest first.
# apt itself reads its sources, in either of their formats. It knows whose an archive is from the lists that it fetched;
# where it has none yet, any source of that suite may be the one, and only the archive's signature tells.
machine_mirrors() {
    # shellcheck disable=SC2016
    {
        LC_ALL=C apt-get indextargets --format '$(ORIGIN)|$(LABEL)|$(REPO_URI)' 'Created-By: Packages' |
            mirrors_of_origin "$1"
        LC_ALL=C apt-get update --print-uris | mirrors_in_uris "$2"
    } 2> /dev/null | awk '!seen[$0]++'
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
APT::Get::AllowUnauthenticated "false";
Acquire::AllowInsecureRepositories "false";
Acquire::AllowWeakRepositories "false";
Acquire::AllowDowngradeToInsecureRepositories "false";
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

# Prints the version of the package $2 that the private root $1 would fetch.
candidate_version() {
    LC_ALL=C apt-cache -c "$1/apt.conf" policy "$2" 2> /dev/null | sed -n 's/^  Candidate: \([0-9].*\)$/\1/p' | grep .
}

# Fetches the package $2 and all that it depends on, down to the C library, with the private root $1. An interrupted
# download goes on where it stopped. The files are in $1/cache/archives afterwards.
fetch_with_dependencies() {
    private_apt_get "$1" install --download-only "$2"
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
