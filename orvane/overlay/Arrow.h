#pragma once

#include "orvane/overlay/Shape2D.h"

namespace OV
{

class Scene2D;

/// A triangle with its tip at the origin and its base to the right. It answers as Shape2D.
class ORVANE_API Arrow : public Shape2D
{
public:
    /// @param size of the base, in pixels. @param ratio of length to base.
    Arrow(float size, float ratio, Scene2D* scene);
    Arrow(const Arrow&) = default;
    Arrow& operator=(const Arrow&) = default;
    ~Arrow() override;

    /// The two edges at the tip are inside, the base is not. An arrow of size 0 has no inside.
    bool IsInside(float x, float y) override;
};

} // namespace OV
