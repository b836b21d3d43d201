// SPDX-License-Identifier: Apache-2.0
// Files with a few bits turned over, or cut short: decoders end in a picture or in a CodecError, never otherwise.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "codec/base/error.h"
#include "random.h"

namespace qel::test {

// decode(file) for 100 mutations of a sound file, half of them within its first `headers` bytes, a quarter cut.
template <class Decode> void everyMutation(const std::vector<uint8_t>& sound, size_t headers, Decode decode)
{
    Random random(unsigned(sound.size()));
    const int size = int(sound.size());
    for (int round = 0; round < 100; ++round) {
        std::vector<uint8_t> file = sound;
        int reach = round % 2 ? size : std::min(int(headers), size);
        for (int flips = random.between(1, 8); flips > 0; --flips)
            file[size_t(random.between(0, reach - 1))] ^= uint8_t(1 << random.between(0, 7));
        if (round % 4 == 0) file.resize(size_t(random.between(0, size)));
        try {
            decode(file);
        } catch (const codec::CodecError&) {}
    }
}

}
