// SPDX-License-Identifier: Apache-2.0
// Line movers: exported internal functions.
#include "jpeg2k/transform/line_mover_doors.h"

#include "core/rows.h"
#include "jpeg2k/transform/wavelet_lines.h"

using namespace qel;

namespace {

// How many samples of extension a line needs before and after it.
struct Extension {
    int before, after;
};
constexpr Extension kFour = {4, 4};

bool lastIsHigh(int len, int phase) { return (len % 2 == 0) == (phase == 0); }
Extension forwardExtension(int len, int phase) { return {phase ? 1 : 2, lastIsHigh(len, phase) ? 1 : 2}; }
Extension inverseExtension(int len, int phase) { return {phase ? 2 : 1, lastIsHigh(len, phase) ? 2 : 1}; }

// placeOf(i) is where sample i of the line lies in the source. A single sample is its own mirror image.
template <class T, class Place>
void read(const T* src, int step, T* dst, const Line& line, Extension extension, Place placeOf)
{
    for (ptrdiff_t i = -extension.before; i < line.length + extension.after; ++i) {
        ptrdiff_t inside = line.length == 1 ? 0 : line.inside(i);
        storeOne(dst + i, loadOne(rowAt(src, step, int(placeOf(inside)))));
    }
}
template <class T> void read(const T* src, int step, T* dst, int len, Extension extension)
{
    read(src, step, dst, {len, 0}, extension, [](ptrdiff_t i) { return i; });
}
template <class T> void readHalves(const T* src, int step, T* dst, int len, int phase, Extension extension)
{
    Line line = {len, phase != 0};
    read(src, step, dst, line, extension, [&](ptrdiff_t i) { return halfOf(line, i); });
}
template <class T> void write(const T* src, T* dst, int step, int len)
{
    for (int i = 0; i < len; ++i) storeOne(rowAt(dst, step, i), loadOne(src + i));
}
template <class T> void writeHalves(const T* src, T* dst, int step, int len, int phase)
{
    Line line = {len, phase != 0};
    for (int i = 0; i < len; ++i) storeOne(rowAt(dst, step, int(halfOf(line, i))), loadOne(src + i));
}

}

void ownqj_ReadExt_Row_16s(const int16_t* src, int16_t* dst, int len, int phase)
{
    read(src, sizeof(int16_t), dst, len, forwardExtension(len, phase));
}

void ownqj_ReadExt_Row_32s(const int32_t* src, int32_t* dst, int len, int phase)
{
    read(src, sizeof(int32_t), dst, len, forwardExtension(len, phase));
}

void ownqj_ReadExt_Col_16s(const int16_t* src, int step, int16_t* dst, int len, int phase)
{
    read(src, step, dst, len, forwardExtension(len, phase));
}

void ownqj_ReadExt_Col_32s(const int32_t* src, int step, int32_t* dst, int len, int phase)
{
    read(src, step, dst, len, forwardExtension(len, phase));
}

void ownqj_ReadExt4_Row_16s(const int16_t* src, int16_t* dst, int len) { read(src, sizeof(int16_t), dst, len, kFour); }
void ownqj_ReadExt4_Row_32s(const int32_t* src, int32_t* dst, int len) { read(src, sizeof(int32_t), dst, len, kFour); }
void ownqj_ReadExt4_Col_16s(const int16_t* src, int step, int16_t* dst, int len) { read(src, step, dst, len, kFour); }
void ownqj_ReadExt4_Col_32s(const int32_t* src, int step, int32_t* dst, int len) { read(src, step, dst, len, kFour); }
void ownqj_ReadInterleaveExt_Row_16s(const int16_t* src, int16_t* dst, int len, int phase)
{
    readHalves(src, sizeof(int16_t), dst, len, phase, inverseExtension(len, phase));
}

void ownqj_ReadInterleaveExt_Row_32s(const int32_t* src, int32_t* dst, int len, int phase)
{
    readHalves(src, sizeof(int32_t), dst, len, phase, inverseExtension(len, phase));
}

void ownqj_ReadInterleaveExt_Col_16s(const int16_t* src, int step, int16_t* dst, int len, int phase)
{
    readHalves(src, step, dst, len, phase, inverseExtension(len, phase));
}

void ownqj_ReadInterleaveExt_Col_32s(const int32_t* src, int step, int32_t* dst, int len, int phase)
{
    readHalves(src, step, dst, len, phase, inverseExtension(len, phase));
}

void ownqj_ReadInterleaveExt4_Row_16s(const int16_t* src, int16_t* dst, int len, int phase)
{
    readHalves(src, sizeof(int16_t), dst, len, phase, kFour);
}

void ownqj_ReadInterleaveExt4_Row_32s(const int32_t* src, int32_t* dst, int len, int phase)
{
    readHalves(src, sizeof(int32_t), dst, len, phase, kFour);
}

void ownqj_ReadInterleaveExt4_Col_16s(const int16_t* src, int step, int16_t* dst, int len, int phase)
{
    readHalves(src, step, dst, len, phase, kFour);
}

void ownqj_ReadInterleaveExt4_Col_32s(const int32_t* src, int step, int32_t* dst, int len, int phase)
{
    readHalves(src, step, dst, len, phase, kFour);
}

void ownqj_WriteInterleave_Row_16s(const int16_t* src, int16_t* dst, int len, int phase)
{
    writeHalves(src, dst, sizeof(int16_t), len, phase);
}

void ownqj_WriteInterleave_Row_32s(const int32_t* src, int32_t* dst, int len, int phase)
{
    writeHalves(src, dst, sizeof(int32_t), len, phase);
}

void ownqj_WriteInterleave_Col_16s(const int16_t* src, int16_t* dst, int step, int len, int phase)
{
    writeHalves(src, dst, step, len, phase);
}

void ownqj_WriteInterleave_Col_32s(const int32_t* src, int32_t* dst, int step, int len, int phase)
{
    writeHalves(src, dst, step, len, phase);
}

void ownqj_Write_Row_16s(const int16_t* src, int16_t* dst, int len) { write(src, dst, sizeof(int16_t), len); }
void ownqj_Write_Row_32s(const int32_t* src, int32_t* dst, int len) { write(src, dst, sizeof(int32_t), len); }
void ownqj_Write_Col_16s(const int16_t* src, int16_t* dst, int step, int len) { write(src, dst, step, len); }
void ownqj_Write_Col_32s(const int32_t* src, int32_t* dst, int step, int len) { write(src, dst, step, len); }
