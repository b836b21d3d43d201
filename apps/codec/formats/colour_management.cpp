// SPDX-License-Identifier: Apache-2.0
// Conversion of colours by profiles.
#include "codec/formats/colour_management.h"

#include <lcms2.h>

#include <memory>

#include "codec/base/error.h"

namespace qel::codec {
namespace {

struct Close {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct Delete {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Profile = std::unique_ptr<void, Close>;
using Transform = std::unique_ptr<void, Delete>;

Profile openProfile(Bytes profile)
{
    return Profile(cmsOpenProfileFromMem(profile.data(), cmsUInt32Number(profile.size())));
}

template <class T> void convertPlainly(const Picture& cmyk, bool isInkInverted, Picture& rgb)
{
    uint64_t ones = (1u << cmyk.precision()) - 1;
    auto light = [&](uint64_t ink) { return isInkInverted ? ink : ones - ink; };
    for (int y = 0; y < cmyk.height(); ++y)
        for (int x = 0; x < cmyk.width(); ++x) {
            const T* in = cmyk.row<T>(y) + 4 * ptrdiff_t(x);
            T* out = rgb.row<T>(y) + 3 * ptrdiff_t(x);
            for (int c = 0; c < 3; ++c) out[c] = T((light(in[c]) * light(in[3]) + ones / 2) / ones);
        }
}

void convertByProfile(const Picture& cmyk, Bytes profile, bool isInkInverted, Picture& rgb)
{
    Profile from = openProfile(profile), to(cmsCreate_sRGBProfile());
    bool isWide = cmyk.bytesPerSample() == 2;
    cmsUInt32Number inks =
        isWide ? (isInkInverted ? TYPE_CMYK_16_REV : TYPE_CMYK_16) : (isInkInverted ? TYPE_CMYK_8_REV : TYPE_CMYK_8);
    Transform transform(from && to ? cmsCreateTransform(from.get(), inks, to.get(), isWide ? TYPE_RGB_16 : TYPE_RGB_8,
                                                        INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_BLACKPOINTCOMPENSATION)
                                   : nullptr);
    if (!transform) throw CodecError("the picture's ICC profile cannot be used");
    for (int y = 0; y < cmyk.height(); ++y)
        cmsDoTransform(transform.get(), cmyk.row(y), rgb.row(y), cmsUInt32Number(cmyk.width()));
}

}

Picture rgbOfCmyk(const Picture& picture, Bytes profile, bool isInkInverted)
{
    Picture rgb(picture.width(), picture.height(), ColourSpace::rgb, picture.precision());
    bool fillsWords = picture.precision() == 8 || picture.precision() == 16;
    if (!profile.empty() && fillsWords)
        convertByProfile(picture, profile, isInkInverted, rgb);
    else if (picture.bytesPerSample() == 1)
        convertPlainly<uint8_t>(picture, isInkInverted, rgb);
    else
        convertPlainly<uint16_t>(picture, isInkInverted, rgb);
    return rgb;
}

std::string nameOfProfile(Bytes profile)
{
    Profile opened = openProfile(profile);
    char name[256] = "";
    if (opened) cmsGetProfileInfoASCII(opened.get(), cmsInfoDescription, "en", "US", name, sizeof name);
    return name;
}

}
