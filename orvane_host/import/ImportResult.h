#pragma once

#include "orvane/math/Vector.h"
#include "orvane/scene/Scene.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace OV
{

class CameraNode;
class LightNode;
class Mesh;
class Node;

} // namespace OV

namespace OV::Host
{

/// How an import ended.
enum class ImportStatus
{
    Done,
    NotFound,
    NotReadable,
    TooLarge,
    Unsupported,
    Malformed,
    LimitExceeded,
    OutOfMemory,
    TimedOut,
    Crashed,
    Cancelled,
    Failed,
};

/// Why there is no scene, in words for the person who chose the file.
struct ImportError
{
    std::string file;
    std::string reason;
    std::string remedy;

    /// All three on one line of printable characters, without a line end.
    std::string Line() const;
};

/// Where on the earth a model stands, in degrees, north and east positive.
struct ImportedPlace
{
    double latitude = 0.0;  ///< -90 to 90
    double longitude = 0.0; ///< -180 to 180
};

/// What the file held and what became of it.
struct ImportReport
{
    std::string format;
    std::uint64_t fileBytes = 0;

    /// Nodes of the file's tree, its root included; cameras and lights hang below them.
    std::uint64_t nodes = 0;
    std::uint64_t meshNodes = 0;
    /// Meshes of the file that can be drawn, before any was split.
    std::uint64_t fileMeshes = 0;
    /// Mesh objects of the scene, after splitting. Instances are not counted.
    std::uint64_t meshes = 0;
    std::uint64_t vertices = 0;
    /// Triangles and points held once, and with every instance counted.
    std::uint64_t triangles = 0;
    std::uint64_t drawnTriangles = 0;
    std::uint64_t points = 0;
    /// Segments of lines, held once, and those of no use.
    std::uint64_t lines = 0;
    std::uint64_t skippedLines = 0;
    std::uint64_t droppedTriangles = 0;
    /// Pairs of surfaces with faces in one plane, in the same place, that were put in order.
    std::uint64_t coplanarPairs = 0;
    std::uint64_t materials = 0;
    /// Pictures by where they are: of colours and in maps, once for each material.
    std::uint64_t fileTextures = 0;
    std::uint64_t embeddedTextures = 0;
    std::uint64_t missingTextures = 0;
    /// Materials that have such a map.
    std::uint64_t normalMaps = 0;
    std::uint64_t opacityMaps = 0;
    std::uint64_t lights = 0;
    std::uint64_t cameras = 0;

    /// World space; meaningful only when hasBox is set. Encloses every vertex drawn.
    bool hasBox = false;
    Vector boxMin;
    Vector boxMax;

    /// Metres to one unit of the scene, 0 when the file does not say.
    double metresPerUnit = 0.0;

    /// None when the file does not say, or says what can't be.
    std::optional<ImportedPlace> place;
    /// Where true north lies, in degrees clockwise from -Z seen from above, above -180 to 180. None as
    /// for the place.
    std::optional<double> north;

    /// One sentence each, in order of discovery, for the person who chose the file.
    std::vector<std::string> warnings;
};

/// A node that came from the file, by the name that it has there.
struct ImportedNode
{
    std::string name;
    /// Lives in the scene's tree.
    Node* node = nullptr;
};

/// A mesh that came from the file, by the name that it has there. One that was split is there
/// several times, one without a name not at all.
struct ImportedMesh
{
    std::string name;
    /// Lives in the scene.
    Mesh* mesh = nullptr;
};

/// What an import hands back: a scene with a report, or an error.
///
/// The scene is right-handed with Y up, and front is +Z, whatever the file's own axes.
struct ImportResult
{
    ImportStatus status = ImportStatus::Failed;
    /// Names the file in any case.
    ImportError error;
    ImportReport report;

    /// Null unless status is Done. The default camera is the current one and stands as
    /// a new scene has it.
    std::unique_ptr<Scene> scene;

    /// All below point into the scene and stay valid as long as what they point at.
    std::vector<ImportedNode> nodes;
    std::vector<ImportedMesh> meshes;
    std::vector<CameraNode*> cameras;
    std::vector<LightNode*> lights;

    explicit operator bool() const { return scene != nullptr; }
};

/// A file format that can be read.
struct ImportFormat
{
    std::string name;
    /// Lower case, without the dot.
    std::vector<std::string> extensions;
};

} // namespace OV::Host
