// SPDX-License-Identifier: Apache-2.0
// Rows of pixels in groups of 4 or 8: the lanes that they are walked in beside Lanes<N>, and the walk.
#pragma once

#include "core/walk.h"

namespace qel::QEL_BUILD {
namespace {

template <int N> QEL_INLINE auto everyOtherBlock(const uint8_t* p)
{
    if constexpr (N == 16)
        return load<S16<16>>(p);
    else
        return Simd<N>::join(everyOtherBlock<N / 2>(p), everyOtherBlock<N / 2>(p + N));
}

// Three interleaved channels as pairs of neighbours, half by half, and four of which the last is by itself.
template <class V> struct ThreeAsPairs {
    V ab[2], c1[2];
};
template <class V> struct FourAsPairs {
    ThreeAsPairs<V> three;
    V d;
};

// A register full of a long row, which is prefetched.
template <int N> struct Samples : Lanes<N> {
    using Bytes = U8<N>;

    // Words by turns of 16 bytes, so that a pack of both registers is in order.
    static QEL_INLINE Pair<U16<N>> loadWords(const uint8_t* p)
    {
        return {(U16<N>)everyOtherBlock<N>(p), (U16<N>)everyOtherBlock<N>(p + 16)};
    }
    static QEL_INLINE Triple<Bytes> load3(const uint8_t* p)
    {
        prefetchPageAhead<3 * N>(p);
        return Lanes<N>::load3(p);
    }
    static QEL_INLINE Quad<Bytes> load4(const uint8_t* p)
    {
        prefetchPageAhead<4 * N>(p);
        return Lanes<N>::load4(p);
    }
    static QEL_INLINE ThreeAsPairs<Bytes> loadPairs3(const uint8_t* p)
    {
        prefetchPageAhead<3 * N>(p);
        ThreeAsPairs<Bytes> v;
        Simd<N>::loadPairs3(p, v.ab, v.c1);
        return v;
    }
    static QEL_INLINE FourAsPairs<Bytes> loadPairs4(const uint8_t* p)
    {
        prefetchPageAhead<4 * N>(p);
        FourAsPairs<Bytes> v;
        Simd<N>::loadPairs4(p, v.three.ab, v.three.c1, v.d);
        return v;
    }
};

// The same, streamed where the address is aligned.
template <int N> struct StreamedSamples : Samples<N> {
    using Bytes = U8<N>;

    static QEL_INLINE void store(uint8_t* p, Bytes v) { Streamed::store(p, v); }
    static QEL_INLINE void store2(uint8_t* p, Pair<Bytes> v)
    {
        sendOn<2>(p, [=](uint8_t* room) { Lanes<N>::store2(room, v); });
    }
    static QEL_INLINE void store3(uint8_t* p, Triple<Bytes> v)
    {
        sendOn<3>(p, [=](uint8_t* room) { Lanes<N>::store3(room, v); });
    }
    static QEL_INLINE void store4(uint8_t* p, Quad<Bytes> v)
    {
        sendOn<4>(p, [=](uint8_t* room) { Lanes<N>::store4(room, v); });
    }

private:
    // Compilers keep the room in registers.
    template <int kRegisters, class Store> static QEL_INLINE void sendOn(uint8_t* p, Store storeTo)
    {
        uint8_t room[kRegisters * N];
        storeTo(room);
        for (int i = 0; i < kRegisters * N; i += N) store(p + i, Lanes<N>::load(room + i));
    }
};

// 4 or 8 samples, so that short rows and the ends of rows need no loop over single pixels.
template <int kFew> struct Few {
    using Whole = Samples<16>;
    using Bytes = U8<16>;
    static constexpr int kBytes = 16, kSamples = kFew;

    static QEL_INLINE Bytes load(const uint8_t* p) { return Whole::load(Room<1>(p).bytes); }
    static QEL_INLINE Pair<Bytes> load2(const uint8_t* p) { return Whole::load2(Room<2>(p).bytes); }
    static QEL_INLINE Triple<Bytes> load3(const uint8_t* p)
    {
        return Lanes<16>::load3((const uint8_t*)Room<3>(p).bytes);
    }
    static QEL_INLINE Quad<Bytes> load4(const uint8_t* p) { return Lanes<16>::load4(Room<4>(p).bytes); }
    static QEL_INLINE Pair<U16<16>> loadWords(const uint8_t* p) { return Whole::loadWords(Room<2>(p).bytes); }
    static QEL_INLINE ThreeAsPairs<Bytes> loadPairs3(const uint8_t* p) { return Whole::loadPairs3(Room<3>(p).bytes); }
    static QEL_INLINE FourAsPairs<Bytes> loadPairs4(const uint8_t* p) { return Whole::loadPairs4(Room<4>(p).bytes); }

    static QEL_INLINE void store(uint8_t* p, Bytes v)
    {
        Room<1> room;
        Whole::store(room.bytes, v);
        room.copyTo(p);
    }
    static QEL_INLINE void store2(uint8_t* p, Pair<Bytes> v)
    {
        Room<2> room;
        Whole::store2(room.bytes, v);
        room.copyTo(p);
    }
    static QEL_INLINE void store3(uint8_t* p, Triple<Bytes> v)
    {
        Room<3> room;
        Whole::store3((uint8_t*)room.bytes, v);
        room.copyTo(p);
    }
    static QEL_INLINE void store4(uint8_t* p, Quad<Bytes> v)
    {
        Room<4> room;
        Whole::store4(room.bytes, v);
        room.copyTo(p);
    }

private:
    // kChannels * kSamples bytes, with room to load or store whole registers.
    template <int kChannels> struct Room {
        uint8_t bytes[16 * kChannels] = {};

        Room() = default;
        explicit QEL_INLINE Room(const uint8_t* p) { __builtin_memcpy(bytes, p, kChannels * kSamples); }
        QEL_INLINE void copyTo(uint8_t* p) const { __builtin_memcpy(p, bytes, kChannels * kSamples); }
    };
};

// Walks a row from sample i on in whole groups of kGroup (4 or 8) samples: body(lanes, i) is to do the samples from i
// on, lanes.kSamples of them. The widest registers that fit come first. Returns where the last group ends.
template <int kGroup, class Body> QEL_INLINE ptrdiff_t walkGroups(ptrdiff_t i, ptrdiff_t n, Body body)
{
    [[maybe_unused]] auto run = [&](auto lanes) QEL_INLINE_BODY {
        for (; n - i >= lanes.kSamples; i += lanes.kSamples) body(lanes, i);
    };
    if constexpr (QEL_WIDTH > 16) run(Samples<kWidth>());
    if constexpr (QEL_WIDTH >= 16) {
        run(Samples<16>());
        run(Few<8>());
        if constexpr (kGroup == 4) run(Few<4>());
    } else {
        for (ptrdiff_t end = n - (n - i) % kGroup; i < end; ++i) body(Lanes<1>(), i);
    }
    return i;
}

// The same for output in `to`, in whole cache lines if Streamed and if all of it can be brought to begin with one:
// to.atAddresses(i, visit) tells where the output of sample i begins. The lines at the end are prefetched, as they are
// read first.
template <class Store, int kGroup, class To, class Body>
QEL_INLINE ptrdiff_t walkGroupsInto(To to, ptrdiff_t i, ptrdiff_t n, Body body)
{
    if constexpr (QEL_WIDTH >= 16 && __is_same(Store, Streamed)) {
        auto beginsLines = [=](ptrdiff_t at) {
            uintptr_t bits = 0;
            to.atAddresses(at, [&](const uint8_t* p) QEL_INLINE_BODY { bits |= uintptr_t(p); });
            return bits % kCacheLine == 0;
        };
        to.atAddresses(n, [](const uint8_t* p) QEL_INLINE_BODY { __builtin_prefetch(p, 1); });
        ptrdiff_t start = i;
        while (start < i + kCacheLine && !beginsLines(start)) start += 8;
        if (beginsLines(start)) {
            for (; i < start && n - i >= 8; i += 8) body(Few<8>(), i);
            for (ptrdiff_t end = i + (n - i) / kCacheLine * kCacheLine; i < end; i += QEL_WIDTH)
                body(StreamedSamples<kWidth>(), i);
        }
    }
    return walkGroups<kGroup>(i, n, body);
}

}
}
