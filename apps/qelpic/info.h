// SPDX-License-Identifier: Apache-2.0
// Parts of `qelpic info`.
#pragma once

#include <string>
#include <variant>
#include <vector>

#include "codec/base/metadata.h"
#include "codec/base/picture.h"
#include "codec/j2k/decode/file.h"
#include "codec/jpeg/info.h"
#include "qelpic/json.h"

namespace qel::qelpic {

// A picture in another kind of file than the coded ones.
struct PlainPicture {
    const char* format;
    codec::Picture picture;
};

struct Description {
    std::string path;
    std::vector<uint8_t> file;
    std::variant<codec::jpeg::Info, codec::j2k::File, PlainPicture> headers;
    codec::Metadata metadata;
    double pixels = 0;

    double bitsPerPixel() const { return 8 * double(file.size()) / pixels; }
};

// What the headers say, line by line.
void print(const codec::j2k::File& file);

Json jsonOf(const Description& description);

const char* nameOf(codec::ColourSpace space);
// What a channel is for.
std::string nameOf(const codec::j2k::Jp2Definition& definition);
// Of the bits of a code-block's style.
std::vector<const char*> namesOfStyle(int style);

}
