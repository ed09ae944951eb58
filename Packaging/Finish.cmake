# Run by CPack between installing the files and packing them: what only one kind of package wants.
set(here "${CMAKE_CURRENT_LIST_DIR}")

# Leaves out of a program what only its makers read: more than CMake's own stripping does, and what Debian wants.
function(strip_program path)
    execute_process(COMMAND strip --remove-section=.comment --remove-section=.note "${path}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

if(CPACK_GENERATOR STREQUAL "TGZ")
    set(program "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/bin/varda")
    strip_program("${program}")
    execute_process(COMMAND patchelf --set-rpath "$ORIGIN/../lib/varda/runtime/lib" "${program}"
        COMMAND_ERROR_IS_FATAL ANY)
    configure_file("${here}/Archive/README" "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/README" COPYONLY)
    return()
endif()

# Debian's policy asks for compressed manual pages and changelogs under names of its own.
set(usr "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/usr")
set(doc "${usr}/share/doc/varda")

function(compress path)
    execute_process(COMMAND gzip -9nf "${path}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

strip_program("${usr}/bin/varda")
configure_file("${here}/Debian/changelog" "${doc}/changelog.Debian" COPYONLY)
configure_file("${here}/Debian/varda.lintian-overrides" "${usr}/share/lintian/overrides/varda" COPYONLY)
set(scrcpy "${usr}/lib/varda/Tools/scrcpy/scrcpy")
if(NOT IS_SYMLINK "${scrcpy}")
    file(READ "${here}/Debian/scrcpy.lintian-overrides" overrides)
    file(APPEND "${usr}/share/lintian/overrides/varda" "${overrides}")
    # An override that nothing needs is a finding, too.
    execute_process(COMMAND readelf --wide --section-headers "${scrcpy}" OUTPUT_VARIABLE sections
        COMMAND_ERROR_IS_FATAL ANY)
    if(sections MATCHES " \\.symtab ")
        set(tag "unstripped-binary-or-object")
    elseif(sections MATCHES " \\.comment ")
        set(tag "binary-has-unneeded-section .comment")
    endif()
    if(tag)
        file(APPEND "${usr}/share/lintian/overrides/varda" "varda: ${tag} [usr/lib/varda/Tools/scrcpy/scrcpy]\n")
    endif()
endif()
file(RENAME "${doc}/CHANGELOG.md" "${doc}/changelog")
compress("${doc}/changelog")
compress("${doc}/changelog.Debian")
compress("${usr}/share/man/man1/varda.1")
