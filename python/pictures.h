// SPDX-License-Identifier: Apache-2.0
// Files and pictures as Python gives them.
#pragma once

#include <vector>

#include "arrays.h"
#include "codec/base/file_io.h"
#include "codec/base/picture.h"

namespace qel::python {

inline codec::Bytes bytesIn(const py::buffer_info& buffer)
{
    require(buffer.itemsize == 1 && buffer.ndim == 1, "bytes are wanted");
    return {static_cast<const uint8_t*>(buffer.ptr), size_t(buffer.size)};
}

inline py::bytes bytesOf(const std::vector<uint8_t>& bytes)
{
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// The bytes of a file: given as they are, or read from a path.
class Source {
public:
    explicit Source(const py::object& source)
    {
        if (PyObject_CheckBuffer(source.ptr())) {
            buffer_ = py::buffer(source).request();
            bytes_ = bytesIn(buffer_);
        } else {
            read_ = codec::readFile(py::str(py::module_::import("os").attr("fspath")(source)));
            bytes_ = read_;
        }
    }
    codec::Bytes bytes() const { return bytes_; }

private:
    py::buffer_info buffer_;
    std::vector<uint8_t> read_;
    codec::Bytes bytes_;
};

const char* nameOf(codec::ColourSpace space);

}
