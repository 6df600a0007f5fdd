#include "orvane/scene/Line.h"

#include "orvane/scene/LineStyle.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"

namespace OV
{

Line::Line(const std::shared_ptr<RawLine>& geometry, Scene* ownScene) :
    Mesh(geometry ? geometry : std::make_shared<RawLine>())
{
    if (ownScene)
    {
        ownScene->AddLine(this);
    }
}

Line::Line(const Line& other, Scene* ownScene) :
    Line(other.GetRawLine(), ownScene)
{
}

Line::~Line()
{
    if (scene)
    {
        scene->RemoveLine(this);
    }
    if (style)
    {
        style->RemoveLine(this);
    }
}

int Line::Type() const
{
    return NodeTypeLine;
}

bool Line::HasType(int type)
{
    return type == NodeTypeLine || type == NodeTypeMesh;
}

std::shared_ptr<RawLine> Line::GetRawLine() const
{
    return std::dynamic_pointer_cast<RawLine>(rawMesh);
}

} // namespace OV
