#include "openjpeg_peer.h"

#include <string.h>

#include <algorithm>

namespace qel::bench {

OpenJpegPicture::OpenJpegPicture(int width, int height, OpenJpegCoding coding)
    : width_(width), height_(height), coding_(coding)
{
    encode();
}

OpenJpegPicture::Image OpenJpegPicture::makeImage() const
{
    opj_image_cmptparm_t component = {};
    component.dx = component.dy = 1;
    component.w = OPJ_UINT32(width_), component.h = OPJ_UINT32(height_);
    component.prec = 8;
    std::vector<opj_image_cmptparm_t> components(size_t(coding_.components), component);
    Image image(opj_image_create(OPJ_UINT32(components.size()), components.data(),
                                 coding_.components == 1 ? OPJ_CLRSPC_GRAY : OPJ_CLRSPC_SRGB));
    require(image != nullptr, "OpenJPEG makes no image");
    image->x1 = component.w, image->y1 = component.h;
    for (int i = 0; i < coding_.components; ++i)
        std::fill_n(image->comps[i].data, size_t(width_) * size_t(height_), 128);
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

void OpenJpegPicture::encode()
{
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.numresolution = coding_.resolutions;
    parameters.irreversible = coding_.irreversible;
    parameters.tcp_mct = coding_.componentTransform;
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    // Encoding consumes the image.
    Image image = makeImage();
    Codec codec(opj_create_compress(OPJ_CODEC_J2K));
    auto out = stream(file_, false);
    require(opj_setup_encoder(codec.get(), &parameters, image.get()) &&
                opj_start_compress(codec.get(), image.get(), out.get()) && opj_encode(codec.get(), out.get()) &&
                opj_end_compress(codec.get(), out.get()),
            "OpenJPEG does not encode");
}

void OpenJpegPicture::decode()
{
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    Codec codec(opj_create_decompress(OPJ_CODEC_J2K));
    auto in = stream(file_, true);
    opj_image_t* read = nullptr;
    bool good = opj_setup_decoder(codec.get(), &parameters) && opj_read_header(in.get(), codec.get(), &read);
    Image image(read);
    require(good && opj_decode(codec.get(), in.get(), read), "OpenJPEG does not decode");
}

Contestant openJpegDifference(int width, int height, OpenJpegCoding coding, OpenJpegCoding without, bool decode)
{
    auto run = [=](OpenJpegCoding chosen) -> std::function<void()> {
        auto picture = std::make_shared<OpenJpegPicture>(width, height, chosen);
        return [=] { decode ? picture->decode() : picture->encode(); };
    };
    return {"OpenJPEG", run(coding), run(without)};
}

}
