// SPDX-License-Identifier: Apache-2.0
// Transforms, then code-blocks on all threads.
#include "codec/j2k/encode/tile_encoder.h"

#include <mutex>

#include "codec/base/parallel.h"
#include "codec/j2k/encode/band_energy.h"
#include "codec/j2k/encode/forward_transform.h"

namespace qel::codec::j2k {

namespace {

// A code-block to be coded.
template <class Sample> struct Job {
    BandCoding coding;
    Plane<Sample>* band; // its coefficients
    EncodedBlock* block;
};

// Lends encoders to threads.
class Encoders {
public:
    explicit Encoders(const Coding& coding) : coding_(coding) {}

    template <class Use> void with(Use use)
    {
        std::unique_ptr<BlockEncoder> encoder = take();
        use(*encoder);
        std::scoped_lock lock(mutex_);
        free_.push_back(std::move(encoder));
    }

private:
    std::unique_ptr<BlockEncoder> take()
    {
        std::scoped_lock lock(mutex_);
        if (free_.empty())
            return std::make_unique<BlockEncoder>(1 << coding_.blockWidthBits, 1 << coding_.blockHeightBits);
        std::unique_ptr<BlockEncoder> encoder = std::move(free_.back());
        free_.pop_back();
        return encoder;
    }

    const Coding& coding_;
    std::mutex mutex_;
    std::vector<std::unique_ptr<BlockEncoder>> free_;
};

BandCoding bandCoding(const PictureCoding& coding, const Tile& tile, size_t component, const Band& band)
{
    const Coding& style = *coding.parameters.coding;
    BandCoding made;
    made.kind = band.kind;
    made.bitPlanes = band.bitPlanes;
    made.step =
        stepSize(*coding.parameters.quantization, band.step, band.kind, coding.size.components[component].precision);
    made.sampleEnergy = bandEnergy(style.isReversible, tile.rect.width(), tile.rect.height(), band.level, band.kind);
    if (coding.parameters.style->transformsComponents)
        made.sampleEnergy *= componentEnergy(style.isReversible, int(component));
    made.style = style.style;
    made.isLossless = style.isReversible;
    made.termination = coding.termination;
    return made;
}

template <class Sample> std::vector<Job<Sample>> jobsOf(const PictureCoding& coding,
                                                        std::vector<Subbands<Sample>>& coefficients, EncodedTile& tile)
{
    std::vector<Job<Sample>> jobs;
    for (size_t c = 0; c < coefficients.size(); ++c) {
        const std::vector<Resolution>& resolutions = tile.tile.components[c].resolutions;
        for (size_t r = 0; r < resolutions.size(); ++r)
            for (size_t b = 0; b < resolutions[r].bands.size(); ++b) {
                const Band& band = resolutions[r].bands[b];
                BandCoding blockCoding = bandCoding(coding, tile.tile, c, band);
                for (size_t p = 0; p < resolutions[r].precincts.size(); ++p)
                    for (EncodedBlock& block : tile.precincts[tile.firstPrecincts[c][r] + p].bands[b].blocks)
                        jobs.push_back({blockCoding, &coefficients[c].band(band.level, band.kind), &block});
            }
    }
    return jobs;
}

template <class Sample> void encodeAs(const Picture& picture, uint32_t firstRow, const PictureCoding& coding,
                                      int threads, Progress& progress, EncodedTile& tile)
{
    const Coding& style = *coding.parameters.coding;
    auto coefficients = forwardTransform<Sample>(picture, firstRow, tile.tile.rect,
                                                 coding.parameters.style->transformsComponents, style.levels, threads);
    std::vector<Job<Sample>> jobs = jobsOf(coding, coefficients, tile);
    Encoders encoders(style);
    forEachInParallel(int(jobs.size()), threads, [&](int i) {
        const Job<Sample>& job = jobs[size_t(i)];
        encoders.with([&](BlockEncoder& encoder) { encoder.encode(*job.band, job.coding, *job.block); });
        progress.step();
    });
}

}

void encodeTile(const Picture& picture, uint32_t firstRow, const PictureCoding& coding, int threads, Progress& progress,
                EncodedTile& tile)
{
    if (coding.parameters.coding->isReversible)
        encodeAs<int32_t>(picture, firstRow, coding, threads, progress, tile);
    else
        encodeAs<float>(picture, firstRow, coding, threads, progress, tile);
}

}
