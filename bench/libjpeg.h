// SPDX-License-Identifier: Apache-2.0
// Stages of libjpeg-turbo through its public calls. Its codec objects are kept from call to call; a failure inside it
// ends the program with its message.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

#include <memory>
#include <vector>

#include <jpeglib.h>

#include "samples.h"

namespace qel::bench {

// A Huffman table as a file lists it.
struct HuffmanLists {
    uint8_t bits[16], values[256];
};

// The coefficients of a file: once as libjpeg-turbo holds them, once as blocks of 64 in the order of its one scan.
class JpegCoefficients {
public:
    // Encodes the picture, whose sides must be multiples of the MCU's.
    JpegCoefficients(const codec::Picture& picture, int quality, int tjSampling);
    ~JpegCoefficients();
    JpegCoefficients(const JpegCoefficients&) = delete;
    JpegCoefficients& operator=(const JpegCoefficients&) = delete;

    std::vector<int16_t> blocks;
    std::vector<int> componentOf; // for each block of an MCU
    int components = 0;
    double pixels = 0;
    HuffmanLists dc[2], ac[2];
    uint16_t quantizers[64]; // of the first component, natural order

    // The file without its coefficients' entropy coding changed: markers, then the scan.
    const std::vector<uint8_t>& file() const { return file_; }
    // Where the scan's data lies in it.
    size_t scanStart() const { return scanStart_; }
    size_t scanLength() const { return file_.size() - 2 - scanStart_; }

    // Entropy coding alone: jpeg_write_coefficients, with the usual tables or in two passes; jpeg_read_coefficients.
    void write(bool optimised);
    void read() { read(file_); }
    // The same for a progressive file of the usual script, statistics and tables included.
    void writeProgressive();
    void readProgressive() { read(progressive_); }
    const std::vector<uint8_t>& progressiveFile() const { return progressive_; }
    // Decoding without up-sampling and colour conversion: jpeg_read_raw_data. One component only.
    void readSamples(uint8_t* rows, int step);

private:
    std::vector<uint8_t> file_, output_, progressive_;
    size_t scanStart_ = 0;
    jpeg_error_mgr errors_;
    jpeg_decompress_struct source_, reader_;
    jpeg_compress_struct writer_;
    jvirt_barray_ptr* arrays_;

    void collect();
    template <class Prepare> size_t writeAs(Prepare prepare);
    void read(const std::vector<uint8_t>& file);
};

// Encodes grey samples that need no conversion, jpeg_write_raw_data.
class JpegSampleWriter {
public:
    JpegSampleWriter();
    ~JpegSampleWriter();
    JpegSampleWriter(const JpegSampleWriter&) = delete;
    JpegSampleWriter& operator=(const JpegSampleWriter&) = delete;
    void write(const uint8_t* rows, int step, int width, int height, int quality);

private:
    std::vector<uint8_t> output_;
    jpeg_error_mgr errors_;
    jpeg_compress_struct writer_;
};

}
