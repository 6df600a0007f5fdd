#include "tests/effects/EffectStage.h"

#include "orvane/scene/RawMesh.h"
#include "tests/support/GLRecorder.h"

#include <GL/glew.h>

#include <map>
#include <regex>
#include <set>

namespace OV::Test
{

namespace
{

std::shared_ptr<RawMesh> MakeTriangle(unsigned int streams)
{
    auto triangle = std::make_shared<RawMesh>();
    triangle->StartDescription();
    triangle->SetPositionBuffer({Vector(0, 0, 0), Vector(1, 0, 0), Vector(0, 1, 0)});
    if ((streams & EffectStage::Normals) != 0)
    {
        triangle->SetNormalBuffer({Vector(0, 0, 1), Vector(0, 0, 1), Vector(0, 0, 1)});
    }
    if ((streams & EffectStage::Texture) != 0)
    {
        triangle->SetTextureBuffer({{0, 0}, {1, 0}, {0, 1}});
    }
    triangle->SetIndices({0, 1, 2});
    triangle->EndDescription(true);
    return triangle;
}

/// The uniforms of a program by location, found by trying every word of its sources.
std::map<int, std::string> UniformsOf(const GLRecorder& gl, unsigned int program)
{
    std::map<int, std::string> names;
    const std::regex word("\\bu_\\w+");
    for (const std::string& text : gl.ProgramTexts(program))
    {
        for (std::sregex_iterator match(text.begin(), text.end(), word), end; match != end; ++match)
        {
            const int location = glGetUniformLocation(program, match->str().c_str());
            if (location >= 0)
            {
                names[location] = match->str();
            }
        }
    }
    return names;
}

bool IsQuery(const std::string& name)
{
    return name.compare(0, 5, "glGet") == 0;
}

bool IsUniform(const std::string& name)
{
    return name.compare(0, 9, "glUniform") == 0;
}

std::string WithName(const GLCall& call, const std::string& name)
{
    GLCall named = call;
    named.name = name;
    if (call.floats.empty())
    {
        named.args.erase(named.args.begin());
    }
    else
    {
        // Of an array or a matrix the values alone are of interest.
        named.args = {call.args.back()};
    }
    return named.ToString();
}

} // namespace

EffectStage::EffectStage() :
    material(new Material("material")), data(material, nullptr, nullptr, nullptr), camera(scene.GetCameraNode())
{
    scene.AddMaterial(material);
}

EffectStage::~EffectStage()
{
    m_meshes.clear();
}

LightNode& EffectStage::AddLight()
{
    auto* light = new LightNode(&scene);
    scene.GetRoot()->AddChild(light, false);
    return *light;
}

MeshES20& EffectStage::AddMesh(unsigned int streams)
{
    auto* mesh = new Mesh(MakeTriangle(streams), &scene);
    material->AddMesh(mesh);
    m_meshes.push_back(std::make_unique<MeshES20>(mesh, &m_pool));
    m_pool.GenerateVBOs();
    AddNode();
    return *m_meshes.back();
}

MeshNode& EffectStage::AddNode()
{
    m_nodes.push_back(new MeshNode(&scene));
    scene.GetRoot()->AddChild(m_nodes.back(), false);
    m_meshes.back()->GetMesh()->AddNode(m_nodes.back());
    return *m_nodes.back();
}

void EffectStage::Update()
{
    scene.MarkDirty();
    scene.UpdateGraph(100.0f, 100.0f);
    camera.UpdateMVP(100, 100, false);
}

std::vector<std::string> ReadCalls(GLRecorder& gl)
{
    const std::vector<GLCall> calls = gl.Calls();
    unsigned int program = gl.CurrentProgram();
    for (const GLCall& call : calls)
    {
        if (call.name == "glUseProgram")
        {
            program = static_cast<unsigned int>(call.Int(0));
        }
    }
    const std::map<int, std::string> uniforms = UniformsOf(gl, program);
    std::vector<std::string> lines;
    for (const GLCall& call : calls)
    {
        if (IsUniform(call.name))
        {
            const auto name = uniforms.find(static_cast<int>(call.Int(0)));
            lines.push_back(WithName(call, name == uniforms.end() ? "?" : name->second));
        }
        else if (!IsQuery(call.name))
        {
            lines.push_back(call.ToString());
        }
    }
    gl.Clear();
    return lines;
}

} // namespace OV::Test
