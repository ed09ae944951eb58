# What every target of the project is compiled with. Link `Varda::Options` privately.
add_library(VardaOptions INTERFACE)
add_library(Varda::Options ALIAS VardaOptions)

target_compile_options(VardaOptions INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast -Wnon-virtual-dtor
    -Woverloaded-virtual -Wnull-dereference -Wimplicit-fallthrough -Wformat=2
    # GCC 12 mistakes coroutine parameters and Qt's implicitly shared types for dangling ones when it inlines.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-null-dereference>
    # GCC would spend a tenth of its time on freeing memory that a compilation does not need back: below 1 GB (in KB).
    $<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-heapsize=1048576>
    # A file that is compiled together with others is a header to GCC, where an anonymous namespace would be a mistake.
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<BOOL:${CMAKE_UNITY_BUILD}>>:-Wno-subobject-linkage>
    # Programs read headers that were precompiled for libraries, so both need one kind of code. Qt asks for it up to 6.4.
    $<$<NOT:$<BOOL:${CMAKE_DISABLE_PRECOMPILE_HEADERS}>>:-fPIC>)

# No accidental conversion between bytes and text, no Qt keywords that look like the language's.
target_compile_definitions(VardaOptions INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_KEYWORDS
    QT_NO_FOREACH
    QT_STRICT_ITERATORS
    QT_USE_QSTRINGBUILDER
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)

# Links three times as fast. What people run is linked by the system's own linker.
if(CMAKE_BUILD_TYPE STREQUAL Debug)
    include(CheckLinkerFlag)
    check_linker_flag(CXX -fuse-ld=mold VARDA_HAS_MOLD)
    if(VARDA_HAS_MOLD)
        target_link_options(VardaOptions INTERFACE -fuse-ld=mold)
    endif()
endif()

# The release build is hardened: it runs tools on bytes that a phone sends.
option(VARDA_HARDENING "Build position independent, with full RELRO, FORTIFY and stack protection" OFF)
if(VARDA_HARDENING)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
    target_compile_options(VardaOptions INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
    # Keeps the folder of the checkout out of the program. Not asked for: the question would fail on a folder with a space.
    target_compile_options(VardaOptions INTERFACE "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.")
    # Not every processor and compiler has all of these.
    include(CheckCXXCompilerFlag)
    foreach(option -fstack-protector-strong -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
        string(MAKE_C_IDENTIFIER "VARDA_HAS${option}" known)
        check_cxx_compiler_flag("${option}" ${known})
        if(${known})
            target_compile_options(VardaOptions INTERFACE "${option}")
        endif()
    endforeach()
    target_link_options(VardaOptions INTERFACE -pie -Wl,-z,relro,-z,now,-z,noexecstack)
endif()
