# The libraries and Qt plugins that the archive brings, so that it runs where there is no Qt: sourced by package.
# shellcheck shell=bash disable=SC2016 # $ORIGIN is the loader's

# The plugins of Qt that the window uses: X11, Wayland, file dialogs by the desktop's portal, and input methods.
# Neither draws the window with OpenGL.
qt_plugins=(
    platforms/libqxcb.so platforms/libqwayland-generic.so
    wayland-shell-integration/libxdg-shell.so wayland-decoration-client/libbradient.so
    platformthemes/libqxdgdesktopportal.so
    platforminputcontexts/libcomposeplatforminputcontextplugin.so
    platforminputcontexts/libibusplatforminputcontextplugin.so
)

# What every desktop has stays the system's, with all that it needs in turn: two versions of one library in a program do not
# go well together, and the drivers and the configuration of these belong to the system. They keep their names for decades.
system_libraries=(
    # the C and C++ libraries
    'ld-linux.*' 'lib(c|m|dl|rt|pthread|resolv|stdc\+\+|gcc_s)'
    # X11 and the protocols of xcb, but not the helpers that only toolkits use
    'lib(X.*|SM|ICE|xcb|xcb-(glx|randr|render|shape|shm|sync|xfixes|xinerama|xinput|xkb))'
    # OpenGL, and Wayland's client library, which OpenGL uses
    'lib(GL|GLX|EGL|OpenGL|wayland-client)'
    # letters, and the compression that they and OpenGL's drivers use too
    'lib(fontconfig|freetype|png16|z|zstd|expat)'
    # the session bus
    'libdbus-1'
)

is_system_library() {
    local IFS='|'
    [[ $1 =~ ^(${system_libraries[*]})\.so ]]
}

# Prints the paths of the libraries that the files $@ and their libraries need, but for the system's and what follows them.
libraries_of() {
    local file name path
    local -A seen=()
    local -a waiting=("$@")
    while ((${#waiting[@]})); do
        file=${waiting[-1]}
        unset 'waiting[-1]'
        while IFS= read -r name; do
            if [[ -v seen[$name] ]] || is_system_library "$name"; then
                continue
            fi
            seen[$name]=yes
            path=$(ldd "$file" | awk -v name="$name" '$1 == name { print $3 }')
            [[ -f $path ]] || fail "$file needs $name, which is not here"
            printf '%s\n' "$path"
            waiting+=("$path")
        done < <(LC_ALL=C readelf --dynamic "$file" | sed -n 's/.*(NEEDED).*\[\(.*\)\]$/\1/p')
    done
}

# Copies the licence of the Debian package that the file $1 is from into the folder $2. Packages from before /lib became a
# link to /usr/lib have the file there.
copy_licence() {
    local file package
    file=$(realpath "$1")
    package=$( (dpkg-query -S "$file" || dpkg-query -S "${file#/usr}") 2> /dev/null | sed -n '1s/:.*//p')
    [[ -n $package ]] || fail "no package owns $file, so its licence cannot be told"
    install -D -m 644 "/usr/share/doc/$package/copyright" "$2/$package"
}

# Copies the libraries that the files $3 … need into the folder $1, where they find each other, and their licences into $2.
copy_libraries() {
    local path
    mkdir -p "$1"
    while IFS= read -r path; do
        install -m 644 "$(realpath "$path")" "$1/${path##*/}"
        patchelf --set-rpath '$ORIGIN' "$1/${path##*/}"
        copy_licence "$path" "$2"
    done < <(libraries_of "${@:3}")
}

# Makes the tree $1 of `lib` and `plugins` for the programs $3 …; the licences go into the folder $2.
make_runtime_tree() {
    local qt plugin
    qt=$(qtpaths6 --query QT_INSTALL_PLUGINS 2> /dev/null || qmake6 -query QT_INSTALL_PLUGINS)
    for plugin in "${qt_plugins[@]}"; do
        install -D -m 644 "$qt/$plugin" "$1/plugins/$plugin"
        patchelf --set-rpath '$ORIGIN/../../lib' "$1/plugins/$plugin"
        copy_licence "$qt/$plugin" "$2"
    done
    copy_libraries "$1/lib" "$2" "${@:3}" "${qt_plugins[@]/#/$qt/}"
}
