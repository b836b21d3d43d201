// Decoding of whole files: scan after scan into planes, or one scan of all components straight into the picture.
#include "codec/jpeg_reader.h"

#include <algorithm>
#include <cstring>

#include "codec/jpeg_output.h"
#include "codec/jpeg_scan.h"
#include "codec/jpeg_transform.h"

namespace qel::codec {

namespace {

// For the picture and everything beside it.
constexpr uint64_t kMaxMemory = uint64_t(1920) << 20;

class Decoder {
public:
    Decoder(Bytes file, const JpegDecodeOptions& options);

    Picture picture();
    std::vector<JpegPlane> separatePlanes();
    std::vector<JpegCoefficients> coefficients();

    const JpegInfo& info() const { return headers_.info(); }
    Warnings takeWarnings() { return std::move(warnings_); }

private:
    void checkSupported() const;
    void checkMemory(uint64_t bytes) const;
    void streamInto(Picture& picture);
    std::vector<Plane> decodePlanes(uint64_t otherMemory);
    int fillGaps(std::vector<Plane>& planes, bool all) const;
    template <class MakeSink> void decodeScans(MakeSink makeSink);
    bool takeNew(const ScanHeader& scan);
    std::optional<ScanHeader> scanBehind(const ScanDecoder& coder);
    void report(const ScanDecoder& coder) const
    {
        if (options_.progress) options_.progress(double(coder.position()) / double(file_.size()));
    }

    Bytes file_;
    const JpegDecodeOptions& options_;
    JpegHeaders headers_;
    ScanHeader firstScan_;
    std::vector<bool> seen_;       // components that have had their scan
    std::vector<int> decodedRows_; // of their samples
    Warnings warnings_;
};

Decoder::Decoder(Bytes file, const JpegDecodeOptions& options) : file_(file), options_(options), headers_(file)
{
    firstScan_ = *headers_.nextScan(2);
    checkSupported();
    seen_.resize(info().components.size());
    decodedRows_.resize(info().components.size());
}

void Decoder::checkSupported() const
{
    bool sequential = info().process == JpegProcess::baseline || info().process == JpegProcess::extended;
    if (!sequential)
        throw CodecError("the coding process SOF" + std::to_string(info().frameMarker - marker::kSof0) + " (" +
                             nameOf(info().process) + ") is not supported",
                         headers_.framePosition());
    if (info().precision != 8)
        throw CodecError("samples of " + std::to_string(info().precision) + " bits are not supported",
                         headers_.framePosition());
    if (uint64_t(info().width) * info().height > options_.maxPixels)
        throw CodecError("the picture has more pixels than allowed", headers_.framePosition());
}

void Decoder::checkMemory(uint64_t bytes) const
{
    if (bytes > kMaxMemory) throw CodecError("the picture is too large", headers_.framePosition());
}

Picture Decoder::picture()
{
    if (info().colour == JpegColour::other)
        throw CodecError("a picture of " + std::to_string(info().components.size()) + " components",
                         headers_.framePosition());
    size_t components = info().components.size();
    ColourSpace space = components == 1 ? ColourSpace::grey : components == 3 ? ColourSpace::rgb : ColourSpace::cmyk;
    Picture picture(info().width, info().height, space, 8);
    if (firstScan_.components.size() == components) {
        streamInto(picture);
    } else {
        std::vector<Plane> planes = decodePlanes(picture.sizeInBytes());
        int end = fillGaps(planes, false);
        RowWriter writer(info(), options_.upsampling, planes, picture);
        writer.writeUntil(end);
        writer.fillRest();
    }
    return picture;
}

// One scan holds everything: each row of MCUs goes through a strip that stays in the cache.
void Decoder::streamInto(Picture& picture)
{
    ScanDecoder coder(file_, headers_, firstScan_);
    const ScanLayout& layout = coder.layout();
    std::vector<Plane> planes;
    for (const JpegComponent& component : info().components) {
        int rowsPerMcu = layout.shares.size() == 1 ? 8 : 8 * component.v;
        // Another row of blocks holds what interpolation between rows of MCUs still needs.
        planes.emplace_back(8 * paddedBlocksAcross(info(), component), rowsPerMcu + 8);
    }
    BlockTransform transform(headers_, layout, planes);
    RowWriter writer(info(), options_.upsampling, planes, picture);
    int rowsPerMcu = layout.shares.size() == 1 ? 8 : 8 * info().maxV();
    for (int row = 0; row < layout.mcusDown; ++row) {
        // Nothing follows, but the row that was interpolated with what would have followed.
        bool onlyGrey = coder.ended();
        transform.startRow(row);
        coder.decodeRow(transform);
        writer.writeUntil(row + 1 == layout.mcusDown ? picture.height() : (row + 1) * rowsPerMcu - 1);
        report(coder);
        if (onlyGrey) break;
    }
    writer.fillRest();
    if (scanBehind(coder)) warnings_.push_back("scans behind the picture are left out");
}

// Notes what was wrong with the scan, and reads on to the next. Headers that are damaged behind a scan may be its own
// data, damaged: they end the picture, but do not take away what there is.
std::optional<ScanHeader> Decoder::scanBehind(const ScanDecoder& coder)
{
    if (std::string damage = coder.damage(); !damage.empty()) warnings_.push_back(damage);
    try {
        return headers_.nextScan(coder.position());
    } catch (const CodecError& error) {
        warnings_.push_back(error.what());
        return std::nullopt;
    }
}

// False if a component of the scan has been decoded before: sequential files hold each one once.
bool Decoder::takeNew(const ScanHeader& scan)
{
    for (auto& component : scan.components) {
        if (seen_[component.index]) return false;
        seen_[component.index] = true;
    }
    return true;
}

template <class MakeSink> void Decoder::decodeScans(MakeSink makeSink)
{
    for (std::optional<ScanHeader> scan = firstScan_; scan;) {
        if (!takeNew(*scan)) {
            warnings_.push_back("scans that repeat a component are left out");
            break;
        }
        ScanDecoder coder(file_, headers_, *scan);
        auto sink = makeSink(coder.layout());
        for (int row = 0; row < coder.layout().mcusDown && !coder.ended(); ++row) {
            sink.startRow(row);
            coder.decodeRow(sink);
            for (const ScanShare& share : coder.layout().shares) decodedRows_[share.component] += 8 * share.down;
            report(coder);
        }
        scan = scanBehind(coder);
    }
    for (size_t i = 0; i < seen_.size(); ++i)
        if (!seen_[i]) warnings_.push_back("component " + std::to_string(i + 1) + " is missing");
}

std::vector<Plane> Decoder::decodePlanes(uint64_t otherMemory)
{
    uint64_t bytes = otherMemory;
    for (const JpegComponent& c : info().components)
        bytes += uint64_t(64) * paddedBlocksAcross(info(), c) * paddedBlocksDown(info(), c);
    checkMemory(bytes);

    std::vector<Plane> planes;
    for (const JpegComponent& c : info().components) {
        planes.emplace_back(8 * paddedBlocksAcross(info(), c), 8 * paddedBlocksDown(info(), c));
    }
    decodeScans([&](const ScanLayout& layout) { return BlockTransform(headers_, layout, planes); });
    return planes;
}

// Rows of samples that were not decoded become grey: all of them, or those of the part of the picture that any
// component reaches. Returns the number of rows of the picture in that part.
int Decoder::fillGaps(std::vector<Plane>& planes, bool all) const
{
    int end = all ? info().height : 0;
    for (size_t i = 0; i < planes.size(); ++i) {
        int reached = decodedRows_[i] * info().maxV() / info().components[i].v;
        end = std::max(end, std::min(reached, info().height));
    }
    for (size_t i = 0; i < planes.size(); ++i) {
        const JpegComponent& c = info().components[i];
        // One row more, for interpolation.
        int needed = std::min(end * c.v / info().maxV() + 2, c.height);
        for (int y = decodedRows_[i]; y < needed; ++y) memset(planes[i].row(y), 128, planes[i].step());
    }
    return end;
}

std::vector<JpegPlane> Decoder::separatePlanes()
{
    std::vector<JpegPlane> result;
    std::vector<Plane> planes = decodePlanes(uint64_t(info().width) * info().height * info().components.size());
    fillGaps(planes, true);
    for (size_t i = 0; i < planes.size(); ++i) {
        const JpegComponent& component = info().components[i];
        JpegPlane& plane = result.emplace_back(JpegPlane{component.width, component.height, {}});
        plane.samples.reserve(size_t(plane.width) * plane.height);
        for (int y = 0; y < plane.height; ++y)
            plane.samples.insert(plane.samples.end(), planes[i].row(y), planes[i].row(y) + plane.width);
    }
    return result;
}

std::vector<JpegCoefficients> Decoder::coefficients()
{
    uint64_t bytes = 0;
    for (const JpegComponent& c : info().components) bytes += uint64_t(128) * blocksFor(c.width) * blocksFor(c.height);
    checkMemory(bytes);

    std::vector<JpegCoefficients> components;
    for (const JpegComponent& c : info().components) {
        JpegCoefficients& store =
            components.emplace_back(JpegCoefficients{blocksFor(c.width), blocksFor(c.height), {}});
        store.values.resize(size_t(64) * store.blocksAcross * store.blocksDown);
    }
    decodeScans([&](const ScanLayout& layout) { return CoefficientStore(layout, components); });
    return components;
}

}

DecodedJpeg decodeJpeg(Bytes file, const JpegDecodeOptions& options)
{
    Decoder decoder(file, options);
    Picture picture = decoder.picture();
    return {std::move(picture), decoder.info(), decoder.takeWarnings()};
}

DecodedJpegPlanes decodeJpegPlanes(Bytes file, const JpegDecodeOptions& options)
{
    Decoder decoder(file, options);
    std::vector<JpegPlane> planes = decoder.separatePlanes();
    return {std::move(planes), decoder.info(), decoder.takeWarnings()};
}

DecodedJpegCoefficients decodeJpegCoefficients(Bytes file, const JpegDecodeOptions& options)
{
    Decoder decoder(file, options);
    std::vector<JpegCoefficients> components = decoder.coefficients();
    return {std::move(components), decoder.info(), decoder.takeWarnings()};
}

}
