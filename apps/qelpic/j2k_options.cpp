// SPDX-License-Identifier: Apache-2.0
// From the words of the command line.
#include "qelpic/j2k_options.h"

#include <charconv>
#include <map>

namespace qel::qelpic {
namespace {

namespace j2k = codec::j2k;
using Words = std::vector<std::string>;
using Size = std::pair<uint32_t, uint32_t>;

[[noreturn]] void refuse(const char* option, const std::string& word, const std::string& expected)
{
    throw CLI::ValidationError(option, "\"" + word + "\" is not " + expected);
}

Size parseSize(const char* option, const std::string& word)
{
    Size size;
    const char *at = word.data(), *end = at + word.size();
    auto width = std::from_chars(at, end, size.first);
    bool isGood = width.ec == std::errc() && width.ptr != end && (*width.ptr == 'x' || *width.ptr == 'X');
    if (isGood) {
        auto height = std::from_chars(width.ptr + 1, end, size.second);
        isGood = height.ec == std::errc() && height.ptr == end;
    }
    if (!isGood) refuse(option, word, "a width and a height, like 64x64");
    return size;
}

const std::map<std::string, int> kStyles = {
    {"bypass", codec::j2k::style::kBypass},
    {"termall", codec::j2k::style::kTerminateEvery},
    {"reset", codec::j2k::style::kReset},
    {"causal", codec::j2k::style::kVerticallyCausal},
    {"predterm", codec::j2k::style::kPredictableTermination},
    {"segsym", codec::j2k::style::kSegmentationSymbols},
};

void setStyles(const Words& words, codec::j2k::EncodeOptions& options)
{
    for (const std::string& word : words) {
        auto found = kStyles.find(word);
        if (found == kStyles.end())
            refuse("--style", word, "one of bypass, termall, reset, causal, predterm and segsym");
        options.style |= found->second;
    }
}

void addTargets(CLI::App& command, codec::j2k::EncodeOptions& options)
{
    auto* rate = command.add_option("--rate", options.bitsPerPixel, "Bits per pixel of the whole file")
                     ->check(CLI::Range(0.001, 1000.0).description(""))
                     ->type_name("BPP");
    auto* psnr = command.add_option("--quality-db", options.psnr, "Peak signal-to-noise ratio, in decibels")
                     ->check(CLI::Range(1.0, 200.0).description(""))
                     ->type_name("PSNR");
    psnr->excludes(rate);
    for (const char* other : {"--quality", "--lossless"})
        for (CLI::Option* target : {rate, psnr}) target->excludes(other);
}

void addDivisions(CLI::App& command, codec::j2k::EncodeOptions& options)
{
    command
        .add_option("--levels", options.levels, "Levels of the wavelet, 0 to 32; 5 by default, fewer if it is small")
        ->check(CLI::Range(0, codec::j2k::kMaxLevels).description(""))
        ->type_name("N");
    command
        .add_option_function<std::string>(
            "--blocks",
            [&](const std::string& word) {
                auto [width, height] = parseSize("--blocks", word);
                if (width > 1024 || height > 1024) refuse("--blocks", word, "a size of code-blocks");
                std::tie(options.blockWidth, options.blockHeight) = std::pair(int(width), int(height));
            },
            "Size of code-blocks, 64x64 by default: powers of 2 from 4 to 1024, 4096 samples at most")
        ->type_name("WxH");
    command
        .add_option_function<std::string>(
            "--tiles", [&](const std::string& word) { options.tile = parseSize("--tiles", word); },
            "Size of tiles; one for the whole picture by default")
        ->type_name("WxH");
    command
        .add_option_function<Words>(
            "--precincts",
            [&](const Words& words) {
                for (const std::string& word : words) options.precincts.push_back(parseSize("--precincts", word));
            },
            "Sizes of precincts from the highest resolution down; the last one holds for all below")
        ->delimiter(',')
        ->type_name("WxH,...");
}

void addCoding(CLI::App& command, codec::j2k::EncodeOptions& options, Choices& choices)
{
    const std::map<std::string, j2k::Order> orders = {{"lrcp", j2k::Order::lrcp},
                                                      {"rlcp", j2k::Order::rlcp},
                                                      {"rpcl", j2k::Order::rpcl},
                                                      {"pcrl", j2k::Order::pcrl},
                                                      {"cprl", j2k::Order::cprl}};
    const std::map<std::string, j2k::Termination> terminations = {{"flush", j2k::Termination::flush},
                                                                  {"shortest", j2k::Termination::shortest},
                                                                  {"predictable", j2k::Termination::predictable}};
    command.add_option("--layers", options.layers, "Layers of quality that the file can be cut to")
        ->check(CLI::Range(1, codec::j2k::kMostLayers).description(""))
        ->type_name("N");
    command
        .add_option("--progression", options.order,
                    "Order of packets by layer, resolution, component and place: LRCP (default), RLCP, RPCL, PCRL or "
                    "CPRL")
        ->transform(CLI::CheckedTransformer(orders, CLI::ignore_case).description(""))
        ->type_name("ORDER");
    choices[command.get_option("--progression")] = namesOf(orders);
    command
        .add_option_function<Words>(
            "--style", [&](const Words& words) { setStyles(words, options); },
            "Of code-blocks: any of bypass, termall, reset, causal, predterm and segsym")
        ->delimiter(',')
        ->type_name("NAME,...");
    choices[command.get_option("--style")] = namesOf(kStyles);
    command
        .add_option("--termination", options.termination,
                    "How codeword segments end: flush (default), shortest or predictable")
        ->transform(CLI::CheckedTransformer(terminations).description(""))
        ->type_name("NAME");
    choices[command.get_option("--termination")] = namesOf(terminations);
}

}

void addJ2kOptions(CLI::App& command, codec::j2k::EncodeOptions& options, Choices& choices)
{
    addTargets(command, options);
    addDivisions(command, options);
    addCoding(command, options, choices);
}

}
