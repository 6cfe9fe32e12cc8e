# What `cmake --install` puts where. The package files find their own place, so an installed tree can be moved.

include(CMakePackageConfigHelpers)

install(TARGETS hcbase zrlib
    EXPORT zrlib-targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

install(TARGETS zrobservers
    EXPORT zrlib-observers-targets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT observers
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT observers NAMELINK_COMPONENT observers_development
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT observers_development
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT observers_development)
install(TARGETS zrinfo RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES observers/zrinfo.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
if(TARGET zrtrace)
    install(TARGETS zrtrace RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
    install(FILES observers/zrtrace.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()

# find_package(zrlib CONFIG [COMPONENTS observers])
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/zrlib")
install(FILES cmake/zrlib-config.cmake DESTINATION "${package_dir}" COMPONENT development)
# Each target is also in the namespace of its own name, hcbase::hcbase and zrlib::zrlib.
set_target_properties(hcbase PROPERTIES EXPORT_NAME hcbase::hcbase)
set_target_properties(zrlib PROPERTIES EXPORT_NAME zrlib::zrlib)
install(EXPORT zrlib-targets DESTINATION "${package_dir}" COMPONENT development)
set_target_properties(zrobservers PROPERTIES EXPORT_NAME observers)
install(EXPORT zrlib-observers-targets NAMESPACE zrlib:: DESTINATION "${package_dir}" COMPONENT observers_development)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/zrlib-config-version.cmake" COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/zrlib-config-version.cmake" DESTINATION "${package_dir}" COMPONENT development)

# pkg-config zrlib, pkg-config zrobservers
set(pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH prefix_from_pkgconfig "/${pkgconfig_dir}" "/")
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig "${prefix_from_pkgconfig}")
foreach(package hcbase zrlib)
    configure_file(cmake/${package}.pc.in "${PROJECT_BINARY_DIR}/${package}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${package}.pc" DESTINATION "${pkgconfig_dir}" COMPONENT development)
endforeach()
configure_file(cmake/zrobservers.pc.in "${PROJECT_BINARY_DIR}/zrobservers.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zrobservers.pc" DESTINATION "${pkgconfig_dir}" COMPONENT observers_development)

install(FILES README.md CHANGELOG.md docs/guide.md docs/porting.md DESTINATION "${CMAKE_INSTALL_DOCDIR}" COMPONENT development)

# gdb shows texts, records and containers as what they are. It loads a library's printers by itself with the library, from
# a folder named after the library's own place below the one for all such scripts; elsewhere one says "source" with them.
if(NOT WIN32)
    foreach(library hcbase zrlib)
        install(FILES tools/${library}-gdb.py
            DESTINATION "${CMAKE_INSTALL_DATADIR}/gdb/auto-load${CMAKE_INSTALL_FULL_LIBDIR}"
            RENAME "$<TARGET_FILE_NAME:${library}>-gdb.py"
            COMPONENT development)
    endforeach()
endif()
