// Entropy coding of one sequential scan, or counting its symbols first, block after block.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "codec/jpeg_layout.h"
#include "codec/jpeg_tables.h"
#include "codec/library.h"

namespace qel::codec {

// The two Huffman tables of a component.
struct HuffmanPair {
    HuffmanLists dc, ac;
};

// Counts the symbols of a scan.
class ScanStatistics {
public:
    // `tables[s]` is the table (0 or 1) of the scan's component s.
    explicit ScanStatistics(std::vector<int> tables) : tables_(std::move(tables)), lastDc_(tables_.size()) {}

    void startRow() {}
    void block(int slot, const int16_t* coefficients)
    {
        Counts& counts = counts_[tables_[slot]];
        check(
            qeliGetHuffmanStatistics8x8_JPEG_16s_C1(coefficients, counts.dc.data(), counts.ac.data(), &lastDc_[slot]));
    }
    void restart() { lastDc_.assign(lastDc_.size(), 0); }
    void finish() {}

    // The best tables for the symbols of table 0 or 1.
    HuffmanPair tables(int table) const;

private:
    struct Counts {
        std::array<uint32_t, 256> dc{}, ac{};
    };
    std::vector<int> tables_;
    std::array<Counts, 2> counts_;
    std::vector<int16_t> lastDc_;
};

// Codes a scan at the end of `out`.
class ScanEncoder {
public:
    ScanEncoder(std::vector<uint8_t>& out, const ScanLayout& layout, const std::array<HuffmanPair, 2>& pairs,
                std::vector<int> tables);

    void startRow();
    void block(int slot, const int16_t* coefficients)
    {
        check(qeliEncodeHuffman8x8_JPEG_16s1u_C1(coefficients, end_, room_, &position_, &lastDc_[slot],
                                                 specs_[tables_[slot]].dc.get(), specs_[tables_[slot]].ac.get(),
                                                 state_.get(), 0));
    }
    void restart();
    void finish();

private:
    struct Specs {
        EncodeSpec dc, ac;
    };
    void flush();

    std::vector<uint8_t>& out_; // longer than what has been written
    size_t used_;
    uint8_t* end_ = nullptr; // of what has been written before this row
    int room_ = 0, position_ = 0;
    int roomPerRow_;
    EncodeState state_;
    std::array<Specs, 2> specs_;
    std::vector<int> tables_;
    std::vector<int16_t> lastDc_;
    int nextMarker_ = 0;
};

// Tells a caller how far the work is, where it wants to know.
class Progress {
public:
    Progress(const std::function<void(double)>& report, int steps) : report_(report), steps_(steps) {}

    void step()
    {
        ++done_;
        if (report_) report_(double(done_) / steps_);
    }

private:
    const std::function<void(double)>& report_;
    int steps_, done_ = 0;
};

// Hands all blocks of a scan, which `source(i, column)` gives after `source.startRow(row)`, to one of the above.
template <class Source, class Coder>
void codeScan(const ScanLayout& layout, int restartInterval, Source& source, Coder& coder, Progress& progress)
{
    int left = restartInterval ? restartInterval : INT32_MAX;
    for (int row = 0; row < layout.mcusDown; ++row) {
        source.startRow(row);
        coder.startRow();
        for (int column = 0; column < layout.mcusAcross; ++column) {
            if (left-- == 0) {
                coder.restart();
                left = restartInterval - 1;
            }
            for (int i = 0; i < int(layout.blocks.size()); ++i) coder.block(layout.blocks[i].slot, source(i, column));
        }
        progress.step();
    }
    coder.finish();
}

}
