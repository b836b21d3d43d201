# SPDX-License-Identifier: Apache-2.0
# Installation: headers, both libraries, qelpic, the CMake package and the pkg-config file. The installed tree may be
# moved as a whole, unless its folders are absolute.
include(CMakePackageConfigHelpers)

set(QELJX_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qeljx)
set(QELJX_PKGCONFIG_DIR ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(TARGETS qeljx qeljx_static EXPORT qeljx_targets)
install(EXPORT qeljx_targets NAMESPACE qeljx:: DESTINATION ${QELJX_PACKAGE_DIR})
configure_package_config_file(cmake/qeljx-config.cmake.in qeljx-config.cmake INSTALL_DESTINATION ${QELJX_PACKAGE_DIR})
write_basic_package_version_file(qeljx-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qeljx-config.cmake ${PROJECT_BINARY_DIR}/qeljx-config-version.cmake
    DESTINATION ${QELJX_PACKAGE_DIR})

# What the archive needs beside itself, as linker flags.
list(TRANSFORM QELJX_STATIC_LIBRARIES PREPEND -l OUTPUT_VARIABLE QELJX_PRIVATE_LIBS)
list(TRANSFORM QELJX_STATIC_FOLDERS PREPEND -L OUTPUT_VARIABLE folders)
list(PREPEND QELJX_PRIVATE_LIBS ${folders})
list(JOIN QELJX_PRIVATE_LIBS " " QELJX_PRIVATE_LIBS)
foreach(folder LIBDIR INCLUDEDIR)
    cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_${folder} BASE_DIRECTORY "\${prefix}" OUTPUT_VARIABLE QELJX_PC_${folder})
endforeach()
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
    set(QELJX_PC_PREFIX ${CMAKE_INSTALL_PREFIX})
else()
    file(RELATIVE_PATH up /prefix/${QELJX_PKGCONFIG_DIR} /prefix)
    set(QELJX_PC_PREFIX "\${pcfiledir}/${up}")
endif()
configure_file(cmake/qeljx.pc.in qeljx.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qeljx.pc DESTINATION ${QELJX_PKGCONFIG_DIR})

if(QELJX_APPS)
    if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR} OR IS_ABSOLUTE ${CMAKE_INSTALL_BINDIR})
        set(qelpic_rpath ${CMAKE_INSTALL_FULL_LIBDIR})
    else()
        file(RELATIVE_PATH lib_from_bin /prefix/${CMAKE_INSTALL_BINDIR} /prefix/${CMAKE_INSTALL_LIBDIR})
        set(qelpic_rpath "$ORIGIN/${lib_from_bin}")
    endif()
    set_target_properties(qelpic PROPERTIES INSTALL_RPATH ${qelpic_rpath})
    install(TARGETS qelpic)
    if(QELPIC_PAGES)
        install(FILES ${QELPIC_PAGES}/qelpic.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
        install(FILES ${QELPIC_PAGES}/qelpic DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
        install(FILES ${QELPIC_PAGES}/_qelpic DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
        install(FILES ${QELPIC_PAGES}/qelpic.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
    endif()
endif()
