#pragma once

#include "python/native/Model.h"

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <memory>
#include <string>
#include <vector>

namespace OV::Python
{

/// Numbers in rows, in whatever layout; what is not float is converted.
using FloatArray = pybind11::array_t<float, pybind11::array::c_style | pybind11::array::forcecast>;
using DoubleArray = pybind11::array_t<double, pybind11::array::c_style | pybind11::array::forcecast>;
using IndexArray = pybind11::array_t<std::uint32_t, pybind11::array::c_style | pybind11::array::forcecast>;
using ByteArray = pybind11::array_t<std::uint8_t, pybind11::array::c_style>;

/// Points or directions of an array of n rows of three, copied once.
/// @throw Refused by name for another shape.
std::vector<Vector> VectorsOf(const FloatArray& array, const char* name);

/// The parts that triangles make. An empty array is as good as none.
/// @param positions,normals n rows of three. @param coordinates n rows of two. @param colors n rows of
/// four. @param triangles m rows of three vertices.
std::vector<std::shared_ptr<Geometry>> MakeGeometry(const FloatArray& positions, const IndexArray& triangles,
                                                    const FloatArray& normals, const FloatArray& coordinates,
                                                    const FloatArray& colors, float crease);

/// Geometry whose arrays are zero, for Python to fill.
std::shared_ptr<Geometry> AllocateGeometry(std::size_t vertices, const IndexArray& triangles, bool hasCoordinates,
                                           bool hasColors);

/// A writable view of an array of geometry; None where it is empty. It keeps the geometry alive.
pybind11::object PositionsOf(const std::shared_ptr<Geometry>& geometry);
pybind11::object NormalsOf(const std::shared_ptr<Geometry>& geometry);
pybind11::object CoordinatesOf(const std::shared_ptr<Geometry>& geometry);
pybind11::object ColorsOf(const std::shared_ptr<Geometry>& geometry);
/// A view that nobody can write to: an index out of range would be read.
pybind11::object TrianglesOf(const std::shared_ptr<Geometry>& geometry);

/// A matrix of four rows of a place, as column vectors have it.
pybind11::array PlaceArray(const Transform& place);
/// @throw Refused for what is no place: another shape, not finite, without an inverse, or in perspective.
Transform PlaceFrom(const DoubleArray& matrix);

/// Pixels of rows of three or four bytes, the top row first.
Pixels PixelsOf(const ByteArray& picture);
/// Pixels of a PNG or JPEG file.
Pixels PixelsOfFile(const std::string& path);

/// Rows of so many channels that take the pixels over.
pybind11::array PictureArray(std::vector<unsigned char>&& pixels, PictureSize size, int channels = 3);

} // namespace OV::Python
