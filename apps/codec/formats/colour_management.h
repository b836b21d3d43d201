// SPDX-License-Identifier: Apache-2.0
// ICC profiles at work, by way of Little CMS.
#pragma once

#include <string>

#include "codec/base/bytes.h"
#include "codec/base/picture.h"

namespace qel::codec {

// A CMYK picture in sRGB, by its profile or, where that is empty, plainly: each ink takes its part of the light.
// `isInkInverted` says that all ones are no ink. Throws CodecError for a profile that cannot be used.
Picture rgbOfCmyk(const Picture& picture, Bytes profile, bool isInkInverted);

// What the profile calls itself; empty where it cannot be read.
std::string nameOfProfile(Bytes profile);

}
