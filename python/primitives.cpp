// SPDX-License-Identifier: Apache-2.0
// The library's families as functions over arrays.
#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "arrays.h"

namespace qel::python {
namespace {

using Byte = Array<uint8_t>;

// The planes of an array of 3 x height x width.
template <class T> struct Planes {
    T* plane[3];

    template <class A> explicit Planes(A& array)
    {
        require(array.ndim() == 3 && array.shape(0) == 3, "three planes are wanted: 3 x height x width");
        for (int c = 0; c < 3; ++c) plane[c] = const_cast<T*>(array.data(c, 0, 0));
    }
};

Byte rgbToYcbcr(const Byte& rgb)
{
    require(rgb.ndim() == 3 && rgb.shape(2) == 3, "height x width x 3 is wanted");
    QelSize size = sizeOf(rgb, 1);
    Byte planes({py::ssize_t(3), rgb.shape(0), rgb.shape(1)});
    Planes<uint8_t> to(planes);
    check(
        unlocked([&] { return qeliRGBToYCbCr_JPEG_8u_C3P3R(rgb.data(), 3 * size.width, to.plane, size.width, size); }));
    return planes;
}

Byte ycbcrToRgb(const Byte& planes)
{
    QelSize size = sizeOf(planes);
    Planes<uint8_t> from(planes);
    Byte rgb({planes.shape(1), planes.shape(2), py::ssize_t(3)});
    uint8_t* to = rgb.mutable_data();
    check(unlocked([&] { return qeliYCbCrToRGB_JPEG_8u_P3C3R(from.plane, size.width, to, 3 * size.width, size); }));
    return rgb;
}

// Half the width, or half of both; odd sizes are rounded down.
Byte downsample(const Byte& plane, bool bothWays)
{
    QelSize from = sizeOf(plane), to = {from.width / 2, bothWays ? from.height / 2 : from.height};
    Byte half({py::ssize_t(to.height), py::ssize_t(to.width)});
    auto down = bothWays ? qeliSampleDownH2V2_JPEG_8u_C1R : qeliSampleDownH2V1_JPEG_8u_C1R;
    uint8_t* samples = half.mutable_data();
    check(unlocked([&] { return down(plane.data(), from.width, from, samples, to.width, to); }));
    return half;
}

Byte upsample(const Byte& plane, bool bothWays)
{
    QelSize from = sizeOf(plane);
    int rows = bothWays ? 2 * from.height : from.height;
    Byte twice({py::ssize_t(rows), py::ssize_t(2 * from.width)});
    uint8_t* to = twice.mutable_data();
    auto row = [&](int y) { return plane.data() + ptrdiff_t(y) * from.width; };
    check(unlocked([&] {
        QelStatus status = qelStsNoErr;
        for (int y = 0; y < rows && status >= 0; ++y, to += 2 * from.width) {
            int near = bothWays ? y / 2 : y, far = std::clamp(y % 2 ? near + 1 : near - 1, 0, from.height - 1);
            status = bothWays ? qeliSampleUpRowH2V2_Triangle_JPEG_8u_C1(row(near), row(far), from.width, to)
                              : qeliSampleUpRowH2V1_Triangle_JPEG_8u_C1(row(near), from.width, to);
        }
        return status;
    }));
    return twice;
}

const uint8_t* stepsOf(const Byte& table)
{
    require(table.size() == 64, "a quantization table has 64 steps, in zig-zag order");
    return table.data();
}

Byte scaleSteps(const Byte& table, int quality)
{
    Byte scaled(64);
    std::memcpy(scaled.mutable_data(), stepsOf(table), 64);
    check(qeliQuantFwdRawTableInit_JPEG_8u(scaled.mutable_data(), quality));
    return scaled;
}

// A plane whose sides are multiples of 8 to blocks, down x across x 8 x 8.
Array<int16_t> forwardDct(const Byte& plane, const Byte& table)
{
    QelSize size = sizeOf(plane);
    require(size.width % 8 == 0 && size.height % 8 == 0, "the sides of the plane are multiples of 8");
    uint16_t steps[64];
    check(qeliQuantFwdTableInit_JPEG_8u16u(stepsOf(table), steps));
    Array<int16_t> blocks({py::ssize_t(size.height / 8), py::ssize_t(size.width / 8), py::ssize_t(8), py::ssize_t(8)});
    int16_t* to = blocks.mutable_data();
    check(unlocked([&] {
        QelStatus status = qelStsNoErr;
        for (int y = 0; y < size.height; y += 8)
            for (int x = 0; x < size.width && status >= 0; x += 8, to += 64)
                status = qeliDCTQuantFwd8x8LS_JPEG_8u16s_C1R(plane.data() + ptrdiff_t(y) * size.width + x, size.width,
                                                             to, steps);
        return status;
    }));
    return blocks;
}

Byte inverseDct(const Array<int16_t>& blocks, const Byte& table)
{
    require(blocks.ndim() == 4 && blocks.shape(2) == 8 && blocks.shape(3) == 8, "down x across x 8 x 8 is wanted");
    QelSize size = sizeOf(blocks, 2);
    uint16_t steps[64];
    check(qeliQuantInvTableInit_JPEG_8u16u(stepsOf(table), steps));
    Byte plane({py::ssize_t(8 * size.height), py::ssize_t(8 * size.width)});
    uint8_t* to = plane.mutable_data();
    check(unlocked([&] {
        QelStatus status = qelStsNoErr;
        for (int b = 0; b < size.width * size.height && status >= 0; ++b)
            status = qeliDCTQuantInv8x8LS_JPEG_16s8u_C1R(
                blocks.data() + ptrdiff_t(64) * b,
                to + ptrdiff_t(b / size.width) * 64 * size.width + 8 * (b % size.width), 8 * size.width, steps);
        return status;
    }));
    return plane;
}

py::ssize_t blocksIn(const Array<int16_t>& blocks)
{
    require(blocks.size() > 0 && blocks.size() % 64 == 0, "blocks of 64 coefficients are wanted");
    return blocks.size() / 64;
}

// Counters of the DC and AC symbols of a component whose blocks come in this order.
py::tuple huffmanStatistics(const Array<int16_t>& blocks)
{
    Array<uint32_t> dc(256), ac(256);
    std::memset(dc.mutable_data(), 0, 1024), std::memset(ac.mutable_data(), 0, 1024);
    int16_t lastDc = 0;
    for (py::ssize_t b = 0, count = blocksIn(blocks); b < count; ++b)
        check(qeliGetHuffmanStatistics8x8_JPEG_16s_C1(blocks.data() + 64 * b, dc.mutable_data(), ac.mutable_data(),
                                                      &lastDc));
    return py::make_tuple(dc, ac);
}

py::tuple huffmanTable(const Array<uint32_t>& statistics)
{
    require(statistics.size() == 256, "256 counters are wanted");
    Byte bits(16), values(256);
    check(qeliEncodeHuffmanRawTableInit_JPEG_8u(statistics.data(), bits.mutable_data(), values.mutable_data()));
    int count = 0;
    for (int i = 0; i < 16; ++i) count += bits.data()[i];
    return py::make_tuple(bits, values[py::slice(0, count, 1)]);
}

template <auto Init, auto Free, class Spec> std::unique_ptr<Spec, decltype(Free)> specOf(const py::tuple& table)
{
    Byte bits = table[0].cast<Byte>(), values = table[1].cast<Byte>();
    require(bits.size() == 16, "a table is (bits, values), with 16 bits");
    int count = 0;
    for (int i = 0; i < 16; ++i) count += bits.data()[i];
    require(values.size() >= count, "the table has fewer values than codes");
    Spec* spec = nullptr;
    QelStatus status = Init(bits.data(), values.data(), &spec);
    std::unique_ptr<Spec, decltype(Free)> owner(spec, Free);
    check(status);
    return owner;
}

py::bytes huffmanEncode(const Array<int16_t>& blocks, const py::tuple& dcTable, const py::tuple& acTable)
{
    auto dc = specOf<qeliEncodeHuffmanSpecInitAlloc_JPEG_8u, &qeliEncodeHuffmanSpecFree_JPEG_8u, QelEncodeHuffmanSpec>(
        dcTable);
    auto ac = specOf<qeliEncodeHuffmanSpecInitAlloc_JPEG_8u, &qeliEncodeHuffmanSpecFree_JPEG_8u, QelEncodeHuffmanSpec>(
        acTable);
    QelEncodeHuffmanState* made = nullptr;
    check(qeliEncodeHuffmanStateInitAlloc_JPEG_8u(&made));
    std::unique_ptr<QelEncodeHuffmanState, decltype(&qeliEncodeHuffmanStateFree_JPEG_8u)> state(
        made, &qeliEncodeHuffmanStateFree_JPEG_8u);
    py::ssize_t count = blocksIn(blocks);
    require(count <= INT32_MAX / 513 - 1, "there are too many blocks for one call");
    std::vector<uint8_t> bytes(size_t(count) * 513 + 2);
    int length = 0;
    check(unlocked([&] {
        int16_t lastDc = 0;
        QelStatus status = qelStsNoErr;
        for (py::ssize_t b = 0; b <= count && status >= 0; ++b)
            status = qeliEncodeHuffman8x8_JPEG_16s1u_C1(b < count ? blocks.data() + 64 * b : nullptr, bytes.data(),
                                                        int(bytes.size()), &length, &lastDc, dc.get(), ac.get(),
                                                        state.get(), b == count);
        return status;
    }));
    return {reinterpret_cast<const char*>(bytes.data()), size_t(length)};
}

Array<int16_t> huffmanDecode(const py::bytes& given, int count, const py::tuple& dcTable, const py::tuple& acTable)
{
    auto dc = specOf<qeliDecodeHuffmanSpecInitAlloc_JPEG_8u, &qeliDecodeHuffmanSpecFree_JPEG_8u, QelDecodeHuffmanSpec>(
        dcTable);
    auto ac = specOf<qeliDecodeHuffmanSpecInitAlloc_JPEG_8u, &qeliDecodeHuffmanSpecFree_JPEG_8u, QelDecodeHuffmanSpec>(
        acTable);
    QelDecodeHuffmanState* made = nullptr;
    check(qeliDecodeHuffmanStateInitAlloc_JPEG_8u(&made));
    std::unique_ptr<QelDecodeHuffmanState, decltype(&qeliDecodeHuffmanStateFree_JPEG_8u)> state(
        made, &qeliDecodeHuffmanStateFree_JPEG_8u);
    std::string_view bytes = given;
    require(count > 0 && bytes.size() <= INT32_MAX, "no such number of blocks or bytes");
    Array<int16_t> blocks({py::ssize_t(count), py::ssize_t(8), py::ssize_t(8)});
    int16_t* to = blocks.mutable_data();
    check(unlocked([&] {
        int position = 0;
        int16_t lastDc = 0;
        uint32_t marker = 0;
        QelStatus status = qelStsNoErr;
        for (int b = 0; b < count && status >= 0; ++b, to += 64)
            status =
                qeliDecodeHuffman8x8_JPEG_1u16s_C1(reinterpret_cast<const uint8_t*>(bytes.data()), int(bytes.size()),
                                                   &position, to, &lastDc, &marker, dc.get(), ac.get(), state.get());
        return status;
    }));
    return blocks;
}

// Rows of samples to rows of differences, or back: the first row by the precision, the others by the predictor.
template <bool kForward> Array<int16_t> predict(const Array<int16_t>& rows, int predictor, int precision)
{
    QelSize size = sizeOf(rows);
    Array<int16_t> result({rows.shape(0), rows.shape(1)});
    int16_t* to = result.mutable_data();
    check(unlocked([&] {
        const int16_t* from = rows.data();
        QelStatus status = kForward ? qeliDiffPredFirstRow_JPEG_16s_C1(from, to, size.width, precision, 0)
                                    : qeliReconstructPredFirstRow_JPEG_16s_C1(from, to, size.width, precision, 0);
        for (int y = 1; y < size.height && status >= 0; ++y) {
            from += size.width, to += size.width;
            status = kForward ? qeliDiffPredRow_JPEG_16s_C1(from, from - size.width, to, size.width, predictor)
                              : qeliReconstructPredRow_JPEG_16s_C1(from, to - size.width, to, size.width, predictor);
        }
        return status;
    }));
    return result;
}

// Component transforms: three planes in a new array.
template <auto Transform, class T> Array<T> components(const Array<T>& planes)
{
    QelSize size = sizeOf(planes);
    Array<T> result({planes.shape(0), planes.shape(1), planes.shape(2)});
    std::memcpy(result.mutable_data(), planes.data(), size_t(planes.nbytes()));
    Planes<T> in(result);
    check(unlocked([&] { return Transform(in.plane, int(size.width * sizeof(T)), size); }));
    return result;
}

// Levels of a wavelet: each takes the low-low quarter of the one before, which lies at the upper left.
template <bool kForward, auto Size, auto Transform> Array<int32_t> wavelet(const Array<int32_t>& samples, int levels)
{
    QelSize size = sizeOf(samples);
    require(levels >= 0 && levels <= 32, "0 to 32 levels");
    Array<int32_t> result({samples.shape(0), samples.shape(1)});
    std::memcpy(result.mutable_data(), samples.data(), size_t(samples.nbytes()));
    int32_t* data = result.mutable_data();
    check(unlocked([&] {
        std::vector<QelRect> rects;
        for (QelRect rect = {0, 0, size.width, size.height}; int(rects.size()) < levels; rects.push_back(rect))
            if (!rects.empty()) rect = {0, 0, (rect.width + 1) / 2, (rect.height + 1) / 2};
        if (!kForward) std::reverse(rects.begin(), rects.end());
        QelStatus status = qelStsNoErr;
        for (const QelRect& rect : rects) {
            int bytes = 0;
            status = Size(&rect, &bytes);
            std::vector<uint8_t> buffer(size_t(bytes) + 1);
            if (status >= 0) status = Transform(data, size.width * 4, &rect, buffer.data());
            if (status < 0) break;
        }
        return status;
    }));
    return result;
}

int32_t signAndMagnitude(int32_t value) { return value < 0 ? int32_t(0x80000000u | (0u - uint32_t(value))) : value; }
int32_t fromSignAndMagnitude(int32_t value) { return value < 0 ? -(value & 0x7FFFFFFF) : value; }

// What a code-block is coded as: bytes, segments, and for each pass where it could be cut and what it gains.
py::dict encodeCodeBlock(const Array<int32_t>& coefficients, int band, int style)
{
    QelSize size = sizeOf(coefficients);
    QelEncodeState* made = nullptr;
    check(qeliEncodeInitAlloc_JPEG2K(&made, size.width, size.height));
    std::unique_ptr<QelEncodeState, decltype(&qeliEncodeFree_JPEG2K)> state(made, &qeliEncodeFree_JPEG2K);
    std::vector<int32_t> source(size_t(size.width) * size.height);
    for (size_t i = 0; i < source.size(); ++i) source[i] = signAndMagnitude(coefficients.data()[i]);
    int planes, passes, segments;
    check(unlocked([&] {
        return qeliEncodeLoadCodeBlock_JPEG2K_32s_C1R(source.data(), size.width * 4, size.width, size.height,
                                                      state.get(), band, 31, 0, 0, style, &planes, &passes, &segments);
    }));
    std::vector<uint32_t> rates(size_t(passes), 0), lengths(size_t(segments), 0);
    std::vector<double> distortions(size_t(passes), 0);
    uint32_t total = 0;
    for (int i = 0; i < segments; ++i) {
        check(qeliEncodeGetTermPassLen_JPEG2K(state.get(), i, &lengths[size_t(i)]));
        total += lengths[size_t(i)];
    }
    for (int i = 0; i < passes; ++i) {
        check(qeliEncodeGetRate_JPEG2K(state.get(), i, &rates[size_t(i)]));
        check(qeliEncodeGetDist_JPEG2K(state.get(), i, &distortions[size_t(i)]));
    }
    std::vector<uint8_t> bytes(total + 1);
    int stored = int(bytes.size()), more;
    check(qeliEncodeStoreBits_JPEG2K_1u(bytes.data(), &stored, state.get(), &more));
    using namespace py::literals;
    return py::dict("data"_a = py::bytes(reinterpret_cast<const char*>(bytes.data()), size_t(stored)),
                    "planes"_a = planes, "passes"_a = passes, "lengths"_a = lengths, "rates"_a = rates,
                    "distortions"_a = distortions);
}

Array<int32_t> decodeCodeBlock(const py::bytes& given, std::pair<int, int> shape, int band, int planes, int passes,
                               const std::vector<uint32_t>& lengths, int style)
{
    std::string_view bytes = given;
    uint64_t total = 0;
    for (uint32_t length : lengths) total += length;
    require(total <= bytes.size() && lengths.size() <= INT32_MAX, "the segments are longer than the data");
    QelSize size = {shape.second, shape.first};
    int room;
    check(qeliDecodeGetBufSize_JPEG2K(size, &room));
    std::vector<uint8_t> state(size_t(room), 0);
    check(qeliDecodeCBProgrInit_JPEG2K(reinterpret_cast<QelDecodeCBProgrState*>(state.data())));
    Array<int32_t> block({py::ssize_t(size.height), py::ssize_t(size.width)});
    int32_t* to = block.mutable_data();
    std::string held = std::string(bytes) + '\0';
    check(unlocked([&] {
        return qeliDecodeCodeBlock_JPEG2K_1u32s_C1R(
            reinterpret_cast<const uint8_t*>(held.data()), to, size.width * 4, size, band, planes, passes,
            lengths.empty() ? &(const uint32_t&)0u : lengths.data(), int(lengths.size()), style, nullptr,
            reinterpret_cast<QelDecodeCBProgrState*>(state.data()));
    }));
    for (py::ssize_t i = 0; i < block.size(); ++i) to[i] = fromSignAndMagnitude(to[i]);
    return block;
}

}

void addPrimitivesTo(py::module_& m)
{
    using namespace py::literals;
    m.def("rgb_to_ycbcr", &rgbToYcbcr, "rgb"_a, "Height x width x 3 bytes to three planes (JFIF).");
    m.def("ycbcr_to_rgb", &ycbcrToRgb, "planes"_a, "Three planes to height x width x 3 bytes.");
    m.def("downsample", &downsample, "plane"_a, "both_ways"_a = true,
          "Half the width, or both sides, by a box filter.");
    m.def("upsample", &upsample, "plane"_a, "both_ways"_a = true,
          "Twice the width, or both sides, by a triangle filter.");
    m.def("scale_steps", &scaleSteps, "table"_a, "quality"_a, "A quantization table, in zig-zag order, for a quality.");
    m.def("forward_dct", &forwardDct, "plane"_a, "table"_a, "Quantized blocks, down x across x 8 x 8, of a plane.");
    m.def("inverse_dct", &inverseDct, "blocks"_a, "table"_a, "The plane of quantized blocks.");
    m.def("huffman_statistics", &huffmanStatistics, "blocks"_a, "(DC, AC) counters of the symbols of blocks.");
    m.def("huffman_table", &huffmanTable, "statistics"_a, "(bits, values) of the table that codes them shortest.");
    m.def("huffman_encode", &huffmanEncode, "blocks"_a, "dc"_a, "ac"_a, "A scan of blocks.");
    m.def("huffman_decode", &huffmanDecode, "data"_a, "count"_a, "dc"_a, "ac"_a, "So many blocks of a scan.");
    m.def("predict", &predict<true>, "samples"_a, "predictor"_a = 1, "precision"_a = 8,
          "Differences of lossless JPEG.");
    m.def("reconstruct", &predict<false>, "differences"_a, "predictor"_a = 1, "precision"_a = 8,
          "Samples of such differences.");
    m.def("rct", &components<qeliRCTFwd_JPEG2K_32s_P3IR, int32_t>, "planes"_a, "Reversible component transform.");
    m.def("inverse_rct", &components<qeliRCTInv_JPEG2K_32s_P3IR, int32_t>, "planes"_a);
    m.def("ict", &components<qeliICTFwd_JPEG2K_32f_P3IR, float>, "planes"_a, "Irreversible component transform.");
    m.def("inverse_ict", &components<qeliICTInv_JPEG2K_32f_P3IR, float>, "planes"_a);
    m.def("wavelet53", &wavelet<true, qeliWTGetBufSize_B53_JPEG2K_32s_C1IR, qeliWTFwd_B53_JPEG2K_32s_C1IR>, "samples"_a,
          "levels"_a = 1, "5/3 wavelet; low-low is at the upper left.");
    m.def("inverse_wavelet53", &wavelet<false, qeliWTGetBufSize_B53_JPEG2K_32s_C1IR, qeliWTInv_B53_JPEG2K_32s_C1IR>,
          "coefficients"_a, "levels"_a = 1);
    m.def("wavelet97", &wavelet<true, qeliWTGetBufSize_D97_JPEG2K_32s_C1IR, qeliWTFwd_D97_JPEG2K_32s_C1IR>, "samples"_a,
          "levels"_a = 1, "9/7 wavelet of integers; low-low is at the upper left.");
    m.def("inverse_wavelet97", &wavelet<false, qeliWTGetBufSize_D97_JPEG2K_32s_C1IR, qeliWTInv_D97_JPEG2K_32s_C1IR>,
          "coefficients"_a, "levels"_a = 1);
    m.def("encode_code_block", &encodeCodeBlock, "coefficients"_a, "band"_a = 0, "style"_a = 0,
          "Data, planes, passes, segment lengths, and of each pass the rate and the error that is taken away so far.");
    m.def("decode_code_block", &decodeCodeBlock, "data"_a, "shape"_a, "band"_a, "planes"_a, "passes"_a, "lengths"_a,
          "style"_a = 0, "Coefficients of a code-block.");
}

}

namespace py = pybind11;

PYBIND11_MODULE(_qeljx, module)
{
    module.attr("version") = qeljGetLibVersion()->version;
    qel::python::addInfoTo(module);
    qel::python::addPicturesTo(module);
    py::module_ primitives = module.def_submodule("primitives");
    qel::python::addPrimitivesTo(primitives);
}
