// SPDX-License-Identifier: Apache-2.0
// Up-sampling by the library's row functions where they fit, by replication elsewhere; then colour.
#include "codec/jpeg/decode/output.h"

#include <algorithm>
#include <cstring>

#include "codec/base/library.h"

namespace qel::codec::jpeg {

namespace {

// Rows lie between two rows of samples, at a quarter of the way: 3:1, with the rounding alternating as in the
// library's horizontal filter.
void interpolateRows(const uint8_t* near, const uint8_t* far, int bias, int width, uint8_t* out)
{
    for (int x = 0; x < width; ++x) out[x] = uint8_t((3 * near[x] + far[x] + bias) >> 2);
}

template <int kChannels> void interleave(const uint8_t* const rows[], int width, uint8_t* out)
{
    for (int x = 0; x < width; ++x)
        for (int c = 0; c < kChannels; ++c) out[kChannels * x + c] = rows[c][x];
}

}

RowWriter::RowWriter(const Info& info, Upsampling upsampling, const std::vector<Plane>& planes, Picture& picture,
                     int first)
    : colour_(info.colour), maxH_(info.maxH()), maxV_(info.maxV()), picture_(picture), next_(first)
{
    for (size_t i = 0; i < planes.size(); ++i) {
        const Component& c = info.components[i];
        sources_.push_back({&planes[i], filterFor(c, upsampling), c.h, c.v, c.width, c.height, {}});
        // The library's filters write whole pairs.
        if (sources_[i].filter != Filter::none) sources_[i].row.resize(2 * size_t(info.width));
    }
}

RowWriter::Filter RowWriter::filterFor(const Component& component, Upsampling upsampling) const
{
    bool wide = component.h == maxH_, tall = component.v == maxV_;
    bool halfWide = 2 * component.h == maxH_, halfTall = 2 * component.v == maxV_;
    if (wide && tall) return Filter::none;
    if (upsampling == Upsampling::triangle) {
        if (halfWide && tall) return Filter::triangleH2V1;
        if (halfWide && halfTall) return Filter::triangleH2V2;
        if (wide && halfTall) return Filter::triangleH1V2;
    }
    return Filter::replicate;
}

const uint8_t* RowWriter::fullRow(Source& source, int y) const
{
    if (source.filter == Filter::none) return source.plane->row(y);
    uint8_t* out = source.row.data();
    int nearRow = y / 2, farRow = std::clamp(y % 2 ? nearRow + 1 : nearRow - 1, 0, source.height - 1);
    auto row = [&](int r) { return source.plane->row(r); };
    switch (source.filter) {
    case Filter::triangleH2V1:
        check(qeliSampleUpRowH2V1_Triangle_JPEG_8u_C1(row(y), source.width, out));
        break;
    case Filter::triangleH2V2:
        check(qeliSampleUpRowH2V2_Triangle_JPEG_8u_C1(row(nearRow), row(farRow), source.width, out));
        break;
    case Filter::triangleH1V2:
        interpolateRows(row(nearRow), row(farRow), 1 + y % 2, source.width, out);
        break;
    default:
        replicate(source, y);
        break;
    }
    return out;
}

void RowWriter::replicate(Source& source, int y) const
{
    const uint8_t* in = source.plane->row(y * source.v / maxV_);
    int phase = 0;
    for (int x = 0; x < picture_.width(); ++x) {
        source.row[x] = *in;
        phase += source.h;
        if (phase < maxH_) continue;
        phase -= maxH_;
        ++in;
    }
}

void RowWriter::convert(const uint8_t* const rows[], uint8_t* out) const
{
    int width = picture_.width();
    switch (colour_) {
    case Colour::rgb:
        return interleave<3>(rows, width, out);
    case Colour::cmyk:
        return interleave<4>(rows, width, out);
    case Colour::ycbcr:
    case Colour::ycck:
        for (int x = 0; x < width; x += kConvertedAtOnce) {
            const uint8_t* at[4];
            for (size_t i = 0; i < sources_.size(); ++i) at[i] = rows[i] + x;
            QelSize size = {std::min(kConvertedAtOnce, width - x), 1};
            check(colour_ == Colour::ycbcr ? qeliYCbCrToRGB_JPEG_8u_P3C3R(at, width, out + 3 * x, 3 * width, size)
                                           : qeliYCCKToCMYK_JPEG_8u_P4C4R(at, width, out + 4 * x, 4 * width, size));
        }
        return;
    default:
        memcpy(out, rows[0], width);
    }
}

void RowWriter::writeUntil(int end)
{
    for (; next_ < end; ++next_) {
        const uint8_t* rows[4] = {};
        for (size_t i = 0; i < sources_.size(); ++i) rows[i] = fullRow(sources_[i], next_);
        convert(rows, picture_.row(next_));
    }
}

void RowWriter::fillRest()
{
    fillGrey(picture_, next_);
    next_ = picture_.height();
}

void fillGrey(Picture& picture, int first)
{
    if (first < picture.height()) memset(picture.row(first), 128, picture.step() * (picture.height() - first));
}

int fillGaps(const Info& info, const std::vector<int>& decodedRows, bool all, std::vector<Plane>& planes)
{
    int end = all ? info.height : 0;
    for (size_t i = 0; i < planes.size(); ++i) {
        int reached = decodedRows[i] * info.maxV() / info.components[i].v;
        end = std::max(end, std::min(reached, info.height));
    }
    for (size_t i = 0; i < planes.size(); ++i) {
        const Component& c = info.components[i];
        // One row more, for interpolation.
        int needed = std::min(end * c.v / info.maxV() + 2, c.height);
        for (int y = decodedRows[i]; y < needed; ++y) memset(planes[i].row(y), 128, planes[i].step());
    }
    return end;
}

}
