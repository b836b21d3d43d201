// SPDX-License-Identifier: Apache-2.0
// Opening of JPEG 2000 files.
#include "codec/j2k/decode/file.h"

#include <string>

namespace qel::codec::j2k {

namespace {

// The codestream is right where the boxes say otherwise.
void compare(const Jp2File& jp2, const Size& size, Warnings& warnings)
{
    if (jp2.components == 0) return;
    if (jp2.width != size.picture.width() || jp2.height != size.picture.height())
        warnings.push_back("the image header box tells another size, " + std::to_string(jp2.width) + " x " +
                           std::to_string(jp2.height));
    if (size_t(jp2.components) != size.components.size())
        warnings.push_back("the image header box tells another number of components, " +
                           std::to_string(jp2.components));
}

}

bool isJpeg2000(Bytes file)
{
    return isJp2(file) || (isMarker(file, 0, marker::kSoc) && isMarker(file, 2, marker::kSiz));
}

File open(Bytes file)
{
    File opened;
    size_t begin = 0, end = file.size();
    if (isJp2(file)) {
        const Jp2File& jp2 = opened.jp2.emplace(readJp2(file));
        begin = jp2.codestreamBegin;
        end = jp2.codestreamEnd;
        opened.warnings = jp2.warnings;
    }
    opened.codestream = std::make_unique<Codestream>(file, begin, end);
    const Warnings& more = opened.codestream->warnings();
    opened.warnings.insert(opened.warnings.end(), more.begin(), more.end());
    if (opened.jp2) compare(*opened.jp2, opened.codestream->size(), opened.warnings);
    return opened;
}

const char* nameOf(Order order)
{
    const char* names[] = {"LRCP", "RLCP", "RPCL", "PCRL", "CPRL"};
    return names[int(order)];
}

const char* nameOf(Quantizer quantizer)
{
    const char* names[] = {"none", "derived", "expounded"};
    return names[int(quantizer)];
}

}
