// SPDX-License-Identifier: Apache-2.0
// Tiles, one after the other or several at once.
#include "codec/j2k/decode/components.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>

#include "codec/base/parallel.h"
#include "codec/j2k/decode/tile_decoder.h"

namespace qel::codec::j2k {

namespace {

constexpr int kMaxPrecision = 31;
// Samples that any file may claim to have, and how many more for each of its bytes: what takes much memory has to be
// there.
constexpr uint64_t kMaxSamples = 128 << 20, kMaxSamplesPerByte = 64;
constexpr uint64_t kMaxTileComponents = 1 << 16; // and one for each byte
constexpr uint32_t kMaxSide = 1 << 28;
// What a row of a plane may take beside its samples.
constexpr uint32_t kRowOverhead = 32;
// Tiles of fewer samples are decoded several at once.
constexpr uint64_t kLargeTile = 1 << 20;

std::string sizeText(const Rect& rect) { return std::to_string(rect.width()) + " x " + std::to_string(rect.height()); }

// Component transforms take the first three together.
bool isNeeded(const Codestream& codestream, size_t c, const DecodeOptions& options, std::optional<size_t> component)
{
    if (!component || c == *component) return true;
    return options.transformComponents && c < 3 && *component < 3 && codestream.size().components.size() >= 3;
}

bool areApart(const Rect& a, const Rect& b) { return a.x1 <= b.x0 || b.x1 <= a.x0 || a.y1 <= b.y0 || b.y1 <= a.y0; }

// All tiles that the region needs.
Rect tilesAround(const Size& size, const Rect& needed)
{
    Rect all = needed;
    for (uint32_t i = 0; i < size.tiles(); ++i) {
        Rect tile = size.tile(i);
        if (areApart(tile, needed)) continue;
        all = {std::min(all.x0, tile.x0), std::min(all.y0, tile.y0), std::max(all.x1, tile.x1),
               std::max(all.y1, tile.y1)};
    }
    return all;
}

void checkSize(const Image& image, const Codestream& codestream, const Rect& picture, const DecodeOptions& options)
{
    uint64_t limit = std::min<uint64_t>(kMaxSamples + kMaxSamplesPerByte * codestream.bytes(), SIZE_MAX / 16);
    uint64_t samples = 0;
    auto taken = [](const Rect& rect) { return (uint64_t(rect.width()) + kRowOverhead) * rect.height(); };
    bool fits = resolutionRect(picture, options.reduce).area() <= options.maxPixels &&
                std::max(picture.width(), picture.height()) <= kMaxSide;
    for (const Samples& component : image.components) {
        fits = fits && taken(component.rect) <= limit - samples;
        if (fits) samples += taken(component.rect);
    }
    if (!fits) throw CodecError("a picture of " + sizeText(picture) + " pixels is too large");
    if (samples == 0) throw CodecError("the picture has no samples");
    if (codestream.tileParts().size() * image.components.size() > kMaxTileComponents + codestream.bytes())
        throw CodecError("more tiles and components than the file has data for");
}

Image makeImage(const Codestream& codestream, const DecodeOptions& options, std::optional<size_t> component)
{
    const Size& size = codestream.size();
    if (component && *component >= size.components.size())
        throw CodecError("the picture has " + std::to_string(size.components.size()) + " components");
    Rect area = tilesAround(size, neededRegion(size, options));
    Image image;
    for (size_t c = 0; c < size.components.size(); ++c) {
        const Component& coded = size.components[c];
        Samples& samples = image.components.emplace_back();
        samples.precision = coded.precision;
        samples.isSigned = coded.isSigned;
        samples.dx = coded.dx;
        samples.dy = coded.dy;
        if (!isNeeded(codestream, c, options, component)) continue;
        samples.rect = resolutionRect(subsampled(area, coded.dx, coded.dy), options.reduce);
        if (coded.precision > kMaxPrecision)
            throw CodecError("samples of " + std::to_string(coded.precision) + " bits are not supported");
    }
    checkSize(image, codestream, area, options);
    for (Samples& samples : image.components)
        if (!samples.rect.isEmpty())
            samples.plane = {samples.rect.width(), samples.rect.height(), Plane<int32_t>::Fill::none};
    return image;
}

// The samples of a tile that is not there.
void fillTile(const Size& size, uint32_t tile, int reduce, Image& image)
{
    for (Samples& samples : image.components) {
        if (samples.rect.isEmpty()) continue;
        Rect rect = resolutionRect(subsampled(size.tile(tile), samples.dx, samples.dy), reduce);
        int32_t middle = samples.isSigned ? 0 : int32_t(1) << (samples.precision - 1);
        for (uint32_t y = rect.y0; y < rect.y1; ++y)
            std::fill_n(samples.plane.row(y - samples.rect.y0) + rect.x0 - samples.rect.x0, rect.width(), middle);
    }
}

// Tells how far the work is, in samples. Threads that find another one telling it do not wait.
class Progress {
public:
    Progress(const Image& image, const std::function<void(double)>& callback) : callback_(callback)
    {
        for (const Samples& samples : image.components) all_ += samples.rect.area();
    }
    void add(uint64_t samples)
    {
        uint64_t done = done_ += samples;
        if (!callback_) return;
        if (std::unique_lock lock(mutex_, std::try_to_lock); lock) callback_(double(done) / double(all_));
    }

private:
    const std::function<void(double)>& callback_;
    std::atomic<uint64_t> done_ = 0;
    uint64_t all_ = 0;
    std::mutex mutex_;
};

}

Rect regionOf(const Size& size, const DecodeOptions& options)
{
    const Rect& picture = size.picture;
    if (!options.region) return picture;
    auto placed = [](uint32_t begin, uint32_t end, uint32_t at) {
        return uint32_t(std::min<uint64_t>(uint64_t(begin) + at, end));
    };
    const Rect& asked = *options.region;
    Rect region = {placed(picture.x0, picture.x1, asked.x0), placed(picture.y0, picture.y1, asked.y0),
                   placed(picture.x0, picture.x1, asked.x1), placed(picture.y0, picture.y1, asked.y1)};
    if (region.isEmpty()) throw CodecError("the region is empty or outside the picture");
    return region;
}

Rect neededRegion(const Size& size, const DecodeOptions& options)
{
    const Rect region = regionOf(size, options), &picture = size.picture;
    uint64_t across = 0, down = 0;
    for (const Component& component : size.components) {
        across = std::max(across, uint64_t(component.dx) << options.reduce);
        down = std::max(down, uint64_t(component.dy) << options.reduce);
    }
    auto before = [](uint32_t from, uint64_t less, uint32_t least) {
        return from - least < less ? least : uint32_t(from - less);
    };
    auto behind = [](uint32_t to, uint64_t more, uint32_t most) {
        return uint32_t(std::min(to + more, uint64_t(most)));
    };
    return {before(region.x0, across, picture.x0), before(region.y0, down, picture.y0),
            behind(region.x1, across, picture.x1), behind(region.y1, down, picture.y1)};
}

Image decodeComponents(const Codestream& codestream, const DecodeOptions& options, std::optional<size_t> component)
{
    const Size& size = codestream.size();
    Image image = makeImage(codestream, options, component);
    const Rect needed = neededRegion(size, options);
    Progress progress(image, options.progress);
    int tiles = int(size.tiles()), threads = threadsForSamples(needed.area());
    bool areSmall = tiles > 1 && size.firstTile.area() * size.components.size() < kLargeTile;
    std::vector<Warnings> warnings(size_t(tiles) + 1);
    std::vector<char> isDone(size_t(tiles), false);
    forEachInParallel(tiles, areSmall ? threads : 1, [&](int tile) {
        if (areApart(size.tile(uint32_t(tile)), needed)) return;
        Warnings& ofTile = warnings[size_t(tile)];
        try {
            if (codestream.tileParts().contains(uint32_t(tile))) {
                decodeTile(codestream, uint32_t(tile), options, areSmall ? 1 : threads, image.components, ofTile,
                           [&](uint64_t samples) { progress.add(samples); });
                isDone[size_t(tile)] = true;
                return;
            }
            ofTile.push_back("tile " + std::to_string(tile) + " is missing");
        } catch (const CodecError& error) {
            ofTile.push_back("tile " + std::to_string(tile) + ": " + error.what());
        }
        fillTile(size, uint32_t(tile), options.reduce, image);
    });
    for (const Warnings& some : warnings) image.warnings.insert(image.warnings.end(), some.begin(), some.end());
    if (std::ranges::find(isDone, true) == isDone.end()) throw CodecError(image.warnings.at(0));
    return image;
}

}
