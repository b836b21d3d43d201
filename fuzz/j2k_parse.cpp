// Whatever the bytes, the JPEG 2000 reader finds code-blocks whose bytes lie in the file, or throws CodecError.
#include <cstdlib>

#include "codec/j2k/decode/file.h"
#include "codec/j2k/decode/packet_reader.h"
#include "target.h"

using namespace qel::codec;

void tryFile(Bytes file)
{
    auto check = [&](const J2kBand&, const J2kCodeBlock& block) {
        for (Bytes piece : block.data)
            if (piece.data() < file.data() || piece.data() + piece.size() > file.data() + file.size()) std::abort();
    };
    J2kFile opened = openJ2k(file);
    for (auto& [index, parts] : opened.codestream->tileParts()) {
        J2kTile tile = readJ2kTile(*opened.codestream, index);
        for (const J2kTileComponent& component : tile.components)
            for (const J2kResolution& resolution : component.resolutions) resolution.forCodedBlocks(check);
    }
}
