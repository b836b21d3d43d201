// SPDX-License-Identifier: Apache-2.0
// Lossless JPEG: rows of prediction, for each predictor and instruction set; whole scans and files beside FFmpeg.
#include "jpeg/lossless/prediction.h"

#include <string.h>

#include <functional>
#include <memory>

#include "buffers.h"
#include "cases.h"
#include "codec/base/convert.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/encode/differences.h"
#include "codec/jpeg/encode/scan_writer.h"
#include "codec/jpeg/encode/writer.h"
#include "contest.h"
#include "core/rows.h"
#include "ffmpeg.h"
#include "qeljx/jpeg_lossless.h"
#include "samples.h"
#include "traffic.h"

namespace qel::bench {
namespace {

using namespace codec;

// Rows that stay in the first cache, as those of a codec do: less than 16 KB.
constexpr int kWidth = 1000, kHeight = 4;

using Row = std::function<void(const int16_t* src, const int16_t* prev, int16_t* dst, int width)>;

// Each row is predicted from the one above; that of the samples, whichever side they are on.
void forRowPairs(const Planes& from, const Planes& to, bool isDifference, const Row& row)
{
    auto at = [](const Planes& planes, int y) { return (int16_t*)rowAt(planes[0], planes.step(), y); };
    for (int y = 1; y < kHeight; ++y) row(at(from, y), at(isDifference ? from : to, y - 1), at(to, y), kWidth);
}

Contest rowsOf(int predictor, bool isDifference)
{
    Layout samples = {1, 1, 2};
    auto from = std::make_shared<Planes>(samples, kWidth, kHeight, false);
    auto to = std::make_shared<Planes>(samples, kWidth, kHeight, false);
    Contest contest = {"sample", double(kWidth) * (kHeight - 1), {}};
    auto add = [&](std::string name, Row row) {
        contest.contestants.push_back({name, [=] { forRowPairs(*from, *to, isDifference, row); }});
    };
    auto function = isDifference ? qeliDiffPredRow_JPEG_16s_C1 : qeliReconstructPredRow_JPEG_16s_C1;
    add(kLibrary,
        [=](auto* src, auto* prev, auto* dst, int width) { succeed(function(src, prev, dst, width, predictor)); });
    forBuilds<PredictionKernels>([&](std::string name, auto& build) {
        add(name, (isDifference ? build.diff : build.reconstruct)[predictor - 1]);
    });
    addTraffic(contest, contest.units, 2, 2);
    return contest;
}

jpeg::EncodeOptions options(int predictor)
{
    jpeg::EncodeOptions encoding;
    encoding.lossless = true;
    encoding.predictor = predictor;
    return encoding;
}

// One scan of three components with the tables that FFmpeg uses, table building and flush included.
struct ScanOfRgb {
    explicit ScanOfRgb(const Picture& rgb) : picture(rgb), peer(rgb)
    {
        info.process = jpeg::Process::lossless;
        info.width = rgb.width(), info.height = rgb.height();
        for (int i : {0, 1, 2}) {
            info.components.push_back({i + 1, 1, 1, 0, 0, 0});
            scan.components.push_back({i, i > 0, 0});
        }
        jpeg::setComponentSizes(info);
        scan.kind = jpeg::ScanKind::lossless;
        scan.predictor = 1;
    }

    void encode()
    {
        out.clear();
        const std::function<void(double)> nobody;
        Progress progress(nobody, picture.height());
        jpeg::ScanLayout layout(info, {0, 1, 2});
        jpeg::Differences differences(picture, layout, scan, 0);
        jpeg::ScanEncoder coder(out, layout, scan, {{{jpeg::kTypicalDc[0], {}}, {jpeg::kTypicalDc[1], {}}}});
        differences.code(coder, progress);
    }

    const Picture& picture;
    FfmpegLosslessEncoder peer;
    jpeg::Info info;
    jpeg::ScanHeader scan;
    std::vector<uint8_t> out;
};

bool isSame(const Picture& a, const Picture& b)
{
    return a.sizeInBytes() == b.sizeInBytes() && memcmp(a.row(0), b.row(0), a.sizeInBytes()) == 0;
}

Contest encoding(const NamedPicture& named)
{
    auto s = std::make_shared<ScanOfRgb>(named.picture);
    Contest contest = {"pixel", double(named.picture.width()) * named.picture.height(), {}};
    contest.contestants = {{kLibrary, [=] { s->encode(); }}, {"FFmpeg", [=] { s->peer.encode(); }}};
    contest.check = [=, &named] {
        s->encode();
        // Their MCUs are two rows high, so that the same symbols come in another order.
        auto& file = s->peer.file();
        jpeg::Decoded decoded = jpeg::decode(file);
        require(decoded.warnings.empty() && isSame(decoded.picture, named.picture), "the peer's file is not ours");
        double ratio = double(s->out.size()) / double(file.size());
        require(ratio > 0.99 && ratio < 1.01, "the scan is not as long as the peer's");
    };
    return contest;
}

// The file with tables of its own, in two passes.
Contest encodingFile(const NamedPicture& named)
{
    auto peer = std::make_shared<FfmpegLosslessEncoder>(named.picture);
    Contest contest = {"pixel", double(named.picture.width()) * named.picture.height(), {}};
    contest.contestants = {{kLibrary, [&named] { jpeg::encode(named.picture, options(1)); }},
                           {"FFmpeg", [=] { peer->encode(); }}};
    contest.check = [=, &named] {
        require(jpeg::encode(named.picture, options(1)).size() <= peer->file().size(),
                "the file is longer than FFmpeg's");
    };
    return contest;
}

Contest decoding(const Picture& picture, int predictor)
{
    auto file = std::make_shared<std::vector<uint8_t>>(jpeg::encode(picture, options(predictor)));
    auto peer = std::make_shared<FfmpegDecoder>(*file);
    Contest contest = {"pixel", double(picture.width()) * picture.height(), {}};
    contest.contestants = {{kLibrary, [=] { jpeg::decode(*file); }}, {"FFmpeg", [=] { peer->decode(); }}};
    contest.check = [=] {
        peer->decode();
        require(peer->equals(jpeg::decode(*file).picture), "the picture differs from the peer's");
    };
    return contest;
}

// The green channel, with noise below its eight bits. The highest bit stays free: FFmpeg reads a difference of 32768
// with bits after it that T.81 does not have.
Picture deepGrey(const Picture& rgb)
{
    Picture grey(rgb.width(), rgb.height(), ColourSpace::grey, 16);
    uint32_t noise = 1;
    for (int y = 0; y < rgb.height(); ++y)
        for (int x = 0; x < rgb.width(); ++x) {
            noise = noise * 1664525 + 1013904223;
            grey.row<uint16_t>(y)[x] = uint16_t(rgb.row(y)[3 * x + 1] << 7 | (noise >> 28));
        }
    return grey;
}

}

void addLosslessCases()
{
    for (int predictor = 1; predictor <= 7; ++predictor) {
        std::string name = "prediction/predictor " + std::to_string(predictor);
        addCase(name + "/differences", [=] { return rowsOf(predictor, true); });
        addCase(name + "/samples", [=] { return rowsOf(predictor, false); });
    }
    for (auto& named : pictures()) {
        addCase("lossless/encode scan/" + named.name, [&named] { return encoding(named); });
        addCase("lossless/encode file/" + named.name, [&named] { return encodingFile(named); });
        for (int predictor : {1, 4, 7})
            addCase("lossless/decode predictor " + std::to_string(predictor) + "/" + named.name,
                    [&named, predictor] { return decoding(named.picture, predictor); });
        addCase("lossless/decode 16 bits/" + named.name, [&named] { return decoding(deepGrey(named.picture), 1); });
    }
}

}
