#pragma once

namespace OV::Host::Detail
{

/// What drawing over the screen changes, for the length of a scope: from the state that the
/// passes over a scene leave to the same, without blending. The alpha of the picture stays: who
/// lays it over something else wants what is drawn over it as opaque as what it is on. GL.
class OverScreenScope
{
public:
    OverScreenScope();
    ~OverScreenScope();

    OverScreenScope(const OverScreenScope&) = delete;
    OverScreenScope& operator=(const OverScreenScope&) = delete;
};

} // namespace OV::Host::Detail
