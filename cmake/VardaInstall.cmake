# What is installed, and where. Packages are made of exactly this; see Scripts/package.
#
# The program finds its tools at ../lib/varda/Tools as seen from its own folder. That `lib` is part of the program's
# interface and not the system's library folder, which may be called lib64 or lib/x86_64-linux-gnu.
include(GNUInstallDirs)

set(VARDA_TOOLS "${PROJECT_BINARY_DIR}/lib/varda/Tools" CACHE PATH
    "The tools tree to install: what Scripts/stage-tools has put into this build, or one that was made for a package")

add_subdirectory("${PROJECT_SOURCE_DIR}/Packaging")

set(VARDA_RUNTIME "" CACHE PATH
    "Libraries and Qt plugins to install for systems without them, such as Scripts/package makes; empty for none")

install(TARGETS varda RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(DIRECTORY "${VARDA_TOOLS}/" DESTINATION lib/varda/Tools USE_SOURCE_PERMISSIONS
    PATTERN licences EXCLUDE)
install(DIRECTORY "${VARDA_TOOLS}/platform-tools/licences" "${VARDA_TOOLS}/scrcpy/licences"
    DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/varda" OPTIONAL)
if(VARDA_RUNTIME)
    install(DIRECTORY "${VARDA_RUNTIME}/" DESTINATION lib/varda/runtime)
    install(FILES "${PROJECT_SOURCE_DIR}/Packaging/Archive/qt.conf" DESTINATION "${CMAKE_INSTALL_BINDIR}")
endif()

set(packaging "${PROJECT_SOURCE_DIR}/Packaging")
set(packaging_build "${PROJECT_BINARY_DIR}/Packaging")
install(FILES "${packaging}/varda.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
install(FILES "${packaging}/local.halvex.varda.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
install(DIRECTORY "${packaging_build}/hicolor" DESTINATION "${CMAKE_INSTALL_DATADIR}/icons")
install(FILES "${PROJECT_SOURCE_DIR}/Sources/Varda/View/Widgets/Icons/varda.svg"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps")
install(FILES "${packaging_build}/varda.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES "${PROJECT_SOURCE_DIR}/CHANGELOG.md" "${packaging}/copyright"
    DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/varda")

include("${packaging}/CPack.cmake")
