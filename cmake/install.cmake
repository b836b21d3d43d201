# Installation: headers, both libraries, qelpic, the CMake package and the pkg-config file. The installed tree may be
# moved as a whole.
include(CMakePackageConfigHelpers)

set(QELJX_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qeljx)
set(QELJX_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(TARGETS qeljx qeljx_static EXPORT qeljx_targets)
install(EXPORT qeljx_targets NAMESPACE qeljx:: DESTINATION ${QELJX_PACKAGE_DIR})
configure_package_config_file(cmake/qeljx-config.cmake.in qeljx-config.cmake INSTALL_DESTINATION ${QELJX_PACKAGE_DIR})
write_basic_package_version_file(qeljx-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qeljx-config.cmake ${PROJECT_BINARY_DIR}/qeljx-config-version.cmake
    DESTINATION ${QELJX_PACKAGE_DIR})

# What the archive needs beside itself, as linker flags.
list(TRANSFORM QELJX_STATIC_LIBRARIES PREPEND -l OUTPUT_VARIABLE QELJX_PRIVATE_LIBS)
list(TRANSFORM QELJX_STATIC_FOLDERS PREPEND -L OUTPUT_VARIABLE folders)
list(PREPEND QELJX_PRIVATE_LIBS ${folders})
list(JOIN QELJX_PRIVATE_LIBS " " QELJX_PRIVATE_LIBS)
file(RELATIVE_PATH QELJX_PREFIX_FROM_PKGCONFIG /prefix/${QELJX_PKGCONFIG_DIR} /prefix)
configure_file(cmake/qeljx.pc.in qeljx.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qeljx.pc DESTINATION ${QELJX_PKGCONFIG_DIR})

if(QELJX_APPS)
    file(RELATIVE_PATH lib_from_bin /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
    set_target_properties(qelpic PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
    install(TARGETS qelpic)
endif()
