// SPDX-License-Identifier: Apache-2.0
// What the tables of kernels are made of.
#pragma once

// In the table of a family: one for each build of its kernels. The first line are the instruction sets that
// core/dispatch.h chooses among, the second the builds that only tests link (cmake/kernels.cmake).
#define QEL_BUILDS(FAMILY)                                                                                             \
    static const FAMILY baseline, avx2, avx512;                                                                        \
    static const FAMILY scalar, wide16, wide32, wide64

namespace qel {

// A kernel for rows, and the same with non-temporal stores (core/streaming.h), if there is one.
template <class Row> struct Streamable {
    Row *cached, *streamed;

    template <class... Arguments> void operator()(Arguments... arguments) const { cached(arguments...); }
};

}
