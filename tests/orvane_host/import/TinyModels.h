#pragma once

#include "tests/imaging/Bytes.h"
#include "tests/support/TemporaryFolder.h"

#include <cstddef>
#include <string>
#include <vector>

namespace OV::Test
{

void WriteFile(const std::string& path, const std::string& content);
void WriteFile(const std::string& path, const Bytes& content);

/// Text in UTF-16 after the mark of its order.
std::string MarkedUtf16(const std::u16string& text, bool isBigEndian);

/// A unit cube about the origin, 8 vertices and 6 quads without normals, as OBJ text.
std::string CubeObj();

/// A flat grid of size x size vertices in the XY plane, two triangles a cell, as OBJ text.
std::string GridObj(int size);

/// A binary glTF file in the making: arrays go in, indices of accessors come out.
class TinyGltf
{
public:
    /// @param components 1 to 4 floats an element.
    std::size_t AddFloats(const std::vector<float>& values, int components);
    std::size_t AddIndices(const std::vector<unsigned short>& indices);
    /// @return the index of a buffer view.
    std::size_t AddBytes(const Bytes& bytes);

    /// @param members the members of the top object besides asset, buffers, bufferViews and
    /// accessors, as JSON text.
    Bytes Glb(const std::string& members) const;

private:
    std::size_t AddView(const void* bytes, std::size_t size);

    Bytes m_buffer;
    std::vector<std::string> m_views;
    std::vector<std::string> m_accessors;
};

/// One triangle with corners (0, 0, 0), (1, 0, 0), (0, 1, 0), normals and texture coordinates
/// like its x and y.
/// @param nodes content of the array of nodes; mesh 0 is the triangle.
/// @param members further members of the top object, beginning with a comma, or empty.
/// @param material content of material 0.
Bytes TriangleGlb(const std::string& nodes = "{\"mesh\":0}", const std::string& members = "",
                  const std::string& material = "{}");

/// Whether running out of memory ends the process, as under the address sanitizer, whose
/// operator new does not throw.
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kNewEndsTheProcess = true;
#else
inline constexpr bool kNewEndsTheProcess = false;
#endif

/// The folder of Debian's collection of test models.
inline const std::string kTestModels = "/usr/share/assimp/models/";

} // namespace OV::Test
