// SPDX-License-Identifier: Apache-2.0
#include "openjpeg_coefficients.h"

#include <algorithm>
#include <utility>

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
    OpenJpegPicture::Image image(opj_image_create(1, &component, OPJ_CLRSPC_GRAY));
    require(image != nullptr, "OpenJPEG makes no image");
    image->x1 = component.w, image->y1 = component.h;
    std::copy(coefficients_.values.begin(), coefficients_.values.end(), image->comps[0].data);
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.numresolution = parameters.tcp_numlayers = parameters.cp_disto_alloc = 1;
    parameters.cblockw_init = parameters.cblockh_init = blockSize_;
    parameters.mode = style_;
    OpenJpegPicture::encode(std::move(image), parameters, file_);
}

std::vector<int32_t> OpenJpegCoefficients::decode()
{
    OpenJpegPicture::Image image = OpenJpegPicture::decode(file_);
    const opj_image_comp_t& component = image->comps[0];
    return {component.data, component.data + coefficients_.values.size()};
}

}
