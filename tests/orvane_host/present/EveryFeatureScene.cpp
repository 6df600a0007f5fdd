#include "tests/orvane_host/present/EveryFeatureScene.h"

#include "orvane/effects/EffectES20.h"
#include "orvane/effects/SkySettings.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/math/TextureCoordinate.h"
#include "orvane/overlay/Arrow.h"
#include "orvane/overlay/Material2D.h"
#include "orvane/overlay/Rect.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Sprite.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/NodeMaterial.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"
#include "orvane/scene/SimMaterial.h"

#include <cstdlib>
#include <cstring>

namespace OV::Test
{

namespace
{

constexpr int kTextureSize = 8;

Transform At(float x, float y, float z, float mirror = 1.0f)
{
    Transform place;
    place.SetScale(Vector(mirror, 1.0f, 1.0f));
    place.SetPosition(Vector(x, y, z));
    return place;
}

/// A square of edge 1.4 that faces +z, with normals and texture coordinates.
std::shared_ptr<RawMesh> MakeSquare(float half = 0.7f)
{
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer({{-half, -half, 0}, {half, -half, 0}, {half, half, 0}, {-half, half, 0}});
    raw->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 0, 1)));
    raw->SetTextureBuffer({{0, 0}, {1, 0}, {1, 1}, {0, 1}});
    raw->SetIndices({0, 1, 2, 0, 2, 3});
    raw->EndDescription(true);
    return raw;
}

std::shared_ptr<RawMesh> MakeColouredSquare()
{
    std::shared_ptr<RawMesh> raw = MakeSquare();
    raw->SetColorBuffer({Color(1, 0, 0), Color(0, 1, 0), Color(0, 0, 1), Color(1, 1, 0)});
    return raw;
}

/// A box of edge 1.2 with a normal a face.
std::shared_ptr<RawMesh> MakeBox()
{
    constexpr float h = 0.6f;
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<unsigned short> indices;
    for (int axis = 0; axis < 3; ++axis)
    {
        for (const float side : {1.0f, -1.0f})
        {
            const auto first = static_cast<unsigned short>(positions.size());
            const float corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
            for (const auto& corner : corners)
            {
                float p[3];
                p[axis] = side * h;
                p[(axis + 1) % 3] = corner[0] * h;
                p[(axis + 2) % 3] = corner[1] * side * h;
                positions.emplace_back(p[0], p[1], p[2]);
                float n[3] = {0, 0, 0};
                n[axis] = side;
                normals.emplace_back(n[0], n[1], n[2]);
            }
            for (const int index : {0, 1, 2, 0, 2, 3})
            {
                indices.push_back(static_cast<unsigned short>(first + index));
            }
        }
    }
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer(std::move(positions));
    raw->SetNormalBuffer(std::move(normals));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

/// A picture of two colours, in squares.
Pixels Checkers(unsigned char light, unsigned char dark)
{
    Pixels pixels;
    for (int i = 0; i < kTextureSize * kTextureSize; ++i)
    {
        const bool odd = ((i / 2) + (i / (2 * kTextureSize))) % 2 != 0;
        const unsigned char value = odd ? dark : light;
        pixels.insert(pixels.end(), {value, static_cast<unsigned char>(255 - value), value, 255});
    }
    return pixels;
}

/// Raw pixels, which a material releases with free.
void GivePixels(Material& material, const Pixels& pixels)
{
    material.pixels = static_cast<unsigned char*>(std::malloc(pixels.size()));
    std::memcpy(material.pixels, pixels.data(), pixels.size());
    material.pixelWidth = kTextureSize;
    material.pixelHeight = kTextureSize;
}

} // namespace

EveryFeatureScene::EveryFeatureScene(CoreContext& context)
{
    context.SetScene(std::make_unique<Scene>());
    context.SetBackgroundColor(Color(0.55f, 0.7f, 0.8f));
    m_scene = context.GetScene();
    FillScene();
    FillLayer(*context.GetBackground2D(), 2.0f);
    FillLayer(*context.GetForeground2D(), 50.0f);
}

EveryFeatureScene::EveryFeatureScene(Scene& scene) : m_scene(&scene)
{
    FillScene();
}

void EveryFeatureScene::FillScene()
{
    UseOrthographic(false);
    AddRoom();
    AddSurfaces();
    AddMappedSurfaces();
    AddUnusualSurfaces();
    AddNodesOfEveryKind();
    AddLines();
    AddSettings();
}

EveryFeatureScene::~EveryFeatureScene() = default;

CameraNode& EveryFeatureScene::GetCamera()
{
    return *m_scene->GetCameraNode();
}

void EveryFeatureScene::UseOrthographic(bool orthographic)
{
    CameraNode& camera = GetCamera();
    camera.SetProjection(orthographic ? CameraNode::Orthographic : CameraNode::Perspective);
    camera.SetFOV(0.4f);
    camera.SetDistanceToTarget(8.0f);
    camera.SetNearFar(1.0f, 30.0f);
    Transform place;
    place.EyeLookUp(Vector(1.0f, 1.5f, 8.0f), Vector(0.0f, 0.0f, 0.0f), Vector(0.0f, 1.0f, 0.0f));
    camera.SetLocal(place);
}

Material& EveryFeatureScene::AddMaterial(const Color& diffuse)
{
    auto* const material = new Material("material");
    material->SetDiffuse(diffuse);
    material->SetAmbient(Color(0.3f, 0.3f, 0.3f));
    m_scene->AddMaterial(material);
    return *material;
}

MeshNode& EveryFeatureScene::AddNode(const Transform& place)
{
    auto* const node = new MeshNode(m_scene);
    node->SetLocal(place);
    node->SetUserData(m_nextUserData++);
    m_scene->GetRoot()->AddChild(node, false);
    return *node;
}

MeshNode& EveryFeatureScene::Add(Material& material, const std::shared_ptr<RawMesh>& raw, const Transform& place)
{
    auto* const mesh = new Mesh(raw, m_scene);
    material.AddMesh(mesh);
    MeshNode& node = AddNode(place);
    mesh->AddNode(&node);
    return node;
}

LineStyle& EveryFeatureScene::AddLine(const std::vector<Vector>& points, const Color& color, float width)
{
    auto* const style = new LineStyle("lines");
    style->color = color;
    style->secondColor = Color(0, 0, 0, 0);
    style->width = width;
    style->antialias = false;
    m_scene->AddLineStyle(style);
    auto raw = std::make_shared<RawLine>();
    raw->SetPositionBuffer(points);
    std::vector<unsigned short> pairs;
    for (std::size_t i = 1; i < points.size(); ++i)
    {
        pairs.insert(pairs.end(), {static_cast<unsigned short>(i - 1), static_cast<unsigned short>(i)});
    }
    raw->SetIndices(pairs);
    auto* const line = new Line(raw, m_scene);
    style->AddLine(line);
    line->AddNode(&AddNode(Transform()));
    return *style;
}

/// A floor and a wall that meet in a corner.
void EveryFeatureScene::AddRoom()
{
    Material& plain = AddMaterial(Color(0.7f, 0.68f, 0.6f));
    Add(plain, MakeSquare(3.0f), At(0, 0, -2.0f));
    auto floor = std::make_shared<RawMesh>();
    floor->StartDescription();
    floor->SetPositionBuffer({{-3, -2, 2}, {3, -2, 2}, {3, -2, -2}, {-3, -2, -2}});
    floor->SetNormalBuffer(std::vector<Vector>(4, Vector(0, 1, 0)));
    floor->SetIndices({0, 1, 2, 0, 2, 3});
    floor->EndDescription(true);
    Add(plain, floor, Transform());
}

void EveryFeatureScene::AddSurfaces()
{
    Material& lit = AddMaterial(Color(0.8f, 0.3f, 0.2f));
    // What a plane has cut shows its inside.
    lit.SetFlags(MaterialFlagNoCull);
    lit.SetShininess(20.0f);
    Add(lit, MakeBox(), At(2.2f, 1.0f, 0.2f));

    Material& textured = AddMaterial(Color(1, 1, 1));
    GivePixels(textured, Checkers(220, 60));
    Add(textured, MakeSquare(), At(-2.4f, 1.2f, 0));

    Material& unlit = AddMaterial(Color(0.2f, 0.8f, 0.3f));
    unlit.SetFlags(MaterialFlagUnlit | MaterialFlagPolygonOffset);
    unlit.polygonOffsetFactor = 1.0f;
    unlit.polygonOffsetUnits = 1.0f;
    Add(unlit, MakeSquare(), At(-0.8f, 1.2f, -0.4f));

    Add(AddMaterial(Color(0.2f, 0.3f, 0.9f, 0.5f)), MakeSquare(), At(0.4f, 0.8f, 0.6f));
    Add(AddMaterial(Color(0.9f, 0.8f, 0.1f, 0.4f)), MakeSquare(), At(0.8f, 0.5f, 0.9f));
}

void EveryFeatureScene::AddMappedSurfaces()
{
    Material& bumpy = AddMaterial(Color(0.7f, 0.7f, 0.7f));
    bumpy.texturePath = m_files.Path();
    bumpy.normalMapName = m_files.Write("normal.png", Checkers(160, 96), kTextureSize, kTextureSize);
    bumpy.reflectionFactors[0] = 0.3f;
    bumpy.reflectionFactors[1] = 0.6f;
    bumpy.reflectionFactors[2] = 0.5f;
    Add(bumpy, MakeSquare(), At(-2.4f, -0.4f, 0.1f));

    Material& holed = AddMaterial(Color(0.9f, 0.5f, 0.6f));
    holed.texturePath = m_files.Path();
    holed.opacityMapName = m_files.Write("opacity.png", Checkers(255, 0), kTextureSize, kTextureSize);
    Add(holed, MakeSquare(), At(-0.8f, -0.4f, 0.2f));
}

void EveryFeatureScene::AddUnusualSurfaces()
{
    Material& stippled = AddMaterial(Color(0.5f, 0.2f, 0.6f));
    stippled.stippling = true;
    stippled.stippleColor = Color(1.0f, 0.9f, 0.2f);
    Add(stippled, MakeSquare(), At(0.8f, -0.8f, 0.3f));

    Material& points = AddMaterial(Color(0.1f, 0.1f, 0.1f));
    points.SetFlags(MaterialFlagPoints | MaterialFlagUnlit);
    points.pointSize = 4.0f;
    Add(points, MakeSquare(0.4f), At(-1.6f, 0.4f, 1.2f));

    Add(AddMaterial(Color(1, 1, 1)), MakeColouredSquare(), At(2.3f, -0.8f, 0.1f));

    auto* const sim = new SimMaterial("numbers");
    sim->rangeLower = 0.1f;
    sim->rangeUpper = 0.9f;
    m_scene->AddMaterial(sim);
    Add(*sim, MakeSquare(0.5f), At(1.4f, -1.5f, 0.8f));

    Material& above = AddMaterial(Color(0.9f, 0.4f, 0.1f));
    above.SetFlags(MaterialFlagAlwaysPass);
    above.noDepthWrite = true;
    Add(above, MakeSquare(0.2f), At(-1.6f, -1.6f, -1.0f));
}

void EveryFeatureScene::AddNodesOfEveryKind()
{
    Material& grey = AddMaterial(Color(0.5f, 0.5f, 0.5f));
    auto* const own = new NodeMaterial;
    own->SetDiffuse(Color(0.1f, 0.7f, 0.7f));
    own->SetAmbient(Color(0.3f, 0.3f, 0.3f));
    m_scene->AddMaterial(own);
    own->AddNode(&Add(grey, MakeBox(), At(-2.4f, -1.6f, 0.6f)));
    Add(grey, MakeBox(), At(-0.4f, -1.7f, 0.4f, -1.0f));
    Add(grey, MakeBox(), At(0.0f, 0.0f, 3.0f)).SetFlags(NodeFlagHidden, false);
    Mesh* const noCull = *grey.GetMeshes().begin();
    noCull->SetFlags(MeshFlagNoCull);
}

void EveryFeatureScene::AddLines()
{
    AddLine({{-3, 1.9f, 0}, {0, 1.9f, 0}, {3, 1.9f, -1}}, Color(0.9f, 0, 0), 3.0f);
    LineStyle& dashed = AddLine({{-3, -1.9f, 1}, {3, -1.9f, 1}}, Color(0, 0, 0.9f), 1.5f);
    dashed.SetDashed(true);
    dashed.SetDashFrequency(4.0f);
    AddLine({{-3, -1, 1.5f}, {3, 1, 1.5f}}, Color(0, 0.5f, 0), 2.0f).antialias = true;
    // Round the unlit square, half on it and half beside it.
    LineStyle& overlay = AddLine({{-1.5f, 0.5f, -0.4f}, {-0.1f, 0.5f, -0.4f}, {-0.1f, 1.9f, -0.4f}, {-1.5f, 1.9f, -0.4f}},
                                 Color(0.4f, 0, 0.4f), 2.0f);
    overlay.overlay = true;
    LineStyle& shifted = AddLine({{0, -1.5f, -1}, {0, 1.5f, -1}}, Color(0.1f, 0.6f, 0.9f), 1.0f);
    shifted.offset = 5.0f;
    shifted.fog = false;
    AddLine({{-3, 0, -3}, {3, 0, -3}}, Color(0.8f, 0.8f, 0), 1.0f).SetFlags(LineStyleFlagDepthLessEqual);
    LineStyle& above = AddLine({{1, -1.5f, -2.5f}, {1, 1.5f, -2.5f}}, Color(0.2f, 0.2f, 0.2f), 1.0f);
    above.noDepthTest = true;
    above.noDepthWrite = true;
}

void EveryFeatureScene::AddSettings()
{
    auto* const light = new LightNode(m_scene);
    light->SetLocalDirection(Vector(-0.4f, -0.6f, -0.7f));
    light->SetAmbient(0.3f, 0.3f, 0.3f);
    m_scene->GetRoot()->AddChild(light, false);

    SkySettings& sky = SkySettings::inst();
    sky.SetHorizonColor(Color(0.8f, 0.85f, 0.9f));
    sky.SetUseFog(true);
    sky.SetFogStart(5.0f);
    sky.SetFogEnd(60.0f);

    // Through the lit box.
    EffectES20::AddClipPlane(glm::vec3(0.6f, 0.0f, 0.8f), glm::vec3(2.3f, 1.0f, 0.3f));
    EffectES20::SetClipPlaneOutlineSize(0.1f);
    EffectES20::SetClipPlaneOutlineColor(glm::vec4(0.0f, 0.1f, 0.2f, 1.0f));
    EffectES20::SetPocheColor(glm::vec4(0.3f, 0.25f, 0.2f, 1.0f));
}

void EveryFeatureScene::AddSprite(Scene2D& layer, float x, float y, float z, const Color& color, bool textured)
{
    m_sprites.push_back(std::make_unique<Sprite>(&layer, new Rect(&layer, 10.0f, 8.0f, textured)));
    Sprite& sprite = *m_sprites.back();
    sprite.SetColor(color);
    sprite.GetNode()->SetLocal(At(x, y, z));
    if (textured)
    {
        // From a file: raw pixels of a layer are gone once they are uploaded.
        sprite.GetMaterial()->texturePath = m_files.Path();
        sprite.GetMaterial()->textureName = m_files.Write("sprite.png", Checkers(240, 20), kTextureSize, kTextureSize);
    }
}

void EveryFeatureScene::AddArrow(Scene2D& layer, float x, float y, float z)
{
    m_sprites.push_back(std::make_unique<Sprite>(&layer, new Arrow(8.0f, 0.5f, &layer)));
    m_sprites.back()->SetColor(Color(0.9f, 0.1f, 0.1f, 0.8f));
    m_sprites.back()->GetNode()->SetLocal(At(x, y, z));
}

void EveryFeatureScene::FillLayer(Scene2D& layer, float left)
{
    AddSprite(layer, left, 2.0f, 1.0f, Color(1, 1, 1, 1), true);
    AddSprite(layer, left + 6.0f, 6.0f, 2.0f, Color(0.2f, 0.6f, 0.3f, 0.6f), false);
    AddArrow(layer, left + 22.0f, 6.0f, 3.0f);
    m_texts.push_back(std::make_unique<Text>("DejaVu Sans", 9, "Ag", &layer, false, false, 0));
    m_texts.back()->GetMaterial()->color = Color(0.1f, 0.1f, 0.1f, 1.0f);
    m_texts.back()->GetInstance(0)->SetLocal(At(left + 28.0f, 2.0f, 4.0f));
}

} // namespace OV::Test
