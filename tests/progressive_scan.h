// Progressive scans: the library's calls for the four kinds under one name, and a decoder that takes a bit at a time.
#pragma once

#include <gtest/gtest.h>

#include "huffman_reference.h"
#include "jpeg/huffman_tables.h"

namespace qel::test {

using Block = std::array<int16_t, 64>;
using Counts = std::array<uint32_t, 256>;

enum class Kind { dcFirst, dcRefine, acFirst, acRefine };

struct Script {
    Kind kind;
    int ss, se, al;
};

// A scan as a caller codes it: statistics of all blocks, then the blocks.
struct Scan {
    Script script;
    QelEncodeHuffmanSpec spec = {};
    QelEncodeHuffmanState state = {};
    int16_t lastDc = 0;
    int pos = 0;

    bool isFirst() const { return script.kind == Kind::dcFirst || script.kind == Kind::acFirst; }

    QelStatus count(const Block* block, Counts& counts, int flush = 0)
    {
        auto& [kind, ss, se, al] = script;
        const int16_t* src = block ? block->data() : nullptr;
        if (kind == Kind::dcFirst)
            return flush ? qelStsNoErr
                         : qeliGetHuffmanStatistics8x8_DCFirst_JPEG_16s_C1(src, counts.data(), &lastDc, al);
        if (kind == Kind::acFirst)
            return qeliGetHuffmanStatistics8x8_ACFirst_JPEG_16s_C1(src, counts.data(), ss, se, al, &state, flush);
        if (kind == Kind::acRefine)
            return qeliGetHuffmanStatistics8x8_ACRefine_JPEG_16s_C1(src, counts.data(), ss, se, al, &state, flush);
        return qelStsNoErr;
    }
    QelStatus encode(const Block* block, uint8_t* dst, int room, int flush = 0)
    {
        auto& [kind, ss, se, al] = script;
        const int16_t* src = block ? block->data() : nullptr;
        switch (kind) {
        case Kind::dcFirst:
            return qeliEncodeHuffman8x8_DCFirst_JPEG_16s1u_C1(src, dst, room, &pos, &lastDc, al, &spec, &state, flush);
        case Kind::dcRefine:
            return qeliEncodeHuffman8x8_DCRefine_JPEG_16s1u_C1(src, dst, room, &pos, al, &state, flush);
        case Kind::acFirst:
            return qeliEncodeHuffman8x8_ACFirst_JPEG_16s1u_C1(src, dst, room, &pos, ss, se, al, &spec, &state, flush);
        default:
            return qeliEncodeHuffman8x8_ACRefine_JPEG_16s1u_C1(src, dst, room, &pos, ss, se, al, &spec, &state, flush);
        }
    }
    QelStatus flush(uint8_t* dst, int room) { return encode(nullptr, dst, room, 1); }

    // What its decoder knows of a value before and after the scan.
    int before(int value, bool isDc) const { return isFirst() ? 0 : shifted(value, script.al + 1, isDc); }
    int after(int value, bool isDc) const { return shifted(value, script.al, isDc); }

private:
    static int shifted(int value, int by, bool isDc)
    {
        int one = 1 << by;
        return (isDc ? value >> by : value / one) * one;
    }
};

// Decodes a scan (T.81 G.2), and counts its symbols.
struct ScanReader : ReferenceDecoder {
    Script script;
    Lists lists;
    Counts counts{};
    uint32_t run = 0;

    ScanReader(const Script& s, const Lists& l, std::vector<uint8_t> bytes) : script(s), lists(l)
    {
        src = std::move(bytes);
        src.insert(src.end(), {0xFF, 0xD9});
    }

    int bits(int n)
    {
        EXPECT_TRUE(has(n));
        return has(n) ? (int)take(n) : 0;
    }
    int signedBits(int n)
    {
        EXPECT_TRUE(has(n));
        return has(n) ? value(n) : 0;
    }
    int nextSymbol()
    {
        int s = symbol(lists);
        EXPECT_GE(s, 0);
        return s < 0 ? 0 : (++counts[s], s);
    }

    void decode(Block& to)
    {
        int one = 1 << script.al;
        if (script.kind == Kind::dcFirst) {
            int n = nextSymbol();
            lastDc += n == 0 ? 0 : signedBits(n);
            to[0] = int16_t(lastDc * one);
        } else if (script.kind == Kind::dcRefine) {
            to[0] = int16_t(to[0] + bits(1) * one);
        } else if (run > 0) {
            --run;
            refineUpTo(script.ss, 64, to);
        } else {
            decodeBand(to);
        }
    }

private:
    // Corrects what is significant, up to the zero with `zeros` others before it, or the end of the band.
    int refineUpTo(int k, int zeros, Block& to)
    {
        for (; k <= script.se; ++k) {
            int16_t& value = to[kScan[k]];
            if (value == 0 && zeros-- == 0) break;
            if (value != 0 && script.kind == Kind::acRefine && bits(1))
                value = int16_t(value + (value < 0 ? -1 : 1) * (1 << script.al));
        }
        return k;
    }

    void decodeBand(Block& to)
    {
        for (int k = script.ss; k <= script.se; ++k) {
            int s = nextSymbol(), r = s >> 4, n = s & 15;
            if (n == 0 && r < 15) {
                run = (1u << r) + uint32_t(r > 0 ? bits(r) : 0) - 1;
                refineUpTo(k, 64, to);
                return;
            }
            int value = n == 0 ? 0 : script.kind == Kind::acFirst ? signedBits(n) : bits(1) ? 1 : -1;
            k = refineUpTo(k, r, to);
            ASSERT_LE(k, script.se);
            to[kScan[k]] = int16_t(value * (1 << script.al));
        }
    }
};

}
