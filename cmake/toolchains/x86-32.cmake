# SPDX-License-Identifier: Apache-2.0
# Nothing is emulated: the loader of the other libraries runs the programs.
set(QELJX_TRIPLET i686-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(QELJX_RUNNER ${QELJX_SYSROOT}/lib/ld-linux.so.2 --library-path
    ${QELJX_SYSROOT}/lib/i386-linux-gnu:${QELJX_SYSROOT}/usr/lib/i386-linux-gnu)
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
