// SPDX-License-Identifier: Apache-2.0
// What the marker segments before and between scans define: the frame, the tables, the scan (T.81 B.2).
#pragma once

#include <array>
#include <optional>
#include <vector>

#include "codec/base/bytes.h"
#include "codec/jpeg/info.h"
#include "codec/jpeg/markers.h"
#include "codec/jpeg/tables.h"

namespace qel::codec::jpeg {

// Quantization steps in natural order.
using QuantizerSteps = std::array<uint16_t, 64>;

// What a scan codes of each block: all of it, one of the four kinds of a progressive file (T.81 G.1.2), or the single
// difference of a lossless file.
enum class ScanKind { sequential, dcFirst, dcRefine, acFirst, acRefine, lossless };

// Which Huffman tables it needs; differences are coded as those of DC coefficients are.
constexpr bool codesDcTable(ScanKind kind)
{
    return kind == ScanKind::sequential || kind == ScanKind::dcFirst || kind == ScanKind::lossless;
}
constexpr bool codesAcTable(ScanKind kind)
{
    return kind == ScanKind::sequential || kind == ScanKind::acFirst || kind == ScanKind::acRefine;
}

// Of a progressive scan, by its first coefficient and what came before (Ss, Ah).
constexpr ScanKind scanKind(int first, int high)
{
    if (first == 0) return high == 0 ? ScanKind::dcFirst : ScanKind::dcRefine;
    return high == 0 ? ScanKind::acFirst : ScanKind::acRefine;
}

// Low bits that a scan may leave to later ones.
inline constexpr int kMaxPointTransform = 13;

struct ScanHeader {
    struct Component {
        int index = 0; // in the frame
        int dcTable = 0, acTable = 0;
    };
    std::vector<Component> components;
    ScanKind kind = ScanKind::sequential;
    int first = 0, last = 63, high = 0, low = 0; // Ss, Se, Ah, Al
    int predictor = 0, pointTransform = 0;       // of a lossless scan, in the place of Ss and Al
    size_t dataAt = 0;                           // where the entropy-coded data begins
};

// Reads headers from scan to scan, and keeps the tables that are in force.
class Headers {
public:
    // Throws CodecError unless the file begins as JPEG files do.
    explicit Headers(Bytes file);

    // Reads on from byte `from` to the next scan; nothing at the end of the picture. Throws CodecError for headers that
    // break the rules, and where the end of the picture is missing.
    std::optional<ScanHeader> nextScan(size_t from);

    const Info& info() const { return info_; }
    const QuantizerSteps& quantizer(const Component& component) const;
    const HuffmanLists& dcTable(int slot) const;
    const HuffmanLists& acTable(int slot) const { return huffman("AC", ac_[slot]); }
    int restartInterval() const { return restartInterval_; }
    size_t framePosition() const { return framePosition_; }

private:
    static const HuffmanLists& huffman(const char* kind, const std::optional<HuffmanLists>& table);
    void read(const Segment& segment);
    void readFrame(const Segment& segment);
    void readComponents(Fields& fields, int count);
    void readQuantizers(const Segment& segment);
    void readHuffmanTables(const Segment& segment);
    void readApplication(const Segment& segment);
    ScanHeader readScan(const Segment& segment) const;
    void checkMcu(Fields& fields, const ScanHeader& scan) const;
    void readProgression(Fields& fields, ScanHeader& scan) const;
    void readLossless(Fields& fields, ScanHeader& scan) const;
    int linesBehindScan(size_t from) const;

    Bytes file_;
    Info info_;
    std::array<std::optional<QuantizerSteps>, 4> quantizers_;
    // A file without tables means the typical ones, as in motion JPEG.
    std::array<std::optional<HuffmanLists>, 4> dc_ = {kTypicalDc[0], kTypicalDc[1]};
    std::array<std::optional<HuffmanLists>, 4> ac_ = {kTypicalAc[0], kTypicalAc[1]};
    int restartInterval_ = 0;
    size_t framePosition_ = 0;
};

}
