# SPDX-License-Identifier: Apache-2.0
# qeljx_precompile(TARGET PUBLIC|PRIVATE|INTERFACE HEADER...): headers that nearly every file of a target includes are
# read once. Not beside a compiler cache, which would have to keep all objects anew whenever one of them changes.
function(qeljx_precompile target scope)
    if(CMAKE_DISABLE_PRECOMPILE_HEADERS OR CMAKE_CXX_COMPILER_LAUNCHER)
        return()
    endif()
    target_precompile_headers(${target} ${scope} ${ARGN})
    # GCC 12 forgets which warnings its own library has suppressed; builds without precompiled headers have them all.
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(${target} ${scope}
            -Wno-array-bounds -Wno-restrict -Wno-stringop-overflow -Wno-stringop-overread)
    endif()
endfunction()
