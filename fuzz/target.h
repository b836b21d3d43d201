// SPDX-License-Identifier: Apache-2.0
// The entry of a fuzz target: whatever the bytes, tryFile() returns or throws CodecError.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "codec/base/bytes.h"
#include "codec/base/error.h"

void tryFile(qel::codec::Bytes file);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    try {
        tryFile({data, size});
    } catch (const qel::codec::CodecError&) {}
    return 0;
}
