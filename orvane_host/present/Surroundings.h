#pragma once

#include "orvane_host/view/ViewFit.h"
#include "orvane/math/Color.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class SkySettings;

namespace OV::Host::Detail
{

class CubePicture;

} // namespace OV::Host::Detail

namespace OV::Host
{

/// What lies all around a model, as smooth surfaces reflect it: a picture in every direction, and
/// the same blurred for surfaces of more and more roughness.
///
/// With Y up the middle of a picture lies in -Z, ahead of who looks at a model from the front, and
/// +X to its right; with Z up it lies in +Y. Colours are those of a screen (sRGB), like all
/// colours of the engine, and what is reflected sharply is as bright as in the picture. Means are
/// taken of light, not of bytes, so that a lamp stays bright where it is blurred.
///
/// Not GL. Can be shared by presentations and threads.
class Surroundings
{
public:
    /// Texels of an edge of a face: what is larger is scaled down while it is read.
    static constexpr int MostFaceSize = 512;
    /// Of each file. While a picture is read it takes 8 bytes a pixel, and 64 MiB for all besides.
    static constexpr std::uint64_t MostFileBytes = std::uint64_t(256) << 20;
    static constexpr std::uint64_t MostPixels = std::uint64_t(64) << 20;

    /// Reads PNG or JPEG files.
    /// @param source one picture in all directions, twice as wide as high, the elevation along its
    ///        height (equirectangular). Or the six sides of a cube, square, as they are seen from
    ///        inside: six names with commas between, in the order right, left, top, bottom, front,
    ///        back; or one name in which a star stands for those words, or for px, nx, py, ny, pz,
    ///        nz, or for posx, negx and so on. The lower edge of the top joins the front.
    /// @param error on failure the reason and the remedy in one line, without the source, but with
    ///        the name of one of several files. Untouched otherwise.
    /// @return null on failure.
    static std::shared_ptr<const Surroundings> Read(const std::string& source, UpAxis up, std::string& error);

    /// The gradient that the sky has behind a scene, and the colour of its horizon below that.
    /// @param ground takes the horizon's place towards straight down.
    static std::shared_ptr<const Surroundings> OfSky(const SkySettings& sky, const std::optional<Color>& ground,
                                                     UpAxis up);

    /// Texels of an edge of level 0; each level has half as many.
    int GetFaceSize() const { return m_faceSize; }

    /// Level 0 is sharp, the last one is what a surface of the roughness 1 reflects.
    int GetLevelCount() const { return static_cast<int>(m_levels.size()); }

    /// Where in between the levels a roughness, 0 to 1, is to be looked up: its lobe is that of the
    /// distribution GGX with its square as alpha.
    float LevelOf(float roughness) const;

    /// R, G, B, A of a face (0 to 5) of a level, in the order and with the directions in which
    /// AdvancedMaterialBaseES20 looks a cube map up.
    const unsigned char* GetTexels(int level, int face) const;

private:
    Surroundings() = default;

    class Maker;

    void Take(const Detail::CubePicture& cube);

    int m_faceSize = 0;
    std::vector<std::vector<unsigned char>> m_levels; ///< six faces each
};

} // namespace OV::Host
