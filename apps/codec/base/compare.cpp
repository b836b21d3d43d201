// SPDX-License-Identifier: Apache-2.0
// How far two pictures are apart.
#include "codec/base/compare.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "codec/base/error.h"

namespace qel::codec {
namespace {

template <class T> Difference difference(const Picture& a, const Picture& b, int channel)
{
    uint64_t squares = 0;
    int largest = 0;
    for (int y = 0; y < a.height(); ++y) {
        const T *p = a.row<T>(y), *q = b.row<T>(y);
        for (int i = channel; i < a.width() * a.channels(); i += a.channels()) {
            int64_t error = std::abs(p[i] - q[i]);
            squares += uint64_t(error * error);
            largest = std::max(largest, int(error));
        }
    }
    return {double(squares) / a.width() / a.height(), largest};
}

std::string describe(const Picture& p)
{
    const char* spaces[] = {"grey", "RGB", "CMYK"};
    return std::to_string(p.width()) + " x " + std::to_string(p.height()) + ' ' + spaces[int(p.space())] +
           (p.hasAlpha() ? " with alpha of " : " of ") + std::to_string(p.precision()) + " bits";
}

}

double Difference::psnr(int precision) const
{
    double peak = (1 << precision) - 1;
    return meanSquaredError > 0 ? 10 * std::log10(peak * peak / meanSquaredError)
                                : std::numeric_limits<double>::infinity();
}

void checkComparable(const Picture& a, const Picture& b)
{
    if (describe(a) != describe(b))
        throw CodecError("the pictures differ in kind: " + describe(a) + ", " + describe(b));
}

Comparison compare(const Picture& a, const Picture& b)
{
    checkComparable(a, b);
    Comparison result;
    for (int c = 0; c < a.channels(); ++c) {
        Difference d = a.bytesPerSample() == 1 ? difference<uint8_t>(a, b, c) : difference<uint16_t>(a, b, c);
        result.channels.push_back(d);
        result.whole.meanSquaredError += d.meanSquaredError / a.channels();
        result.whole.largestError = std::max(result.whole.largestError, d.largestError);
    }
    return result;
}

}
