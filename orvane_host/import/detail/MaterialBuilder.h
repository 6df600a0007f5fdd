#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"
#include "orvane_host/import/detail/MapBuilder.h"
#include "orvane_host/import/detail/ModelData.h"
#include "orvane_host/import/detail/PictureReader.h"

#include <map>
#include <string>
#include <tuple>

namespace OV
{

class LineStyle;
class Material;

} // namespace OV

namespace OV::Host
{

/// Makes the scene's materials of a model, each when it is first asked for.
class MaterialBuilder
{
public:
    /// All arguments must outlive the builder; counts and warnings go to the report.
    MaterialBuilder(const ModelData& model, const std::string& modelPath, const ImportOptions& options,
                    Scene& scene, ImportReport& report);

    /// @return a material of the scene. An index that the model lacks gives a plain grey.
    /// @param rank of what stands back behind others in one plane; see MeshData::standsBack.
    Material& Get(std::uint32_t index, PrimitiveKind kind, int rank = 0);

    /// @return a style of the scene for lines of a material, in its colour.
    LineStyle& GetStyle(std::uint32_t index);

private:
    ImportedMaterial& Make(std::uint32_t index, PrimitiveKind kind);
    void SetColors(const MaterialData& data, Material& material) const;
    /// @return whether pixels of the picture can be other than opaque.
    bool SetTexture(const MaterialData& data, ImportedMaterial& material);
    bool SetPixels(FoundPicture& picture, Material& material);

    const ModelData& m_model;
    const ImportOptions& m_options;
    Scene& m_scene;
    ImportReport& m_report;
    PictureReader m_pictures;
    MapBuilder m_maps;
    std::map<std::tuple<std::uint32_t, PrimitiveKind, int>, ImportedMaterial*> m_materials;
    std::map<std::uint32_t, LineStyle*> m_styles;
};

} // namespace OV::Host
