// SPDX-License-Identifier: Apache-2.0
// A second independent reader of JPEG 2000 files: the decoder of FFmpeg's own, where its library is installed.
#pragma once

#include "codec/base/bytes.h"
#include "codec/base/picture.h"

namespace qel::test {

#if QELJX_HAS_AVCODEC
constexpr bool kHasFfmpeg = true;
#else
constexpr bool kHasFfmpeg = false;
#endif

// A file of 1, 3 or 4 components, whose samples have that many bits: the peer hands them out at the top of bytes or
// words. Throws std::runtime_error for what it refuses or finds wrong.
codec::Picture ffmpegDecode(codec::Bytes file, int precision);

}
