// SPDX-License-Identifier: Apache-2.0
// A collection of real files with known results: the folder QELJX_TEST_DATA (of the environment or the build) and its
// manifest.
#pragma once

#include <gtest/gtest.h>
#include <openssl/sha.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "codec/base/compare.h"
#include "codec/base/error.h"
#include "codec/base/file_io.h"
#include "codec/formats/pnm.h"

namespace qel::test {

inline std::filesystem::path dataFolder()
{
    const char* named = std::getenv("QELJX_TEST_DATA");
    return named ? named : QELJX_TEST_DATA;
}

// One line of the manifest: values by the names of the columns.
using Row = std::map<std::string, std::string>;

inline std::vector<std::string> split(const std::string& text, char at)
{
    std::vector<std::string> parts;
    std::istringstream stream(text);
    for (std::string part; std::getline(stream, part, at);) parts.push_back(part);
    return parts;
}

inline std::vector<Row> rowsOf(const std::string& group)
{
    std::ifstream file(dataFolder() / "manifest.csv");
    std::string line;
    std::getline(file, line);
    auto names = split(line, ',');
    std::vector<Row> rows;
    while (std::getline(file, line)) {
        auto values = split(line, ',');
        values.resize(names.size());
        Row row;
        for (size_t i = 0; i < names.size(); ++i) row[names[i]] = values[i];
        if (row["group"] == group) rows.push_back(row);
    }
    return rows;
}

// SHA-256, as the manifest has it.
inline std::string digest(const std::vector<uint8_t>& bytes)
{
    unsigned char hash[SHA256_DIGEST_LENGTH];
    SHA256(bytes.data(), bytes.size(), hash);
    std::string text;
    for (unsigned char byte : hash) {
        text += "0123456789abcdef"[byte >> 4];
        text += "0123456789abcdef"[byte & 15];
    }
    return text;
}

// Samples as bytes, one or two each.
template <class Samples> std::vector<uint8_t> asBytes(const Samples& samples, bool wide, bool lowFirst = false)
{
    std::vector<uint8_t> bytes;
    for (auto sample : samples) {
        uint8_t low = uint8_t(sample), high = uint8_t(sample >> 8);
        if (wide && !lowFirst) bytes.push_back(high);
        bytes.push_back(low);
        if (wide && lowFirst) bytes.push_back(high);
    }
    return bytes;
}

// A row and its file, and what the checks of all formats have in common.
class ManifestRow {
public:
    explicit ManifestRow(const Row& row) : row_(row), file_(codec::readFile(pathOf("file"))) {}

protected:
    std::string text(const char* column) const { return row_.at(column); }
    int number(const char* column) const { return std::stoi(text(column)); }
    std::string pathOf(const char* column) const { return (dataFolder() / text(column)).string(); }
    const std::vector<uint8_t>& file() const { return file_; }

    void expectWithinLimits(double largestError, double meanSquaredError) const
    {
        EXPECT_LE(largestError, std::stod(text("max_error")));
        EXPECT_LE(meanSquaredError, std::stod(text("max_mse")));
    }
    void expectNearReference(const codec::Picture& picture) const
    {
        auto difference = codec::compare(picture, codec::readPnm(codec::readFile(pathOf("reference")))).whole;
        expectWithinLimits(difference.largestError, difference.meanSquaredError);
    }
    void expectDigest(const std::vector<uint8_t>& bytes) const { EXPECT_EQ(digest(bytes), text("sha256")); }

    // isWhole() is false for a picture with damage, and may throw; files with errors are not to be taken for whole.
    template <class IsWhole> void expectDamage(IsWhole isWhole) const
    {
        bool claimed = false;
        try {
            claimed = isWhole();
        } catch (const codec::CodecError&) {}
        EXPECT_FALSE(claimed && text("check") == "error");
    }

private:
    Row row_;
    std::vector<uint8_t> file_;
};

// Runs all checks of a group, each within some seconds; returns their number.
template <class Check> int runGroup(const std::string& group)
{
    int done = 0;
    for (const Row& row : rowsOf(group)) {
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
    std::cout << done << " checks\n";
    return done;
}

inline bool hasTestData() { return std::filesystem::exists(dataFolder() / "manifest.csv"); }

}
