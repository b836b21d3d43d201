// SPDX-License-Identifier: Apache-2.0
// Argument checks: one list per function, in the order in which faults are reported.
//     if (QelStatus bad = first(pointers(pSrc, pDst), steps(srcStep, dstStep), size(roi))) return bad;
// Each test is total: it reads through no null pointer and has no effect.
#pragma once

#include "qeljx/types.h"

namespace qel {

template <class... Statuses> inline QelStatus first(Statuses... statuses)
{
    QelStatus found = qelStsNoErr;
    (void)((found = statuses, found != qelStsNoErr) || ...);
    return found;
}

template <class... Pointers> inline QelStatus pointers(const Pointers*... p)
{
    return (... && (p != nullptr)) ? qelStsNoErr : qelStsNullPtrErr;
}

// An array of kPlanes plane pointers, and each plane.
template <int kPlanes, class T> inline QelStatus planes(T* const* p)
{
    if (p == nullptr) return qelStsNullPtrErr;
    for (int i = 0; i < kPlanes; ++i)
        if (p[i] == nullptr) return qelStsNullPtrErr;
    return qelStsNoErr;
}

template <class... Steps> inline QelStatus steps(Steps... step)
{
    return (... && (step >= 1)) ? qelStsNoErr : qelStsStepErr;
}

inline QelStatus size(QelSize roi) { return roi.width >= 1 && roi.height >= 1 ? qelStsNoErr : qelStsSizeErr; }
inline QelStatus length(int len) { return len >= 1 ? qelStsNoErr : qelStsSizeErr; }
inline QelStatus values(bool allAllowed) { return allAllowed ? qelStsNoErr : qelStsBadArgErr; }

}
