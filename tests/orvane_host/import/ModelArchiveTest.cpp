#include "orvane_host/import/detail/ModelArchive.h"

#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

using namespace OV::Host;

namespace
{

template <typename T>
ArrayView<T> Keep(ModelData& model, std::vector<T> values)
{
    auto kept = std::make_shared<std::vector<T>>(std::move(values));
    model.keepAlive.push_back(kept);
    return {kept->data(), kept->size()};
}

/// A model with something other than the default in every field.
ModelData Sample()
{
    ModelData model;
    model.format = "sample";
    model.metresPerUnit = 0.01;
    model.latitude = -33.5;
    model.longitude = 151.25;
    model.north = 30.5;
    model.skippedLines = 7;

    NodeData root;
    root.name = "root";
    NodeData child;
    child.name = "child";
    child.parent = 0;
    std::fill(child.local, child.local + 16, 2.5);
    child.meshes = {0, 0, 5};
    model.nodes = {root, child};

    MeshData mesh;
    mesh.name = "mesh";
    mesh.material = 3;
    mesh.kind = PrimitiveKind::Points;
    mesh.positions = Keep<float>(model, {1, 2, 3, 4, 5, 6});
    mesh.normals = Keep<float>(model, {0, 0, 1, 0, 1, 0});
    mesh.texCoords = Keep<float>(model, {7, 8, 9, 10});
    mesh.colors = Keep<float>(model, std::vector<float>(8, 0.5f));
    mesh.indices = Keep<std::uint32_t>(model, {0, 1, 100'000});
    model.meshes = {mesh};

    MaterialData material;
    material.name = "material";
    material.diffuse[3] = 0.25f;
    material.emissive[1] = 0.5f;
    material.specular[2] = 0.75f;
    material.shininess = 12.0f;
    material.isTwoSided = true;
    material.isUnlit = true;
    material.clampsTexture = true;
    material.alphaMode = AlphaMode::Blend;
    material.texture.path = "wall.png";
    material.texture.embedded = 4;
    material.reflection[0] = 0.25f;
    material.reflection[1] = 0.5f;
    material.reflection[2] = 0.75f;
    material.normalMap.picture.path = "normals.png";
    material.normalMap.picture.embedded = 5;
    material.normalMap.isCertain = true;
    material.opacityMap.picture.path = "opacity.png";
    material.opacityMap.isInverted = true;
    material.opacityMap.isOnOtherCoordinates = true;
    model.materials = {material};

    TextureData texture;
    texture.width = 1;
    texture.height = 2;
    texture.bytes = Keep<unsigned char>(model, {1, 2, 3, 4, 5, 6, 7, 8});
    model.textures = {texture};

    CameraData camera;
    camera.node = 1;
    camera.aspect = 1.5;
    model.cameras = {camera};
    LightData light;
    light.kind = LightKind::Positional;
    light.color[0] = 0.125f;
    model.lights = {light};
    model.warnings = {"one", ""};
    return model;
}

std::vector<char> Archived(const ModelData& model)
{
    const int file = memfd_create("test", MFD_CLOEXEC);
    ArchiveWriter writer(file);
    WriteModel(writer, model);
    EXPECT_TRUE(writer.Finish());
    struct stat info = {};
    fstat(file, &info);
    std::vector<char> bytes(static_cast<std::size_t>(info.st_size));
    EXPECT_EQ(pread(file, bytes.data(), bytes.size(), 0), info.st_size);
    close(file);
    return bytes;
}

template <typename T>
std::vector<T> Values(const ArrayView<T>& view)
{
    return std::vector<T>(view.data, view.data + view.count);
}

TEST(ModelArchive, EveryFieldComesBack)
{
    const ModelData model = Sample();
    const std::vector<char> bytes = Archived(model);
    ArchiveReader reader(bytes.data(), bytes.size());
    ModelData copy;
    ASSERT_TRUE(ReadModel(reader, copy));

    EXPECT_EQ(copy.format, "sample");
    EXPECT_EQ(copy.metresPerUnit, 0.01);
    EXPECT_EQ(copy.latitude, -33.5);
    EXPECT_EQ(copy.longitude, 151.25);
    EXPECT_EQ(copy.north, 30.5);
    EXPECT_EQ(copy.skippedLines, 7u);
    ASSERT_EQ(copy.nodes.size(), 2u);
    EXPECT_EQ(copy.nodes[0].name, "root");
    EXPECT_EQ(copy.nodes[0].parent, -1);
    EXPECT_EQ(copy.nodes[1].parent, 0);
    EXPECT_EQ(copy.nodes[1].local[7], 2.5);
    EXPECT_EQ(copy.nodes[1].meshes, model.nodes[1].meshes);
    ASSERT_EQ(copy.meshes.size(), 1u);
    EXPECT_EQ(copy.meshes[0].name, "mesh");
    EXPECT_EQ(copy.meshes[0].material, 3u);
    EXPECT_EQ(copy.meshes[0].kind, PrimitiveKind::Points);
    EXPECT_EQ(Values(copy.meshes[0].positions), Values(model.meshes[0].positions));
    EXPECT_EQ(Values(copy.meshes[0].normals), Values(model.meshes[0].normals));
    EXPECT_EQ(Values(copy.meshes[0].texCoords), Values(model.meshes[0].texCoords));
    EXPECT_EQ(Values(copy.meshes[0].colors), Values(model.meshes[0].colors));
    EXPECT_EQ(Values(copy.meshes[0].indices), Values(model.meshes[0].indices));
    ASSERT_EQ(copy.materials.size(), 1u);
    const MaterialData& material = copy.materials[0];
    EXPECT_EQ(material.name, "material");
    EXPECT_EQ(material.diffuse[3], 0.25f);
    EXPECT_EQ(material.emissive[1], 0.5f);
    EXPECT_EQ(material.specular[2], 0.75f);
    EXPECT_EQ(material.shininess, 12.0f);
    EXPECT_TRUE(material.isTwoSided && material.isUnlit && material.clampsTexture);
    EXPECT_EQ(material.alphaMode, AlphaMode::Blend);
    EXPECT_EQ(material.texture.path, "wall.png");
    EXPECT_EQ(material.texture.embedded, 4);
    EXPECT_EQ(material.reflection[0], 0.25f);
    EXPECT_EQ(material.reflection[1], 0.5f);
    EXPECT_EQ(material.reflection[2], 0.75f);
    EXPECT_EQ(material.normalMap.picture.path, "normals.png");
    EXPECT_EQ(material.normalMap.picture.embedded, 5);
    EXPECT_TRUE(material.normalMap.isCertain);
    EXPECT_FALSE(material.normalMap.isInverted || material.normalMap.isOnOtherCoordinates);
    EXPECT_EQ(material.opacityMap.picture.path, "opacity.png");
    EXPECT_EQ(material.opacityMap.picture.embedded, -1);
    EXPECT_FALSE(material.opacityMap.isCertain);
    EXPECT_TRUE(material.opacityMap.isInverted && material.opacityMap.isOnOtherCoordinates);
    ASSERT_EQ(copy.textures.size(), 1u);
    EXPECT_EQ(copy.textures[0].width, 1u);
    EXPECT_EQ(copy.textures[0].height, 2u);
    EXPECT_EQ(Values(copy.textures[0].bytes), Values(model.textures[0].bytes));
    ASSERT_EQ(copy.cameras.size(), 1u);
    EXPECT_EQ(copy.cameras[0].node, 1);
    EXPECT_EQ(copy.cameras[0].aspect, 1.5);
    ASSERT_EQ(copy.lights.size(), 1u);
    EXPECT_EQ(copy.lights[0].kind, LightKind::Positional);
    EXPECT_EQ(copy.lights[0].color[0], 0.125f);
    EXPECT_EQ(copy.warnings, (std::vector<std::string>{"one", ""}));
}

TEST(ModelArchive, ArraysLargerThanTheBufferComeBack)
{
    ModelData model;
    MeshData mesh;
    std::vector<float> positions(1'000'003);
    for (std::size_t i = 0; i < positions.size(); ++i)
    {
        positions[i] = static_cast<float>(i);
    }
    mesh.positions = Keep<float>(model, positions);
    mesh.indices = Keep<std::uint32_t>(model, {1, 2, 3});
    model.meshes = {mesh, mesh};
    const std::vector<char> bytes = Archived(model);
    ArchiveReader reader(bytes.data(), bytes.size());
    ModelData copy;
    ASSERT_TRUE(ReadModel(reader, copy));
    EXPECT_EQ(Values(copy.meshes[1].positions), positions);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(copy.meshes[1].positions.data) % 8,
              reinterpret_cast<std::uintptr_t>(bytes.data()) % 8);
}

TEST(ModelArchive, EveryTruncationIsRefused)
{
    const std::vector<char> bytes = Archived(Sample());
    for (std::size_t size = 0; size < bytes.size(); ++size)
    {
        // A block of its own, so that a read past the end shows.
        const std::vector<char> part(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
        ArchiveReader reader(part.data(), part.size());
        ModelData model;
        EXPECT_FALSE(ReadModel(reader, model)) << size;
    }
}

TEST(ModelArchive, NoDamagedByteReadsPastTheEnd)
{
    const std::vector<char> bytes = Archived(Sample());
    for (std::size_t at = 0; at < bytes.size(); ++at)
    {
        for (unsigned char flip : {0x01, 0x80, 0xFF})
        {
            std::vector<char> damaged = bytes;
            damaged[at] = static_cast<char>(damaged[at] ^ flip);
            ArchiveReader reader(damaged.data(), damaged.size());
            ModelData model;
            if (!ReadModel(reader, model))
            {
                continue;
            }
            for (const MeshData& mesh : model.meshes)
            {
                const char* end = reinterpret_cast<const char*>(mesh.positions.data + mesh.positions.count);
                EXPECT_LE(end, damaged.data() + damaged.size());
            }
        }
    }
}

TEST(ModelArchive, AFlagOfAMapIsTrueOrFalseWhateverItsByteIs)
{
    ModelData model;
    model.materials.resize(1);
    model.materials[0].normalMap.picture.path = "normals";
    model.materials[0].normalMap.picture.embedded = 0x01020304;
    std::vector<char> bytes = Archived(model);
    const std::string mark = "normals\x04\x03\x02\x01";
    const auto flags = std::search(bytes.begin(), bytes.end(), mark.begin(), mark.end()) +
                       static_cast<std::ptrdiff_t>(mark.size());
    std::fill(flags, flags + 3, static_cast<char>(0xFE));
    ArchiveReader reader(bytes.data(), bytes.size());
    ModelData copy;
    ASSERT_TRUE(ReadModel(reader, copy));
    // A bool of another value than 0 and 1 is equal to neither.
    const MapData& map = copy.materials[0].normalMap;
    for (const bool* flag : {&map.isCertain, &map.isInverted, &map.isOnOtherCoordinates})
    {
        unsigned char byte = 0;
        std::memcpy(&byte, flag, 1);
        EXPECT_EQ(byte, 1);
    }
}

TEST(ModelArchive, AFailedWriteIsTold)
{
    const int file = memfd_create("test", MFD_CLOEXEC | MFD_ALLOW_SEALING);
    ASSERT_EQ(fcntl(file, F_ADD_SEALS, F_SEAL_GROW), 0);
    ArchiveWriter writer(file);
    WriteModel(writer, Sample());
    EXPECT_FALSE(writer.Finish());
    close(file);
}

} // namespace
