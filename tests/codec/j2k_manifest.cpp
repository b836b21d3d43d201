// Real JPEG 2000 files: everything in them is read, and damaged ones are refused or read as far as they go.
#include <algorithm>
#include <chrono>
#include <set>

#include "codec/file_io.h"
#include "j2k_reading.h"
#include "manifest.h"

namespace {

using namespace qel::codec;
using namespace qel::test;

// What is wrong with files that decoders read nonetheless.
const std::map<std::string, std::string> kKnownDamage = {
    {"j2k_field/Marrin.jp2", "12 of 24 packets are missing"}, // those of the second layer
};

std::vector<Row> rowsOrSkip(const char* group)
{
    return std::filesystem::exists(dataFolder() / "manifest.csv") ? rowsOf(group) : std::vector<Row>();
}

void expectSize(const Row& row, const J2kSize& size)
{
    if (row.at("component").empty() || !row.at("options").empty()) return;
    size_t c = std::stoul(row.at("component"));
    ASSERT_LT(c, size.components.size());
    EXPECT_EQ(std::to_string(size.component(c).width()), row.at("width"));
    EXPECT_EQ(std::to_string(size.component(c).height()), row.at("height"));
    EXPECT_EQ(std::to_string(size.components[c].precision), row.at("bits"));
    EXPECT_EQ(std::to_string(size.components[c].isSigned), row.at("signed"));
    EXPECT_EQ(std::to_string(size.components.size()), row.at("components"));
}

class J2kFiles : public testing::TestWithParam<const char*> {};

TEST_P(J2kFiles, AllPacketsAreRead)
{
    auto rows = rowsOrSkip(GetParam());
    if (rows.empty()) GTEST_SKIP() << "no test data in " << dataFolder();
    std::set<std::string> done;
    for (const Row& row : rows) {
        const std::string& name = row.at("file");
        SCOPED_TRACE(name);
        auto bytes = readFile((dataFolder() / name).string());
        ReadJ2k read(bytes);
        expectSize(row, read.file.codestream->size());
        if (!done.insert(name).second) continue;
        auto known = kKnownDamage.find(name);
        for (auto& warning : read.warnings)
            EXPECT_TRUE(known != kKnownDamage.end() && warning.find(known->second) != std::string::npos) << warning;
        EXPECT_EQ(read.warnings.size(), known == kKnownDamage.end() ? 0u : 1u);
        EXPECT_EQ(read.tiles.size(), read.file.codestream->size().tiles());
        read.forCodedBlocks([](size_t, auto& band, auto& block) { expectSound(band, block); });
    }
    std::cout << done.size() << " files\n";
}

INSTANTIATE_TEST_SUITE_P(Groups, J2kFiles, testing::Values("j2k_conformance", "j2k_coded", "j2k_field"),
                         [](const auto& group) { return std::string(group.param); });

TEST(J2kDamagedFiles, AreRefusedOrHaveWarnings)
{
    auto rows = rowsOrSkip("j2k_damaged");
    if (rows.empty()) GTEST_SKIP() << "no test data in " << dataFolder();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.at("file"));
        auto bytes = readFile((dataFolder() / row.at("file")).string());
        auto start = std::chrono::steady_clock::now();
        bool isWhole = false;
        try {
            isWhole = ReadJ2k(bytes).warnings.empty();
        } catch (const CodecError&) {}
        EXPECT_FALSE(isWhole && row.at("check") == "error");
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    }
}

}
