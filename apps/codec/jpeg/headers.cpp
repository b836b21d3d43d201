// SPDX-License-Identifier: Apache-2.0
// Reading of frame, table and scan headers, with all the checks that keep later stages safe.
#include "codec/jpeg/headers.h"

#include <algorithm>
#include <string_view>
#include <tuple>
#include <utility>

#include "codec/jpeg/layout.h"

namespace qel::codec::jpeg {

namespace {

Process processOf(uint8_t frameMarker)
{
    switch (frameMarker) {
    case marker::kSof0:
        return Process::baseline;
    case marker::kSof1:
        return Process::extended;
    case marker::kSof2:
        return Process::progressive;
    case marker::kSof3:
        return Process::lossless;
    default:
        return Process::other;
    }
}

bool isSubsampled(const Info& info)
{
    return std::ranges::any_of(info.components, [&](auto& c) { return c.h != info.maxH() || c.v != info.maxV(); });
}

// JFIF files are YCbCr, Adobe's say so in their marker; without either the names of the components decide. Lossless
// files without either are taken for YCbCr only if their components differ in size: they keep colours as they were.
Colour colourOf(const Info& info)
{
    auto named = [&](int a, int b, int c) {
        return info.components[0].id == a && info.components[1].id == b && info.components[2].id == c;
    };
    switch (info.components.size()) {
    case 1:
        return Colour::grey;
    case 3:
        if (info.hasJfif) return Colour::ycbcr;
        if (info.adobeTransform >= 0) return info.adobeTransform == 0 ? Colour::rgb : Colour::ycbcr;
        if (named('R', 'G', 'B') || (info.process == Process::lossless && !isSubsampled(info))) return Colour::rgb;
        return Colour::ycbcr;
    case 4:
        return info.adobeTransform > 0 ? Colour::ycck : Colour::cmyk;
    default:
        return Colour::other;
    }
}

// Codes of a complete set fill the code space; more than fit is damage.
bool fitsCodeSpace(const HuffmanLists& lists)
{
    int free = 1;
    for (int count : lists.bits) {
        free = 2 * free - count;
        if (free < 0) return false;
    }
    return lists.count() <= 256;
}

}

Headers::Headers(Bytes file) : file_(file)
{
    if (file.size() < 2 || file[0] != 0xFF || file[1] != marker::kSoi) throw CodecError("not a JPEG file", 0);
    if (file.size() > INT32_MAX) throw CodecError("a JPEG file of 2 GiB or more");
}

std::optional<ScanHeader> Headers::nextScan(size_t from)
{
    for (;;) {
        Segment segment = readSegment(file_, from);
        if (segment.code == marker::kSos) {
            ScanHeader scan = readScan(segment);
            if (info_.scans++ == 0) {
                info_.restartInterval = restartInterval_;
                info_.colour = colourOf(info_);
                if (scan.kind == ScanKind::lossless)
                    std::tie(info_.predictor, info_.pointTransform) = std::tuple(scan.predictor, scan.pointTransform);
            }
            return scan;
        }
        if (segment.code == marker::kEoi) {
            if (info_.scans == 0) throw CodecError("the file holds no picture", segment.position);
            return std::nullopt;
        }
        read(segment);
        from = segment.end;
    }
}

void Headers::read(const Segment& segment)
{
    if (marker::isFrame(segment.code)) return readFrame(segment);
    switch (segment.code) {
    case marker::kDqt:
        return readQuantizers(segment);
    case marker::kDht:
        return readHuffmanTables(segment);
    case marker::kApp0:
    case marker::kApp14:
        return readApplication(segment);
    case marker::kDri: {
        Fields fields(segment, "restart interval");
        restartInterval_ = fields.u16();
        return fields.finish();
    }
    default:
        return;
    }
}

void Headers::readFrame(const Segment& segment)
{
    Fields fields(segment, "frame header");
    if (!info_.components.empty()) fields.fail("a second frame in the file");
    framePosition_ = segment.position;
    info_.frameMarker = segment.code;
    info_.process = processOf(segment.code);
    info_.precision = fields.u8();
    info_.height = fields.u16();
    info_.width = fields.u16();
    if (info_.height == 0) info_.height = linesBehindScan(segment.end);
    if (info_.width == 0 || info_.height == 0) fields.fail("a picture without pixels");
    int count = fields.u8();
    if (count < 1) fields.fail("no components");
    if (count > 4) fields.fail(std::to_string(count) + " components, at most 4 are supported");
    readComponents(fields, count);
    fields.finish();
}

void Headers::readComponents(Fields& fields, int count)
{
    for (int i = 0; i < count; ++i) {
        Component component;
        component.id = fields.u8();
        int factors = fields.u8();
        component.h = factors >> 4;
        component.v = factors & 15;
        component.quantizer = fields.u8();
        if (component.h < 1 || component.h > 4 || component.v < 1 || component.v > 4)
            fields.fail("sampling factors " + std::to_string(component.h) + "x" + std::to_string(component.v));
        if (component.quantizer > 3) fields.fail("quantization table " + std::to_string(component.quantizer));
        info_.components.push_back(component);
    }
    setComponentSizes(info_);
}

// A frame header may leave the number of lines to a DNL segment behind the first scan (T.81 B.2.5); 0 if there is none.
int Headers::linesBehindScan(size_t from) const
{
    for (size_t at = findMarker(file_, from); at + 6 <= file_.size(); at = findMarker(file_, at + 2))
        if (file_[at + 1] == marker::kDnl && file_[at + 2] == 0 && file_[at + 3] == 4)
            return file_[at + 4] << 8 | file_[at + 5];
    return 0;
}

void Headers::readQuantizers(const Segment& segment)
{
    Fields fields(segment, "quantization table");
    while (!fields.atEnd()) {
        int head = fields.u8(), wide = head >> 4, slot = head & 15;
        if (wide > 1 || slot > 3) fields.fail("unknown kind or number " + std::to_string(head));
        QuantizerSteps& steps = quantizers_[slot].emplace();
        for (int position : kZigzag) steps[position] = uint16_t(wide ? fields.u16() : fields.u8());
    }
}

void Headers::readHuffmanTables(const Segment& segment)
{
    Fields fields(segment, "Huffman table");
    while (!fields.atEnd()) {
        int head = fields.u8(), isAc = head >> 4, slot = head & 15;
        if (isAc > 1 || slot > 3) fields.fail("unknown kind or number " + std::to_string(head));
        HuffmanLists lists;
        std::ranges::copy(fields.take(16), lists.bits.begin());
        if (!fitsCodeSpace(lists)) fields.fail("more codes than fit");
        std::ranges::copy(fields.take(lists.count()), lists.values.begin());
        (isAc ? ac_ : dc_)[slot] = lists;
    }
}

void Headers::readApplication(const Segment& segment)
{
    std::string_view text(reinterpret_cast<const char*>(segment.parameters.data()), segment.parameters.size());
    if (segment.code == marker::kApp0 && text.starts_with(std::string_view("JFIF\0", 5))) info_.hasJfif = true;
    if (segment.code == marker::kApp14 && text.starts_with("Adobe") && text.size() >= 12)
        info_.adobeTransform = segment.parameters[11];
}

ScanHeader Headers::readScan(const Segment& segment) const
{
    Fields fields(segment, "scan header");
    if (info_.components.empty()) fields.fail("no frame header before it");
    ScanHeader scan;
    int count = fields.u8();
    if (count < 1 || count > 4) fields.fail(std::to_string(count) + " components");
    for (int i = 0; i < count; ++i) {
        int id = fields.u8(), tables = fields.u8();
        auto fits = [&](int index) {
            return info_.components[index].id == id &&
                   std::ranges::none_of(scan.components, [&](auto& other) { return other.index == index; });
        };
        int index = 0, known = int(info_.components.size());
        while (index < known && !fits(index)) ++index;
        if (index == known) fields.fail("component " + std::to_string(id) + " is not in the frame");
        scan.components.push_back({index, tables >> 4, tables & 15});
        if (tables >> 4 > 3 || (tables & 15) > 3) fields.fail("Huffman tables " + std::to_string(tables));
    }
    checkMcu(fields, scan);
    readProgression(fields, scan);
    fields.finish();
    scan.dataAt = segment.end;
    return scan;
}

void Headers::checkMcu(Fields& fields, const ScanHeader& scan) const
{
    int blocks = 0;
    for (auto& component : scan.components)
        blocks += info_.components[component.index].h * info_.components[component.index].v;
    if (scan.components.size() > 1 && blocks > kMaxBlocksOfMcu)
        fields.fail("MCUs of " + std::to_string(blocks) + " blocks, at most " + std::to_string(kMaxBlocksOfMcu) +
                    " are allowed");
}

// Progressive scans hold DC or AC coefficients, the latter of one component (T.81 G.1.1.1). Sequential ones have fixed
// values here, which some writers get wrong.
void Headers::readProgression(Fields& fields, ScanHeader& scan) const
{
    scan.first = fields.u8();
    scan.last = fields.u8();
    int approximation = fields.u8();
    scan.high = approximation >> 4;
    scan.low = approximation & 15;
    if (info_.process == Process::baseline || info_.process == Process::extended)
        std::tie(scan.first, scan.last, scan.high, scan.low) = std::tuple(0, 63, 0, 0);
    if (info_.process == Process::lossless) return readLossless(fields, scan);
    if (info_.process != Process::progressive) return;
    if (scan.last > 63 || scan.first > scan.last || (scan.first == 0 && scan.last != 0))
        fields.fail("coefficients " + std::to_string(scan.first) + " to " + std::to_string(scan.last));
    if (scan.first > 0 && scan.components.size() > 1) fields.fail("AC coefficients of more than one component");
    if (scan.low > kMaxPointTransform) fields.fail("approximation by " + std::to_string(scan.low) + " bits");
    scan.kind = scanKind(scan.first, scan.high);
}

void Headers::readLossless(Fields& fields, ScanHeader& scan) const
{
    scan.kind = ScanKind::lossless;
    scan.predictor = std::exchange(scan.first, 0);
    scan.pointTransform = std::exchange(scan.low, 0);
    scan.last = 63, scan.high = 0;
    if (scan.predictor < 1 || scan.predictor > 7)
        fields.fail("predictor " + std::to_string(scan.predictor) + " of a lossless scan");
    if (scan.pointTransform >= info_.precision)
        fields.fail("a point transform of " + std::to_string(scan.pointTransform) + " bits");
}

const QuantizerSteps& Headers::quantizer(const Component& component) const
{
    const auto& steps = quantizers_[component.quantizer];
    if (!steps) throw CodecError("quantization table " + std::to_string(component.quantizer) + " is missing");
    return *steps;
}

// A symbol of a DC table is a category (T.81 F.1.2.1.2, H.1.2.2).
const HuffmanLists& Headers::dcTable(int slot) const
{
    const HuffmanLists& lists = huffman("DC", dc_[slot]);
    int largest = info_.process == Process::lossless ? 16 : 15;
    for (int i = 0; i < lists.count(); ++i)
        if (lists.values[i] > largest)
            throw CodecError("a Huffman table for DC coefficients has category " + std::to_string(lists.values[i]) +
                             ", at most " + std::to_string(largest) + " is allowed");
    return lists;
}

const HuffmanLists& Headers::huffman(const char* kind, const std::optional<HuffmanLists>& table)
{
    if (!table) throw CodecError(std::string("a Huffman table for ") + kind + " coefficients is missing");
    return *table;
}

}
