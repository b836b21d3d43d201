// SPDX-License-Identifier: Apache-2.0
// The tables of the colour conversion, from the equations of JFIF.
#include "jpeg/colour/colour_tables.h"

using namespace qel;

namespace {

constexpr int kHalf = 1 << 15;
// The offset of the chroma, and a half less one, so that 255.5 stays below 256.
constexpr int kChromaOffset = 128 * 65536 + kHalf - 1;

constexpr int fix(double factor) { return int(factor * 65536 + (factor < 0 ? -0.5 : 0.5)); }

template <int kEntries, class Rule> constexpr Table<kEntries> tableOf(Rule rule)
{
    Table<kEntries> table = {};
    for (int i = 0; i < kEntries; ++i) table.entries[i] = rule(i);
    return table;
}

constexpr struct {
    int factor, offset;
} kTerms[] = {{fix(0.299), 0},    {fix(0.587), 0},           {fix(0.114), kHalf}, {fix(-0.16874), 0},
              {fix(-0.33126), 0}, {fix(0.5), kChromaOffset}, {fix(-0.41869), 0},  {fix(-0.08131), 0}};

}

constexpr Table<256> cr_r_tbl = tableOf<256>([](int i) { return (fix(1.402) * (i - 128) + kHalf) >> 16; });
constexpr Table<256> cb_b_tbl = tableOf<256>([](int i) { return (fix(1.772) * (i - 128) + kHalf) >> 16; });
constexpr Table<256> cr_g_tbl = tableOf<256>([](int i) { return fix(-0.71414) * (i - 128); });
constexpr Table<256> cb_g_tbl = tableOf<256>([](int i) { return fix(-0.34414) * (i - 128) + kHalf; });
constexpr Table<2048> cc_table =
    tableOf<2048>([](int i) { return kTerms[i / 256].factor * (i % 256) + kTerms[i / 256].offset; });
