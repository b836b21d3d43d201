// SPDX-License-Identifier: Apache-2.0
#include "samples.h"

#include <stdlib.h>
#include <string.h>

#include <algorithm>
#include <filesystem>
#include <random>

#include "codec/base/file_io.h"
#include "codec/formats/picture_file.h"
#include "contest.h"

namespace qel::bench {
namespace {

// Smooth noise in octaves, each half as strong as the one before and twice as fine: the spectrum of photographs.
struct Terrain {
    explicit Terrain(unsigned seed)
    {
        std::mt19937 random(seed);
        for (auto& value : lattice) value = float(random()) / 4294967296.0f;
    }
    float at(float x, float y) const
    {
        float sum = 0, weight = 0.5f;
        for (int octave = 0; octave < 8; ++octave, x *= 2, y *= 2, weight *= 0.5f) sum += weight * smooth(x, y);
        return sum;
    }

private:
    float lattice[64 * 64];

    float corner(int x, int y) const { return lattice[(y & 63) * 64 + (x & 63)]; }
    float smooth(float x, float y) const
    {
        int i = int(x), j = int(y);
        float a = x - float(i), b = y - float(j);
        a = a * a * (3 - 2 * a), b = b * b * (3 - 2 * b);
        float upper = corner(i, j) + a * (corner(i + 1, j) - corner(i, j));
        float lower = corner(i, j + 1) + a * (corner(i + 1, j + 1) - corner(i, j + 1));
        return upper + b * (lower - upper);
    }
};

codec::Picture rgb(int width, int height) { return {width, height, codec::ColourSpace::rgb, 8}; }

// Terrain under a sky, with hard edges where they meet.
codec::Picture draw(int width, int height, unsigned seed)
{
    codec::Picture picture = rgb(width, height);
    Terrain shape(seed), light(seed + 1);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            float u = float(x) / float(width), v = float(y) / float(height);
            bool sky = v < 0.15f + 0.4f * shape.at(4 * u, 0);
            float tone = sky ? 0.75f - 0.3f * v : shape.at(8 * u, 8 * v), tint = light.at(3 * u, 3 * v);
            float colour[3] = {tone * (0.6f + 0.6f * tint), tone, tone * (sky ? 1.3f : 0.9f - 0.5f * tint)};
            for (int c = 0; c < 3; ++c) picture.row(y)[3 * x + c] = uint8_t(std::clamp(colour[c], 0.0f, 1.0f) * 255);
        }
    return picture;
}

std::filesystem::path photos()
{
    const char* named = getenv("QELJX_TEST_DATA");
    return std::filesystem::path(named ? named : "../shared/data") / "photos";
}

}

const std::vector<NamedPicture>& pictures()
{
    static const std::vector<NamedPicture> all = [] {
        std::vector<NamedPicture> chosen;
        if (std::filesystem::exists(photos())) {
            for (std::string name : {"astronaut", "coffee", "flower"})
                chosen.push_back({name, codec::loadPicture(codec::readFile(photos() / (name + ".ppm"))).picture});
        } else {
            chosen.push_back({"drawn1", draw(512, 512, 1)});
            chosen.push_back({"drawn2", draw(600, 400, 2)});
            chosen.push_back({"drawn3", draw(1800, 1200, 3)});
        }
        return chosen;
    }();
    return all;
}

const NamedPicture& noise()
{
    static const NamedPicture made = [] {
        NamedPicture named = {"noise", rgb(512, 512)};
        std::mt19937 random(7);
        for (size_t i = 0; i < named.picture.sizeInBytes(); ++i) named.picture.row(0)[i] = uint8_t(random());
        return named;
    }();
    return made;
}

codec::Picture crop(const codec::Picture& picture, int width, int height)
{
    require(width <= picture.width() && height <= picture.height(), "the picture is too small");
    codec::Picture part = rgb(width, height);
    for (int y = 0; y < height; ++y) memcpy(part.row(y), picture.row(y), part.step());
    return part;
}

codec::Picture greyOf(const codec::Picture& picture, int width, int height)
{
    codec::Picture grey = crop(picture, width, height);
    for (int y = 0; y < height; ++y)
        for (uint8_t *p = grey.row(y), *end = p + grey.step(); p < end; p += 3) p[0] = p[2] = p[1];
    return grey;
}

codec::Picture mosaicOf(const codec::Picture& picture, int width, int height)
{
    codec::Picture mosaic = greyOf(picture, width, height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) memset(mosaic.row(y) + 3 * x, mosaic.row(y & ~7)[3 * (x & ~7)], 3);
    return mosaic;
}

codec::Picture repeated(const codec::Picture& picture, int across, int down)
{
    codec::Picture all = rgb(picture.width() * across, picture.height() * down);
    for (int y = 0; y < all.height(); ++y)
        for (int i = 0; i < across; ++i)
            memcpy(all.row(y) + picture.step() * size_t(i), picture.row(y % picture.height()), picture.step());
    return all;
}

}
