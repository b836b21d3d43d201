// SPDX-License-Identifier: Apache-2.0
// Draws a picture to try codecs on: the same on every run, with what photographs have. A sky of smooth gradients, hard
// ridges, fine texture, saturated edges, and the noise of a sensor.
// Usage: qelpic_draw WIDTH HEIGHT OUTPUT
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "codec/base/error.h"
#include "codec/base/parallel.h"
#include "codec/formats/picture_file.h"

namespace {

using qel::codec::Picture;

struct Colour {
    float r, g, b;
};

Colour mix(Colour a, Colour b, float t)
{
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

float smooth(float low, float high, float v)
{
    float t = std::clamp((v - low) / (high - low), 0.f, 1.f);
    return t * t * (3 - 2 * t);
}

// A number from 0 to 1 that looks random, the same for the same point.
float scatter(int x, int y)
{
    uint32_t h = uint32_t(x) * 0x9E3779B1u ^ uint32_t(y) * 0x85EBCA77u;
    h = (h ^ h >> 15) * 0xC2B2AE3Du;
    h = (h ^ h >> 13) * 0x27D4EB2Fu;
    return float((h ^ h >> 16) >> 8) / float(1 << 24);
}

// Scattered values at whole points, joined smoothly.
float waves(float x, float y)
{
    int x0 = int(std::floor(x)), y0 = int(std::floor(y));
    float u = smooth(0, 1, x - float(x0)), v = smooth(0, 1, y - float(y0));
    float above = std::lerp(scatter(x0, y0), scatter(x0 + 1, y0), u);
    float below = std::lerp(scatter(x0, y0 + 1), scatter(x0 + 1, y0 + 1), u);
    return std::lerp(above, below, v);
}

// Waves upon waves, each of half the size and height; from 0 to 1.
float texture(float x, float y, int octaves)
{
    float sum = 0, height = 0.5f;
    for (int i = 0; i < octaves; ++i, height /= 2, x = 2 * x + 17, y = 2 * y + 31) sum += height * waves(x, y);
    return sum;
}

// The scene at x (0 to the aspect ratio) and y (0 at the top, 1 at the bottom).
class Scene {
public:
    explicit Scene(float aspect) : sunX_(aspect * 0.7f) {}

    Colour at(float x, float y) const
    {
        constexpr float kShore = 0.62f;
        return y < kShore ? land(x, y) : water(x, y, kShore);
    }

private:
    Colour sky(float x, float y) const
    {
        float distance = std::hypot(x - sunX_, y - 0.24f);
        Colour c = mix({0.16f, 0.33f, 0.66f}, {0.95f, 0.76f, 0.58f}, smooth(0, 0.6f, y));
        c = mix(c, {1, 0.97f, 0.9f}, 0.8f * smooth(0.45f, 0.6f, texture(3 * x, 9 * y, 6)) * smooth(0.55f, 0.1f, y));
        c = mix(c, {1, 0.9f, 0.6f}, 0.7f * std::exp(-5 * distance));
        return mix({1, 0.98f, 0.88f}, c, smooth(0.045f, 0.047f, distance));
    }

    Colour land(float x, float y) const
    {
        Colour c = sky(x, y);
        for (int ridge = 0; ridge < 3; ++ridge) {
            float top =
                0.38f + 0.08f * float(ridge) - 0.22f * (texture(2.1f * x + 9 * float(ridge), float(ridge), 8) - 0.5f);
            if (y < top) continue;
            float grain = texture(40 * x, 40 * y + 30 * x, 5);
            Colour rock = mix({0.12f, 0.17f, 0.2f}, {0.42f, 0.44f, 0.36f}, grain);
            Colour snow = mix(rock, {0.95f, 0.96f, 1}, smooth(0.5f, 0.6f, grain + 3 * (0.36f - y)));
            c = mix(snow, {0.6f, 0.66f, 0.78f}, 0.55f - 0.25f * float(ridge));
        }
        return y > 0.565f ? houses(x, y, c) : c;
    }

    // A row of houses on the shore: flat saturated walls, dark windows, hard edges.
    Colour houses(float x, float y, Colour behind) const
    {
        constexpr float kWidth = 0.045f;
        int house = int(x / kWidth);
        float within = x / kWidth - float(house), top = 0.575f + 0.025f * scatter(house, 1);
        if (scatter(house, 2) < 0.35f || y < top) return behind;
        bool isWindow = std::fmod(within * 4 + 0.25f, 1.f) < 0.45f && std::fmod((y - top) * 90, 1.f) > 0.5f;
        if (isWindow) return {0.1f, 0.1f, 0.14f};
        return {0.3f + 0.6f * scatter(house, 3), 0.15f + 0.6f * scatter(house, 4), 0.15f + 0.5f * scatter(house, 5)};
    }

    // The mirrored land, moved and darkened by ripples, and reeds in front.
    Colour water(float x, float y, float shore) const
    {
        float depth = (y - shore) / (1 - shore);
        float ripple = texture(6 * x, 60 * (y - shore) / (0.2f + depth), 5) - 0.5f;
        Colour c =
            mix(land(x + 0.05f * ripple, 2 * shore - y + 0.08f * ripple), {0.05f, 0.16f, 0.24f}, 0.35f + 0.4f * depth);
        float reed = texture(220 * x + 25 * y, 6 * y, 3);
        float height = 0.9f - 0.12f * texture(5 * x, 4, 4);
        return mix(c, mix({0.05f, 0.09f, 0.03f}, {0.55f, 0.6f, 0.2f}, reed),
                   smooth(height, height + 0.06f, y + 0.1f * reed));
    }

    float sunX_;
};

// Eight bits, with noise that is stronger where it is bright, as that of a sensor.
uint8_t sample(float light, float noise)
{
    light = std::clamp(light, 0.f, 1.f);
    return uint8_t(std::clamp(255 * light + 5 * std::sqrt(0.1f + light) * (noise - 0.5f) + 0.5f, 0.f, 255.f));
}

Picture draw(int width, int height)
{
    Picture picture(width, height, qel::codec::ColourSpace::rgb, 8);
    Scene scene(float(width) / float(height));
    auto drawRow = [&](int y) {
        uint8_t* row = picture.row(y);
        for (int x = 0; x < width; ++x) {
            Colour c = scene.at(float(x) / float(height), float(y) / float(height));
            const float light[] = {c.r, c.g, c.b};
            for (int i = 0; i < 3; ++i) row[3 * x + i] = sample(light[i], scatter(3 * x + i, -1 - y));
        }
    };
    int threads = qel::codec::threadsFor(uint64_t(width) * height);
    qel::codec::withThreads(threads, [&] { qel::codec::forEachInParallel(height, threads, drawRow); });
    return picture;
}

}

int main(int argc, char** argv)
{
    int width = argc == 4 ? std::atoi(argv[1]) : 0, height = argc == 4 ? std::atoi(argv[2]) : 0;
    if (width < 1 || height < 1) {
        std::fputs("usage: qelpic_draw WIDTH HEIGHT OUTPUT\n", stderr);
        return 2;
    }
    try {
        qel::codec::storePicture(draw(width, height), argv[3]);
        return 0;
    } catch (const qel::codec::CodecError& error) {
        std::fprintf(stderr, "qelpic_draw: %s: %s\n", argv[3], error.what());
        return 1;
    }
}
