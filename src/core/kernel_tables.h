// SPDX-License-Identifier: Apache-2.0
// What the tables of kernels are made of.
#pragma once

// In the table of a family: one for each build of its kernels. core/dispatch.h chooses among instruction sets; the
// other builds are linked by tests alone (cmake/kernels.cmake).
#define QEL_BUILDS(FAMILY)                                                                                             \
    QEL_BUILDS_TO_AVX2(FAMILY);                                                                                        \
    static const FAMILY avx512
// Of a family that gains nothing by AVX-512.
#define QEL_BUILDS_TO_AVX2(FAMILY)                                                                                     \
    static const FAMILY baseline, avx2;                                                                                \
    static const FAMILY scalar, wide16, wide32, wide64

namespace qel {

// A kernel for rows, and the same with non-temporal stores (core/streaming.h), if there is one.
template <class Row> struct Streamable {
    Row *cached, *streamed;

    template <class... Arguments> void operator()(Arguments... arguments) const { cached(arguments...); }
};

}
