# How the two shared libraries, and the programs beside them, are compiled.

find_package(Threads REQUIRED)

# What every target of this project is compiled with. Not passed on to clients.
add_library(zrlib_compile_options INTERFACE)
target_compile_features(zrlib_compile_options INTERFACE cxx_std_20)
# Results are promised with each operation rounded by itself, whatever the processor offers.
target_compile_options(zrlib_compile_options INTERFACE -ffp-contract=off)
target_compile_options(zrlib_compile_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion)
target_compile_options(zrlib_compile_options INTERFACE
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety> $<$<CXX_COMPILER_ID:GNU>:-Wunused-const-variable=1>)
# g++ 12 warns of overlapping copies inside its own std::string (gcc bug 105651).
target_compile_options(zrlib_compile_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)
if(ZRLIB_WARNINGS_AS_ERRORS)
    target_compile_options(zrlib_compile_options INTERFACE -Werror)
endif()

# zrlib_add_shared_library(name version soversion prefix [BASE folder] HEADERS headers... SOURCES sources...)
#
# A shared library with hidden visibility, the alias <name>::<name>, and the given public headers, which are included by
# their path from BASE, by default the root of the project. prefix: how its exported names begin, as a pattern of the linker.
function(zrlib_add_shared_library name version soversion prefix)
    cmake_parse_arguments(PARSE_ARGV 4 library "" "BASE" "HEADERS;SOURCES")
    if(NOT library_BASE)
        set(library_BASE "${PROJECT_SOURCE_DIR}")
    endif()
    add_library(${name} SHARED)
    add_library(${name}::${name} ALIAS ${name})
    target_sources(${name} PRIVATE ${library_SOURCES})
    target_sources(${name} PUBLIC FILE_SET HEADERS BASE_DIRS "${library_BASE}" FILES ${library_HEADERS})
    target_compile_features(${name} PUBLIC cxx_std_17)
    target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:zrlib_compile_options> PUBLIC Threads::Threads)
    set_target_properties(${name} PROPERTIES
        VERSION ${version}
        SOVERSION ${soversion}
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        CXX_EXTENSIONS OFF)
    if(WIN32)
        set_target_properties(${name} PROPERTIES PREFIX "")
    else()
        # Unique symbols would keep an unloaded library mapped. What the library uses of itself it reaches directly, but
        # for data that a client's program may hold a copy of. Code and constants in one segment: each segment that
        # there is costs as much at load as all initialisers together.
        target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique> -fno-semantic-interposition)
        set(exports "${CMAKE_CURRENT_BINARY_DIR}/exports.map")
        set(shared_data "${CMAKE_CURRENT_BINARY_DIR}/shared_data.list")
        configure_file("${PROJECT_SOURCE_DIR}/cmake/exports.map.in" "${exports}" @ONLY)
        configure_file("${PROJECT_SOURCE_DIR}/cmake/shared_data.list.in" "${shared_data}" @ONLY)
        target_link_options(${name} PRIVATE
            "-Wl,--dynamic-list=${shared_data}" "-Wl,--version-script=${exports}" -Wl,-z,noseparate-code)
        set_target_properties(${name} PROPERTIES LINK_DEPENDS "${exports};${shared_data}")
        if(NOT ZRLIB_SANITIZE)
            target_link_options(${name} PRIVATE -Wl,-z,defs)
        endif()
    endif()
endfunction()
