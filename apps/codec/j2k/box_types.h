// SPDX-License-Identifier: Apache-2.0
// Types of the boxes of a JP2 file (T.800 I.5).
#pragma once

#include <cstdint>

namespace qel::codec::j2k::box_type {

constexpr uint32_t fourLetters(const char (&letters)[5])
{
    uint32_t code = 0;
    for (int i = 0; i < 4; ++i) code = code << 8 | uint8_t(letters[i]);
    return code;
}

inline constexpr uint32_t kSignature = fourLetters("jP  "), kFileType = fourLetters("ftyp"),
                          kHeader = fourLetters("jp2h"), kImageHeader = fourLetters("ihdr"),
                          kDepths = fourLetters("bpcc"), kColour = fourLetters("colr"), kPalette = fourLetters("pclr"),
                          kMapping = fourLetters("cmap"), kDefinitions = fourLetters("cdef"),
                          kCodestream = fourLetters("jp2c"), kResolution = fourLetters("res "),
                          kCaptureResolution = fourLetters("resc"), kDisplayResolution = fourLetters("resd"),
                          kUuid = fourLetters("uuid"), kXml = fourLetters("xml ");

// Contents of the signature, which show where a transfer has changed the ends of lines.
inline constexpr uint32_t kSignatureContents = 0x0D0A870A;
// The brand of files that any reader of JP2 reads.
inline constexpr uint32_t kBrand = fourLetters("jp2 ");
// Of the extensions (T.801), as are colour profiles of any kind.
inline constexpr uint32_t kExtendedBrand = fourLetters("jpx ");

}
