// SPDX-License-Identifier: Apache-2.0
#include "openjpeg_peer.h"

#include <string.h>

#include <algorithm>
#include <utility>

namespace qel::bench {

OpenJpegPicture::OpenJpegPicture(int width, int height, OpenJpegCoding coding)
    : width_(width), height_(height), coding_(coding)
{
    encode();
}

OpenJpegPicture::Image OpenJpegPicture::makeImage(int width, int height, int components)
{
    opj_image_cmptparm_t component = {};
    component.dx = component.dy = 1;
    component.w = OPJ_UINT32(width), component.h = OPJ_UINT32(height);
    component.prec = 8;
    std::vector<opj_image_cmptparm_t> all(size_t(components), component);
    Image image(
        opj_image_create(OPJ_UINT32(components), all.data(), components == 1 ? OPJ_CLRSPC_GRAY : OPJ_CLRSPC_SRGB));
    require(image != nullptr, "OpenJPEG makes no image");
    image->x1 = component.w, image->y1 = component.h;
    return image;
}

OpenJpegPicture::Image OpenJpegPicture::imageOf(const codec::Picture& picture)
{
    Image image = makeImage(picture.width(), picture.height(), 3);
    for (size_t i = 0; i < picture.sizeInBytes(); ++i) image->comps[i % 3].data[i / 3] = picture.row(0)[i];
    return image;
}

OpenJpegPicture::Stream OpenJpegPicture::stream(File& file, bool input)
{
    file.position = 0;
    Stream stream(opj_stream_create(1 << 16, input));
    opj_stream_set_user_data(stream.get(), &file, nullptr);
    opj_stream_set_user_data_length(stream.get(), file.bytes.size());
    opj_stream_set_read_function(stream.get(), [](void* to, OPJ_SIZE_T count, void* user) {
        auto& f = *static_cast<File*>(user);
        size_t left = std::min(count, f.bytes.size() - f.position);
        memcpy(to, f.bytes.data() + f.position, left);
        f.position += left;
        return left > 0 ? left : OPJ_SIZE_T(-1);
    });
    opj_stream_set_write_function(stream.get(), [](void* from, OPJ_SIZE_T count, void* user) {
        auto& f = *static_cast<File*>(user);
        f.bytes.resize(std::max(f.bytes.size(), f.position + count));
        memcpy(f.bytes.data() + f.position, from, count);
        f.position += count;
        return count;
    });
    opj_stream_set_skip_function(stream.get(), [](OPJ_OFF_T count, void* user) {
        static_cast<File*>(user)->position += size_t(count);
        return count;
    });
    opj_stream_set_seek_function(stream.get(), [](OPJ_OFF_T to, void* user) {
        static_cast<File*>(user)->position = size_t(to);
        return OPJ_BOOL(OPJ_TRUE);
    });
    return stream;
}

void OpenJpegPicture::encode(Image image, opj_cparameters_t parameters, File& file, int threads)
{
    Codec codec(opj_create_compress(OPJ_CODEC_J2K));
    file.bytes.clear();
    Stream out = stream(file, false);
    require(opj_setup_encoder(codec.get(), &parameters, image.get()) &&
                (threads == 0 || opj_codec_set_threads(codec.get(), threads)) &&
                opj_start_compress(codec.get(), image.get(), out.get()) && opj_encode(codec.get(), out.get()) &&
                opj_end_compress(codec.get(), out.get()),
            "OpenJPEG does not encode");
}

OpenJpegPicture::Image OpenJpegPicture::decode(File& file, int threads)
{
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    Codec codec(opj_create_decompress(OPJ_CODEC_J2K));
    Stream in = stream(file, true);
    opj_image_t* read = nullptr;
    bool isGood = opj_setup_decoder(codec.get(), &parameters) &&
                  (threads == 0 || opj_codec_set_threads(codec.get(), threads)) &&
                  opj_read_header(in.get(), codec.get(), &read);
    Image image(read);
    require(isGood && opj_decode(codec.get(), in.get(), read), "OpenJPEG does not decode");
    return image;
}

void OpenJpegPicture::encode()
{
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.numresolution = coding_.resolutions;
    parameters.irreversible = coding_.irreversible;
    parameters.tcp_mct = coding_.componentTransform;
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    Image image = makeImage(width_, height_, coding_.components);
    for (int i = 0; i < coding_.components; ++i)
        std::fill_n(image->comps[i].data, size_t(width_) * size_t(height_), 128);
    encode(std::move(image), parameters, file_);
}

void OpenJpegPicture::decode() { decode(file_); }

Contestant openJpegDifference(int width, int height, OpenJpegCoding coding, OpenJpegCoding without, bool decode)
{
    auto run = [=](OpenJpegCoding chosen) -> std::function<void()> {
        auto picture = std::make_shared<OpenJpegPicture>(width, height, chosen);
        return [=] { decode ? picture->decode() : picture->encode(); };
    };
    return {"OpenJPEG", run(coding), run(without)};
}

}
