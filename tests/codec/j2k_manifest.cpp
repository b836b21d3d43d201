// SPDX-License-Identifier: Apache-2.0
// Real JPEG 2000 files: decoded as well as the manifest asks for, and damaged ones refused or read as far as they go.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cmath>

#include "codec/base/compare.h"
#include "codec/j2k/decode/reader.h"
#include "manifest.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

// What is wrong with files that decoders read nonetheless.
const std::map<std::string, std::string> kKnownDamage = {
    {"j2k_field/Marrin.jp2", "12 of 24 packets are missing"}, // those of the second layer
};

class Check : public ManifestRow {
public:
    explicit Check(const Row& row) : ManifestRow(row)
    {
        for (const std::string& option : split(text("options"), ';')) {
            std::string name = option.substr(0, option.find('=')), value = option.substr(option.find('=') + 1);
            if (name == "reduce")
                options_.reduce = std::stoi(value);
            else if (name == "component_transform")
                options_.transformComponents = false;
            else if (name == "shift")
                shift_ = std::stoi(value);
            else if (name != "window" && name != "rgb") // the size is that of the window; pictures are like that
                ADD_FAILURE() << "unknown option " << option;
        }
    }

    void run() const
    {
        std::string check = text("check");
        if (check == "component") return expectNear(component(size_t(number("component"))));
        if (check == "component_sha256") return expectDigest(bytesOf(component(size_t(number("component"))).samples));
        if (check == "all_components_sha256") return expectAllComponents();
        if (check == "picture") return expectPicture();
        if (check == "error" || check == "no_crash")
            return expectDamage([&] { return !j2k::decode(file()).isDamaged; });
        ADD_FAILURE() << "unknown check " << check;
    }

private:
    void expectKnown(const Warnings& warnings) const
    {
        auto known = kKnownDamage.find(text("file"));
        for (auto& warning : warnings)
            EXPECT_TRUE(known != kKnownDamage.end() && warning.find(known->second) != std::string::npos) << warning;
    }

    PgxPicture component(size_t c) const
    {
        j2k::DecodedComponent decoded = j2k::decodeComponent(file(), c, options_);
        expectKnown(decoded.warnings);
        PgxPicture window = {number("width"), number("height"), number("bits"), decoded.samples.isSigned, {}};
        EXPECT_EQ(window.isSigned, text("signed") == "1");
        EXPECT_EQ(window.precision, decoded.samples.precision - shift_);
        if (text("options").find("window") == std::string::npos) {
            EXPECT_EQ(decoded.samples.width, window.width);
            EXPECT_EQ(decoded.samples.height, window.height);
        }
        for (int y = 0; y < window.height; ++y)
            for (int x = 0; x < window.width; ++x)
                window.samples.push_back(
                    decoded.samples.samples.at(size_t(y) * size_t(decoded.samples.width) + size_t(x)) >> shift_);
        return window;
    }

    void expectNear(const PgxPicture& decoded) const
    {
        PgxPicture expected = readPgx(readFile(pathOf("reference")));
        ASSERT_EQ(decoded.samples.size(), expected.samples.size());
        double squares = 0, largest = 0;
        for (size_t i = 0; i < decoded.samples.size(); ++i) {
            double error = std::abs(double(decoded.samples[i]) - expected.samples[i]);
            largest = std::max(largest, error);
            squares += error * error;
        }
        expectWithinLimits(largest, squares / double(decoded.samples.size()));
    }

    std::vector<uint8_t> bytesOf(const std::vector<int32_t>& samples) const
    {
        return asBytes(samples, number("bits") > 8);
    }
    void expectAllComponents() const
    {
        std::vector<int32_t> all;
        for (int c = 0; c < number("components"); ++c) {
            PgxPicture one = component(size_t(c));
            all.insert(all.end(), one.samples.begin(), one.samples.end());
        }
        expectDigest(bytesOf(all));
    }

    void expectPicture() const
    {
        DecodedPicture decoded = j2k::decode(file(), options_);
        EXPECT_FALSE(decoded.isDamaged);
        expectNearReference(decoded.picture);
    }

    j2k::DecodeOptions options_;
    int shift_ = 0;
};

class J2kManifest : public testing::TestWithParam<const char*> {};

TEST_P(J2kManifest, EveryCheckHolds)
{
    if (!hasTestData()) GTEST_SKIP() << "no test data in " << dataFolder();
    RecordProperty("checks", runGroup<Check>(GetParam()));
    rusage used;
    getrusage(RUSAGE_SELF, &used);
    EXPECT_LT(used.ru_maxrss, 2 << 20) << "KiB of memory";
}

INSTANTIATE_TEST_SUITE_P(Groups, J2kManifest,
                         testing::Values("j2k_conformance", "j2k_coded", "j2k_field", "j2k_damaged"),
                         [](const auto& group) { return std::string(group.param); });

}
