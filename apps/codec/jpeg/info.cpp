// SPDX-License-Identifier: Apache-2.0
// Facts about a JPEG file that need no decoding.
#include "codec/jpeg/info.h"

#include <algorithm>

#include "codec/jpeg/headers.h"

namespace qel::codec::jpeg {

const char* nameOf(Process process)
{
    switch (process) {
    case Process::baseline:
        return "baseline";
    case Process::extended:
        return "extended sequential";
    case Process::progressive:
        return "progressive";
    case Process::lossless:
        return "lossless";
    default:
        return "other";
    }
}

const char* nameOf(Colour colour)
{
    switch (colour) {
    case Colour::grey:
        return "grey";
    case Colour::ycbcr:
        return "YCbCr";
    case Colour::rgb:
        return "RGB";
    case Colour::cmyk:
        return "CMYK";
    case Colour::ycck:
        return "YCCK";
    default:
        return "other";
    }
}

int Info::maxH() const { return std::ranges::max(components, {}, &Component::h).h; }

int Info::maxV() const { return std::ranges::max(components, {}, &Component::v).v; }

Info readInfo(Bytes file)
{
    Headers headers(file);
    auto scan = headers.nextScan(2);
    // Behind the first scan headers matter only for the count, and damage there does not.
    try {
        while (scan) {
            // Restart markers stand alone: they are passed over like any other segment without meaning here.
            scan = headers.nextScan(scan->dataAt);
        }
    } catch (const CodecError&) {}
    return headers.info();
}

}
