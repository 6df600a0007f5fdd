#include "orvane_host/import/detail/AssimpReader.h"

#include "orvane_host/import/detail/AssimpFiles.h"
#include "orvane_host/import/detail/AssimpFlattener.h"
#include "orvane_host/import/detail/AssimpNormals.h"
#include "orvane_host/import/detail/AssimpReach.h"
#include "orvane_host/import/detail/AssimpTextures.h"
#include "orvane_host/import/detail/LinearColor.h"

#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <assimp/importerdesc.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>

namespace OV::Host
{

namespace
{

/// Comparing every mesh with every other one stops to pay.
constexpr unsigned int kMaxMeshesCompared = 20'000;

constexpr unsigned int kUnwanted =
    aiComponent_TANGENTS_AND_BITANGENTS | aiComponent_BONEWEIGHTS | aiComponent_ANIMATIONS;

class ProgressRelay : public Assimp::ProgressHandler
{
public:
    explicit ProgressRelay(const std::function<bool(float)>& progress) : m_progress(progress) {}

    bool Update(float share) override
    {
        // The parser does not stop on false; the answer is asked for again between the steps.
        if (share >= 0.0f && m_progress && !m_progress(share))
        {
            m_isCancelled = true;
        }
        return !m_isCancelled;
    }

    bool IsCancelled() const { return m_isCancelled; }

private:
    const std::function<bool(float)>& m_progress;
    bool m_isCancelled = false;
};

/// @param file its ending tells whether the parser was asked for or has guessed the format by some word.
ReadOutcome FailureOf(const Assimp::Importer& importer, const std::string& file)
{
    const std::string text = importer.GetErrorString();
    if (text.find("bad_alloc") != std::string::npos)
    {
        return {ImportStatus::OutOfMemory, std::string()};
    }
    const std::string ending = std::filesystem::path(file).extension().string();
    const bool isGuess = !ending.empty() && !importer.IsExtensionSupported(ending);
    if (text.find("No suitable reader") != std::string::npos || isGuess)
    {
        return {ImportStatus::Unsupported, "it is of no format that can be read"};
    }
    return {ImportStatus::Malformed, text.empty() ? "the parser gave no reason" : text};
}

ReadOutcome AboveLimit(const char* what, std::uint64_t limit)
{
    return {ImportStatus::LimitExceeded, "it has more than " + std::to_string(limit) + " " + what};
}

ReadOutcome CheckTree(const aiNode& root, const ImportLimits& limits)
{
    struct Level
    {
        const aiNode* node;
        std::uint32_t depth;
    };
    std::vector<Level> open = {{&root, 0}};
    std::uint64_t nodes = 0;
    while (!open.empty())
    {
        const Level level = open.back();
        open.pop_back();
        if (!level.node)
        {
            continue;
        }
        nodes += 1 + std::uint64_t(level.node->mNumMeshes);
        if (nodes > limits.nodes)
        {
            return AboveLimit("nodes and places of meshes", limits.nodes);
        }
        if (level.depth > limits.depth)
        {
            return AboveLimit("levels of nodes", limits.depth);
        }
        for (unsigned int i = 0; i < level.node->mNumChildren; ++i)
        {
            open.push_back({level.node->mChildren[i], level.depth + 1});
        }
    }
    return {};
}

ReadOutcome CheckLimits(const aiScene& scene, const ImportLimits& limits)
{
    if (!scene.mRootNode)
    {
        return {ImportStatus::Malformed, "it holds no nodes"};
    }
    std::uint64_t vertices = 0;
    std::uint64_t faces = 0;
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
    {
        vertices += scene.mMeshes[i]->mNumVertices;
        faces += scene.mMeshes[i]->mNumFaces;
    }
    if (vertices > limits.vertices)
    {
        return AboveLimit("vertices", limits.vertices);
    }
    if (faces > limits.faces)
    {
        return AboveLimit("faces", limits.faces);
    }
    return CheckTree(*scene.mRootNode, limits);
}

/// Takes null pointers out of the lists of children, and notes which meshes are placed.
/// @return whether there were any.
bool DropLostNodes(aiNode& root, std::vector<bool>& isPlaced)
{
    bool isAnyLost = false;
    std::vector<aiNode*> open = {&root};
    while (!open.empty())
    {
        aiNode& node = *open.back();
        open.pop_back();
        aiNode** const end = node.mChildren + node.mNumChildren;
        aiNode** const kept = std::remove(node.mChildren, end, nullptr);
        isAnyLost = isAnyLost || kept != end;
        node.mNumChildren = static_cast<unsigned int>(kept - node.mChildren);
        open.insert(open.end(), node.mChildren, kept);
        for (unsigned int i = 0; i < node.mNumMeshes; ++i)
        {
            isPlaced.at(node.mMeshes[i]) = true;
        }
    }
    return isAnyLost;
}

void AppendMeshes(aiNode& node, const std::vector<unsigned int>& meshes)
{
    std::vector<unsigned int> all(node.mMeshes, node.mMeshes + node.mNumMeshes);
    all.insert(all.end(), meshes.begin(), meshes.end());
    // The node deletes its array as one.
    std::unique_ptr<unsigned int[]> array(new unsigned int[all.size()]);
    std::copy(all.begin(), all.end(), array.get());
    delete[] node.mMeshes;
    node.mMeshes = array.release();
    node.mNumMeshes = static_cast<unsigned int>(all.size());
}

template <typename Test>
bool HoldsForChannels(const aiColor4D* colors, std::size_t count, const Test& test)
{
    return std::all_of(colors, colors + count, [&test](const aiColor4D& color)
                       { return test(color.r) && test(color.g) && test(color.b) && test(color.a); });
}

/// Makes good what some parsers make of the colours of vertices, and brings them to what screens take.
void MendColors(aiMesh& mesh, bool areLinear)
{
    aiColor4D*& colors = mesh.mColors[0];
    const std::size_t count = mesh.mNumVertices;
    if (!colors || HoldsForChannels(colors, count, [](float channel) { return channel == 0.0f; }))
    {
        // Transparent black at every vertex stands for a file that gives none.
        delete[] colors;
        colors = nullptr;
        return;
    }
    // Bytes that were taken for signed ones and not scaled: no colour is below zero.
    const auto isSignedByte = [](float channel) { return channel >= -128.0f && channel <= 127.0f && channel == std::floor(channel); };
    const auto isPositive = [](float channel) { return channel >= 0.0f; };
    if (HoldsForChannels(colors, count, isSignedByte) && !HoldsForChannels(colors, count, isPositive))
    {
        const auto scaled = [](float byte) { return (byte < 0.0f ? byte + 256.0f : byte) / 255.0f; };
        for (aiColor4D* color = colors; color != colors + count; ++color)
        {
            *color = aiColor4D(scaled(color->r), scaled(color->g), scaled(color->b), scaled(color->a));
        }
    }
    if (areLinear)
    {
        std::for_each(colors, colors + count, [](aiColor4D& color) { EncodeForScreen(color); });
    }
}

/// Makes good what some parsers leave out, at which the later steps take offence or crash.
void Complete(aiScene& scene, const std::string& format)
{
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
    {
        MendColors(*scene.mMeshes[i], IsOfLinearColors(format));
        // A mesh without any face is of no kind.
        if (scene.mMeshes[i]->mPrimitiveTypes == 0)
        {
            scene.mMeshes[i]->mPrimitiveTypes = aiPrimitiveType_TRIANGLE;
        }
    }
    std::vector<bool> isPlaced(scene.mNumMeshes);
    if (!DropLostNodes(*scene.mRootNode, isPlaced))
    {
        return;
    }
    // The parser of raw triangle files keeps only the last of several nodes.
    std::vector<unsigned int> lost;
    for (unsigned int i = 0; i < scene.mNumMeshes; ++i)
    {
        if (!isPlaced[i])
        {
            lost.push_back(i);
        }
    }
    AppendMeshes(*scene.mRootNode, lost);
}

unsigned int StepsBeforeNormals(const aiScene& scene, const std::string& format)
{
    unsigned int steps = aiProcess_RemoveComponent | aiProcess_RemoveRedundantMaterials |
                         aiProcess_GenUVCoords | aiProcess_Triangulate | aiProcess_SortByPType |
                         aiProcess_OptimizeMeshes;
    if (!IsGltf(format))
    {
        steps |= aiProcess_TransformUVCoords;
    }
    if (scene.mNumMeshes <= kMaxMeshesCompared)
    {
        steps |= aiProcess_FindInstances;
    }
    return steps;
}

std::string FormatOf(const Assimp::Importer& importer)
{
    const int index = importer.GetPropertyInteger("importerIndex", -1);
    const aiImporterDesc* description =
        index >= 0 ? importer.GetImporterInfo(static_cast<std::size_t>(index)) : nullptr;
    std::string name = description ? description->mName : "unknown format";
    const std::string tail = " Importer";
    const std::size_t at = name.find(tail);
    if (at != std::string::npos)
    {
        name.erase(at, tail.size());
    }
    return name;
}

/// Whether the parser gives each place the mean of the faces about it, flat as they may be in the file: a box
/// would be shaded like a ball.
bool AreNormalsAlwaysSmooth(const std::string& format)
{
    return format.compare(0, 7, "Blender") == 0;
}

std::string Written(double number)
{
    std::ostringstream text;
    text << number;
    return text.str();
}

void NoteChange(const ReachChange& change, ModelData& model)
{
    if (change.movedBy > 0.0)
    {
        model.warnings.push_back("The model is " + Written(change.movedBy)
                                 + " units from the origin, too far for its size: it stands at the origin instead.");
    }
    if (change.factor != 1.0)
    {
        const bool isEnlarged = change.factor > 1.0;
        model.metresPerUnit /= change.factor;
        model.warnings.push_back(std::string("The model is too ") + (isEnlarged ? "small" : "large")
                                 + " to be drawn as it is: it stands there "
                                 + Written(isEnlarged ? change.factor : 1.0 / change.factor) + " times as "
                                 + (isEnlarged ? "large." : "small."));
    }
}

} // namespace

ReadOutcome ReadWithAssimp(const ModelSource& source, const ImportOptions& options, const ReadHooks& hooks,
                           ModelData& model)
{
    auto importer = std::make_shared<Assimp::Importer>();
    auto* relay = new ProgressRelay(hooks.progress);
    importer->SetProgressHandler(relay);
    importer->SetIOHandler(new AssimpFiles(source, options.limits.fileBytes, hooks.opened));
    importer->SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS, static_cast<int>(kUnwanted));
    importer->SetPropertyFloat(AI_CONFIG_PP_GSN_MAX_SMOOTHING_ANGLE, options.smoothingAngle);
    const ReadOutcome cancelled = {ImportStatus::Cancelled, std::string()};

    const aiScene* scene = importer->ReadFile(source.name, 0);
    if (relay->IsCancelled())
    {
        return cancelled;
    }
    if (!scene)
    {
        return FailureOf(*importer, source.name);
    }
    model.format = FormatOf(*importer);
    ReadOutcome outcome = CheckLimits(*scene, options.limits);
    if (outcome.status != ImportStatus::Done)
    {
        return outcome;
    }

    if (AreNormalsAlwaysSmooth(model.format))
    {
        importer->SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS, static_cast<int>(kUnwanted | aiComponent_NORMALS));
    }
    // The scene is the importer's own, which leaves it open to changes between steps.
    LeaveOutEmptyNormals(const_cast<aiScene&>(*scene));
    Complete(const_cast<aiScene&>(*scene), model.format);
    const ReachChange change =
        options.bringsWithinReach ? BringWithinReach(const_cast<aiScene&>(*scene)) : ReachChange();
    scene = importer->ApplyPostProcessing(StepsBeforeNormals(*scene, model.format));
    if (scene && !relay->IsCancelled())
    {
        const MeshSizes sizes(*scene);
        sizes.TakeAway(const_cast<aiScene&>(*scene));
        const bool isChanged =
            GiveNormalsToSharedCorners(const_cast<aiScene&>(*scene), options.smoothingAngle);
        unsigned int steps = aiProcess_GenSmoothNormals;
        if (isChanged || !IsGltf(model.format))
        {
            // The slowest step by far, and in vain where the file shares its vertices itself.
            steps |= aiProcess_JoinIdenticalVertices;
        }
        scene = importer->ApplyPostProcessing(steps);
        if (scene)
        {
            sizes.GiveBack(const_cast<aiScene&>(*scene));
        }
    }
    if (relay->IsCancelled())
    {
        return cancelled;
    }
    if (!scene)
    {
        return FailureOf(*importer, source.name);
    }
    outcome = CheckLimits(*scene, options.limits);
    if (outcome.status == ImportStatus::Done)
    {
        model.keepAlive.push_back(importer);
        FlattenScene(*scene, options.limits, model);
        NoteChange(change, model);
    }
    return outcome;
}

std::vector<ImportFormat> ListAssimpFormats()
{
    std::map<std::string, std::vector<std::string>> byName;
    const Assimp::Importer importer;
    for (std::size_t i = 0; i < importer.GetImporterCount(); ++i)
    {
        const aiImporterDesc* description = importer.GetImporterInfo(i);
        if (!description || !description->mFileExtensions)
        {
            continue;
        }
        std::istringstream words(description->mFileExtensions);
        std::vector<std::string>& extensions = byName[description->mName];
        for (std::string word; words >> word;)
        {
            extensions.push_back(word);
        }
    }
    std::vector<ImportFormat> formats;
    for (auto& entry : byName)
    {
        std::sort(entry.second.begin(), entry.second.end());
        formats.push_back({entry.first, entry.second});
    }
    return formats;
}

} // namespace OV::Host
