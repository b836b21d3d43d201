// SPDX-License-Identifier: Apache-2.0
// Fields of marker segments, most significant byte first.
#include "codec/jpeg/encode/segment_writer.h"

#include <algorithm>
#include <cmath>

namespace qel::codec::jpeg {

using namespace std::string_view_literals;

void SegmentWriter::u16(int value)
{
    u8(value >> 8);
    u8(value & 255);
}

void SegmentWriter::marker(uint8_t code)
{
    u8(0xFF);
    u8(code);
}

void SegmentWriter::begin(uint8_t code, int parameterBytes)
{
    marker(code);
    u16(2 + parameterBytes);
}

void SegmentWriter::jfif(const std::optional<Density>& density)
{
    bool isPerMetre = density && density->isPerMetre;
    double perUnit = isPerMetre ? kMetresPerInch : 1;
    auto dots = [&](double value) { return int(std::clamp(std::round(value * perUnit), 1.0, 65535.0)); };
    begin(marker::kApp0, 14);
    text("JFIF\0"sv);
    u16(0x0101);    // version
    u8(isPerMetre); // dots per inch; else the densities are an aspect ratio
    u16(density ? dots(density->x) : 1);
    u16(density ? dots(density->y) : 1);
    u16(0); // no thumbnail
}

void SegmentWriter::adobe(int transform)
{
    begin(marker::kApp14, 12);
    text("Adobe"sv);
    u16(100); // version
    u16(0);
    u16(0);
    u8(transform);
}

void SegmentWriter::quantizer(int slot, const QuantizerSteps& steps)
{
    bool wide = std::ranges::max(steps) > 255;
    begin(marker::kDqt, 1 + (wide ? 128 : 64));
    u8(wide << 4 | slot);
    for (int position : kZigzag) wide ? u16(steps[position]) : u8(steps[position]);
}

void SegmentWriter::frame(const Info& info)
{
    begin(info.frameMarker, 6 + 3 * int(info.components.size()));
    u8(info.precision);
    u16(info.height);
    u16(info.width);
    u8(int(info.components.size()));
    for (const Component& component : info.components) {
        u8(component.id);
        u8(component.h << 4 | component.v);
        u8(component.quantizer);
    }
}

void SegmentWriter::huffmanTable(int kind, int slot, const HuffmanLists& lists)
{
    begin(marker::kDht, 17 + lists.count());
    u8(kind << 4 | slot);
    out_.insert(out_.end(), lists.bits.begin(), lists.bits.end());
    out_.insert(out_.end(), lists.values.begin(), lists.values.begin() + lists.count());
}

void SegmentWriter::restartInterval(int mcus)
{
    begin(marker::kDri, 2);
    u16(mcus);
}

void SegmentWriter::scan(const Info& info, const ScanHeader& scan)
{
    begin(marker::kSos, 4 + 2 * int(scan.components.size()));
    u8(int(scan.components.size()));
    for (auto& component : scan.components) {
        u8(info.components[component.index].id);
        u8(component.dcTable << 4 | component.acTable);
    }
    bool isLossless = scan.kind == ScanKind::lossless;
    u8(isLossless ? scan.predictor : scan.first);
    u8(isLossless ? 0 : scan.last);
    u8(isLossless ? scan.pointTransform : scan.high << 4 | scan.low);
}

}
