#pragma once

#include "orvane_host/import/ImportOptions.h"
#include "orvane_host/import/ImportResult.h"

#include <string>
#include <vector>

namespace OV::Host
{

/// Reads model files of many formats into a Scene.
///
/// Geometry that the file places several times is held once: one RawMesh and one Mesh
/// with several nodes. Meshes above 65,536 vertices come out as several. Needs no GL
/// context, may run on any thread, and disturbs none that exists.
class ModelImporter
{
public:
    /// Reads one file. Throws nothing: whatever goes wrong is told in the result.
    ///
    /// PNG and JPEG pictures in files of their own are only located here; the renderer loads them.
    /// Embedded ones, and all of TGA, BMP, GIF and WebP, are decoded into Material::pixels. Maps are loaded from files in any case:
    /// one that has none such lies in a file in memory that lives as long as its material.
    ///
    /// Maps are those that the file names for normals and for opacity. Where the format has one
    /// word for normals and heights, the picture's colours decide, and heights are left out. A
    /// map on other texture coordinates than the picture of the colours is left out too.
    ///
    /// @param path UTF-8, or whatever bytes name the file.
    static ImportResult Import(const std::string& path, const ImportOptions& options = ImportOptions());

    /// Reads a model from a stream, such as standard input, to its end. What the model refers to is looked
    /// for in the working folder, and messages call it "standard input".
    ///
    /// @param descriptor open for reading; stays open.
    /// @param format the ending that a file would have, such as "obj"; empty to go by what it holds.
    static ImportResult ImportStream(int descriptor, const std::string& format,
                                     const ImportOptions& options = ImportOptions());

    /// All formats that can be read, by name.
    static std::vector<ImportFormat> ListFormats();

    /// Gives a scene without lights one that shines past the viewer's left shoulder and
    /// follows the view. The light becomes a child of the scene's camera at the moment of
    /// the call, which must stand in the scene's tree.
    ///
    /// @param ambientLevel the one that the materials were imported with.
    /// @return the light, or null with nothing changed where the scene has a light already.
    static LightNode* AddDefaultLights(Scene& scene, float ambientLevel = ImportOptions().ambientLevel);
};

} // namespace OV::Host
