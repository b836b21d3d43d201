// SPDX-License-Identifier: Apache-2.0
// Huffman tables from their lists, and the life of the four objects.
#include "jpeg/entropy/huffman_tables.h"

#include <string.h>

#include "core/checks.h"
#include "qeljx/support.h"

using namespace qel;

namespace {

// The codes of a table in order of length (T.81 C.2). A code may outgrow 16 bits where the lists describe too many.
struct CodeList {
    int count;
    uint8_t lengths[256];
    uint32_t codes[256];
};

// False if the lengths stand for more than 256 codes.
bool listLengths(const uint8_t* bits, CodeList& list)
{
    list.count = 0;
    for (int length = 1; length <= kLongestCode; ++length) {
        int ofLength = bits[length - 1];
        if (list.count + ofLength > 256) return false;
        memset(list.lengths + list.count, length, ofLength);
        list.count += ofLength;
    }
    return true;
}

void assignCodes(CodeList& list)
{
    uint32_t code = 0;
    for (int i = 0; i < list.count; ++i) {
        if (i > 0) code = (code + 1) << (list.lengths[i] - list.lengths[i - 1]);
        list.codes[i] = code;
    }
}

// Whether every code fits its length with the word of all ones left free.
bool allFit(const CodeList& list)
{
    for (int i = 0; i < list.count; ++i)
        if (list.codes[i] + 1 >= 1u << list.lengths[i]) return false;
    return true;
}

void fillLengths(const uint8_t* bits, const CodeList& list, QelDecodeHuffmanSpec& spec)
{
    for (int length = 1, first = 0; length <= kLongestCode; ++length) {
        int ofLength = bits[length - 1];
        spec.largestCode[length] = kNoCodeOfLength;
        if (ofLength == 0) continue;
        spec.valueIndex[length] = uint16_t(first);
        spec.firstCode[length] = uint16_t(list.codes[first]);
        first += ofLength;
        spec.largestCode[length] = uint16_t(list.codes[first - 1]);
    }
    spec.largestCode[kLongestCode + 1] = kNoCodeOfLength;
}

void fillLookAhead(const CodeList& list, QelDecodeHuffmanSpec& spec)
{
    for (int i = 0; i < list.count && list.lengths[i] <= kLookAheadBits; ++i) {
        int spare = kLookAheadBits - list.lengths[i];
        uint32_t from = list.codes[i] << spare, to = from + (1u << spare);
        for (uint32_t k = from; k < to && k < 256; ++k)
            spec.lookAhead[k] = (uint32_t(list.lengths[i]) << 16) | spec.values[i];
    }
}

QelStatus sizeOf(int* pSize, int bytes)
{
    if (QelStatus bad = pointers(pSize)) return bad;
    *pSize = bytes;
    return qelStsNoErr;
}

// Allocates an object, has it built, and hands it over even if the builder was not content.
template <class Object, class Build> QelStatus initAlloc(Object** ppObject, Build build)
{
    auto* object = (Object*)qelsMalloc_8u(sizeof(Object));
    if (object == nullptr) return qelStsNullPtrErr;
    *ppObject = object;
    return build(object);
}

QelStatus release(void* object)
{
    if (QelStatus bad = pointers(object)) return bad;
    qelsFree(object);
    return qelStsNoErr;
}

}

QelStatus ownqj_DecodeHuffmanSpecInit(const uint8_t* bits, const uint8_t* values, QelDecodeHuffmanSpec* spec)
{
    *spec = {};
    CodeList list;
    if (!listLengths(bits, list)) return qelStsJPEGHuffSpecErr;
    assignCodes(list);
    for (int i = 0; i < list.count; ++i) spec->values[i] = values[i];
    fillLengths(bits, list, *spec);
    fillLookAhead(list, *spec);
    return qelStsNoErr;
}

QelStatus ownqj_EncodeHuffmanSpecInit(const uint8_t* bits, const uint8_t* values, QelEncodeHuffmanSpec* spec)
{
    *spec = {};
    CodeList list;
    if (!listLengths(bits, list)) return qelStsJPEGHuffSpecErr;
    assignCodes(list);
    if (!allFit(list)) return qelStsJPEGHuffSpecErr;
    for (int i = 0; i < list.count; ++i) spec->entries[values[i]] = (uint32_t(list.lengths[i]) << 16) | list.codes[i];
    return qelStsNoErr;
}

void ownqj_DecodeHuffmanStateInit(QelDecodeHuffmanState* state) { *state = {}; }
void ownqj_EncodeHuffmanStateInit(QelEncodeHuffmanState* state) { *state = {}; }

QelStatus qeliDecodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize) { return sizeOf(pSize, sizeof(QelDecodeHuffmanSpec)); }
QelStatus qeliDecodeHuffmanStateGetBufSize_JPEG_8u(int* pSize) { return sizeOf(pSize, sizeof(QelDecodeHuffmanState)); }
QelStatus qeliEncodeHuffmanSpecGetBufSize_JPEG_8u(int* pSize) { return sizeOf(pSize, sizeof(QelEncodeHuffmanSpec)); }
QelStatus qeliEncodeHuffmanStateGetBufSize_JPEG_8u(int* pSize) { return sizeOf(pSize, sizeof(QelEncodeHuffmanState)); }

QelStatus qeliDecodeHuffmanSpecInit_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals, QelDecodeHuffmanSpec* pSpec)
{
    if (QelStatus bad = pointers(pBits, pVals, pSpec)) return bad;
    return ownqj_DecodeHuffmanSpecInit(pBits, pVals, pSpec);
}

QelStatus qeliEncodeHuffmanSpecInit_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals, QelEncodeHuffmanSpec* pSpec)
{
    if (QelStatus bad = pointers(pBits, pVals, pSpec)) return bad;
    return ownqj_EncodeHuffmanSpecInit(pBits, pVals, pSpec);
}

QelStatus qeliDecodeHuffmanStateInit_JPEG_8u(QelDecodeHuffmanState* pState)
{
    if (QelStatus bad = pointers(pState)) return bad;
    ownqj_DecodeHuffmanStateInit(pState);
    return qelStsNoErr;
}

QelStatus qeliEncodeHuffmanStateInit_JPEG_8u(QelEncodeHuffmanState* pState)
{
    if (QelStatus bad = pointers(pState)) return bad;
    ownqj_EncodeHuffmanStateInit(pState);
    return qelStsNoErr;
}

QelStatus qeliDecodeHuffmanSpecInitAlloc_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals,
                                                 QelDecodeHuffmanSpec** ppSpec)
{
    if (QelStatus bad = pointers(pBits, pVals, ppSpec)) return bad;
    return initAlloc(ppSpec, [=](auto* spec) { return ownqj_DecodeHuffmanSpecInit(pBits, pVals, spec); });
}

QelStatus qeliEncodeHuffmanSpecInitAlloc_JPEG_8u(const uint8_t* pBits, const uint8_t* pVals,
                                                 QelEncodeHuffmanSpec** ppSpec)
{
    if (QelStatus bad = pointers(pBits, pVals, ppSpec)) return bad;
    return initAlloc(ppSpec, [=](auto* spec) { return ownqj_EncodeHuffmanSpecInit(pBits, pVals, spec); });
}

QelStatus qeliDecodeHuffmanStateInitAlloc_JPEG_8u(QelDecodeHuffmanState** ppState)
{
    if (QelStatus bad = pointers(ppState)) return bad;
    return initAlloc(ppState, qeliDecodeHuffmanStateInit_JPEG_8u);
}

QelStatus qeliEncodeHuffmanStateInitAlloc_JPEG_8u(QelEncodeHuffmanState** ppState)
{
    if (QelStatus bad = pointers(ppState)) return bad;
    return initAlloc(ppState, qeliEncodeHuffmanStateInit_JPEG_8u);
}

QelStatus qeliDecodeHuffmanSpecFree_JPEG_8u(QelDecodeHuffmanSpec* pSpec) { return release(pSpec); }
QelStatus qeliEncodeHuffmanSpecFree_JPEG_8u(QelEncodeHuffmanSpec* pSpec) { return release(pSpec); }
QelStatus qeliDecodeHuffmanStateFree_JPEG_8u(QelDecodeHuffmanState* pState) { return release(pState); }
QelStatus qeliEncodeHuffmanStateFree_JPEG_8u(QelEncodeHuffmanState* pState) { return release(pState); }
