// SPDX-License-Identifier: Apache-2.0
// OpenJPEG behind a function to memory; its errors become exceptions.
#include "openjpeg_peer.h"

#include <openjpeg.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <tuple>

#include "codec/base/file_io.h"
#include "pictures.h"
#include "random.h"

namespace qel::test {

namespace {

using namespace qel::codec;

template <auto Free> struct Freed {
    void operator()(auto* object) const { Free(object); }
};
using Codec = std::unique_ptr<opj_codec_t, Freed<opj_destroy_codec>>;
using Image = std::unique_ptr<opj_image_t, Freed<opj_image_destroy>>;
using Stream = std::unique_ptr<opj_stream_t, Freed<opj_stream_destroy>>;

// A file in memory that has a name.
class MemoryFile {
public:
    explicit MemoryFile(Bytes bytes = {}) : descriptor_(memfd_create("peer", 0))
    {
        if (write(descriptor_, bytes.data(), bytes.size()) != ssize_t(bytes.size())) throw std::bad_alloc();
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(descriptor_); }
    std::string name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
    int descriptor_;
};

using Components = std::vector<opj_image_cmptparm_t>;

// An image over an area, whose component c has at(c, x, y) as samples.
template <class At> Image makeImage(const j2k::Rect& area, Components components, int precision, At at)
{
    for (opj_image_cmptparm_t& component : components) {
        j2k::Rect rect = j2k::subsampled(area, component.dx, component.dy);
        component.w = rect.width();
        component.h = rect.height();
        component.prec = uint32_t(precision);
    }
    Image image(opj_image_create(uint32_t(components.size()), components.data(), OPJ_CLRSPC_UNSPECIFIED));
    std::tie(image->x0, image->y0, image->x1, image->y1) = std::tie(area.x0, area.y0, area.x1, area.y1);
    for (size_t c = 0; c < components.size(); ++c)
        for (uint32_t i = 0; i < components[c].w * components[c].h; ++i)
            image->comps[c].data[i] = at(c, i % components[c].w, i / components[c].w);
    return image;
}

Image makeImage(const Picture& picture)
{
    Components components(size_t(picture.channels()));
    for (auto& component : components) component.dx = component.dy = 1;
    return makeImage({0, 0, uint32_t(picture.width()), uint32_t(picture.height())}, components, picture.precision(),
                     [&](size_t c, uint32_t x, uint32_t y) -> int {
                         return sampleAt(picture, (size_t(y) * size_t(picture.width()) + x) * components.size() + c);
                     });
}

Image makeImage(const OpenJpegCase& options)
{
    Components components(size_t(options.components));
    for (size_t c = 0; c < components.size(); ++c) {
        components[c].dx = c == 0 ? 1 : uint32_t(options.chromaDx);
        components[c].dy = c == 0 ? 1 : uint32_t(options.chromaDy);
    }
    const j2k::Rect area = {uint32_t(options.x0), uint32_t(options.y0), uint32_t(options.x0 + options.width),
                            uint32_t(options.y0 + options.height)};
    Random random(unsigned(options.width));
    const int largest = (1 << options.precision) - 1;
    return makeImage(area, components, options.precision, [&](size_t c, uint32_t x, uint32_t y) {
        double wave = std::sin(x * 0.07 + double(c)) + std::cos(y * 0.11);
        int value = int(largest * (0.5 + 0.2 * wave)) + (x / 16 % 2 ? random.between(-20, 20) : 0);
        return std::clamp(value, 0, largest);
    });
}

opj_cparameters_t parametersOf(const OpenJpegCase& options)
{
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.cp_disto_alloc = 1;
    parameters.tcp_numlayers = options.layers;
    for (int l = 0; l < options.layers; ++l)
        parameters.tcp_rates[l] = l + 1 < options.layers ? 60.f / float(1 << l) : options.ratio;
    parameters.numresolution = options.levels + 1;
    parameters.cblockw_init = options.blockWidth;
    parameters.cblockh_init = options.blockHeight;
    parameters.mode = options.style;
    parameters.irreversible = !options.isReversible;
    parameters.tcp_mct = options.transformsComponents;
    parameters.prog_order = OPJ_PROG_ORDER(options.order);
    parameters.csty = (options.hasSop ? 2 : 0) | (options.hasEph ? 4 : 0) | (options.precincts.empty() ? 0 : 1);
    parameters.res_spec = int(options.precincts.size());
    for (size_t i = 0; i < options.precincts.size(); ++i)
        std::tie(parameters.prcw_init[i], parameters.prch_init[i]) = options.precincts[i];
    if (options.tileWidth) {
        parameters.tile_size_on = OPJ_TRUE;
        parameters.cp_tdx = options.tileWidth;
        parameters.cp_tdy = options.tileHeight;
        parameters.cp_tx0 = options.tx0;
        parameters.cp_ty0 = options.ty0;
    }
    if (options.roiShift) {
        parameters.roi_compno = 0;
        parameters.roi_shift = options.roiShift;
    }
    parameters.numpocs = uint32_t(options.changes.size());
    for (size_t i = 0; i < options.changes.size(); ++i) {
        auto& [firstResolution, endResolution, firstComponent, endComponent, endLayer, order] = options.changes[i];
        opj_poc_t& change = parameters.POC[i];
        change.tile = 1;
        change.resno0 = firstResolution, change.resno1 = endResolution;
        change.compno0 = firstComponent, change.compno1 = endComponent;
        change.layno1 = endLayer;
        change.prg1 = OPJ_PROG_ORDER(order);
    }
    parameters.tp_on = options.tileParts != 0;
    parameters.tp_flag = options.tileParts;
    return parameters;
}

void check(bool isGood)
{
    if (!isGood) throw std::runtime_error("the peer refuses");
}

std::vector<uint8_t> encode(const OpenJpegCase& options, Image image)
{
    opj_cparameters_t parameters = parametersOf(options);
    Codec codec(opj_create_compress(options.isJp2 ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
    MemoryFile file;
    Stream stream(opj_stream_create_default_file_stream(file.name().c_str(), OPJ_FALSE));
    check(opj_setup_encoder(codec.get(), &parameters, image.get()));
    check(opj_start_compress(codec.get(), image.get(), stream.get()));
    check(opj_encode(codec.get(), stream.get()));
    check(opj_end_compress(codec.get(), stream.get()));
    stream.reset();
    return readFile(file.name());
}

Image decode(Bytes bytes, int reduce, int layers)
{
    MemoryFile file(bytes);
    Stream stream(opj_stream_create_default_file_stream(file.name().c_str(), OPJ_TRUE));
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    parameters.cp_reduce = OPJ_UINT32(reduce);
    parameters.cp_layer = OPJ_UINT32(layers);
    Codec codec(opj_create_decompress(bytes[0] == 0xFF ? OPJ_CODEC_J2K : OPJ_CODEC_JP2));
    // What it warns of is an error here.
    bool isSound = true;
    auto note = [](const char*, void* sound) { *static_cast<bool*>(sound) = false; };
    opj_set_warning_handler(codec.get(), note, &isSound);
    opj_image_t* read = nullptr;
    check(opj_setup_decoder(codec.get(), &parameters) && opj_read_header(stream.get(), codec.get(), &read));
    Image image(read);
    check(opj_decode(codec.get(), stream.get(), read) && opj_end_decompress(codec.get(), stream.get()) && isSound);
    return image;
}

}

std::vector<uint8_t> openJpegEncode(const OpenJpegCase& options) { return encode(options, makeImage(options)); }

std::vector<uint8_t> openJpegEncode(const OpenJpegCase& options, const Picture& picture)
{
    return encode(options, makeImage(picture));
}

Picture openJpegDecode(Bytes bytes, int layers)
{
    Image image = decode(bytes, 0, layers);
    auto space = image->numcomps == 1 ? ColourSpace::grey : image->numcomps == 3 ? ColourSpace::rgb : ColourSpace::cmyk;
    Picture picture(int(image->comps[0].w), int(image->comps[0].h), space, int(image->comps[0].prec));
    for (size_t i = 0; i < picture.sizeInBytes() / size_t(picture.bytesPerSample()); ++i)
        setSample(picture, i, image->comps[i % image->numcomps].data[i / image->numcomps]);
    return picture;
}

std::vector<PgxPicture> openJpegComponents(Bytes bytes, int reduce, int layers)
{
    Image image = decode(bytes, reduce, layers);
    std::vector<PgxPicture> components;
    for (size_t c = 0; c < image->numcomps; ++c) {
        const opj_image_comp_t& comp = image->comps[c];
        components.push_back({int(comp.w), int(comp.h), int(comp.prec), comp.sgnd != 0, {}});
        components.back().samples.assign(comp.data, comp.data + size_t(comp.w) * comp.h);
    }
    return components;
}

}
