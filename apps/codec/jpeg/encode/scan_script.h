// SPDX-License-Identifier: Apache-2.0
// Scan scripts: which coefficients, and which of their bits, each scan of a file holds (T.81 G.1.1).
#pragma once

#include <string_view>
#include <vector>

namespace qel::codec::jpeg {

struct Scan {
    std::vector<int> components;                 // indices into the frame, ascending
    int first = 0, last = 63, high = 0, low = 0; // Ss, Se, Ah, Al: band, bits left out before and after this scan

    // All coefficients with all their bits.
    bool isSequential() const { return first == 0 && last == 63 && high == 0 && low == 0; }
};

using ScanScript = std::vector<Scan>;

// The usual progressive script: first bits of all DC, then AC coefficients band by band with two bits, and with one
// bit, to follow. `hasChrominance`: components 1 and 2 of three are chrominance, whose high frequencies can wait.
ScanScript usualScript(int components, bool hasChrominance);

// Reads a script: entries such as "0,1,2: 0-0, 0, 1;" list components, the band (Ss-Se), Ah and Al; "0;" alone is a
// sequential scan. Commas and dashes are optional, and what stands between # and the end of a line is a comment. Throws
// CodecError with the number of the line for text that is no script.
ScanScript parseScanScript(std::string_view text);

// Throws CodecError with the number of the scan unless the script is legal for a picture of so many components: each
// bit at most once and in the order of T.81, with all DC coefficients among them.
void checkScript(const ScanScript& script, int components);

}
