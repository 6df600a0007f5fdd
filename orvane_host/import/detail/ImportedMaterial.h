#pragma once

#include "orvane_host/import/detail/MemoryFile.h"

#include "orvane/scene/Material.h"

#include <memory>
#include <vector>

namespace OV::Host
{

/// A material that keeps files in memory which its maps are loaded from, at the first drawing
/// and again after each suspend.
class ImportedMaterial final : public Material
{
public:
    using Material::Material;

    std::vector<std::shared_ptr<const MemoryFile>> files;
};

} // namespace OV::Host
