# SPDX-License-Identifier: Apache-2.0
set(QELJX_TRIPLET s390x-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(CMAKE_LIBRARY_ARCHITECTURE s390x-linux-gnu)
set(QELJX_RUNNER qemu-s390x -L ${QELJX_SYSROOT})
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
