// SPDX-License-Identifier: Apache-2.0
// Encoding of whole files: straight from strips of the picture into one scan, or with all coefficients kept where
// tables or scans need more than one pass.
#include "codec/jpeg/encode/writer.h"

#include <algorithm>
#include <numeric>
#include <string_view>
#include <tuple>
#include <utility>

#include "codec/base/parallel.h"
#include "codec/jpeg/block_store.h"
#include "codec/jpeg/encode/forward_transform.h"
#include "codec/jpeg/encode/lossless_writer.h"
#include "codec/jpeg/encode/scan_parts.h"
#include "codec/jpeg/encode/scan_writer.h"
#include "codec/jpeg/encode/segment_writer.h"
#include "codec/jpeg/fused.h"
#include "codec/jpeg/metadata.h"

namespace qel::codec::jpeg {

namespace {

QuantizerSteps stepsFor(TableKind kind, int quality, bool wide)
{
    QuantizerSteps steps;
    int scale = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    for (int i = 0; i < 64; ++i)
        steps[i] = uint16_t(std::clamp((kTypicalSteps[kind][i] * scale + 50) / 100, 1, wide ? 32767 : 255));
    return steps;
}

Colour colourFor(const Picture& picture, Target target)
{
    ColourSpace space = picture.space();
    switch (target) {
    case Target::usual:
        return space == ColourSpace::grey ? Colour::grey : space == ColourSpace::rgb ? Colour::ycbcr : Colour::ycck;
    case Target::grey:
        if (space != ColourSpace::cmyk) return Colour::grey;
        break;
    case Target::ycbcr:
    case Target::rgb:
        if (space == ColourSpace::rgb) return target == Target::rgb ? Colour::rgb : Colour::ycbcr;
        break;
    case Target::cmyk:
    case Target::ycck:
        if (space == ColourSpace::cmyk) return target == Target::cmyk ? Colour::cmyk : Colour::ycck;
        break;
    }
    throw CodecError("the picture has not the colour space that is asked for");
}

const std::array<HuffmanPair, 2> kTypicalTables = {{{kTypicalDc[0], kTypicalAc[0]}, {kTypicalDc[1], kTypicalAc[1]}}};

class Encoder {
public:
    Encoder(const Picture& picture, const EncodeOptions& options);
    std::vector<uint8_t> file();
    int threads() const { return threadsFor(uint64_t(info_.width) * info_.height); }

private:
    void checkOptions() const;
    void describeFrame();
    void describeComponents();
    void chooseScans();
    template <class Body> void withBlocks(const ScanLayout& layout, Body body) const;
    void encodeStraight();
    void encodeStored();
    std::vector<BlockStore> transformAll(Progress& progress);
    struct CodedScan {
        ScanHeader header;
        std::array<HuffmanPair, 2> tables;
        int interval; // of restart markers
        std::vector<uint8_t> data;
    };
    CodedScan codeStored(const Scan& described, std::vector<BlockStore>& stores, Progress& progress) const;
    std::array<HuffmanPair, 2> bestTables(const CodedScan& scan, const ScanLayout& layout,
                                          std::vector<BlockStore>& stores, Progress& progress) const;
    // Codes blocks at the end of `out`; withSource(body) calls body(source), where they come from.
    template <class WithSource> void codeData(const CodedScan& scan, const ScanLayout& layout, Progress& progress,
                                              std::vector<uint8_t>& out, WithSource withSource) const;
    // Runs of blocks without coefficients tie the parts of other progressive scans together.
    bool isInParts(const ScanHeader& scan) const { return scan.kind == ScanKind::sequential && threads() > 1; }
    // Writes what stands before the data of a scan.
    void beginScan(const ScanHeader& scan, const std::array<HuffmanPair, 2>& tables, int interval);
    std::vector<int> allComponents() const;
    ScanHeader headerOf(const Scan& scan) const;
    bool needsStatistics(const ScanHeader& scan) const;
    int restartInterval(const ScanLayout& layout) const;

    const Picture& picture_;
    const EncodeOptions& options_;
    Info info_;
    ScanScript scans_;
    bool isProgressive_ = false;
    std::array<QuantizerSteps, 2> steps_;
    std::array<bool, 2> written_{}; // typical Huffman tables that the file holds already
    std::vector<uint8_t> out_;
    SegmentWriter segments_{out_};
};

Encoder::Encoder(const Picture& picture, const EncodeOptions& options) : picture_(picture), options_(options)
{
    checkOptions();
    for (TableKind kind : {kLuminance, kChrominance})
        steps_[kind] = stepsFor(kind, options.quality, options.wideQuantizers);
    describeFrame();
    describeComponents();
    chooseScans();
}

void Encoder::checkOptions() const
{
    if (picture_.precision() != 8) throw CodecError("a JPEG file that is not lossless holds samples of 8 bits");
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
    info_.hasJfif = info_.colour == Colour::grey || info_.colour == Colour::ycbcr;
    if (!info_.hasJfif) info_.adobeTransform = info_.colour == Colour::ycck ? 2 : 0;
}

void Encoder::describeComponents()
{
    bool chrominance = info_.colour == Colour::ycbcr || info_.colour == Colour::ycck;
    const Samplings& sampling = options_.sampling ? *options_.sampling : chrominance ? kSampling420 : kSampling444;
    std::string_view names = info_.colour == Colour::rgb    ? "RGB"
                             : info_.colour == Colour::cmyk ? "CMYK"
                             : info_.colour == Colour::grey ? "\1"
                                                            : "\1\2\3\4";
    int count = info_.colour == Colour::grey ? 1 : picture_.channels();
    for (int i = 0; i < count; ++i) {
        auto [h, v] = count == 1 ? Sampling{1, 1} : sampling[i];
        if (h < 1 || h > 2 || v < 1 || v > 2) throw CodecError("sampling factors can be 1 and 2 only");
        int table = chrominance && (i == 1 || i == 2) ? kChrominance : kLuminance;
        info_.components.push_back({names[i], h, v, table, 0, 0});
    }
    setComponentSizes(info_);
    int largestStep = 0;
    for (const Component& c : info_.components)
        largestStep = std::max<int>(largestStep, std::ranges::max(steps_[c.quantizer]));
    info_.frameMarker = largestStep > 255 ? marker::kSof1 : marker::kSof0;
}

std::vector<int> Encoder::allComponents() const
{
    std::vector<int> all(info_.components.size());
    std::iota(all.begin(), all.end(), 0);
    return all;
}

void Encoder::chooseScans()
{
    int count = int(info_.components.size());
    scans_ = options_.scans;
    if (scans_.empty() && options_.progressive) scans_ = usualScript(count, info_.colour == Colour::ycbcr);
    if (scans_.empty() && options_.interleaved) scans_ = {{allComponents()}};
    if (scans_.empty())
        for (int i : allComponents()) scans_.push_back({{i}});
    checkScript(scans_, count);
    isProgressive_ = !scans_[0].isSequential();
    if (isProgressive_) info_.frameMarker = marker::kSof2;
    for (const Scan& scan : scans_)
        if (ScanLayout(info_, scan.components).blocks.size() > 10)
            throw CodecError("sampling factors that give more than 10 blocks to an MCU");
}

ScanHeader Encoder::headerOf(const Scan& scan) const
{
    ScanHeader header;
    for (int i : scan.components) {
        int table = info_.components[i].quantizer;
        header.components.push_back({i, table, table});
    }
    std::tie(header.first, header.last, header.high, header.low) = std::tie(scan.first, scan.last, scan.high, scan.low);
    if (isProgressive_) header.kind = scanKind(scan.first, scan.high);
    return header;
}

// Progressive scans have symbols that the typical tables lack; those that refine DC coefficients have none.
bool Encoder::needsStatistics(const ScanHeader& scan) const
{
    return (options_.optimiseTables || isProgressive_) && scan.kind != ScanKind::dcRefine;
}

int Encoder::restartInterval(const ScanLayout& layout) const
{
    int64_t interval =
        options_.restartRows ? int64_t(options_.restartRows) * layout.mcusAcross : options_.restartInterval;
    if (interval < 0 || interval > 65535) throw CodecError("the restart interval is not in 0 to 65535 MCUs");
    return int(interval);
}

std::vector<uint8_t> Encoder::file()
{
    segments_.marker(marker::kSoi);
    if (info_.hasJfif)
        segments_.jfif(options_.metadata.density);
    else
        segments_.adobe(info_.adobeTransform);
    writeMetadata(out_, options_.metadata);
    int last = std::ranges::max(info_.components, {}, &Component::quantizer).quantizer;
    for (int table = 0; table <= last; ++table) segments_.quantizer(table, steps_[table]);
    segments_.frame(info_);
    if (scans_.size() == 1 && !options_.optimiseTables && !isProgressive_)
        encodeStraight();
    else
        encodeStored();
    segments_.marker(marker::kEoi);
    return std::move(out_);
}

void Encoder::beginScan(const ScanHeader& scan, const std::array<HuffmanPair, 2>& tables, int interval)
{
    bool typical = !needsStatistics(scan);
    std::array<bool, 2> done{};
    for (auto& component : scan.components) {
        int table = component.dcTable;
        if (scan.kind == ScanKind::dcRefine || std::exchange((typical ? written_ : done)[table], true)) continue;
        if (codesDcTable(scan.kind)) segments_.huffmanTable(0, table, tables[table].dc);
        if (codesAcTable(scan.kind)) segments_.huffmanTable(1, table, tables[table].ac);
    }
    if (interval != info_.restartInterval) segments_.restartInterval(interval);
    info_.restartInterval = interval;
    segments_.scan(info_, scan);
}

void Encoder::encodeStraight()
{
    ScanLayout layout(info_, scans_[0].components);
    CodedScan scan = {headerOf(scans_[0]), kTypicalTables, restartInterval(layout), {}};
    beginScan(scan.header, scan.tables, scan.interval);
    Progress progress(options_.progress, layout.mcusDown);
    codeData(scan, layout, progress, out_, [&](auto body) { withBlocks(layout, body); });
}

// body(blocks) with the coefficients of the picture as a scan asks for them: by strips of planes, whose chroma is
// rounded without bias, or MCU by MCU where that is wanted and the library has the conversion.
template <class Body> void Encoder::withBlocks(const ScanLayout& layout, Body body) const
{
    if (options_.fast && mcuConversionFor(info_)) {
        PixelsToMcu blocks(info_, layout, steps_, picture_);
        return body(blocks);
    }
    StripReader strips(info_, picture_);
    ForwardTransform blocks(info_, layout, steps_, strips);
    body(blocks);
}

std::vector<BlockStore> Encoder::transformAll(Progress& progress)
{
    std::vector<BlockStore> stores;
    for (const Component& c : info_.components) stores.emplace_back(info_, c, BlockStore::Fill::none);
    ScanLayout layout(info_, allComponents());
    int bands = std::min(layout.mcusDown, threads());
    forEachInParallel(bands, threads(), [&](int band) {
        StoredBlocks places(layout, stores);
        withBlocks(layout, [&](auto& blocks) {
            for (int row = band; row < layout.mcusDown; row += bands) {
                blocks.startRow(row);
                places.startRow(row);
                for (int column = 0; column < layout.mcusAcross; ++column)
                    blocks.transformMcu(column, [&](int i) { return places(i, column); });
                progress.step();
            }
        });
    });
    return stores;
}

void Encoder::encodeStored()
{
    int steps = ScanLayout(info_, allComponents()).mcusDown;
    for (const Scan& scan : scans_)
        steps += (needsStatistics(headerOf(scan)) ? 2 : 1) * ScanLayout(info_, scan.components).mcusDown;
    Progress progress(options_.progress, steps);
    std::vector<BlockStore> stores = transformAll(progress);
    std::vector<CodedScan> coded(scans_.size());
    // The last ones of a progressive picture, with its lowest bits, take longest: they come first.
    forEachInParallel(int(scans_.size()), threads(), [&](int i) {
        size_t scan = scans_.size() - 1 - size_t(i);
        coded[scan] = codeStored(scans_[scan], stores, progress);
    });
    for (const CodedScan& scan : coded) {
        beginScan(scan.header, scan.tables, scan.interval);
        out_.insert(out_.end(), scan.data.begin(), scan.data.end());
    }
}

Encoder::CodedScan Encoder::codeStored(const Scan& described, std::vector<BlockStore>& stores, Progress& progress) const
{
    ScanLayout layout(info_, described.components);
    CodedScan scan = {headerOf(described), kTypicalTables, restartInterval(layout), {}};
    if (needsStatistics(scan.header)) scan.tables = bestTables(scan, layout, stores, progress);
    codeData(scan, layout, progress, scan.data, [&](auto body) {
        StoredBlocks blocks(layout, stores);
        body(blocks);
    });
    return scan;
}

std::array<HuffmanPair, 2> Encoder::bestTables(const CodedScan& scan, const ScanLayout& layout,
                                               std::vector<BlockStore>& stores, Progress& progress) const
{
    ScanStatistics statistics(scan.header);
    if (isInParts(scan.header)) {
        countInParts(scan.header, layout, stores, scan.interval, threads(), progress, statistics);
    } else {
        StoredBlocks blocks(layout, stores);
        codeScan(layout, scan.interval, blocks, statistics, progress);
    }
    return {statistics.tables(0), statistics.tables(1)};
}

template <class WithSource> void Encoder::codeData(const CodedScan& scan, const ScanLayout& layout, Progress& progress,
                                                   std::vector<uint8_t>& out, WithSource withSource) const
{
    if (isInParts(scan.header)) {
        ScanSpecs specs(scan.header, scan.tables);
        return codeScanInParts(out, layout, specs, scan.interval, threads(), progress, withSource);
    }
    ScanEncoder coder(out, layout, scan.header, scan.tables);
    withSource([&](auto& blocks) { codeScan(layout, scan.interval, blocks, coder, progress); });
}

}

MetadataRoom roomFor(const EncodeOptions& options, ColourSpace space)
{
    MetadataRoom room = kMetadataRoom;
    // Densities are JFIF's, whose pictures are grey or YCbCr.
    bool isRgb = space == ColourSpace::rgb && (options.lossless || options.target == Target::rgb);
    room.density = room.aspectRatio = !isRgb && space != ColourSpace::cmyk;
    return room;
}

std::vector<uint8_t> encode(const Picture& picture, const EncodeOptions& options)
{
    if (picture.hasAlpha()) throw CodecError("JPEG files have no alpha");
    if (options.lossless) return encodeLossless(picture, options);
    Encoder encoder(picture, options);
    return withThreads(encoder.threads(), [&] { return encoder.file(); });
}

}
