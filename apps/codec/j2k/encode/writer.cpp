// SPDX-License-Identifier: Apache-2.0
// Tiles are coded, then cut to what the options allow, then written.
#include "codec/j2k/encode/writer.h"

#include <cmath>

#include "codec/base/error.h"
#include "codec/base/parallel.h"
#include "codec/j2k/encode/box_writer.h"
#include "codec/j2k/encode/header_writer.h"
#include "codec/j2k/encode/rate_allocation.h"
#include "codec/j2k/encode/step_estimate.h"
#include "codec/j2k/encode/tile_encoder.h"
#include "codec/j2k/encode/tile_writer.h"

namespace qel::codec::j2k {

namespace {

// More tiles than this for each thread are spread over the threads; fewer are done one after the other, on all threads.
constexpr uint32_t kTilesPerThread = 4;

// Quantization steps are powers of 2: the file is then nearly always the same to the byte as with much finer steps, of
// which truncation leaves nothing. That takes slopes as of a quantizer that is somewhat coarser, which the first
// estimate, a part of the usual step, nearly always gives.
constexpr double kFirstStep = 0.4, kLeastCoarsening = 2.3, kFinestStep = 0.125;

using Tiles = std::vector<EncodedTile>;

double samplesOf(const Picture& picture) { return double(picture.width()) * picture.height() * picture.channels(); }
int threadsFor(const Picture& picture) { return threadsForSamples(uint64_t(samplesOf(picture))); }

class Encoder {
public:
    Encoder(const Picture& picture, const EncodeOptions& options);

    std::vector<uint8_t> encode();

private:
    void setStep(double step);
    double usualStep() const;
    Budget budget(const Tiles& tiles, size_t overhead) const;
    std::vector<uint8_t> encode(Slope& lastSlope) const;

    const Picture& picture_;
    const EncodeOptions& options_;
    PictureCoding coding_;
};

double peakOf(const PictureForm& picture) { return (1 << picture.precision()) - 1; }

double meanSquaredError(const Picture& picture, double psnr)
{
    return peakOf(picture) * peakOf(picture) / std::pow(10, psnr / 10);
}

// What a JPEG file of the quality has for a middle frequency.
double stepForQuality(const PictureForm& picture, int quality)
{
    double percent = quality < 50 ? 5000.0 / quality : 200 - 2 * quality;
    return std::max(16 * percent / 100, 0.5) * peakOf(picture) / 255;
}

double firstStep(double usualStep)
{
    return std::max(std::exp2(std::floor(std::log2(kFirstStep * usualStep))), kFinestStep);
}

void checkTarget(const EncodeOptions& options)
{
    if (options.bitsPerPixel && !(*options.bitsPerPixel > 0)) throw CodecError("the rate is not above 0");
    if (options.psnr && !(*options.psnr >= 1 && *options.psnr <= 200)) throw CodecError("a PSNR has to be 1 to 200 dB");
    if (options.quality < 1 || options.quality > 100)
        throw CodecError("quality " + std::to_string(options.quality) + ": it has to be 1 to 100");
}

Encoder::Encoder(const Picture& picture, const EncodeOptions& options) : picture_(picture), options_(options)
{
    checkTarget(options);
    coding_.size = sizeFor(picture, options);
    coding_.termination = terminationFor(options);
    setStep(1);
}

void Encoder::setStep(double step) { coding_.parameters = parametersFor(picture_, options_, step); }

// Of a quantizer that would do without truncations.
double Encoder::usualStep() const
{
    int levels = coding_.parameters.coding->levels;
    if (options_.bitsPerPixel) return stepForRate(picture_, levels, *options_.bitsPerPixel);
    if (options_.psnr) return stepForError(picture_, levels, meanSquaredError(picture_, *options_.psnr));
    return stepForQuality(picture_, options_.quality);
}

// The tiles in some rows of them. `picture` begins with the first one.
Tiles encodeTiles(const Picture& picture, const PictureCoding& coding, uint32_t firstRow, uint32_t rows,
                  const ProgressReport& report)
{
    uint32_t across = coding.size.tilesAcross(), first = firstRow * across;
    Tiles tiles(size_t(rows) * across);
    size_t blocks = 0;
    for (uint32_t i = 0; i < tiles.size(); ++i) {
        tiles[i] = makeEncodedTile(coding.size, coding.parameters, first + i);
        blocks += countBlocks(tiles[i]);
    }
    Progress progress(report, int(blocks));
    int threads = threadsFor(picture);
    uint32_t top = coding.size.tile(first).y0;
    bool isTileByTile = tiles.size() < kTilesPerThread * size_t(threads);
    forEachInParallel(int(tiles.size()), isTileByTile ? 1 : threads, [&](int i) {
        encodeTile(picture, top, coding, isTileByTile ? threads : 1, progress, tiles[size_t(i)]);
    });
    return tiles;
}

// `overhead` is what the file has besides packets.
Budget Encoder::budget(const Tiles& tiles, size_t overhead) const
{
    if (options_.isLossless) return {};
    if (options_.bitsPerPixel) {
        double bytes = *options_.bitsPerPixel * picture_.width() * picture_.height() / 8;
        if (bytes < double(overhead)) throw CodecError("the rate allows for fewer bytes than the headers take");
        return {.bytes = uint64_t(std::min(bytes, 1e18)) - overhead};
    }
    if (!options_.psnr) return {.bytes = {}, .slope = slopeOfStep(stepForQuality(picture_, options_.quality))};
    // Rounding to whole samples adds its own error.
    double error = meanSquaredError(picture_, *options_.psnr);
    error = std::max(error - 1.0 / 12, error / 2);
    return {.bytes = {}, .slope = slopeForError(tiles, error * samplesOf(picture_))};
}

std::vector<uint8_t> Encoder::encode(Slope& lastSlope) const
{
    Tiles tiles = encodeTiles(picture_, coding_, 0, coding_.size.tilesDown(), options_.progress);
    std::vector<uint8_t> file;
    ByteWriter out(file);
    size_t box = options_.isJp2 ? writeJp2Header(out, picture_, options_.metadata) : 0;
    writeMainHeader(out, coding_.size, coding_.parameters, options_.metadata.comments);
    size_t overhead = file.size() + kTileOverhead * tiles.size() + kEndOverhead;
    std::vector<Slope> layers = allocateLayers(tiles, options_.layers, budget(tiles, overhead));
    for (EncodedTile& tile : tiles) writeTile(coding_.size, coding_.parameters, layers, tile, out);
    writeEnd(out);
    if (options_.isJp2) out.setLength(box, box);
    lastSlope = layers.back();
    return file;
}

// A lossy file is coded again, with finer steps, where the truncations do not leave enough of it out.
std::vector<uint8_t> Encoder::encode()
{
    Slope lastSlope = 0;
    if (options_.isLossless) return encode(lastSlope);
    for (double step = firstStep(usualStep());; step /= 2) {
        setStep(step);
        std::vector<uint8_t> file = encode(lastSlope);
        if (step <= kFinestStep || lastSlope >= slopeOfStep(kLeastCoarsening * step)) return file;
    }
}

}

std::vector<uint8_t> encode(const Picture& picture, const EncodeOptions& options)
{
    Encoder encoder(picture, options);
    return withThreads(threadsFor(picture), [&] { return encoder.encode(); });
}

TileRows::TileRows(const PictureForm& picture, const EncodeOptions& options) : picture_(picture), options_(options)
{
    checkTarget(options);
    if (!options.isLossless && (options.bitsPerPixel || options.psnr))
        throw CodecError("a rate or a PSNR takes the whole picture");
    if (options.layers > 1) throw CodecError("several layers take the whole picture");
    coding_.size = sizeFor(picture, options);
    coding_.termination = terminationFor(options);
    // The first step does: it is less than a 2.3rd of the usual one, or the finest.
    static_assert(kFirstStep * kLeastCoarsening < 1);
    double step = options.isLossless ? 1 : stepForQuality(picture, options.quality);
    if (!options.isLossless) slope_ = slopeOfStep(step);
    coding_.parameters = parametersFor(picture, options, options.isLossless ? 1 : firstStep(step));
}

Rect TileRows::rect(uint32_t row) const
{
    uint32_t across = coding_.size.tilesAcross();
    Rect first = coding_.size.tile(row * across);
    return {first.x0, first.y0, coding_.size.picture.x1, first.y1};
}

std::vector<uint8_t> TileRows::encode(uint32_t row, const Picture& part) const
{
    if (PictureForm(part) != picture_.withHeight(int(rect(row).height())))
        throw CodecError("not the row " + std::to_string(row) + " of tiles");
    return withThreads(threadsFor(part), [&] {
        std::vector<uint8_t> bytes;
        ByteWriter out(bytes);
        for (EncodedTile& tile : encodeTiles(part, coding_, row, 1, options_.progress))
            writeTile(coding_.size, coding_.parameters, {&slope_, 1}, tile, out);
        return bytes;
    });
}

std::vector<uint8_t> TileRows::header(uint64_t bytes) const
{
    std::vector<uint8_t> made;
    ByteWriter out(made);
    size_t box = options_.isJp2 ? writeJp2Header(out, picture_, options_.metadata) : 0;
    writeMainHeader(out, coding_.size, coding_.parameters, options_.metadata.comments);
    uint64_t length = made.size() - box + bytes + kEndOverhead;
    // Without a length, a box goes on to the end of the file.
    if (options_.isJp2) out.setU32(box, length <= UINT32_MAX ? uint32_t(length) : 0);
    return made;
}

std::vector<uint8_t> TileRows::end()
{
    std::vector<uint8_t> made;
    ByteWriter out(made);
    writeEnd(out);
    return made;
}

}
