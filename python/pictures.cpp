// SPDX-License-Identifier: Apache-2.0
// Pictures in and out of Python: files decoded to arrays, arrays encoded to files, through the sample codec.
#ifdef _OPENMP
#include <omp.h>
#endif

#include <algorithm>
#include <memory>

#include "arrays.h"
#include "codec/base/compare.h"
#include "codec/base/convert.h"
#include "codec/base/error.h"
#include "codec/base/file_io.h"
#include "codec/formats/picture_file.h"
#include "codec/j2k/decode/reader.h"
#include "codec/j2k/encode/writer.h"
#include "codec/j2k/metadata.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/encode/writer.h"
#include "metadata.h"
#include "pictures.h"

namespace qel::python {

using namespace codec;

const char* nameOf(ColourSpace space)
{
    return space == ColourSpace::grey ? "grey" : space == ColourSpace::rgb ? "rgb" : "cmyk";
}

namespace {

// The array takes the picture over: nothing is copied.
py::array arrayOf(Picture picture)
{
    std::vector<py::ssize_t> shape = {picture.height(), picture.width()};
    if (picture.channels() > 1) shape.push_back(picture.channels());
    py::dtype type = picture.precision() <= 8 ? py::dtype::of<uint8_t>() : py::dtype::of<uint16_t>();
    auto owner = std::make_unique<Picture>(std::move(picture));
    void* samples = owner->row(0);
    py::capsule capsule(owner.release(), [](void* held) { delete static_cast<Picture*>(held); });
    return py::array(type, shape, samples, capsule);
}

// An array as a picture. Rows that follow each other are used where they lie, others are copied.
struct Given {
    py::array array;
    Picture picture;
};

template <class T> bool areBelow(const Picture& picture, int limit)
{
    const T* samples = picture.row<T>(0);
    return std::all_of(samples, samples + picture.sizeInBytes() / sizeof(T), [&](T sample) { return sample < limit; });
}

Given pictureOf(const py::array& given, int precision)
{
    bool isWide = given.dtype().is(py::dtype::of<uint16_t>());
    require(isWide || given.dtype().is(py::dtype::of<uint8_t>()), "samples are uint8 or uint16");
    require(given.ndim() == 2 || (given.ndim() == 3 && (given.shape(2) == 3 || given.shape(2) == 4)),
            "a picture is height x width, or height x width x 3 (RGB) or 4 (CMYK)");
    if (precision == 0) precision = isWide ? 16 : 8;
    require(isWide ? precision > 8 && precision <= 16 : precision > 0 && precision <= 8, "the precision fits the type");
    py::array array = py::array::ensure(given, py::array::c_style);
    ColourSpace space = array.ndim() == 2     ? ColourSpace::grey
                        : array.shape(2) == 3 ? ColourSpace::rgb
                                              : ColourSpace::cmyk;
    require(array.shape(0) <= INT32_MAX && array.shape(1) <= INT32_MAX, "the picture is too large");
    Picture picture = Picture::over(array.data(), int(array.shape(1)), int(array.shape(0)), space, precision);
    require(precision % 8 == 0 || (isWide ? areBelow<uint16_t> : areBelow<uint8_t>)(picture, 1 << precision),
            "samples have no more bits than the precision says");
    return {std::move(array), std::move(picture)};
}

using Region = std::optional<std::tuple<uint32_t, uint32_t, uint32_t, uint32_t>>; // x, y, width, height

j2k::DecodeOptions j2kOptions(int reduce, int layers, const Region& region)
{
    require(reduce >= 0 && reduce <= 32 && layers >= 0, "reduce is 0 to 32, layers 0 or more");
    j2k::DecodeOptions options = {.reduce = reduce, .layers = layers ? layers : 65535};
    if (region) {
        auto [x, y, width, height] = *region;
        auto end = [](uint32_t from, uint32_t length) { return from + std::min(length, UINT32_MAX - from); };
        options.region = j2k::Rect{x, y, end(x, width), end(y, height)};
    }
    return options;
}

DecodedPicture decodeAny(Bytes file, int reduce, int layers, bool smooth, const Region& region)
{
    FileKind kind = kindOf(file);
    if (kind == FileKind::jpeg2000) return j2k::decode(file, j2kOptions(reduce, layers, region));
    require(reduce == 0 && layers == 0, "reduce and layers are for JPEG 2000 files");
    if (kind != FileKind::jpeg) return loadPicture(file);
    auto upsampling = smooth ? jpeg::Upsampling::triangle : jpeg::Upsampling::replicate;
    return jpeg::decode(file, {.upsampling = upsampling});
}

// Arrays of four channels are CMYK.
DecodedPicture decodeColours(Bytes file, int reduce, int layers, bool smooth, const Region& region)
{
    DecodedPicture decoded = decodeAny(file, reduce, layers, smooth, region);
    if (!isOpaque(decoded.picture)) decoded.warnings.push_back("the alpha channel is left out");
    if (decoded.picture.hasAlpha()) decoded.picture = withoutAlpha(decoded.picture);
    return decoded;
}

// Part of the array of a file that is decoded whole.
py::array partOf(const py::array& array, const Region& region)
{
    auto [x, y, width, height] = *region;
    require(width > 0 && height > 0 && x < size_t(array.shape(1)) && y < size_t(array.shape(0)),
            "the region is empty or outside the picture");
    py::slice rows(y, std::min<py::ssize_t>(py::ssize_t(y) + height, array.shape(0)), 1);
    py::slice columns(x, std::min<py::ssize_t>(py::ssize_t(x) + width, array.shape(1)), 1);
    return py::array(array[py::make_tuple(rows, columns)]).attr("copy")();
}

py::tuple decode(const py::object& given, int reduce, int layers, bool smooth, const Region& region)
{
    Source source(given);
    DecodedPicture loaded = unlocked([&] { return decodeColours(source.bytes(), reduce, layers, smooth, region); });
    py::str colour = nameOf(loaded.picture.space());
    int precision = loaded.picture.precision();
    py::array array = arrayOf(std::move(loaded.picture));
    if (region && kindOf(source.bytes()) != FileKind::jpeg2000) array = partOf(array, region);
    return py::make_tuple(array, colour, precision, loaded.warnings, loaded.isDamaged, tupleOf(loaded.metadata));
}

// Samples as an array of the smallest type that holds them.
template <class T, class Values> py::array planeOf(const Values& samples, int width, int height)
{
    py::array_t<T> array({height, width});
    std::copy(samples.begin(), samples.end(), array.mutable_data());
    return array;
}

py::array planeOf(const PgxPicture& samples)
{
    if (samples.isSigned || samples.precision > 16)
        return planeOf<int32_t>(samples.samples, samples.width, samples.height);
    if (samples.precision > 8) return planeOf<uint16_t>(samples.samples, samples.width, samples.height);
    return planeOf<uint8_t>(samples.samples, samples.width, samples.height);
}

py::tuple decodeJ2kPlanes(Bytes file, const j2k::DecodeOptions& options)
{
    j2k::DecodedPlanes decoded = unlocked([&] { return j2k::decodePlanes(file, options); });
    py::list planes;
    int precision = 0;
    for (const PgxPicture& plane : decoded.planes) {
        planes.append(planeOf(plane));
        precision = std::max(precision, plane.precision);
    }
    return py::make_tuple(planes, "components", precision, decoded.warnings, !decoded.warnings.empty(),
                          tupleOf(metadataIn(file)));
}

// Components as they are coded: neither up-sampled nor of another colour space.
py::tuple decodePlanes(const py::object& given, int reduce, int layers, const Region& region)
{
    Source source(given);
    FileKind kind = kindOf(source.bytes());
    if (kind == FileKind::jpeg2000) return decodeJ2kPlanes(source.bytes(), j2kOptions(reduce, layers, region));
    require(kind == FileKind::jpeg && reduce == 0 && layers == 0 && !region,
            "planes are of JPEG and JPEG 2000 files, regions of them of JPEG 2000 files");
    jpeg::DecodedPlanes decoded = unlocked([&] { return jpeg::decodePlanes(source.bytes()); });
    py::list planes;
    for (const jpeg::SamplePlane& plane : decoded.planes)
        planes.append(planeOf<uint8_t>(plane.samples, plane.width, plane.height));
    return py::make_tuple(planes, py::str(jpeg::nameOf(decoded.info.colour)).attr("lower")(), decoded.info.precision,
                          decoded.warnings, !decoded.warnings.empty(), tupleOf(metadataIn(source.bytes())));
}

jpeg::Samplings samplingNamed(const std::string& name)
{
    if (name == "444") return jpeg::kSampling444;
    if (name == "422") return jpeg::kSampling422;
    if (name == "440") return jpeg::kSampling440;
    require(name == "420", "the sampling is 444, 422, 440 or 420");
    return jpeg::kSampling420;
}

// The file, and what is not kept of the metadata.
py::tuple encodeToJpeg(const py::array& array, int quality, const std::string& sampling, bool optimize,
                       bool progressive, int restart, bool lossless, int predictor, int precision,
                       const py::object& metadata)
{
    Given given = pictureOf(array, precision);
    jpeg::EncodeOptions options = {.quality = quality,
                                   .optimiseTables = optimize,
                                   .progressive = progressive,
                                   .restartInterval = restart,
                                   .lossless = lossless,
                                   .predictor = predictor};
    if (!lossless && given.picture.space() != ColourSpace::grey) options.sampling = samplingNamed(sampling);
    Fitted kept = fitted(metadata, jpeg::roomFor(options, given.picture.space()), given.picture.space());
    options.metadata = std::move(kept.metadata);
    return py::make_tuple(bytesOf(unlocked([&] { return jpeg::encode(given.picture, options); })), kept.warnings);
}

py::tuple encodeToJ2k(const py::array& array, std::optional<int> quality, std::optional<double> rate,
                      std::optional<double> psnr, bool lossless, int layers,
                      std::optional<std::pair<uint32_t, uint32_t>> tile, bool isJp2, int precision,
                      const py::object& metadata)
{
    require(lossless + quality.has_value() + rate.has_value() + psnr.has_value() <= 1,
            "quality, rate, psnr and lossless exclude each other");
    Given given = pictureOf(array, precision);
    j2k::EncodeOptions options = {.isLossless = lossless,
                                  .bitsPerPixel = rate,
                                  .psnr = psnr,
                                  .quality = quality.value_or(90),
                                  .tile = tile,
                                  .layers = layers,
                                  .isJp2 = isJp2};
    Fitted kept = fitted(metadata, isJp2 ? j2k::kMetadataRoom : j2k::kCodestreamRoom, given.picture.space());
    options.metadata = std::move(kept.metadata);
    return py::make_tuple(bytesOf(unlocked([&] { return j2k::encode(given.picture, options); })), kept.warnings);
}

py::tuple comparison(const py::array& a, const py::array& b, int precision)
{
    Given first = pictureOf(a, precision), second = pictureOf(b, precision);
    Comparison comparison = unlocked([&] { return compare(first.picture, second.picture); });
    auto told = [&](const Difference& difference) {
        return py::make_tuple(difference.psnr(first.picture.precision()), difference.meanSquaredError,
                              difference.largestError);
    };
    py::list channels;
    for (const Difference& channel : comparison.channels) channels.append(told(channel));
    return told(comparison.whole) + py::make_tuple(channels);
}

void setThreads(int threads)
{
    require(threads > 0, "at least one thread");
#ifdef _OPENMP
    omp_set_num_threads(threads);
#endif
}

// CodecError as qeljx.Error, with the position in the file.
void addErrorTo(py::module_& module)
{
    static py::handle error = py::exception<CodecError>(module, "Error", PyExc_ValueError).release();
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown) std::rethrow_exception(thrown);
        } catch (const CodecError& caught) {
            py::object made = error(caught.what());
            made.attr("position") = caught.position();
            PyErr_SetObject(error.ptr(), made.ptr());
        }
    });
}

// A JPEG 2000 file of square tiles, made of one row of them after the other.
class TileRows {
public:
    TileRows(int width, int height, int channels, int precision, uint32_t tile, std::optional<int> quality,
             bool lossless, bool isJp2, const py::object& metadata)
    {
        require(channels == 1 || channels == 3 || channels == 4, "a picture has 1, 3 or 4 channels");
        ColourSpace space = channels == 1 ? ColourSpace::grey : channels == 3 ? ColourSpace::rgb : ColourSpace::cmyk;
        Fitted kept = fitted(metadata, isJp2 ? j2k::kMetadataRoom : j2k::kCodestreamRoom, space);
        leftOut_ = kept.warnings;
        j2k::EncodeOptions options = {
            .isLossless = lossless, .quality = quality.value_or(90), .tile = {{tile, tile}}, .isJp2 = isJp2};
        options.metadata = std::move(kept.metadata);
        rows_.emplace(PictureForm(width, height, space, precision), options);
        precision_ = precision;
    }

    py::bytes encode(uint32_t row, const py::array& part) const
    {
        require(row < rows_->count(), "there is no such row");
        Given given = pictureOf(part, precision_);
        return bytesOf(unlocked([&] { return rows_->encode(row, given.picture); }));
    }
    py::bytes header(uint64_t bytes) const { return bytesOf(rows_->header(bytes)); }
    static py::bytes end() { return bytesOf(j2k::TileRows::end()); }
    const Warnings& leftOut() const { return leftOut_; }

private:
    std::optional<j2k::TileRows> rows_;
    int precision_ = 0;
    Warnings leftOut_;
};

void addTileRowsTo(py::module_& module)
{
    py::class_<TileRows>(module, "TileRows")
        .def(py::init<int, int, int, int, uint32_t, std::optional<int>, bool, bool, const py::object&>())
        .def("encode", &TileRows::encode)
        .def("header", &TileRows::header)
        .def_static("end", &TileRows::end)
        .def_property_readonly("left_out", &TileRows::leftOut);
}

}

void addPicturesTo(py::module_& module)
{
    addErrorTo(module);
    module.def("decode", &decode, py::arg("source"), py::arg("reduce"), py::arg("layers"), py::arg("smooth"),
               py::arg("region"));
    module.def("decode_planes", &decodePlanes, py::arg("source"), py::arg("reduce"), py::arg("layers"),
               py::arg("region"));
    module.def("encode_jpeg", &encodeToJpeg);
    module.def("encode_j2k", &encodeToJ2k);
    module.def("compare", &comparison);
    addTileRowsTo(module);
    module.def("set_threads", &setThreads, py::arg("threads"),
               "Threads that the calls of this thread may use; as many as there are processors by default.");
}

}
