// Codes code-blocks: from wavelet coefficients to coding passes, with what each of them costs and gains.
#pragma once

#include <memory>

#include "codec/base/library.h"
#include "codec/j2k/encode/encoded_tile.h"
#include "codec/j2k/encode/options.h"
#include "codec/j2k/plane.h"

namespace qel::codec {

// What holds for all code-blocks of a band.
struct J2kBandCoding {
    J2kBandKind kind = J2kBandKind::ll;
    int bitPlanes = 0;       // Mb
    double step = 1;         // of the quantizer
    double sampleEnergy = 1; // squared error in the picture for an error of 1 in a coefficient
    int style = 0;           // bits of j2k_style
    bool isLossless = false;
    J2kTermination termination = J2kTermination::flush;
};

class J2kBlockEncoder {
public:
    // For code-blocks up to this size.
    J2kBlockEncoder(int width, int height);

    // Codes the coefficients of the band that the block has: integers as they are, floats quantized.
    template <class Coefficient>
    void encode(const J2kPlane<Coefficient>& coefficients, const J2kBandCoding& band, J2kEncodedBlock& block);

private:
    using State = std::unique_ptr<QelEncodeState, Freed<qeliEncodeFree_JPEG2K>>;

    void code(const J2kBandCoding& band, J2kEncodedBlock& block);
    void store(J2kEncodedBlock& block);
    void describePasses(const J2kBandCoding& band, int count, J2kEncodedBlock& block);
    void describeErrors(const J2kBandCoding& band, J2kEncodedBlock& block);

    State state_;
    std::vector<int32_t> samples_; // sign and magnitude
    std::vector<float> errors_;    // of columns
    std::vector<uint8_t> bytes_;
};

}
