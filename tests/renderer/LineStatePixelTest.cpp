#include "orvane/effects/SolidLineEffectES20.h"
#include "tests/renderer/LineStage.h"
#include "tests/support/GLState.h"

#include <GL/glew.h>
#include <gtest/gtest.h>

#include <functional>

namespace OV::Test
{

namespace
{

/// What a style may be like, one after the other.
struct Kind
{
    const char* label;
    std::function<void(LineStyle&)> shape;
};

const Kind kKinds[] = {
    {"plain", [](LineStyle&) {}},
    {"antialiased", [](LineStyle& style) { style.antialias = true; }},
    {"dashed", [](LineStyle& style) { style.SetDashed(true); }},
    {"translucent", [](LineStyle& style) { style.color.a = 0.5f; }},
    {"without depth test", [](LineStyle& style) { style.noDepthTest = true; }},
    {"without depth write", [](LineStyle& style) { style.noDepthWrite = true; }},
    {"without either", [](LineStyle& style) { style.noDepthTest = style.noDepthWrite = true; }},
    {"behind", [](LineStyle& style) { style.SetFlags(LineStyleFlagDepthLessEqual); }},
    {"strip", [](LineStyle& style) { style.SetFlags(LineStyleFlagStrip); }},
    {"offset", [](LineStyle& style) { style.offset = 9.0f; }},
    {"overlay", [](LineStyle& style) { style.overlay = true; }},
    {"all of it",
     [](LineStyle& style)
     {
         style.antialias = true;
         style.SetDashed(true);
         style.noDepthTest = style.noDepthWrite = style.overlay = true;
         style.offset = 3.0f;
         style.SetFlags(LineStyleFlagDepthLessEqual | LineStyleFlagStrip);
     }},
};

class LineState : public LineStage
{
protected:
    /// Opaque, translucent and, over them, what depth decides.
    void FillScene()
    {
        AddSquare(Color(1.0f, 1.0f, 0.0f, 1.0f), 40.0f, 0.0f);
        AddSquare(Color(0.0f, 1.0f, 1.0f, 1.0f), 20.0f, -10.0f);
        AddSquare(Color(1.0f, 0.0f, 1.0f, 0.5f), 30.0f, 5.0f);
    }

    LineStyle& AddCross(const Kind& kind)
    {
        LineStyle& style = AddStyle(Color(1.0f, 0.0f, 0.0f, 1.0f), 3.0f);
        kind.shape(style);
        AddSegment(style, Vector(-60.0f, -50.0f, 20.0f), Vector(60.0f, 50.0f, -20.0f));
        AddSegment(style, Vector(-60.0f, 50.0f, -20.0f), Vector(60.0f, -50.0f, 20.0f));
        return style;
    }
};

} // namespace

TEST_F(LineState, FramesAfterAnyStyleEqualThoseWithoutIt)
{
    for (const bool withAlpha : {true, false})
    {
        if (withAlpha)
        {
            FillScene();
        }
        for (const bool capture : {false, true})
        {
            Frame(capture);
            const Picture before = Frame(capture);
            for (const Kind& kind : kKinds)
            {
                AddCross(kind);
                const Picture with = Frame(capture);
                EXPECT_EQ(Frame(capture), with) << kind.label << capture;
                DeleteLines();
                EXPECT_EQ(Frame(capture), before) << kind.label << capture;
                EXPECT_EQ(Frame(capture), before) << kind.label << capture;
            }
        }
        for (Material* material : std::vector<Material*>(scene->GetOptimizedMaterials()))
        {
            material->SetFlags(MaterialFlagPolygonOffset);
        }
    }
}

TEST_F(LineState, AStyleOfAnyKindDoesNotChangeTheNextStyle)
{
    FillScene();
    LineStyle& last = AddStyle(Color(0.0f, 1.0f, 0.0f, 0.5f), 4.0f);
    AddSegment(last, Vector(-60.0f, 3.0f, 2.0f), Vector(60.0f, -3.0f, 2.0f));
    const Picture alone = Frame();
    for (const Kind& kind : kKinds)
    {
        // Far off the picture, and listed before the other: all that it leaves is state.
        scene->RemoveLineStyle(&last);
        LineStyle& style = AddStyle(Color(1.0f, 0.0f, 0.0f, 1.0f), 3.0f);
        kind.shape(style);
        AddSegment(style, Vector(500.0f, 500.0f, 0.0f), Vector(600.0f, 500.0f, 0.0f));
        scene->AddLineStyle(&last);
        EXPECT_EQ(Frame(), alone) << kind.label;
        delete lines.back();
        lines.pop_back();
        delete styles.back();
        styles.pop_back();
    }
}

TEST_F(LineState, DepthStateComesBackAfterEachStyle)
{
    AddSegment(AddStyle(Color(1.0f, 0.0f, 0.0f, 1.0f), 3.0f), Vector(-60.0f, 0.0f, 0.0f), Vector(60.0f, 0.0f, 0.0f));
    Frame();
    for (const Kind& kind : kKinds)
    {
        AddCross(kind);
        const GLStateValues before = GLState::Capture();
        Frame();
        const GLStateValues after = GLState::Capture();
        for (const auto& [name, values] : after)
        {
            if (name.find("depth") != std::string::npos)
            {
                EXPECT_EQ(values, before.at(name)) << kind.label << ' ' << name;
            }
        }
        DeleteLines();
        AddSegment(AddStyle(Color(1.0f, 0.0f, 0.0f, 1.0f), 3.0f), Vector(-60.0f, 0.0f, 0.0f),
                   Vector(60.0f, 0.0f, 0.0f));
    }
}

} // namespace OV::Test
