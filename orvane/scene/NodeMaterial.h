#pragma once

#include "orvane/scene/Material.h"

#include <vector>

namespace OV
{

class MeshNode;

/// Material of nodes instead of meshes: every mesh of its nodes is drawn with it there.
class ORVANE_API NodeMaterial : public Material
{
public:
    NodeMaterial();
    ~NodeMaterial() override;

    NodeMaterial(const NodeMaterial&) = delete;

    int Type() const override;
    bool HasType(int type) override;

    /// In the order of AddNode.
    const std::vector<MeshNode*>& GetNodes() const
    {
        return nodes;
    }

    /// Nothing for null and for a node that is there already.
    void AddNode(MeshNode* node);

    /// Nothing for null and for a node that is not there.
    void RemoveNode(MeshNode* node);

    /// Removes every node.
    void Clear();

protected:
    std::vector<MeshNode*> nodes;
};

} // namespace OV
