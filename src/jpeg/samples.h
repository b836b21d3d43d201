// Samples V of a row, for formulas and pixel formats that are written once: one sample in a byte (Lane), a register
// full (Samples<N>), or the first few of a register (Few<kCount>). V::Type is the value; its arithmetic wraps, so that
// plain code casts intermediates back, V::Type(a + b). Addresses may be anything; only V::kCount samples are touched.
#pragma once

#include "core/simd.h"

namespace qel {
namespace QEL_BUILD {
namespace {

struct Lane {
    using Type = uint8_t;
    static constexpr int kCount = 1;

    static QEL_INLINE Type load(const uint8_t* p) { return *p; }
    static QEL_INLINE void store(uint8_t* p, Type a) { *p = a; }
    static QEL_INLINE void load2(const uint8_t* p, Type& a, Type& b) { a = p[0], b = p[1]; }
    static QEL_INLINE void store2(uint8_t* p, Type a, Type b) { p[0] = a, p[1] = b; }
    static QEL_INLINE void load3(const uint8_t* p, Type& a, Type& b, Type& c) { a = p[0], b = p[1], c = p[2]; }
    static QEL_INLINE void store3(uint8_t* p, Type a, Type b, Type c) { p[0] = a, p[1] = b, p[2] = c; }
    static QEL_INLINE void load4(const uint8_t* p, Type& a, Type& b, Type& c, Type& d)
    {
        a = p[0], b = p[1], c = p[2], d = p[3];
    }
    static QEL_INLINE void store4(uint8_t* p, Type a, Type b, Type c, Type d)
    {
        p[0] = a, p[1] = b, p[2] = c, p[3] = d;
    }
};

template <int N> QEL_INLINE auto everyOtherBlock(const uint8_t* p)
{
    if constexpr (N == 16)
        return load<S16<16>>(p);
    else
        return Simd<N>::join(everyOtherBlock<N / 2>(p), everyOtherBlock<N / 2>(p + N));
}

template <int N> struct Samples {
    using Type = U8<N>;
    static constexpr int kCount = N;

    static QEL_INLINE Type load(const uint8_t* p) { return qel::QEL_BUILD::load<Type>(p); }
    static QEL_INLINE void store(uint8_t* p, Type a) { qel::QEL_BUILD::store(p, a); }
    // Words by turns of 16 bytes, so that a pack of both registers is in order.
    template <class Words> static QEL_INLINE void loadWords(const uint8_t* p, Words* words)
    {
        words[0] = (Words)everyOtherBlock<N>(p), words[1] = (Words)everyOtherBlock<N>(p + 16);
    }
    static QEL_INLINE void load2(const uint8_t* p, Type& a, Type& b) { Simd<N>::load2(p, a, b); }
    static QEL_INLINE void store2(uint8_t* p, Type a, Type b) { Simd<N>::store2(p, a, b); }
    static QEL_INLINE void load3(const uint8_t* p, Type& a, Type& b, Type& c)
    {
        fetchAhead<3 * N>(p);
        Simd<N>::load3(p, a, b, c);
    }
    static QEL_INLINE void store3(uint8_t* p, Type a, Type b, Type c) { Simd<N>::store3(p, a, b, c); }
    static QEL_INLINE void loadPairs3(const uint8_t* p, Type* ab, Type* c1)
    {
        fetchAhead<3 * N>(p);
        Simd<N>::loadPairs3(p, ab, c1);
    }
    static QEL_INLINE void loadPairs4(const uint8_t* p, Type* ab, Type* c1, Type& d)
    {
        fetchAhead<4 * N>(p);
        Simd<N>::loadPairs4(p, ab, c1, d);
    }
    static QEL_INLINE void load4(const uint8_t* p, Type& a, Type& b, Type& c, Type& d)
    {
        fetchAhead<4 * N>(p);
        Simd<N>::load4(p, a, b, c, d);
    }
    static QEL_INLINE void store4(uint8_t* p, Type a, Type b, Type c, Type d) { Simd<N>::store4(p, a, b, c, d); }
};

// A register full that is stored past the caches, where its address is aligned.
template <int N> struct SamplesPastCaches : Samples<N> {
    using Type = U8<N>;

    static QEL_INLINE void store(uint8_t* p, Type a) { PastCaches::store(p, a); }
    static QEL_INLINE void store2(uint8_t* p, Type a, Type b)
    {
        sendOn<2>(p, [=](uint8_t* room) { Simd<N>::store2(room, a, b); });
    }
    static QEL_INLINE void store3(uint8_t* p, Type a, Type b, Type c)
    {
        sendOn<3>(p, [=](uint8_t* room) { Simd<N>::store3(room, a, b, c); });
    }
    static QEL_INLINE void store4(uint8_t* p, Type a, Type b, Type c, Type d)
    {
        sendOn<4>(p, [=](uint8_t* room) { Simd<N>::store4(room, a, b, c, d); });
    }

private:
    // Compilers keep the room in registers.
    template <int kRegisters, class Store> static QEL_INLINE void sendOn(uint8_t* p, Store storeTo)
    {
        uint8_t room[kRegisters * N];
        storeTo(room);
        for (int i = 0; i < kRegisters * N; i += N) store(p + i, Samples<N>::load(room + i));
    }
};

// 4 or 8 samples, so that short rows and the ends of rows need no loop over single pixels.
template <int kFew> struct Few : Samples<16> {
    static constexpr int kCount = kFew;

    // kChannels * kCount bytes, with room to load or store whole registers.
    template <int kChannels> struct Room {
        uint8_t bytes[16 * kChannels] = {};

        Room() = default;
        explicit QEL_INLINE Room(const uint8_t* p) { __builtin_memcpy(bytes, p, kChannels * kCount); }
        QEL_INLINE void copyTo(uint8_t* p) const { __builtin_memcpy(p, bytes, kChannels * kCount); }
    };

    static QEL_INLINE Type load(const uint8_t* p) { return Samples<16>::load(Room<1>(p).bytes); }
    template <class Words> static QEL_INLINE void loadWords(const uint8_t* p, Words* words)
    {
        Samples<16>::loadWords(Room<2>(p).bytes, words);
    }
    static QEL_INLINE void load2(const uint8_t* p, Type& a, Type& b) { Samples<16>::load2(Room<2>(p).bytes, a, b); }
    static QEL_INLINE void load3(const uint8_t* p, Type& a, Type& b, Type& c)
    {
        Samples<16>::load3(Room<3>(p).bytes, a, b, c);
    }
    static QEL_INLINE void loadPairs3(const uint8_t* p, Type* ab, Type* c1)
    {
        Samples<16>::loadPairs3(Room<3>(p).bytes, ab, c1);
    }
    static QEL_INLINE void loadPairs4(const uint8_t* p, Type* ab, Type* c1, Type& d)
    {
        Samples<16>::loadPairs4(Room<4>(p).bytes, ab, c1, d);
    }
    static QEL_INLINE void load4(const uint8_t* p, Type& a, Type& b, Type& c, Type& d)
    {
        Samples<16>::load4(Room<4>(p).bytes, a, b, c, d);
    }
    static QEL_INLINE void store(uint8_t* p, Type a)
    {
        Room<1> room;
        Samples<16>::store(room.bytes, a);
        room.copyTo(p);
    }
    static QEL_INLINE void store2(uint8_t* p, Type a, Type b)
    {
        Room<2> room;
        Samples<16>::store2(room.bytes, a, b);
        room.copyTo(p);
    }
    static QEL_INLINE void store3(uint8_t* p, Type a, Type b, Type c)
    {
        Room<3> room;
        Samples<16>::store3(room.bytes, a, b, c);
        room.copyTo(p);
    }
    static QEL_INLINE void store4(uint8_t* p, Type a, Type b, Type c, Type d)
    {
        Room<4> room;
        Samples<16>::store4(room.bytes, a, b, c, d);
        room.copyTo(p);
    }
};

// Walks a row from sample i on in whole groups of kGroup (4 or 8) samples: body(V(), i) is to do the V::kCount samples
// from i on. The widest registers that fit come first. Returns where the last group ends.
template <int kGroup, class Body> QEL_INLINE ptrdiff_t inGroups(ptrdiff_t i, ptrdiff_t n, Body body)
{
    [[maybe_unused]] auto run = [&](auto samples) {
        for (; n - i >= samples.kCount; i += samples.kCount) body(samples, i);
    };
    if constexpr (QEL_WIDTH > 16) run(Samples<QEL_WIDTH>());
    if constexpr (QEL_WIDTH >= 16) {
        run(Samples<16>());
        run(Few<8>());
        if constexpr (kGroup == 4) run(Few<4>());
    } else {
        for (ptrdiff_t end = n - (n - i) % kGroup; i < end; ++i) body(Lane(), i);
    }
    return i;
}

// The same with output past the caches, in whole lines, if all of it can be brought to begin with one:
// to.atAddresses(i, visit) tells where the output of sample i begins. The lines at the end are asked for early, as they
// are read first.
template <int kGroup, class To, class Body>
QEL_INLINE ptrdiff_t inGroupsPastCaches(ptrdiff_t i, ptrdiff_t n, To to, Body body)
{
    if constexpr (QEL_WIDTH >= 16) {
        auto beginsLines = [=](ptrdiff_t at) {
            uintptr_t bits = 0;
            to.atAddresses(at, [&](const uint8_t* p) QEL_INLINE_BODY { bits |= (uintptr_t)p; });
            return bits % kLine == 0;
        };
        to.atAddresses(n, [](const uint8_t* p) QEL_INLINE_BODY { __builtin_prefetch(p, 1); });
        ptrdiff_t start = i;
        while (start < i + kLine && !beginsLines(start)) start += 8;
        if (beginsLines(start)) {
            for (; i < start && n - i >= 8; i += 8) body(Few<8>(), i);
            for (ptrdiff_t end = i + (n - i) / kLine * kLine; i < end; i += QEL_WIDTH)
                body(SamplesPastCaches<QEL_WIDTH>(), i);
        }
    }
    return inGroups<kGroup>(i, n, body);
}

}
}
}
