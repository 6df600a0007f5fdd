#include "python/native/Arrays.h"

#include "python/native/Refused.h"
#include "orvane_host/geometry/TriangleMesh.h"
#include "orvane/imaging/FilePath.h"
#include "orvane/imaging/Image.h"
#include "orvane/imaging/ImageCodec.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Transform.h"
#include "orvane/scene/RawMesh.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>
#include <type_traits>
#include <utility>

namespace py = pybind11;

namespace OV::Python
{

namespace
{

// What lies in the engine's vectors is what NumPy takes for rows of floats.
static_assert(sizeof(Vector) == 3 * sizeof(float) && std::is_trivially_copyable_v<Vector>);
static_assert(sizeof(TextureCoordinate) == 2 * sizeof(float) && std::is_trivially_copyable_v<TextureCoordinate>);
static_assert(sizeof(Color) == 4 * sizeof(float) && std::is_trivially_copyable_v<Color>);

std::string ShapeOf(const py::array& array)
{
    std::string text = "(";
    for (py::ssize_t i = 0; i < array.ndim(); ++i)
    {
        text += (i ? ", " : "") + std::to_string(array.shape(i));
    }
    return text + (array.ndim() == 1 ? ",)" : ")");
}

void NeedRows(const py::array& array, py::ssize_t columns, const char* name)
{
    if (array.ndim() != 2 || array.shape(1) != columns)
    {
        throw Refused(Trouble::Value, std::string(name) + " has the shape " + ShapeOf(array) + "; it has to be (n, "
                                          + std::to_string(columns) + ")");
    }
}

/// Rows of an array as values of the engine; none for an array without elements.
template <typename Value>
std::vector<Value> RowsOf(const FloatArray& array, const char* name)
{
    constexpr auto columns = static_cast<py::ssize_t>(sizeof(Value) / sizeof(float));
    if (array.size() == 0)
    {
        return {};
    }
    NeedRows(array, columns, name);
    std::vector<Value> rows(static_cast<std::size_t>(array.shape(0)));
    std::memcpy(static_cast<void*>(rows.data()), array.data(), rows.size() * sizeof(Value));
    return rows;
}

std::vector<std::uint32_t> IndicesOf(const IndexArray& triangles)
{
    if (triangles.size() != 0)
    {
        NeedRows(triangles, 3, "triangles");
    }
    return std::vector<std::uint32_t>(triangles.data(), triangles.data() + triangles.size());
}

template <typename Value>
py::object ViewOf(const std::shared_ptr<Geometry>& geometry, std::vector<Value>& values)
{
    if (values.empty())
    {
        return py::none();
    }
    constexpr auto columns = static_cast<py::ssize_t>(sizeof(Value) / sizeof(float));
    return py::array_t<float>({static_cast<py::ssize_t>(values.size()), columns},
                              reinterpret_cast<const float*>(values.data()), py::cast(geometry));
}

} // namespace

std::vector<Vector> VectorsOf(const FloatArray& array, const char* name)
{
    return RowsOf<Vector>(array, name);
}

std::vector<std::shared_ptr<Geometry>> MakeGeometry(const FloatArray& positions, const IndexArray& triangles,
                                                    const FloatArray& normals, const FloatArray& coordinates,
                                                    const FloatArray& colors, float crease)
{
    Host::TriangleMesh::Source source;
    source.positions = RowsOf<Vector>(positions, "positions");
    source.normals = RowsOf<Vector>(normals, "normals");
    source.textureCoordinates = RowsOf<TextureCoordinate>(coordinates, "texture coordinates");
    source.colors = RowsOf<Color>(colors, "colors");
    source.indices = IndicesOf(triangles);
    std::string error;
    std::vector<std::shared_ptr<Geometry>> parts;
    for (std::shared_ptr<RawMesh>& raw : Host::TriangleMesh::Make(std::move(source), error, crease))
    {
        parts.push_back(std::make_shared<Geometry>());
        parts.back()->raw = std::move(raw);
    }
    if (parts.empty())
    {
        throw Refused(Trouble::Value, error);
    }
    return parts;
}

std::shared_ptr<Geometry> AllocateGeometry(std::size_t vertices, const IndexArray& triangles, bool hasCoordinates,
                                           bool hasColors)
{
    if (vertices < 1 || vertices > Host::TriangleMesh::MostVertices)
    {
        throw Refused(Trouble::Value, "vertices is " + std::to_string(vertices) + "; it has to be 1 to "
                                          + std::to_string(Host::TriangleMesh::MostVertices));
    }
    Host::TriangleMesh::Source source;
    source.positions.resize(vertices);
    source.normals.resize(vertices);
    source.textureCoordinates.resize(hasCoordinates ? vertices : 0);
    source.colors.resize(hasColors ? vertices : 0);
    source.indices = IndicesOf(triangles);
    std::string error;
    std::vector<std::shared_ptr<RawMesh>> made = Host::TriangleMesh::Make(std::move(source), error);
    if (made.empty())
    {
        throw Refused(Trouble::Value, error);
    }
    auto geometry = std::make_shared<Geometry>();
    geometry->raw = std::move(made.front());
    return geometry;
}

py::object PositionsOf(const std::shared_ptr<Geometry>& geometry)
{
    return ViewOf(geometry, geometry->raw->positions);
}

py::object NormalsOf(const std::shared_ptr<Geometry>& geometry)
{
    return ViewOf(geometry, geometry->raw->normals);
}

py::object CoordinatesOf(const std::shared_ptr<Geometry>& geometry)
{
    return ViewOf(geometry, geometry->raw->textureCoordinates);
}

py::object ColorsOf(const std::shared_ptr<Geometry>& geometry)
{
    return ViewOf(geometry, geometry->raw->colors);
}

py::object TrianglesOf(const std::shared_ptr<Geometry>& geometry)
{
    const std::vector<unsigned short>& indices = geometry->raw->indices;
    // A copy: who owns an array that cannot be written to may make it writable again.
    py::array_t<std::uint16_t> view({static_cast<py::ssize_t>(indices.size() / 3), py::ssize_t(3)}, indices.data());
    view.attr("flags").attr("writeable") = false;
    return std::move(view);
}

py::array PlaceArray(const Transform& place)
{
    py::array_t<double> matrix({4, 4});
    for (py::ssize_t row = 0; row < 4; ++row)
    {
        for (py::ssize_t column = 0; column < 4; ++column)
        {
            matrix.mutable_at(row, column) = place.GetTransf3d().m[row][column];
        }
    }
    return std::move(matrix);
}

Transform PlaceFrom(const DoubleArray& matrix)
{
    if (matrix.ndim() != 2 || matrix.shape(0) != 4 || matrix.shape(1) != 4)
    {
        throw Refused(Trouble::Value, "transform has the shape " + ShapeOf(matrix) + "; it has to be (4, 4)");
    }
    QGM::Transf3d place;
    for (py::ssize_t row = 0; row < 4; ++row)
    {
        for (py::ssize_t column = 0; column < 4; ++column)
        {
            const double value = matrix.at(row, column);
            if (!(std::abs(value) <= 1e15))
            {
                throw Refused(Trouble::Value, "transform holds a number beyond 1e15; it has to be finite and within");
            }
            place.setValue(static_cast<std::uint64_t>(row), static_cast<std::uint64_t>(column), value);
        }
    }
    const auto& m = place.m;
    const double determinant = m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1])
                               - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0])
                               + m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    if (m[3][0] != 0.0 || m[3][1] != 0.0 || m[3][2] != 0.0 || m[3][3] != 1.0 || !(std::abs(determinant) > 0.0))
    {
        throw Refused(Trouble::Value, "transform is no place in space; its last row has to be 0, 0, 0, 1 and its "
                                      "determinant other than 0");
    }
    Transform transform;
    transform.SetTransf3d(place);
    return transform;
}

Pixels PixelsOf(const ByteArray& picture)
{
    constexpr py::ssize_t most = 16384;
    if (picture.ndim() != 3 || (picture.shape(2) != 3 && picture.shape(2) != 4) || picture.shape(0) < 1
        || picture.shape(1) < 1 || picture.shape(0) > most || picture.shape(1) > most)
    {
        throw Refused(Trouble::Value, "texture has the shape " + ShapeOf(picture)
                                          + "; it has to be (height, width, 3 or 4) with at most 16384 a side");
    }
    const auto height = static_cast<std::size_t>(picture.shape(0));
    const auto width = static_cast<std::size_t>(picture.shape(1));
    const auto channels = static_cast<std::size_t>(picture.shape(2));
    Pixels pixels;
    pixels.width = static_cast<int>(width);
    pixels.height = static_cast<int>(height);
    pixels.rgba.assign(width * height * 4, 255);
    const unsigned char* from = picture.data();
    for (std::size_t row = height; row-- > 0;)
    {
        for (std::size_t column = 0; column < width; ++column, from += channels)
        {
            std::copy(from, from + channels, &pixels.rgba[(row * width + column) * 4]);
        }
    }
    return pixels;
}

Pixels PixelsOfFile(const std::string& path)
{
    std::unique_ptr<Image> image;
    try
    {
        image.reset(ImageCodec::LoadImageData(FilePath(), path, false, true));
    }
    catch (const std::exception&)
    {
        // As where there is none: the sentence below has the remedy for both.
    }
    Pixels pixels;
    const unsigned char* const data = image ? image->GetData(pixels.width, pixels.height) : nullptr;
    if (!data || pixels.width < 1 || pixels.height < 1)
    {
        throw Refused(Trouble::File, path + ": the picture can't be read; give a PNG or JPEG file");
    }
    pixels.rgba.assign(data, data + static_cast<std::size_t>(pixels.width) * static_cast<std::size_t>(pixels.height) * 4);
    return pixels;
}

py::array PictureArray(std::vector<unsigned char>&& pixels, PictureSize size, int channels)
{
    auto kept = std::make_unique<std::vector<unsigned char>>(std::move(pixels));
    unsigned char* const first = kept->data();
    const py::capsule owner(kept.get(), [](void* block) { delete static_cast<std::vector<unsigned char>*>(block); });
    kept.release();
    return py::array_t<std::uint8_t>({py::ssize_t(size.height), py::ssize_t(size.width), py::ssize_t(channels)}, first,
                                     owner);
}

} // namespace OV::Python
