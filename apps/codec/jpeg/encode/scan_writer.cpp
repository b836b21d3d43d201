// SPDX-License-Identifier: Apache-2.0
// Tables from counts; room, padding and restart markers of a scan.
#include "codec/jpeg/encode/scan_writer.h"

#include <algorithm>

#include "codec/jpeg/markers.h"

namespace qel::codec::jpeg {

namespace {

// No block takes more: 64 codes of 16 bits, each with 11 more, and a zero byte stuffed behind each byte.
constexpr int kMaxBlockBytes = 64 * (16 + 11) / 8 * 2;
// A difference asks for this much; a code of 16 bits with 15 more, stuffed.
constexpr int kMaxDifferenceBytes = 8;
// An end-of-band run with its correction bits, padding of the last byte, all stuffed, and a marker.
constexpr int kMaxRestartBytes = 2 * ((16 + 14 + 1024) / 8 + 2) + 2;

// Restart markers of lossless scans stand between rows only.
int roomPerMcu(const ScanLayout& layout, const ScanHeader& scan)
{
    int blocks = int(layout.blocks.size());
    return scan.kind == ScanKind::lossless ? blocks * kMaxDifferenceBytes : blocks * kMaxBlockBytes + kMaxRestartBytes;
}

}

ScanStatistics::ScanStatistics(const ScanHeader& scan)
    : scan_(scan), state_(make<EncodeState>(qeliEncodeHuffmanStateInitAlloc_JPEG_8u))
{
    for (auto& component : scan.components)
        slots_.push_back({counts_[component.dcTable].dc.data(), counts_[component.acTable].ac.data(), 0});
}

void ScanStatistics::differences(const std::vector<const int16_t*>& rows, int width)
{
    for (size_t i = 0; i < rows.size(); ++i)
        for (int x = 0; x < width; ++x) check(qeliGetHuffmanStatisticsOne_JPEG_16s_C1(rows[i] + x, slots_[i].dc));
}

void ScanStatistics::add(const ScanStatistics& other)
{
    for (size_t i = 0; i < counts_.size(); ++i)
        for (size_t symbol = 0; symbol < counts_[i].dc.size(); ++symbol) {
            counts_[i].dc[symbol] += other.counts_[i].dc[symbol];
            counts_[i].ac[symbol] += other.counts_[i].ac[symbol];
        }
}

void ScanStatistics::restart()
{
    finish();
    for (Slot& slot : slots_) slot.lastDc = 0;
}

void ScanStatistics::finish()
{
    if (scan_.kind == ScanKind::acFirst || scan_.kind == ScanKind::acRefine) check(count(slots_[0], nullptr, 1));
}

HuffmanPair ScanStatistics::tables(int table) const
{
    HuffmanPair pair;
    auto build = [](const std::array<uint32_t, 256>& counts, HuffmanLists& lists) {
        check(qeliEncodeHuffmanRawTableInit_JPEG_8u(counts.data(), lists.bits.data(), lists.values.data()));
    };
    if (codesDcTable(scan_.kind)) build(counts_[table].dc, pair.dc);
    if (codesAcTable(scan_.kind)) build(counts_[table].ac, pair.ac);
    return pair;
}

ScanSpecs::ScanSpecs(const ScanHeader& scan, const std::array<HuffmanPair, 2>& pairs)
{
    auto spec = [](const HuffmanLists& lists) {
        return make<EncodeSpec>(qeliEncodeHuffmanSpecInitAlloc_JPEG_8u, lists.bits.data(), lists.values.data());
    };
    for (int i = 0; i < 2; ++i) specs_[i] = {spec(pairs[i].dc), spec(pairs[i].ac)};
    for (auto& component : scan.components)
        slots_.push_back({specs_[component.dcTable].dc.get(), specs_[component.acTable].ac.get()});
}

ScanEncoder::ScanEncoder(std::vector<uint8_t>& out, const ScanLayout& layout, const ScanHeader& scan,
                         const std::array<HuffmanPair, 2>& pairs)
    : out_(out), scan_(scan), room_(layout.mcusAcross * roomPerMcu(layout, scan) + kMaxRestartBytes),
      row_(std::make_unique_for_overwrite<uint8_t[]>(room_)),
      state_(make<EncodeState>(qeliEncodeHuffmanStateInitAlloc_JPEG_8u)), specs_(scan, pairs)
{
    for (int i = 0; i < specs_.size(); ++i) slots_.push_back({specs_[i]});
}

void ScanEncoder::startRow()
{
    out_.insert(out_.end(), row_.get(), row_.get() + position_);
    position_ = 0;
}

void ScanEncoder::differences(const std::vector<const int16_t*>& rows, int width)
{
    struct Source {
        const int16_t* row;
        const QelEncodeHuffmanSpec* table;
    };
    std::vector<Source> sources;
    for (size_t i = 0; i < rows.size(); ++i) sources.push_back({rows[i], slots_[i].dc});
    // What changes from call to call is better kept here.
    uint8_t* out = row_.get();
    int position = position_, room = room_;
    for (int x = 0; x < width; ++x)
        for (const Source& s : sources)
            check(qeliEncodeHuffmanOne_JPEG_16s1u_C1(s.row + x, out, room, &position, s.table, state_.get(), 0));
    position_ = position;
}

void ScanEncoder::restart()
{
    check(encode(slots_[0], nullptr, 1));
    row_[position_++] = 0xFF;
    row_[position_++] = uint8_t(marker::kRst0 + nextMarker_);
    nextMarker_ = (nextMarker_ + 1) % 8;
    for (Slot& slot : slots_) slot.lastDc = 0;
}

void ScanEncoder::finish()
{
    check(encode(slots_[0], nullptr, 1));
    startRow();
}

}
