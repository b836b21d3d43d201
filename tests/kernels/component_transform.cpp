// Component transform kernels: every build equals the scalar one.
#include "jpeg2k/component_transform.h"

#include "kernels/every_build.h"

using namespace qel;
using namespace qel::test;

namespace {

// Full-range integers, and floats of which no sum overflows; at any address.
void fill(Random& random, int32_t* p, size_t count) { random.fill(p, count); }
void fill(Random& random, float* p, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        float value = float(random.between(-(1 << 24), 1 << 24)) / 4096;
        memcpy(p + i, &value, sizeof value);
    }
}

// Rows of each layout, before a faulting page; planes and pixels end at different addresses.
template <class T> void rows(ComponentTransform<T> ComponentTransformKernels::*of)
{
    const auto& scalar = ComponentTransformKernels::scalar.*of;
    everyBuild<ComponentTransformKernels>([&](const ComponentTransformKernels& table) {
        Random random(1);
        everyLength([&](int width) {
            size_t n = size_t(width), offset = n % 5;
            Guarded<T> pixels(3 * n, Fault::behind, offset), pixels2(3 * n);
            Guarded<T> a(n), b(n, Fault::behind, 1), c(n, Fault::behind, offset), a2(n), b2(n), c2(n);
            auto compare = [&](const char* what) {
                bool same = !memcmp(a.data(), a2.data(), 4 * n) && !memcmp(b.data(), b2.data(), 4 * n) &&
                            !memcmp(c.data(), c2.data(), 4 * n) && !memcmp(pixels.data(), pixels2.data(), 12 * n);
                ASSERT_TRUE(same) << what << ' ' << width;
                ASSERT_TRUE(a.intact() && b.intact() && c.intact() && pixels.intact()) << what << ' ' << width;
            };
            fill(random, pixels.data(), 3 * n);
            memcpy(pixels2.data(), pixels.data(), 12 * n);
            (table.*of).forward(pixels.data(), a.data(), b.data(), c.data(), width);
            scalar.forward(pixels2.data(), a2.data(), b2.data(), c2.data(), width);
            compare("to planes");
            (table.*of).inverse(a.data(), b.data(), c.data(), pixels.data(), width);
            scalar.inverse(a2.data(), b2.data(), c2.data(), pixels2.data(), width);
            compare("to pixels");
            (table.*of).inverseInPlace(a.data(), b.data(), c.data(), width);
            scalar.inverseInPlace(a2.data(), b2.data(), c2.data(), width);
            compare("inverse in place");
            (table.*of).forwardInPlace(a.data(), b.data(), c.data(), width);
            scalar.forwardInPlace(a2.data(), b2.data(), c2.data(), width);
            compare("forward in place");
        });
    });
}

TEST(ComponentTransformKernels, Reversible) { rows(&ComponentTransformKernels::reversible); }
TEST(ComponentTransformKernels, Irreversible) { rows(&ComponentTransformKernels::irreversible); }

}
