#pragma once

#include "orvane/scene/LineStyle.h"

namespace OV
{

class MeshNode;

/// Style of the lines of one node.
class ORVANE_API NodeLineStyle : public LineStyle
{
public:
    /// Makes a style without a name, with a dash frequency of 0, bound to no node.
    NodeLineStyle();

    /// Unbinds the node.
    ~NodeLineStyle() override;

    int Type() const override;
    bool HasType(int type) override;

    /// Null before SetNode and once the node is gone.
    MeshNode* GetNode() const
    {
        return node;
    }

    /// Binds the node, or none. The one that was bound loses NodeFlagHasNodeMaterial, even if
    /// it has a node material besides; the new one gets it.
    void SetNode(MeshNode* newNode);

protected:
    MeshNode* node = nullptr;

private:
    friend class MeshNode;
};

} // namespace OV
