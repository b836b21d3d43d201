// Encoding of whole files: straight from strips of the picture into one scan, or with all coefficients kept where
// tables or scans need more than one pass.
#include "codec/jpeg_writer.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <utility>

#include "codec/jpeg_blocks.h"
#include "codec/jpeg_scan_writer.h"
#include "codec/jpeg_segments.h"

namespace qel::codec {

namespace {

QuantizerSteps stepsFor(TableKind kind, int quality, bool wide)
{
    QuantizerSteps steps;
    int scale = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    for (int i = 0; i < 64; ++i)
        steps[i] = uint16_t(std::clamp((kTypicalSteps[kind][i] * scale + 50) / 100, 1, wide ? 32767 : 255));
    return steps;
}

JpegColour colourFor(const Picture& picture, JpegTarget target)
{
    ColourSpace space = picture.space();
    switch (target) {
    case JpegTarget::usual:
        return space == ColourSpace::grey  ? JpegColour::grey
               : space == ColourSpace::rgb ? JpegColour::ycbcr
                                           : JpegColour::ycck;
    case JpegTarget::grey:
        if (space != ColourSpace::cmyk) return JpegColour::grey;
        break;
    case JpegTarget::ycbcr:
    case JpegTarget::rgb:
        if (space == ColourSpace::rgb) return target == JpegTarget::rgb ? JpegColour::rgb : JpegColour::ycbcr;
        break;
    case JpegTarget::cmyk:
    case JpegTarget::ycck:
        if (space == ColourSpace::cmyk) return target == JpegTarget::cmyk ? JpegColour::cmyk : JpegColour::ycck;
        break;
    }
    throw CodecError("the picture has not the colour space that is asked for");
}

class Encoder {
public:
    Encoder(const Picture& picture, const JpegEncodeOptions& options);
    std::vector<uint8_t> file();

private:
    void checkOptions() const;
    void describeFrame();
    void describeComponents();
    void encodeStraight();
    void encodeStored();
    std::vector<BlockStore> transformAll(Progress& progress);
    // Writes what stands before the data of a scan.
    void beginScan(const std::vector<int>& components, int interval);
    std::vector<int> allComponents() const;
    std::vector<std::vector<int>> scans() const;
    int restartInterval(const ScanLayout& layout) const;
    std::vector<int> tablesOf(const std::vector<int>& components) const;

    const Picture& picture_;
    const JpegEncodeOptions& options_;
    JpegInfo info_;
    std::array<QuantizerSteps, 2> steps_, multipliers_;
    std::array<HuffmanPair, 2> huffman_ = {{{kTypicalDc[0], kTypicalAc[0]}, {kTypicalDc[1], kTypicalAc[1]}}};
    std::array<bool, 2> written_{}; // Huffman tables that the file holds already
    std::vector<uint8_t> out_;
    SegmentWriter segments_{out_};
};

Encoder::Encoder(const Picture& picture, const JpegEncodeOptions& options) : picture_(picture), options_(options)
{
    checkOptions();
    for (TableKind kind : {kLuminance, kChrominance}) {
        steps_[kind] = stepsFor(kind, options.quality, options.wideQuantizers);
        check(qelsDivCRev_16u(steps_[kind].data(), 32768, multipliers_[kind].data(), 64));
    }
    describeFrame();
    describeComponents();
}

void Encoder::checkOptions() const
{
    if (picture_.precision() != 8) throw CodecError("a sequential JPEG file holds samples of 8 bits");
    if (picture_.width() < 1) throw CodecError("the picture has no pixels");
    if (picture_.width() > 65535 || picture_.height() > 65535)
        throw CodecError("a JPEG file holds at most 65535 x 65535 pixels");
    if (options_.quality < 1 || options_.quality > 100) throw CodecError("the quality is not in 1 to 100");
    if (options_.restartInterval && options_.restartRows)
        throw CodecError("restart markers are asked for both by interval and by rows");
}

void Encoder::describeFrame()
{
    info_.width = picture_.width();
    info_.height = picture_.height();
    info_.precision = 8;
    info_.colour = colourFor(picture_, options_.target);
    info_.hasJfif = info_.colour == JpegColour::grey || info_.colour == JpegColour::ycbcr;
    if (!info_.hasJfif) info_.adobeTransform = info_.colour == JpegColour::ycck ? 2 : 0;
}

void Encoder::describeComponents()
{
    bool chrominance = info_.colour == JpegColour::ycbcr || info_.colour == JpegColour::ycck;
    const JpegSamplings& sampling = options_.sampling ? *options_.sampling : chrominance ? kSampling420 : kSampling444;
    std::string_view names = info_.colour == JpegColour::rgb    ? "RGB"
                             : info_.colour == JpegColour::cmyk ? "CMYK"
                             : info_.colour == JpegColour::grey ? "\1"
                                                                : "\1\2\3\4";
    int count = info_.colour == JpegColour::grey ? 1 : picture_.channels();
    for (int i = 0; i < count; ++i) {
        auto [h, v] = count == 1 ? JpegSampling{1, 1} : sampling[i];
        if (h < 1 || h > 2 || v < 1 || v > 2) throw CodecError("sampling factors can be 1 and 2 only");
        int table = chrominance && (i == 1 || i == 2) ? kChrominance : kLuminance;
        info_.components.push_back({names[i], h, v, table, 0, 0});
    }
    setComponentSizes(info_);
    int blocks = 0, largestStep = 0;
    for (const JpegComponent& c : info_.components) {
        blocks += c.h * c.v;
        largestStep = std::max<int>(largestStep, std::ranges::max(steps_[c.quantizer]));
    }
    info_.frameMarker = largestStep > 255 ? marker::kSof1 : marker::kSof0;
    if (options_.interleaved && count > 1 && blocks > 10)
        throw CodecError("sampling factors that give more than 10 blocks to an MCU");
}

std::vector<int> Encoder::allComponents() const
{
    std::vector<int> all(info_.components.size());
    std::iota(all.begin(), all.end(), 0);
    return all;
}

// The components of each scan.
std::vector<std::vector<int>> Encoder::scans() const
{
    if (options_.interleaved) return {allComponents()};
    std::vector<std::vector<int>> single;
    for (int i : allComponents()) single.push_back({i});
    return single;
}

int Encoder::restartInterval(const ScanLayout& layout) const
{
    int64_t interval =
        options_.restartRows ? int64_t(options_.restartRows) * layout.mcusAcross : options_.restartInterval;
    if (interval < 0 || interval > 65535) throw CodecError("the restart interval is not in 0 to 65535 MCUs");
    return int(interval);
}

std::vector<int> Encoder::tablesOf(const std::vector<int>& components) const
{
    std::vector<int> tables;
    for (int i : components) tables.push_back(info_.components[i].quantizer);
    return tables;
}

std::vector<uint8_t> Encoder::file()
{
    segments_.marker(marker::kSoi);
    if (info_.hasJfif)
        segments_.jfif();
    else
        segments_.adobe(info_.adobeTransform);
    int tables = std::ranges::max(tablesOf(allComponents())) + 1;
    for (int table = 0; table < tables; ++table) segments_.quantizer(table, steps_[table]);
    segments_.frame(info_);
    if (options_.interleaved && !options_.optimiseTables)
        encodeStraight();
    else
        encodeStored();
    segments_.marker(marker::kEoi);
    return std::move(out_);
}

void Encoder::beginScan(const std::vector<int>& components, int interval)
{
    ScanHeader scan;
    for (int i : components) {
        int table = info_.components[i].quantizer;
        scan.components.push_back({i, table, table});
        if (std::exchange(written_[table], true)) continue;
        segments_.huffmanTable(0, table, huffman_[table].dc);
        segments_.huffmanTable(1, table, huffman_[table].ac);
    }
    if (interval != info_.restartInterval) segments_.restartInterval(interval);
    info_.restartInterval = interval;
    segments_.scan(info_, scan);
}

void Encoder::encodeStraight()
{
    std::vector<int> components = scans()[0];
    ScanLayout layout(info_, components);
    int interval = restartInterval(layout);
    beginScan(components, interval);
    StripReader strips(info_, picture_);
    ForwardTransform blocks(info_, layout, multipliers_, strips);
    ScanEncoder coder(out_, layout, huffman_, tablesOf(components));
    Progress progress(options_.progress, layout.mcusDown);
    codeScan(layout, interval, blocks, coder, progress);
}

std::vector<BlockStore> Encoder::transformAll(Progress& progress)
{
    std::vector<BlockStore> stores;
    for (const JpegComponent& c : info_.components) {
        int across = paddedBlocksAcross(info_, c);
        size_t values = size_t(64) * across * paddedBlocksDown(info_, c);
        stores.push_back({across, std::make_unique_for_overwrite<int16_t[]>(values)});
    }
    ScanLayout layout(info_, allComponents());
    StripReader strips(info_, picture_);
    ForwardTransform transform(info_, layout, multipliers_, strips);
    StoredBlocks places(layout, stores);
    for (int row = 0; row < layout.mcusDown; ++row) {
        transform.startRow(row);
        places.startRow(row);
        for (int i = 0; i < int(layout.blocks.size()); ++i)
            for (int column = 0; column < layout.mcusAcross; ++column) transform.block(i, column, places(i, column));
        progress.step();
    }
    return stores;
}

void Encoder::encodeStored()
{
    int steps = ScanLayout(info_, allComponents()).mcusDown;
    for (auto& components : scans())
        steps += (options_.optimiseTables ? 2 : 1) * ScanLayout(info_, components).mcusDown;
    Progress progress(options_.progress, steps);
    std::vector<BlockStore> stores = transformAll(progress);
    for (auto& components : scans()) {
        ScanLayout layout(info_, components);
        std::vector<int> tables = tablesOf(components);
        int interval = restartInterval(layout);
        StoredBlocks blocks(layout, stores);
        if (options_.optimiseTables) {
            ScanStatistics statistics(tables);
            codeScan(layout, interval, blocks, statistics, progress);
            for (int table : tables) huffman_[table] = statistics.tables(table);
            written_ = {};
        }
        beginScan(components, interval);
        ScanEncoder coder(out_, layout, huffman_, tables);
        codeScan(layout, interval, blocks, coder, progress);
    }
}

}

std::vector<uint8_t> encodeJpeg(const Picture& picture, const JpegEncodeOptions& options)
{
    return Encoder(picture, options).file();
}

}
