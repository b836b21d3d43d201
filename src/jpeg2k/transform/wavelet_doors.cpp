// SPDX-License-Identifier: Apache-2.0
// Wavelets: exported internal functions.
#include "jpeg2k/transform/wavelet_doors.h"

#include <string.h>

#include "core/support.h"
#include "jpeg2k/transform/wavelet53.h"
#include "jpeg2k/transform/wavelet97.h"
#include "jpeg2k/transform/wavelet_calls.h"

using namespace qel;

namespace {

// Elements of a piece: a multiple of every kernel's step, so that a row in pieces gives what a whole row gives.
constexpr int kPieceElements = 1024;
constexpr size_t kLargestPiece = 4 * kPieceElements;

inline int pieceOf(int left, int most) { return left < most ? left : most; }

// One row of output that is made piece by piece in a buffer which stays in the first-level cache, and is streamed from
// there in whole cache lines. Write up to kLargestPiece bytes at room(), say how many with add(), and at the end
// finish(); then fence() of the support kernels.
class StreamedRow {
public:
    explicit StreamedRow(void* dst)
        : before_(uintptr_t(dst) % kLine), held_(before_), line_((uint8_t*)dst - before_),
          stream_(kernels<SupportKernels>().copy.streamed)
    {}

    uint8_t* room() { return buffer_ + held_; }

    void add(size_t bytes)
    {
        held_ += bytes;
        size_t whole = held_ / kLine * kLine;
        if (whole == 0) return;
        size_t start = 0;
        if (before_ > 0) {
            memcpy(line_ + before_, buffer_ + before_, kLine - before_);
            start = kLine;
            before_ = 0;
        }
        stream_(buffer_ + start, line_ + start, whole - start);
        line_ += whole;
        held_ -= whole;
        memcpy(buffer_, buffer_ + whole, held_);
    }

    void finish() { memcpy(line_ + before_, buffer_ + before_, held_ - before_); }

private:
    static constexpr size_t kLine = 64;

    size_t before_; // bytes of the first line that lie before the row
    size_t held_;   // bytes in the buffer, those before the row included
    uint8_t* line_; // the destination's line that the buffer begins with
    void (*stream_)(const uint8_t*, uint8_t*, size_t);
    alignas(kLine) uint8_t buffer_[kLine + kLargestPiece];
};

// Rows of pairs whose results are streamed, in pieces: each is an extended line of its own.
template <class T>
void forwardStreamedRow(const LiftingKernels<T>& kernels, const T* src, T* low, T* high, int len, int phase)
{
    StreamedRow lows(low), highs(high);
    for (int i = 0, count; i < len; i += count) {
        count = pieceOf(len - i, kPieceElements);
        kernels.forwardRow(src + 2 * ptrdiff_t(i), extendedLine(count, phase), (T*)lows.room(), (T*)highs.room());
        lows.add(count * sizeof(T));
        highs.add(count * sizeof(T));
    }
    lows.finish();
    highs.finish();
    qel::kernels<SupportKernels>().fence();
}
template <class T>
void inverseStreamedRow(const LiftingKernels<T>& kernels, const T* low, const T* high, T* dst, int len, int phase)
{
    StreamedRow out(dst);
    for (int i = 0, count; i < len; i += count) {
        count = pieceOf(len - i, kPieceElements / 2);
        kernels.inverseRow(low + i, high + i, extendedLine(count, phase), (T*)out.room());
        out.add(2 * count * sizeof(T));
    }
    out.finish();
    qel::kernels<SupportKernels>().fence();
}

auto& reversible() { return kernels<Wavelet53Kernels>(); }
auto& irreversible() { return kernels<Wavelet97Kernels>(); }

}

#define QEL_LINE(T, KERNELS, DIRECTION, DOOR)                                                                          \
    void DOOR(T* line, int len, int phase) { liftLine(KERNELS, Direction::DIRECTION, line, len, phase); }
#define QEL_FORWARD_ROW(T, KERNELS, DOOR)                                                                              \
    void DOOR(const T* src, T* low, T* high, int len, int phase)                                                       \
    {                                                                                                                  \
        KERNELS.forwardRow(src, extendedLine(len, phase), low, high);                                                  \
    }
#define QEL_INVERSE_ROW(T, KERNELS, DOOR)                                                                              \
    void DOOR(const T* low, const T* high, T* dst, int len, int phase)                                                 \
    {                                                                                                                  \
        KERNELS.inverseRow(low, high, extendedLine(len, phase), dst);                                                  \
    }
#define QEL_STREAMED_ROWS(T, KERNELS, FORWARD, INVERSE)                                                                \
    void FORWARD(const T* src, T* low, T* high, int len, int phase)                                                    \
    {                                                                                                                  \
        forwardStreamedRow(KERNELS, src, low, high, len, phase);                                                       \
    }                                                                                                                  \
    void INVERSE(const T* low, const T* high, T* dst, int len, int phase)                                              \
    {                                                                                                                  \
        inverseStreamedRow(KERNELS, low, high, dst, len, phase);                                                       \
    }
#define QEL_COLUMNS(T, KERNELS, FORWARD, INVERSE)                                                                      \
    void FORWARD(const T* src, int srcStep, T* low, int lowStep, T* high, int highStep, QelSize size, int phase)       \
    {                                                                                                                  \
        forwardColumns(KERNELS, src, srcStep, low, lowStep, high, highStep, size, phase);                              \
    }                                                                                                                  \
    void INVERSE(const T* low, int lowStep, const T* high, int highStep, QelSize size, T* dst, int dstStep, int phase) \
    {                                                                                                                  \
        inverseColumns(KERNELS, low, lowStep, high, highStep, size, dst, dstStep, phase);                              \
    }

// clang-format off
QEL_COLUMNS(int16_t, reversible().of16s, ownqj_WTFwdColStrip_B53_16s, ownqj_WTInvColStrip_B53_16s)
QEL_COLUMNS(int32_t, reversible().of32s, ownqj_WTFwdColStrip_B53_32s, ownqj_WTInvColStrip_B53_32s)
QEL_FORWARD_ROW(int16_t, reversible().of16s, ownqj_WTFwd_B53_16s)
QEL_FORWARD_ROW(int32_t, reversible().of32s, ownqj_WTFwd_B53_32s)
QEL_INVERSE_ROW(int16_t, reversible().of16s, ownqj_WTInv_B53_16s)
QEL_INVERSE_ROW(int32_t, reversible().of32s, ownqj_WTInv_B53_32s)
QEL_STREAMED_ROWS(int16_t, reversible().of16s, ownqj_WTFwd_B53_16s_NT, ownqj_WTInv_B53_16s_NT)
QEL_STREAMED_ROWS(int32_t, reversible().of32s, ownqj_WTFwd_B53_32s_NT, ownqj_WTInv_B53_32s_NT)
QEL_LINE(int16_t, reversible().of16s, forward, ownqj_WTFwd_B53_16s_I)
QEL_LINE(int32_t, reversible().of32s, forward, ownqj_WTFwd_B53_32s_I)
QEL_LINE(int16_t, reversible().of16s, inverse, ownqj_WTInv_B53_16s_I)
QEL_LINE(int32_t, reversible().of32s, inverse, ownqj_WTInv_B53_32s_I)
QEL_COLUMNS(float, irreversible().of32f, ownqj_WTFwdColStripe_D97_32f, ownqj_WTInvColStripe_D97_32f)
QEL_FORWARD_ROW(float, irreversible().of32f, ownqj_WTFwd_D97_32f)
QEL_LINE(int16_t, irreversible().of16s, forward, ownqj_WTFwd_D97_Row_16s)
QEL_LINE(int32_t, irreversible().of32s, forward, ownqj_WTFwd_D97_Row_32s)
QEL_LINE(int16_t, irreversible().of16s, forward, ownqj_WTFwd_D97_Col_16s)
QEL_LINE(int32_t, irreversible().of32s, forward, ownqj_WTFwd_D97_Col_32s)
QEL_LINE(int16_t, irreversible().of16s, inverse, ownqj_WTInv_D97_Row_16s)
QEL_LINE(int32_t, irreversible().of32s, inverse, ownqj_WTInv_D97_Row_32s)
QEL_LINE(int16_t, irreversible().of16s, inverse, ownqj_WTInv_D97_Col_16s)
QEL_LINE(int32_t, irreversible().of32s, inverse, ownqj_WTInv_D97_Col_32s)
// clang-format on
