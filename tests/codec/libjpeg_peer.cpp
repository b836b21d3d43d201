// SPDX-License-Identifier: Apache-2.0
// libjpeg behind functions from and to memory; its errors become exceptions.
#include "libjpeg_peer.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <jpeglib.h>

namespace qel::test {

namespace {

using namespace qel::codec;

[[noreturn]] void throwMessage(j_common_ptr peer)
{
    char text[JMSG_LENGTH_MAX];
    peer->err->format_message(peer, text);
    throw std::runtime_error(text);
}

jpeg_error_mgr throwingErrors()
{
    jpeg_error_mgr errors;
    jpeg_std_error(&errors);
    errors.error_exit = throwMessage;
    errors.emit_message = [](j_common_ptr, int) {};
    return errors;
}

struct Reader : jpeg_decompress_struct {
    explicit Reader(Bytes file)
    {
        err = &errors;
        jpeg_create_decompress(this);
        jpeg_mem_src(this, file.data(), file.size());
        jpeg_read_header(this, TRUE);
    }
    ~Reader() { jpeg_destroy_decompress(this); }
    jpeg_error_mgr errors = throwingErrors();
};

struct Writer : jpeg_compress_struct {
    Writer()
    {
        err = &errors;
        jpeg_create_compress(this);
        jpeg_mem_dest(this, &memory, &size);
    }
    ~Writer()
    {
        jpeg_destroy_compress(this);
        std::free(memory);
    }
    jpeg_error_mgr errors = throwingErrors();
    unsigned char* memory = nullptr;
    unsigned long size = 0;
};

J_COLOR_SPACE fileSpace(const Picture& picture, jpeg::Target target)
{
    if (target == jpeg::Target::usual)
        return picture.channels() == 1 ? JCS_GRAYSCALE : picture.channels() == 3 ? JCS_YCbCr : JCS_YCCK;
    static constexpr J_COLOR_SPACE kSpaces[] = {JCS_GRAYSCALE, JCS_YCbCr, JCS_RGB, JCS_CMYK, JCS_YCCK};
    return kSpaces[int(target) - int(jpeg::Target::grey)];
}

}

Picture peerDecode(Bytes file, bool replicate)
{
    Reader peer(file);
    peer.do_fancy_upsampling = !replicate;
    peer.dct_method = JDCT_ISLOW;
    int components = peer.num_components;
    peer.out_color_space = components == 1 ? JCS_GRAYSCALE : components == 3 ? JCS_RGB : JCS_CMYK;
    jpeg_start_decompress(&peer);
    ColourSpace space = components == 1 ? ColourSpace::grey : components == 3 ? ColourSpace::rgb : ColourSpace::cmyk;
    Picture picture(int(peer.output_width), int(peer.output_height), space, 8);
    while (peer.output_scanline < peer.output_height) {
        JSAMPROW row = picture.row(int(peer.output_scanline));
        jpeg_read_scanlines(&peer, &row, 1);
    }
    jpeg_finish_decompress(&peer);
    return picture;
}

std::vector<jpeg::Coefficients> peerCoefficients(Bytes file)
{
    Reader peer(file);
    jvirt_barray_ptr* arrays = jpeg_read_coefficients(&peer);
    std::vector<jpeg::Coefficients> result;
    for (int c = 0; c < peer.num_components; ++c) {
        const jpeg_component_info& info = peer.comp_info[c];
        jpeg::Coefficients& store = result.emplace_back();
        store.blocksAcross = int(info.width_in_blocks);
        store.blocksDown = int(info.height_in_blocks);
        for (int row = 0; row < store.blocksDown; ++row) {
            JBLOCKARRAY blocks = peer.mem->access_virt_barray((j_common_ptr)&peer, arrays[c], row, 1, FALSE);
            const JCOEF* first = blocks[0][0];
            store.values.insert(store.values.end(), first, first + size_t(64) * store.blocksAcross);
        }
    }
    jpeg_finish_decompress(&peer);
    return result;
}

std::vector<uint8_t> peerEncode(const Picture& picture, const jpeg::EncodeOptions& options)
{
    Writer peer;
    peer.image_width = picture.width();
    peer.image_height = picture.height();
    peer.input_components = picture.channels();
    peer.in_color_space = picture.channels() == 1 ? JCS_GRAYSCALE : picture.channels() == 3 ? JCS_RGB : JCS_CMYK;
    jpeg_set_defaults(&peer);
    jpeg_set_colorspace(&peer, fileSpace(picture, options.target));
    jpeg_set_quality(&peer, options.quality, !options.wideQuantizers);
    peer.dct_method = JDCT_ISLOW;
    peer.optimize_coding = options.optimiseTables;
    peer.restart_interval = options.restartInterval;
    peer.restart_in_rows = options.restartRows;
    std::vector<jpeg_scan_info> scans;
    for (int c = 0; c < peer.num_components; ++c) {
        if (options.sampling) {
            peer.comp_info[c].h_samp_factor = (*options.sampling)[c].h;
            peer.comp_info[c].v_samp_factor = (*options.sampling)[c].v;
        }
        if (!options.interleaved) scans.push_back({1, {c, 0, 0, 0}, 0, 63, 0, 0});
    }
    for (const jpeg::Scan& scan : options.scans) {
        scans.push_back({int(scan.components.size()), {}, scan.first, scan.last, scan.high, scan.low});
        std::copy(scan.components.begin(), scan.components.end(), scans.back().component_index);
    }
    if (options.progressive) jpeg_simple_progression(&peer);
    if (!scans.empty()) {
        peer.scan_info = scans.data();
        peer.num_scans = int(scans.size());
    }
    jpeg_start_compress(&peer, TRUE);
    while (peer.next_scanline < peer.image_height) {
        auto row = const_cast<JSAMPROW>(picture.row(int(peer.next_scanline)));
        jpeg_write_scanlines(&peer, &row, 1);
    }
    jpeg_finish_compress(&peer);
    return {peer.memory, peer.memory + peer.size};
}

}
