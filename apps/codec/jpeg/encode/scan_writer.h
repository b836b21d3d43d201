// SPDX-License-Identifier: Apache-2.0
// Entropy coding of one scan, or counting its symbols first, block after block.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "codec/base/library.h"
#include "codec/base/progress.h"
#include "codec/jpeg/headers.h"
#include "codec/jpeg/layout.h"
#include "codec/jpeg/tables.h"

namespace qel::codec::jpeg {

// The two Huffman tables of a component.
struct HuffmanPair {
    HuffmanLists dc, ac;
};

// Counts the symbols of a scan.
class ScanStatistics {
public:
    explicit ScanStatistics(const ScanHeader& scan);

    // Goes on where a block of the component had this DC coefficient.
    void follow(int slot, int16_t dc) { slots_[slot].lastDc = dc; }
    // Adds what was counted of another part of the scan.
    void add(const ScanStatistics& other);

    void startRow() {}
    void block(int slot, const int16_t* coefficients) { check(count(slots_[slot], coefficients, 0)); }
    // The same for a row of a lossless scan: rows[s] has `width` differences of the scan's component s.
    void differences(const std::vector<const int16_t*>& rows, int width);
    void restart();
    void finish();

    // The best tables for the symbols that table 0 or 1 is for; those that the scan does not use are empty.
    HuffmanPair tables(int table) const;

    // How often each category of a DC coefficient, or of a difference, was counted for that table.
    const std::array<uint32_t, 256>& dcCounts(int table) const { return counts_[table].dc; }

private:
    struct Counts {
        std::array<uint32_t, 256> dc{}, ac{};
    };
    struct Slot {
        uint32_t *dc, *ac;
        int16_t lastDc;
    };
    QelStatus count(Slot& s, const int16_t* coefficients, int flush)
    {
        switch (scan_.kind) {
        case ScanKind::dcFirst:
            return qeliGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(coefficients, s.dc, &s.lastDc, scan_.low);
        case ScanKind::dcRefine:
            return qelStsNoErr;
        case ScanKind::acFirst:
            return qeliGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(coefficients, s.ac, scan_.first, scan_.last,
                                                                   scan_.low, state_.get(), flush);
        case ScanKind::acRefine:
            return qeliGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(coefficients, s.ac, scan_.first, scan_.last,
                                                                    scan_.low, state_.get(), flush);
        default:
            return qeliGetHuffmanStatistics8x8_JPEG_16s_C1(coefficients, s.dc, s.ac, &s.lastDc);
        }
    }

    const ScanHeader& scan_;
    std::array<Counts, 2> counts_;
    std::vector<Slot> slots_;
    EncodeState state_;
};

// The tables of a scan, ready for coding.
class ScanSpecs {
public:
    struct Slot {
        const QelEncodeHuffmanSpec *dc, *ac;
    };
    ScanSpecs(const ScanHeader& scan, const std::array<HuffmanPair, 2>& pairs);

    const Slot& operator[](int slot) const { return slots_[slot]; }
    int size() const { return int(slots_.size()); }

private:
    struct Specs {
        EncodeSpec dc, ac;
    };
    std::array<Specs, 2> specs_;
    std::vector<Slot> slots_;
};

// Codes a scan at the end of `out`.
class ScanEncoder {
public:
    ScanEncoder(std::vector<uint8_t>& out, const ScanLayout& layout, const ScanHeader& scan,
                const std::array<HuffmanPair, 2>& pairs);

    // To be called before the blocks of each row of MCUs.
    void startRow();
    void block(int slot, const int16_t* coefficients) { check(encode(slots_[slot], coefficients, 0)); }
    // The same for a row of a lossless scan.
    void differences(const std::vector<const int16_t*>& rows, int width);
    void restart();
    void finish();

private:
    struct Slot : ScanSpecs::Slot {
        int16_t lastDc = 0;
    };
    QelStatus encode(Slot& s, const int16_t* coefficients, int flush)
    {
        switch (scan_.kind) {
        case ScanKind::dcFirst:
            return qeliEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(coefficients, row_.get(), room_, &position_, &s.lastDc,
                                                              scan_.low, s.dc, state_.get(), flush);
        case ScanKind::dcRefine:
            return qeliEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(coefficients, row_.get(), room_, &position_, scan_.low,
                                                               state_.get(), flush);
        case ScanKind::acFirst:
            return qeliEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(coefficients, row_.get(), room_, &position_, scan_.first,
                                                              scan_.last, scan_.low, s.ac, state_.get(), flush);
        case ScanKind::acRefine:
            return qeliEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(coefficients, row_.get(), room_, &position_, scan_.first,
                                                               scan_.last, scan_.low, s.ac, state_.get(), flush);
        default:
            return qeliEncodeHuffman8x8_JPEG_16s1u_C1(coefficients, row_.get(), room_, &position_, &s.lastDc, s.dc,
                                                      s.ac, state_.get(), flush);
        }
    }

    std::vector<uint8_t>& out_;
    const ScanHeader& scan_;
    int room_; // for a row of MCUs
    std::unique_ptr<uint8_t[]> row_;
    int position_ = 0; // in it
    EncodeState state_;
    ScanSpecs specs_;
    std::vector<Slot> slots_;
    int nextMarker_ = 0;
};

// Gives the blocks of a row of MCUs in the order of the scan: block `i` of the MCU in a column.
template <class T>
concept BlockSource = std::is_invocable_r_v<const int16_t*, T&, int, int>;

// Hands the blocks of some rows of MCUs to one of the above.
template <BlockSource Source, class Coder> void codeRows(const ScanLayout& layout, int restartInterval, int first,
                                                         int end, Source& source, Coder& coder, Progress& progress)
{
    int64_t passed = int64_t(first) * layout.mcusAcross, inInterval = restartInterval ? passed % restartInterval : 0;
    int left = !restartInterval ? INT32_MAX : passed && !inInterval ? 0 : int(restartInterval - inInterval);
    int blocks = int(layout.blocks.size());
    std::vector<int> slots;
    for (const McuBlock& block : layout.blocks) slots.push_back(block.slot);
    for (int row = first; row < end; ++row) {
        source.startRow(row);
        coder.startRow();
        for (int column = 0; column < layout.mcusAcross; ++column) {
            if (left-- == 0) {
                coder.restart();
                left = restartInterval - 1;
            }
            for (int i = 0; i < blocks; ++i) coder.block(slots[i], source(i, column));
        }
        progress.step();
    }
}

// The same for the whole scan.
template <BlockSource Source, class Coder>
void codeScan(const ScanLayout& layout, int restartInterval, Source& source, Coder& coder, Progress& progress)
{
    codeRows(layout, restartInterval, 0, layout.mcusDown, source, coder, progress);
    coder.finish();
}

}
