// SPDX-License-Identifier: Apache-2.0
// PNG pictures. libpng reports errors by longjmp: no code that it may jump over has anything to clean up, and each
// jump becomes an exception in `guarded`.
#include "codec/formats/png.h"

#include <png.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "codec/base/error.h"

namespace qel::codec {
namespace {

// No stream of Deflate grows by more.
constexpr uint64_t kLargestGrowth = 1032;

// What a chunk of metadata may grow to.
constexpr size_t kLargestChunk = size_t(64) << 20;

constexpr const char *kXmpKey = "XML:com.adobe.xmp", *kCommentKey = "Comment";

// Runs `step`, which calls libpng and owns nothing; true if libpng gave up.
template <class Step> bool givesUp(png_structp png, Step step)
{
    if (setjmp(png_jmpbuf(png))) return true;
    step();
    return false;
}

struct Message {
    char text[128] = "";

    static void keep(png_structp png, png_const_charp text)
    {
        auto* message = static_cast<Message*>(png_get_error_ptr(png));
        std::copy_n(text, std::min(std::char_traits<char>::length(text), sizeof(message->text) - 1), message->text);
        png_longjmp(png, 1);
    }
    static void ignore(png_structp, png_const_charp) {}
};

class Reader {
public:
    explicit Reader(Bytes file) : file_(file)
    {
        png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &message_, Message::keep, Message::ignore);
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        if (!info_) {
            png_destroy_read_struct(&png_, nullptr, nullptr);
            throw std::bad_alloc();
        }
        png_set_read_fn(png_, this, read);
        // Sizes are limited by Picture.
        png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
        png_set_chunk_malloc_max(png_, kLargestChunk);
    }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;
    ~Reader() { png_destroy_read_struct(&png_, &info_, nullptr); }

    DecodedPicture decode()
    {
        guarded([&] { readHeader(); });
        uint64_t coded = uint64_t(codedRowBytes_) * height_;
        if (coded / kLargestGrowth > file_.size())
            throw CodecError("the file is too short for its picture", file_.size());
        Picture picture(int(width_), int(height_), isColour_ ? ColourSpace::rgb : ColourSpace::grey, precision_,
                        hasAlpha_);
        std::vector<png_bytep> rows(height_);
        for (uint32_t y = 0; y < height_; ++y) rows[y] = picture.row(int(y));
        guarded([&] {
            prepare();
            if (png_get_rowbytes(png_, info_) != picture.step())
                png_error(png_, "rows of another size than the header says");
            png_read_image(png_, rows.data());
            png_read_end(png_, nullptr);
        });
        return {std::move(picture), {}, false, metadata(), false};
    }

private:
    // Chunks from before and after the samples.
    Metadata metadata()
    {
        Metadata metadata;
        png_charp name;
        png_bytep bytes;
        int compression, unit;
        png_uint_32 size, x, y;
        if (png_get_iCCP(png_, info_, &name, &compression, &bytes, &size)) metadata.icc.assign(bytes, bytes + size);
        if (png_get_eXIf_1(png_, info_, &size, &bytes)) metadata.exif.assign(bytes, bytes + size);
        if (png_get_pHYs(png_, info_, &x, &y, &unit) && x && y && (unit == PNG_RESOLUTION_METER || x != y))
            metadata.density = {double(x), double(y), unit == PNG_RESOLUTION_METER};
        png_textp texts;
        int count = png_get_text(png_, info_, &texts, nullptr);
        for (int i = 0; i < count; ++i) {
            std::string key = texts[i].key;
            size_t length =
                texts[i].compression >= PNG_ITXT_COMPRESSION_NONE ? texts[i].itxt_length : texts[i].text_length;
            if (key == kXmpKey)
                metadata.xmp.assign(texts[i].text, texts[i].text + length);
            else if (key == kCommentKey)
                metadata.comments.emplace_back(texts[i].text, length);
            else
                metadata.others.push_back("the text \"" + key + "\"");
        }
        return metadata;
    }

    static void read(png_structp png, png_bytep dst, size_t count)
    {
        auto* self = static_cast<Reader*>(png_get_io_ptr(png));
        if (count > self->file_.size() - self->at_) {
            self->at_ = self->file_.size();
            png_error(png, "the file ends too soon");
        }
        std::copy_n(self->file_.data() + self->at_, count, dst);
        self->at_ += count;
    }

    template <class Step> void guarded(Step step)
    {
        if (givesUp(png_, step)) throw CodecError("damaged PNG: " + std::string(message_.text), at_);
    }

    // Reads up to the samples.
    void readHeader()
    {
        png_read_info(png_, info_);
        int depth, type;
        png_get_IHDR(png_, info_, &width_, &height_, &depth, &type, nullptr, nullptr, nullptr);
        codedRowBytes_ = png_get_rowbytes(png_, info_);
        isColour_ = type & PNG_COLOR_MASK_COLOR;
        hasTransparentColours_ = png_get_valid(png_, info_, PNG_INFO_tRNS);
        hasAlpha_ = type & PNG_COLOR_MASK_ALPHA || hasTransparentColours_;
        isPalette_ = type == PNG_COLOR_TYPE_PALETTE;
        precision_ = isPalette_ || hasTransparentColours_ ? std::max(depth, 8) : depth;
        if (!isPalette_ && !hasTransparentColours_) readSignificantBits();
    }

    // Asks for grey or RGB samples, and alpha, of 8 bits or of 16 in the machine's order. libpng takes memory for rows
    // here.
    void prepare()
    {
        if (isPalette_) png_set_palette_to_rgb(png_);
        if (shift_) png_set_shift(png_, shift_);
        png_set_packing(png_);
        if (hasTransparentColours_) png_set_tRNS_to_alpha(png_);
        if constexpr (std::endian::native == std::endian::little) png_set_swap(png_);
        png_set_interlace_handling(png_);
        png_read_update_info(png_, info_);
    }

    void readSignificantBits()
    {
        png_color_8p bits;
        if (!png_get_sBIT(png_, info_, &bits)) return;
        int significant = isColour_ ? bits->red : bits->gray;
        if (isColour_ && (bits->green != significant || bits->blue != significant)) return;
        if (hasAlpha_ && bits->alpha != significant) return;
        // Samples of more than a byte stay so.
        if (significant == 0 || significant >= precision_ || (precision_ == 16 && significant <= 8)) return;
        shift_ = bits;
        precision_ = significant;
    }

    Bytes file_;
    size_t at_ = 0, codedRowBytes_ = 0;
    Message message_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
    png_uint_32 width_ = 0, height_ = 0;
    png_color_8p shift_ = nullptr;
    int precision_ = 0;
    bool isColour_ = false, isPalette_ = false, hasTransparentColours_ = false, hasAlpha_ = false;
};

class Writer {
public:
    explicit Writer(const ByteSink& sink) : sink_(sink)
    {
        png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, &message_, Message::keep, Message::ignore);
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        if (!info_) {
            png_destroy_write_struct(&png_, nullptr);
            throw std::bad_alloc();
        }
        png_set_write_fn(png_, this, write, nullptr);
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() { png_destroy_write_struct(&png_, &info_); }

    Warnings write(const Picture& picture, const Metadata& metadata)
    {
        describe(metadata);
        bool failed = givesUp(png_, [&] { writeAll(picture); });
        if (failure_) std::rethrow_exception(failure_);
        if (failed) throw CodecError("cannot write PNG: " + std::string(message_.text));
        if (metadata.icc.empty() || png_get_valid(png_, info_, PNG_INFO_iCCP)) return {};
        return {"the ICC profile is not as PNG wants it: it is left out"};
    }

private:
    // Texts of Latin letters only are written as PNG's first version has them.
    void describe(const Metadata& metadata)
    {
        auto addText = [&](const char* key, const std::string& text, bool isUnicode) {
            png_text& entry = texts_.emplace_back();
            entry.compression = isUnicode ? PNG_ITXT_COMPRESSION_NONE : PNG_TEXT_COMPRESSION_NONE;
            entry.key = const_cast<char*>(key);
            entry.text = const_cast<char*>(text.c_str());
            (isUnicode ? entry.itxt_length : entry.text_length) = text.size();
            entry.lang = entry.lang_key = nullptr;
        };
        xmp_.assign(metadata.xmp.begin(), metadata.xmp.end());
        if (!xmp_.empty()) addText(kXmpKey, xmp_, true);
        for (const std::string& comment : metadata.comments)
            addText(kCommentKey, comment, std::ranges::any_of(comment, [](char c) { return c & 0x80; }));
        metadata_ = &metadata;
    }

    void writeMetadata()
    {
        const Metadata& m = *metadata_;
        // A profile that libpng finds odd is no reason to give up.
        png_set_benign_errors(png_, true);
        if (!m.icc.empty())
            png_set_iCCP(png_, info_, "profile", PNG_COMPRESSION_TYPE_BASE, m.icc.data(), png_uint_32(m.icc.size()));
        if (!m.exif.empty())
            png_set_eXIf_1(png_, info_, png_uint_32(m.exif.size()), const_cast<png_bytep>(m.exif.data()));
        if (m.density)
            png_set_pHYs(png_, info_, png_uint_32(std::lround(m.density->x)), png_uint_32(std::lround(m.density->y)),
                         m.density->isPerMetre ? PNG_RESOLUTION_METER : PNG_RESOLUTION_UNKNOWN);
        if (!texts_.empty()) png_set_text(png_, info_, texts_.data(), int(texts_.size()));
    }

    static void write(png_structp png, png_bytep src, size_t count)
    {
        auto* self = static_cast<Writer*>(png_get_io_ptr(png));
        if (!self->take({src, count})) png_error(png, "the output cannot be written");
    }

    // Exceptions must not pass through libpng.
    bool take(Bytes bytes) noexcept
    {
        try {
            sink_(bytes);
            return true;
        } catch (...) {
            failure_ = std::current_exception();
            return false;
        }
    }

    void writeAll(const Picture& picture)
    {
        bool isGrey = picture.space() == ColourSpace::grey;
        int type =
            (isGrey ? PNG_COLOR_TYPE_GRAY : PNG_COLOR_TYPE_RGB) | (picture.hasAlpha() ? PNG_COLOR_MASK_ALPHA : 0);
        int precision = picture.precision();
        int depth = type != PNG_COLOR_TYPE_GRAY && precision < 8 ? 8 : int(std::bit_ceil(unsigned(precision)));
        png_set_IHDR(png_, info_, picture.width(), picture.height(), depth, type, PNG_INTERLACE_NONE,
                     PNG_COMPRESSION_TYPE_BASE, PNG_FILTER_TYPE_BASE);
        auto bits = png_byte(precision);
        png_color_8 significant = {bits, bits, bits, bits, bits};
        if (precision < depth) png_set_sBIT(png_, info_, &significant);
        writeMetadata();
        png_write_info(png_, info_);
        if (precision < depth) png_set_shift(png_, &significant);
        png_set_packing(png_);
        if constexpr (std::endian::native == std::endian::little) png_set_swap(png_);
        for (int y = 0; y < picture.height(); ++y) png_write_row(png_, picture.row(y));
        png_write_end(png_, nullptr);
    }

    const ByteSink& sink_;
    const Metadata* metadata_ = nullptr;
    std::string xmp_;
    std::vector<png_text> texts_;
    std::exception_ptr failure_;
    Message message_;
    png_structp png_ = nullptr;
    png_infop info_ = nullptr;
};

}

bool isPng(Bytes file) { return file.size() >= 8 && !png_sig_cmp(file.data(), 0, 8); }

DecodedPicture readPng(Bytes file) { return Reader(file).decode(); }

Warnings writePng(const Picture& picture, const ByteSink& sink, const Metadata& metadata)
{
    if (picture.space() == ColourSpace::cmyk) throw CodecError("PNG has no CMYK pictures");
    return Writer(sink).write(picture, metadata);
}

}
