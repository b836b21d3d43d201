// SPDX-License-Identifier: Apache-2.0
// Progressive Huffman coding, all scans of the usual script: statistics, tables and coding, and decoding; beside
// libjpeg-turbo on the same coefficients.
#include <string.h>

#include <functional>
#include <memory>

#include <turbojpeg.h>

#include "cases.h"
#include "codec/jpeg/block_store.h"
#include "codec/jpeg/decode/reader.h"
#include "codec/jpeg/decode/scan.h"
#include "codec/jpeg/encode/scan_script.h"
#include "codec/jpeg/encode/scan_writer.h"
#include "contest.h"
#include "libjpeg.h"
#include "samples.h"

namespace qel::bench {
namespace {

using namespace codec;

// Coefficients of a picture, and its progressive file as libjpeg-turbo writes it.
struct Source {
    Source(const Picture& picture, int quality) : peer(picture, quality, TJSAMP_420)
    {
        peer.writeProgressive();
        file = peer.progressiveFile();
        info = jpeg::readInfo(file);
        auto decoded = jpeg::decodeCoefficients(file).components;
        for (size_t c = 0; c < decoded.size(); ++c) {
            stores.emplace_back(info, info.components[c], jpeg::BlockStore::Fill::zero);
            memcpy(stores[c].block(0, 0), decoded[c].values.data(), 2 * decoded[c].values.size());
        }
    }

    void encode()
    {
        out.clear();
        const std::function<void(double)> nobody;
        Progress progress(nobody, 1);
        for (const jpeg::Scan& described : jpeg::usualScript(3, true)) {
            jpeg::ScanHeader scan;
            for (int c : described.components) scan.components.push_back({c, c > 0, c > 0});
            scan.kind = jpeg::scanKind(described.first, described.high);
            scan.first = described.first;
            scan.last = described.last;
            scan.high = described.high;
            scan.low = described.low;
            jpeg::ScanLayout layout(info, described.components);
            jpeg::StoredBlocks blocks(layout, stores);
            jpeg::ScanStatistics statistics(scan);
            jpeg::codeScan(layout, 0, blocks, statistics, progress);
            jpeg::ScanEncoder coder(out, layout, scan, {statistics.tables(0), statistics.tables(1)});
            jpeg::codeScan(layout, 0, blocks, coder, progress);
        }
    }

    std::vector<jpeg::BlockStore> decode()
    {
        std::vector<jpeg::BlockStore> result;
        for (auto& component : info.components) result.emplace_back(info, component, jpeg::BlockStore::Fill::zero);
        jpeg::Headers headers(file);
        for (auto scan = headers.nextScan(2); scan;) {
            jpeg::ScanDecoder coder(file, headers, *scan);
            jpeg::StoredBlocks places(coder.layout(), result);
            for (int row = 0; row < coder.layout().mcusDown; ++row) {
                places.startRow(row);
                coder.decodeRowInto(places);
            }
            scan = headers.nextScan(coder.position());
        }
        return result;
    }

    JpegCoefficients peer;
    std::vector<uint8_t> file, out;
    jpeg::Info info;
    std::vector<jpeg::BlockStore> stores;
};

using Shared = std::shared_ptr<Source>;

Contest encoding(const Shared& s)
{
    Contest contest = {"pixel", s->peer.pixels, {}};
    contest.contestants = {{kLibrary, [=] { s->encode(); }}, {"libjpeg-turbo", [=] { s->peer.writeProgressive(); }}};
    contest.check = [=] {
        s->encode();
        // Tables and headers are not among ours.
        size_t extra = s->file.size() - s->out.size();
        require(s->out.size() < s->file.size() && extra < 3000, "the scans are not as long as the peer's");
    };
    return contest;
}

Contest decoding(const Shared& s)
{
    Contest contest = {"pixel", s->peer.pixels, {}};
    contest.contestants = {{kLibrary, [=] { s->decode(); }}, {"libjpeg-turbo", [=] { s->peer.readProgressive(); }}};
    contest.check = [=] {
        auto decoded = jpeg::decodeCoefficients(s->file);
        require(decoded.warnings.empty(), "the peer's file is not whole");
        auto ours = s->decode();
        for (size_t c = 0; c < ours.size(); ++c) {
            bool same =
                memcmp(ours[c].block(0, 0), s->stores[c].block(0, 0), 2 * decoded.components[c].values.size()) == 0;
            require(same, "the coefficients differ");
        }
    };
    return contest;
}

}

void addProgressiveCases()
{
    for (auto& named : pictures())
        for (int quality : {75, 90}) {
            auto source = [&named, quality] {
                auto whole = crop(named.picture, named.picture.width() / 16 * 16, named.picture.height() / 16 * 16);
                return std::make_shared<Source>(whole, quality);
            };
            auto name = named.name + " q" + std::to_string(quality);
            addCase("progressive/encode/" + name, [=] { return encoding(source()); });
            addCase("progressive/decode/" + name, [=] { return decoding(source()); });
        }
}

}
