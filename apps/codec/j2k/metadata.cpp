// SPDX-License-Identifier: Apache-2.0
// Boxes and comments with metadata.
#include "codec/j2k/metadata.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "codec/base/error.h"
#include "codec/base/fields.h"
#include "codec/j2k/box_types.h"
#include "codec/j2k/encode/header_writer.h"
#include "codec/j2k/markers.h"

namespace qel::codec::j2k {
namespace {

using namespace box_type;
using Uuid = std::array<uint8_t, 16>;

constexpr Uuid kExif = {'J', 'p', 'g', 'T', 'i', 'f', 'f', 'E', 'x', 'i', 'f', '-', '>', 'J', 'P', '2'};
constexpr Uuid kXmp = {0xBE, 0x7A, 0xCF, 0xCB, 0x97, 0xA9, 0x42, 0xE8, 0x9C, 0x71, 0x99, 0x94, 0x91, 0xE3, 0xAF, 0xAC};
constexpr int kLatinText = 1;

std::vector<uint8_t> copied(Bytes bytes) { return {bytes.begin(), bytes.end()}; }

class Reader {
public:
    explicit Reader(Bytes file) : file_(file) {}

    Metadata read(const std::optional<Jp2File>& jp2)
    {
        if (jp2) {
            takeProfile(*jp2);
            attempt([&] { takeBoxes(0, file_.size()); });
        }
        attempt([&] { takeComments(jp2 ? jp2->codestreamBegin : 0); });
        return std::move(metadata_);
    }

private:
    // What the decoder does not mind does not matter here either.
    template <class Step> static void attempt(Step step)
    {
        try {
            step();
        } catch (const CodecError&) {}
    }

    void takeProfile(const Jp2File& jp2)
    {
        auto found = std::ranges::find_if(jp2.colours, [](auto& colour) { return !colour.profile.empty(); });
        if (found == jp2.colours.end()) return;
        if (isIccProfile(found->profile))
            metadata_.icc = copied(found->profile);
        else if (found->method != Jp2Colour::kEnumerated)
            metadata_.others.push_back("a damaged ICC profile");
    }

    void takeBoxes(size_t at, size_t end)
    {
        while (at < end) {
            Box box = readBox(file_, at, end);
            Bytes contents = file_.subspan(box.begin, box.end - box.begin);
            if (box.type == kHeader || box.type == kResolution)
                takeBoxes(box.begin, box.end);
            else if (box.type == kCaptureResolution || box.type == kDisplayResolution)
                attempt([&] { takeDensity({contents, box.begin, "resolution box"}); });
            else if (box.type == kUuid && contents.size() >= kExif.size())
                takeUuid(contents.first(kExif.size()), contents.subspan(kExif.size()));
            else if (box.type == kXml)
                metadata_.others.push_back("an XML box");
            at = box.end;
        }
    }

    void takeUuid(Bytes uuid, Bytes contents)
    {
        if (std::ranges::equal(uuid, kExif))
            metadata_.exif = copied(contents);
        else if (std::ranges::equal(uuid, kXmp))
            metadata_.xmp = copied(contents);
        else
            metadata_.others.push_back("a UUID box");
    }

    void takeDensity(Fields fields)
    {
        int part[4], exponent[2];
        for (int& p : part) p = fields.u16();
        for (int& e : exponent) e = int8_t(fields.u8());
        auto value = [&](int over, int under, int power) { return double(over) / under * std::pow(10, power); };
        if (!part[0] || !part[1] || !part[2] || !part[3]) return;
        metadata_.density = {value(part[2], part[3], exponent[1]), value(part[0], part[1], exponent[0]), true};
    }

    void takeComments(size_t at)
    {
        for (Segment segment; segment.code != marker::kSot; at = segment.end) {
            segment = readSegment(file_, at);
            if (segment.code != marker::kCom) continue;
            Fields fields(segment, "comment");
            if (fields.u16() != kLatinText) continue;
            Bytes text = fields.takeRest();
            std::string comment(text.begin(), text.end());
            if (comment != kComment) metadata_.comments.push_back(comment);
        }
    }

    Bytes file_;
    Metadata metadata_;
};

// Numerator, denominator and exponent of what stands for the number in a resolution box.
struct Ratio {
    int over = 1, under = 1, power = 0;
};

// Whole dots per inch stay exact: 1 / 0.0254 = 50 / 127 * 100.
Ratio ratioOf(double perMetre)
{
    double perInch = perMetre * kMetresPerInch;
    if (std::abs(perInch - std::round(perInch)) < 1e-6 && perInch < 1310)
        return {int(50 * std::round(perInch)), 127, 2};
    int power = std::clamp(int(std::ceil(std::log10(perMetre / 65535))), -128, 127);
    return {std::clamp(int(std::round(perMetre / std::pow(10, power))), 1, 65535), 1, power};
}

void uuidBox(ByteWriter& out, const Uuid& uuid, Bytes contents)
{
    if (contents.empty()) return;
    box(out, kUuid, [&] {
        out.append(uuid);
        out.append(contents);
    });
}

// Whether a tag stands in the table of a profile.
bool hasTag(Bytes profile, uint32_t tag)
{
    Fields fields(profile.subspan(128), 128, "profile");
    try {
        for (uint32_t count = fields.u32(); count > 0; --count, fields.take(8))
            if (fields.u32() == tag) return true;
    } catch (const CodecError&) {}
    return false;
}

}

Metadata readMetadata(Bytes file, const std::optional<Jp2File>& jp2) { return Reader(file).read(jp2); }

bool isRestricted(Bytes profile)
{
    if (!isIccProfile(profile)) return false;
    if (suits(profile, ColourSpace::grey)) return hasTag(profile, fourLetters("kTRC"));
    return suits(profile, ColourSpace::rgb) && hasTag(profile, fourLetters("rTRC")) &&
           hasTag(profile, fourLetters("rXYZ")) && !hasTag(profile, fourLetters("A2B0"));
}

void writeResolution(ByteWriter& out, const Density& density)
{
    Ratio x = ratioOf(density.x), y = ratioOf(density.y);
    box(out, kResolution, [&] {
        box(out, kCaptureResolution, [&] {
            for (int part : {y.over, y.under, x.over, x.under}) out.u16(part);
            out.u8(y.power & 255);
            out.u8(x.power & 255);
        });
    });
}

void writeUuids(ByteWriter& out, const Metadata& metadata)
{
    uuidBox(out, kExif, metadata.exif);
    uuidBox(out, kXmp, metadata.xmp);
}

}
