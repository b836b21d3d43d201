// SPDX-License-Identifier: Apache-2.0
// Two passes over each scan: its differences are counted for the best tables, then coded. They are computed again,
// which takes less time than to keep them.
#include "codec/jpeg/encode/lossless_writer.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <string_view>

#include "codec/jpeg/encode/differences.h"
#include "codec/jpeg/encode/segment_writer.h"
#include "codec/jpeg/metadata.h"

namespace qel::codec::jpeg {

namespace {

constexpr int kPredictors = 7;
// What they halve is read as signed by some and as unsigned by others: up to 15 bits that is the same.
constexpr int kFirstPredictorOf15Bits = 5;

// Bits of the symbols that were counted, with the bits behind them.
uint64_t codedBits(const std::array<uint32_t, 256>& counts, const HuffmanLists& lists)
{
    uint64_t sum = 0;
    const uint8_t* symbol = lists.values.data();
    for (int length = 1; length <= 16; ++length)
        for (int i = 0; i < lists.bits[length - 1]; ++i, ++symbol)
            sum += uint64_t(counts[*symbol]) * (length + (*symbol < 16 ? *symbol : 0));
    return sum;
}

class LosslessEncoder {
public:
    LosslessEncoder(const Picture& picture, const EncodeOptions& options);
    std::vector<uint8_t> file();

private:
    struct Tables {
        std::array<HuffmanPair, 2> pairs;
        uint64_t bits = 0; // that the scan takes with them
    };
    void checkOptions() const;
    void describe();
    bool needsSixteenBits() const;
    std::vector<int> predictors() const;
    void encodeScan(const std::vector<int>& components);
    Tables tablesFor(const ScanHeader& scan, const ScanLayout& layout);
    int restartInterval() const;

    const Picture& picture_;
    const EncodeOptions& options_;
    std::vector<int> predictors_; // to be tried
    Info info_;
    std::optional<Progress> progress_;
    std::vector<uint8_t> out_;
    SegmentWriter segments_{out_};
};

LosslessEncoder::LosslessEncoder(const Picture& picture, const EncodeOptions& options)
    : picture_(picture), options_(options)
{
    checkOptions();
    describe();
    predictors_ = predictors();
}

void LosslessEncoder::checkOptions() const
{
    if (picture_.width() < 1) throw CodecError("the picture has no pixels");
    if (picture_.precision() < 2) throw CodecError("a lossless JPEG file holds samples of 2 to 16 bits");
    if (picture_.width() > 65535 || picture_.height() > 65535)
        throw CodecError("a JPEG file holds at most 65535 x 65535 pixels");
    bool isOwn = options_.target == Target::usual ||
                 (options_.target == Target::rgb && picture_.space() == ColourSpace::rgb) ||
                 (options_.target == Target::cmyk && picture_.space() == ColourSpace::cmyk) ||
                 (options_.target == Target::grey && picture_.space() == ColourSpace::grey);
    if (!isOwn || options_.sampling) throw CodecError("a lossless file keeps the picture's colours and all samples");
    if (options_.progressive || !options_.scans.empty()) throw CodecError("a lossless file is not progressive");
    if (options_.predictor < 0 || options_.predictor > kPredictors) throw CodecError("the predictor is not in 1 to 7");
    if (options_.pointTransform < 0 || options_.pointTransform >= picture_.precision())
        throw CodecError("the point transform is not less than the bits of a sample, " +
                         std::to_string(picture_.precision()));
    if (options_.restartInterval && options_.restartRows)
        throw CodecError("restart markers are asked for both by interval and by rows");
}

void LosslessEncoder::describe()
{
    ColourSpace space = picture_.space();
    info_.frameMarker = marker::kSof3;
    info_.process = Process::lossless;
    info_.width = picture_.width();
    info_.height = picture_.height();
    info_.precision = picture_.precision();
    info_.colour = space == ColourSpace::grey ? Colour::grey : space == ColourSpace::rgb ? Colour::rgb : Colour::cmyk;
    std::string_view names = space == ColourSpace::grey ? "\1" : space == ColourSpace::rgb ? "RGB" : "CMYK";
    for (char name : names) info_.components.push_back({name, 1, 1, 0, 0, 0});
    setComponentSizes(info_);
}

bool LosslessEncoder::needsSixteenBits() const
{
    if (picture_.precision() - options_.pointTransform < 16) return false;
    const uint16_t* samples = picture_.row<uint16_t>(0);
    return std::any_of(samples, samples + picture_.sizeInBytes() / 2, [](uint16_t sample) { return sample >> 15; });
}

std::vector<int> LosslessEncoder::predictors() const
{
    int end = kPredictors + 1;
    if ((options_.predictor == kBestPredictor || options_.predictor >= kFirstPredictorOf15Bits) && needsSixteenBits())
        end = kFirstPredictorOf15Bits;
    if (options_.predictor >= end)
        throw CodecError("decoders differ in what predictor " + std::to_string(options_.predictor) +
                         " means for samples of 32768 and more; 1 to 4 are safe");
    if (options_.predictor != kBestPredictor) return {options_.predictor};
    std::vector<int> all(end - 1);
    std::iota(all.begin(), all.end(), 1);
    return all;
}

int LosslessEncoder::restartInterval() const
{
    int64_t rows = options_.restartRows, width = picture_.width();
    if (options_.restartInterval % width != 0)
        throw CodecError("the restart interval of a lossless file is whole rows of " + std::to_string(width) + " MCUs");
    int64_t interval = rows ? rows * width : options_.restartInterval;
    if (interval < 0 || interval > 65535) throw CodecError("the restart interval is not in 0 to 65535 MCUs");
    return int(interval);
}

LosslessEncoder::Tables LosslessEncoder::tablesFor(const ScanHeader& scan, const ScanLayout& layout)
{
    Differences differences(picture_, layout, scan, info_.restartInterval);
    ScanStatistics statistics(scan);
    differences.code(statistics, *progress_);
    Tables tables;
    for (int i : {0, 1}) {
        tables.pairs[i] = statistics.tables(i);
        tables.bits += codedBits(statistics.dcCounts(i), tables.pairs[i].dc);
    }
    return tables;
}

// The first component has a table of its own, the others share one.
void LosslessEncoder::encodeScan(const std::vector<int>& components)
{
    ScanLayout layout(info_, components);
    ScanHeader scan;
    scan.kind = ScanKind::lossless;
    scan.pointTransform = options_.pointTransform;
    for (int i : components) scan.components.push_back({i, i == components[0] ? 0 : 1, 0});
    Tables best;
    int predictor = 0;
    for (int tried : predictors_) {
        scan.predictor = tried;
        Tables tables = tablesFor(scan, layout);
        if (predictor && tables.bits >= best.bits) continue;
        predictor = tried;
        best = tables;
    }
    scan.predictor = predictor;
    for (int i = 0; i < std::min(int(components.size()), 2); ++i) segments_.huffmanTable(0, i, best.pairs[i].dc);
    segments_.scan(info_, scan);
    Differences differences(picture_, layout, scan, info_.restartInterval);
    ScanEncoder coder(out_, layout, scan, best.pairs);
    differences.code(coder, *progress_);
}

std::vector<uint8_t> LosslessEncoder::file()
{
    std::vector<int> all(info_.components.size());
    std::iota(all.begin(), all.end(), 0);
    std::vector<std::vector<int>> scans = {all};
    if (!options_.interleaved) {
        scans.clear();
        for (int i : all) scans.push_back({i});
    }
    progress_.emplace(options_.progress, picture_.height() * int(scans.size() * (predictors_.size() + 1)));
    info_.restartInterval = restartInterval();

    segments_.marker(marker::kSoi);
    if (info_.colour == Colour::grey)
        segments_.jfif(options_.metadata.density);
    else
        segments_.adobe(0);
    writeMetadata(out_, options_.metadata);
    segments_.frame(info_);
    if (info_.restartInterval) segments_.restartInterval(info_.restartInterval);
    for (auto& components : scans) encodeScan(components);
    segments_.marker(marker::kEoi);
    return std::move(out_);
}

}

std::vector<uint8_t> encodeLossless(const Picture& picture, const EncodeOptions& options)
{
    return LosslessEncoder(picture, options).file();
}

}
