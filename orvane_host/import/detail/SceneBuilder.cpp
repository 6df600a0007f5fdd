#include "orvane_host/import/detail/SceneBuilder.h"

#include "orvane_host/import/detail/LineSplitter.h"
#include "orvane_host/import/detail/MaterialBuilder.h"
#include "orvane_host/import/detail/MeshSplitter.h"
#include "orvane_host/import/detail/ViewBuilder.h"

#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/RawLine.h"
#include "orvane/scene/RawMesh.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <unordered_set>
#include <utility>
#include <vector>

namespace OV::Host
{

namespace
{

/// Vertices that are transformed one by one for the bounding box; later ones by their boxes.
constexpr std::uint64_t kMaxBoxedVertices = 20'000'000;
/// Steps of all node paths together; a deep and wide tree would otherwise have no end of them.
constexpr std::uint64_t kMaxPathSteps = 4'000'000;

bool IsUsable(const double (&local)[16])
{
    return std::all_of(local, local + 16,
                       [](double value) { return std::fabs(value) <= double(kMaxCoordinate); });
}

class SceneBuilder
{
public:
    SceneBuilder(const ModelData& model, const std::string& modelPath, const ImportOptions& options,
                 ImportResult& result)
        : m_model(model), m_options(options), m_result(result), m_report(result.report),
          m_scene(std::make_unique<Scene>()), m_materials(model, modelPath, options, *m_scene, result.report)
    {
    }

    void Run(const std::function<bool(float)>& progress)
    {
        if (!IsTree())
        {
            m_result.status = ImportStatus::Malformed;
            m_result.error.reason = "what was read of it does not fit together";
            return;
        }
        BuildNodes();
        m_scene->GetRoot()->UpdateGraph();
        HideUnusableNodes();
        for (std::size_t i = 0; i < m_model.meshes.size(); ++i)
        {
            if (progress && !progress(static_cast<float>(i) / static_cast<float>(m_model.meshes.size())))
            {
                m_result.status = ImportStatus::Cancelled;
                return;
            }
            BuildMesh(m_model.meshes[i], m_nodesOfMesh[i]);
        }
        Finish();
    }

private:
    bool IsTree() const;
    void BuildNodes();
    Node* BuildNode(const NodeData& data);
    static bool SetTransform(const NodeData& data, Node& node);
    void SetPath(std::size_t index, std::uint64_t childIndex);
    void HideUnusableNodes();
    void BuildMesh(const MeshData& data, const std::vector<MeshNode*>& nodes);
    void BuildLines(const MeshData& data, const std::vector<MeshNode*>& nodes);
    void AddPart(MeshPart&& part, const MeshData& data, const std::vector<MeshNode*>& nodes);
    void CountSource(const MeshData& data, bool isDrawn);
    void CountPart(const MeshPart& part, PrimitiveKind kind, std::uint64_t instances);
    void WidenBox(const Mesh& mesh, const MeshNode& node);
    void WidenBox(const Transform& transform, const Vector& point);
    void Warn(const char* what, std::uint64_t count, const char* why);
    void Finish();

    const ModelData& m_model;
    const ImportOptions& m_options;
    ImportResult& m_result;
    ImportReport& m_report;
    std::unique_ptr<Scene> m_scene;
    MaterialBuilder m_materials;
    std::vector<Node*> m_nodes;
    std::vector<std::vector<MeshNode*>> m_nodesOfMesh;
    std::unordered_set<std::int64_t> m_sources; ///< of the meshes that were built
    std::uint64_t m_boxedVertices = 0;
    std::uint64_t m_pathSteps = 0;
};

/// @return whether every node but the first hangs below an earlier one, none too deep.
bool SceneBuilder::IsTree() const
{
    std::vector<std::uint32_t> depths;
    for (const NodeData& node : m_model.nodes)
    {
        const bool isRoot = depths.empty();
        const bool isPlaced =
            isRoot ? node.parent == -1 : node.parent >= 0 && std::size_t(node.parent) < depths.size();
        if (!isPlaced)
        {
            return false;
        }
        depths.push_back(isRoot ? 0 : depths[std::size_t(node.parent)] + 1);
        if (depths.back() > m_options.limits.depth)
        {
            return false;
        }
    }
    return !depths.empty();
}

void SceneBuilder::BuildNodes()
{
    m_nodesOfMesh.resize(m_model.meshes.size());
    std::vector<std::uint64_t> children(m_model.nodes.size());
    std::uint64_t unusable = 0;
    for (std::size_t i = 0; i < m_model.nodes.size(); ++i)
    {
        const NodeData& data = m_model.nodes[i];
        const std::size_t parent = i == 0 ? 0 : std::size_t(data.parent);
        Node* parentNode = i == 0 ? m_scene->GetRoot() : m_nodes[parent];
        parentNode->AddChild(BuildNode(data), false);
        unusable += SetTransform(data, *m_nodes.back()) ? 0 : 1;
        SetPath(i, i == 0 ? 0 : children[parent]++);
    }
    m_report.nodes = m_nodes.size();
    if (unusable > 0)
    {
        Warn("Nodes put where their parents are", unusable, "their transforms are not finite or beyond 1e15");
    }
}

/// Makes a node, enters it in all lists, and leaves it to be hung up.
Node* SceneBuilder::BuildNode(const NodeData& data)
{
    if (data.meshes.empty())
    {
        m_nodes.push_back(new Node(m_scene.get()));
        m_result.nodes.push_back({data.name, m_nodes.back()});
        return m_nodes.back();
    }
    auto* node = new MeshNode(m_scene.get());
    m_nodes.push_back(node);
    m_result.nodes.push_back({data.name, node});
    ++m_report.meshNodes;
    for (std::uint32_t mesh : data.meshes)
    {
        // A node that names a mesh twice shows it once.
        if (mesh < m_nodesOfMesh.size() &&
            (m_nodesOfMesh[mesh].empty() || m_nodesOfMesh[mesh].back() != node))
        {
            m_nodesOfMesh[mesh].push_back(node);
        }
    }
    return node;
}

/// @return false, with the node left as it is, for a transform that is of no use.
bool SceneBuilder::SetTransform(const NodeData& data, Node& node)
{
    if (!IsUsable(data.local))
    {
        return false;
    }
    QGM::Transf3d local;
    std::copy(data.local, data.local + 16, &local.m[0][0]);
    Transform transform;
    transform.SetTransf3d(local);
    node.SetLocal(transform);
    return true;
}

/// The way down from the file's root: for each node on it, its number in the file and its
/// place among its siblings.
void SceneBuilder::SetPath(std::size_t index, std::uint64_t childIndex)
{
    std::vector<std::pair<std::uint64_t, std::uint64_t>> path;
    if (index > 0)
    {
        path = m_nodes[std::size_t(m_model.nodes[index].parent)]->GetPath();
    }
    path.emplace_back(index, childIndex);
    m_pathSteps += path.size();
    if (m_pathSteps <= kMaxPathSteps)
    {
        m_nodes[index]->SetPath(path);
    }
}

void SceneBuilder::HideUnusableNodes()
{
    std::uint64_t hidden = 0;
    for (std::size_t i = 0; i < m_nodes.size(); ++i)
    {
        const QGM::Transf3d& global = m_nodes[i]->GetGlobal().GetTransf3d();
        const bool isUsable =
            std::all_of(&global.m[0][0], &global.m[0][0] + 16,
                        [](double value) { return std::fabs(value) <= double(kMaxCoordinate); });
        if (!isUsable && !m_model.nodes[i].meshes.empty())
        {
            static_cast<MeshNode*>(m_nodes[i])->SetFlags(NodeFlagHidden, false);
            ++hidden;
        }
    }
    if (hidden > 0)
    {
        Warn("Nodes hidden", hidden, "they lie beyond all bounds");
    }
}

void SceneBuilder::BuildMesh(const MeshData& data, const std::vector<MeshNode*>& nodes)
{
    if (nodes.empty() || data.positions.IsEmpty())
    {
        return;
    }
    if (data.kind == PrimitiveKind::Lines)
    {
        BuildLines(data, nodes);
        return;
    }
    MeshParts split = SplitMesh(data);
    m_report.droppedTriangles += split.dropped;
    CountSource(data, !split.parts.empty());
    for (MeshPart& part : split.parts)
    {
        AddPart(std::move(part), data, nodes);
    }
}

void SceneBuilder::BuildLines(const MeshData& data, const std::vector<MeshNode*>& nodes)
{
    const LineParts split = SplitLines(data);
    m_report.lines += split.segments;
    m_report.skippedLines += split.dropped;
    CountSource(data, !split.parts.empty());
    for (const std::shared_ptr<RawLine>& raw : split.parts)
    {
        // The scene owns it from here on.
        auto* const line = new Line(raw, m_scene.get());
        m_materials.GetStyle(data.material).AddLine(line);
        for (MeshNode* const node : nodes)
        {
            line->AddNode(node);
            if (!(node->GetFlags() & NodeFlagHidden))
            {
                WidenBox(*line, *node);
            }
        }
    }
}

void SceneBuilder::AddPart(MeshPart&& part, const MeshData& data, const std::vector<MeshNode*>& nodes)
{
    CountPart(part, data.kind, nodes.size());
    auto raw = std::make_shared<RawMesh>();
    raw->StartDescription();
    raw->SetPositionBuffer(std::move(part.positions));
    raw->SetNormalBuffer(std::move(part.normals));
    raw->SetTextureBuffer(std::move(part.texCoords));
    raw->SetColorBuffer(std::move(part.colors));
    raw->SetIndices(std::move(part.indices));
    raw->EndDescription(true);

    // The scene owns it from here on.
    auto* mesh = new Mesh(raw, m_scene.get());
    if (!data.name.empty())
    {
        m_result.meshes.push_back({data.name, mesh});
    }
    m_materials.Get(data.material, data.kind, data.standsBack).AddMesh(mesh);
    bool isMirrored = false;
    for (MeshNode* node : nodes)
    {
        mesh->AddNode(node);
        isMirrored = isMirrored || node->GetGlobal().GetTransf3d().isMirror();
        if (!(node->GetFlags() & NodeFlagHidden))
        {
            WidenBox(*mesh, *node);
        }
    }
    if (isMirrored)
    {
        // A mirror turns every front face into a back face, which would not be drawn.
        mesh->SetFlags(MeshFlagNoCull);
    }
}

/// Counts a mesh of the file once, of which there may be several pieces.
void SceneBuilder::CountSource(const MeshData& data, bool isDrawn)
{
    const auto own = static_cast<std::int64_t>(&data - m_model.meshes.data());
    m_report.fileMeshes += isDrawn && m_sources.insert(data.pieceOf >= 0 ? data.pieceOf : own).second ? 1 : 0;
}

void SceneBuilder::CountPart(const MeshPart& part, PrimitiveKind kind, std::uint64_t instances)
{
    ++m_report.meshes;
    m_report.vertices += part.positions.size();
    if (kind == PrimitiveKind::Points)
    {
        m_report.points += part.indices.size();
        return;
    }
    m_report.triangles += part.indices.size() / 3;
    m_report.drawnTriangles += part.indices.size() / 3 * instances;
}

void SceneBuilder::WidenBox(const Mesh& mesh, const MeshNode& node)
{
    const std::vector<Vector>& positions = mesh.GetPositionBuffer();
    if (m_boxedVertices + positions.size() <= kMaxBoxedVertices)
    {
        m_boxedVertices += positions.size();
        for (const Vector& position : positions)
        {
            WidenBox(node.GetGlobal(), position);
        }
        return;
    }
    const RawMesh& raw = *mesh.GetRawMesh();
    for (int corner = 0; corner < 8; ++corner)
    {
        WidenBox(node.GetGlobal(), Vector((corner & 1) ? raw.bboxMax.x : raw.bboxMin.x,
                                          (corner & 2) ? raw.bboxMax.y : raw.bboxMin.y,
                                          (corner & 4) ? raw.bboxMax.z : raw.bboxMin.z));
    }
}

void SceneBuilder::WidenBox(const Transform& transform, const Vector& point)
{
    Vector world;
    world.Multiply(transform, point);
    if (!m_report.hasBox)
    {
        m_report.hasBox = true;
        m_report.boxMin = world;
        m_report.boxMax = world;
        return;
    }
    m_report.boxMin.Set(std::min(m_report.boxMin.x, world.x), std::min(m_report.boxMin.y, world.y),
                        std::min(m_report.boxMin.z, world.z));
    m_report.boxMax.Set(std::max(m_report.boxMax.x, world.x), std::max(m_report.boxMax.y, world.y),
                        std::max(m_report.boxMax.z, world.z));
}

void SceneBuilder::Warn(const char* what, std::uint64_t count, const char* why)
{
    m_report.warnings.push_back(std::string(what) + ": " + std::to_string(count) + " (" + why + ").");
}

void SceneBuilder::Finish()
{
    m_report.format = m_model.format;
    m_report.metresPerUnit = m_model.metresPerUnit;
    // Another process read them: what is not a number, or too large, fails the tests.
    if (std::abs(m_model.latitude) <= 90.0 && std::abs(m_model.longitude) <= 180.0)
    {
        m_report.place = ImportedPlace{m_model.latitude, m_model.longitude};
    }
    if (std::abs(m_model.north) <= 180.0)
    {
        m_report.north = m_model.north;
    }
    m_report.coplanarPairs = m_model.coplanarPairs;
    m_report.droppedTriangles += m_model.droppedTriangles;
    m_report.skippedLines += m_model.skippedLines;
    m_report.warnings.insert(m_report.warnings.begin(), m_model.warnings.begin(), m_model.warnings.end());
    if (m_report.skippedLines > 0)
    {
        Warn("Line segments left out", m_report.skippedLines, "their coordinates or indices are invalid, or beyond 1e15");
    }
    if (m_report.droppedTriangles > 0)
    {
        Warn("Triangles or points left out", m_report.droppedTriangles,
             "their coordinates or indices are invalid, or beyond 1e15");
    }
    if (!m_report.hasBox)
    {
        m_report.warnings.push_back("The file holds nothing that can be shown.");
    }
    if (m_report.metresPerUnit > 0.0)
    {
        m_scene->ConversionFactor() = static_cast<float>(m_report.metresPerUnit);
    }
    m_result.scene = std::move(m_scene);
    BuildCamerasAndLights(m_model, m_nodes, m_options, m_result);
    m_result.status = ImportStatus::Done;
}

} // namespace

void BuildScene(const ModelData& model, const std::string& modelPath, const ImportOptions& options,
                const std::function<bool(float)>& progress, ImportResult& result)
{
    SceneBuilder(model, modelPath, options, result).Run(progress);
}

} // namespace OV::Host
