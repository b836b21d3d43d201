// SPDX-License-Identifier: Apache-2.0
// qelpic as a user meets it: exit codes, one line for each error, files that appear only when they are whole.
#include "qelpic.h"

namespace {

using namespace qel::test;

TEST_F(Qelpic, EncodesAndDecodes)
{
    store("script", "0,1,2: 0-0, 0, 0;\n0: 1-63, 0, 0;\n1: 1-63, 0, 0; # blue\n2: 1-63, 0, 0;\n");
    const struct {
        const char *options, *expected; // what `info` says
        double psnr;
    } table[] = {
        {"", "component 1      160 x 120, sampling 2x2", 30},
        {"--sampling 422", "component 1      160 x 120, sampling 2x1", 30},
        {"--sampling 440", "component 1      160 x 120, sampling 1x2", 30},
        {"--sampling 444 --quality 100", "component 2      160 x 120, sampling 1x1", 42},
        {"--rgb", "colour           RGB", 34},
        {"--optimize --threads 1", "scans            1", 30},
        {"--separate-scans", "scans            3", 30},
        {"--progressive", "scans            10", 30},
        {"--scans script", "scans            4", 30},
        {"--restart 7", "restart interval 7 MCUs", 30},
        {"--restart-rows 1", "restart interval 10 MCUs", 30},
    };
    for (auto& row : table) {
        expectEncoded("photo.png a.jpg " + std::string(row.options), "a.jpg", row.expected);
        EXPECT_EQ(qelpic("decode a.jpg a.ppm").exitCode, 0);
        EXPECT_GT(psnr("photo.png", "a.ppm"), row.psnr);
        EXPECT_GT(psnr("a.jpg", "a.ppm"), 1000); // infinite: the same decoder
    }
}

TEST_F(Qelpic, DeepSamplesAreRoundedWithAWarning)
{
    store("deep.pgm", "P2 2 2 65535 0 65535 32768 100");
    Outcome outcome = qelpic("encode deep.pgm a.jpg");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.errors, "qelpic: deep.pgm: warning: samples of 16 bits are rounded to 8\n");
    EXPECT_EQ(qelpic("encode -q deep.pgm a.jpg").errors, "");
    EXPECT_GT(psnr("deep.pgm", "a.jpg"), 30);
}

TEST_F(Qelpic, Lossless)
{
    store("deep.pgm", "P2 3 2 4095 0 4095 2048 100 7 9");
    store("bits.pgm", "P2 2 2 1 0 1 1 0");
    const struct {
        const char *picture, *options, *expected; // what `info` says
    } table[] = {
        {"photo.png", "", "JPEG, lossless"},
        {"photo.png", "--predictor 4", "predictor        4"},
        {"photo.png", "--predictor best --restart-rows 2", "restart interval 320 MCUs"},
        {"photo.png", "--separate-scans", "scans            3"},
        {"deep.pgm", "--predictor 7", "grey, 12 bits"},
        {"bits.pgm", "-q", "grey, 8 bits"},
    };
    for (auto& row : table) {
        expectEncoded(std::string(row.picture) + " a.jpg --lossless " + row.options, "a.jpg", row.expected);
        EXPECT_EQ(qelpic("decode a.jpg a.png").exitCode, 0);
        EXPECT_GT(psnr(row.picture, "a.png"), 1000); // infinite
    }
    expectEncoded("deep.pgm a.jpg --lossless --point-transform 2", "a.jpg", "point transform  2");
    EXPECT_EQ(qelpic("decode a.jpg - | tail -c 4").output, std::string("\0\4\0\10", 4));
}

TEST_F(Qelpic, Jpeg2000)
{
    const struct {
        const char *options, *expected; // what `info` says
    } table[] = {
        {"a.jp2 --lossless", "component 0-2    160 x 120, 8 bits, subsampling 1x1\n"},
        {"a.jp2 --lossless", "quantization     none, 3 guard bits\n"},
        {"a.j2k --lossless", "JPEG 2000, codestream\n"},
        {"a.j2k --rate 2 --layers 3 --threads 1", "layers           3"},
        {"a.jpc --quality-db 40 --levels 2", "9/7 irreversible, 2 levels"},
        {"a.j2c --quality 50 --progression rpcl", "progression      RPCL"},
        {"a.jp2 --tiles 64x100 --precincts 64x64,32x32 --blocks 16x8", "code-blocks      16 x 8"},
        {"a.jp2 --style bypass,termall,predterm", "bypass"},
        {"a.jp2 --termination predictable", "predictable termination"},
    };
    for (auto& row : table) {
        std::string options = row.options, file = options.substr(0, 5);
        expectEncoded("photo.png " + options, file, row.expected);
        EXPECT_EQ(qelpic("decode " + file + " a.ppm").exitCode, 0);
        EXPECT_GT(psnr("photo.png", "a.ppm"), 30);
    }
    EXPECT_LE(fs::file_size(folder_ / "a.j2k"), 160 * 120 * 2 / 8);
    EXPECT_EQ(shell("opj_compress -i photo.png -o placed.j2k -d 2,2").exitCode, 0);
    EXPECT_NE(qelpic("info placed.j2k").output.find("160 x 120, offset 2, 2\n"), std::string::npos);
    EXPECT_EQ(qelpic("decode placed.j2k a.ppm --reduce 1 --layers 1 --no-component-transform").exitCode, 0);
    EXPECT_EQ(textOf(folder_ / "a.ppm").substr(0, 9), "P6\n80 60\n");
    EXPECT_EQ(qelpic("decode placed.j2k a.pgx --component 1").exitCode, 0);
    EXPECT_EQ(textOf(folder_ / "a.pgx").substr(0, 17), "PG ML +8 160 120\n");
}

// One line with the file's name and what is wrong with it; no output is left behind or harmed.
TEST_F(Qelpic, ErrorsAreOneLine)
{
    store("empty.jpg", "");
    store("text.png", "just text");
    store("photo.webp", "RIFF1234WEBPVP8 ");
    store("short.ppm", "P6 100 100 255\nabc");
    store("kept.jpg", "kept");
    store("bad.script", "0: 0-0 0 0;\n0: 1-5 zero;");
    store("short.script", "0: 0-0 0 0;");
    store("grey.pgm", "P2 2 2 255 0 255 32 100");
    EXPECT_EQ(qelpic("encode grey.pgm photo.j2k").exitCode, 0);
    store("start.jpg", textOf(folder_ / "photo.jpg").substr(0, 100));
    const struct {
        const char *arguments, *message;
    } table[] = {
        {"decode none.jpg x.png", "none.jpg: cannot be opened: No such file or directory"},
        {"decode empty.jpg x.png", "empty.jpg: not a JPEG or JPEG 2000 file (at byte 0)"},
        {"decode photo.png x.png", "photo.png: not a JPEG or JPEG 2000 file (at byte 0)"},
        {"info text.png", "text.png: not a picture of a known kind (at byte 0)"},
        {"encode photo.webp x.jpg", "photo.webp: a WebP file, which is not supported (at byte 0)"},
        {"encode short.ppm kept.jpg", "short.ppm: the file is too short for its picture (at byte 18)"},
        {"decode photo.jpg x.gif",
         "x.gif: unknown extension .gif: the name should end in .png, .pgm, .ppm, .pnm, .pam or .pgx; or use --format"},
        {"decode photo.jpg x.pgm", "x.pgm: a colour picture does not fit a .pgm file"},
        {"encode photo.png x.png", "x.png: the name should end in .jpg, .jpeg, .jp2, .j2k, .j2c or .jpc"},
        {"encode photo.png x.jpg --scans none", "none: cannot be opened: No such file or directory"},
        {"encode photo.png x.jpg --scans bad.script", "bad.script: line 2 of the scan script: a number is expected"},
        {"encode photo.png x.jpg --scans short.script", "photo.png: the scan script leaves out component 1"},
        {"encode photo.png x.jp2 --blocks 128x64",
         "photo.png: code-blocks of 128x64: sides have to be powers of 2, 4 to 1024, and the product 4096 at most"},
        {"encode photo.png x.jp2 --tiles 0x5", "photo.png: tiles without samples"},
        {"encode photo.png x.jp2 --precincts 3x4",
         "photo.png: precincts of 3x4: sides have to be powers of 2, 1 to 32768"},
        {"encode photo.png x.jp2 --rate 0.01", "photo.png: the rate allows for fewer bytes than the headers take"},
        {"encode photo.png no/x.jpg", "no/x.jpg: cannot be written: No such file or directory"},
        {"encode photo.png x.jpg --cmyk", "photo.png: "},
        {"decode photo.jpg x.png --max-pixels 1000", "photo.jpg: "},
        {"decode start.jpg x.png", "start.jpg: "},
        {"decode --component 1 photo.j2k x.pgx", "photo.j2k: the picture has 1 components"},
        {"decode --component 0 photo.j2k x.pgm", "x.pgm: the name should end in .pgx"},
        {"decode --component 0 photo.jpg x.pgx", "photo.jpg: --component is for JPEG 2000 files"},
        {"decode --reduce 1 photo.jpg x.ppm",
         "photo.jpg: --reduce, --layers and --no-component-transform are for JPEG 2000 files"},
    };
    for (auto& row : table) expectError(row.arguments, 1, row.message);
    EXPECT_FALSE(exists("x.png") || exists("x.pgm") || exists("x.gif"));
    EXPECT_EQ(textOf(folder_ / "kept.jpg"), "kept");
    for (auto& entry : fs::directory_iterator(folder_)) EXPECT_NE(entry.path().extension(), ".part");
}

TEST_F(Qelpic, TruncatedPicturesAreDeliveredAsFarAsTheyGo)
{
    std::string whole = textOf(folder_ / "photo.jpg");
    store("cut.jpg", whole.substr(0, whole.size() * 9 / 10));
    Outcome outcome = qelpic("decode cut.jpg cut.png");
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_EQ(outcome.errors.find("qelpic: cut.jpg: warning: "), 0u) << outcome.errors;
    EXPECT_EQ(qelpic("decode --quiet cut.jpg cut.png").errors, "");
    // The rows above the cut are those of the whole file.
    EXPECT_EQ(shell(QELPIC " decode -q cut.jpg - | head -c 30000 >a.raw").exitCode, 0);
    EXPECT_EQ(shell(QELPIC " decode photo.jpg - | head -c 30000 >b.raw").exitCode, 0);
    EXPECT_EQ(textOf(folder_ / "a.raw"), textOf(folder_ / "b.raw"));
    EXPECT_EQ(qelpic("encode cut.jpg again.jpg").exitCode, 3);
}

TEST_F(Qelpic, UsageErrors)
{
    for (const char* arguments :
         {"", "paint", "encode photo.png", "decode photo.jpg x.png --upsampling best", "decode photo.jpg x.png extra"})
        expectError(arguments, 2, "");
    for (const char* options :
         {"--quality 0", "--quality 101", "--sampling 411", "--rgb --cmyk", "--restart 3 --restart-rows 2",
          "--progressive --scans script", "--progressive --separate-scans", "--predictor 4", "--point-transform 1",
          "--lossless --predictor 8", "--lossless --quality 80", "--lossless --progressive", "--rate 1"})
        expectError("encode photo.png x.jpg " + std::string(options), 2, "");
    for (const char* options : {"--progressive", "--levels 33", "--rate 0", "--rate 1 --lossless", "--blocks 64",
                                "--blocks 64x", "--layers 0", "--style raw", "--progression LLCP"})
        expectError("encode photo.png x.jp2 " + std::string(options), 2, "");
    EXPECT_FALSE(exists("x.jpg"));
}

TEST_F(Qelpic, HelpAndVersion)
{
    for (const char* command : {"", "encode ", "decode ", "info ", "compare "}) {
        Outcome outcome = qelpic(std::string(command) + "--help");
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_NE(outcome.output.find("Exit codes: 0 done"), std::string::npos) << command;
    }
    EXPECT_NE(qelpic("compare --help").output.find("Usage: qelpic compare [OPTIONS] ORIGINAL PICTURE...\n"),
              std::string::npos);
    EXPECT_NE(qelpic("--version").output.find("libqeljx.so "), std::string::npos);
}

TEST_F(Qelpic, Times)
{
    EXPECT_NE(qelpic("encode photo.png a.jpg --time 2").errors.find(" megapixels/s"), std::string::npos);
    EXPECT_NE(qelpic("decode photo.jpg a.png --time 2").errors.find(" megapixels/s"), std::string::npos);
}

}
