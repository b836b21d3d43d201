// SPDX-License-Identifier: Apache-2.0
// Colour conversion: the table of its row kernels.
#pragma once

#include <stdint.h>

#include "core/kernel_tables.h"

namespace qel {

// Row kernels by layout: the source's planes or interleaved pixels, then the destination's, then the width in pixels.
// Rows of the 16-bit formats may lie at odd addresses.
using RowP3C3 = void(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, int);
using RowP3P3 = void(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint8_t*, uint8_t*, int);
using RowP3C3Packed = void(const uint8_t*, const uint8_t*, const uint8_t*, uint16_t*, int);
using RowP4P4 = void(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, uint8_t*, uint8_t*,
                     uint8_t*, int);
using RowP4C4 = void(const uint8_t*, const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, int);
using RowC3P3 = void(const uint8_t*, uint8_t*, uint8_t*, uint8_t*, int);
using RowC3P3Packed = void(const uint16_t*, uint8_t*, uint8_t*, uint8_t*, int);
using RowC4P4 = void(const uint8_t*, uint8_t*, uint8_t*, uint8_t*, uint8_t*, int);
using RowP3C1 = void(const uint8_t*, const uint8_t*, const uint8_t*, uint8_t*, int);
using RowC3C1 = void(const uint8_t*, uint8_t*, int);

struct ColourKernels {
    Streamable<RowP3C3> yccToRgb, yccToBgr;
    Streamable<RowP3P3> yccToRgbPlanes;
    Streamable<RowP3C3Packed> yccToRgb555, yccToBgr555, yccToRgb565, yccToBgr565;
    Streamable<RowP4P4> ycckToCmykPlanes;
    Streamable<RowP4C4> ycckToCmyk;

    Streamable<RowP3P3> rgbPlanesToYcc;
    Streamable<RowC3P3> rgbToYcc, bgrToYcc;
    Streamable<RowC3P3Packed> rgb555ToYcc, bgr555ToYcc, rgb565ToYcc, bgr565ToYcc;
    Streamable<RowP4P4> cmykPlanesToYcck;
    Streamable<RowC4P4> cmykToYcck;
    Streamable<RowP3C1> rgbPlanesToY;
    Streamable<RowC3C1> rgbToY, bgrToY;

    QEL_BUILDS(ColourKernels);
};

}
