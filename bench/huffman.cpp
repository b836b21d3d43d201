// SPDX-License-Identifier: Apache-2.0
// Baseline Huffman coding and its statistics over whole scans, tables and flush included, beside libjpeg-turbo on the
// same coefficients.
#include "jpeg/entropy/huffman_decode.h"
#include "jpeg/entropy/huffman_encode.h"

#include <string.h>

#include <memory>

#include <turbojpeg.h>

#include "cases.h"
#include "contest.h"
#include "libjpeg.h"
#include "qeljx/jpeg_entropy.h"
#include "samples.h"

namespace qel::bench {
namespace {

using Source = std::shared_ptr<JpegCoefficients>;

// An object that the library allocates, and how it is freed.
template <class T> using Owned = std::unique_ptr<T, QelStatus (*)(T*)>;

template <class T> Owned<T> make(QelStatus (*init)(T**), QelStatus (*release)(T*))
{
    T* object = nullptr;
    succeed(init(&object));
    return {object, release};
}
template <class T> Owned<T> make(QelStatus (*init)(const uint8_t*, const uint8_t*, T**), QelStatus (*release)(T*),
                                 const HuffmanLists& lists)
{
    T* object = nullptr;
    succeed(init(lists.bits, lists.values, &object));
    return {object, release};
}

Owned<QelEncodeHuffmanSpec> encoderTable(const HuffmanLists& lists)
{
    return make(qeliEncodeHuffmanSpecInitAlloc_JPEG_8u, qeliEncodeHuffmanSpecFree_JPEG_8u, lists);
}
Owned<QelDecodeHuffmanSpec> decoderTable(const HuffmanLists& lists)
{
    return make(qeliDecodeHuffmanSpecInitAlloc_JPEG_8u, qeliDecodeHuffmanSpecFree_JPEG_8u, lists);
}

// body(block, component) for each block in the order of the scan.
template <class Body> void forBlocks(const JpegCoefficients& source, int16_t* blocks, Body body)
{
    size_t count = source.blocks.size() / 64, inMcu = source.componentOf.size();
    for (size_t i = 0; i < count; i += inMcu)
        for (size_t k = 0; k < inMcu; ++k, blocks += 64) body(blocks, source.componentOf[k]);
}

// Encodes the scan; returns its length in bytes.
size_t encode(JpegCoefficients& source, std::vector<uint8_t>& out)
{
    Owned<QelEncodeHuffmanSpec> dc[] = {encoderTable(source.dc[0]), encoderTable(source.dc[1])};
    Owned<QelEncodeHuffmanSpec> ac[] = {encoderTable(source.ac[0]), encoderTable(source.ac[1])};
    auto state = make(qeliEncodeHuffmanStateInitAlloc_JPEG_8u, qeliEncodeHuffmanStateFree_JPEG_8u);
    int16_t lastDc[3] = {};
    int position = 0, length = int(out.size());
    forBlocks(source, source.blocks.data(), [&](const int16_t* block, int component) {
        int table = component > 0;
        succeed(qeliEncodeHuffman8x8_JPEG_16s1u_C1(block, out.data(), length, &position, &lastDc[component],
                                                   dc[table].get(), ac[table].get(), state.get(), 0));
    });
    succeed(qeliEncodeHuffman8x8_JPEG_16s1u_C1(nullptr, out.data(), length, &position, nullptr, nullptr, nullptr,
                                               state.get(), 1));
    return size_t(position);
}

void decode(JpegCoefficients& source, std::vector<int16_t>& blocks)
{
    Owned<QelDecodeHuffmanSpec> dc[] = {decoderTable(source.dc[0]), decoderTable(source.dc[1])};
    Owned<QelDecodeHuffmanSpec> ac[] = {decoderTable(source.ac[0]), decoderTable(source.ac[1])};
    auto state = make(qeliDecodeHuffmanStateInitAlloc_JPEG_8u, qeliDecodeHuffmanStateFree_JPEG_8u);
    const uint8_t* scan = source.file().data() + source.scanStart();
    // The end marker after the scan belongs to what the decoder may read.
    int16_t lastDc[3] = {};
    int position = 0, length = int(source.scanLength()) + 2;
    uint32_t marker = 0;
    forBlocks(source, blocks.data(), [&](int16_t* block, int component) {
        int table = component > 0;
        succeed(qeliDecodeHuffman8x8_JPEG_1u16s_C1(scan, length, &position, block, &lastDc[component], &marker,
                                                   dc[table].get(), ac[table].get(), state.get()));
    });
}

// Counts the symbols and makes the best tables from the counts.
struct Statistics {
    uint32_t dc[2][256], ac[2][256];
};

void gather(JpegCoefficients& source, Statistics& counts)
{
    memset(&counts, 0, sizeof counts);
    int16_t lastDc[3] = {};
    forBlocks(source, source.blocks.data(), [&](const int16_t* block, int component) {
        int table = component > 0;
        succeed(qeliGetHuffmanStatistics8x8_JPEG_16s_C1(block, counts.dc[table], counts.ac[table], &lastDc[component]));
    });
    HuffmanLists lists;
    for (auto table : {counts.dc[0], counts.ac[0], counts.dc[1], counts.ac[1]})
        succeed(qeliEncodeHuffmanRawTableInit_JPEG_8u(table, lists.bits, lists.values));
}

double symbolsIn(JpegCoefficients& source)
{
    Statistics counts;
    gather(source, counts);
    double sum = 0;
    for (auto table : {counts.dc[0], counts.ac[0], counts.dc[1], counts.ac[1]})
        for (int i = 0; i < 256; ++i) sum += table[i];
    return sum;
}

// The same with the kernels of one build, whose last bits are not flushed.
void encodeWith(const HuffmanEncodeKernels& kernels, JpegCoefficients& source, std::vector<uint8_t>& out)
{
    Owned<QelEncodeHuffmanSpec> dc[] = {encoderTable(source.dc[0]), encoderTable(source.dc[1])};
    Owned<QelEncodeHuffmanSpec> ac[] = {encoderTable(source.ac[0]), encoderTable(source.ac[1])};
    QelEncodeHuffmanState state = {};
    int pos = 0;
    int16_t lastDc[3] = {};
    forBlocks(source, source.blocks.data(), [&](const int16_t* block, int component) {
        int table = component > 0;
        succeed(kernels.encodeBlock(block, out.data(), int(out.size()), &pos, &lastDc[component], dc[table].get(),
                                    ac[table].get(), &state));
    });
}

void decodeWith(const HuffmanDecodeKernels& kernels, JpegCoefficients& source, std::vector<int16_t>& blocks)
{
    Owned<QelDecodeHuffmanSpec> dc[] = {decoderTable(source.dc[0]), decoderTable(source.dc[1])};
    Owned<QelDecodeHuffmanSpec> ac[] = {decoderTable(source.ac[0]), decoderTable(source.ac[1])};
    const uint8_t* scan = source.file().data() + source.scanStart();
    QelDecodeHuffmanState state = {};
    int16_t lastDc[3] = {};
    int pos = 0, length = int(source.scanLength()) + 2;
    uint32_t marker = 0;
    forBlocks(source, blocks.data(), [&](int16_t* block, int component) {
        int table = component > 0;
        succeed(kernels.decodeBlock(scan, length, &pos, block, &lastDc[component], &marker, dc[table].get(),
                                    ac[table].get(), &state));
    });
}

Contest encoding(const Source& source)
{
    auto out = std::make_shared<std::vector<uint8_t>>(source->scanLength() + 1024);
    Contest contest = {"symbol", symbolsIn(*source), {}};
    contest.contestants = {{kLibrary, [=] { encode(*source, *out); }},
                           {"libjpeg-turbo", [=] { source->write(false); }}};
    forBuilds<HuffmanEncodeKernels>([&](std::string name, auto& build) {
        contest.contestants.push_back({name, [=, &build] { encodeWith(build, *source, *out); }});
    });
    contest.check = [=] {
        size_t length = encode(*source, *out);
        bool same = length == source->scanLength() &&
                    memcmp(out->data(), source->file().data() + source->scanStart(), length) == 0;
        require(same, "the scan differs from the peer's");
    };
    return contest;
}

Contest decoding(const Source& source)
{
    auto blocks = std::make_shared<std::vector<int16_t>>(source->blocks.size());
    Contest contest = {"symbol", symbolsIn(*source), {}};
    contest.contestants = {{kLibrary, [=] { decode(*source, *blocks); }}, {"libjpeg-turbo", [=] { source->read(); }}};
    forBuilds<HuffmanDecodeKernels>([&](std::string name, auto& build) {
        contest.contestants.push_back({name, [=, &build] { decodeWith(build, *source, *blocks); }});
    });
    contest.check = [=] {
        decode(*source, *blocks);
        require(*blocks == source->blocks, "the coefficients differ from the peer's");
    };
    return contest;
}

// libjpeg-turbo gathers statistics only as the first of two passes: the second is taken off.
Contest statistics(const Source& source)
{
    auto counts = std::make_shared<Statistics>();
    Contest contest = {"pixel", source->pixels, {}};
    contest.contestants = {
        {kLibrary, [=] { gather(*source, *counts); }},
        {"libjpeg-turbo", [=] { source->write(true); }, [=] { source->write(false); }},
    };
    return contest;
}

void add(const NamedPicture& named, int quality)
{
    auto source = [&named, quality] {
        // Whole MCUs, so that both sides code the same blocks.
        auto whole = crop(named.picture, named.picture.width() / 16 * 16, named.picture.height() / 16 * 16);
        return std::make_shared<JpegCoefficients>(whole, quality, TJSAMP_420);
    };
    auto name = named.name + " q" + std::to_string(quality);
    addCase("huffman/encode/" + name, [=] { return encoding(source()); });
    addCase("huffman/decode/" + name, [=] { return decoding(source()); });
    addCase("huffman/statistics/" + name, [=] { return statistics(source()); });
}

}

void addHuffmanCases()
{
    for (auto& named : pictures())
        for (int quality : {75, 90, 95}) add(named, quality);
    add(noise(), 90);
}

}
