#pragma once

#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/Scene.h"
#include "tests/orvane_host/present/PresentationStage.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace OV::Test
{

/// Base of tests on lines: a flat scene to add polylines to.
struct LineFixture : FlatStage
{
    explicit LineFixture(int width = SmallWidth, int height = SmallHeight) : FlatStage(width, height) {}

    /// One of whole pixels.
    LineStyle& AddStyle(const Color& color, float width)
    {
        auto* const style = new LineStyle("line");
        style->color = color;
        style->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f);
        style->antialias = false;
        style->width = width / 2.0f;
        World().AddLineStyle(style);
        return *style;
    }

    void AddPolyline(LineStyle& style, const std::vector<Vector>& points)
    {
        auto raw = std::make_shared<RawLine>();
        raw->SetPositionBuffer(points);
        std::vector<unsigned short> pairs;
        for (std::size_t i = 0; i + 1 < points.size(); ++i)
        {
            pairs.push_back(static_cast<unsigned short>(i));
            pairs.push_back(static_cast<unsigned short>(i + 1));
        }
        raw->SetIndices(pairs);
        auto* const line = new Line(raw, &World());
        style.AddLine(line);
        auto* const node = new MeshNode(&World());
        World().GetRoot()->AddChild(node, false);
        line->AddNode(node);
    }

    static bool IsBlack(const Pixel& pixel) { return pixel.r < 64 && pixel.g < 64 && pixel.b < 64; }
};

} // namespace OV::Test
