// SPDX-License-Identifier: Apache-2.0
// Aligned memory.
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>

#include "qeljx/support.h"

namespace {

constexpr size_t kAlignment = 32;
// Room for the alignment (31 bytes), for a slot of 4 bytes, and one to spare. A slot of 8 bytes fits where the system's
// blocks are aligned to 16: the result then lies 16 or 32 bytes into the block.
constexpr size_t kMargin = 36;

}

uint8_t* qelsMalloc_8u(int len)
{
    if (len < 1) return nullptr;
    void* block = malloc(size_t(len) + kMargin);
    if (block == nullptr) return nullptr;
    auto* result = (uint8_t*)((uintptr_t(block) + kMargin - 1) & ~uintptr_t(kAlignment - 1));
    memcpy(result - sizeof block, &block, sizeof block);
    return result;
}

void qelsFree(void* ptr)
{
    if (ptr == nullptr) return;
    void* block;
    memcpy(&block, (uint8_t*)ptr - sizeof block, sizeof block);
    free(block);
}
