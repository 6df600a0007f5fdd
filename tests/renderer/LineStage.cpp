#include "tests/renderer/LineStage.h"

#include "orvane/engine/CoreContext.h"
#include "orvane/renderdata/CameraNodeES20.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/MeshNode.h"
#include "tests/support/ShadingModel.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>

namespace OV::Test
{

namespace
{

/// Closer to a border than so much of a pixel, rounding decides.
constexpr float kUnsure = 0.06f;

/// How much of a pixel a segment covers; none where that is not to be told.
std::optional<float> Coverage(const DrawnSegment& segment, const LineStyle& style, const glm::vec2& pixel)
{
    const glm::vec2 along = segment.end - segment.start;
    const float length = glm::length(along);
    if (length == 0.0f)
    {
        return 0.0f;
    }
    const glm::vec2 unit = along / length;
    const glm::vec2 from = pixel - segment.start;
    const float position = glm::dot(unit, from);
    const float distance = std::abs(unit.x * from.y - unit.y * from.x);
    const float outside = std::max({-position, position - length, distance - style.width});
    if (outside > kUnsure)
    {
        return 0.0f;
    }
    if (outside > -kUnsure)
    {
        return std::nullopt;
    }
    if (style.IsDashed())
    {
        const float period = std::fmod(glm::length(from) / style.GetDashFrequency(), 2.0f);
        const float unsure = kUnsure / style.GetDashFrequency();
        if (std::min({period, std::abs(period - 1.0f), 2.0f - period}) < unsure)
        {
            return std::nullopt;
        }
        if (period > 1.0f)
        {
            return 0.0f;
        }
    }
    return style.antialias ? 1.0f - distance / style.width : 1.0f;
}

} // namespace

const glm::vec4 LineStage::Background(0.0f, 0.0f, 1.0f, 1.0f);

LineStage::LineStage()
{
    // Lines leave it on; every material sets it anew.
    AllowStateChange("polygon offset");
    SkySettings::inst().SetUseFog(false);
    context = std::make_unique<AppContext>();
    context->GetContext()->SetScene(std::make_unique<Scene>());
    scene = context->GetContext()->GetScene();
    renderer = std::make_unique<OpenRenderer20>(nullptr, context->GetContext()->GetRenderCapabilities());
    renderer->Resize(Width(), Height());
    context->SetScreenSize(Width(), Height());
    context->GetContext()->SetBackgroundColor(Color(Background.r, Background.g, Background.b, Background.a));

    CameraNode& camera = *scene->GetCameraNode();
    camera.SetProjection(CameraNode::Orthographic);
    camera.SetFOV(std::atan(static_cast<float>(Height()) / 2.0f / Eye));
    camera.SetDistanceToTarget(Eye);
    camera.SetNearFar(NearDistance, FarDistance);
    Transform place;
    place.SetPosition(Vector(0.0f, 0.0f, Eye));
    camera.SetGlobal(place);
}

LineStage::~LineStage()
{
    renderer.reset();
    context.reset();
}

void LineStage::UsePerspective()
{
    scene->GetCameraNode()->SetProjection(CameraNode::Perspective);
}

LineStyle& LineStage::AddStyle(const Color& color, float width)
{
    auto* style = new LineStyle("style");
    style->color = color;
    style->secondColor = Color(0.0f, 0.0f, 0.0f, 0.0f);
    style->width = width;
    style->antialias = false;
    scene->AddLineStyle(style);
    styles.push_back(style);
    return *style;
}

Line& LineStage::AddPolyline(LineStyle& style, const std::vector<Vector>& points, bool closed)
{
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer(points);
    std::vector<unsigned short> pairs;
    const std::size_t count = closed ? points.size() : points.size() - 1;
    for (std::size_t i = 0; i < count; ++i)
    {
        pairs.push_back(static_cast<unsigned short>(i));
        pairs.push_back(static_cast<unsigned short>((i + 1) % points.size()));
    }
    raw->SetIndices(pairs);
    auto* line = new Line(raw, scene);
    auto* node = new MeshNode(scene);
    scene->GetRoot()->AddChild(node, false);
    line->AddNode(node);
    style.AddLine(line);
    lines.push_back(line);
    return *line;
}

Line& LineStage::AddSegment(LineStyle& style, const Vector& start, const Vector& end)
{
    return AddPolyline(style, {start, end});
}

void LineStage::AddSquare(const Color& color, float half, float z)
{
    auto* material = new Material("square");
    material->SetFlags(MaterialFlagUnlit);
    material->SetAmbient(Color(0.0f, 0.0f, 0.0f, 0.0f));
    material->SetDiffuse(color);
    scene->AddMaterial(material);
    auto raw = std::make_shared<RawMesh>();
    raw->SetPositionBuffer({{-half, -half, z}, {half, -half, z}, {half, half, z}, {-half, half, z}});
    raw->SetIndices({0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    auto* mesh = new Mesh(raw, scene);
    auto* node = new MeshNode(scene);
    mesh->AddNode(node);
    scene->GetRoot()->AddChild(node, false);
    material->AddMesh(mesh);
}

void LineStage::DeleteLines()
{
    for (Line* line : lines)
    {
        for (MeshNode* node : std::vector<MeshNode*>(line->GetNodes()))
        {
            scene->DeleteSubtree(node);
        }
        delete line;
    }
    lines.clear();
    for (LineStyle* style : styles)
    {
        delete style;
    }
    styles.clear();
}

Picture LineStage::Frame(bool capture)
{
    scene->MarkDirty();
    context->Update(0.0f);
    context->Render(renderer.get(), capture);
    return ReadPixels();
}

Picture LineStage::ClippedFrame()
{
    scene->MarkDirty();
    context->Update(0.0f);
    CameraNodeES20 camera(scene->GetCameraNode());
    camera.UpdateMVP(Width(), Height(), false);
    renderer->BeginRender(false, Color(Background.r, Background.g, Background.b, Background.a));
    glEnable(GL_DEPTH_TEST);
    std::vector<RenderItemES20> items;
    for (LineStyle* style : scene->GetLineStyles())
    {
        renderer->PrepareLineStyle(style, &camera, items, true);
    }
    renderer->bufferPool.GenerateVBOs();
    renderer->RenderItemList(&camera, items, RenderPassDefault);
    MeshES20::ResetBufferCache();
    // As a pass of the renderer's own ends: lines leave it on.
    glDisable(GL_BLEND);
    renderer->EndRender();
    return ReadPixels();
}

glm::vec2 LineStage::Project(const Vector& point) const
{
    const bool perspective = scene->GetCameraNode()->GetProjection() == CameraNode::Perspective;
    const float scale = perspective ? Eye / (Eye - point.z) : 1.0f;
    return glm::vec2(static_cast<float>(Width()), static_cast<float>(Height())) * 0.5f +
           glm::vec2(point.x, point.y) * scale;
}

void LineStage::ExpectRibbons(const Picture& picture, const std::vector<DrawnSegment>& segments,
                              const LineStyle& style, const glm::vec4& color) const
{
    int wrong = 0;
    int drawn = 0;
    for (int y = 0; y < Height(); ++y)
    {
        for (int x = 0; x < Width(); ++x)
        {
            float coverage = 0.0f;
            bool unsure = false;
            for (const DrawnSegment& segment : segments)
            {
                const std::optional<float> part =
                    Coverage(segment, style, glm::vec2(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f));
                // Where two ribbons cross, their depths decide.
                unsure = unsure || !part || (*part > 0.0f && coverage > 0.0f);
                coverage = std::max(coverage, part.value_or(0.0f));
            }
            if (unsure)
            {
                continue;
            }
            drawn += coverage > 0.0f ? 1 : 0;
            glm::vec4 expected = glm::mix(Background, color, coverage * color.a);
            Pixel pixel = ToPixel(expected);
            pixel.a = picture.At(x, y).a;
            if (ChannelDifference(picture.At(x, y), pixel) > 3 && wrong++ == 0)
            {
                ADD_FAILURE() << "at " << x << ", " << y << ": " << picture.At(x, y) << " is not " << pixel;
            }
        }
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_GT(drawn, 0) << "nothing to compare";
}

} // namespace OV::Test
