// SPDX-License-Identifier: Apache-2.0
// Whatever the bytes, the JPEG 2000 reader finds code-blocks whose bytes lie in the file, or throws CodecError.
#include <cstdlib>

#include "codec/j2k/decode/file.h"
#include "codec/j2k/decode/packet_reader.h"
#include "target.h"

using namespace qel::codec;

void tryFile(Bytes file)
{
    auto check = [&](const j2k::Band&, const j2k::CodeBlock& block) {
        for (Bytes piece : block.data)
            if (piece.data() < file.data() || piece.data() + piece.size() > file.data() + file.size()) std::abort();
    };
    j2k::File opened = j2k::open(file);
    for (auto& [index, parts] : opened.codestream->tileParts()) {
        j2k::Tile tile = j2k::readTile(*opened.codestream, index);
        for (const j2k::TileComponent& component : tile.components)
            for (const j2k::Resolution& resolution : component.resolutions) resolution.forCodedBlocks(check);
    }
}
