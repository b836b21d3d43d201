// Real JPEG 2000 files: decoded as well as the manifest asks for, and damaged ones refused or read as far as they go.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>
#include <cmath>

#include "codec/compare.h"
#include "codec/file_io.h"
#include "codec/j2k_reader.h"
#include "codec/pnm.h"
#include "manifest.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

// What is wrong with files that decoders read nonetheless.
const std::map<std::string, std::string> kKnownDamage = {
    {"j2k_field/Marrin.jp2", "12 of 24 packets are missing"}, // those of the second layer
};

class Check {
public:
    explicit Check(const Row& row) : row_(row), file_(readFile(pathOf("file")))
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
        if (check == "component") return expectWithinLimits(component(size_t(number("component"))));
        if (check == "component_sha256") return expectDigest(bytesOf(component(size_t(number("component"))).samples));
        if (check == "all_components_sha256") return expectAllComponents();
        if (check == "picture") return expectPicture();
        if (check == "error")
            EXPECT_FALSE(claimsToBeWhole());
        else if (check == "no_crash")
            claimsToBeWhole();
        else
            ADD_FAILURE() << "unknown check " << check;
    }

private:
    std::string text(const char* column) const { return row_.at(column); }
    int number(const char* column) const { return std::stoi(text(column)); }
    std::string pathOf(const char* column) const { return (dataFolder() / text(column)).string(); }

    void expectKnown(const Warnings& warnings) const
    {
        auto known = kKnownDamage.find(text("file"));
        for (auto& warning : warnings)
            EXPECT_TRUE(known != kKnownDamage.end() && warning.find(known->second) != std::string::npos) << warning;
    }

    PgxPicture component(size_t c) const
    {
        DecodedJ2kComponent decoded = decodeJ2kComponent(file_, c, options_);
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

    void expectWithinLimits(const PgxPicture& decoded) const
    {
        PgxPicture expected = readPgx(readFile(pathOf("reference")));
        ASSERT_EQ(decoded.samples.size(), expected.samples.size());
        double squares = 0, largest = 0;
        for (size_t i = 0; i < decoded.samples.size(); ++i) {
            double error = std::abs(double(decoded.samples[i]) - expected.samples[i]);
            largest = std::max(largest, error);
            squares += error * error;
        }
        EXPECT_LE(largest, std::stod(text("max_error")));
        EXPECT_LE(squares / double(decoded.samples.size()), std::stod(text("max_mse")));
    }

    std::vector<uint8_t> bytesOf(const std::vector<int32_t>& samples) const
    {
        std::vector<uint8_t> bytes;
        for (int32_t sample : samples) {
            if (number("bits") > 8) bytes.push_back(uint8_t(sample >> 8));
            bytes.push_back(uint8_t(sample));
        }
        return bytes;
    }

    void expectDigest(const std::vector<uint8_t>& bytes) const { EXPECT_EQ(digest(bytes), text("sha256")); }

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
        DecodedJ2k decoded = decodeJ2k(file_, options_);
        EXPECT_FALSE(decoded.isDamaged);
        Difference d = compare(decoded.picture, readPnm(readFile(pathOf("reference")))).whole;
        EXPECT_LE(d.largestError, std::stod(text("max_error")));
        EXPECT_LE(d.meanSquaredError, std::stod(text("max_mse")));
    }

    // Neither an error nor a damaged picture.
    bool claimsToBeWhole() const
    {
        try {
            return !decodeJ2k(file_).isDamaged;
        } catch (const CodecError&) {
            return false;
        }
    }

    Row row_;
    std::vector<uint8_t> file_;
    J2kDecodeOptions options_;
    int shift_ = 0;
};

class J2kManifest : public testing::TestWithParam<const char*> {};

TEST_P(J2kManifest, EveryCheckHolds)
{
    if (!std::filesystem::exists(dataFolder() / "manifest.csv")) GTEST_SKIP() << "no test data in " << dataFolder();
    int done = 0;
    for (const Row& row : rowsOf(GetParam())) {
        SCOPED_TRACE(row.at("id"));
        auto start = std::chrono::steady_clock::now();
        try {
            Check(row).run();
        } catch (const std::exception& error) {
            ADD_FAILURE() << error.what();
        }
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
        ++done;
    }
    rusage used;
    getrusage(RUSAGE_SELF, &used);
    EXPECT_LT(used.ru_maxrss, 2 << 20) << "KiB of memory";
    std::cout << done << " checks, " << used.ru_maxrss / 1024 << " MiB\n";
}

INSTANTIATE_TEST_SUITE_P(Groups, J2kManifest,
                         testing::Values("j2k_conformance", "j2k_coded", "j2k_field", "j2k_damaged"),
                         [](const auto& group) { return std::string(group.param); });

}
