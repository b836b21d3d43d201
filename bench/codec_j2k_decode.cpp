// SPDX-License-Identifier: Apache-2.0
// JPEG 2000 decoding of whole pictures beside OpenJPEG, of files that it made.
#include <stdlib.h>

#include <memory>

#include "cases.h"
#include "codec/j2k/decode/reader.h"
#include "contest.h"
#include "openjpeg_peer.h"
#include "samples.h"

namespace qel::bench {
namespace {

using Peer = OpenJpegPicture;

struct Coding {
    const char* name;
    bool irreversible;
    float ratio; // of the samples' size to the file's; 0 for a lossless file
};

// A picture and its file.
struct Source {
    Source(const codec::Picture& original, const Coding& coding) : picture(original)
    {
        opj_cparameters_t parameters;
        opj_set_default_encoder_parameters(&parameters);
        parameters.irreversible = coding.irreversible;
        parameters.tcp_mct = 1;
        parameters.tcp_numlayers = 1;
        parameters.cp_disto_alloc = 1;
        parameters.tcp_rates[0] = coding.ratio;
        Peer::encode(Peer::imageOf(picture), parameters, file);
    }
    codec::Picture decode() const { return codec::j2k::decode(file.bytes).picture; }
    void expectAlike()
    {
        codec::Picture ours = decode();
        Peer::Image theirs = Peer::decode(file);
        for (size_t i = 0; i < ours.sizeInBytes(); ++i)
            require(abs(ours.row(0)[i] - theirs->comps[i % 3].data[i / 3]) <= 1, "the picture differs from the peer's");
    }

    const codec::Picture& picture;
    Peer::File file;
};

Contest decoding(const codec::Picture& picture, const Coding& coding, int threads)
{
    auto s = std::make_shared<Source>(picture, coding);
    Contest contest = {"pixel", double(picture.width()) * picture.height(), {}};
    contest.contestants = {{kLibrary, onThreads(threads, [=] { s->decode(); })},
                           {"OpenJPEG", [=] { Peer::decode(s->file, threads > 1 ? threads : 0); }}};
    if (threads > 1) contest.clock = Clock::wall;
    contest.check = [=] { s->expectAlike(); };
    return contest;
}

}

void addJ2kDecodeCases()
{
    static constexpr Coding kCodings[] = {{"lossless", false, 0}, {"9/7 2 bpp", true, 12}, {"9/7 0.5 bpp", true, 48}};
    for (auto& named : pictures())
        for (const Coding& coding : kCodings) {
            std::string name = named.name + " " + coding.name;
            addCase("codec/j2k_decode/" + name, [=, &named, &coding] { return decoding(named.picture, coding, 1); });
            addCase("threads/codec/j2k_decode/" + name + "/peer",
                    [=, &named, &coding] { return decoding(named.picture, coding, 2); });
            addCase("threads/codec/j2k_decode/" + name, [=, &named, &coding] {
                auto s = std::make_shared<Source>(named.picture, coding);
                double pixels = double(named.picture.width()) * named.picture.height();
                return oneAgainstTwo("pixel", pixels, [s] { s->decode(); });
            });
        }
}

}
