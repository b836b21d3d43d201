// SPDX-License-Identifier: Apache-2.0
// Writes the marker segments of a JPEG file (T.81 B.2).
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "codec/base/metadata.h"
#include "codec/jpeg/headers.h"

namespace qel::codec::jpeg {

class SegmentWriter {
public:
    explicit SegmentWriter(std::vector<uint8_t>& out) : out_(out) {}

    void marker(uint8_t code);
    // Densities above 65535 dots per inch are cut to that.
    void jfif(const std::optional<Density>& density);
    void adobe(int transform);
    void quantizer(int slot, const QuantizerSteps& steps);
    void frame(const Info& info);
    // `kind` is 0 for DC, 1 for AC.
    void huffmanTable(int kind, int slot, const HuffmanLists& lists);
    void restartInterval(int mcus);
    void scan(const Info& info, const ScanHeader& scan);

private:
    void begin(uint8_t code, int parameterBytes);
    void u8(int value) { out_.push_back(uint8_t(value)); }
    void u16(int value);
    void text(std::string_view text) { out_.insert(out_.end(), text.begin(), text.end()); }

    std::vector<uint8_t>& out_;
};

}
