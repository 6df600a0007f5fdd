#include "orvane/overlay/Text.h"

#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/detail/ClipRegion.h"
#include "orvane/overlay/detail/DeleteNodes.h"
#include "orvane/overlay/detail/TextSizeCallback.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace OV
{

namespace
{

constexpr int kSmallestFontSize = 12;
constexpr int kLargestTexture = 1024;

/// Backdrops lie this far behind their text.
constexpr float kBackdropDepth = -0.1f;

float Ratio(int part, int whole)
{
    return whole == 0 ? 0.0f : static_cast<float>(part) / static_cast<float>(whole);
}

} // namespace

Text::Text(const std::string& font, int size, const std::string& text, Scene2D* layer, bool isCenteredX,
           bool isCenteredY, int maxWidth) :
    material(new Material2D("text")),
    scene(layer), fontSize(size), centerX(isCenteredX), centerY(isCenteredY)
{
    material->fontName = font;
    material->fontSize = fontSize;
    material->text = text;
    material->maxWidth = maxWidth;
    scene->AddMaterial(material);
    rect = new Rect(scene, 0.0f, 0.0f, true);
    Layout();
    material->AddMesh(rect);
    auto* const node = new Shape2DNode(scene);
    rect->AddNode(node);
    if (Node* const root = scene->GetRoot())
    {
        root->AddChild(node, false);
    }
    node->SetLocal(Transform());
    IgnorePick(true);
    scene->AddText(this);
}

Text::~Text()
{
    if (!scene)
    {
        return;
    }
    if (rect)
    {
        Detail::DeleteNodes(*scene, *rect);
        delete rect.Get();
    }
    DeleteBackdrop(leftBackdrop, leftMaterial);
    DeleteBackdrop(centerBackdrop, centerMaterial);
    DeleteBackdrop(rightBackdrop, rightMaterial);
    delete material.Get();
    scene->RemoveText(this);
}

void Text::OnLayerCleared()
{
    scene = nullptr;
    material = nullptr;
    rect = nullptr;
    for (WatchedPtr<Material2D>* backdropMaterial : {&leftMaterial, &centerMaterial, &rightMaterial})
    {
        *backdropMaterial = nullptr;
    }
    for (WatchedPtr<Rect>* backdrop : {&leftBackdrop, &centerBackdrop, &rightBackdrop})
    {
        *backdrop = nullptr;
    }
}

void Text::Layout()
{
    material->fontSize = fontSize;
    int textureWidth = 1;
    int textureHeight = 1;
    GetTextSize(material->fontName, fontSize, material->text, material->maxWidth, width, height, textureWidth,
                textureHeight);
    SetBox();
    // The box keeps the first measure; only the texture follows the limited font.
    int drawnWidth = width;
    int drawnHeight = height;
    LimitFontSize(drawnWidth, drawnHeight, textureWidth, textureHeight);
    rect->flipV = true;
    SetTextureRange(drawnWidth, drawnHeight, textureWidth, textureHeight);
}

void Text::SetBox()
{
    left = centerX ? -(width / 2) : 0;
    right = left + width;
    bottom = centerY ? -(height / 2) : 0;
    top = bottom + height;
    const auto minX = static_cast<float>(left);
    const auto maxX = static_cast<float>(right);
    const auto minY = static_cast<float>(bottom);
    const auto maxY = static_cast<float>(top);
    rect->SetCorners(minX, minY, 0.0f, maxX, minY, 0.0f, maxX, maxY, 0.0f, minX, maxY, 0.0f);
    rect->minX = minX;
    rect->maxX = maxX;
    rect->minY = minY;
    rect->maxY = maxY;
}

void Text::SetTextureRange(int textWidth, int textHeight, int textureWidth, int textureHeight)
{
    const float u = Ratio(textWidth, textureWidth);
    const float v = Ratio(textHeight, textureHeight);
    rect->SetTextureCoordinates(0.0f, v, u, v, u, 0.0f, 0.0f, 0.0f);
    rect->uvPristine = true;
}

void Text::LimitFontSize(int& measuredWidth, int& measuredHeight, int& textureWidth, int& textureHeight)
{
    if (textureWidth > kLargestTexture || textureHeight > kLargestTexture)
    {
        // The texture's width is compared with the text's height: that is meant.
        const int longest = textureWidth > measuredHeight ? textureWidth : textureHeight;
        const std::int64_t scaled = std::int64_t(fontSize) * kLargestTexture / std::max(longest, 1);
        material->fontSize = static_cast<int>(std::max<std::int64_t>(scaled, kSmallestFontSize));
    }
    else if (fontSize >= kSmallestFontSize)
    {
        return;
    }
    else
    {
        material->fontSize = kSmallestFontSize;
    }
    GetTextSize(material->fontName, material->fontSize, material->text, material->maxWidth, measuredWidth,
                measuredHeight, textureWidth, textureHeight);
}

void Text::Update(const std::string& text)
{
    if (!IsWhole())
    {
        return;
    }
    rect->SetRenderData(nullptr, true);
    material->SetRenderData(nullptr);
    material->text = text;
    Layout();
    scene->MarkDirty();
}

std::string Text::GetText()
{
    return material ? material->text : std::string();
}

Color Text::GetColor() const
{
    return material ? material->color : Color(1.0f, 1.0f, 1.0f, 1.0f);
}

void Text::SetColor(const Color& color)
{
    if (scene && material)
    {
        material->color = color;
        scene->MarkDirty();
    }
}

Material2D* Text::NewBackdropMaterial(const char* name, const Color& color)
{
    auto* const made = new Material2D(name);
    made->color = color;
    scene->AddMaterial(made);
    return made;
}

void Text::DeleteBackdrop(Rect* backdrop, Material2D* backdropMaterial)
{
    delete backdrop;
    // A host may have found it in the layer and shown something else with it.
    if (backdropMaterial && backdropMaterial->EachMesh().empty())
    {
        delete backdropMaterial;
    }
}

void Text::PlaceBackdrop(Rect* backdrop, Material2D* backdropMaterial, float y)
{
    backdrop->ShiftY(y);
    backdrop->ShiftZ(kBackdropDepth);
    backdropMaterial->AddMesh(backdrop);
    for (MeshNode* node : rect->EachNode())
    {
        backdrop->AddNode(node);
    }
}

void Text::AddBackdrop(const Color& color, int backdropWidth, int backdropHeight, int x, int y)
{
    if (!IsWhole())
    {
        return;
    }
    DeleteBackdrop(leftBackdrop, leftMaterial);
    leftMaterial = NewBackdropMaterial("left", color);
    leftBackdrop = new Rect(scene, static_cast<float>(backdropWidth), static_cast<float>(backdropHeight), false);
    leftBackdrop->ShiftX(static_cast<float>(x));
    PlaceBackdrop(leftBackdrop, leftMaterial, static_cast<float>(y));
    scene->MarkDirty();
}

void Text::AddBackdrop(const FilePath& path, const std::string& leftName, const std::string& centerName,
                       const std::string& rightName, int leftWidth, int rightWidth, int backdropHeight, int y,
                       float alpha, int centerWidth)
{
    if (!IsWhole())
    {
        return;
    }
    DeleteBackdrop(leftBackdrop, leftMaterial);
    DeleteBackdrop(centerBackdrop, centerMaterial);
    DeleteBackdrop(rightBackdrop, rightMaterial);
    const auto makeMaterial = [&](const char* name, const std::string& file) {
        Material2D* const made = NewBackdropMaterial(name, Color(1.0f, 1.0f, 1.0f, alpha));
        made->texturePath = path;
        made->textureName = file;
        return made;
    };
    leftMaterial = makeMaterial("left", leftName);
    centerMaterial = makeMaterial("center", centerName);
    rightMaterial = makeMaterial("right", rightName);

    const auto rectHeight = static_cast<float>(backdropHeight);
    const auto middle = static_cast<float>(centerWidth < 0 ? width : centerWidth);
    leftBackdrop = new Rect(scene, static_cast<float>(leftWidth), rectHeight, true);
    leftBackdrop->ShiftX(static_cast<float>(centerX ? left - leftWidth : -leftWidth));
    centerBackdrop = new Rect(scene, middle, rectHeight, true);
    rightBackdrop = new Rect(scene, static_cast<float>(rightWidth), rectHeight, true);
    rightBackdrop->ShiftX(centerX ? static_cast<float>(right) : middle);
    if (centerX)
    {
        const auto minX = static_cast<float>(left);
        const auto maxX = static_cast<float>(right);
        const auto minY = static_cast<float>(bottom);
        const float maxY = minY + rectHeight;
        centerBackdrop->SetCorners(minX, minY, 0.0f, maxX, minY, 0.0f, maxX, maxY, 0.0f, minX, maxY, 0.0f);
    }
    const auto shift = static_cast<float>(y);
    PlaceBackdrop(leftBackdrop, leftMaterial, shift);
    PlaceBackdrop(centerBackdrop, centerMaterial, shift);
    PlaceBackdrop(rightBackdrop, rightMaterial, shift);
    scene->MarkDirty();
}

void Text::AddBackdrop(const FilePath& path, const std::string& leftName, const std::string& centerName,
                       const std::string& rightName, int capWidth, int backdropHeight, int y, float alpha)
{
    AddBackdrop(path, leftName, centerName, rightName, capWidth, capWidth, backdropHeight, y, alpha, -1);
}

void Text::AddSizeCallback(SizeCallback callback)
{
    Detail::TextSizeCallback() = callback;
}

void Text::GetTextSize(const std::string& font, int size, const std::string& text, int maxWidth, int& textWidth,
                       int& textHeight, int& textureWidth, int& textureHeight)
{
    if (const SizeCallback callback = Detail::TextSizeCallback())
    {
        callback(font, size, text, maxWidth, textWidth, textHeight, textureWidth, textureHeight);
        return;
    }
    textWidth = textHeight = 0;
    textureWidth = textureHeight = 1;
}

Shape2DNode* Text::GetInstance(int index)
{
    if (!rect || index < 0 || static_cast<std::size_t>(index) >= rect->EachNode().size())
    {
        return nullptr;
    }
    return dynamic_cast<Shape2DNode*>(rect->EachNode()[static_cast<std::size_t>(index)]);
}

void Text::Show(bool show)
{
    if (!rect)
    {
        return;
    }
    for (MeshNode* node : rect->EachNode())
    {
        if (!show)
        {
            node->SetFlags(NodeFlagHidden, false);
        }
        else if (UpdateToClipRegion())
        {
            node->ClearFlags(NodeFlagHidden, false);
            node->UpdateGraph();
        }
    }
    scene->MarkDirty();
}

void Text::IgnorePick(bool ignore)
{
    if (!rect)
    {
        return;
    }
    for (MeshNode* node : rect->EachNode())
    {
        if (ignore)
        {
            node->SetFlags(NodeFlagNoHitTest, false);
        }
        else
        {
            node->ClearFlags(NodeFlagNoHitTest, false);
        }
    }
}

void Text::SetClipRegion(int x, int y, int regionWidth, int regionHeight)
{
    clipLeft = x;
    clipTop = y;
    clipRight = Detail::RegionEnd(x, regionWidth);
    clipBottom = Detail::RegionEnd(y, regionHeight);
    clipped = true;
    UpdateToClipRegion();
    if (scene)
    {
        scene->MarkDirty();
    }
}

bool Text::UpdateToClipRegion()
{
    if (!clipped || !rect || rect->EachNode().size() != 1)
    {
        return true;
    }
    MeshNode* const node = rect->EachNode().front();
    Vector a;
    a.Multiply(node->GetGlobal(), Vector(rect->minX, rect->minY, 0.0f));
    Vector b;
    b.Multiply(node->GetGlobal(), Vector(rect->maxX, rect->maxY, 0.0f));

    const auto regionLeft = static_cast<float>(clipLeft);
    const auto regionTop = static_cast<float>(clipTop);
    const auto regionRight = static_cast<float>(clipRight);
    const auto regionBottom = static_cast<float>(clipBottom);
    if (regionRight < a.x || regionBottom < a.y || b.x < regionLeft || b.y < regionTop)
    {
        node->SetFlags(NodeFlagHidden, false);
        clipActive = true;
        return false;
    }
    if (a.x < regionLeft || a.y < regionTop || regionRight < b.x || regionBottom < b.y)
    {
        rect->Clip(std::max(regionLeft - a.x, 0.0f), std::max(b.y - regionBottom, 0.0f),
                   std::max(b.x - regionRight, 0.0f), std::max(regionTop - a.y, 0.0f));
        clipActive = true;
    }
    else
    {
        if (clipActive)
        {
            rect->Clip(0.0f, 0.0f, 0.0f, 0.0f);
        }
        clipActive = false;
    }
    node->ClearFlags(NodeFlagHidden, false);
    return true;
}

} // namespace OV
