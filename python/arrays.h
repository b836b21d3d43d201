// SPDX-License-Identifier: Apache-2.0
// What the parts of the Python module share: arrays, and statuses as exceptions.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <qeljx.h>
#include <qeljx/status.h>

#include <stdexcept>
#include <string>

namespace qel::python {

namespace py = pybind11;

// An array of this type whose rows follow each other; another one is converted, which copies it.
template <class T> using Array = py::array_t<T, py::array::c_style | py::array::forcecast>;

inline void require(bool isTrue, const char* what)
{
    if (!isTrue) throw py::value_error(what);
}

// A failure becomes an exception with the name of the status and what it means.
inline void check(QelStatus status)
{
    if (status < 0) throw std::runtime_error(std::string(qelStatusName(status)) + ": " + qelStatusText(status));
}

// Runs the work without the interpreter's lock.
template <class Work> auto unlocked(Work work)
{
    py::gil_scoped_release released;
    return work();
}

// The size of the last two dimensions but `behind`, in which calls of the library count.
inline QelSize sizeOf(const py::array& array, int behind = 0)
{
    require(array.ndim() >= 2 + behind, "the array has too few dimensions");
    py::ssize_t height = array.shape(array.ndim() - 2 - behind), width = array.shape(array.ndim() - 1 - behind);
    require(height > 0 && width > 0 && height <= INT32_MAX / 16 && width <= INT32_MAX / 16,
            "the array has no such size");
    return {int(width), int(height)};
}

void addInfoTo(py::module_& module);
void addPicturesTo(py::module_& module);
void addPrimitivesTo(py::module_& module);

}
