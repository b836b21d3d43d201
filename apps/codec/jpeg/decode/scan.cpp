// SPDX-License-Identifier: Apache-2.0
// Restart intervals and recovery from damage.
#include "codec/jpeg/decode/scan.h"

#include <algorithm>

namespace qel::codec::jpeg {

namespace {

std::vector<int> indicesOf(const ScanHeader& scan)
{
    std::vector<int> indices;
    for (auto& component : scan.components) indices.push_back(component.index);
    return indices;
}

}

ScanDecoder::ScanDecoder(Bytes file, const Headers& headers, const ScanHeader& scan)
    : layout_(headers.info(), indicesOf(scan)), scan_(scan), data_(file.subspan(scan.dataAt)), base_(scan.dataAt),
      state_(make<DecodeState>(qeliDecodeHuffmanStateInitAlloc_JPEG_8u)),
      interval_(headers.restartInterval() ? headers.restartInterval() : kNever), nextRestart_(interval_)
{
    auto spec = [](const HuffmanLists& lists) {
        return make<DecodeSpec>(qeliDecodeHuffmanSpecInitAlloc_JPEG_8u, lists.bits.data(), lists.values.data());
    };
    for (auto& component : scan.components) {
        Slot& slot = slots_.emplace_back();
        if (codesDcTable(scan.kind)) slot.dc = spec(headers.dcTable(component.dcTable));
        if (codesAcTable(scan.kind)) slot.ac = spec(headers.acTable(component.acTable));
    }
}

ScanPlace ScanDecoder::placeAt(int at) const
{
    int restart = hasRestarts() && at > 0 ? (data_[size_t(at) - 1] + 1) & 7 : 0;
    return {.at = at, .mcusLeft = interval_, .restart = restart};
}

void ScanDecoder::passRestart(ScanPlace& place) const
{
    if (place.marker == uint32_t(marker::kRst0 + place.restart)) place = placeAt(place.at);
}

int ScanDecoder::decodeDifferences(const std::vector<DifferenceRow>& rows)
{
    if (mcu_ == nextRestart_) restart();
    int sound = mcu_ < resumeAt_ ? 0 : decodeSound(rows);
    for (const DifferenceRow& row : rows)
        for (int column = sound; column < layout_.mcusAcross; ++column) row.first[ptrdiff_t(column) * row.step] = 0;
    lostMcus_ += layout_.mcusAcross - sound;
    mcu_ += layout_.mcusAcross;
    return sound;
}

int ScanDecoder::decodeSound(const std::vector<DifferenceRow>& rows)
{
    struct Target {
        int16_t* next;
        ptrdiff_t step;
        const QelDecodeHuffmanSpec* table;
    };
    std::array<Target, kMaxBlocksOfMcu> targets;
    Target* end = targets.data();
    for (size_t i = 0; i < rows.size(); ++i)
        *end++ = {rows[i].first, rows[i].step, slots_[layout_.blocks[i].slot].dc.get()};
    // In variables of their own, as a call could change the members.
    const uint8_t* data = data_.data();
    const int size = int(data_.size()), columns = layout_.mcusAcross;
    QelDecodeHuffmanState* state = state_.get();
    for (int column = 0; column < columns; ++column)
        for (Target* to = targets.data(); to != end; ++to) {
            int16_t* difference = to->next;
            to->next += to->step;
            QelStatus status =
                qeliDecodeHuffmanOne_JPEG_1u16s_C1(data, size, &at_, difference, &marker_, to->table, state);
            if (status < 0) {
                survive(status);
                return column;
            }
        }
    return columns;
}

void ScanDecoder::resetCoder()
{
    marker_ = 0;
    check(qeliDecodeHuffmanStateInit_JPEG_8u(state_.get()));
    for (Slot& slot : slots_) slot.lastDc = 0;
}

void ScanDecoder::restart()
{
    // After damage the marker has been passed already, or there is none.
    if (resumeAt_ < mcu_) resynchronise(mcu_ / interval_ - 1);
    nextRestart_ += interval_;
}

// A block failed. Without restart markers a bad run of zeros is no reason to give up: codes find their step again soon,
// and the picture stays recognisable.
bool ScanDecoder::survive(QelStatus status)
{
    noteDamage();
    if (interval_ == kNever && status == qelStsJPEGCoeffPosErr) return true;
    resynchronise(mcu_ / interval_);
    return false;
}

// Finds the restart marker that ends the given interval, and sets resumeAt_ to the MCU behind it.
void ScanDecoder::resynchronise(int64_t interval)
{
    size_t from = size_t(at_) - (marker_ ? 2 : 0);
    resumeAt_ = kNever;
    marker_ = 0;
    for (;; from += 2) {
        size_t found = findMarker(data_, from);
        if (std::ranges::any_of(data_.subspan(from, found - from), [](uint8_t byte) { return byte != 0xFF; }))
            noteDamage();
        from = found;
        at_ = int(from);
        if (from == data_.size()) return;
        uint8_t code = data_[from + 1];
        if (code >= marker::kSof0 && (!marker::isRestart(code) || interval_ == kNever)) return;
        if (code >= marker::kSof0 && resumeBehind(code - marker::kRst0, interval)) break;
        noteDamage();
    }
    at_ += 2;
    resetCoder();
}

// Eight restart markers take turns: one or two ahead of the one that is due, and intervals are missing; one or two
// behind, and the marker is a leftover to be passed over (false).
bool ScanDecoder::resumeBehind(int number, int64_t interval)
{
    int ahead = (number - int(interval % 8)) & 7;
    if (ahead >= 6) return false;
    if (ahead != 0) noteDamage();
    resumeAt_ = (interval + 1 + (ahead <= 2 ? ahead : 0)) * interval_;
    return true;
}

void ScanDecoder::noteDamage() { firstDamage_ = std::min(firstDamage_, position()); }

std::string ScanDecoder::damage() const
{
    if (firstDamage_ == SIZE_MAX) return {};
    int64_t all = int64_t(layout_.mcusAcross) * layout_.mcusDown, lost = lostMcus_ + all - mcu_;
    return "damaged or missing data at byte " + std::to_string(firstDamage_) + "; " + std::to_string(lost) + " of " +
           std::to_string(all) + " units are lost";
}

}
