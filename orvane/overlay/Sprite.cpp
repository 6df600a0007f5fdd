#include "orvane/overlay/Sprite.h"

#include "orvane/math/Vector.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/detail/ClipRegion.h"
#include "orvane/overlay/detail/DeleteNodes.h"
#include "orvane/scene/NodeType.h"

#include <algorithm>

namespace OV
{

Sprite::Sprite(Scene2D* layer, Shape2D* ownShape) :
    material(new Material2D("sprite")), shape(ownShape), scene(layer), ownsMaterial(true)
{
    scene->AddMaterial(material);
    Attach();
}

Sprite::Sprite(Material2D* givenMaterial, Scene2D* layer, Shape2D* ownShape) :
    material(givenMaterial), shape(ownShape), scene(layer)
{
    Attach();
}

void Sprite::Attach()
{
    if (shape)
    {
        shape->NoteSprite();
        if (material)
        {
            material->AddMesh(shape);
        }
    }
    node = new Shape2DNode(scene);
    if (shape)
    {
        shape->AddNode(node);
    }
    if (Node* const root = scene->GetRoot())
    {
        root->AddChild(node, false);
    }
    scene->AddSprite(this);
}

Sprite::~Sprite()
{
    if (!scene)
    {
        return;
    }
    if (shape)
    {
        if (overrideMaterial)
        {
            overrideMaterial->RemoveMesh(shape);
        }
        Detail::DeleteNodes(*scene, *shape);
        delete shape.Get();
    }
    if (ownsMaterial)
    {
        delete material.Get();
    }
    scene->RemoveSprite(this);
}

void Sprite::OnLayerCleared()
{
    if (shape && shape->GetScene() != scene)
    {
        delete shape.Get();
    }
    if (ownsMaterial && material && material->GetScene() != scene)
    {
        delete material.Get();
    }
    scene = nullptr;
    shape = nullptr;
    node = nullptr;
    material = nullptr;
    overrideMaterial = nullptr;
}

void Sprite::Show(bool visible)
{
    if (!node)
    {
        return;
    }
    if (visible)
    {
        node->ClearFlags(NodeFlagHidden, false);
    }
    else
    {
        node->SetFlags(NodeFlagHidden, false);
    }
    scene->MarkDirty();
}

bool Sprite::IsVisible()
{
    return node && (node->GetFlags() & NodeFlagHidden) == 0;
}

Color Sprite::GetColor()
{
    return material ? material->color : Color();
}

void Sprite::SetColor(const Color& color)
{
    if (material)
    {
        material->color = color;
        scene->MarkDirty();
    }
}

void Sprite::SetOverrideMaterial(Material2D* newMaterial)
{
    if (!shape)
    {
        return;
    }
    if (overrideMaterial)
    {
        overrideMaterial->RemoveMesh(shape);
    }
    if (newMaterial)
    {
        if (material)
        {
            material->RemoveMesh(shape);
        }
        newMaterial->AddMesh(shape);
    }
    else if (material)
    {
        material->AddMesh(shape);
    }
    overrideMaterial = newMaterial;
    scene->MarkDirty();
}

void Sprite::IgnorePick(bool ignore)
{
    if (!shape)
    {
        return;
    }
    for (MeshNode* shown : shape->EachNode())
    {
        if (ignore)
        {
            shown->SetFlags(NodeFlagNoHitTest, false);
        }
        else
        {
            shown->ClearFlags(NodeFlagNoHitTest, false);
        }
    }
}

void Sprite::SetClipRegion(int x, int y, int width, int height)
{
    clipLeft = x;
    clipTop = y;
    clipRight = Detail::RegionEnd(x, width);
    clipBottom = Detail::RegionEnd(y, height);
    clipped = true;
    UpdateToClipRegion();
    if (scene)
    {
        scene->MarkDirty();
    }
}

bool Sprite::UpdateToClipRegion()
{
    if (!clipped || !shape || !shape->HasType(NodeTypeRect) || shape->EachNode().size() != 1)
    {
        return true;
    }
    auto* const rect = static_cast<Rect*>(shape.Get());
    MeshNode* const shown = shape->EachNode().front();
    Vector lower;
    lower.Multiply(shown->GetGlobal(), Vector(rect->GetMinX(), rect->GetMinY(), 0.0f));
    Vector upper;
    upper.Multiply(shown->GetGlobal(), Vector(rect->GetMaxX(), rect->GetMaxY(), 0.0f));

    const auto left = static_cast<float>(clipLeft);
    const auto top = static_cast<float>(clipTop);
    const auto right = static_cast<float>(clipRight);
    const auto bottom = static_cast<float>(clipBottom);
    if (right < lower.x || bottom < lower.y || upper.x < left || upper.y < top)
    {
        shown->SetFlags(NodeFlagHidden, false);
        clipActive = true;
        return false;
    }
    const bool within = lower.x >= left && lower.y >= top && upper.x <= right && upper.y <= bottom;
    if (within && !clampToRightClip)
    {
        if (clipActive)
        {
            rect->Clip(0.0f, 0.0f, 0.0f, 0.0f);
        }
        clipActive = false;
    }
    else
    {
        // Clamped to the right edge the cut may be negative, which widens the sprite; and the
        // region's top goes with the lower edge. Both are meant.
        const float rightCut = upper.x - right;
        rect->Clip(std::max(left - lower.x, 0.0f), std::max(top - lower.y, 0.0f),
                   clampToRightClip ? rightCut : std::max(rightCut, 0.0f), std::max(upper.y - bottom, 0.0f));
        clipActive = true;
    }
    shown->ClearFlags(NodeFlagHidden, false);
    return true;
}

} // namespace OV
