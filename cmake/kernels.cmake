# SPDX-License-Identifier: Apache-2.0
# Kernels: every *_kernels.cpp of src is compiled once per build. A build is an instruction set ("baseline", "avx2",
# "avx512"), or for the tests plain C++ at one register width ("scalar", "wide16", "wide32", "wide64").

include(CheckCXXCompilerFlag)

file(GLOB_RECURSE QELJX_KERNEL_FILES CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*_kernels.cpp)

# Processors with AVX-512 take the AVX2 build of these (QEL_BUILDS_TO_AVX2): blocks of eight rows, unaligned rows, and
# packs to bytes are slower in registers of 64 bytes, and what has no vectors is slower by longer instructions.
set(QELJX_KERNELS_TO_AVX2 dct huffman_decode level_shift prediction)

# qeljx_kernel_build(NAME WIDTH INTRINSICS FLAGS...): the object library qeljx_kernels_NAME.
# A build named BUILD_emulated stands in for BUILD and bears its name in the source.
function(qeljx_kernel_build name width intrinsics)
    string(REPLACE "_emulated" "" build ${name})
    # Wider steps take the bytes of a word from the lowest one on.
    if(CMAKE_CXX_BYTE_ORDER STREQUAL "BIG_ENDIAN")
        set(width 1)
    endif()
    set(files ${QELJX_KERNEL_FILES})
    if(build STREQUAL "avx512")
        list(JOIN QELJX_KERNELS_TO_AVX2 "|" families)
        list(FILTER files EXCLUDE REGEX "/(${families})_kernels")
    endif()
    add_library(qeljx_kernels_${name} OBJECT ${files})
    target_include_directories(qeljx_kernels_${name} PRIVATE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
    target_compile_definitions(qeljx_kernels_${name} PRIVATE
        QEL_BUILD=${build} QEL_WIDTH=${width} QEL_INTRINSICS=${intrinsics})
    target_compile_options(qeljx_kernels_${name} PRIVATE -fno-exceptions -fno-rtti -fwrapv -Wno-psabi ${ARGN})
    # GCC keeps the stack aligned to 16 bytes there, and takes it for 64 where wider registers are kept on it.
    if(WIN32 AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(qeljx_kernels_${name} PRIVATE -Wa,-muse-unaligned-vector-move)
    endif()
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
        # Vectors are written by hand; the compiler's own vectorisation made kernels larger and slower.
        target_compile_options(qeljx_kernels_${name} PRIVATE -O2 -fno-tree-vectorize)
    endif()
endfunction()

# The same for the tests alone. Operations that are walked lane by lane stay functions, compiled in a fifth of the time.
# The undefined-behaviour sanitizer takes minutes over the wide ones; the scalar and the intrinsic builds show it the
# same source.
function(qeljx_test_kernel_build name width)
    qeljx_kernel_build(${name} ${width} 0)
    target_compile_definitions(qeljx_kernels_${name} PRIVATE QEL_INLINE=inline QEL_INLINE_BODY=)
    target_compile_options(qeljx_kernels_${name} PRIVATE ${ARGN})
    if(NOT CMAKE_BUILD_TYPE STREQUAL "Debug")
        target_compile_options(qeljx_kernels_${name} PRIVATE -Og)
    endif()
endfunction()

if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
    # On 32-bit processors floats would else be computed on the x87 stack, with other last bits: all builds are to
    # agree, and what is not a kernel too.
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        add_compile_options(-msse2 -mfpmath=sse)
    endif()
    qeljx_kernel_build(baseline 16 1)
    qeljx_kernel_build(avx2 32 1 -mavx2 -mbmi -mbmi2 -mlzcnt -mpopcnt)
    qeljx_kernel_build(avx512 64 1
        -mavx2 -mbmi -mbmi2 -mlzcnt -mpopcnt -mavx512f -mavx512bw -mavx512cd -mavx512dq -mavx512vl
        -mavx512vbmi -mavx512vbmi2)
    # GCC 12 warns about the undefined registers inside its own AVX-512 header.
    target_compile_options(qeljx_kernels_avx512 PRIVATE
        $<$<CXX_COMPILER_ID:GNU>:-Wno-uninitialized> $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    set(QELJX_KERNEL_BUILDS baseline avx2 avx512)
    add_compile_definitions(QEL_X86=1)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64|ARM64)$")
    qeljx_kernel_build(baseline 16 1)
    set(QELJX_KERNEL_BUILDS baseline)
    add_compile_definitions(QEL_X86=0)
else()
    qeljx_kernel_build(baseline 16 0)
    set(QELJX_KERNEL_BUILDS baseline)
    add_compile_definitions(QEL_X86=0)
endif()

# GCC would keep addresses in vector registers, and make each constant in a general one first. Coders that work in
# general registers do not mind.
check_cxx_compiler_flag(-mtune-ctrl=^inter_unit_moves_to_vec QELJX_HAS_TUNE_CTRL)
if(QELJX_HAS_TUNE_CTRL)
    foreach(kernels jpeg/colour/colour jpeg/colour/mcu jpeg/entropy/huffman_encode)
        set_source_files_properties(${PROJECT_SOURCE_DIR}/src/${kernels}_kernels.cpp PROPERTIES
            COMPILE_OPTIONS -mtune-ctrl=^inter_unit_moves_to_vec)
    endforeach()
endif()

if(QELJX_TESTS)
    qeljx_test_kernel_build(scalar 1)
    qeljx_test_kernel_build(wide16 16 -fno-sanitize=undefined)
    qeljx_test_kernel_build(wide32 32 -fno-sanitize=undefined)
    qeljx_test_kernel_build(wide64 64 -fno-sanitize=undefined)
    set(QELJX_TEST_KERNEL_BUILDS ${QELJX_KERNEL_BUILDS} scalar wide16 wide32 wide64)
    # Only the tests link the emulated kernels; the libraries keep the real ones.
    if(QELJX_EMULATE_AVX512)
        qeljx_kernel_build(avx512_emulated 64 1
            -mavx2 -mbmi -mbmi2 -mlzcnt -mpopcnt -isystem ${PROJECT_SOURCE_DIR}/tests/emulation)
        list(REMOVE_ITEM QELJX_TEST_KERNEL_BUILDS avx512)
        list(APPEND QELJX_TEST_KERNEL_BUILDS avx512_emulated)
    endif()
endif()

set(QELJX_KERNEL_OBJECTS)
foreach(build ${QELJX_KERNEL_BUILDS})
    list(APPEND QELJX_KERNEL_OBJECTS $<TARGET_OBJECTS:qeljx_kernels_${build}>)
endforeach()
