// SPDX-License-Identifier: Apache-2.0
// JPEG 2000 encoding of whole pictures, beside OpenJPEG with the same settings: lossless, and lossy to the same size.
#include <algorithm>
#include <memory>

#include "cases.h"
#include "codec/base/compare.h"
#include "codec/j2k/encode/writer.h"
#include "contest.h"
#include "openjpeg_peer.h"
#include "samples.h"

namespace qel::bench {
namespace {

using Peer = OpenJpegPicture;
using File = std::vector<uint8_t>;

struct Source {
    Source(const codec::Picture& original, double bitsPerPixel) : picture(original), rate(bitsPerPixel)
    {
        options.isJp2 = false;
        options.isLossless = rate == 0;
        if (rate) options.bitsPerPixel = rate;
    }
    File encode() const { return codec::j2k::encode(picture, options); }
    // With so many threads besides the calling one.
    void encodeWithPeer(int threads = 0)
    {
        opj_cparameters_t parameters;
        opj_set_default_encoder_parameters(&parameters);
        parameters.irreversible = rate != 0;
        parameters.tcp_mct = 1;
        parameters.tcp_numlayers = 1;
        parameters.cp_disto_alloc = 1;
        parameters.tcp_rates[0] = rate ? float(24 / rate) : 0;
        Peer::encode(Peer::imageOf(picture), parameters, peers, threads);
    }
    // Of a file of either, decoded by the peer.
    double psnr(const File& bytes) const
    {
        Peer::File file = {bytes};
        Peer::Image image = Peer::decode(file);
        codec::Picture decoded(picture.width(), picture.height(), picture.space(), picture.precision());
        uint8_t* to = decoded.row(0);
        for (size_t i = 0; i < size_t(picture.width()) * size_t(picture.height()); ++i)
            for (int c = 0; c < 3; ++c) *to++ = uint8_t(image->comps[c].data[i]);
        return codec::compare(decoded, picture).whole.psnr(picture.precision());
    }

    const codec::Picture& picture;
    double rate; // bits per pixel; 0 is lossless
    codec::j2k::EncodeOptions options;
    Peer::File peers;
};

using Shared = std::shared_ptr<Source>;

double pixelsOf(const Source& s) { return double(s.picture.width()) * s.picture.height(); }

Contest encoding(const Shared& s, int threads)
{
    Contest contest = {"pixel", pixelsOf(*s), {}};
    contest.contestants = {{kLibrary, onThreads(threads, [=] { s->encode(); })},
                           {"OpenJPEG", [=] { s->encodeWithPeer(threads > 1 ? threads : 0); }}};
    if (threads > 1) contest.clock = Clock::wall;
    s->encodeWithPeer();
    File ours = s->encode();
    contest.facts = {{"bytes:qeljx", double(ours.size())}, {"bytes:OpenJPEG", double(s->peers.bytes.size())}};
    if (s->rate) {
        contest.facts.push_back({"psnr:qeljx", s->psnr(ours)});
        contest.facts.push_back({"psnr:OpenJPEG", s->psnr(s->peers.bytes)});
    }
    return contest;
}

}

void addJ2kEncodeCases()
{
    for (auto& named : pictures())
        for (double rate : {0.0, 0.5, 1.0, 2.0, 4.0}) {
            std::string name = rate ? std::to_string(rate).substr(0, 3) + " bpp" : "lossless";
            auto source = [=, &named] { return std::make_shared<Source>(named.picture, rate); };
            addCase("codec/j2k_encode/" + named.name + " " + name, [=] { return encoding(source(), 1); });
            addCase("threads/codec/j2k_encode/" + named.name + " " + name + "/peer",
                    [=] { return encoding(source(), 2); });
            addCase("threads/codec/j2k_encode/" + named.name + " " + name, [=] {
                auto s = source();
                return oneAgainstTwo("pixel", pixelsOf(*s), [s] { s->encode(); });
            });
        }
}

}
