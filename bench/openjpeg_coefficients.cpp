#include "openjpeg_coefficients.h"

#include <algorithm>

namespace qel::bench {

OpenJpegCoefficients::OpenJpegCoefficients(const Coefficients& coefficients, int blockSize, int style)
    : coefficients_(coefficients), blockSize_(blockSize), style_(style)
{
    encode();
}

void OpenJpegCoefficients::encode()
{
    opj_image_cmptparm_t component = {};
    component.dx = component.dy = 1;
    component.w = OPJ_UINT32(coefficients_.width), component.h = OPJ_UINT32(coefficients_.height);
    component.prec = 12;
    component.sgnd = 1;
    // Encoding consumes the image.
    OpenJpegPicture::Image image(opj_image_create(1, &component, OPJ_CLRSPC_GRAY));
    require(image != nullptr, "OpenJPEG makes no image");
    image->x1 = component.w, image->y1 = component.h;
    std::copy(coefficients_.values.begin(), coefficients_.values.end(), image->comps[0].data);
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.numresolution = parameters.tcp_numlayers = parameters.cp_disto_alloc = 1;
    parameters.cblockw_init = parameters.cblockh_init = blockSize_;
    parameters.mode = style_;
    OpenJpegPicture::Codec codec(opj_create_compress(OPJ_CODEC_J2K));
    auto out = OpenJpegPicture::stream(file_, false);
    require(opj_setup_encoder(codec.get(), &parameters, image.get()) &&
                opj_start_compress(codec.get(), image.get(), out.get()) && opj_encode(codec.get(), out.get()) &&
                opj_end_compress(codec.get(), out.get()),
            "OpenJPEG does not encode");
}

std::vector<int32_t> OpenJpegCoefficients::decode()
{
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    OpenJpegPicture::Codec codec(opj_create_decompress(OPJ_CODEC_J2K));
    auto in = OpenJpegPicture::stream(file_, true);
    opj_image_t* read = nullptr;
    bool good = opj_setup_decoder(codec.get(), &parameters) && opj_read_header(in.get(), codec.get(), &read);
    OpenJpegPicture::Image image(read);
    require(good && opj_decode(codec.get(), in.get(), read), "OpenJPEG does not decode");
    return {read->comps[0].data, read->comps[0].data + coefficients_.values.size()};
}

}
