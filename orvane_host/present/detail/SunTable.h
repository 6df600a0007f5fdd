#pragma once

#include <array>

namespace OV::Host::Detail
{

/// What fragments are told of the parts of the sun's map, in a texture: one look-up gives four numbers, where an
/// array of uniforms whose index differs from fragment to fragment costs the software renderer several times that.
class SunTable
{
public:
    static constexpr int Columns = 8;

    /// Each column is of a cell of the map, and they come again after the last: what places in it are found by below,
    /// the texels that may be read above.
    using Row = std::array<std::array<float, 4>, Columns>;
    using Rows = std::array<Row, 2>;

    SunTable() = default;
    SunTable(const SunTable&) = delete;
    SunTable& operator=(const SunTable&) = delete;

    /// GL if it was uploaded.
    ~SunTable() { ReleaseGL(); }

    /// Whether the context has textures of such numbers. GL.
    static bool IsSupported();

    /// Hands them to GL where they aren't there yet. The texture of the active unit is left unbound. GL.
    void Upload(const Rows& rows);

    /// 0 until there is one.
    unsigned int GetTexture() const { return m_texture; }

    void ReleaseGL();

private:
    unsigned int m_texture = 0;
    Rows m_rows{}; ///< that are uploaded
};

} // namespace OV::Host::Detail
