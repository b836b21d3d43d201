// Whatever the bytes, the JPEG 2000 reader finds code-blocks whose bytes lie in the file, or throws CodecError.
#include <cstdlib>

#include "codec/error.h"
#include "codec/j2k_file.h"
#include "codec/j2k_packets.h"

using namespace qel::codec;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Bytes bytes(data, size);
    auto check = [&](const J2kBand&, const J2kCodeBlock& block) {
        for (Bytes piece : block.data)
            if (piece.data() < data || piece.data() + piece.size() > data + size) std::abort();
    };
    try {
        J2kFile file = openJ2k(bytes);
        for (auto& [index, parts] : file.codestream->tileParts()) {
            J2kTile tile = readJ2kTile(*file.codestream, index);
            for (const J2kTileComponent& component : tile.components)
                for (const J2kResolution& resolution : component.resolutions) resolution.forCodedBlocks(check);
        }
    } catch (const CodecError&) {}
    return 0;
}
