#include "orvane/scene/NodeLineStyle.h"

#include "orvane/scene/MeshNode.h"
#include "orvane/scene/detail/Erase.h"
#include "orvane/scene/detail/MeshNodeLinks.h"

namespace OV
{

NodeLineStyle::NodeLineStyle() = default;

NodeLineStyle::~NodeLineStyle()
{
    SetNode(nullptr);
}

int NodeLineStyle::Type() const
{
    return NodeTypeNodeLineStyle;
}

bool NodeLineStyle::HasType(int type)
{
    return type == NodeTypeNodeLineStyle || type == NodeTypeLineStyle;
}

void NodeLineStyle::SetNode(MeshNode* newNode)
{
    if (node)
    {
        node->ClearFlags(NodeFlagHasNodeMaterial, false);
        detail::EraseAny(node->MakeLinks().lineStyles, this);
    }
    node = newNode;
    if (node)
    {
        node->SetFlags(NodeFlagHasNodeMaterial, false);
        node->MakeLinks().lineStyles.push_back(this);
    }
}

} // namespace OV
