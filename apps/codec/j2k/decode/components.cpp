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

void checkSize(const Image& image, const Codestream& codestream, const DecodeOptions& options)
{
    const Rect& picture = codestream.size().picture;
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
    Image image;
    for (size_t c = 0; c < size.components.size(); ++c) {
        const Component& coded = size.components[c];
        Samples& samples = image.components.emplace_back();
        samples.precision = coded.precision;
        samples.isSigned = coded.isSigned;
        samples.dx = coded.dx;
        samples.dy = coded.dy;
        if (!isNeeded(codestream, c, options, component)) continue;
        samples.rect = resolutionRect(size.component(c), options.reduce);
        if (coded.precision > kMaxPrecision)
            throw CodecError("samples of " + std::to_string(coded.precision) + " bits are not supported");
    }
    checkSize(image, codestream, options);
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

Image decodeComponents(const Codestream& codestream, const DecodeOptions& options, std::optional<size_t> component)
{
    const Size& size = codestream.size();
    Image image = makeImage(codestream, options, component);
    Progress progress(image, options.progress);
    int tiles = int(size.tiles()), threads = threadsForSamples(size.picture.area());
    bool areSmall = tiles > 1 && size.firstTile.area() * size.components.size() < kLargeTile;
    std::vector<Warnings> warnings(size_t(tiles) + 1);
    std::vector<char> isDone(size_t(tiles), false);
    forEachInParallel(tiles, areSmall ? threads : 1, [&](int tile) {
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
