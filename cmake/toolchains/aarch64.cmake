# SPDX-License-Identifier: Apache-2.0
set(QELJX_TRIPLET aarch64-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)
set(QELJX_RUNNER qemu-aarch64 -L ${QELJX_SYSROOT})
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
