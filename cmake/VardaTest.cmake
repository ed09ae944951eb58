# How a test program and a stand-in for a tool are added. One test program per subject. Each gets a folder of its own,
# shaped like an installation (<name>/bin/<name>, <name>/lib/varda/Tools), so that a test can stage tools beside itself.
# For each label there is a target that builds the programs of that label: `core-tests` and so on.
find_package(Qt6 6.4 REQUIRED COMPONENTS Test Network)

# The QTRY_ macros of these versions of Qt put milliseconds into an int. Linked after the project's options to come later
# on the command line.
add_library(VardaTestMacros INTERFACE)
if(Qt6_VERSION VERSION_GREATER_EQUAL 6.7 AND Qt6_VERSION VERSION_LESS 6.9)
    target_compile_options(VardaTestMacros INTERFACE -Wno-conversion)
endif()

# The tests with one of these labels run under the address sanitizer (Scripts/sanitize) and have the label `sanitized`,
# too. Preset `rest` builds what is left.
set(VARDA_SANITIZED_LABELS values core model faults security lifetime view)
option(VARDA_SANITIZED_TESTS "Build the tests that run under the address sanitizer by default" ON)

# About the seconds of the longest tests: a system that has not run them yet starts them first, too.
set(cost_of_ModelFaultsTest 69)
set(cost_of_RealWirelessTest 64) # waits for a pairing's time-out, 40 s, and for adb's, 10 s
set(cost_of_LivePhoneTest 39)
set(cost_of_PhoneScrcpyClientTest 29)
set(cost_of_RandomGesturesTest 23)
set(cost_of_EndToEndTest 21)
set(cost_of_WindowTest 20)
set(cost_of_LifecycleTest 19)
set(cost_of_LifetimeTest 18)
set(cost_of_LostPhoneTest 13)

# varda_add_test(<name> SOURCES <the tests> ... [LIBRARIES ...] [ENVIRONMENT ...] [LABELS ...] [TIMEOUT seconds] [LAUNCHER command ...])
function(varda_add_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT" "SOURCES;LIBRARIES;ENVIRONMENT;LABELS;LAUNCHER")
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    if(arg_LABELS IN_LIST VARDA_SANITIZED_LABELS)
        list(APPEND arg_LABELS sanitized)
    endif()
    set(home "${CMAKE_CURRENT_BINARY_DIR}/${name}")
    add_executable(${name} ${arg_SOURCES})
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${home}/bin")
    file(MAKE_DIRECTORY "${home}/lib/varda/Tools")
    target_link_libraries(${name} PRIVATE Varda::Options VardaTestMacros Qt6::Test ${arg_LIBRARIES})
    # One source with a class of tests needs one pass of moc, and no search through its headers.
    list(GET arg_SOURCES 0 source)
    get_filename_component(stem "${source}" NAME_WE)
    qt6_generate_moc(${source} "${home}/moc/${stem}.moc" TARGET ${name})
    target_sources(${name} PRIVATE "${home}/moc/${stem}.moc")
    target_include_directories(${name} PRIVATE "${home}/moc")
    if("ViewSupport" IN_LIST arg_LIBRARIES)
        target_precompile_headers(${name} REUSE_FROM VardaView)
    else()
        target_precompile_headers(${name} REUSE_FROM VardaCore)
    endif()
    add_test(NAME ${name} COMMAND ${arg_LAUNCHER} $<TARGET_FILE:${name}>)
    # In the C locale, a fresh system's, newer versions of Qt complain on standard error.
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${arg_TIMEOUT} ENVIRONMENT "LC_ALL=C.UTF-8;${arg_ENVIRONMENT}" LABELS "${arg_LABELS}")
    if(cost_of_${name})
        set_tests_properties(${name} PROPERTIES COST ${cost_of_${name}})
    endif()
    if("sanitized" IN_LIST arg_LABELS AND NOT VARDA_SANITIZED_TESTS)
        set_target_properties(${name} PROPERTIES EXCLUDE_FROM_ALL ON)
    endif()
    foreach(label IN LISTS arg_LABELS)
        if(NOT TARGET ${label}-tests)
            add_custom_target(${label}-tests)
        endif()
        add_dependencies(${label}-tests ${name})
    endforeach()
endfunction()

# Without shared libraries, where the system has the static ones, a stand-in starts in half the time.
execute_process(COMMAND "${CMAKE_CXX_COMPILER}" -print-file-name=rcrt1.o
    OUTPUT_VARIABLE static_start OUTPUT_STRIP_TRAILING_WHITESPACE)

# varda_add_stand_in(<name>): the program <name>.cpp, which tests run in place of a real tool. Never instrumented: it is to
# start in about a millisecond, to hold no descriptor and to handle no signal of its own, and a sanitizer's report would be
# taken for the tool's.
function(varda_add_stand_in name)
    add_executable(${name} ${name}.cpp)
    target_link_libraries(${name} PRIVATE Varda::Options)
    target_compile_options(${name} PRIVATE -O1 -fPIE -fno-sanitize=all)
    target_link_options(${name} PRIVATE -fno-sanitize=all)
    if(IS_ABSOLUTE "${static_start}")
        target_link_options(${name} PRIVATE -static-pie)
    endif()
    set_target_properties(${name} PROPERTIES
        RUNTIME_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
endfunction()
