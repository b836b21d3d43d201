// SPDX-License-Identifier: Apache-2.0
// The wavelets as a textbook has them: a line with its extension on both sides, and one lifting step after the other
// over all of it.
#pragma once

#include <stdint.h>

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <vector>

namespace qel::test {

// A step adds to the samples at odd (else even) positions what comes of their neighbours; back, it is taken away again.
template <class V, class Change> struct LiftingStep {
    bool odd;
    Change (*change)(V left, V right);
};

template <class T> struct Textbook53 {
    using Sample = T;
    using Value = T;
    static constexpr bool kReversible = true;
    static Value in(T v) { return v; }
    static T out(Value v) { return v; }
    // Sums wrap in the type of the samples.
    static T sum(T a, T b) { return T(uint32_t(a) + uint32_t(b)); }
    static Value changed(T x, T change, bool forward)
    {
        return T(uint32_t(x) + uint32_t(change) * (forward ? 1 : -1u));
    }
    static constexpr LiftingStep<T, T> kSteps[] = {
        {true, [](T a, T b) { return T(-uint32_t(sum(a, b) >> 1)); }},
        {false, [](T a, T b) { return T(sum(sum(a, b), 2) >> 2); }},
    };
    static Value scale(Value v, bool) { return v; }
};

struct TextbookFixed97 {
    using Sample = int16_t;
    using Value = int16_t;
    static constexpr bool kReversible = false;
    static Value in(Sample v) { return v; }
    static Sample out(Value v) { return v; }
    template <int kConstant> static int rounded(Value a, Value b) { return (kConstant * (a + b) + 8192) >> 14; }
    static Value changed(Value x, int change, bool forward) { return Value(forward ? x + change : x - change); }
    static constexpr LiftingStep<Value, int> kSteps[] = {
        {true, rounded<-25987>}, {false, rounded<-868>}, {true, rounded<14466>}, {false, rounded<7266>}};
    static Value scale(Value v, bool up) { return Value(((up ? 20155 : 13318) * v + 8192) >> 14); }
};

template <class T> struct TextbookFloat97 {
    using Sample = T;
    using Value = float;
    static constexpr bool kReversible = false;
    static Value in(T v) { return float(v); }
    static T out(Value v)
    {
        if constexpr (std::is_same_v<T, float>) return v;
        if (v > 2147483648.0f) return INT32_MAX;
        if (v == 2147483648.0f || v < -2147483648.0f) return INT32_MIN;
        return T(v);
    }
    static Value changed(float x, float change, bool forward) { return forward ? x + change : x - change; }
    static constexpr LiftingStep<float, float> kSteps[] = {
        {true, [](float a, float b) { return -1.5861343145370483f * (a + b); }},
        {false, [](float a, float b) { return -0.05298011749982834f * (a + b); }},
        {true, [](float a, float b) { return 0.8829110860824585f * (a + b); }},
        {false, [](float a, float b) { return 0.4435068666934967f * (a + b); }},
    };
    static Value scale(Value v, bool up) { return (up ? 1.2301740646362305f : 0.8128930926322937f) * v; }
};

// Lifts a line that carries its extension, in turns low and high; the first sample is high if `firstIsOdd`. What the
// ends of the extension lack spoils no more than four samples there.
template <class Filter> void liftExtended(std::vector<typename Filter::Sample>& line, bool firstIsOdd, bool forward)
{
    std::vector<typename Filter::Value> v;
    auto isOdd = [&](size_t i) { return (i % 2 == 1) != firstIsOdd; };
    for (auto sample : line) v.push_back(Filter::in(sample));
    if (!forward)
        for (size_t i = 0; i < v.size(); ++i) v[i] = Filter::scale(v[i], !isOdd(i));
    constexpr size_t kCount = std::size(Filter::kSteps);
    for (size_t n = 0; n < kCount; ++n) {
        auto& step = Filter::kSteps[forward ? n : kCount - 1 - n];
        for (size_t i = 1; i + 1 < v.size(); ++i)
            if (isOdd(i) == step.odd) v[i] = Filter::changed(v[i], step.change(v[i - 1], v[i + 1]), forward);
    }
    if (forward)
        for (size_t i = 0; i < v.size(); ++i) v[i] = Filter::scale(v[i], isOdd(i));
    for (size_t i = 0; i < v.size(); ++i) line[i] = Filter::out(v[i]);
}

// Lifts a line in turns with symmetric extension.
template <class Filter> void lift(std::vector<typename Filter::Sample>& line, bool firstIsOdd, bool forward)
{
    using T = typename Filter::Sample;
    int len = int(line.size());
    if (len == 1) {
        if constexpr (std::is_same_v<T, float>)
            line[0] *= !firstIsOdd ? 1 : forward ? 2 : 0.5f;
        else if (firstIsOdd)
            line[0] = forward ? T(2u * uint32_t(line[0])) : T(line[0] >> 1);
        return;
    }
    if constexpr (Filter::kReversible)
        if (len == 2) {
            T &low = line[firstIsOdd], &high = line[!firstIsOdd];
            if (forward) high = T(uint32_t(high) - uint32_t(low));
            T half = T((int64_t(high) + 1) >> 1);
            low = T(forward ? uint32_t(low) + uint32_t(half) : uint32_t(low) - uint32_t(half));
            if (!forward) high = T(uint32_t(high) + uint32_t(low));
            return;
        }
    constexpr int kAround = 8;
    std::vector<T> extended;
    for (int i = -kAround; i < len + kAround; ++i) {
        int at = i;
        while (at < 0 || at >= len) at = at < 0 ? -at : 2 * (len - 1) - at;
        extended.push_back(line[size_t(at)]);
    }
    liftExtended<Filter>(extended, firstIsOdd, forward);
    line.assign(extended.begin() + kAround, extended.begin() + kAround + len);
}

// A tile: rows of samples one after the other, in turns; and in halves as the transform leaves them.
template <class T> struct Tile {
    int x, y, width, height;
    std::vector<T> samples;

    T& at(int r, int c) { return samples[size_t(r) * size_t(width) + size_t(c)]; }
};

template <class Filter> void liftColumns(Tile<typename Filter::Sample>& tile, bool forward)
{
    for (int c = 0; c < tile.width; ++c) {
        std::vector<typename Filter::Sample> line;
        for (int r = 0; r < tile.height; ++r) line.push_back(tile.at(r, c));
        lift<Filter>(line, tile.y & 1, forward);
        for (int r = 0; r < tile.height; ++r) tile.at(r, c) = line[size_t(r)];
    }
}
template <class Filter> void liftRows(Tile<typename Filter::Sample>& tile, bool forward)
{
    for (int r = 0; r < tile.height; ++r) {
        auto first = tile.samples.begin() + r * tile.width;
        std::vector<typename Filter::Sample> line(first, first + tile.width);
        lift<Filter>(line, tile.x & 1, forward);
        std::copy(line.begin(), line.end(), first);
    }
}

// Row or column i of the halves, low first, among those in turns.
inline int turnOf(int i, int length, int origin)
{
    int phase = origin & 1, lows = (length + 1 - phase) / 2;
    return i < lows ? 2 * i + phase : 2 * (i - lows) + 1 - phase;
}

template <class Filter> Tile<typename Filter::Sample> forwardTile(Tile<typename Filter::Sample> tile)
{
    liftColumns<Filter>(tile, true);
    liftRows<Filter>(tile, true);
    auto halves = tile;
    for (int r = 0; r < tile.height; ++r)
        for (int c = 0; c < tile.width; ++c)
            halves.at(r, c) = tile.at(turnOf(r, tile.height, tile.y), turnOf(c, tile.width, tile.x));
    return halves;
}
template <class Filter> Tile<typename Filter::Sample> inverseTile(Tile<typename Filter::Sample> halves)
{
    auto tile = halves;
    for (int r = 0; r < tile.height; ++r)
        for (int c = 0; c < tile.width; ++c)
            tile.at(turnOf(r, tile.height, tile.y), turnOf(c, tile.width, tile.x)) = halves.at(r, c);
    liftRows<Filter>(tile, false);
    liftColumns<Filter>(tile, false);
    return tile;
}

}
