// SPDX-License-Identifier: Apache-2.0
// What people do with the tool, from beginning to end.
#include <nlohmann/json.hpp>

#include "codec/jpeg/encode/writer.h"
#include "profiles.h"
#include "qelpic.h"

namespace {

using namespace qel::test;
using Json = nlohmann::json;

void expectContains(const std::string& text, const std::string& part)
{
    EXPECT_NE(text.find(part), std::string::npos) << text;
}

std::string asText(const std::vector<uint8_t>& bytes) { return {bytes.begin(), bytes.end()}; }

TEST_F(Qelpic, FiftyPicturesThereAndBack)
{
    EXPECT_EQ(shell("mkdir -p in/deep; for i in $(seq 49); do " QELPIC_DRAW " $i 9 in/$i.png; done; "
                    "cp in/7.png in/deep/")
                  .exitCode,
              0);
    Outcome there = qelpic("encode in -r --outdir coded --format jp2 --lossless");
    EXPECT_EQ(there.exitCode, 0);
    EXPECT_EQ(there.errors.substr(0, 9), "50 files,");
    Outcome back = qelpic("decode coded/*.jp2 coded/deep --outdir back");
    EXPECT_EQ(back.exitCode, 1) << "two files of one name";
    EXPECT_EQ(back.errors, "qelpic: back/7.png: several inputs would be written under this name\n");
    EXPECT_EQ(qelpic("decode -r coded --outdir back -q").errors, "");
    EXPECT_EQ(
        shell("for i in $(seq 49) deep/7; do " QELPIC " compare --min-psnr 200 in/$i.png back/$i.png || exit; done")
            .exitCode,
        0);
    fs::remove(folder_ / "back/9.png");
    expectContains(qelpic("decode -r coded --outdir back --skip-existing").errors, "; 49 skipped\n");
}

TEST_F(Qelpic, FolderWithADamagedFile)
{
    EXPECT_EQ(
        shell("mkdir bad; cp photo.jpg bad/a.jpg; cp photo.jpg bad/c.jpg; head -c 90 photo.jpg > bad/b.jpg").exitCode,
        0);
    Outcome outcome = qelpic("decode bad --outdir good");
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_EQ(outcome.errors.find("qelpic: bad/b.jpg: "), 0u);
    expectContains(outcome.errors, "2 files, ");
    expectContains(outcome.errors, "; 1 failed\n");
    EXPECT_TRUE(exists("good/a.png") && exists("good/c.png") && !exists("good/b.png"));
    outcome = qelpic("info bad photo.png");
    EXPECT_EQ(outcome.exitCode, 3);
    expectContains(outcome.output, "bad/c.jpg:\nformat           JPEG");
    EXPECT_EQ(qelpic("info photo.png >/dev/full").exitCode, 1);
    EXPECT_EQ(qelpic("compare photo.png bad/a.jpg bad/c.jpg --min-psnr 99").exitCode, 1);
}

// As exiftool reads them; and the peers open them in silence.
TEST_F(Qelpic, PhonePhoto)
{
    if (shell("exiftool -ver").exitCode != 0) GTEST_SKIP() << "exiftool is not installed";
    store("p3.icc", asText(displayProfile()));
    EXPECT_EQ(shell("exiftool '-icc_profile<=p3.icc' -Orientation#=6 -Make=Maker -XMP:Title=Holidays -Comment=Sea "
                    "-JFIF:XResolution=300 -JFIF:YResolution=300 -JFIF:ResolutionUnit=inches photo.jpg -o phone.jpg")
                  .exitCode,
              0);
    EXPECT_EQ(qelpic("decode phone.jpg p.png").errors, "");
    EXPECT_EQ(qelpic("encode p.png p.jp2").errors, "");
    EXPECT_EQ(qelpic("encode p.jp2 p.jpg").errors, "");
    for (std::string file : {"p.png", "p.jp2", "p.jpg"}) {
        EXPECT_EQ(shell("exiftool -icc_profile -b " + file + " | cmp - p3.icc").exitCode, 0) << file;
        Outcome read = shell("exiftool -s3 -Orientation# -Make -Title -Warning -Error " + file);
        EXPECT_EQ(read.output, "6\nMaker\nHolidays\n") << file;
        Outcome info = qelpic("info " + file);
        expectContains(info.output, "orientation 6");
        expectContains(info.output, "density          300 x 300 dots per inch");
    }
    EXPECT_EQ(shell("djpeg p.jpg >p.ppm").errors, "");
    Outcome peer = shell("opj_decompress -i p.jp2 -o p.ppm");
    EXPECT_EQ(peer.exitCode, 0);
    EXPECT_EQ((peer.output + peer.errors).find("WARN"), std::string::npos) << peer.output << peer.errors;
    EXPECT_EQ(qelpic("encode phone.jpg upright.jpg --auto-orient --strip").errors, "");
    Outcome info = qelpic("info upright.jpg");
    expectContains(info.output, "size             120 x 160");
    EXPECT_EQ(info.output.find("EXIF"), std::string::npos);
    expectContains(qelpic("decode phone.jpg p.ppm").errors,
                   "warning: not in the output: the ICC profile, EXIF data, XMP data, the density, a comment\n");
}

TEST_F(Qelpic, CmykToPng)
{
    qel::codec::Picture cyan(8, 8, qel::codec::ColourSpace::cmyk, 8);
    for (size_t i = 0; i < cyan.sizeInBytes(); ++i) cyan.row(0)[i] = i % 4 ? 255 : 0; // Adobe's sense
    auto encoded = [&](std::vector<uint8_t> icc) {
        return asText(qel::codec::jpeg::encode(cyan, {.quality = 100, .metadata = {.icc = std::move(icc)}}));
    };
    store("plain.jpg", encoded({}));
    store("managed.jpg", encoded(inkProfile()));
    EXPECT_EQ(qelpic("decode plain.jpg plain.png").errors,
              "qelpic: plain.jpg: warning: CMYK without a colour profile: converted to RGB plainly\n");
    EXPECT_EQ(qelpic("decode managed.jpg managed.png").errors, "");
    EXPECT_EQ(qelpic("decode plain.jpg plain.ppm -q").exitCode, 0);
    EXPECT_EQ(textOf(folder_ / "plain.ppm").substr(0, 14), std::string("P6\n8 8\n255\n\1\xFF\xFF", 14));
    EXPECT_LT(psnr("plain.png", "managed.png"), 12);
}

// PAM is the neutral ground: its samples are compared byte by byte.
TEST_F(Qelpic, TransparencyThroughPngAndJp2)
{
    const struct {
        int depth, largest;
        const char* type;
    } table[] = {
        {2, 255, "GRAYSCALE_ALPHA"}, {4, 255, "RGB_ALPHA"}, {2, 65535, "GRAYSCALE_ALPHA"}, {4, 65535, "RGB_ALPHA"}};
    for (auto& row : table) {
        std::string pam = "P7\nWIDTH 40\nHEIGHT 30\nDEPTH " + std::to_string(row.depth) + "\nMAXVAL " +
                          std::to_string(row.largest) + "\nTUPLTYPE " + row.type + "\nENDHDR\n";
        for (int i = 0; i < 40 * 30 * row.depth * (row.largest > 255 ? 2 : 1); ++i) pam += char(i * i / 50);
        store("alpha.pam", pam);
        EXPECT_EQ(qelpic("encode alpha.pam alpha.jp2 --lossless").errors, "");
        EXPECT_EQ(qelpic("decode alpha.jp2 alpha.png").errors, "");
        EXPECT_EQ(qelpic("encode alpha.png again.jp2 --lossless").errors, "");
        EXPECT_EQ(qelpic("decode again.jp2 -").output, pam) << row.type;
        EXPECT_EQ(
            shell("opj_decompress -i alpha.jp2 -o peer.png && " QELPIC " compare --min-psnr 200 alpha.png peer.png")
                .exitCode,
            0);
        expectContains(qelpic("info alpha.jp2").output, "opacity\n");
        EXPECT_GT(psnr("alpha.png", "alpha.pam"), 1000);
    }
    const std::string left = "qelpic: alpha.pam: warning: the alpha channel is left out: ";
    EXPECT_EQ(qelpic("encode alpha.pam alpha.j2k").errors, left + ".j2k files have none\n");
    EXPECT_EQ(qelpic("encode alpha.pam alpha.jpg").errors,
              left + ".jpg files have none\nqelpic: alpha.pam: warning: samples of 16 bits are rounded to 8\n");
    expectContains(qelpic("decode alpha.jp2 alpha.ppm").errors,
                   "the alpha channel is left out: .ppm files have none\n");
    store("opaque.pam", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 2\nMAXVAL 1\nTUPLTYPE BLACKANDWHITE_ALPHA\nENDHDR\n"
                        "\1\1");
    EXPECT_EQ(qelpic("encode opaque.pam opaque.jpg").errors, "") << "nothing is lost";
}

// By the tool that people have, to the peer's pixels but for the rounding of transforms and colours.
TEST_F(Qelpic, AnySamplingOfOtherEncoders)
{
    EXPECT_EQ(qelpic("decode photo.jpg photo.ppm").exitCode, 0);
    for (const char* sampling : {"4x1,1x1", "1x4,1x1", "4x2,1x1", "3x1,1x1", "1x3,1x1", "3x2,1x1", "2x1,1x2,1x1",
                                 "1x1,2x2,1x1", "4x1,2x1,1x1"})
        for (const char* process : {"", " -progressive"}) {
            EXPECT_EQ(shell(std::string("cjpeg -sample ") + sampling + process +
                            " photo.ppm > odd.jpg && djpeg odd.jpg > peer.ppm")
                          .exitCode,
                      0);
            EXPECT_EQ(qelpic("decode odd.jpg odd.ppm").errors, "");
            EXPECT_GT(psnr("peer.ppm", "odd.ppm"), 55) << sampling;
        }
}

// A height model: 16 bits, signed. The peer agrees on what it stands for.
TEST_F(Qelpic, SignedSamplesThroughPgxAndJp2)
{
    for (std::string precision : {"8", "12", "16"}) {
        std::string header = "PG ML -" + precision + " 30 20\n", pgx = header;
        for (int i = 0; i < 600; ++i) {
            int sample = (i * i * 7 % (1 << std::stoi(precision))) - (1 << (std::stoi(precision) - 1));
            if (precision != "8") pgx += char(sample >> 8);
            pgx += char(sample);
        }
        store("heights.pgx", pgx);
        for (std::string file : {"heights.jp2", "heights.j2k"}) {
            EXPECT_EQ(qelpic("encode heights.pgx " + file + " --lossless").errors, "");
            expectContains(qelpic("info " + file).output, precision + " bits signed");
            EXPECT_EQ(qelpic("decode " + file + " again.pgx").errors, "");
            EXPECT_EQ(textOf(folder_ / "again.pgx"), pgx) << file;
            EXPECT_EQ(shell("opj_decompress -i " + file + " -o peer.pgx && mv peer_0.pgx peer.pgx").exitCode, 0);
            EXPECT_EQ(qelpic("encode peer.pgx peer.jp2 --lossless && " QELPIC " decode peer.jp2 again.pgx").exitCode,
                      0);
            EXPECT_EQ(textOf(folder_ / "again.pgx"), pgx) << "as the peer reads " << file;
        }
        EXPECT_EQ(qelpic("encode heights.pgx heights.jp2").errors, "");
        EXPECT_EQ(qelpic("compare heights.pgx heights.jp2 --min-psnr 25").exitCode, 0);
    }
    const std::string shifted = "warning: signed samples are shifted up to begin at 0: ";
    expectContains(qelpic("decode heights.jp2 heights.png").errors, shifted + ".png files have no sign\n");
    EXPECT_GT(psnr("heights.jp2", "heights.png"), 1000);
    expectContains(qelpic("encode heights.pgx heights.jpg --lossless").errors, shifted + ".jpg files have no sign\n");
    expectContains(qelpic("decode photo.jpg photo.pgx").errors, "a colour picture does not fit a .pgx file");
    EXPECT_EQ(qelpic("encode photo.png grey.jpg --sampling grey").exitCode, 0);
    EXPECT_EQ(qelpic("decode grey.jpg grey.pgx").errors, "");
    EXPECT_GT(psnr("grey.jpg", "grey.pgx"), 1000);
}

TEST_F(Qelpic, DeepPicturesThroughLosslessFiles)
{
    std::string ppm = "P6\n31 21\n65535\n";
    for (int i = 0; i < 31 * 21 * 6; ++i) ppm += char(i * i / 90);
    store("deep.ppm", ppm);
    EXPECT_EQ(qelpic("encode deep.ppm deep.jp2 --lossless && " QELPIC " decode deep.jp2 deep.png").errors, "");
    EXPECT_EQ(qelpic("encode deep.png deep.jpg --lossless && " QELPIC " decode deep.jpg back.png").errors, "");
    EXPECT_EQ(qelpic("encode back.png back.jp2 --lossless && " QELPIC " decode back.jp2 -").output, ppm);
}

TEST_F(Qelpic, ScriptsAskForFiguresInJson)
{
    store("tiny.pgm", "P2 1 1 255 7");
    EXPECT_EQ(qelpic("encode photo.png good.jpg").exitCode, 0);
    EXPECT_EQ(qelpic("encode photo.png poor.jpg --quality 5").exitCode, 0);
    Outcome outcome = qelpic("compare photo.png good.jpg poor.jpg --json --min-psnr 30");
    EXPECT_EQ(outcome.exitCode, 1);
    Json pictures = Json::parse(outcome.output)["pictures"];
    ASSERT_EQ(pictures.size(), 2u);
    EXPECT_EQ(pictures[1]["file"], "poor.jpg");
    EXPECT_GT(pictures[0]["channels"]["green"]["psnr"], 30);
    EXPECT_LT(pictures[1]["psnr"], 30);
    EXPECT_GT(pictures[0]["ssim"], double(pictures[1]["ssim"]) + 0.05);
    Json same = Json::parse(qelpic("compare tiny.pgm tiny.pgm --json").output)["pictures"][0];
    EXPECT_TRUE(same["psnr"].is_null() && same["ssim"].is_null()) << "infinite, and smaller than the window";
    EXPECT_EQ(qelpic("encode photo.png a.jp2 --lossless --style bypass").exitCode, 0);
    outcome = qelpic("info good.jpg a.jp2 photo.png none.jpg --json");
    EXPECT_EQ(outcome.exitCode, 3);
    Json files = Json::parse(outcome.output);
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[0]["components"][1]["width"], 80);
    EXPECT_EQ(files[1]["code_block_style"], Json::array({"bypass"}));
    EXPECT_EQ(files[2]["colour"], "RGB");
}

TEST_F(Qelpic, Pipes)
{
    EXPECT_EQ(
        shell(QELPIC " encode - - --format jp2 <photo.jpg | " QELPIC " decode - --format png - >piped.png").exitCode,
        0);
    EXPECT_GT(psnr("photo.jpg", "piped.png"), 35);
    EXPECT_EQ(shell(QELPIC " encode - - <photo.png | cmp - photo.jpg").exitCode, 0);
    EXPECT_EQ(qelpic("decode photo.jpg -").output.substr(0, 14), "P6\n160 120\n255");
}

TEST_F(Qelpic, Habits)
{
    for (const char* options : {"-q 85", "-quality 85", "--quality 85 --sampling 4:2:0"}) {
        EXPECT_EQ(qelpic(std::string("encode photo.png habit.jpg ") + options).errors, "") << options;
        EXPECT_EQ(shell(QELPIC " encode photo.png plain.jpg --quality 85 && cmp habit.jpg plain.jpg").exitCode, 0);
    }
    expectEncoded("photo.png habit.jpg --sampling gray", "habit.jpg", "grey");
    EXPECT_EQ(qelpic("-V").output, qelpic("--version").output);
    expectError("enocde photo.png x.jpg", 2, "unknown command enocde: ");
    expectError("encode photo.png photo", 1, "photo: a name without an extension: the name should end in ");
}

}
