// SPDX-License-Identifier: Apache-2.0
// What the headers of a file say, as a dict of Python.
#include "codec/jpeg/info.h"
#include "arrays.h"
#include "codec/formats/picture_file.h"
#include "codec/j2k/decode/file.h"
#include "codec/j2k/metadata.h"
#include "codec/jpeg/metadata.h"
#include "metadata.h"
#include "pictures.h"

namespace qel::python {
namespace {

using namespace codec;

py::dict infoOf(const jpeg::Info& info)
{
    py::list components;
    for (const jpeg::Component& component : info.components) {
        py::dict about;
        about["width"] = component.width;
        about["height"] = component.height;
        about["sampling"] = py::make_tuple(component.h, component.v);
        components.append(about);
    }
    py::dict about;
    about["format"] = "jpeg";
    about["width"] = info.width;
    about["height"] = info.height;
    about["precision"] = info.precision;
    about["colour"] = jpeg::nameOf(info.colour);
    about["components"] = components;
    about["process"] = jpeg::nameOf(info.process);
    about["scans"] = info.scans;
    about["restart_interval"] = info.restartInterval;
    if (info.process == jpeg::Process::lossless) about["predictor"] = info.predictor;
    return about;
}

py::dict infoOf(const j2k::File& file)
{
    const j2k::Size& size = file.codestream->size();
    const j2k::Parameters& parameters = file.codestream->parameters();
    py::list components;
    int precision = 0;
    for (size_t c = 0; c < size.components.size(); ++c) {
        const j2k::Component& component = size.components[c];
        j2k::Rect rect = size.component(c);
        py::dict about;
        about["width"] = rect.width();
        about["height"] = rect.height();
        about["sampling"] = py::make_tuple(component.dx, component.dy);
        about["precision"] = component.precision;
        about["signed"] = component.isSigned;
        components.append(about);
        precision = std::max(precision, component.precision);
    }
    py::dict about;
    about["format"] = file.jp2 ? "jp2" : "j2k";
    about["width"] = size.picture.width();
    about["height"] = size.picture.height();
    about["precision"] = precision;
    bool isTold = file.jp2 && !file.jp2->colours.empty();
    about["colour"] = isTold ? nameOf(file.jp2->colours[0]) : "unknown";
    about["components"] = components;
    about["tiles"] = size.tiles();
    about["tile_size"] = py::make_tuple(size.firstTile.width(), size.firstTile.height());
    about["levels"] = parameters.coding->levels;
    about["layers"] = parameters.style->layers;
    about["reversible"] = parameters.coding->isReversible;
    about["progression"] = j2k::nameOf(parameters.style->order);
    about["warnings"] = file.warnings;
    return about;
}

py::dict infoOf(const Picture& picture, FileKind kind)
{
    py::dict about;
    about["format"] = kind == FileKind::png ? "png" : kind == FileKind::pgx ? "pgx" : "pnm";
    about["width"] = picture.width();
    about["height"] = picture.height();
    about["precision"] = picture.precision();
    about["colour"] = nameOf(picture.space());
    return about;
}

py::dict info(const py::object& given)
{
    Source source(given);
    Bytes file = source.bytes();
    FileKind kind = kindOf(file);
    py::dict about;
    if (kind == FileKind::jpeg) {
        about = infoOf(unlocked([&] { return jpeg::readInfo(file); }));
        about["metadata"] = tupleOf(jpeg::readMetadata(file));
    } else if (kind == FileKind::jpeg2000) {
        j2k::File opened = unlocked([&] { return j2k::open(file); });
        about = infoOf(opened);
        about["metadata"] = tupleOf(j2k::readMetadata(file, opened.jp2));
    } else {
        DecodedPicture loaded = unlocked([&] { return loadPicture(file); });
        about = infoOf(loaded.picture, kind);
        about["metadata"] = tupleOf(loaded.metadata);
    }
    return about;
}

}

void addInfoTo(py::module_& module) { module.def("info", &info, py::arg("source")); }

}
