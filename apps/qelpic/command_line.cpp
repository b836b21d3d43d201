// SPDX-License-Identifier: Apache-2.0
// The options of each command, and what they mean together.
#include "qelpic/command_line.h"

#include <qeljx.h>

#include <algorithm>
#include <map>

#include "codec/base/file_io.h"
#include "qelpic/help.h"
#include "qelpic/j2k_options.h"

namespace qel::qelpic {
namespace {

namespace jpeg = codec::jpeg;

using Words = std::vector<std::string>;

constexpr const char* kAbout = "Encodes and decodes JPEG and JPEG 2000 files.\n"
                               "Reads PGM, PPM, PAM, PGX, PNG, JPEG and JPEG 2000, known by their content;\n"
                               "writes what the name of the output says, or --format.\n"
                               "\"-\" is standard input, or standard output.\n\n"
                               "  qelpic encode photo.png photo.jpg --quality 85\n"
                               "  qelpic encode *.png --outdir out --format jp2 --lossless\n"
                               "  qelpic decode photo.jp2 photo.png\n"
                               "  qelpic info photo.jpg";
constexpr const char* kExitCodes = "Exit codes: 0 done; 1 a file is damaged, unsupported or cannot be written;\n"
                                   "2 wrong usage; 3 something was written, but an input is damaged, or some of\n"
                                   "many files failed (the messages say which).";

std::string version()
{
    const QelLibraryVersion& library = *qeljGetLibVersion();
    return std::string("qelpic ") + library.version + "\n" + library.name + " " + library.version + ", built " +
           library.buildDate + ", best instruction set " + library.cpuCode;
}

// Checks that do not clutter the help texts, which name the values themselves.
CLI::Validator within(int low, int high) { return CLI::Range(low, high).description(""); }

// "4:2:0" and "gray" are understood as well.
std::string plainSampling(std::string name)
{
    std::erase(name, ':');
    return name == "gray" ? "grey" : name;
}

const CLI::App* commandNamed(const CLI::App& app, const std::string& name)
{
    for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
        if (command->get_name() == name) return command;
    return nullptr;
}

// Habits from other programs: -quality for --quality, and -q with a number for it.
Words understood(const CLI::App& app, int argc, char** argv)
{
    Words words(argv + 1, argv + argc);
    const CLI::App* command = nullptr;
    for (size_t i = 0; i < words.size(); ++i) {
        std::string& word = words[i];
        if (!command) command = commandNamed(app, word);
        bool isNumber = i + 1 < words.size() && !words[i + 1].empty() &&
                        words[i + 1].find_first_not_of("0123456789") == std::string::npos;
        if (command && command->get_name() == "encode" && word == "-q" && isNumber) word = "--quality";
        bool isLong = word.size() > 2 && word[0] == '-' && word[1] != '-';
        if (command && isLong && command->get_option_no_throw("-" + word)) word.insert(0, "-");
    }
    return words;
}

// The first one is the default.
std::string listed(const Words& words)
{
    std::string text = words[0] + " (default)";
    for (size_t i = 1; i < words.size(); ++i) text += (i + 1 < words.size() ? ", " : " or ") + words[i];
    return text;
}

// Groups of options of `encode`.
constexpr const char *kJpegOptions = "JPEG files", *kJ2kOptions = "JPEG 2000 files";

}

CommandLine::CommandLine() : app_(kAbout, "qelpic")
{
    app_.formatter(std::make_shared<Help>(Words{"COMMAND [OPTIONS] FILES", "COMMAND --help"}));
    app_.footer(kExitCodes);
    app_.set_version_flag("-V,--version", version);
    app_.require_subcommand(1);
    addEncode();
    addDecode();
    addInfo();
    addCompare();
}

void CommandLine::parse(int argc, char** argv)
{
    Words words = understood(app_, argc, argv);
    if (!words.empty() && words[0][0] != '-' && !commandNamed(app_, words[0]))
        throw CLI::ValidationError("unknown command " + words[0] + ": it is encode, decode, info or compare");
    std::ranges::reverse(words); // as CLI11 wants them
    app_.parse(words);
    if (command().get_name() == "encode") checkKind();
    settle();
}

CLI::App& CommandLine::addCommand(const char* name, const char* about, Words usages)
{
    CLI::App& command = *app_.add_subcommand(name, about);
    command.formatter(std::make_shared<Help>(std::move(usages)));
    return command;
}

void CommandLine::addCommon(CLI::App& command)
{
    command.add_flag("-q,--quiet", options_.isQuiet, "No warnings and no progress bar");
}

void CommandLine::addReporting(CLI::App& command)
{
    command.add_flag("--json", options_.isJson, "Print JSON");
    addCommon(command);
}

// Inputs, and for commands that write files where these go.
void CommandLine::addFiles(CLI::App& command, const char* about, Words formats)
{
    command.add_option("files", options_.files, about)->required()->type_name("INPUT, OUTPUT");
    command.add_option("--outdir", options_.outputFolder, "Folder for the outputs of all files that are named")
        ->type_name("FOLDER");
    auto* format = command
                       .add_option_function<std::string>(
                           "--format", [&](const std::string& name) { setFormat(name); },
                           "What to write, where no name says it: " + listed(formats))
                       ->type_name("NAME");
    choices_[format] = std::move(formats);
    auto* folder = command.get_option("--outdir");
    command
        .add_flag("-r,--recursive", options_.isRecursive,
                  "With --outdir: also the pictures in folders inside of folders")
        ->needs(folder);
    command
        .add_flag("--skip-existing", options_.skipsExisting, "With --outdir: leave outputs that are there as they are")
        ->needs(folder);
    command.add_flag("--strip", options_.strips, "Leave out profile, EXIF, XMP, density and comments");
    command.add_flag("--auto-orient", options_.turnsUpright, "Turn the picture as its EXIF data says");
}

void CommandLine::setFormat(const std::string& name)
{
    options_.format = codec::formatNamed(name);
    if (!options_.format) throw CLI::ValidationError("--format", "unknown format " + name);
}

void CommandLine::addCoding(CLI::App& command)
{
    addCommon(command);
    command.add_option("--threads", threads_, "Threads to use; by default as many as there are idle processors")
        ->check(within(1, 1024))
        ->type_name("N");
    command.add_option("--time", options_.runs, "Code N times and say how long the fastest took")
        ->check(within(1, 1000000))
        ->type_name("N");
}

void CommandLine::addEncode()
{
    auto& encoding = options_.encoding;
    CLI::App& command = addCommand("encode", "Encode a picture as a JPEG or JPEG 2000 file",
                                   {"[OPTIONS] INPUT OUTPUT", "[OPTIONS] INPUT... --outdir FOLDER"});
    addFiles(command, "Picture to encode and file to write: .jpg, .jp2, .j2k...; or many pictures and --outdir",
             {"jpg", "jp2", "j2k"});
    command.add_option("--quality", encoding.quality, "1 (smallest file) to 100 (best picture)")
        ->check(within(1, 100))
        ->type_name("N")
        ->capture_default_str();
    command
        .add_flag("--lossless", encoding.lossless,
                  "Keep every sample, of up to 16 bits; not all JPEG decoders read such files")
        ->excludes("--quality");
    addCoding(command);
    command.option_defaults()->group(kJpegOptions);
    addJpegOptions(command);
    addLosslessJpegOptions(command);
    command.option_defaults()->group(kJ2kOptions);
    addJ2kOptions(command, options_.j2k, choices_);
}

void CommandLine::addJpegOptions(CLI::App& command)
{
    auto& encoding = options_.encoding;
    const Words samplings = {"444", "422", "440", "420", "grey"};
    command
        .add_option("--sampling", sampling_,
                    "Chroma sampling: 444, 422, 440, 420 or grey (no chroma); 420 by "
                    "default, 444 with --rgb and --cmyk")
        ->transform([](std::string name) { return plainSampling(std::move(name)); }, "")
        ->check(CLI::IsMember(samplings).description(""))
        ->type_name("NAME");
    choices_[command.get_option("--sampling")] = samplings;
    command.add_flag("--optimize", encoding.optimiseTables, "Huffman tables made for this picture: smaller, slower");
    auto* progressive = command.add_flag("--progressive", encoding.progressive,
                                         "A picture that sharpens while it loads, and a smaller file; slower");
    command.add_option("--scans", options_.scanScript, "Scans as this script says: lines like \"0,1,2: 0-0, 0, 1;\"")
        ->type_name("FILE")
        ->excludes(progressive);
    auto* restart = command.add_option("--restart", encoding.restartInterval, "Restart marker every N MCUs")
                        ->check(within(1, 65535))
                        ->type_name("N");
    command.add_option("--restart-rows", encoding.restartRows, "Restart marker every N rows of MCUs")
        ->check(within(1, 65535))
        ->type_name("N")
        ->excludes(restart);
    auto* rgb = command.add_flag("--rgb", isRgb_, "Store RGB as it is, not as YCbCr");
    command.add_flag("--cmyk", isCmyk_, "Store CMYK as it is, not as YCCK")->excludes(rgb);
    command.add_flag("--separate-scans", isSeparate_, "One scan for each component instead of one for all")
        ->excludes("--progressive")
        ->excludes("--scans");
    command.add_flag("--extended", encoding.wideQuantizers,
                     "Allow the coarsest quantization of low qualities (extended sequential files)");
    command.add_flag("--fast", encoding.fast,
                     "A few percent faster with 420 and 422, at the cost of true colours: chroma is rounded down");
}

void CommandLine::addLosslessJpegOptions(CLI::App& command)
{
    auto& encoding = options_.encoding;
    CLI::Option* lossless = command.get_option("--lossless");
    for (const char* other : {"--sampling", "--progressive", "--scans", "--extended"}) lossless->excludes(other);
    const Words predictors = {"1", "2", "3", "4", "5", "6", "7", "best"};
    command.add_option("--predictor", predictor_, "Of a lossless file: 1 to 7, or best to try them all; 1 by default")
        ->check(CLI::IsMember(predictors).description(""))
        ->type_name("N")
        ->needs(lossless);
    choices_[command.get_option("--predictor")] = predictors;
    command
        .add_option("--point-transform", encoding.pointTransform, "Low bits of each sample that a lossless file drops")
        ->check(within(0, 15))
        ->type_name("N")
        ->needs(lossless);
}

void CommandLine::addDecode()
{
    CLI::App& command = addCommand("decode", "Decode a JPEG or JPEG 2000 file",
                                   {"[OPTIONS] INPUT OUTPUT", "[OPTIONS] INPUT... --outdir FOLDER"});
    addFiles(command,
             "JPEG or JPEG 2000 file to decode and picture to write: .png, .pgm, .ppm, .pnm, .pam or .pgx; or many "
             "files and --outdir",
             {"png", "pgm", "ppm", "pnm", "pam", "pgx"});
    const std::map<std::string, jpeg::Upsampling> names = {{"triangle", jpeg::Upsampling::triangle},
                                                           {"replicate", jpeg::Upsampling::replicate}};
    command
        .add_option("--upsampling", options_.decoding.upsampling,
                    "Chroma of JPEG files to full size: triangle (smooth, the default) or replicate (fast)")
        ->transform(CLI::CheckedTransformer(names).description(""))
        ->type_name("NAME");
    choices_[command.get_option("--upsampling")] = namesOf(names);
    command.add_flag("--fast", options_.decoding.fast,
                     "Chroma of JPEG files replicated and converted MCU by MCU: faster, less smooth");
    command.add_option("--max-pixels", options_.decoding.maxPixels, "Refuse larger pictures")
        ->check(CLI::PositiveNumber.description(""))
        ->type_name("N");
    addCoding(command);
    command.option_defaults()->group(kJ2kOptions);
    addJ2kDecoding(command);
}

void CommandLine::addJ2kDecoding(CLI::App& command)
{
    auto& decoding = options_.j2kDecoding;
    command.add_option("--reduce", decoding.reduce, "Halve the picture N times, as it is stored")
        ->check(within(0, 32))
        ->type_name("N");
    command.add_option("--layers", decoding.layers, "Decode the first N quality layers only")
        ->check(within(1, 65535))
        ->type_name("N");
    command
        .add_option("--component", options_.component,
                    "Only component N, from 0, as it is coded: no palette, no up-sampling, no colours")
        ->check(within(0, 16383))
        ->type_name("N");
    command.add_flag("--no-component-transform", keepsTransform_, "Leave the component transform undone");
}

void CommandLine::addInfo()
{
    CLI::App& command = addCommand("info", "Say what picture files hold", {"[OPTIONS] INPUT..."});
    command.add_option("files", options_.files, "Picture files, or folders of them")->required()->type_name("INPUT...");
    command.add_flag("-r,--recursive", options_.isRecursive, "Also the pictures in folders inside of folders");
    addReporting(command);
}

void CommandLine::addCompare()
{
    CLI::App& command = addCommand("compare", "Say how far pictures are apart: PSNR, largest error, SSIM",
                                   {"[OPTIONS] ORIGINAL PICTURE..."});
    command.add_option("files", options_.files, "The original, and pictures that are compared with it")
        ->required()
        ->expected(2, 100000)
        ->type_name("ORIGINAL, PICTURE...");
    command.add_option("--min-psnr", options_.leastPsnr, "Exit code 1 for pictures below so many decibels")
        ->type_name("DB");
    addReporting(command);
}

// Throws CLI::ValidationError for options of the other kind of file than the output is.
void CommandLine::checkKind() const
{
    codec::Format format = options_.format.value_or(codec::Format::jpeg);
    if (!options_.format && options_.outputFolder.empty() && options_.files.size() == 2)
        format = codec::formatNamed(codec::extensionOf(options_.files[1])).value_or(format);
    bool isJ2k = codec::isJpeg2000(format);
    for (const CLI::Option* option : command().get_options())
        if (option->count() && option->get_group() == (isJ2k ? kJpegOptions : kJ2kOptions))
            throw CLI::ValidationError(option->get_name(),
                                       isJ2k ? "not for JPEG 2000 files" : "for JPEG 2000 files only");
}

// What the options mean together.
void CommandLine::settle()
{
    options_.j2k.quality = options_.encoding.quality;
    options_.j2k.isLossless = options_.encoding.lossless;
    auto& encoding = options_.encoding;
    encoding.interleaved = !isSeparate_;
    encoding.predictor = predictor_ == "best" ? codec::jpeg::kBestPredictor : std::stoi(predictor_);
    if (isRgb_) encoding.target = jpeg::Target::rgb;
    if (isCmyk_) encoding.target = jpeg::Target::cmyk;
    if (sampling_ == "grey") encoding.target = jpeg::Target::grey;
    const std::map<std::string, codec::jpeg::Samplings> samplings = {{"444", codec::jpeg::kSampling444},
                                                                     {"422", codec::jpeg::kSampling422},
                                                                     {"440", codec::jpeg::kSampling440},
                                                                     {"420", codec::jpeg::kSampling420}};
    auto found = samplings.find(sampling_);
    if (found != samplings.end()) encoding.sampling = found->second;
    if (options_.decoding.fast) options_.decoding.upsampling = jpeg::Upsampling::replicate;
    options_.j2kDecoding.transformComponents = !keepsTransform_;
    options_.j2kDecoding.maxPixels = options_.decoding.maxPixels;
    if (threads_) limit_.emplace(threads_);
}

}
