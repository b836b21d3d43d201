// SPDX-License-Identifier: Apache-2.0
#include "libjpeg.h"

#include <string.h>

#include <utility>

#include <turbojpeg.h>

#include "contest.h"

namespace qel::bench {
namespace {

std::vector<uint8_t> encode(const codec::Picture& picture, int quality, int tjSampling)
{
    std::unique_ptr<void, int (*)(void*)> handle(tjInitCompress(), tjDestroy);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    int bad = tjCompress2(handle.get(), picture.row(0), picture.width(), 0, picture.height(), TJPF_RGB, &data, &size,
                          tjSampling, quality, TJFLAG_ACCURATEDCT);
    require(!bad, "tjCompress2 failed");
    std::vector<uint8_t> file(data, data + size);
    tjFree(data);
    return file;
}

// After the header of the first scan.
size_t scanStartOf(const std::vector<uint8_t>& file)
{
    size_t at = 2;
    for (;;) {
        size_t length = file.at(at + 2) * 256u + file.at(at + 3);
        bool scan = file[at + 1] == 0xDA;
        at += 2 + length;
        if (scan) return at;
    }
}

HuffmanLists listsOf(const JHUFF_TBL* table)
{
    HuffmanLists lists;
    memcpy(lists.bits, table->bits + 1, 16);
    memcpy(lists.values, table->huffval, 256);
    return lists;
}

}

JpegCoefficients::JpegCoefficients(const codec::Picture& picture, int quality, int tjSampling)
    : file_(encode(picture, quality, tjSampling)), output_(file_.size() * 2 + 65536), scanStart_(scanStartOf(file_))
{
    pixels = double(picture.width()) * picture.height();
    source_.err = reader_.err = writer_.err = jpeg_std_error(&errors_);
    jpeg_create_decompress(&source_);
    jpeg_create_decompress(&reader_);
    jpeg_create_compress(&writer_);
    jpeg_mem_src(&source_, file_.data(), file_.size());
    jpeg_read_header(&source_, TRUE);
    arrays_ = jpeg_read_coefficients(&source_);
    collect();
}

JpegCoefficients::~JpegCoefficients()
{
    jpeg_destroy_compress(&writer_);
    jpeg_destroy_decompress(&reader_);
    jpeg_destroy_decompress(&source_);
}

void JpegCoefficients::collect()
{
    components = source_.num_components;
    for (int c = 0; c < components; ++c) {
        auto& info = source_.comp_info[c];
        componentOf.insert(componentOf.end(), size_t(components == 1 ? 1 : info.h_samp_factor * info.v_samp_factor), c);
    }
    for (int i = 0; i < (components == 1 ? 1 : 2); ++i) {
        dc[i] = listsOf(source_.dc_huff_tbl_ptrs[i]);
        ac[i] = listsOf(source_.ac_huff_tbl_ptrs[i]);
    }
    for (int i = 0; i < 64; ++i) quantizers[i] = source_.comp_info[0].quant_table->quantval[i];
    auto block = [&](int c, int row, int column) {
        auto rows = source_.mem->access_virt_barray((j_common_ptr)&source_, arrays_[c], JDIMENSION(row), 1, FALSE);
        blocks.insert(blocks.end(), rows[0][column], rows[0][column] + 64);
    };
    auto sides = [&](int c) {
        auto& info = source_.comp_info[c];
        return components == 1 ? std::pair(1, 1) : std::pair(info.h_samp_factor, info.v_samp_factor);
    };
    int across = int(source_.comp_info[0].width_in_blocks) / sides(0).first;
    int down = int(source_.comp_info[0].height_in_blocks) / sides(0).second;
    for (int y = 0; y < down; ++y)
        for (int x = 0; x < across; ++x)
            for (int c = 0; c < components; ++c) {
                auto [h, v] = sides(c);
                for (int i = 0; i < h * v; ++i) block(c, y * v + i / h, x * h + i % h);
            }
}

// Returns the length of the file.
template <class Prepare> size_t JpegCoefficients::writeAs(Prepare prepare)
{
    unsigned char* data = output_.data();
    unsigned long size = output_.size();
    jpeg_mem_dest(&writer_, &data, &size);
    jpeg_copy_critical_parameters(&source_, &writer_);
    prepare();
    jpeg_write_coefficients(&writer_, arrays_);
    jpeg_finish_compress(&writer_);
    require(data == output_.data(), "the output outgrew its buffer");
    return size;
}

void JpegCoefficients::write(bool optimised)
{
    writeAs([=, this] { writer_.optimize_coding = optimised; });
}

void JpegCoefficients::writeProgressive()
{
    size_t length = writeAs([this] { jpeg_simple_progression(&writer_); });
    progressive_.assign(output_.begin(), output_.begin() + ptrdiff_t(length));
}

void JpegCoefficients::read(const std::vector<uint8_t>& file)
{
    jpeg_mem_src(&reader_, file.data(), file.size());
    jpeg_read_header(&reader_, TRUE);
    jpeg_read_coefficients(&reader_);
    jpeg_finish_decompress(&reader_);
}

void JpegCoefficients::readSamples(uint8_t* rows, int step)
{
    jpeg_mem_src(&reader_, file_.data(), file_.size());
    jpeg_read_header(&reader_, TRUE);
    reader_.raw_data_out = TRUE;
    jpeg_start_decompress(&reader_);
    while (reader_.output_scanline < reader_.output_height) {
        JSAMPROW pointers[8];
        for (int i = 0; i < 8; ++i, rows += step) pointers[i] = rows;
        JSAMPARRAY planes[] = {pointers};
        jpeg_read_raw_data(&reader_, planes, 8);
    }
    jpeg_finish_decompress(&reader_);
}

JpegSampleWriter::JpegSampleWriter()
{
    writer_.err = jpeg_std_error(&errors_);
    jpeg_create_compress(&writer_);
}

JpegSampleWriter::~JpegSampleWriter() { jpeg_destroy_compress(&writer_); }

void JpegSampleWriter::write(const uint8_t* rows, int step, int width, int height, int quality)
{
    output_.resize(size_t(width) * height + 65536);
    unsigned char* data = output_.data();
    unsigned long size = output_.size();
    jpeg_mem_dest(&writer_, &data, &size);
    writer_.image_width = JDIMENSION(width);
    writer_.image_height = JDIMENSION(height);
    writer_.input_components = 1;
    writer_.in_color_space = JCS_GRAYSCALE;
    jpeg_set_defaults(&writer_);
    jpeg_set_quality(&writer_, quality, TRUE);
    writer_.raw_data_in = TRUE;
    jpeg_start_compress(&writer_, TRUE);
    while (writer_.next_scanline < writer_.image_height) {
        JSAMPROW pointers[8];
        for (int i = 0; i < 8; ++i, rows += step) pointers[i] = (JSAMPROW)rows;
        JSAMPARRAY planes[] = {pointers};
        jpeg_write_raw_data(&writer_, planes, 8);
    }
    jpeg_finish_compress(&writer_);
    require(data == output_.data(), "the output outgrew its buffer");
}

}
