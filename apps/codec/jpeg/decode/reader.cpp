// SPDX-License-Identifier: Apache-2.0
// Decoding of whole files: one scan of all components straight into the picture, scan after scan into planes, all scans
// of a progressive file into a store of coefficients first, or the rows of a lossless one without any of that.
#include "codec/jpeg/decode/reader.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "codec/base/parallel.h"
#include "codec/jpeg/decode/lossless_reader.h"
#include "codec/jpeg/decode/output.h"
#include "codec/jpeg/decode/row_stream.h"
#include "codec/jpeg/decode/scan.h"
#include "codec/jpeg/decode/scan_chain.h"
#include "codec/jpeg/decode/scans.h"
#include "codec/jpeg/decode/split_scan.h"
#include "codec/jpeg/metadata.h"

namespace qel::codec::jpeg {

namespace {

// For the picture and everything beside it.
constexpr uint64_t kMaxMemory = uint64_t(1920) << 20;

class Decoder {
public:
    Decoder(Bytes file, const DecodeOptions& options);

    Picture picture();
    std::vector<SamplePlane> separatePlanes();
    std::vector<Coefficients> coefficients();

    const Info& info() const { return scans_.info(); }
    int threads() const { return threadsFor(uint64_t(info().width) * info().height); }
    Warnings takeWarnings() { return std::move(scans_.warnings()); }

private:
    bool isProgressive() const { return info().process == Process::progressive; }
    bool isLossless() const { return info().process == Process::lossless; }
    void checkSupported() const;
    void checkHasBlocks() const;
    void checkMemory(uint64_t bytes) const;
    void streamScan(Picture& picture);
    template <class MakeStream> std::optional<size_t> streamChunks(const ScanDecoder& coder, MakeStream makeStream);
    void streamRows(ScanDecoder& coder, RowStream stream);
    void streamStores(Picture& picture);
    void streamLossless(Picture& picture);
    void streamBand(const ScanLayout& layout, std::vector<BlockStore>& stores, int from, int to, Picture& picture);
    std::vector<Plane> decodePlanes(uint64_t otherMemory);
    std::vector<BlockStore> decodeStores(uint64_t otherMemory);
    void decodeTogether(std::vector<BlockStore>& stores);
    template <class DecodeRow> void forRows(ScanDecoder& coder, DecodeRow decodeRow);
    ScanLayout wholeLayout() const;
    void report(size_t position) const
    {
        if (options_.progress) options_.progress(double(position) / double(file_.size()));
    }

    Bytes file_;
    const DecodeOptions& options_;
    Scans scans_;
    std::vector<int> decodedRows_; // of each component's samples
};

Decoder::Decoder(Bytes file, const DecodeOptions& options)
    : file_(file), options_(options), scans_(file), decodedRows_(info().components.size())
{
    checkSupported();
}

void Decoder::checkSupported() const
{
    bool sequential = info().process == Process::baseline || info().process == Process::extended;
    if (!sequential && !isProgressive() && !isLossless())
        throw CodecError("the coding process SOF" + std::to_string(info().frameMarker - marker::kSof0) + " (" +
                             nameOf(info().process) + ") is not supported",
                         scans_.headers().framePosition());
    if (isLossless() ? info().precision < 2 || info().precision > 16 : info().precision != 8)
        throw CodecError("samples of " + std::to_string(info().precision) + " bits are not supported",
                         scans_.headers().framePosition());
    if (uint64_t(info().width) * info().height > options_.maxPixels)
        throw CodecError("the picture has more pixels than allowed", scans_.headers().framePosition());
}

void Decoder::checkHasBlocks() const
{
    if (isLossless()) throw CodecError("a lossless file holds no blocks", scans_.headers().framePosition());
}

void Decoder::checkMemory(uint64_t bytes) const
{
    if (bytes > kMaxMemory) throw CodecError("the picture is too large", scans_.headers().framePosition());
}

ScanLayout Decoder::wholeLayout() const
{
    std::vector<int> all(info().components.size());
    std::iota(all.begin(), all.end(), 0);
    return {info(), all};
}

Picture Decoder::picture()
{
    if (info().colour == Colour::other)
        throw CodecError("a picture of " + std::to_string(info().components.size()) + " components",
                         scans_.headers().framePosition());
    size_t components = info().components.size();
    ColourSpace space = components == 1 ? ColourSpace::grey : components == 3 ? ColourSpace::rgb : ColourSpace::cmyk;
    Picture picture(info().width, info().height, space, info().precision);
    if (isLossless()) {
        streamLossless(picture);
    } else if (isProgressive()) {
        streamStores(picture);
    } else if (scans_.first().components.size() == components) {
        streamScan(picture);
    } else {
        std::vector<Plane> planes = decodePlanes(picture.sizeInBytes());
        int end = fillGaps(info(), decodedRows_, false, planes);
        RowWriter writer(info(), options_.upsampling, planes, picture);
        writer.writeUntil(end);
        writer.fillRest();
    }
    return picture;
}

void Decoder::streamScan(Picture& picture)
{
    scans_.take(scans_.first());
    ScanDecoder coder(file_, scans_.headers(), scans_.first());
    auto makeStream = [&](int row) {
        return RowStream(info(), scans_.steps(), coder.layout(), options_, picture, row);
    };
    std::optional<size_t> end = streamChunks(coder, makeStream);
    if (!end) streamRows(coder, makeStream(0));
    if (end ? scans_.from(*end) : scans_.behind(coder))
        scans_.warnings().push_back("scans behind the picture are left out");
}

// On several threads. The position behind the scan, if it is sound and long enough.
template <class MakeStream> std::optional<size_t> Decoder::streamChunks(const ScanDecoder& coder, MakeStream makeStream)
{
    if (threads() == 1) return {};
    std::optional<size_t> end = endOfScan(file_, scans_.first().dataAt);
    if (!end) return {};
    SplitScan scan(coder, *end - scans_.first().dataAt, RowStream::needsRowAbove(info(), options_), threads());
    if (!scan.isWorthwhile() || !scan.run(makeStream, [&](size_t at) { report(at); })) return {};
    return scan.position();
}

void Decoder::streamRows(ScanDecoder& coder, RowStream stream)
{
    for (int row = 0; row < coder.layout().mcusDown; ++row) {
        // Nothing follows, but the row that was interpolated with what would have followed.
        bool onlyGrey = coder.ended();
        stream.row(row, [&](auto& sink) { coder.decodeRow(sink); });
        stream.write(row);
        report(coder.position());
        if (onlyGrey) break;
    }
    stream.fillRest();
}

// Writes the lines of the picture that become ready with rows `from` to `to`, not including it, of MCUs.
void Decoder::streamBand(const ScanLayout& layout, std::vector<BlockStore>& stores, int from, int to, Picture& picture)
{
    StoredBlocks places(layout, stores);
    RowStream stream(info(), scans_.steps(), layout, options_, picture, from);
    auto transform = [&](int row) { stream.row(row, [&](auto& sink) { handOver(layout, places, row, sink); }); };
    if (from > 0 && RowStream::needsRowAbove(info(), options_)) transform(from - 1);
    for (int row = from; row < to; ++row) {
        transform(row);
        stream.write(row);
    }
}

// Bands of the picture are independent, but for the row of MCUs above each.
void Decoder::streamStores(Picture& picture)
{
    std::vector<BlockStore> stores = decodeStores(picture.sizeInBytes());
    ScanLayout layout = wholeLayout();
    int rows = layout.mcusDown, bands = threads() == 1 ? 1 : std::min(rows, 4 * threads());
    forEachInParallel(bands, threads(), [&](int band) {
        auto start = [&](int b) { return int(int64_t(b) * rows / bands); };
        streamBand(layout, stores, start(band), start(band + 1), picture);
    });
}

void Decoder::streamLossless(Picture& picture)
{
    // Planes are no larger than the picture.
    if (LosslessOutput::needsPlanes(info())) checkMemory(2 * picture.sizeInBytes());
    LosslessOutput output(info(), picture);
    scans_.forEach([&](ScanDecoder& coder) {
        LosslessRows rows(info(), coder, scans_.headers().restartInterval(), output);
        forRows(coder, [&](int) { rows.decode(coder); });
    });
    output.finish(options_.upsampling);
}

template <class DecodeRow> void Decoder::forRows(ScanDecoder& coder, DecodeRow decodeRow)
{
    for (int row = 0; row < coder.layout().mcusDown && !coder.ended(); ++row) {
        decodeRow(row);
        report(coder.position());
    }
}

std::vector<Plane> Decoder::decodePlanes(uint64_t otherMemory)
{
    uint64_t bytes = otherMemory;
    for (const Component& c : info().components)
        bytes += uint64_t(64) * paddedBlocksAcross(info(), c) * paddedBlocksDown(info(), c);
    checkMemory(bytes);

    std::vector<Plane> planes;
    for (const Component& c : info().components)
        planes.emplace_back(8 * paddedBlocksAcross(info(), c), 8 * paddedBlocksDown(info(), c));
    if (isProgressive()) {
        std::vector<BlockStore> stores = decodeStores(bytes);
        ScanLayout layout = wholeLayout();
        StoredBlocks places(layout, stores);
        BlockTransform transform(scans_.steps(), layout, planes);
        for (int row = 0; row < layout.mcusDown; ++row) {
            transform.startRow(row);
            handOver(layout, places, row, transform);
        }
        for (size_t i = 0; i < planes.size(); ++i) decodedRows_[i] = info().components[i].height;
        return planes;
    }
    scans_.forEach([&](ScanDecoder& coder) {
        BlockTransform transform(scans_.steps(), coder.layout(), planes);
        forRows(coder, [&](int row) {
            transform.startRow(row);
            coder.decodeRow(transform);
            for (const ScanShare& share : coder.layout().shares) decodedRows_[share.component] += 8 * share.down;
        });
    });
    return planes;
}

std::vector<BlockStore> Decoder::decodeStores(uint64_t otherMemory)
{
    uint64_t bytes = otherMemory;
    for (const Component& c : info().components)
        bytes += uint64_t(BlockStore::kBytesPerBlock) * paddedBlocksAcross(info(), c) * paddedBlocksDown(info(), c);
    checkMemory(bytes);

    std::vector<BlockStore> stores;
    for (const Component& c : info().components) stores.emplace_back(info(), c, BlockStore::Fill::zero);
    if (isProgressive() && threads() > 1) {
        decodeTogether(stores);
        return stores;
    }
    scans_.forEach([&](ScanDecoder& coder) {
        StoredBlocks places(coder.layout(), stores);
        forRows(coder, [&](int row) {
            places.startRow(row);
            coder.decodeRowInto(places);
        });
    });
    return stores;
}

// As many scans at once as can be found without decoding, which are all, unless the file is damaged.
void Decoder::decodeTogether(std::vector<BlockStore>& stores)
{
    for (std::optional<ScanHeader> scan = scans_.first(); scan;) {
        ScanChain chain(info(), stores);
        Warnings damages;
        size_t warned = scans_.warnings().size();
        std::optional<size_t> end = scan->dataAt;
        while (scan && end && scans_.take(*scan)) {
            chain.add({file_, scans_.headers(), *scan});
            end = endOfScan(file_, scan->dataAt);
            if (end) scan = scans_.from(*end);
        }
        chain.run(threads(), options_.progress);
        for (const ScanDecoder& coder : chain.scans())
            if (std::string damage = coder.damage(); !damage.empty()) damages.push_back(damage);
        // Scans come before what stands behind them.
        scans_.warnings().insert(scans_.warnings().begin() + ptrdiff_t(warned), damages.begin(), damages.end());
        scan = end ? std::nullopt : scans_.from(chain.scans().back().position());
    }
    scans_.noteMissing();
}

std::vector<SamplePlane> Decoder::separatePlanes()
{
    checkHasBlocks();
    std::vector<SamplePlane> result;
    std::vector<Plane> planes = decodePlanes(uint64_t(info().width) * info().height * info().components.size());
    fillGaps(info(), decodedRows_, true, planes);
    for (size_t i = 0; i < planes.size(); ++i) {
        const Component& component = info().components[i];
        SamplePlane& plane = result.emplace_back(SamplePlane{component.width, component.height, {}});
        plane.samples.reserve(size_t(plane.width) * plane.height);
        for (int y = 0; y < plane.height; ++y)
            plane.samples.insert(plane.samples.end(), planes[i].row(y), planes[i].row(y) + plane.width);
    }
    return result;
}

std::vector<Coefficients> Decoder::coefficients()
{
    checkHasBlocks();
    uint64_t bytes = 0;
    for (const Component& c : info().components) bytes += uint64_t(128) * blocksFor(c.width) * blocksFor(c.height);
    std::vector<BlockStore> stores = decodeStores(bytes);
    std::vector<Coefficients> components;
    for (size_t i = 0; i < stores.size(); ++i) {
        const Component& c = info().components[i];
        Coefficients& result = components.emplace_back(Coefficients{blocksFor(c.width), blocksFor(c.height), {}});
        result.values.reserve(size_t(64) * result.blocksAcross * result.blocksDown);
        for (int row = 0; row < result.blocksDown; ++row) {
            const int16_t* blocks = stores[i].block(row, 0);
            result.values.insert(result.values.end(), blocks, blocks + size_t(64) * result.blocksAcross);
        }
    }
    return components;
}

}

Decoded decode(Bytes file, const DecodeOptions& options)
{
    Decoder decoder(file, options);
    Picture picture = withThreads(decoder.threads(), [&] { return decoder.picture(); });
    Warnings warnings = decoder.takeWarnings();
    bool isDamaged = !warnings.empty(), isInkInverted = decoder.info().adobeTransform >= 0;
    return {{std::move(picture), std::move(warnings), isDamaged, readMetadata(file), isInkInverted}, decoder.info()};
}

DecodedPlanes decodePlanes(Bytes file, const DecodeOptions& options)
{
    Decoder decoder(file, options);
    std::vector<SamplePlane> planes = withThreads(decoder.threads(), [&] { return decoder.separatePlanes(); });
    return {std::move(planes), decoder.info(), decoder.takeWarnings()};
}

DecodedCoefficients decodeCoefficients(Bytes file, const DecodeOptions& options)
{
    Decoder decoder(file, options);
    auto components = withThreads(decoder.threads(), [&] { return decoder.coefficients(); });
    return {std::move(components), decoder.info(), decoder.takeWarnings()};
}

}
