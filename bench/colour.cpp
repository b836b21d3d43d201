// SPDX-License-Identifier: Apache-2.0
// Colour conversion of planes, beside libjpeg-turbo and libyuv where they have the same conversion.
#include "jpeg/colour/colour.h"

#include <turbojpeg.h>

#include <libyuv.h>

#include "cases.h"
#include "operations.h"
#include "qeljx/jpeg_colour.h"

namespace qel::bench {
namespace {

// Bytes in planes, interleaved bytes, and packed pixels of 16 bits.
constexpr Layout planar(int planes) { return {planes, 1, 1}; }
constexpr Layout interleaved(int channels) { return {1, channels, 1}; }
constexpr Layout kPacked = {1, 1, 2};

// A codec object of libjpeg-turbo's, kept from call to call.
std::shared_ptr<void> turbo(tjhandle handle)
{
    require(handle, "libjpeg-turbo has no memory");
    return {handle, tjDestroy};
}

Peer turboEncode(int pixelFormat, int sampling, int tolerance)
{
    auto run = [=, handle = turbo(tjInitCompress())](const Pictures& p) {
        int steps[3] = {p.dst->step(), p.dst->step(), p.dst->step()};
        int bad = tjEncodeYUVPlanes(handle.get(), (*p.src)[0], p.roi.width, p.src->step(), p.roi.height, pixelFormat,
                                    (uint8_t**)p.dst->pointers(), steps, sampling, TJFLAG_ACCURATEDCT);
        require(!bad, "tjEncodeYUVPlanes failed");
    };
    return {"libjpeg-turbo", run, tolerance};
}

Peer turboDecode(int pixelFormat, int tolerance)
{
    auto run = [=, handle = turbo(tjInitDecompress())](const Pictures& p) {
        int steps[3] = {p.src->step(), p.src->step(), p.src->step()};
        int bad = tjDecodeYUVPlanes(handle.get(), (const uint8_t**)p.src->pointers(), steps, TJSAMP_444, (*p.dst)[0],
                                    p.roi.width, p.dst->step(), p.roi.height, pixelFormat, 0);
        require(!bad, "tjDecodeYUVPlanes failed");
    };
    return {"libjpeg-turbo", run, tolerance};
}

// libyuv's functions from three planes of one step. Its orders are named from the last byte to the first: RGB24 is
// B, G, R in memory. Exchanging the chroma planes (with the mirrored constants) exchanges red and blue.
using YuvToPixels = int (*)(const uint8_t*, int, const uint8_t*, int, const uint8_t*, int, uint8_t*, int,
                            const libyuv::YuvConstants*, int, int);

Peer yuvDecode(YuvToPixels f, bool bgr, int tolerance)
{
    auto run = [=](const Pictures& p) {
        auto& s = *p.src;
        auto constants = bgr ? &libyuv::kYuvJPEGConstants : &libyuv::kYvuJPEGConstants;
        f(s[0], s.step(), s[bgr ? 1 : 2], s.step(), s[bgr ? 2 : 1], s.step(), (*p.dst)[0], p.dst->step(), constants,
          p.roi.width, p.roi.height);
    };
    return {"libyuv", run, tolerance};
}

// libyuv has no packed pixels with full chroma: those with chroma of half the width (to 565) or half the width and
// height (the others, also with other constants) come closest. They move less, which favours the peer.
Peer yuvDecode555()
{
    auto run = [](const Pictures& p) {
        auto& s = *p.src;
        libyuv::I420ToARGB1555(s[0], s.step(), s[1], s.step(), s[2], s.step(), (*p.dst)[0], p.dst->step(), p.roi.width,
                               p.roi.height);
    };
    return {"libyuv", run};
}

Peer yuvEncodePacked(int (*f)(const uint8_t*, int, uint8_t*, int, uint8_t*, int, uint8_t*, int, int, int))
{
    auto run = [=](const Pictures& p) {
        auto& d = *p.dst;
        f((*p.src)[0], p.src->step(), d[0], d.step(), d[1], d.step(), d[2], d.step(), p.roi.width, p.roi.height);
    };
    return {"libyuv", run};
}

Peer yuvToGrey(int (*f)(const uint8_t*, int, uint8_t*, int, int, int), int tolerance)
{
    auto run = [=](const Pictures& p) {
        f((*p.src)[0], p.src->step(), (*p.dst)[0], p.dst->step(), p.roi.width, p.roi.height);
    };
    return {"libyuv", run, tolerance};
}

// The library's own conversion of three channels on as many pixels: what the fourth channel costs.
Peer ownRgb(bool decode)
{
    struct Own {
        Operation operation;
        Pictures pictures = {};
    };
    auto own = std::make_shared<Own>(
        Own{decode ? Operation{"", planar(3), interleaved(3), call(qeliYCbCrToRGB_JPEG_8u_P3C3R)}
                   : Operation{"", interleaved(3), planar(3), call(qeliRGBToYCbCr_JPEG_8u_C3P3R)}});
    auto run = [own](const Pictures& p) {
        auto& o = *own;
        if (o.pictures.roi.width != p.roi.width || o.pictures.roi.height != p.roi.height)
            o.pictures = {std::make_shared<Planes>(o.operation.src, p.roi.width, p.roi.height, false),
                          std::make_shared<Planes>(o.operation.dst, p.roi.width, p.roi.height, false), p.roi};
        o.operation.work(o.pictures);
    };
    return {"own RGB", run};
}

std::vector<Operation> serial()
{
    constexpr Layout p3 = planar(3);
    return {
        {"YCbCrToRGB555", p3, kPacked, call(qeliYCbCrToRGB555_JPEG_8u16u_P3C3R), buildsOf(&ColourKernels::yccToRgb555)},
        {"YCbCrToBGR555",
         p3,
         kPacked,
         call(qeliYCbCrToBGR555_JPEG_8u16u_P3C3R),
         buildsOf(&ColourKernels::yccToBgr555),
         {yuvDecode555()}},
        {"YCbCrToRGB565", p3, kPacked, call(qeliYCbCrToRGB565_JPEG_8u16u_P3C3R), buildsOf(&ColourKernels::yccToRgb565)},
        {"YCbCrToBGR565",
         p3,
         kPacked,
         call(qeliYCbCrToBGR565_JPEG_8u16u_P3C3R),
         buildsOf(&ColourKernels::yccToBgr565),
         {yuvDecode(libyuv::I422ToRGB565Matrix, true, -1)}},
        {"RGB555ToYCbCr", kPacked, p3, call(qeliRGB555ToYCbCr_JPEG_16u8u_C3P3R), buildsOf(&ColourKernels::rgb555ToYcc)},
        {"BGR555ToYCbCr",
         kPacked,
         p3,
         call(qeliBGR555ToYCbCr_JPEG_16u8u_C3P3R),
         buildsOf(&ColourKernels::bgr555ToYcc),
         {yuvEncodePacked(libyuv::ARGB1555ToI420)}},
        {"RGB565ToYCbCr", kPacked, p3, call(qeliRGB565ToYCbCr_JPEG_16u8u_C3P3R), buildsOf(&ColourKernels::rgb565ToYcc)},
        {"BGR565ToYCbCr",
         kPacked,
         p3,
         call(qeliBGR565ToYCbCr_JPEG_16u8u_C3P3R),
         buildsOf(&ColourKernels::bgr565ToYcc),
         {yuvEncodePacked(libyuv::RGB565ToI420)}},
    };
}

}

std::vector<Operation> parallelColour()
{
    constexpr Layout p3 = planar(3), p4 = planar(4), c3 = interleaved(3), c4 = interleaved(4), c1 = planar(1);
    return {
        {"YCbCrToRGB_P3C3",
         p3,
         c3,
         call(qeliYCbCrToRGB_JPEG_8u_P3C3R),
         buildsOf(&ColourKernels::yccToRgb),
         {turboDecode(TJPF_RGB, 2), yuvDecode(libyuv::I444ToRGB24Matrix, false, 4)}},
        {"YCbCrToBGR_P3C3",
         p3,
         c3,
         call(qeliYCbCrToBGR_JPEG_8u_P3C3R),
         buildsOf(&ColourKernels::yccToBgr),
         {turboDecode(TJPF_BGR, 2), yuvDecode(libyuv::I444ToRGB24Matrix, true, 4)}},
        {"YCbCrToRGB_P3", p3, p3, call(qeliYCbCrToRGB_JPEG_8u_P3R), buildsOf(&ColourKernels::yccToRgbPlanes)},
        {"YCCKToCMYK_P4",
         p4,
         p4,
         call(qeliYCCKToCMYK_JPEG_8u_P4R),
         buildsOf(&ColourKernels::ycckToCmykPlanes),
         {ownRgb(true)}},
        {"YCCKToCMYK_P4C4",
         p4,
         c4,
         call(qeliYCCKToCMYK_JPEG_8u_P4C4R),
         buildsOf(&ColourKernels::ycckToCmyk),
         {ownRgb(true)}},
        {"RGBToYCbCr_P3", p3, p3, call(qeliRGBToYCbCr_JPEG_8u_P3R), buildsOf(&ColourKernels::rgbPlanesToYcc)},
        {"RGBToYCbCr_C3P3",
         c3,
         p3,
         call(qeliRGBToYCbCr_JPEG_8u_C3P3R),
         buildsOf(&ColourKernels::rgbToYcc),
         {turboEncode(TJPF_RGB, TJSAMP_444, 2)}},
        {"BGRToYCbCr_C3P3",
         c3,
         p3,
         call(qeliBGRToYCbCr_JPEG_8u_C3P3R),
         buildsOf(&ColourKernels::bgrToYcc),
         {turboEncode(TJPF_BGR, TJSAMP_444, 2)}},
        {"CMYKToYCCK_P4",
         p4,
         p4,
         call(qeliCMYKToYCCK_JPEG_8u_P4R),
         buildsOf(&ColourKernels::cmykPlanesToYcck),
         {ownRgb(false)}},
        {"CMYKToYCCK_C4P4",
         c4,
         p4,
         call(qeliCMYKToYCCK_JPEG_8u_C4P4R),
         buildsOf(&ColourKernels::cmykToYcck),
         {ownRgb(false)}},
        {"RGBToY_P3C1", p3, c1, call(qeliRGBToY_JPEG_8u_P3C1R), buildsOf(&ColourKernels::rgbPlanesToY)},
        {"RGBToY_C3C1",
         c3,
         c1,
         call(qeliRGBToY_JPEG_8u_C3C1R),
         buildsOf(&ColourKernels::rgbToY),
         {turboEncode(TJPF_RGB, TJSAMP_GRAY, 2), yuvToGrey(libyuv::RAWToJ400, 2)}},
        {"BGRToY_C3C1",
         c3,
         c1,
         call(qeliBGRToY_JPEG_8u_C3C1R),
         buildsOf(&ColourKernels::bgrToY),
         {turboEncode(TJPF_BGR, TJSAMP_GRAY, 2), yuvToGrey(libyuv::RGB24ToJ400, 2)}},
    };
}

void addColourCases()
{
    for (auto& operation : parallelColour()) {
        addOperation("colour", operation);
        addThreads("colour", operation);
    }
    for (auto& operation : serial()) addOperation("colour", operation);
}

}
