// SPDX-License-Identifier: Apache-2.0
// How errors of wavelet coefficients and of transformed components weigh in the picture.
#pragma once

#include "codec/j2k/geometry.h"

namespace qel::codec::j2k {

// The squared error that an error of 1 in a coefficient of the band makes in its tile-component: the squared norm of
// the synthesis waveform, of the 5/3 or 9/7 filters with the gains of T.800 Annex F, which ends where the
// tile-component does. Level 0 is a picture without wavelet.
double bandEnergy(bool isReversible, uint32_t width, uint32_t height, int level, BandKind kind);

// The same for an error in a component that the reversible or irreversible component transform made (T.800 Annex G),
// summed over the three colours.
double componentEnergy(bool isReversible, int component);

}
