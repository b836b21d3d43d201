// SPDX-License-Identifier: Apache-2.0
// Whole files in and out.
#include "codec/base/file_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>
#include <utility>

#include "codec/base/error.h"
#include "codec/base/picture.h"

namespace qel::codec {
namespace {

constexpr size_t kMaxFileBytes = Picture::kMaxBytes + (size_t(1) << 20);

[[noreturn]] void refuse(const char* what) { throw CodecError(what + std::string(": ") + std::strerror(errno)); }

struct CloseInput {
    void operator()(std::FILE* file) const
    {
        if (file != stdin) std::fclose(file);
    }
};

// Bytes that a regular file still has; 0 for anything else.
size_t sizeOf(std::FILE* file)
{
    struct stat status;
    return fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode) ? size_t(status.st_size) : 0;
}

}

std::string extensionOf(const std::string& path)
{
    size_t dot = path.find_last_of("./");
    if (dot == std::string::npos || path[dot] == '/') return "";
    std::string name = path.substr(dot + 1);
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return name;
}

size_t fileSize(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) ? size_t(status.st_size) : 0;
}

std::vector<uint8_t> readFile(const std::string& path)
{
    std::unique_ptr<std::FILE, CloseInput> file(path == "-" ? stdin : std::fopen(path.c_str(), "rb"));
    if (!file) refuse("cannot be opened");
    size_t size = sizeOf(file.get());
    if (size > kMaxFileBytes) throw CodecError("the file is too large");
    // One byte more, so that the end shows without growing.
    std::vector<uint8_t> bytes(size ? size + 1 : 1 << 16);
    size_t used = 0;
    while (size_t got = std::fread(bytes.data() + used, 1, bytes.size() - used, file.get())) {
        used += got;
        if (used > kMaxFileBytes) throw CodecError("the file is too large");
        if (used == bytes.size()) bytes.resize(2 * used);
    }
    if (std::ferror(file.get())) refuse("cannot be read");
    bytes.resize(used);
    return bytes;
}

OutputFile::OutputFile(const std::string& path) : path_(path)
{
    struct stat status;
    bool exists = stat(path.c_str(), &status) == 0;
    if (path == "-") {
        file_ = stdout;
    } else if (exists && (!S_ISREG(status.st_mode) || access(path.c_str(), W_OK))) {
        file_ = std::fopen(path.c_str(), "wb");
    } else {
        // What a link leads to is replaced, not the link.
        if (exists) path_ = std::filesystem::canonical(path);
        temporary_ = path_ + '.' + std::to_string(getpid()) + ".part";
        int descriptor =
            open(temporary_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, exists ? status.st_mode & 0777 : 0666);
        if (descriptor >= 0) file_ = fdopen(descriptor, "wb");
    }
    if (!file_) refuse("cannot be written");
}

OutputFile::~OutputFile()
{
    if (file_ && file_ != stdout) std::fclose(file_);
    if (!temporary_.empty()) std::remove(temporary_.c_str());
}

void OutputFile::write(Bytes bytes)
{
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) refuse("cannot be written");
}

void OutputFile::close()
{
    std::FILE* file = std::exchange(file_, nullptr);
    if (file == stdout ? std::fflush(file) : std::fclose(file)) refuse("cannot be written");
}

void OutputFile::commit()
{
    close();
    if (temporary_.empty()) return;
    if (std::rename(temporary_.c_str(), path_.c_str())) refuse("cannot be written");
    temporary_.clear();
}

}
