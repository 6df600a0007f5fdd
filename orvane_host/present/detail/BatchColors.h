#pragma once

#include <glm/vec4.hpp>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace OV
{

class EffectES20;

} // namespace OV

namespace OV::Host::Detail
{

struct MaterialColors;

/// The colours of the materials whose pieces share batches, by number, as the engine's effects take them in place of
/// a material's own. The vertices hold the number: a colour that changes is sent, and nothing is written.
class BatchColors
{
public:
    /// How many materials there may be. GL.
    static std::size_t Most();

    bool HasRoom() const { return !m_free.empty() || m_colors.size() / 2 < Most(); }

    /// A number for one more material, while there is room.
    unsigned char Take(const MaterialColors& colors);

    /// Nobody is drawn by the number any more.
    void GiveBack(unsigned char number) { m_free.push_back(number); }

    void Set(unsigned char number, const MaterialColors& colors);

    /// Gives them to the program in use. GL.
    void Send(EffectES20& effect) const;

private:
    static std::uint64_t NextRevision();

    std::vector<glm::vec4> m_colors; ///< of each material the diffuse and the ambient one
    std::vector<unsigned char> m_free;
    std::uint64_t m_revision = 0;
};

} // namespace OV::Host::Detail
