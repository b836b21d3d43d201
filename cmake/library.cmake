# SPDX-License-Identifier: Apache-2.0
# libqeljx.so and libqeljx.a.

file(GLOB_RECURSE QELJX_FILES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*.cpp)
list(FILTER QELJX_FILES EXCLUDE REGEX "_kernels\\.cpp$")

if(QELJX_OPENMP)
    find_package(OpenMP REQUIRED COMPONENTS CXX)
endif()

string(TIMESTAMP QELJX_BUILD_DATE "%Y-%m-%d" UTC)
set_property(SOURCE ${PROJECT_SOURCE_DIR}/src/core/version.cpp PROPERTY COMPILE_DEFINITIONS
    QEL_VERSION_MAJOR=${PROJECT_VERSION_MAJOR} QEL_VERSION_MINOR=${PROJECT_VERSION_MINOR}
    QEL_VERSION_PATCH=${PROJECT_VERSION_PATCH} QEL_VERSION="${PROJECT_VERSION}" QEL_BUILD_DATE="${QELJX_BUILD_DATE}")

# Nothing in the library calls the internal functions that it exports: most have no header.
file(GLOB_RECURSE QELJX_DOORS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*_doors.cpp)
set_source_files_properties(${QELJX_DOORS} PROPERTIES COMPILE_OPTIONS -Wno-missing-declarations)

add_library(qeljx_objects OBJECT ${QELJX_FILES})
target_include_directories(qeljx_objects PRIVATE src include)
target_compile_options(qeljx_objects PRIVATE -fno-exceptions -fno-rtti)
if(QELJX_OPENMP)
    target_link_libraries(qeljx_objects PRIVATE OpenMP::OpenMP_CXX)
endif()

# The version script: the interface and the internal functions are exported by name, whatever the compiler would add.
# The interface bears the number of the ABI; nobody but the tests is to rely on the internal names.
file(GLOB QELJX_HEADERS CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/qeljx/*.h)
set(QELJX_INTERNAL_EXPORTS ${PROJECT_SOURCE_DIR}/cmake/internal_exports.txt)
set(QELJX_EXPORT_MAP ${PROJECT_BINARY_DIR}/qeljx.map)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${QELJX_HEADERS} ${QELJX_INTERNAL_EXPORTS})
file(STRINGS ${QELJX_INTERNAL_EXPORTS} internal_exports)
foreach(header ${QELJX_HEADERS})
    file(READ ${header} text)
    string(REGEX MATCHALL "QEL_API [A-Za-z0-9_ *]*[ *]qel[ijs][A-Za-z0-9_]*\\(" declarations "${text}")
    foreach(declaration ${declarations})
        string(REGEX REPLACE ".*[ *](qel[a-z][A-Za-z0-9_]*)\\($" "\\1" name "${declaration}")
        list(APPEND exports ${name})
    endforeach()
endforeach()
if(WIN32)
    include(cmake/windows_exports.cmake)
endif()
list(JOIN exports "$<SEMICOLON>\n    " exports)
list(JOIN internal_exports "$<SEMICOLON>\n    " internal_exports)
file(GENERATE OUTPUT ${QELJX_EXPORT_MAP} CONTENT
    "QELJX_${QELJX_ABI} {\nglobal:\n    ${exports}$<SEMICOLON>\nlocal:\n    *$<SEMICOLON>\n}$<SEMICOLON>
QELJX_PRIVATE {\nglobal:\n    ${internal_exports}$<SEMICOLON>\n}$<SEMICOLON>\n")

add_library(qeljx SHARED $<TARGET_OBJECTS:qeljx_objects> ${QELJX_KERNEL_OBJECTS})
add_library(qeljx_static STATIC $<TARGET_OBJECTS:qeljx_objects> ${QELJX_KERNEL_OBJECTS})
set_target_properties(qeljx PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${QELJX_ABI} LINKER_LANGUAGE C
    LINK_DEPENDS ${QELJX_EXPORT_MAP})
set_target_properties(qeljx_static PROPERTIES OUTPUT_NAME qeljx EXPORT_NAME qeljx_static)
if(WIN32)
    target_sources(qeljx PRIVATE ${QELJX_EXPORT_DEFINITION})
else()
    target_link_options(qeljx PRIVATE
        -Wl,-Bsymbolic -Wl,-z,relro -Wl,-z,now -Wl,--as-needed -Wl,--version-script=${QELJX_EXPORT_MAP})
endif()
# An instrumented library finds the sanitizers in the program.
if(NOT QELJX_FUZZ)
    target_link_options(qeljx PRIVATE -Wl,--no-undefined)
endif()
foreach(target qeljx qeljx_static)
    target_include_directories(${target} INTERFACE
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    if(QELJX_OPENMP)
        target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:OpenMP::OpenMP_CXX>)
    endif()
endforeach()
# The OpenMP runtime by the names of its libraries, so that a C project needs no OpenMP of its own to link the archive.
# Every compiler finds GCC's runtime; others lie where only their own compiler looks.
set(QELJX_STATIC_LIBRARIES "")
set(QELJX_STATIC_FOLDERS "")
if(QELJX_OPENMP)
    set(QELJX_STATIC_LIBRARIES ${OpenMP_CXX_LIB_NAMES})
    if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        list(GET OpenMP_CXX_LIB_NAMES 0 runtime)
        cmake_path(GET OpenMP_${runtime}_LIBRARY PARENT_PATH QELJX_STATIC_FOLDERS)
    endif()
endif()
target_link_directories(qeljx_static INTERFACE "$<INSTALL_INTERFACE:${QELJX_STATIC_FOLDERS}>")
target_link_libraries(qeljx_static INTERFACE "$<INSTALL_INTERFACE:${QELJX_STATIC_LIBRARIES}>")
add_library(qeljx::qeljx ALIAS qeljx)
