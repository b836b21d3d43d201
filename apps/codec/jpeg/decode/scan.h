// SPDX-License-Identifier: Apache-2.0
// Entropy-coded data of one scan: blocks of coefficients in the order of the file, across restart markers and damage
// (T.81 E.2, F.2, G.2).
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "codec/base/bytes.h"
#include "codec/base/library.h"
#include "codec/jpeg/headers.h"
#include "codec/jpeg/layout.h"

namespace qel::codec::jpeg {

// A place in the coded data of a sequential scan, with all that a decoder holds there.
struct ScanPlace {
    int at = 0; // next byte
    uint32_t marker = 0;
    int block = 0;        // of its MCU, the next one
    int64_t mcusLeft = 0; // to the next restart marker, if there are any
    int restart = 0;      // number of the marker behind these
    std::array<int16_t, 4> lastDc = {};
    std::array<uint8_t, 32> state = {}; // zero as after Init

    // Whether all that follows is the same, but for sums of DC differences.
    bool isInStepWith(const ScanPlace& other) const
    {
        return at == other.at && marker == other.marker && block == other.block && mcusLeft == other.mcusLeft &&
               restart == other.restart && state == other.state;
    }
};

class ScanDecoder {
public:
    ScanDecoder(Bytes file, const Headers& headers, const ScanHeader& scan);

    const ScanLayout& layout() const { return layout_; }
    const ScanHeader& scan() const { return scan_; }

    // Decodes the next row of MCUs of a sequential scan and calls `sink(i, column, block)` for every block, where `i`
    // counts the blocks of an MCU (layout().blocks) and `block` holds 64 quantized coefficients in natural order, all
    // zero where data is lost.
    template <BlockSink Sink> void decodeRow(Sink& sink)
    {
        forRow([&](int i, int column, bool lost) {
            lost = lost || !decodeBlock(layout_.blocks[i].slot, block_.data());
            if (lost) block_.fill(0);
            sink(i, column, block_.data());
            return lost;
        });
    }

    // The same for any scan, into the blocks at `places(i, column)`. A progressive scan refines what they hold, or
    // leaves it where data is lost.
    template <BlockPlaces Places> void decodeRowInto(const Places& places)
    {
        forRow([&](int i, int column, bool lost) {
            int16_t* block = places(i, column);
            lost = lost || !decodeBlock(layout_.blocks[i].slot, block);
            if (lost && scan_.kind == ScanKind::sequential) std::fill_n(block, 64, int16_t(0));
            return lost;
        });
    }

    // Where the differences of sample `i` of the MCUs of a row go: that of column c to first[c * step].
    struct DifferenceRow {
        int16_t* first;
        int step;
    };

    // The same for a lossless scan, whose restart markers stand between rows: `rows` has one entry for each sample of
    // an MCU. Differences that are lost are 0. Returns the number of columns before the first that is lost.
    int decodeDifferences(const std::vector<DifferenceRow>& rows);

    // The scan's start, or the byte behind a restart marker; or without these any byte, as if an MCU began there.
    ScanPlace placeAt(int at) const;
    // Decodes the block at a place of the caller's in a sequential scan, and passes the restart marker behind it. What
    // is damaged is left to the caller (false).
    bool decodeAt(ScanPlace& place, int16_t* block) const
    {
        if (place.mcusLeft == 0) return false;
        size_t slot = size_t(layout_.blocks[size_t(place.block)].slot);
        auto* state = reinterpret_cast<QelDecodeHuffmanState*>(place.state.data());
        QelStatus status =
            qeliDecodeHuffman8x8_JPEG_1u16s_C1(data_.data(), int(data_.size()), &place.at, block, &place.lastDc[slot],
                                               &place.marker, slots_[slot].dc.get(), slots_[slot].ac.get(), state);
        if (++place.block == int(layout_.blocks.size())) {
            place.block = 0;
            if (hasRestarts() && --place.mcusLeft == 0) passRestart(place);
        }
        return status >= 0;
    }
    // From the first entropy-coded byte to the end of the file.
    Bytes data() const { return data_; }
    size_t positionOf(const ScanPlace& place) const { return base_ + size_t(place.at) - (place.marker ? 2 : 0); }

    // No data is left: all further blocks will be zero.
    bool ended() const { return resumeAt_ == kNever; }
    // Where the next marker is to be looked for.
    size_t position() const { return base_ + at_ - (marker_ ? 2 : 0); }
    bool hasRestarts() const { return interval_ != kNever; }
    // One line on the damage that was met, when no more rows will be decoded; empty for a sound scan.
    std::string damage() const;

private:
    struct Slot {
        DecodeSpec dc, ac;
        int16_t lastDc = 0;
    };
    static constexpr int64_t kNever = INT64_MAX;

    // Calls `body(i, column, lost)` for each block of a row of MCUs; it returns whether the rest of the MCU is lost
    // too.
    template <class Body> void forRow(Body body)
    {
        for (int column = 0; column < layout_.mcusAcross; ++column, ++mcu_) {
            if (mcu_ == nextRestart_) restart();
            bool lost = mcu_ < resumeAt_;
            for (int i = 0; i < int(layout_.blocks.size()); ++i) lost = body(i, column, lost);
            lostMcus_ += lost;
        }
    }

    bool decodeBlock(int slot, int16_t* block)
    {
        QelStatus status = decode(slots_[slot], block);
        return status >= 0 || survive(status);
    }
    QelStatus decode(Slot& s, int16_t* block)
    {
        const uint8_t* data = data_.data();
        int size = int(data_.size());
        switch (scan_.kind) {
        case ScanKind::dcFirst:
            return qeliDecodeHuffman8x8_DCFirst_JPEG_1u16s_C1(data, size, &at_, block, &s.lastDc, &marker_, scan_.low,
                                                              s.dc.get(), state_.get());
        case ScanKind::dcRefine:
            return qeliDecodeHuffman8x8_DCRefine_JPEG_1u16s_C1(data, size, &at_, block, &marker_, scan_.low,
                                                               state_.get());
        case ScanKind::acFirst:
            return qeliDecodeHuffman8x8_ACFirst_JPEG_1u16s_C1(data, size, &at_, block, &marker_, scan_.first,
                                                              scan_.last, scan_.low, s.ac.get(), state_.get());
        case ScanKind::acRefine:
            return qeliDecodeHuffman8x8_ACRefine_JPEG_1u16s_C1(data, size, &at_, block, &marker_, scan_.first,
                                                               scan_.last, scan_.low, s.ac.get(), state_.get());
        default:
            return qeliDecodeHuffman8x8_JPEG_1u16s_C1(data, size, &at_, block, &s.lastDc, &marker_, s.dc.get(),
                                                      s.ac.get(), state_.get());
        }
    }
    int decodeSound(const std::vector<DifferenceRow>& rows);
    void passRestart(ScanPlace& place) const;
    bool survive(QelStatus status);
    void restart();
    void resynchronise(int64_t interval);
    bool resumeBehind(int number, int64_t interval);
    void resetCoder();
    void noteDamage();

    ScanLayout layout_;
    ScanHeader scan_;
    Bytes data_;
    size_t base_;         // of data_ in the file
    int at_ = 0;          // in data_
    uint32_t marker_ = 0; // that the reader has met
    DecodeState state_;
    std::vector<Slot> slots_;
    alignas(64) std::array<int16_t, 64> block_;

    int64_t interval_;     // MCUs between restart markers
    int64_t mcu_ = 0;      // next to be decoded
    int64_t nextRestart_;  // MCU before which a restart marker stands
    int64_t resumeAt_ = 0; // MCUs before this one are lost
    int64_t lostMcus_ = 0;
    size_t firstDamage_ = SIZE_MAX;
};

}
