# SPDX-License-Identifier: Apache-2.0
set(QELJX_TRIPLET arm-linux-gnueabihf)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi) # notes about compilers before GCC 7
set(QELJX_RUNNER qemu-arm -L ${QELJX_SYSROOT})
include(${CMAKE_CURRENT_LIST_DIR}/debian_cross.cmake)
