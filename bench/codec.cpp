// SPDX-License-Identifier: Apache-2.0
// The sample codec on whole pictures, beside libjpeg-turbo with the same quality, sampling and accuracy of the DCT.
#include <stdlib.h>

#include <memory>

#include <turbojpeg.h>

#include "cases.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/encode/writer.h"
#include "contest.h"
#include "samples.h"

namespace qel::bench {
namespace {

constexpr int kQuality = 90;

struct Sampling {
    const char* name;
    codec::jpeg::Samplings ours;
    int theirs;
};

// A picture, its file as libjpeg-turbo writes it, and that file decoded by libjpeg-turbo.
struct Source {
    Source(const codec::Picture& original, const Sampling& chosen) : picture(original), sampling(chosen)
    {
        options.quality = kQuality;
        options.sampling = sampling.ours;
        require(encoder && decoder, "libjpeg-turbo has no memory");
        buffer.resize(tjBufSize(picture.width(), picture.height(), TJSAMP_444));
        decoded.resize(picture.sizeInBytes());
        encode();
        file.assign(buffer.begin(), buffer.begin() + ptrdiff_t(length));
    }
    void encode()
    {
        unsigned char* data = buffer.data();
        int bad = tjCompress2(encoder.get(), picture.row(0), picture.width(), 0, picture.height(), TJPF_RGB, &data,
                              &length, sampling.theirs, kQuality, TJFLAG_NOREALLOC | TJFLAG_ACCURATEDCT);
        require(!bad, "tjCompress2 failed");
    }
    void decode(const std::vector<uint8_t>& from)
    {
        int bad = tjDecompress2(decoder.get(), from.data(), from.size(), decoded.data(), picture.width(), 0,
                                picture.height(), TJPF_RGB, TJFLAG_ACCURATEDCT);
        require(!bad, "tjDecompress2 failed");
    }
    // Mean absolute difference of the decoded samples.
    double distance(const uint8_t* other) const
    {
        double sum = 0;
        for (size_t i = 0; i < decoded.size(); ++i) sum += abs(decoded[i] - other[i]);
        return sum / double(decoded.size());
    }

    const codec::Picture& picture;
    Sampling sampling;
    codec::jpeg::EncodeOptions options;
    std::vector<uint8_t> file, decoded;

private:
    using Handle = std::unique_ptr<void, int (*)(void*)>;
    Handle encoder{tjInitCompress(), tjDestroy}, decoder{tjInitDecompress(), tjDestroy};
    std::vector<uint8_t> buffer;
    unsigned long length = 0;
};

using Shared = std::shared_ptr<Source>;

double pixelsOf(const Source& s) { return double(s.picture.width()) * s.picture.height(); }

Contest encoding(const Shared& s)
{
    Contest contest = {"pixel", pixelsOf(*s), {}};
    contest.contestants = {{kLibrary, [=] { codec::jpeg::encode(s->picture, s->options); }},
                           {"libjpeg-turbo", [=] { s->encode(); }}};
    contest.check = [=] {
        auto ours = codec::jpeg::encode(s->picture, s->options);
        auto theirs = double(s->file.size());
        // Another rounding makes other small coefficients, and so a somewhat smaller or larger file.
        bool alike = double(ours.size())<1.08 * theirs&& double(ours.size())> 0.92 * theirs;
        require(alike, "the file's size is not the peer's");
        s->decode(s->file);
        double loss = s->distance(s->picture.row(0));
        s->decode(ours);
        require(s->distance(s->picture.row(0)) < 1.05 * loss, "the file loses more than the peer's");
    };
    return contest;
}

Contest decoding(const Shared& s)
{
    Contest contest = {"pixel", pixelsOf(*s), {}};
    contest.contestants = {{kLibrary, [=] { codec::jpeg::decode(s->file); }},
                           {"libjpeg-turbo", [=] { s->decode(s->file); }}};
    contest.check = [=] {
        s->decode(s->file);
        auto ours = codec::jpeg::decode(s->file);
        require(ours.warnings.empty() && s->distance(ours.picture.row(0)) < 1, "the picture differs from the peer's");
    };
    return contest;
}

void add(const NamedPicture& named, const Sampling& sampling)
{
    auto name = named.name + " " + sampling.name + " q" + std::to_string(kQuality);
    auto source = [=, &named] { return std::make_shared<Source>(named.picture, sampling); };
    addCase("codec/encode/" + name, [=] { return encoding(source()); });
    addCase("codec/decode/" + name, [=] { return decoding(source()); });
    addCase("threads/codec/encode/" + name, [=] {
        auto s = source();
        return oneAgainstTwo("pixel", pixelsOf(*s), [s] { codec::jpeg::encode(s->picture, s->options); });
    });
    addCase("threads/codec/decode/" + name, [=] {
        auto s = source();
        return oneAgainstTwo("pixel", pixelsOf(*s), [s] { codec::jpeg::decode(s->file); });
    });
}

}

void addCodecCases()
{
    const Sampling samplings[] = {{"4:2:0", codec::jpeg::kSampling420, TJSAMP_420},
                                  {"4:4:4", codec::jpeg::kSampling444, TJSAMP_444}};
    for (auto& named : pictures())
        for (auto& sampling : samplings) add(named, sampling);
}

}
