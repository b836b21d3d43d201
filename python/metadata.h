// SPDX-License-Identifier: Apache-2.0
// Metadata of files as tuples of Python, in the order of qeljx.Metadata.
#pragma once

#include "arrays.h"
#include "codec/base/metadata.h"

namespace qel::python {

py::tuple tupleOf(const codec::Metadata& metadata);
// Of the headers of a file.
codec::Metadata metadataIn(codec::Bytes file);

// Metadata on its way into a file, and what is not kept of it.
struct Fitted {
    codec::Metadata metadata;
    codec::Warnings warnings;
};

// `given` is a qeljx.Metadata or None.
Fitted fitted(const py::object& given, const codec::MetadataRoom& room, codec::ColourSpace space);

}
