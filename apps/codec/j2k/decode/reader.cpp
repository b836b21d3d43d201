// From files to pictures.
#include "codec/j2k/decode/reader.h"

#include "codec/base/parallel.h"
#include "codec/j2k/decode/channels.h"

namespace qel::codec {

namespace {

void append(Warnings& warnings, const Warnings& more) { warnings.insert(warnings.end(), more.begin(), more.end()); }

int threadsOf(const J2kFile& file) { return threadsForJ2k(file.codestream->size().picture.area()); }

DecodedJ2k decode(const J2kFile& opened, const J2kDecodeOptions& options)
{
    DecodedJ2k decoded;
    decoded.warnings = opened.warnings;
    J2kImage image = decodeJ2kComponents(*opened.codestream, options);
    append(decoded.warnings, image.warnings);
    decoded.isDamaged = !decoded.warnings.empty();
    decoded.picture = pictureOf(image, opened.codestream->size().picture, options.reduce, opened.jp2, decoded.warnings);
    return decoded;
}

DecodedJ2kComponent decodeComponent(const J2kFile& opened, size_t component, const J2kDecodeOptions& options)
{
    DecodedJ2kComponent decoded;
    decoded.warnings = opened.warnings;
    J2kImage image = decodeJ2kComponents(*opened.codestream, options, component);
    append(decoded.warnings, image.warnings);
    const J2kSamples& samples = image.components[component];
    PgxPicture& pgx = decoded.samples;
    pgx = {int(samples.rect.width()), int(samples.rect.height()), samples.precision, samples.isSigned, {}};
    pgx.samples.reserve(samples.rect.area());
    for (uint32_t y = 0; y < samples.rect.height(); ++y)
        pgx.samples.insert(pgx.samples.end(), samples.plane.row(y), samples.plane.row(y) + pgx.width);
    return decoded;
}

}

DecodedJ2k decodeJ2k(Bytes file, const J2kDecodeOptions& options)
{
    J2kFile opened = openJ2k(file);
    return withThreads(threadsOf(opened), [&] { return decode(opened, options); });
}

DecodedJ2kComponent decodeJ2kComponent(Bytes file, size_t component, const J2kDecodeOptions& options)
{
    J2kFile opened = openJ2k(file);
    return withThreads(threadsOf(opened), [&] { return decodeComponent(opened, component, options); });
}

}
