#include "orvane_host/present/detail/BatchPiece.h"

#include "orvane_host/geometry/ViewVolume.h"
#include "orvane/math/Color.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/scene/Mesh.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

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

void Include(WorldBox& box, const Vector& p)
{
    box.low.x = p.x < box.low.x ? p.x : box.low.x;
    box.low.y = p.y < box.low.y ? p.y : box.low.y;
    box.low.z = p.z < box.low.z ? p.z : box.low.z;
    box.high.x = p.x > box.high.x ? p.x : box.high.x;
    box.high.y = p.y > box.high.y ? p.y : box.high.y;
    box.high.z = p.z > box.high.z ? p.z : box.high.z;
}

/// Whether a place neither turns nor scales.
bool IsShift(Rows m)
{
    return m[0][0] == 1.0 && m[1][1] == 1.0 && m[2][2] == 1.0 && m[0][1] == 0.0 && m[0][2] == 0.0 && m[1][0] == 0.0
        && m[1][2] == 0.0 && m[2][0] == 0.0 && m[2][1] == 0.0;
}

#ifdef __SSE2__

/// Shifts four numbers at a time in double, and keeps the least and the greatest of each lane.
struct Lanes
{
    Lanes(double first, double second, double third, double fourth, const WorldBox& box) :
        low(_mm_set1_ps(box.low.x)), high(_mm_set1_ps(box.high.x)), m_first(_mm_set_pd(second, first)),
        m_second(_mm_set_pd(fourth, third))
    {
    }

    void Write(const float* in, float* out)
    {
        const __m128 numbers = _mm_loadu_ps(in);
        const __m128d first = _mm_add_pd(_mm_cvtps_pd(numbers), m_first);
        const __m128d second = _mm_add_pd(_mm_cvtps_pd(_mm_movehl_ps(numbers, numbers)), m_second);
        const __m128 shifted = _mm_movelh_ps(_mm_cvtpd_ps(first), _mm_cvtpd_ps(second));
        _mm_storeu_ps(out, shifted);
        // In this order what is no number is left out.
        low = _mm_min_ps(shifted, low);
        high = _mm_max_ps(shifted, high);
    }

    __m128 low;
    __m128 high;

private:
    __m128d m_first;
    __m128d m_second;
};

/// Shifts vertices that are to stand one after another, as far as there are four of them at once.
/// @return how many.
std::size_t WriteFours(Rows m, const std::vector<Vector>& positions, float* out, WorldBox& box)
{
    static_assert(sizeof(Vector) == 3 * sizeof(float));
    // Three times four numbers are four times three: each lane always has the same coordinate.
    Lanes first(m[0][3], m[1][3], m[2][3], m[0][3], box);
    Lanes second(m[1][3], m[2][3], m[0][3], m[1][3], box);
    Lanes third(m[2][3], m[0][3], m[1][3], m[2][3], box);
    const std::size_t count = positions.size() / 4 * 4;
    for (std::size_t i = 0; i < count; i += 4, out += 12)
    {
        const float* const in = &positions[i].x;
        first.Write(in, out);
        second.Write(in + 4, out + 4);
        third.Write(in + 8, out + 8);
    }
    float lows[12];
    float highs[12];
    int at = 0;
    for (const Lanes* const lanes : {&first, &second, &third})
    {
        _mm_storeu_ps(lows + at, lanes->low);
        _mm_storeu_ps(highs + at, lanes->high);
        at += 4;
    }
    const auto least = [&](int i) { return std::min({lows[i], lows[i + 3], lows[i + 6], lows[i + 9]}); };
    const auto most = [&](int i) { return std::max({highs[i], highs[i + 3], highs[i + 6], highs[i + 9]}); };
    box = {Vector(least(0), least(1), least(2)), Vector(most(0), most(1), most(2))};
    return count;
}

#endif

WorldBox WriteShifted(Rows m, const std::vector<Vector>& positions, std::size_t size, float* out)
{
    const double x = m[0][3];
    const double y = m[1][3];
    const double z = m[2][3];
    WorldBox box = WorldBox::Empty();
    const Vector* position = positions.data();
    const Vector* const end = position + positions.size();
#ifdef __SSE2__
    if (size == 3)
    {
        const std::size_t written = WriteFours(m, positions, out, box);
        position += written;
        out += 3 * written;
    }
    // The same sums as below, of a vertex at once. The fourth lane is a neighbour's: it is read where there is
    // one, and what it writes is written over by what comes after.
    static_assert(sizeof(Vector) == 3 * sizeof(float));
    const auto four = [](const Vector& from) { return _mm_set_ps(from.z, from.z, from.y, from.x); };
    const __m128d firstShift = _mm_set_pd(y, x);
    const __m128d secondShift = _mm_set_pd(0.0, z);
    __m128 low = four(box.low);
    __m128 high = four(box.high);
    for (; end - position > 1; ++position, out += size)
    {
        const __m128 point = _mm_loadu_ps(&position->x);
        const __m128 first = _mm_cvtpd_ps(_mm_add_pd(_mm_cvtps_pd(point), firstShift));
        const __m128 second = _mm_cvtpd_ps(_mm_add_pd(_mm_cvtps_pd(_mm_movehl_ps(point, point)), secondShift));
        const __m128 place = _mm_movelh_ps(first, second);
        _mm_storeu_ps(out, place);
        // In this order what is no number is left out.
        low = _mm_min_ps(place, low);
        high = _mm_max_ps(place, high);
    }
    float lanes[4];
    _mm_storeu_ps(lanes, low);
    box.low = Vector(lanes[0], lanes[1], lanes[2]);
    _mm_storeu_ps(lanes, high);
    box.high = Vector(lanes[0], lanes[1], lanes[2]);
#endif
    for (; position != end; ++position, out += size)
    {
        const Vector place(static_cast<float>(position->x + x), static_cast<float>(position->y + y),
                           static_cast<float>(position->z + z));
        Put(out, place);
        Include(box, place);
    }
    return box;
}

WorldBox WriteCarried(Rows m, const std::vector<Vector>& positions, std::size_t size, float* out)
{
    WorldBox box = WorldBox::Empty();
    for (const Vector& position : positions)
    {
        const Vector place = Carried(m, position);
        Put(out, place);
        Include(box, place);
        out += size;
    }
    return box;
}

/// How many values of a stream there are for vertices; the others become zeros.
template <typename Value>
std::size_t Present(const std::vector<Value>& stream, std::size_t floats, std::size_t vertices, int first, std::size_t size,
                    float* out)
{
    for (std::size_t i = stream.size(); i < vertices; ++i)
    {
        std::fill_n(out + i * size + static_cast<std::size_t>(first), floats, 0.0f);
    }
    return std::min(stream.size(), vertices);
}

} // namespace

BatchLayout::BatchLayout(const MeshFormatKey& streams, std::size_t vertices, bool isOfSeveralMaterials)
{
    const auto take = [this](bool has, int count) {
        const int at = has ? floats : -1;
        floats += has ? count : 0;
        return at;
    };
    normal = take(streams.hasNormals, 3);
    texture = take(streams.hasTexture, 2);
    color = take(streams.hasColor, 4);
    material = take(isOfSeveralMaterials && normal < 0, 1);
    size = floats;
    if (normal >= 0 && texture < 0 && color < 0)
    {
        size = 3;
        normal = 3 * static_cast<int>(vertices);
    }
    if (isOfSeveralMaterials && normal >= 0)
    {
        material = normal + 2;
    }
}

int BatchLayout::MaterialByte() const
{
    constexpr std::uint32_t one = 1;
    unsigned char first = 0;
    std::memcpy(&first, &one, 1);
    return material * static_cast<int>(sizeof(float)) + (first == 1 ? 0 : 3);
}

void WriteMaterial(unsigned char number, std::size_t vertices, const BatchLayout& layout, float* out)
{
    // In place of zero, which the number would make one of those so small that processors are slow with them.
    constexpr float nearlyZero = 1e-20f;
    constexpr std::uint32_t exponent = 0x7F800000u;
    constexpr std::uint32_t low = 0xFFu;
    const bool isInNormal = layout.material == layout.normal + 2;
    float* at = out + layout.material;
    for (std::size_t i = 0; i < vertices; ++i, at += layout.size)
    {
        const float value = isInNormal ? *at : nearlyZero;
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof(bits));
        if ((bits & exponent) == 0)
        {
            std::memcpy(&bits, &nearlyZero, sizeof(bits));
        }
        bits = (bits & ~low) | number;
        std::memcpy(at, &bits, sizeof(bits));
    }
}

bool IsShift(const Transform& place)
{
    return IsShift(place.GetTransf3d().m);
}

WorldBox WriteShiftedPositions(const Mesh& mesh, const Transform& place, float* out)
{
    return WriteShifted(place.GetTransf3d().m, mesh.GetPositionBuffer(), 3, out);
}

WorldBox WriteVertices(const Mesh& mesh, const Transform& place, const TextureFactors& factors,
                       const BatchLayout& layout, float* out)
{
    const QGM::Transf3d& points = place.GetTransf3d();
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    const std::size_t vertices = positions.size();
    const auto size = static_cast<std::size_t>(layout.size);
    const WorldBox box = IsShift(points.m) ? WriteShifted(points.m, positions, size, out)
                                           : WriteCarried(points.m, positions, size, out);
    if (layout.normal >= 0)
    {
        // Of what it had when it was put together it may lack some by now, of which nobody is told.
        const Vector* const normals = mesh.GetNormalBuffer().data();
        const std::size_t count = Present(mesh.GetNormalBuffer(), 3, vertices, layout.normal, size, out);
        float* at = out + layout.normal;
        if (IsShift(points.m))
        {
            for (std::size_t i = 0; i < count; ++i, at += size)
            {
                std::memcpy(at, &normals[i], sizeof(Vector));
            }
        }
        else
        {
            // As long as the engine's matrix for normals makes them: shaders that weigh them by
            // their length must find the same.
            const QGM::Transf3d turn = points.affineInverseTranspose();
            for (std::size_t i = 0; i < count; ++i, at += size)
            {
                Put(at, Turned(turn.m, normals[i]));
            }
        }
    }
    if (layout.texture >= 0)
    {
        const std::vector<TextureCoordinate>& coordinates = mesh.GetTextureBuffer();
        const std::size_t count = Present(coordinates, 2, vertices, layout.texture, size, out);
        float* at = out + layout.texture;
        for (std::size_t i = 0; i < count; ++i, at += size)
        {
            at[0] = coordinates[i].u * factors.u;
            at[1] = coordinates[i].v * factors.v;
        }
    }
    if (layout.color >= 0)
    {
        const std::vector<Color>& colors = mesh.GetColorBuffer();
        const std::size_t count = Present(colors, 4, vertices, layout.color, size, out);
        float* at = out + layout.color;
        for (std::size_t i = 0; i < count; ++i, at += size)
        {
            at[0] = colors[i].r;
            at[1] = colors[i].g;
            at[2] = colors[i].b;
            at[3] = colors[i].a;
        }
    }
    return box;
}

WorldBox BoxAt(const Mesh& mesh, const Transform& place)
{
    WorldBox box = WorldBox::Empty();
    for (const Vector& position : mesh.GetPositionBuffer())
    {
        Include(box, Carried(place.GetTransf3d().m, position));
    }
    return box;
}

WorldBox BoxAt(const WorldBox& box, const Transform& place)
{
    Rows m = place.GetTransf3d().m;
    const double middle[] = {0.5 * (static_cast<double>(box.low.x) + box.high.x),
                             0.5 * (static_cast<double>(box.low.y) + box.high.y),
                             0.5 * (static_cast<double>(box.low.z) + box.high.z)};
    const double half[] = {box.high.x - middle[0], box.high.y - middle[1], box.high.z - middle[2]};
    float low[3];
    float high[3];
    for (int row = 0; row < 3; ++row)
    {
        double center = m[row][3];
        double reach = 0.0;
        for (int i = 0; i < 3; ++i)
        {
            center += m[row][i] * middle[i];
            reach += std::abs(m[row][i]) * half[i];
        }
        low[row] = static_cast<float>(center - reach);
        high[row] = static_cast<float>(center + reach);
    }
    return {Vector(low[0], low[1], low[2]), Vector(high[0], high[1], high[2])};
}

bool IsBoxTrue(const Mesh& mesh)
{
    Vector low;
    Vector high;
    mesh.GetBBox(low, high);
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    return std::all_of(positions.begin(), positions.end(), [&](const Vector& p) {
        return p.x >= low.x && p.y >= low.y && p.z >= low.z && p.x <= high.x && p.y <= high.y && p.z <= high.z;
    });
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
