// SPDX-License-Identifier: Apache-2.0
// Eight bytes at a time, where neither those read nor those written have a 0xFF among them.
#include "codec/jpeg/encode/bit_joiner.h"

#include <bit>
#include <cstring>

namespace qel::codec::jpeg {

namespace {

constexpr int kWord = 8;
constexpr uint64_t kOnes = 0x0101010101010101;

bool hasFf(uint64_t word) { return ((~word - kOnes) & word & (kOnes << 7)) != 0; }

uint64_t bigEndian(uint64_t word) { return std::endian::native == std::endian::big ? word : __builtin_bswap64(word); }

}

// Adds up to eight bits to those held, and writes what is a whole byte then.
uint8_t* BitJoiner::put(uint32_t value, int bits, uint8_t* to)
{
    held_ = held_ << bits | value;
    heldBits_ += bits;
    if (heldBits_ < 8) return to;
    heldBits_ -= 8;
    *to = uint8_t(held_ >> heldBits_);
    held_ &= (1u << heldBits_) - 1;
    if (*to++ == 0xFF) *to++ = 0;
    return to;
}

void BitJoiner::append(const uint8_t* coded, int bits)
{
    const uint8_t* end = coded + bits / 8;
    size_t size = out_.size();
    out_.resize(size + 2 * (size_t(bits) / 8 + 1));
    uint8_t* to = out_.data() + size;
    while (coded < end) {
        uint64_t word = 0, joined = 0;
        if (end - coded >= kWord) {
            memcpy(&word, coded, kWord);
            word = bigEndian(word);
            joined = held_ << 1 << (63 - heldBits_) | word >> heldBits_;
        }
        if (end - coded < kWord || hasFf(word) || hasFf(joined)) {
            for (int i = 0; i < kWord && coded < end; ++i, ++coded) {
                to = put(*coded, 8, to);
                coded += *coded == 0xFF;
            }
            continue;
        }
        joined = bigEndian(joined);
        memcpy(to, &joined, kWord);
        held_ = word & ((1u << heldBits_) - 1);
        coded += kWord;
        to += kWord;
    }
    if (int rest = bits % 8) to = put(*coded >> (8 - rest), rest, to);
    out_.resize(size_t(to - out_.data()));
}

void BitJoiner::finish()
{
    const uint8_t ones = 0xFF;
    if (heldBits_) append(&ones, 8 - heldBits_);
}

void BitJoiner::marker(uint8_t code)
{
    finish();
    out_.push_back(0xFF);
    out_.push_back(code);
}

}
