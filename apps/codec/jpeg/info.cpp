// Facts about a JPEG file that need no decoding.
#include "codec/jpeg/info.h"

#include <algorithm>

#include "codec/jpeg/headers.h"

namespace qel::codec {

const char* nameOf(JpegProcess process)
{
    switch (process) {
    case JpegProcess::baseline:
        return "baseline";
    case JpegProcess::extended:
        return "extended sequential";
    case JpegProcess::progressive:
        return "progressive";
    case JpegProcess::lossless:
        return "lossless";
    default:
        return "other";
    }
}

const char* nameOf(JpegColour colour)
{
    switch (colour) {
    case JpegColour::grey:
        return "grey";
    case JpegColour::ycbcr:
        return "YCbCr";
    case JpegColour::rgb:
        return "RGB";
    case JpegColour::cmyk:
        return "CMYK";
    case JpegColour::ycck:
        return "YCCK";
    default:
        return "other";
    }
}

int JpegInfo::maxH() const { return std::ranges::max(components, {}, &JpegComponent::h).h; }

int JpegInfo::maxV() const { return std::ranges::max(components, {}, &JpegComponent::v).v; }

JpegInfo readJpegInfo(Bytes file)
{
    JpegHeaders headers(file);
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
