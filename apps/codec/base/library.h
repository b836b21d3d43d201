// SPDX-License-Identifier: Apache-2.0
// Owners for the library's objects, and the one place where an unexpected status becomes an error.
#pragma once

#include <qeljx.h>

#include <memory>
#include <string>

#include "codec/base/error.h"

namespace qel::codec {

// For calls that cannot fail with the arguments that the codec gives them, short of memory running out.
inline void check(QelStatus status)
{
    if (status < 0) throw CodecError("the library reports status " + std::to_string(status));
}

// Pixels of one call of a colour conversion: few enough that the library keeps to this thread, and a multiple of what
// its kernels take at a time.
inline constexpr int kConvertedAtOnce = 8192;

template <auto Free> struct Freed {
    void operator()(auto* object) const { Free(object); }
};

using DecodeSpec = std::unique_ptr<QelDecodeHuffmanSpec, Freed<qeliDecodeHuffmanSpecFree_JPEG_8u>>;
using DecodeState = std::unique_ptr<QelDecodeHuffmanState, Freed<qeliDecodeHuffmanStateFree_JPEG_8u>>;
using EncodeSpec = std::unique_ptr<QelEncodeHuffmanSpec, Freed<qeliEncodeHuffmanSpecFree_JPEG_8u>>;
using EncodeState = std::unique_ptr<QelEncodeHuffmanState, Freed<qeliEncodeHuffmanStateFree_JPEG_8u>>;

// Owns what an allocating initialiser makes, also where that reports that the lists it was given are bad.
template <class Owner, class Init, class... Arguments> Owner make(Init init, Arguments... arguments)
{
    typename Owner::pointer object = nullptr;
    QelStatus status = init(arguments..., &object);
    Owner owner(object);
    check(status);
    return owner;
}

}
