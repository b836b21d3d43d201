// SPDX-License-Identifier: Apache-2.0
// Colour profiles for tests.
#pragma once

#include <lcms2.h>

#include <cstdint>
#include <vector>

namespace qel::test {

inline std::vector<uint8_t> bytesOf(cmsHPROFILE profile)
{
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::vector<uint8_t> bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

// The colours of many telephones' screens: P3's primaries, white of 6500 K.
inline std::vector<uint8_t> displayProfile()
{
    cmsCIExyY white = {0.3127, 0.3290, 1};
    cmsCIExyYTRIPLE primaries = {{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}};
    cmsToneCurve* gamma = cmsBuildGamma(nullptr, 2.2);
    cmsToneCurve* curves[] = {gamma, gamma, gamma};
    auto bytes = bytesOf(cmsCreateRGBProfile(&white, &primaries, curves));
    cmsFreeToneCurve(gamma);
    return bytes;
}

// Inks of one grey: what they are called does not matter, only how much there is of all. Not what plain conversion
// makes of them.
inline std::vector<uint8_t> inkProfile()
{
    auto darken = [](const cmsUInt16Number inks[], cmsUInt16Number lab[], void*) {
        unsigned sum = 0;
        for (int i = 0; i < 4; ++i) sum += inks[i];
        lab[0] = cmsUInt16Number(0xFF00 - sum / 262144.0 * 0xFF00);
        lab[1] = lab[2] = 0x8000;
        return 1;
    };
    cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 2.1);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsPipeline* lookUp = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage* table = cmsStageAllocCLut16bit(nullptr, 2, 4, 3, nullptr);
    cmsStageSampleCLut16bit(table, darken, nullptr, 0);
    cmsPipelineInsertStage(lookUp, cmsAT_END, table);
    for (cmsTagSignature tag : {cmsSigAToB0Tag, cmsSigAToB1Tag}) cmsWriteTag(profile, tag, lookUp);
    cmsPipelineFree(lookUp);
    return bytesOf(profile);
}

}
