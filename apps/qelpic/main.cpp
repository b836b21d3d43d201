// SPDX-License-Identifier: Apache-2.0
// qelpic: encodes and decodes picture files with the codec built on libqeljx.
#include <qeljx.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <map>
#include <new>
#include <optional>

#include "codec/base/file_io.h"
#include "codec/base/parallel.h"
#include "qelpic/commands.h"
#include "qelpic/console.h"
#include "qelpic/j2k_options.h"

namespace qel::qelpic {
namespace {

namespace jpeg = codec::jpeg;

constexpr const char* kAbout =
    "Encodes and decodes JPEG and JPEG 2000 files.\n"
    "Reads PGM, PPM, PAM, PGX, PNG, JPEG and JPEG 2000, known by their content; writes what the name of the output "
    "says, or --format.\n"
    "\"-\" is standard input, or standard output.\n\n"
    "  qelpic encode photo.png photo.jpg --quality 85\n"
    "  qelpic encode *.png --outdir out --format jp2 --lossless\n"
    "  qelpic decode photo.jp2 photo.png\n"
    "  qelpic info photo.jpg";
constexpr const char* kExitCodes =
    "Exit codes: 0 done; 1 a file is damaged, unsupported or cannot be written; 2 wrong usage;\n"
    "3 something was written, but an input is damaged, or some of many files failed (the messages say which).";

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
std::vector<std::string> understood(const CLI::App& app, int argc, char** argv)
{
    std::vector<std::string> words(argv + 1, argv + argc);
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

// Groups of options of `encode`.
constexpr const char *kJpegOptions = "JPEG files", *kJ2kOptions = "JPEG 2000 files";

struct CommandLine {
    Options options;
    CLI::App* encodeCommand = nullptr;
    int threads = 0;
    std::optional<codec::ThreadLimit> limit;
    std::string sampling, predictor = "1";
    bool isRgb = false, isCmyk = false, isSeparate = false, keepsTransform = false;

    void addCommon(CLI::App& command)
    {
        command.add_flag("-q,--quiet", options.isQuiet, "No warnings and no progress bar");
    }

    void addReporting(CLI::App& command)
    {
        command.add_flag("--json", options.isJson, "Print JSON");
        addCommon(command);
    }

    // Inputs, and for commands that write files where these go.
    void addFiles(CLI::App& command, const char* about, const char* formats)
    {
        command.add_option("files", options.files, about)->required()->type_name("FILE...");
        command.add_option("--outdir", options.outputFolder, "Folder for the outputs of all files that are named")
            ->type_name("FOLDER");
        command
            .add_option_function<std::string>(
                "--format", [&](const std::string& name) { setFormat(name); },
                std::string("What to write, where no name says it: ") + formats)
            ->type_name("NAME");
        auto* folder = command.get_option("--outdir");
        command.add_flag("-r,--recursive", options.isRecursive, "Also the pictures in folders inside of folders")
            ->needs(folder);
        command.add_flag("--skip-existing", options.skipsExisting, "Leave outputs that are there as they are")
            ->needs(folder);
        command.add_flag("--strip", options.strips, "Leave out profile, EXIF, XMP, density and comments");
        command.add_flag("--auto-orient", options.turnsUpright, "Turn the picture as its EXIF data says");
    }

    void setFormat(const std::string& name)
    {
        options.format = codec::formatNamed(name);
        if (!options.format) throw CLI::ValidationError("--format", "unknown format " + name);
    }

    void addCoding(CLI::App& command)
    {
        addCommon(command);
        command.add_option("--threads", threads, "Threads to use; by default as many as it may use processors")
            ->check(within(1, 1024))
            ->type_name("N");
        command.add_option("--time", options.runs, "Code N times and say how long the fastest took")
            ->check(within(1, 1000000))
            ->type_name("N");
    }

    CLI::App* addEncode(CLI::App& app)
    {
        auto& encoding = options.encoding;
        CLI::App* command = app.add_subcommand("encode", "Encode a picture as a JPEG or JPEG 2000 file");
        addFiles(*command, "Picture to encode and file to write: .jpg, .jp2, .j2k...; or many pictures and --outdir",
                 "jpg (default), jp2 or j2k");
        command->add_option("--quality", encoding.quality, "1 (smallest file) to 100 (best picture)")
            ->check(within(1, 100))
            ->type_name("N")
            ->capture_default_str();
        command
            ->add_flag("--lossless", encoding.lossless,
                       "Keep every sample, of up to 16 bits; not all JPEG decoders read such files")
            ->excludes("--quality");
        addCoding(*command);
        command->option_defaults()->group(kJpegOptions);
        addJpegOptions(*command);
        addLosslessJpegOptions(*command);
        command->option_defaults()->group(kJ2kOptions);
        addJ2kOptions(*command, options.j2k);
        encodeCommand = command;
        return command;
    }

    void addJpegOptions(CLI::App& command)
    {
        auto& encoding = options.encoding;
        command
            .add_option("--sampling", sampling,
                        "Chroma sampling: 444, 422, 440, 420 or grey (no chroma); 420 by "
                        "default, 444 with --rgb and --cmyk")
            ->transform([](std::string name) { return plainSampling(std::move(name)); }, "")
            ->check(CLI::IsMember({"444", "422", "440", "420", "grey"}).description(""))
            ->type_name("NAME");
        command.add_flag("--optimize", encoding.optimiseTables,
                         "Huffman tables made for this picture: smaller, slower");
        auto* progressive = command.add_flag("--progressive", encoding.progressive,
                                             "A picture that sharpens while it loads, and a smaller file; slower");
        command
            .add_option("--scans", options.scanScript, "Scans as this script says: lines like \"0,1,2: 0-0, 0, 1;\"")
            ->type_name("FILE")
            ->excludes(progressive);
        auto* restart = command.add_option("--restart", encoding.restartInterval, "Restart marker every N MCUs")
                            ->check(within(1, 65535))
                            ->type_name("N");
        command.add_option("--restart-rows", encoding.restartRows, "Restart marker every N rows of MCUs")
            ->check(within(1, 65535))
            ->type_name("N")
            ->excludes(restart);
        auto* rgb = command.add_flag("--rgb", isRgb, "Store RGB as it is, not as YCbCr");
        command.add_flag("--cmyk", isCmyk, "Store CMYK as it is, not as YCCK")->excludes(rgb);
        command.add_flag("--separate-scans", isSeparate, "One scan for each component instead of one for all")
            ->excludes("--progressive")
            ->excludes("--scans");
        command.add_flag("--extended", encoding.wideQuantizers,
                         "Allow the coarsest quantization of low qualities (extended sequential files)");
        command.add_flag("--fast", encoding.fast,
                         "A few percent faster with 420 and 422, at the cost of true colours: chroma is rounded down");
    }

    void addLosslessJpegOptions(CLI::App& command)
    {
        auto& encoding = options.encoding;
        CLI::Option* lossless = command.get_option("--lossless");
        for (const char* other : {"--sampling", "--progressive", "--scans", "--extended"}) lossless->excludes(other);
        command
            .add_option("--predictor", predictor, "Of a lossless file: 1 to 7, or best to try them all; 1 by default")
            ->check(CLI::IsMember({"1", "2", "3", "4", "5", "6", "7", "best"}).description(""))
            ->type_name("N")
            ->needs(lossless);
        command
            .add_option("--point-transform", encoding.pointTransform,
                        "Low bits of each sample that a lossless file drops")
            ->check(within(0, 15))
            ->type_name("N")
            ->needs(lossless);
    }

    CLI::App* addDecode(CLI::App& app)
    {
        CLI::App* command = app.add_subcommand("decode", "Decode a JPEG or JPEG 2000 file");
        addFiles(*command,
                 "JPEG or JPEG 2000 file to decode and picture to write: .png, .pgm, .ppm, .pnm, .pam, or .pgx with "
                 "--component; or many files and --outdir",
                 "png (default), pgm, ppm, pnm or pam");
        const std::map<std::string, jpeg::Upsampling> names = {{"triangle", jpeg::Upsampling::triangle},
                                                               {"replicate", jpeg::Upsampling::replicate}};
        command
            ->add_option("--upsampling", options.decoding.upsampling,
                         "Chroma of JPEG files to full size: triangle (smooth, the default) or replicate (fast)")
            ->transform(CLI::CheckedTransformer(names).description(""))
            ->type_name("NAME");
        command->add_flag("--fast", options.decoding.fast,
                          "Chroma of JPEG files replicated and converted MCU by MCU: faster, less smooth");
        command->add_option("--max-pixels", options.decoding.maxPixels, "Refuse larger pictures")
            ->check(CLI::PositiveNumber.description(""))
            ->type_name("N");
        addJ2kDecoding(*command);
        addCoding(*command);
        return command;
    }

    void addJ2kDecoding(CLI::App& command)
    {
        auto& decoding = options.j2kDecoding;
        command.add_option("--reduce", decoding.reduce, "JPEG 2000: halve the picture N times, as it is stored")
            ->check(within(0, 32))
            ->type_name("N");
        command.add_option("--layers", decoding.layers, "JPEG 2000: decode the first N quality layers only")
            ->check(within(1, 65535))
            ->type_name("N");
        command
            .add_option("--component", options.component,
                        "JPEG 2000: only component N, from 0, as it is coded: no palette, no up-sampling, no colours")
            ->check(within(0, 16383))
            ->type_name("N");
        command.add_flag("--no-component-transform", keepsTransform, "JPEG 2000: leave the component transform undone");
    }

    CLI::App* addInfo(CLI::App& app)
    {
        CLI::App* command = app.add_subcommand("info", "Say what picture files hold");
        command->add_option("files", options.files, "Picture files, or folders of them")
            ->required()
            ->type_name("FILE...");
        command->add_flag("-r,--recursive", options.isRecursive, "Also the pictures in folders inside of folders");
        addReporting(*command);
        return command;
    }

    CLI::App* addCompare(CLI::App& app)
    {
        CLI::App* command = app.add_subcommand("compare", "Say how far pictures are apart: PSNR, largest error, SSIM");
        command->add_option("files", options.files, "The original, and pictures that are compared with it")
            ->required()
            ->expected(2, 100000)
            ->type_name("FILE FILE...");
        command->add_option("--min-psnr", options.leastPsnr, "Exit code 1 for pictures below so many decibels")
            ->type_name("DB");
        addReporting(*command);
        return command;
    }

    // Throws CLI::ValidationError for options of the other kind of file than the output is.
    void checkKind() const
    {
        codec::Format format = options.format.value_or(codec::Format::jpeg);
        if (!options.format && options.outputFolder.empty() && options.files.size() == 2)
            format = codec::formatNamed(codec::extensionOf(options.files[1])).value_or(format);
        bool isJ2k = codec::isJpeg2000(format);
        for (const CLI::Option* option : encodeCommand->get_options())
            if (option->count() && option->get_group() == (isJ2k ? kJpegOptions : kJ2kOptions))
                throw CLI::ValidationError(option->get_name(),
                                           isJ2k ? "not for JPEG 2000 files" : "for JPEG 2000 files only");
    }

    // What the options mean together.
    void settle()
    {
        options.j2k.quality = options.encoding.quality;
        options.j2k.isLossless = options.encoding.lossless;
        auto& encoding = options.encoding;
        encoding.interleaved = !isSeparate;
        encoding.predictor = predictor == "best" ? codec::jpeg::kBestPredictor : std::stoi(predictor);
        if (isRgb) encoding.target = jpeg::Target::rgb;
        if (isCmyk) encoding.target = jpeg::Target::cmyk;
        if (sampling == "grey") encoding.target = jpeg::Target::grey;
        const std::map<std::string, codec::jpeg::Samplings> samplings = {{"444", codec::jpeg::kSampling444},
                                                                         {"422", codec::jpeg::kSampling422},
                                                                         {"440", codec::jpeg::kSampling440},
                                                                         {"420", codec::jpeg::kSampling420}};
        auto found = samplings.find(sampling);
        if (found != samplings.end()) encoding.sampling = found->second;
        if (options.decoding.fast) options.decoding.upsampling = jpeg::Upsampling::replicate;
        options.j2kDecoding.transformComponents = !keepsTransform;
        options.j2kDecoding.maxPixels = options.decoding.maxPixels;
        if (threads) limit.emplace(threads);
    }
};

int run(int argc, char** argv)
{
    CommandLine line;
    CLI::App app(kAbout, "qelpic");
    app.footer(kExitCodes);
    app.set_version_flag("-V,--version", version);
    app.require_subcommand(1);
    const std::pair<CLI::App*, ExitCode (*)(const Options&)> commands[] = {{line.addEncode(app), encode},
                                                                           {line.addDecode(app), decode},
                                                                           {line.addInfo(app), info},
                                                                           {line.addCompare(app), compare}};
    try {
        std::vector<std::string> words = understood(app, argc, argv);
        if (!words.empty() && words[0][0] != '-' && !commandNamed(app, words[0])) {
            say("qelpic: unknown command " + words[0] + ": it is encode, decode, info or compare; see qelpic --help");
            return kUsage;
        }
        std::ranges::reverse(words); // as CLI11 wants them
        app.parse(words);
        if (line.encodeCommand->parsed()) line.checkKind();
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        say(std::string("qelpic: ") + error.what() + "; see qelpic --help");
        return kUsage;
    }
    line.settle();
    try {
        for (auto [command, action] : commands)
            if (command->parsed()) return action(line.options);
    } catch (const CLI::ValidationError& error) {
        say(std::string("qelpic: ") + error.what() + "; see qelpic --help");
    }
    return kUsage;
}

}
}

int main(int argc, char** argv)
{
    using namespace qel::qelpic;
    try {
        return run(argc, argv);
    } catch (const std::bad_alloc&) {
        say("qelpic: not enough memory");
    } catch (const std::exception& error) {
        say(std::string("qelpic: ") + error.what());
    }
    return kFailed;
}
