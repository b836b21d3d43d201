// SPDX-License-Identifier: Apache-2.0
// A caller in C++.
#include <qeljx.h>

#include <cstdio>
#include <memory>

int main()
{
    struct Free {
        void operator()(uint8_t* memory) const { qelsFree(memory); }
    };
    std::unique_ptr<uint8_t, Free> memory(qelsMalloc_8u(100));
    if (!memory || qelsZero_8u(memory.get(), 100) != qelStsNoErr) return 1;
    std::printf("%s\n", qeljGetLibVersion()->name);
    return qelsZero_8u(nullptr, 100) == qelStsNullPtrErr ? 0 : 2;
}
