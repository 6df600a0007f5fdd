#pragma once

#include <array>

namespace OV::Host::Detail
{

/// Lets only what has something of the scene in it be drawn over, sample by sample, for the length of
/// a scope. A background, which lies at the far plane, keeps its colour. The depth test is on, as the
/// passes over a scene leave it. GL.
class OverSceneScope
{
public:
    /// @param depthRange to have at the end.
    explicit OverSceneScope(const std::array<float, 2>& depthRange);
    ~OverSceneScope();

    OverSceneScope(const OverSceneScope&) = delete;
    OverSceneScope& operator=(const OverSceneScope&) = delete;

private:
    int m_function;
    std::array<float, 2> m_range;
};

} // namespace OV::Host::Detail
