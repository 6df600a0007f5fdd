#pragma once

#include "orvane/scene/Material.h"

namespace OV
{

/// Material that shows a number at each vertex, such as a stress or a temperature, by colour.
class ORVANE_API SimMaterial : public Material
{
public:
    explicit SimMaterial(const std::string& materialName);
    ~SimMaterial() override;

    int Type() const override;
    bool HasType(int type) override;

    /// Numbers from rangeLower to rangeUpper, both included, are coloured; all others are grey.
    /// The range starts empty.
    float rangeLower = 0.0f;
    float rangeUpper = 0.0f;
};

} // namespace OV
