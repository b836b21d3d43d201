// A collection of real files with known results: the folder QELJX_TEST_DATA (of the environment or the build) and its
// manifest.
#pragma once

#include <openssl/sha.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

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

}
