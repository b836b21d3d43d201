// From files to pictures.
#include "codec/j2k/decode/reader.h"

#include "codec/base/parallel.h"
#include "codec/j2k/decode/channels.h"

namespace qel::codec::j2k {

namespace {

void append(Warnings& warnings, const Warnings& more) { warnings.insert(warnings.end(), more.begin(), more.end()); }

int threadsOf(const File& file) { return threadsForSamples(file.codestream->size().picture.area()); }

Decoded decode(const File& opened, const DecodeOptions& options)
{
    Decoded decoded;
    decoded.warnings = opened.warnings;
    Image image = decodeComponents(*opened.codestream, options);
    append(decoded.warnings, image.warnings);
    decoded.isDamaged = !decoded.warnings.empty();
    decoded.picture = pictureOf(image, opened.codestream->size().picture, options.reduce, opened.jp2, decoded.warnings);
    return decoded;
}

DecodedComponent decodeComponent(const File& opened, size_t component, const DecodeOptions& options)
{
    DecodedComponent decoded;
    decoded.warnings = opened.warnings;
    Image image = decodeComponents(*opened.codestream, options, component);
    append(decoded.warnings, image.warnings);
    const Samples& samples = image.components[component];
    PgxPicture& pgx = decoded.samples;
    pgx = {int(samples.rect.width()), int(samples.rect.height()), samples.precision, samples.isSigned, {}};
    pgx.samples.reserve(samples.rect.area());
    for (uint32_t y = 0; y < samples.rect.height(); ++y)
        pgx.samples.insert(pgx.samples.end(), samples.plane.row(y), samples.plane.row(y) + pgx.width);
    return decoded;
}

}

Decoded decode(Bytes file, const DecodeOptions& options)
{
    File opened = open(file);
    return withThreads(threadsOf(opened), [&] { return decode(opened, options); });
}

DecodedComponent decodeComponent(Bytes file, size_t component, const DecodeOptions& options)
{
    File opened = open(file);
    return withThreads(threadsOf(opened), [&] { return decodeComponent(opened, component, options); });
}

}
