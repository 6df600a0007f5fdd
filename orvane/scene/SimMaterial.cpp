#include "orvane/scene/SimMaterial.h"

#include "orvane/scene/NodeType.h"

namespace OV
{

SimMaterial::SimMaterial(const std::string& materialName) : Material(materialName) {}

SimMaterial::~SimMaterial() = default;

int SimMaterial::Type() const
{
    return NodeTypeSimMaterial;
}

bool SimMaterial::HasType(int type)
{
    return type == NodeTypeSimMaterial || type == NodeTypeMaterial;
}

} // namespace OV
