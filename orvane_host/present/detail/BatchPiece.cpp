#include "orvane_host/present/detail/BatchPiece.h"

#include "orvane_host/geometry/ViewVolume.h"
#include "orvane/math/Color.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/Mesh.h"

#include <algorithm>

namespace OV::Host::Detail
{

namespace
{

using Rows = const double (&)[4][4];

Vector Carried(Rows m, const Vector& p)
{
    const auto row = [&](int r) {
        return static_cast<float>(m[r][0] * p.x + m[r][1] * p.y + m[r][2] * p.z + m[r][3]);
    };
    return Vector(row(0), row(1), row(2));
}

Vector Turned(Rows m, const Vector& n)
{
    const auto row = [&](int r) { return static_cast<float>(m[r][0] * n.x + m[r][1] * n.y + m[r][2] * n.z); };
    return Vector(row(0), row(1), row(2));
}

void Put(float* out, const Vector& value)
{
    out[0] = value.x;
    out[1] = value.y;
    out[2] = value.z;
}

} // namespace

BatchLayout::BatchLayout(const MeshFormatKey& streams)
{
    const auto take = [this](bool has, int floats) {
        const int at = has ? size : -1;
        size += has ? floats : 0;
        return at;
    };
    normal = take(streams.hasNormals, 3);
    texture = take(streams.hasTexture, 2);
    color = take(streams.hasColor, 4);
}

void WriteVertices(const Mesh& mesh, const Transform& place, const TextureFactors& factors,
                   const BatchLayout& layout, float* out)
{
    const QGM::Transf3d& points = place.GetTransf3d();
    // As long as the engine's matrix for normals makes them: shaders that weigh them by their
    // length must find the same.
    const QGM::Transf3d normals = points.affineInverseTranspose();
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    for (std::size_t i = 0; i < positions.size(); ++i, out += layout.size)
    {
        Put(out, Carried(points.m, positions[i]));
        if (layout.normal >= 0)
        {
            Put(out + layout.normal, Turned(normals.m, mesh.GetNormalBuffer()[i]));
        }
        if (layout.texture >= 0)
        {
            const TextureCoordinate uv = mesh.GetTextureBuffer()[i];
            out[layout.texture] = uv.u * factors.u;
            out[layout.texture + 1] = uv.v * factors.v;
        }
        if (layout.color >= 0)
        {
            const Color color = mesh.GetColorBuffer()[i];
            float* const at = out + layout.color;
            at[0] = color.r;
            at[1] = color.g;
            at[2] = color.b;
            at[3] = color.a;
        }
    }
}

WorldBox BoxAt(const Mesh& mesh, const Transform& place)
{
    WorldBox box = WorldBox::Empty();
    for (const Vector& position : mesh.GetPositionBuffer())
    {
        box.Widen(Carried(place.GetTransf3d().m, position));
    }
    return box;
}

bool IsSound(const Mesh& mesh)
{
    const std::size_t count = mesh.GetPositionBuffer().size();
    const auto fits = [count](const auto& stream) { return stream.empty() || stream.size() == count; };
    const std::vector<unsigned short>& indices = mesh.GetIndices();
    return fits(mesh.GetNormalBuffer()) && fits(mesh.GetTextureBuffer()) && fits(mesh.GetColorBuffer())
        && indices.size() >= 3 && *std::max_element(indices.begin(), indices.end()) < count;
}

} // namespace OV::Host::Detail
