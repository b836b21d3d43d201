// SPDX-License-Identifier: Apache-2.0
// Bytes and text from the one side to the other.
#include "metadata.h"

#include <cmath>

#include "codec/formats/picture_file.h"
#include "codec/j2k/decode/file.h"
#include "codec/j2k/metadata.h"
#include "codec/jpeg/metadata.h"
#include "pictures.h"

namespace qel::python {

using namespace codec;

namespace {

// Comments are of any encoding: what is no UTF-8 comes back as it was.
constexpr const char* kForeign = "surrogateescape";

py::str textOf(const std::string& text)
{
    return py::reinterpret_steal<py::str>(PyUnicode_DecodeUTF8(text.data(), py::ssize_t(text.size()), kForeign));
}

std::vector<uint8_t> copied(const py::object& given)
{
    py::buffer_info buffer = py::buffer(given).request();
    Bytes bytes = bytesIn(buffer);
    return {bytes.begin(), bytes.end()};
}

Density densityOf(const py::object& given)
{
    Density density = {given.attr("x").cast<double>(), given.attr("y").cast<double>(),
                       given.attr("per_metre").cast<bool>()};
    require(std::isfinite(density.x) && std::isfinite(density.y) && density.x > 0 && density.y > 0,
            "a density is above 0");
    return density;
}

Metadata metadataOf(const py::object& given)
{
    Metadata metadata;
    metadata.icc = copied(given.attr("icc"));
    metadata.exif = copied(given.attr("exif"));
    metadata.xmp = copied(given.attr("xmp"));
    py::object density = given.attr("density");
    if (!density.is_none()) metadata.density = densityOf(density);
    for (py::handle comment : given.attr("comments"))
        metadata.comments.push_back(py::str(comment).attr("encode")("utf-8", kForeign).cast<std::string>());
    metadata.others = given.attr("others").cast<std::vector<std::string>>();
    return metadata;
}

}

py::tuple tupleOf(const Metadata& metadata)
{
    py::object density = py::none();
    if (metadata.density)
        density = py::make_tuple(metadata.density->x, metadata.density->y, metadata.density->isPerMetre);
    py::list comments, others;
    for (const std::string& comment : metadata.comments) comments.append(textOf(comment));
    for (const std::string& other : metadata.others) others.append(textOf(other));
    return py::make_tuple(bytesOf(metadata.icc), bytesOf(metadata.exif), bytesOf(metadata.xmp), density, comments,
                          others);
}

Metadata metadataIn(Bytes file)
{
    FileKind kind = kindOf(file);
    if (kind == FileKind::jpeg) return jpeg::readMetadata(file);
    if (kind == FileKind::jpeg2000) return j2k::readMetadata(file, j2k::open(file).jp2);
    return loadPicture(file).metadata;
}

Fitted fitted(const py::object& given, const MetadataRoom& room, ColourSpace space)
{
    if (given.is_none()) return {};
    Fitted made = {metadataOf(given), {}};
    int orientation = orientationOf(made.metadata.exif);
    std::string names;
    for (const std::string& name : limit(made.metadata, room, space)) names += (names.empty() ? "" : ", ") + name;
    if (!names.empty()) made.warnings.push_back("not in the output: " + names);
    if (orientation != 1 && made.metadata.exif.empty())
        made.warnings.push_back("the picture is not upright, and the output cannot say so");
    return made;
}

}
