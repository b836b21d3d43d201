// SPDX-License-Identifier: Apache-2.0
// Chroma sampling by two: exported internal functions.
#include "jpeg/colour/sampling_doors.h"

#include "core/dispatch.h"
#include "jpeg/colour/sampling.h"

using namespace qel;

void ownqj_SampleDownH2V1_JPEG_8u_C1(const uint8_t* src, uint8_t* dst, int dstWidth)
{
    kernels<SamplingKernels>().downH2V1(src, dst, dstWidth);
}

void ownqj_SampleDownH2V2_JPEG_8u_C1(const uint8_t* src1, const uint8_t* src2, uint8_t* dst, int dstWidth)
{
    kernels<SamplingKernels>().downH2V2(src1, src2, dst, dstWidth);
}

void ownqj_SampleUpH2V1_JPEG_8u_C1(const uint8_t* src, uint8_t* dst, int dstWidth)
{
    kernels<SamplingKernels>().upH2V1(src, dst, dstWidth);
}

void ownqj_SampleUpH2V2_JPEG_8u_C1(const uint8_t* near, const uint8_t* far, uint8_t* dst, int dstWidth)
{
    kernels<SamplingKernels>().upH2V2(near, far, dst, dstWidth);
}

void ownqj_SampleDownRowH2V1_Box_JPEG_8u_C1(const uint8_t* src, int srcWidth, uint8_t* dst)
{
    kernels<SamplingKernels>().downRowH2V1(src, srcWidth, dst);
}

void ownqj_SampleDownRowH2V1_Box_JPEG_8u_C1_SSE2(const uint8_t* src, int srcWidth, uint8_t* dst)
{
    kernels<SamplingKernels>().downRowH2V1(src, srcWidth, dst);
}

void ownqj_SampleDownRowH2V2_Box_JPEG_8u_C1(const uint8_t* src1, const uint8_t* src2, int srcWidth, uint8_t* dst)
{
    kernels<SamplingKernels>().downRowH2V2(src1, src2, srcWidth, dst);
}

void ownqj_SampleUpRowH2V1_Triangle_JPEG_8u_C1(const uint8_t* src, int srcWidth, uint8_t* dst)
{
    kernels<SamplingKernels>().upRowH2V1(src, srcWidth, dst);
}

void ownqj_SampleUpRowH2V2_Triangle_JPEG_8u_C1(const uint8_t* near, const uint8_t* far, int srcWidth, uint8_t* dst)
{
    kernels<SamplingKernels>().upRowH2V2(near, far, srcWidth, dst);
}
