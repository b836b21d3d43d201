// SPDX-License-Identifier: Apache-2.0
// The scans of a file, one behind the other: which are taken, what they have begun with, and what was wrong with them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "codec/base/decoded_picture.h"
#include "codec/jpeg/decode/scan.h"
#include "codec/jpeg/headers.h"
#include "codec/jpeg/progression.h"

namespace qel::codec::jpeg {

class Scans {
public:
    explicit Scans(Bytes file);

    const Headers& headers() const { return headers_; }
    const Info& info() const { return headers_.info(); }
    const ScanHeader& first() const { return first_; }
    // Of each component, as they are at its first scan.
    const std::vector<QuantizerSteps>& steps() const { return steps_; }
    Warnings& warnings() { return warnings_; }

    // False if the scan, and all behind it, are to be left out: sequential files hold each component once.
    bool take(const ScanHeader& scan);
    // Notes what was wrong with the scan, and reads on to the next.
    std::optional<ScanHeader> behind(const ScanDecoder& coder);
    // Headers that are damaged behind a scan may be its own data, damaged: they end the picture, but do not take away
    // what there is.
    std::optional<ScanHeader> from(size_t position);
    void noteMissing();

    // `decode(coder)` for each scan that is taken.
    template <class Decode> void forEach(Decode decode)
    {
        for (std::optional<ScanHeader> scan = first_; scan && take(*scan);) {
            ScanDecoder coder(file_, headers_, *scan);
            decode(coder);
            scan = behind(coder);
        }
        noteMissing();
    }

private:
    Bytes file_;
    Headers headers_;
    ScanHeader first_;
    Progression progression_;
    int64_t blocksPassed_ = 0; // by scans
    std::vector<QuantizerSteps> steps_;
    Warnings warnings_;
};

}
