// SPDX-License-Identifier: Apache-2.0
// Application segments, known by the text that they begin with.
#include "codec/jpeg/metadata.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "codec/base/byte_writer.h"
#include "codec/base/error.h"
#include "codec/jpeg/markers.h"

namespace qel::codec::jpeg {
namespace {

using namespace std::string_view_literals;

constexpr std::string_view kJfif = "JFIF\0"sv, kExif = "Exif\0\0"sv, kXmp = "http://ns.adobe.com/xap/1.0/\0"sv,
                           kIcc = "ICC_PROFILE\0"sv, kAdobe = "Adobe"sv, kJfxx = "JFXX\0"sv;
constexpr uint8_t kApp1 = marker::kApp0 + 1, kApp2 = marker::kApp0 + 2, kApp15 = marker::kApp0 + 15, kCom = 0xFE;
constexpr size_t kIccPart = 65519;

std::string_view textOf(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), bytes.size()}; }

class Reader {
public:
    Metadata read(Bytes file)
    {
        try {
            for (size_t at = 2;;) {
                Segment segment = readSegment(file, at);
                if (segment.code == marker::kSos || segment.code == marker::kEoi) break;
                take(segment);
                at = segment.end;
            }
        } catch (const CodecError&) {} // the decoder says so
        joinProfile();
        return std::move(metadata_);
    }

private:
    void take(const Segment& segment)
    {
        Bytes rest = segment.parameters;
        auto begins = [&](std::string_view text) {
            if (!textOf(rest).starts_with(text)) return false;
            rest = rest.subspan(text.size());
            return true;
        };
        if (segment.code == kCom) {
            metadata_.comments.emplace_back(textOf(rest));
        } else if (segment.code == marker::kApp0 && begins(kJfif)) {
            takeDensity(rest);
        } else if (segment.code == kApp1 && metadata_.exif.empty() && begins(kExif)) {
            metadata_.exif.assign(rest.begin(), rest.end());
        } else if (segment.code == kApp1 && metadata_.xmp.empty() && begins(kXmp)) {
            metadata_.xmp.assign(rest.begin(), rest.end());
        } else if (segment.code == kApp2 && begins(kIcc)) {
            takeProfilePart(rest);
        } else if (segment.code >= marker::kApp0 && segment.code <= kApp15 && !begins(kAdobe) && !begins(kJfxx)) {
            note("data in APP" + std::to_string(segment.code - marker::kApp0));
        }
    }

    void takeDensity(Bytes rest)
    {
        if (rest.size() < 7) return;
        int unit = rest[2];
        Density density = {double(rest[3] << 8 | rest[4]), double(rest[5] << 8 | rest[6]), unit == 1 || unit == 2};
        if (density.x < 1 || density.y < 1 || (!density.isPerMetre && density.x == density.y)) return;
        double perMetre = unit == 1 ? 1 / kMetresPerInch : unit == 2 ? 100 : 1;
        metadata_.density = {density.x * perMetre, density.y * perMetre, density.isPerMetre};
    }

    void takeProfilePart(Bytes rest)
    {
        bool isSound = rest.size() >= 2 && rest[0] >= 1 && rest[0] <= rest[1] && (!parts_ || parts_ == rest[1]);
        if (!isSound || !profile_.emplace(rest[0], rest.subspan(2)).second) isProfileDamaged_ = true;
        if (isSound) parts_ = rest[1];
    }

    // The parts may stand in any order.
    void joinProfile()
    {
        if (profile_.empty() && !isProfileDamaged_) return;
        auto& icc = metadata_.icc;
        for (auto& [number, part] : profile_) icc.insert(icc.end(), part.begin(), part.end());
        if (!isProfileDamaged_ && profile_.size() == size_t(parts_) && isIccProfile(icc)) return;
        icc.clear();
        note("a damaged ICC profile");
    }

    void note(const std::string& name)
    {
        if (std::ranges::find(metadata_.others, name) == metadata_.others.end()) metadata_.others.push_back(name);
    }

    Metadata metadata_;
    std::map<int, Bytes> profile_;
    int parts_ = 0;
    bool isProfileDamaged_ = false;
};

void segment(ByteWriter& out, uint8_t code, std::string_view name, Bytes contents)
{
    out.u8(0xFF);
    out.u8(code);
    out.u16(int(2 + name.size() + contents.size()));
    out.text(name);
    out.append(contents);
}

}

Metadata readMetadata(Bytes file) { return Reader().read(file); }

void writeMetadata(std::vector<uint8_t>& file, const Metadata& metadata)
{
    ByteWriter out(file);
    if (!metadata.exif.empty()) segment(out, kApp1, kExif, metadata.exif);
    if (!metadata.xmp.empty()) segment(out, kApp1, kXmp, metadata.xmp);
    size_t parts = (metadata.icc.size() + kIccPart - 1) / kIccPart;
    for (size_t i = 0; i < parts; ++i) {
        Bytes part = Bytes(metadata.icc).subspan(i * kIccPart);
        std::string name = std::string(kIcc) + char(i + 1) + char(parts);
        segment(out, kApp2, name, part.first(std::min(part.size(), kIccPart)));
    }
    for (const std::string& comment : metadata.comments) segment(out, kCom, comment, {});
}

}
