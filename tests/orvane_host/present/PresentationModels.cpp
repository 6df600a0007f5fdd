#include "tests/orvane_host/present/PresentationModels.h"

#include "orvane/math/Transform.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawMesh.h"

#include <sstream>
#include <utility>

namespace OV::Test
{

namespace
{

/// A closed box with a normal a face.
std::shared_ptr<RawMesh> MakeBox(const Vector& half)
{
    std::vector<Vector> positions;
    std::vector<Vector> normals;
    std::vector<unsigned short> indices;
    const float h[3] = {half.x, half.y, half.z};
    for (int axis = 0; axis < 3; ++axis)
    {
        for (const float side : {1.0f, -1.0f})
        {
            const auto first = static_cast<unsigned short>(positions.size());
            const float corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
            for (const auto& corner : corners)
            {
                float p[3];
                p[axis] = side * h[axis];
                p[(axis + 1) % 3] = corner[0] * h[(axis + 1) % 3];
                p[(axis + 2) % 3] = corner[1] * side * h[(axis + 2) % 3];
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
    raw->SetPositionBuffer(std::move(positions));
    raw->SetNormalBuffer(std::move(normals));
    raw->SetIndices(std::move(indices));
    raw->EndDescription(true);
    return raw;
}

class Builder
{
public:
    NamedScene made{std::make_unique<Scene>(), {}};

    Material& AddMaterial(const Color& color)
    {
        auto* const material = new Material("material");
        material->SetDiffuse(color);
        material->SetAmbient(Color(0.3f * color.r, 0.3f * color.g, 0.3f * color.b));
        made.scene->AddMaterial(material);
        return *material;
    }

    Mesh& AddMesh(Material& material, const Vector& half)
    {
        auto* const mesh = new Mesh(MakeBox(half), made.scene.get());
        material.AddMesh(mesh);
        return *mesh;
    }

    MeshNode& AddNode(const std::string& name, Node& parent, const Vector& place, const std::vector<Mesh*>& meshes)
    {
        auto* const node = new MeshNode(made.scene.get());
        Transform transform;
        transform.SetPosition(place);
        node->SetLocal(transform);
        parent.AddChild(node, false);
        for (Mesh* mesh : meshes)
        {
            mesh->AddNode(node);
        }
        const auto number = static_cast<std::uint64_t>(made.nodes.size());
        Node::Path path = parent.GetPath();
        path.emplace_back(1, number);
        node->SetPath(path);
        node->SetUserData(static_cast<int>(number));
        made.nodes.push_back({name, node});
        return *node;
    }
};

} // namespace

NamedScene MakeBoxes()
{
    Builder builder;
    Material& clay = builder.AddMaterial(Color(0.8f, 0.4f, 0.3f));
    Material& lime = builder.AddMaterial(Color(0.4f, 0.7f, 0.3f));
    Material& glass = builder.AddMaterial(Color(0.3f, 0.5f, 0.9f, 0.5f));
    MeshNode& house = builder.AddNode("house", *builder.made.scene->GetRoot(), Vector(0, 0, 0), {});
    Mesh& tall = builder.AddMesh(clay, Vector(1.0f, 1.5f, 1.0f));
    Mesh& low = builder.AddMesh(clay, Vector(0.8f, 0.5f, 0.8f));
    Mesh& inner = builder.AddMesh(lime, Vector(0.4f, 0.4f, 0.4f));
    Mesh& flat = builder.AddMesh(lime, Vector(0.9f, 0.1f, 0.9f));
    Mesh& pane = builder.AddMesh(glass, Vector(0.7f, 0.7f, 0.05f));
    builder.AddNode("left", house, Vector(-1.6f, 0, 0), {&tall, &inner});
    MeshNode& right = builder.AddNode("right", house, Vector(1.4f, -0.6f, 0.5f), {&low});
    builder.AddNode("roof", right, Vector(0, 0.8f, 0), {&flat});
    builder.AddNode("twin", house, Vector(1.4f, -0.6f, -1.9f), {&low});
    builder.AddNode("glass", house, Vector(0.2f, 0.1f, 1.9f), {&pane});
    return std::move(builder.made);
}

PresentationFixture::PresentationFixture(int width, int height, int samples)
{
    UseFramebuffer(width, height, samples);
    AllowStateChange("polygon offset");
}

std::unique_ptr<Host::Presentation> PresentationFixture::PresentBoxes()
{
    NamedScene boxes = MakeBoxes();
    return std::make_unique<Host::Presentation>(std::move(boxes.scene), std::move(boxes.nodes));
}

void PresentationFixture::Apply(Host::Presentation& presentation, const Host::PresentationSettings& wanted)
{
    std::string error;
    ASSERT_TRUE(presentation.Apply(wanted, error)) << error;
}

Picture PresentationFixture::Draw(Host::Presentation& presentation) const
{
    presentation.Draw(Width(), Height());
    return ReadPixels();
}

void PresentationFixture::ExpectSame(const Picture& actual, const Picture& expected, const std::string& what)
{
    if (actual == expected)
    {
        return;
    }
    int differing = 0;
    std::ostringstream first;
    for (int y = 0; y < expected.GetHeight(); ++y)
    {
        for (int x = 0; x < expected.GetWidth(); ++x)
        {
            if (actual.At(x, y) != expected.At(x, y) && differing++ == 0)
            {
                first << x << ", " << y << ": " << actual.At(x, y) << " where " << expected.At(x, y) << " should be";
            }
        }
    }
    ADD_FAILURE() << what << ": " << differing << " pixels differ, first " << first.str();
}

} // namespace OV::Test
