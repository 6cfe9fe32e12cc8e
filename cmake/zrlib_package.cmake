# What `cpack` makes: on Linux Debian packages, for programs, for those who write them, for those who debug them, and for
# those who watch them; for Windows a zip with libraries and headers.

set(CPACK_PACKAGE_CONTACT "The ZRLib developers <developers@zrlib.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DESCRIPTION_FILE "${PROJECT_SOURCE_DIR}/cmake/package_description.txt")
set(CPACK_PACKAGE_VENDOR "ZRLib")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_COMPONENTS_ALL runtime development observers observers_development tools)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_OBSERVERS_DEPENDS runtime)
set(CPACK_COMPONENT_OBSERVERS_DEVELOPMENT_DEPENDS observers development)

if(WIN32)
    set(CPACK_GENERATOR ZIP)
    set(CPACK_STRIP_FILES ON)
    set(CPACK_PACKAGE_FILE_NAME "zrlib-${PROJECT_VERSION}-windows-x86_64")
    # The run-time libraries of the compiler, without which nothing built with it starts.
    foreach(library IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
        execute_process(
            COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${library}
            OUTPUT_VARIABLE file
            OUTPUT_STRIP_TRAILING_WHITESPACE)
        if(NOT EXISTS "${file}") # that of the threads lies with the system's libraries
            set(file "/usr/x86_64-w64-mingw32/lib/${library}")
        endif()
        install(FILES "${file}" DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
    endforeach()
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_DEB_COMPONENT_INSTALL ON)
    set(CPACK_COMPONENT_TOOLS_DEPENDS observers)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
    set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzrlib${PROJECT_VERSION_MAJOR})
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
    set(CPACK_DEBIAN_DEBUGINFO_PACKAGE ON) # strips, and what is stripped goes to a package with -dbgsym behind its name
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzrlib-dev)
    set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
    set(CPACK_DEBIAN_OBSERVERS_PACKAGE_NAME libzrobservers1)
    set(CPACK_DEBIAN_OBSERVERS_PACKAGE_SECTION libs)
    set(CPACK_DEBIAN_OBSERVERS_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_OBSERVERS_DESCRIPTION "${PROJECT_DESCRIPTION}: ready-made observers")
    set(CPACK_DEBIAN_OBSERVERS_DEVELOPMENT_PACKAGE_NAME libzrobservers-dev)
    set(CPACK_DEBIAN_OBSERVERS_DEVELOPMENT_PACKAGE_SECTION libdevel)
    set(CPACK_DEBIAN_OBSERVERS_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION}: headers of ready-made observers")
    set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zrlib-tools)
    set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
    set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
    set(CPACK_DEBIAN_TOOLS_DESCRIPTION "${PROJECT_DESCRIPTION}: zrtrace, which observes any program, and zrinfo")
    set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "${PROJECT_DESCRIPTION}: headers")
endif()

include(CPack)
