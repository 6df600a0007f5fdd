#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace OV::Host::Detail
{

struct MaterialColors;

/// The colours of the materials of a batch's pieces, as its vertices hold them: a buffer beside that of the geometry.
class BatchColors
{
public:
    /// Shares of 65535: pictures are those of the material's own numbers within 1/255.
    struct Held
    {
        std::array<std::uint16_t, 4> diffuse{};
        std::array<std::uint16_t, 4> ambient{};

        bool operator==(const Held& other) const { return diffuse == other.diffuse && ambient == other.ambient; }

        /// Of colours from 0 to 1.
        static Held Of(const MaterialColors& colors);
    };

    /// @param lasts for each piece the vertex behind its last.
    explicit BatchColors(std::vector<std::uint32_t> lasts) : m_lasts(std::move(lasts)), m_held(m_lasts.size()) {}

    /// GL.
    ~BatchColors();

    BatchColors(const BatchColors&) = delete;
    BatchColors& operator=(const BatchColors&) = delete;

    /// Of the buffer.
    std::size_t GetBytes() const { return m_lasts.empty() ? 0 : m_lasts.back() * sizeof(Held); }

    void Set(std::size_t piece, const Held& held);

    /// Uploads what was set, and lets the attributes of the engine's effects read it, for the draws up to Disable. GL.
    /// It leaves another buffer bound.
    void Enable();
    static void Disable();

private:
    std::uint32_t FirstOf(std::size_t piece) const { return piece == 0 ? 0 : m_lasts[piece - 1]; }
    void Upload();
    void Append(std::size_t piece, std::vector<Held>& vertices) const;

    unsigned int m_buffer = 0; ///< 0 until it is needed
    std::vector<std::uint32_t> m_lasts;
    std::vector<Held> m_held;
    std::vector<std::uint32_t> m_due; ///< pieces to be uploaded, once there is a buffer; some may be there twice
};

} // namespace OV::Host::Detail
