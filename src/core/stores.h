// Where kernels store what they make. Included by core/simd.h.
#pragma once

#include "core/simd.h"

namespace qel {
namespace QEL_BUILD {
namespace {

// Two ways to store a register: into the caches; or past them, where its address is aligned.
struct IntoCaches {
    template <class V> static QEL_INLINE void store(void* p, V v) { qel::QEL_BUILD::store(p, v); }
};
struct PastCaches {
    template <class V> static QEL_INLINE void store(void* p, V v)
    {
        constexpr int kBytes = int(sizeof(V));
        if ((uintptr_t)p % kBytes == 0)
            Simd<kBytes>::storePast(p, v);
        else
            qel::QEL_BUILD::store(p, v);
    }
};

}
}
}
