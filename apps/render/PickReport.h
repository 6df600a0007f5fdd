#pragma once

#include "orvane_host/import/ImportResult.h"
#include "orvane/math/Vector.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace OV::Host
{

class NodePaths;
struct PickHit;

} // namespace OV::Host

namespace OV::RenderApp
{

/// What --pick tells: what is seen at a pixel and what is behind it, the nearest first.
struct PickReport
{
    /// Names are empty where the file has none.
    struct Thing
    {
        std::string node; ///< names from the root down with slashes between them
        std::string mesh;
        std::string material;
        double distance = 0.0; ///< from the eye; along the line of sight without perspective
        Vector position;       ///< world space
    };

    /// The pixel, from the upper left corner of the picture.
    int x = 0;
    int y = 0;
    std::vector<Thing> things;

    void Add(const Host::PickHit& hit, const CameraNode& camera, const Host::NodePaths& paths,
             const std::vector<Host::ImportedMesh>& meshes);

    /// Puts it into a JSON object, under a key of its own.
    void AddTo(nlohmann::ordered_json& json) const;
};

} // namespace OV::RenderApp
