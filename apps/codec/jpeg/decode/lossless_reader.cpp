// SPDX-License-Identifier: Apache-2.0
// Rows of differences, in place to samples, to the picture.
#include "codec/jpeg/decode/lossless_reader.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string>

#include "codec/base/error.h"
#include "codec/base/library.h"
#include "codec/jpeg/decode/output.h"

namespace qel::codec::jpeg {

namespace {

// Rows of kRows components to every `step`th sample of the picture, beside each other.
template <size_t kRows, class T>
void putRows(std::array<const int16_t*, kRows> rows, int width, int pointTransform, int largest, int step, T* out)
{
    auto putAll = [&](auto sample) {
        for (int x = 0; x < width; ++x, out += step)
            for (size_t i = 0; i < kRows; ++i) out[i] = T(sample(rows[i][x]));
    };
    if (pointTransform == 0 && largest == std::numeric_limits<T>::max())
        putAll([](int16_t sample) { return sample; });
    else
        putAll([=](int16_t sample) { return (uint16_t(sample) << pointTransform) & largest; });
}

// The library reads what predictors 5 to 7 halve as signed, T.81 as unsigned: that differs where all 16 bits are used.
void reconstructUnsigned(const int16_t* above, int16_t* row, int width, int predictor)
{
    auto unsignedAt = [](const int16_t* samples, int x) { return int(uint16_t(samples[x])); };
    row[0] = int16_t(row[0] + above[0]);
    for (int x = 1; x < width; ++x) {
        int a = unsignedAt(row, x - 1), b = unsignedAt(above, x), c = unsignedAt(above, x - 1);
        int prediction = predictor == 5 ? a + ((b - c) >> 1) : predictor == 6 ? b + ((a - c) >> 1) : (a + b) >> 1;
        row[x] = int16_t(row[x] + prediction);
    }
}

}

bool LosslessOutput::needsPlanes(const Info& info)
{
    bool isWhole =
        std::ranges::all_of(info.components, [&](auto& c) { return c.width == info.width && c.height == info.height; });
    bool isConverted = info.colour == Colour::ycbcr || info.colour == Colour::ycck;
    return !isWhole || isConverted;
}

LosslessOutput::LosslessOutput(const Info& info, Picture& picture)
    : info_(info), picture_(picture), rows_(info.components.size())
{
    if (!needsPlanes(info)) return;
    if (info.precision != 8)
        throw CodecError("a lossless picture of " + std::to_string(info.precision) +
                         " bits with chroma to be converted is not supported");
    for (const Component& c : info.components) planes_.emplace_back(c.width, c.height);
}

void LosslessOutput::put(int component, const int16_t* samples, int pointTransform)
{
    int y = rows_[component]++, width = info_.components[component].width;
    auto putTo = [&](int step, auto* out) {
        putRows<1>({samples}, width, pointTransform, (1 << info_.precision) - 1, step, out);
    };
    if (!planes_.empty())
        putTo(1, planes_[component].row(y));
    else if (picture_.bytesPerSample() == 1)
        putTo(picture_.channels(), picture_.row(y) + component);
    else
        putTo(picture_.channels(), picture_.row<uint16_t>(y) + component);
}

void LosslessOutput::putColours(std::array<const int16_t*, 3> samples, int pointTransform)
{
    int y = rows_[0];
    for (int& rows : rows_) ++rows;
    auto putTo = [&](auto* out) {
        putRows(samples, picture_.width(), pointTransform, (1 << info_.precision) - 1, 3, out);
    };
    if (picture_.bytesPerSample() == 1)
        putTo(picture_.row(y));
    else
        putTo(picture_.row<uint16_t>(y));
}

void LosslessOutput::fillRest(int component)
{
    std::vector<int16_t> grey(info_.components[component].width, int16_t(1 << (info_.precision - 1)));
    while (rows_[component] < info_.components[component].height) put(component, grey.data(), 0);
}

void LosslessOutput::finish(Upsampling upsampling)
{
    for (int i = 0; i < int(rows_.size()); ++i) fillRest(i);
    if (planes_.empty()) return;
    RowWriter writer(info_, upsampling, planes_, picture_);
    writer.writeUntil(picture_.height());
}

LosslessRows::LosslessRows(const Info& info, const ScanDecoder& coder, int restartInterval, LosslessOutput& output)
    : precision_(info.precision), predictor_(coder.scan().predictor), pointTransform_(coder.scan().pointTransform),
      output_(output)
{
    const ScanLayout& layout = coder.layout();
    bool restarts = restartInterval != 0 && restartInterval < int64_t(layout.mcusAcross) * layout.mcusDown;
    if (restarts && restartInterval % layout.mcusAcross != 0)
        throw CodecError("a restart interval of " + std::to_string(restartInterval) + " MCUs in rows of " +
                             std::to_string(layout.mcusAcross),
                         coder.scan().dataAt);
    rowsPerInterval_ = restarts ? restartInterval / layout.mcusAcross : layout.mcusDown;
    for (const ScanShare& share : layout.shares) {
        int width = layout.mcusAcross * share.across;
        components_.push_back({share.component, width, share.down, info.components[share.component].height,
                               std::vector<int16_t>(size_t(width) * (share.down + 1))});
    }
    putsColours_ = output.takesColours() && layout.blocks.size() == 3 && components_.size() == 3;
    for (const McuBlock& sample : layout.blocks)
        places_.push_back({components_[sample.slot].row(sample.dy) + sample.dx, layout.shares[sample.slot].across});
}

void LosslessRows::decode(ScanDecoder& coder)
{
    bool isFirst = row_++ % rowsPerInterval_ == 0;
    bool isLost = coder.decodeDifferences(places_) == 0;
    std::array<const int16_t*, 3> colours;
    for (Component& component : components_) {
        if (isLost) std::ranges::fill(component.samples, int16_t(1 << (precision_ - pointTransform_ - 1)));
        for (int dy = 0; dy < component.down && component.rowsLeft > 0; ++dy, --component.rowsLeft) {
            if (!isLost) restore(component, dy, isFirst && dy == 0);
            if (putsColours_)
                colours[component.index] = component.row(dy);
            else
                output_.put(component.index, component.row(dy), pointTransform_);
        }
        std::copy_n(component.row(component.down - 1), component.width, component.row(-1));
    }
    if (putsColours_) output_.putColours(colours, pointTransform_);
}

void LosslessRows::restore(Component& component, int dy, bool isFirst) const
{
    int16_t *row = component.row(dy), *above = component.row(dy - 1);
    if (isFirst)
        check(qeliReconstructPredFirstRow_JPEG_16s_C1(row, row, component.width, precision_, pointTransform_));
    else if (predictor_ >= 5 && precision_ - pointTransform_ == 16)
        reconstructUnsigned(above, row, component.width, predictor_);
    else
        check(qeliReconstructPredRow_JPEG_16s_C1(row, above, row, component.width, predictor_));
}

}
