#include "orvane/scene/LineStyle.h"

#include "orvane/base/detail/Walk.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/detail/OwnedObject.h"

namespace OV
{

LineStyle::LineStyle(const std::string& styleName) :
    name(styleName)
{
}

LineStyle::LineStyle() :
    dashFrequency(0.0f)
{
}

LineStyle::~LineStyle()
{
    detail::Walk::Tell(this);
    m_lifetime.End();
    if (scene)
    {
        scene->RemoveLineStyle(this);
    }
    detail::Walk::DiscardDrawn(std::move(renderData));
    for (Line* line : lines)
    {
        line->style = nullptr;
    }
}

int LineStyle::Type() const
{
    return NodeTypeLineStyle;
}

bool LineStyle::HasType(int type)
{
    return type == NodeTypeLineStyle;
}

bool LineStyle::AddLine(Line* line)
{
    if (!line || lines.count(line) != 0)
    {
        return false;
    }
    if (line->style)
    {
        line->style->RemoveLine(line);
    }
    lines.insert(line);
    line->style = this;
    return true;
}

bool LineStyle::RemoveLine(Line* line)
{
    if (lines.erase(line) == 0)
    {
        return false;
    }
    line->style = nullptr;
    return true;
}

void LineStyle::SetRenderData(Object* data)
{
    detail::ReplaceDrawnObject(renderData, data);
}

void LineStyle::Suspend()
{
    detail::Walk::DiscardDrawn(std::move(renderData));
}

void LineStyle::Resume()
{
}

} // namespace OV
