// SPDX-License-Identifier: Apache-2.0
// From files to pictures.
#include "codec/j2k/decode/reader.h"

#include "codec/base/parallel.h"
#include "codec/j2k/decode/channels.h"
#include "codec/j2k/metadata.h"

namespace qel::codec::j2k {

namespace {

void append(Warnings& warnings, const Warnings& more) { warnings.insert(warnings.end(), more.begin(), more.end()); }

int threadsOf(const File& file, const DecodeOptions& options)
{
    return threadsForSamples(regionOf(file.codestream->size(), options).area());
}

DecodedPicture decode(Bytes file, const File& opened, const DecodeOptions& options)
{
    DecodedPicture decoded;
    decoded.metadata = readMetadata(file, opened.jp2);
    decoded.warnings = opened.warnings;
    Image image = decodeComponents(*opened.codestream, options);
    append(decoded.warnings, image.warnings);
    decoded.isDamaged = !decoded.warnings.empty();
    Rect region = regionOf(opened.codestream->size(), options);
    decoded.picture = pictureOf(image, region, options.reduce, opened.jp2, decoded.warnings);
    return decoded;
}

// The part of a component that the options ask for.
PgxPicture pgxOf(const Samples& samples, const Size& size, const DecodeOptions& options)
{
    Rect rect = resolutionRect(subsampled(regionOf(size, options), samples.dx, samples.dy), options.reduce);
    if (rect.isEmpty()) throw CodecError("a component has no samples there");
    PgxPicture pgx = {int(rect.width()), int(rect.height()), samples.precision, samples.isSigned, {}};
    pgx.samples.reserve(rect.area());
    for (uint32_t y = rect.y0; y < rect.y1; ++y) {
        const int32_t* row = samples.plane.row(y - samples.rect.y0) + (rect.x0 - samples.rect.x0);
        pgx.samples.insert(pgx.samples.end(), row, row + pgx.width);
    }
    return pgx;
}

// One, or all.
DecodedPlanes decodePlanes(const File& opened, std::optional<size_t> component, const DecodeOptions& options)
{
    DecodedPlanes decoded;
    decoded.warnings = opened.warnings;
    Image image = decodeComponents(*opened.codestream, options, component);
    append(decoded.warnings, image.warnings);
    for (size_t c = 0; c < image.components.size(); ++c)
        if (!component || c == *component)
            decoded.planes.push_back(pgxOf(image.components[c], opened.codestream->size(), options));
    return decoded;
}

}

DecodedPicture decode(Bytes file, const DecodeOptions& options)
{
    File opened = open(file);
    return withThreads(threadsOf(opened, options), [&] { return decode(file, opened, options); });
}

DecodedComponent decodeComponent(Bytes file, size_t component, const DecodeOptions& options)
{
    File opened = open(file);
    DecodedPlanes decoded =
        withThreads(threadsOf(opened, options), [&] { return decodePlanes(opened, component, options); });
    return {std::move(decoded.planes.at(0)), std::move(decoded.warnings)};
}

DecodedPlanes decodePlanes(Bytes file, const DecodeOptions& options)
{
    File opened = open(file);
    return withThreads(threadsOf(opened, options), [&] { return decodePlanes(opened, {}, options); });
}

}
