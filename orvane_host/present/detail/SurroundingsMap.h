#pragma once

#include <memory>

namespace OV::Host
{

class Surroundings;

} // namespace OV::Host

namespace OV::Host::Detail
{

/// The cube map of surroundings, whose levels are those of roughness.
class SurroundingsMap
{
public:
    SurroundingsMap() = default;
    SurroundingsMap(const SurroundingsMap&) = delete;
    SurroundingsMap& operator=(const SurroundingsMap&) = delete;

    /// Null for none. Not GL: what was made for others goes with the next Upload.
    void Set(std::shared_ptr<const Surroundings> surroundings) { m_surroundings = std::move(surroundings); }
    const std::shared_ptr<const Surroundings>& Get() const { return m_surroundings; }

    /// Makes the texture of what is set, unless there is one. Unit 0 is left without a cube map. GL.
    /// @return the GL name; 0 without surroundings.
    unsigned int Upload();

    /// Lets look-ups find nothing sharper than a roughness, 0 to 1; far away things are looked up
    /// blurrier still, so that they do not flicker. After Upload. GL.
    void SetRoughness(float roughness);

    void ReleaseGL();

private:
    std::shared_ptr<const Surroundings> m_surroundings;
    std::shared_ptr<const Surroundings> m_uploaded;
    unsigned int m_texture = 0;
    float m_level = -1.0f; ///< that is set
};

/// Lets look-ups in cube maps run over the edges of faces for the length of a scope, where GL can.
class SeamlessScope
{
public:
    explicit SeamlessScope(bool wanted);
    ~SeamlessScope();

    SeamlessScope(const SeamlessScope&) = delete;
    SeamlessScope& operator=(const SeamlessScope&) = delete;

private:
    bool m_on = false; ///< and was not before
};

} // namespace OV::Host::Detail
