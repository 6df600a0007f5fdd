#include "orvane/overlay/Material2D.h"

#include "orvane/scene/NodeType.h"

namespace OV
{

Material2D::Material2D(const std::string& materialName) : Material(materialName) {}

Material2D::~Material2D() = default;

int Material2D::Type() const
{
    return NodeTypeMaterial2D;
}

bool Material2D::HasType(int type)
{
    return type == NodeTypeMaterial2D || type == NodeTypeMaterial;
}

bool Material2D::IsTransparent()
{
    return transparent;
}

} // namespace OV
