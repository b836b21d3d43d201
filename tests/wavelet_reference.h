// The wavelets as a textbook has them: a line with its extension on both sides, and one lifting step after the other
// over all of it.
#pragma once

#include <stdint.h>

#include <algorithm>
#include <type_traits>
#include <vector>

namespace qel::test {

// A step changes the samples at odd (else even) positions by their neighbours.
template <class V> struct LiftingStep {
    bool odd;
    V (*change)(V sample, V left, V right);
};

template <class T> struct Textbook53 {
    using Sample = T;
    using Value = T;
    static constexpr bool kReversible = true;
    static Value in(T v) { return v; }
    static T out(Value v) { return v; }
    // Sums wrap in the type of the samples.
    static T sum(T a, T b) { return T(uint32_t(a) + uint32_t(b)); }
    static T difference(T a, T b) { return T(uint32_t(a) - uint32_t(b)); }
    static T half(T a, T b) { return T(sum(a, b) >> 1); }
    static T quarter(T a, T b) { return T(sum(sum(a, b), 2) >> 2); }
    static std::vector<LiftingStep<T>> steps()
    {
        return {{true, [](T x, T a, T b) { return difference(x, half(a, b)); }},
                {false, [](T x, T a, T b) { return sum(x, quarter(a, b)); }}};
    }
    static std::vector<LiftingStep<T>> stepsBack()
    {
        return {{false, [](T x, T a, T b) { return difference(x, quarter(a, b)); }},
                {true, [](T x, T a, T b) { return sum(x, half(a, b)); }}};
    }
    static Value scale(Value v, bool) { return v; }
};

template <int kConstant, int kSign> int16_t fixedStep(int16_t x, int16_t a, int16_t b)
{
    return int16_t(x + kSign * ((kConstant * (a + b) + 8192) >> 14));
}
struct TextbookFixed97 {
    using Sample = int16_t;
    using Value = int16_t;
    static constexpr bool kReversible = false;
    static Value in(Sample v) { return v; }
    static Sample out(Value v) { return v; }
    static std::vector<LiftingStep<Value>> steps()
    {
        return {{true, fixedStep<-25987, 1>},
                {false, fixedStep<-868, 1>},
                {true, fixedStep<14466, 1>},
                {false, fixedStep<7266, 1>}};
    }
    static std::vector<LiftingStep<Value>> stepsBack()
    {
        return {{false, fixedStep<7266, -1>},
                {true, fixedStep<14466, -1>},
                {false, fixedStep<-868, -1>},
                {true, fixedStep<-25987, -1>}};
    }
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
    static std::vector<LiftingStep<float>> steps()
    {
        return {{true, [](float x, float a, float b) { return x + -1.5861343145370483f * (a + b); }},
                {false, [](float x, float a, float b) { return x + -0.05298011749982834f * (a + b); }},
                {true, [](float x, float a, float b) { return x + 0.8829110860824585f * (a + b); }},
                {false, [](float x, float a, float b) { return x + 0.4435068666934967f * (a + b); }}};
    }
    static std::vector<LiftingStep<float>> stepsBack()
    {
        return {{false, [](float x, float a, float b) { return x - 0.4435068666934967f * (a + b); }},
                {true, [](float x, float a, float b) { return x - 0.8829110860824585f * (a + b); }},
                {false, [](float x, float a, float b) { return x - -0.05298011749982834f * (a + b); }},
                {true, [](float x, float a, float b) { return x - -1.5861343145370483f * (a + b); }}};
    }
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
    for (auto& step : forward ? Filter::steps() : Filter::stepsBack())
        for (size_t i = 1; i + 1 < v.size(); ++i)
            if (isOdd(i) == step.odd) v[i] = step.change(v[i], v[i - 1], v[i + 1]);
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
