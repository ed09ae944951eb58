# The packages: a .deb for the Debian that it is made on, and an archive that runs wherever it is unpacked. Scripts/package makes both.
set(CPACK_PACKAGE_NAME varda)
set(CPACK_PACKAGE_VENDOR "Halvex")
set(CPACK_PACKAGE_CONTACT "Halvex <varda@halvex.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "test your own Android builds on a real phone")
set(CPACK_PACKAGE_FILE_NAME "varda-${PROJECT_VERSION}-linux-${CMAKE_SYSTEM_PROCESSOR}")
set(CPACK_OUTPUT_FILE_PREFIX packages)
set(CPACK_GENERATOR DEB TGZ)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_THREADS 0)
# Whatever the umask of who makes the package.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

if(IS_SYMLINK "${VARDA_TOOLS}/scrcpy/scrcpy")
    set(scrcpy_words " Mirroring
needs scrcpy 3 or later in /usr/local, see varda(1).")
endif()
if(IS_SYMLINK "${VARDA_TOOLS}/platform-tools/adb")
    set(adb_package "adb (>= 1:30), ")
    set(adb_words "Varda runs the system's adb.")
else()
    set(adb_words "The package brings an adb of its own, because the one of Debian 12 cannot\npair.")
endif()

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
# A later Debian's package replaces an earlier one's when the system is upgraded.
cmake_host_system_information(RESULT debian_version QUERY DISTRIB_VERSION_ID)
set(CPACK_DEBIAN_PACKAGE_RELEASE "1~deb${debian_version}")
set(CPACK_DEBIAN_PACKAGE_SECTION non-free/devel)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"One window for the rounds that every build of an Android app goes through:
pick a phone, drop the APK file, install it and keep the app's data, launch
and stop the app, read its log, save a screenshot, mirror and record the
screen, pair and connect over Wi-Fi.
.
${adb_words}${scrcpy_words}")
# What the program links, and what the adb inside links, is found by dpkg-shlibdeps.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${VARDA_TOOLS}/platform-tools/lib")
# An adb, where the package brings none, and the rules that let the user at the desk open a phone on USB.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "${adb_package}android-sdk-platform-tools-common | android-udev-rules")
# A window on Wayland, its letters, and links that open in the browser.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-inter, qt6-wayland, xdg-utils")
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/Finish.cmake")

include(CPack)
