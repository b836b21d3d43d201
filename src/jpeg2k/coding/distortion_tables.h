// SPDX-License-Identifier: Apache-2.0
// How much coding decisions reduce the squared error (T.800 J.14).
#pragma once

#include <stdint.h>

#include "core/exports.h"

namespace qel {

template <int kEntries> struct DistortionTable {
    int32_t entries[kEntries];
};
constexpr int kDistortionFractionBits = 13;

}

// In units of 2^-13 of the square of the plane's step: by the magnitude's six bits below the plane for a sample that
// becomes significant, and by those with the plane's own for one that is refined. Decoders take the middle of the
// interval that is left, or its lower end where nothing is left out.
QEL_TABLE const qel::DistortionTable<64> FsLossy_LUT;
QEL_TABLE const qel::DistortionTable<64> FsLossless_LUT;
QEL_TABLE const qel::DistortionTable<128> FmLossy_LUT;
QEL_TABLE const qel::DistortionTable<128> FmLossless_LUT;
