// SPDX-License-Identifier: Apache-2.0
// Which channels are the colours, and their samples row by row.
#include "codec/j2k/decode/channels.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "codec/base/convert.h"
#include "codec/base/library.h"
#include "codec/base/parallel.h"

namespace qel::codec::j2k {

namespace {

constexpr int kMaxPrecision = 16;

// A component, or a column of the palette chosen by it.
struct Channel {
    const Samples* samples;
    const Jp2Palette* palette = nullptr;
    size_t column = 0;

    bool isSigned() const { return palette ? palette->columns[column].isSigned : samples->isSigned; }
    int precision() const { return palette ? palette->columns[column].precision : samples->precision; }
};

enum class Space { grey, rgb, ycc, cmyk };

size_t coloursOf(Space space) { return space == Space::grey ? 1 : space == Space::cmyk ? 4 : 3; }

std::vector<Channel> channelsOf(const Image& image, const std::optional<Jp2File>& jp2)
{
    std::vector<Channel> channels;
    if (jp2 && jp2->palette) {
        for (const Jp2Channel& channel : jp2->channels) {
            if (size_t(channel.component) >= image.components.size()) continue;
            const Samples* samples = &image.components[size_t(channel.component)];
            if (channel.column)
                channels.push_back({samples, &*jp2->palette, size_t(*channel.column)});
            else
                channels.push_back({samples});
        }
        if (!channels.empty()) return channels;
    }
    for (const Samples& samples : image.components) channels.push_back({&samples});
    return channels;
}

// What the channels are for.
struct Roles {
    std::vector<Channel> colours; // in the order of the colour space
    std::optional<Channel> alpha; // the opacity of the whole picture
    bool isMultiplied = false;    // the colours, by alpha
};

Roles rolesOf(const std::vector<Channel>& channels, const std::optional<Jp2File>& jp2)
{
    if (!jp2) return {channels, {}};
    std::vector<Jp2Definition> definitions = jp2->definitions;
    std::ranges::stable_sort(definitions, {}, &Jp2Definition::association);
    Roles roles;
    for (const Jp2Definition& definition : definitions) {
        if (size_t(definition.channel) >= channels.size()) continue;
        const Channel& channel = channels[size_t(definition.channel)];
        bool isMultiplied = definition.kind == Jp2Definition::kPremultipliedOpacity;
        bool isOpacity = definition.kind == Jp2Definition::kOpacity || isMultiplied;
        if (definition.kind == Jp2Definition::kColour)
            roles.colours.push_back(channel);
        else if (isOpacity && definition.association == Jp2Definition::kWholePicture && !roles.alpha)
            roles.alpha = channel, roles.isMultiplied = isMultiplied;
    }
    if (roles.colours.empty()) return {channels, {}};
    return roles;
}

// What the colour box says, if it is known here.
std::optional<Space> toldSpace(const Jp2Colour& colour)
{
    if (colour.method == Jp2Colour::kEnumerated) {
        switch (colour.space) {
        case Jp2Colour::kCmyk:
            return Space::cmyk;
        case Jp2Colour::kSrgb:
        case Jp2Colour::kEsrgb:
        case Jp2Colour::kRommRgb:
            return Space::rgb;
        case Jp2Colour::kGrey:
            return Space::grey;
        case Jp2Colour::kSycc:
        case Jp2Colour::kEsycc:
            return Space::ycc;
        default:
            return {};
        }
    }
    // The colour space of an ICC profile stands at byte 16.
    constexpr std::pair<const char*, Space> kProfiles[] = {
        {"GRAY", Space::grey}, {"RGB ", Space::rgb}, {"CMYK", Space::cmyk}};
    for (auto [letters, space] : kProfiles)
        if (colour.profile.size() >= 20 && std::memcmp(&colour.profile[16], letters, 4) == 0) return space;
    return {};
}

Space spaceOf(const std::vector<Channel>& colours, const std::optional<Jp2File>& jp2)
{
    if (jp2)
        for (const Jp2Colour& colour : jp2->colours)
            if (auto told = toldSpace(colour); told && coloursOf(*told) <= colours.size()) return *told;
    if (colours.size() < 3) return Space::grey;
    auto dx = [&](size_t c) { return colours[c].samples->dx; };
    bool isSubsampled = dx(0) < dx(1) && dx(1) == dx(2);
    return isSubsampled ? Space::ycc : Space::rgb;
}

// Rows of one channel at full size, as samples of the picture's precision.
class ChannelRows {
public:
    // The picture has a sample at every dx-th column and dy-th row of the reduced reference grid, in `rect`.
    ChannelRows(const Channel& channel, const Rect& rect, uint32_t dx, uint32_t dy, int precision)
        : samples_(*channel.samples), rect_(rect), dy_(dy)
    {
        if (samples_.rect != rect || samples_.dx != dx)
            for (uint32_t x = rect.x0; x < rect.x1; ++x)
                columns_.push_back(place(x, dx, samples_.dx, samples_.rect.x0, samples_.rect.x1));
        if (channel.palette)
            fillLookup(channel, precision);
        else
            setScale(samples_.precision, samples_.isSigned, precision);
    }

    template <class T> void read(uint32_t y, T* out) const
    {
        uint32_t row = place(rect_.y0 + y, dy_, samples_.dy, samples_.rect.y0, samples_.rect.y1);
        const int32_t* src = samples_.plane.row(row);
        uint32_t width = rect_.width();
        if (columns_.empty() && lookup_.empty() && !isScaled()) {
            const int32_t offset = offset_; // which `out` might be
            for (uint32_t x = 0; x < width; ++x) out[x] = T(src[x] + offset);
            return;
        }
        for (uint32_t x = 0; x < width; ++x) out[x] = T(shown(src[columns_.empty() ? x : columns_[x]]));
    }

private:
    // Number, in its component, of the sample that is shown at `at`: the one there, or the next one before it.
    static uint32_t place(uint32_t at, uint32_t spacing, uint32_t ofSamples, uint32_t first, uint32_t end)
    {
        uint32_t sample = uint32_t(uint64_t(at) * spacing / ofSamples);
        return std::clamp(sample, first, end - 1) - first;
    }
    void setScale(int from, bool isSigned, int to)
    {
        offset_ = isSigned ? int32_t(1) << (from - 1) : 0;
        shift_ = std::max(0, from - kMaxPrecision);
        from_ = (1u << (from - shift_)) - 1;
        to_ = (1u << to) - 1;
    }
    void fillLookup(const Channel& channel, int precision)
    {
        const auto& column = channel.palette->columns[channel.column];
        setScale(column.precision, column.isSigned, precision);
        for (int entry = 0; entry < channel.palette->entries; ++entry)
            lookup_.push_back(scaled(channel.palette->value(entry, channel.column)));
    }
    bool isScaled() const { return shift_ || from_ != to_; }
    uint32_t scaled(int32_t sample) const
    {
        uint32_t shifted = uint32_t(sample + offset_) >> shift_;
        return from_ == to_ ? shifted : rescaled(shifted, from_, to_);
    }
    uint32_t shown(int32_t sample) const
    {
        if (lookup_.empty()) return scaled(sample);
        return lookup_[size_t(std::clamp(sample, 0, int32_t(lookup_.size()) - 1))];
    }

    const Samples& samples_;
    Rect rect_;
    uint32_t dy_;
    std::vector<uint32_t> columns_; // of each column of the picture, unless it is the same one
    std::vector<uint32_t> lookup_;  // by the index in a palette
    int32_t offset_ = 0;
    int shift_ = 0;
    uint32_t from_ = 1, to_ = 1; // largest samples
};

template <size_t kChannels, class T> void interleave(T* const rows[], size_t width, T* out)
{
    const T* from[kChannels]; // copies, which `out` cannot be
    std::copy_n(rows, kChannels, from);
    for (size_t x = 0; x < width; ++x)
        for (size_t c = 0; c < kChannels; ++c) out[kChannels * x + c] = from[c][x];
}

void convertYcc(uint8_t* const rows[], int width, uint8_t* out)
{
    for (int x = 0; x < width; x += kConvertedAtOnce) {
        const uint8_t* at[] = {rows[0] + x, rows[1] + x, rows[2] + x};
        check(qeliYCbCrToRGB_JPEG_8u_P3C3R(at, width, out + 3 * x, 3 * width,
                                           {std::min(kConvertedAtOnce, width - x), 1}));
    }
}

// Colours that have been multiplied by the alpha behind them.
template <class T> void divideByAlpha(T* out, size_t width, size_t channels, uint32_t ones)
{
    for (size_t x = 0; x < width; ++x, out += channels)
        for (size_t c = 0; c + 1 < channels; ++c) {
            uint32_t alpha = out[channels - 1];
            if (alpha) out[c] = T(std::min<uint64_t>(ones, (uint64_t(out[c]) * ones + alpha / 2) / alpha));
        }
}

// Puts a row of the picture together.
template <class T> void join(T* const rows[], size_t width, Space space, bool hasAlpha, T* out)
{
    if (space == Space::rgb && hasAlpha) return interleave<4>(rows, width, out);
    if (space == Space::rgb) return interleave<3>(rows, width, out);
    if (space == Space::cmyk) return interleave<4>(rows, width, out);
    if (space == Space::grey && hasAlpha) return interleave<2>(rows, width, out);
    if constexpr (sizeof(T) == 1) {
        if (space != Space::ycc) return;
        convertYcc(rows, int(width), out);
        if (!hasAlpha) return;
        // From the last pixel on, so that none is written over before it is moved.
        for (size_t x = width; x-- > 0;) {
            const uint8_t pixel[] = {out[3 * x], out[3 * x + 1], out[3 * x + 2], rows[3][x]};
            std::copy_n(pixel, 4, out + 4 * x);
        }
    }
}

template <class T> void fill(Picture& picture, const std::vector<ChannelRows>& channels, Space space, bool isMultiplied)
{
    constexpr int kRowsAtOnce = 16;
    int pieces = (picture.height() + kRowsAtOnce - 1) / kRowsAtOnce;
    size_t width = size_t(picture.width());
    forEachInParallel(pieces, threadsFor(width * size_t(picture.height())), [&](int piece) {
        std::vector<T> samples(width * channels.size());
        T* rows[4] = {};
        for (size_t c = 0; c < channels.size(); ++c) rows[c] = samples.data() + width * c;
        for (int y = piece * kRowsAtOnce; y < std::min(picture.height(), (piece + 1) * kRowsAtOnce); ++y) {
            T* out = picture.row<T>(y);
            if (channels.size() == 1) rows[0] = out;
            for (size_t c = 0; c < channels.size(); ++c) channels[c].read(uint32_t(y), rows[c]);
            join(rows, width, space, picture.hasAlpha(), out);
            if (isMultiplied) divideByAlpha(out, width, channels.size(), (1u << picture.precision()) - 1);
        }
    });
}

ColourSpace shown(Space space)
{
    return space == Space::grey ? ColourSpace::grey : space == Space::cmyk ? ColourSpace::cmyk : ColourSpace::rgb;
}

}

Picture pictureOf(const Image& image, const Rect& area, int reduce, const std::optional<Jp2File>& jp2, Warnings& notes)
{
    std::vector<Channel> channels = channelsOf(image, jp2);
    Roles roles = rolesOf(channels, jp2);
    std::vector<Channel>& colours = roles.colours;
    Space space = spaceOf(colours, jp2);
    colours.resize(coloursOf(space));
    if (space == Space::cmyk) roles.alpha.reset();
    bool isMultiplied = roles.alpha && roles.isMultiplied;
    if (isMultiplied) notes.push_back("colours that have been multiplied by their opacity are divided by it");
    std::vector<Channel> all = colours;
    if (roles.alpha) all.push_back(*roles.alpha);
    if (size_t others = channels.size() - all.size())
        notes.push_back(std::to_string(others) + " of " + std::to_string(channels.size()) +
                        " channels are no colours and left out");
    auto least = [&](auto what) { return what(*std::ranges::min_element(colours, {}, what)); };
    uint32_t dx = least([](const Channel& channel) { return channel.samples->dx; });
    uint32_t dy = least([](const Channel& channel) { return channel.samples->dy; });
    int deepest = std::ranges::max_element(all, {}, &Channel::precision)->precision();
    if (deepest > kMaxPrecision) notes.push_back("samples of " + std::to_string(deepest) + " bits are cut to 16");
    int precision = std::min(deepest, kMaxPrecision);
    if (space == Space::ycc) precision = 8;
    Rect rect = resolutionRect(subsampled(area, dx, dy), reduce);
    for (const Channel& channel : all)
        if (channel.samples->rect.isEmpty()) throw CodecError("a channel has no samples at this resolution");
    Picture picture(int(rect.width()), int(rect.height()), shown(space), precision, roles.alpha.has_value());
    picture.setSigned(space != Space::ycc && std::ranges::all_of(all, &Channel::isSigned));
    std::vector<ChannelRows> rows;
    for (const Channel& channel : all) rows.emplace_back(channel, rect, dx, dy, precision);
    picture.bytesPerSample() == 1 ? fill<uint8_t>(picture, rows, space, isMultiplied)
                                  : fill<uint16_t>(picture, rows, space, isMultiplied);
    return picture;
}

}
