// SPDX-License-Identifier: Apache-2.0
// A Huffman coder as the standard draws it, one bit at a time, to hold the library against.
#pragma once

#include <array>
#include <cstdlib>
#include <deque>
#include <vector>

#include "qeljx.h"
#include "random.h"

namespace qel::test {

// A table as a file carries it.
struct Lists {
    std::array<uint8_t, 16> bits{};
    std::array<uint8_t, 256> values{};
};

struct Code {
    int length = 0;
    uint32_t word = 0;
};

// The codes in the order of the values (T.81 Figures C.1 and C.2).
inline std::vector<Code> codesOf(const Lists& lists)
{
    std::vector<Code> codes;
    uint32_t word = 0;
    for (int length = 1; length <= 16; ++length, word <<= 1)
        for (int i = 0; i < lists.bits[length - 1]; ++i) codes.push_back({length, word++});
    return codes;
}

// The list of a table with codes of every length, for all symbols if `whole`.
inline Lists randomLists(Random& random, bool whole = true)
{
    Lists lists;
    std::array<uint32_t, 256> statistics;
    for (auto& n : statistics)
        n = !whole && random.between(0, 3) == 0 ? 0 : 1u << random.between(0, random.between(0, 22));
    if (qeliEncodeHuffmanRawTableInit_JPEG_8u(statistics.data(), lists.bits.data(), lists.values.data()) != qelStsNoErr)
        std::abort();
    return lists;
}

// Coefficients of which about one in `sparsity` is not zero, with magnitudes of up to `bits` bits.
inline std::array<int16_t, 64> randomBlock(Random& random, int sparsity, int bits)
{
    std::array<int16_t, 64> block{};
    for (auto& value : block)
        if (random.between(0, sparsity) == 0) {
            int limit = 1 << random.between(0, bits);
            value = int16_t(random.between(-limit, limit - 1));
        }
    return block;
}

inline const int kScan[64] = {0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
                              41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
                              30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

inline int categoryOf(int value)
{
    int category = 0;
    for (int magnitude = std::abs(value); magnitude != 0; magnitude /= 2) ++category;
    return category;
}

// A symbol of a block, with the value whose bits follow it.
struct Symbol {
    bool dc;
    int symbol;
    int value;
};

inline std::vector<Symbol> symbolsOf(const std::array<int16_t, 64>& block, int lastDc)
{
    std::vector<Symbol> symbols = {{true, categoryOf(block[0] - lastDc), block[0] - lastDc}};
    int zeros = 0;
    for (int k = 1; k < 64; ++k) {
        int value = block[kScan[k]];
        if (value == 0) {
            ++zeros;
            continue;
        }
        for (; zeros >= 16; zeros -= 16) symbols.push_back({false, 0xF0, 0});
        symbols.push_back({false, (zeros << 4) | categoryOf(value), value});
        zeros = 0;
    }
    if (zeros > 0) symbols.push_back({false, 0, 0});
    return symbols;
}

// Writes bits; the fields are what a caller sees after each call.
struct ReferenceWriter {
    int room;
    std::vector<uint8_t> bytes;
    std::deque<bool> pending;
    uint8_t lastByte = 0;

    QelStatus write(uint32_t value, int length)
    {
        if (length == 0) return qelStsJPEGHuffSpecErr;
        std::deque<bool> bits = pending;
        uint8_t last = lastByte;
        for (int i = length - 1; i >= 0; --i) bits.push_back((value >> i) & 1);
        while (bits.size() >= 8) {
            last = 0;
            for (int i = 0; i < 8; ++i, bits.pop_front()) last = uint8_t(last << 1 | bits.front());
            if (!append(last) || (last == 0xFF && !append(0))) return qelStsJPEGOutOfBufErr;
        }
        pending = bits;
        lastByte = last;
        return qelStsNoErr;
    }

    // The low word of the accumulator.
    uint32_t word() const
    {
        uint32_t bits = lastByte;
        for (size_t i = 0; i < 24; ++i) bits = bits << 1 | (i < pending.size() && pending[i]);
        return bits;
    }

private:
    bool append(uint8_t byte)
    {
        if ((int)bytes.size() >= room) return false;
        bytes.push_back(byte);
        return true;
    }
};

struct ReferenceEncoder : ReferenceWriter {
    // By symbol.
    std::array<Code, 256> dc{}, ac{};
    int lastDc = 0;

    ReferenceEncoder(const Lists& dcLists, const Lists& acLists, int length) : ReferenceWriter{length, {}, {}, 0}
    {
        auto assign = [](const Lists& lists, std::array<Code, 256>& to) {
            auto codes = codesOf(lists);
            for (size_t i = 0; i < codes.size(); ++i) to[lists.values[i]] = codes[i];
        };
        assign(dcLists, dc);
        assign(acLists, ac);
    }

    QelStatus encode(const std::array<int16_t, 64>& block)
    {
        auto symbols = symbolsOf(block, lastDc);
        lastDc = block[0];
        for (auto& s : symbols) {
            Code code = (s.dc ? dc : ac)[s.symbol];
            if (QelStatus bad = write(code.word, code.length)) return bad;
            int category = categoryOf(s.value);
            if (category == 0) continue;
            if (QelStatus bad = write(uint32_t(s.value < 0 ? s.value - 1 : s.value), category)) return bad;
        }
        return qelStsNoErr;
    }
};

// Reads bits; takes in bytes when, and only as many as, the library says it does.
struct ReferenceReader {
    std::vector<uint8_t> src;
    int pos = 0;
    uint32_t marker = 0;
    std::deque<bool> held;
    uint32_t word = 0; // the last four bytes

    QelStatus fill(int needed)
    {
        auto enough = [&] { return (int)held.size() < needed ? qelStsJPEGOutOfBufErr : qelStsNoErr; };
        if (marker != 0) return enough();
        while (held.size() < 25) {
            if (pos >= (int)src.size()) return enough();
            uint8_t byte = src[pos++];
            if (byte == 0xFF) {
                do {
                    if (pos >= (int)src.size()) return qelStsJPEGOutOfBufErr;
                    byte = src[pos++];
                } while (byte == 0xFF);
                if (byte != 0) {
                    marker = byte;
                    return qelStsJPEGMarkerWarn;
                }
                byte = 0xFF;
            }
            for (int i = 7; i >= 0; --i) held.push_back((byte >> i) & 1);
            word = word << 8 | byte;
        }
        return qelStsNoErr;
    }

    // A stream that ends within fill bytes still gives what it holds.
    bool has(int n) { return (int)held.size() >= n || (fill(n), (int)held.size() >= n); }
    uint32_t peek(int n) const
    {
        uint32_t bits = 0;
        for (int i = 0; i < n; ++i) bits = bits << 1 | held[i];
        return bits;
    }
    uint32_t take(int n)
    {
        uint32_t bits = peek(n);
        held.erase(held.begin(), held.begin() + n);
        return bits;
    }
};

struct ReferenceDecoder : ReferenceReader {
    Lists dc, ac;
    bool direct = false; // ends at a marker only, and reports codes that are not in the table
    int lastDc = 0;
    int positionsLeft = 0;
    bool endedAtDc = false;
    std::array<int16_t, 64> block{};

    std::array<uint32_t, 256> counts{}; // of the symbols read

    static constexpr int kNoBits = -256, kNoSuchCode = -1;

    // The position in the values of a code, or -1.
    static int find(const Lists& lists, uint32_t word, int length)
    {
        uint32_t first = 0, next = 0;
        int index = 0;
        for (int l = 1; l <= length; ++l) {
            first = next << 1;
            index += l > 1 ? lists.bits[l - 2] : 0;
            next = first + lists.bits[l - 1];
        }
        // Lists that describe too many codes leave 16 bits; the word of sixteen ones is no code.
        auto largest = uint16_t(next - 1);
        if (lists.bits[length - 1] == 0 || word > largest || largest == 0xFFFF) return -1;
        return int(index + word - first) & 0xFF;
    }

    int symbol(const Lists& lists)
    {
        if (held.size() < 8) fill(0);
        int length = 1;
        if (held.size() >= 8) {
            for (; length <= 8; ++length)
                if (int found = find(lists, peek(length), length); found >= 0) {
                    take(length);
                    return counted(lists.values[found]);
                }
        }
        if (!has(length)) return kNoBits;
        uint32_t code = take(length);
        for (;; ++length) {
            if (int found = find(lists, code, length); found >= 0) return counted(lists.values[found]);
            if (length == 16) return direct ? kNoSuchCode : 0;
            if (!has(1)) return kNoBits;
            code = code << 1 | take(1);
        }
    }

    int value(int n)
    {
        int bits = (int)take(n);
        return bits < 1 << (n - 1) ? bits - (1 << n) + 1 : bits;
    }

    QelStatus decode()
    {
        block = {};
        int s = symbol(dc);
        if (s < 0) return failure(s, true);
        if (int n = s & 15) {
            if (!has(n)) return qelStsJPEGOutOfBufErr;
            lastDc = int16_t(lastDc + value(n));
        }
        block[0] = int16_t(lastDc);
        int k = 1;
        while (k < 64) {
            s = symbol(ac);
            if (s < 0) return failure(s, false);
            int run = s >> 4, n = s & 15;
            if (n == 0 && run < 15) break;
            k += n == 0 ? 16 : run;
            if (n == 0) continue;
            if (!has(n)) return qelStsJPEGOutOfBufErr;
            int v = value(n);
            if (k > 63) return qelStsJPEGCoeffPosErr;
            block[kScan[k++]] = int16_t(v);
        }
        positionsLeft = k > 63 ? 0 : 64 - k;
        return qelStsNoErr;
    }

private:
    int counted(uint8_t symbol)
    {
        ++counts[symbol];
        return symbol;
    }

    QelStatus failure(int found, bool atDc)
    {
        if (!direct) return qelStsJPEGOutOfBufErr;
        if (found == kNoSuchCode) return qelStsJPEGHuffTableErr;
        endedAtDc = atDc;
        if (!atDc) held.clear();
        return qelStsNoErr;
    }
};

}
