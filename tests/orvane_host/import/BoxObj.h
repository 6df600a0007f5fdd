#pragma once

#include "orvane/math/Vector.h"

#include <array>
#include <sstream>
#include <string>

namespace OV::Test
{

/// Boxes as OBJ text, in a frame of axes of their own.
class BoxObj
{
public:
    /// @param across, up, outward unit and square to each other.
    BoxObj(const Vector& origin, const Vector& across, const Vector& up, const Vector& outward) :
        m_origin(origin), m_axes{across, up, outward}
    {
    }

    /// Along the axes of the frame. Its faces look outwards.
    void Add(const std::string& name, const std::string& material, const Vector& low, const Vector& high)
    {
        m_text << "o " << name << "\nusemtl " << material << "\n";
        for (unsigned int corner = 0; corner < 8; ++corner)
        {
            const Vector point = At({(corner & 1) != 0 ? high.x : low.x, (corner & 2) != 0 ? high.y : low.y,
                                     (corner & 4) != 0 ? high.z : low.z});
            m_text << "v " << point.x << ' ' << point.y << ' ' << point.z << '\n';
        }
        constexpr int faces[6][4] = {{4, 5, 7, 6}, {1, 0, 2, 3}, {5, 1, 3, 7}, {0, 4, 6, 2}, {6, 7, 3, 2}, {0, 1, 5, 4}};
        for (const auto& face : faces)
        {
            m_text << 'f';
            for (const int corner : face)
            {
                m_text << ' ' << m_first + corner;
            }
            m_text << '\n';
        }
        m_first += 8;
    }

    /// A sheet across the third axis, that looks along it or back.
    void AddSheet(const std::string& name, const std::string& material, const Vector& low, const Vector& high,
                  bool looksBack)
    {
        m_text << "o " << name << "\nusemtl " << material << "\n";
        for (unsigned int corner = 0; corner < 4; ++corner)
        {
            const Vector point = At({(corner & 1) != 0 ? high.x : low.x, (corner & 2) != 0 ? high.y : low.y, low.z});
            m_text << "v " << point.x << ' ' << point.y << ' ' << point.z << '\n';
        }
        const int first = m_first;
        m_text << "f " << first << ' ' << first + (looksBack ? 2 : 1) << ' ' << first + 3 << ' '
               << first + (looksBack ? 1 : 2) << '\n';
        m_first += 4;
    }

    Vector At(const Vector& local) const
    {
        const float parts[] = {local.x, local.y, local.z};
        Vector point = m_origin;
        for (std::size_t i = 0; i < 3; ++i)
        {
            point = Vector(point.x + parts[i] * m_axes[i].x, point.y + parts[i] * m_axes[i].y,
                           point.z + parts[i] * m_axes[i].z);
        }
        return point;
    }

    /// @param library file of materials.
    std::string Text(const std::string& library) const { return "mtllib " + library + "\n" + m_text.str(); }

private:
    static std::ostringstream Precise()
    {
        std::ostringstream text;
        text.precision(9);
        return text;
    }

    Vector m_origin;
    std::array<Vector, 3> m_axes;
    std::ostringstream m_text = Precise();
    int m_first = 1;
};

} // namespace OV::Test
