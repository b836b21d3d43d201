// SPDX-License-Identifier: Apache-2.0
// The version record.
#include "qeljx/support.h"

namespace {

// "v4" stands for the AVX-512 level of x86-64 (x86-64-v4), "pc" for portable code.
constexpr QelLibraryVersion kVersion = {
    QEL_VERSION_MAJOR, QEL_VERSION_MINOR, QEL_VERSION_PATCH, 0,
#if QEL_X86
    {'v', '4', 0, 0},
#else
    {'p', 'c', 0, 0},
#endif
    "libqeljx.so",     QEL_VERSION,       QEL_BUILD_DATE,
};

}

const QelLibraryVersion* qeljGetLibVersion(void) { return &kVersion; }
