// SPDX-License-Identifier: Apache-2.0
// Runs qelpic and other programs in a folder with a drawn picture.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace qel::test {

namespace fs = std::filesystem;

inline std::string textOf(const fs::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

struct Outcome {
    int exitCode;
    std::string output, errors;
};

// A folder of its own with a drawn picture, photo.png.
class Qelpic : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        std::string name = (fs::temp_directory_path() / "qelpic-test-XXXXXX").string();
        folder_ = mkdtemp(name.data());
        ASSERT_EQ(shell(QELPIC_DRAW " 160 120 photo.png").exitCode, 0);
        ASSERT_EQ(qelpic("encode photo.png photo.jpg").exitCode, 0);
    }
    static void TearDownTestSuite() { fs::remove_all(folder_); }

    static Outcome shell(const std::string& command)
    {
        std::string full = "cd " + folder_.string() + " && { " + command + "; } >.output 2>.errors </dev/null";
        int status = std::system(full.c_str());
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, textOf(folder_ / ".output"), textOf(folder_ / ".errors")};
    }
    static Outcome qelpic(const std::string& arguments) { return shell(QELPIC " " + arguments); }
    // Fails with one line on standard error that begins with `line`, and nothing else.
    static void expectError(const std::string& arguments, int exitCode, const std::string& line)
    {
        Outcome outcome = qelpic(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode) << arguments;
        EXPECT_EQ(outcome.errors.substr(0, 8 + line.size()), "qelpic: " + line) << arguments;
        EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << outcome.errors;
        EXPECT_EQ(outcome.output, "") << arguments;
    }
    // Encodes without a word, and `info` says something of the file.
    static void expectEncoded(const std::string& arguments, const std::string& file, const std::string& info)
    {
        Outcome encoded = qelpic("encode " + arguments);
        EXPECT_EQ(encoded.exitCode, 0) << arguments;
        EXPECT_EQ(encoded.errors, "") << arguments;
        EXPECT_NE(qelpic("info " + file).output.find(info), std::string::npos) << arguments;
    }

    // The overall PSNR that `compare` prints.
    static double psnr(const std::string& a, const std::string& b)
    {
        Outcome outcome = qelpic("compare " + a + " " + b);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        size_t all = outcome.output.find("\nall ");
        return all == std::string::npos ? -1 : std::atof(outcome.output.c_str() + all + 4);
    }
    static bool exists(const char* name) { return fs::exists(folder_ / name); }
    static void store(const char* name, const std::string& bytes) { std::ofstream(folder_ / name) << bytes; }

    static inline fs::path folder_;
};

}
