// SPDX-License-Identifier: Apache-2.0
// Files and pictures as Python gives them.
#pragma once

#include <vector>

#include "arrays.h"
#include "codec/base/file_io.h"
#include "codec/base/picture.h"

namespace qel::python {

// The bytes of a file: given as they are, or read from a path.
class Source {
public:
    explicit Source(const py::object& source)
    {
        if (PyObject_CheckBuffer(source.ptr())) {
            buffer_ = py::buffer(source).request();
            require(buffer_.itemsize == 1 && buffer_.ndim == 1, "bytes are wanted");
            bytes_ = {static_cast<const uint8_t*>(buffer_.ptr), size_t(buffer_.size)};
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
