// What a host's own GL may change between two frames, and what it finds changed after one: the
// lists of docs/contract.md, held to the truth in both directions.

#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/platform/ESTextureLoader.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/RawLine.h"
#include "tests/renderer/PixelScene.h"
#include "tests/support/GLStateTable.h"

#include <GL/glew.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

namespace OV::Test
{

namespace
{

using Names = std::set<std::string>;
using Values = std::vector<std::vector<double>>;

/// The names in `code` of the page's paragraph that begins with these words.
Names NamesOnPage(const std::string& heading)
{
    std::ifstream file(ORVANE_CONTRACT_PAGE);
    std::stringstream text;
    text << file.rdbuf();
    const std::string page = text.str();
    const std::size_t begin = page.find(heading);
    if (begin == std::string::npos)
    {
        ADD_FAILURE() << "docs/contract.md has no paragraph " << heading;
        return {};
    }
    const std::string paragraph = page.substr(begin, page.find("\n\n", begin) - begin);
    Names names;
    std::size_t from = paragraph.find('`');
    while (from != std::string::npos)
    {
        const std::size_t to = paragraph.find('`', from + 1);
        std::string name = paragraph.substr(from + 1, to - from - 1);
        // A name may go on in the next line.
        const std::size_t lineEnd = name.find('\n');
        if (lineEnd != std::string::npos)
        {
            name[lineEnd] = ' ';
        }
        names.insert(name);
        from = paragraph.find('`', to + 1);
    }
    return names;
}

Values ReadAll()
{
    Values values;
    for (const GLStateRow& row : GLStateTable())
    {
        values.push_back(row.read());
    }
    return values;
}

void ResetAll()
{
    for (const GLStateRow& row : GLStateTable())
    {
        row.reset();
    }
}

/// A scene with one of everything that a frame of the plain renderer draws.
class HostState : public PixelScene
{
protected:
    HostState()
    {
        FillScene();
        FillLayer(*context->GetContext()->GetBackground2D(), {0, 90, 60, 30});
        FillLayer(*context->GetContext()->GetForeground2D(), {90, 0, 30, 60});
    }

    ~HostState() override
    {
        sprites.clear();
        renderer.reset();
        context.reset();
        FreeGLStateObjects();
    }

    /// Starts over, as a program does: nothing has been uploaded or compiled.
    void StartOver()
    {
        context->Suspend(renderer.get());
        for (Material* material : textured)
        {
            if (!material->pixels)
            {
                GivePixels(*material);
            }
        }
        renderer = std::make_unique<OpenRenderer20>(&loader, context->GetContext()->GetRenderCapabilities());
        renderer->Resize(Width(), Height());
    }

    static void GivePixels(Material& material)
    {
        constexpr int side = 8;
        material.pixels = static_cast<unsigned char*>(std::malloc(side * side * 4));
        for (int i = 0; i < side * side * 4; ++i)
        {
            material.pixels[i] = static_cast<unsigned char>(i % 4 == 3 ? 255 : (i * 37) % 256);
        }
        material.pixelWidth = side;
        material.pixelHeight = side;
        material.clampTexture = true;
    }

    Material& AddLit(bool textured)
    {
        auto* const material = new Material("lit");
        material->SetAmbient(Color(0.1f, 0.2f, 0.1f, 1.0f));
        material->SetDiffuse(Color(0.6f, 0.5f, 0.7f, 1.0f));
        if (textured)
        {
            GivePixels(*material);
            this->textured.push_back(material);
        }
        scene->AddMaterial(material);
        return *material;
    }

    MeshNode& AddLitQuad(Material& material, float x, float y, float size, bool normals)
    {
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer({{x, y, 2}, {x + size, y, 2}, {x + size, y + size, 2}, {x, y + size, 2}});
        if (normals)
        {
            raw->SetNormalBuffer({{0, 0, 1}, {0.6f, 0, 0.8f}, {0, 0, 1}, {0, 0.6f, 0.8f}});
        }
        raw->SetTextureBuffer({{0, 0}, {2, 0}, {2, 2}, {0, 2}});
        raw->SetIndices({0, 1, 2, 0, 2, 3});
        raw->EndDescription(true);
        auto* const mesh = new Mesh(raw, scene);
        auto* const node = new MeshNode(scene);
        mesh->AddNode(node);
        scene->GetRoot()->AddChild(node, false);
        material.AddMesh(mesh);
        return *node;
    }

    /// A triangle whose indices are the largest that there are.
    void AddLastTriangle(Material& material)
    {
        std::vector<Vector> positions(65536, Vector(0.0f, 0.0f, 0.0f));
        positions[65533] = Vector(-60.0f, -60.0f, 3.0f);
        positions[65534] = Vector(-40.0f, -60.0f, 3.0f);
        positions[65535] = Vector(-60.0f, -40.0f, 3.0f);
        auto raw = std::make_shared<RawMesh>();
        raw->SetPositionBuffer(std::move(positions));
        raw->SetIndices({65533, 65534, 65535});
        raw->EndDescription(true);
        auto* const mesh = new Mesh(raw, scene);
        auto* const node = new MeshNode(scene);
        mesh->AddNode(node);
        scene->GetRoot()->AddChild(node, false);
        material.AddMesh(mesh);
    }

    void FillScene()
    {
        auto* const light = new LightNode(scene);
        scene->GetRoot()->AddChild(light, false);

        Material& red = AddColor(Color(1.0f, 0.0f, 0.0f, 1.0f));
        AddQuad(red, {40, 40, 50, 50}, 0.0f);
        Material& green = AddColor(Color(0.0f, 1.0f, 0.0f, 1.0f));
        AddQuad(green, {30, 30, 40, 40}, -20.0f);
        // Behind an equal depth the first one stays; back faces are not seen.
        AddQuad(green, {60, 60, 20, 20}, 0.0f);
        AddShape(green, {{80, 80, 5}, {80, 100, 5}, {100, 80, 5}});
        // Out of the picture at either end of the depth.
        AddShape(green, {{100, 60, 60}, {127, 60, 60}, {114, 90, 160}});
        AddQuad(AddColor(Color(1.0f, 1.0f, 0.0f, 0.5f)), {50, 50, 50, 20}, 10.0f);
        AddLastTriangle(red);

        Material& points = AddColor(Color(1.0f, 0.0f, 1.0f, 1.0f));
        points.SetFlags(MaterialFlagPoints);
        points.pointSize = 9.0f;
        AddShape(points, {{20, 70, 20}, {34, 74, 20}, {26, 86, 20}});

        AddLitQuad(AddLit(true), -60.0f, -20.0f, 24.0f, true);
        AddLitQuad(AddLit(false), -30.0f, -60.0f, 24.0f, true);
        AddLitQuad(AddLit(false), 0.0f, -60.0f, 20.0f, false);
        MeshNode& mirrored = AddLitQuad(AddLit(false), -50.0f, -58.0f, 14.0f, true);
        Transform mirror;
        mirror.SetScale(Vector(-1.0f, 1.0f, 1.0f));
        mirrored.SetLocal(mirror);

        AddLine(Color(0.0f, 1.0f, 1.0f, 1.0f), false, {-60.0f, 50.0f, 30.0f}, {60.0f, 20.0f, -30.0f});
        AddLine(Color(1.0f, 0.5f, 0.0f, 1.0f), true, {-55.0f, -50.0f, 30.0f}, {50.0f, 55.0f, -5.0f});
    }

    void AddLine(const Color& color, bool antialias, const Vector& start, const Vector& end)
    {
        auto* const style = new LineStyle("line");
        style->color = color;
        style->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f);
        style->width = 3.0f;
        style->antialias = antialias;
        scene->AddLineStyle(style);
        auto raw = std::make_shared<RawLine>();
        raw->SetPositionBuffer({start, end});
        raw->SetIndices({0, 1});
        auto* const line = new Line(raw, scene);
        auto* const node = new MeshNode(scene);
        scene->GetRoot()->AddChild(node, false);
        line->AddNode(node);
        style->AddLine(line);
    }

    void FillLayer(Scene2D& layer, const PixelRect& rect)
    {
        const auto add = [&](const Color& color, float shift, float z)
        {
            auto* const shape = new Rect(&layer, static_cast<float>(rect.width), static_cast<float>(rect.height), true);
            sprites.push_back(std::make_unique<Sprite>(&layer, shape));
            sprites.back()->SetColor(color);
            Transform place;
            place.SetPosition(Vector(static_cast<float>(rect.x) + shift, static_cast<float>(rect.y) + shift, z));
            sprites.back()->GetNode()->SetLocal(place);
            return sprites.back()->GetMaterial();
        };
        Material2D& material = *add(Color(1.0f, 0.8f, 0.8f, 1.0f), 0.0f, 0.0f);
        GivePixels(material);
        textured.push_back(&material);
        add(Color(0.2f, 0.2f, 0.9f, 0.5f), 6.0f, 1.0f);
    }

    /// Leaves nothing of an earlier frame where one could show through: a state that keeps a frame
    /// from drawing would not be told from one that does not matter.
    void ClearAway()
    {
        for (const GLuint framebuffer : {renderer->offscreenFramebuffer, 0u})
        {
            if (framebuffer != 0)
            {
                glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
            }
            else
            {
                Context().BindFramebuffer();
            }
            glClearColor(0.3f, 0.6f, 0.9f, 0.2f);
            glClearDepth(0.25);
            glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
        }
        glClearColor(0, 0, 0, 0);
        glClearDepth(1.0);
        ResetAll();
    }

    /// One frame as a host draws it, then everything at GL's start again.
    Picture FrameThenReset(bool capture, Values* left = nullptr)
    {
        Render(capture);
        if (left)
        {
            *left = ReadAll();
        }
        ResetAll();
        return ReadPixels();
    }

    /// Draws frames with each state changed in turn.
    void Look(bool capture, Names& needed, Names& leaves)
    {
        FrameThenReset(capture);
        ClearAway();
        const Values start = ReadAll();
        Values left;
        const Picture expected = FrameThenReset(capture, &left);
        ASSERT_EQ(FrameThenReset(capture), expected);
        const std::vector<GLStateRow>& table = GLStateTable();
        for (std::size_t i = 0; i < table.size(); ++i)
        {
            if (left[i] != start[i])
            {
                leaves.insert(table[i].name);
            }
        }
        for (std::size_t i = 0; i < table.size(); ++i)
        {
            SCOPED_TRACE(table[i].name);
            ClearAway();
            table[i].change();
            const std::vector<double> changed = table[i].read();
            EXPECT_NE(changed, start[i]) << "the row changes nothing";
            if (FrameThenReset(capture, &left) != expected)
            {
                needed.insert(table[i].name);
            }
            if (left[i] != changed)
            {
                leaves.insert(table[i].name);
            }
            ASSERT_EQ(ReadAll(), start) << "the row does not come back";
            ASSERT_EQ(FrameThenReset(capture), expected) << "it changed the frames after it";
        }
    }

    Platform::Linux::ESTextureLoader loader;
    std::vector<std::unique_ptr<Sprite>> sprites;
    std::vector<Material*> textured;
};

} // namespace

TEST_F(HostState, FramesNeedWhatThePageSaysAndLeaveChangedWhatItSays)
{
    ASSERT_GT(GLStateTable().size(), 100u);
    Names needed;
    Names leaves;
    for (const int samples : {0, 4})
    {
        UseFramebuffer(DefaultSize, DefaultSize, samples);
        for (const bool capture : {false, true})
        {
            SCOPED_TRACE(std::to_string(samples) + (capture ? " samples, captured" : " samples"));
            StartOver();
            Look(capture, needed, leaves);
        }
    }
    EXPECT_THAT(needed, ::testing::ContainerEq(NamesOnPage("**What a frame needs.**")));
    EXPECT_THAT(leaves, ::testing::ContainerEq(NamesOnPage("**What a frame leaves.**")));
}

TEST_F(HostState, AFrameHasThePictureInIt)
{
    StartOver();
    const Picture picture = FrameThenReset(false);
    const Picture captured = FrameThenReset(true);
    // The capture's alpha is not that of the screen, its colours are.
    for (const auto& [x, y] : {std::pair{80, 45}, {35, 35}, {20, 70}, {10, 50}, {75, 75}, {8, 8}, {10, 110}, {110, 10}})
    {
        EXPECT_NE(picture.At(x, y), (Pixel{0, 0, 255, 255})) << x << ", " << y << ": the ground";
        EXPECT_NE(captured.At(x, y), (Pixel{0, 0, 255, 255})) << x << ", " << y << ": the ground";
    }
}

} // namespace OV::Test
