// SPDX-License-Identifier: Apache-2.0
// Whole files in, and files out that appear under their name only when they are whole.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "codec/base/bytes.h"

namespace qel::codec {

// What stands behind the last dot of a file's name, in small letters; empty where there is none.
std::string extensionOf(const std::string& path);

// Bytes of a regular file; 0 where there is none.
size_t fileSize(const std::string& path);

// All bytes of the file, or of standard input for "-". Throws CodecError, also for files above a limit that leaves room
// for the largest raw picture.
std::vector<uint8_t> readFile(const std::string& path);

// Collects the output under a temporary name in the same folder; `commit` gives it its name, replacing what was there.
// Without a commit nothing changes and the temporary file goes. "-" is standard output; what is no regular file, such
// as a device or a pipe, is written directly. All functions throw CodecError with the system's reason.
class OutputFile {
public:
    explicit OutputFile(const std::string& path);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    void write(Bytes bytes);
    void commit();

private:
    void close();

    std::string path_, temporary_;
    std::FILE* file_ = nullptr;
};

}
