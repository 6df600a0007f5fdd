#include "tests/orvane_host/import/ImportFixture.h"

#include <gtest/gtest.h>

#include <string>

using namespace OV;
using namespace OV::Host;
using namespace OV::Test;

namespace
{

struct ReflectionCase
{
    const char* label;
    std::string material;
    float straight;
    float grazing;
    float gloss;
};

class ModelReflectionTest : public ImportFixture
{
protected:
    static void ExpectFactors(const ImportResult& result, const ReflectionCase& test)
    {
        const float* const factors = OnlyMaterial(result).reflectionFactors;
        EXPECT_NEAR(factors[0], test.straight, 1e-5f);
        EXPECT_NEAR(factors[1], test.grazing, 1e-5f);
        EXPECT_NEAR(factors[2], test.gloss, 1e-5f);
    }
};

std::string Metal(const std::string& members)
{
    return "\"pbrMetallicRoughness\":{" + members + "}";
}

TEST_F(ModelReflectionTest, SmoothThingsOfGltfReflectAndRoughOnesDoNot)
{
    const std::string texture = "{\"index\":0}";
    const float glass = 0.04f + 0.96f / 7.0f;
    const ReflectionCase cases[] = {
        {"nothing stated, which is rough metal", "", 0, 0, 0},
        {"rough", Metal("\"metallicFactor\":0,\"roughnessFactor\":1"), 0, 0, 0},
        {"a mirror", Metal("\"metallicFactor\":1,\"roughnessFactor\":0"), 1, 1, 1},
        {"glass", Metal("\"metallicFactor\":0,\"roughnessFactor\":0"), 0.04f, glass, 1},
        {"half rough", Metal("\"metallicFactor\":0,\"roughnessFactor\":0.5"), 0.01f, glass / 4, 0.5f},
        {"red metal", Metal("\"baseColorFactor\":[1,0,0,1],\"metallicFactor\":1,\"roughnessFactor\":0"),
         0.299f, 0.299f + 0.701f / 7.0f, 1},
        {"half metal", Metal("\"metallicFactor\":0.5,\"roughnessFactor\":0"), 0.52f, 0.52f + 0.48f / 7.0f, 1},
        {"black metal", Metal("\"baseColorFactor\":[0,0,0,1],\"metallicFactor\":1,\"roughnessFactor\":0"), 0,
         1.0f / 7.0f, 1},
        {"a picture says what is metal",
         Metal("\"metallicFactor\":1,\"roughnessFactor\":0.5,\"metallicRoughnessTexture\":" + texture), 0.01f,
         glass / 4, 0.5f},
        {"unlit", "\"extensions\":{\"KHR_materials_unlit\":{}}," + Metal("\"roughnessFactor\":0"), 0, 0, 0},
        {"glossy",
         "\"extensions\":{\"KHR_materials_pbrSpecularGlossiness\":"
         "{\"specularFactor\":[0.5,0.5,0.5],\"glossinessFactor\":0.5}}",
         0.125f, (0.5f + 0.5f / 7.0f) / 4, 0.5f},
        {"a picture says what is glossy",
         "\"extensions\":{\"KHR_materials_pbrSpecularGlossiness\":"
         "{\"specularGlossinessTexture\":" +
             texture + "}}",
         0, 0, 0},
    };
    for (const ReflectionCase& test : cases)
    {
        SCOPED_TRACE(test.label);
        const std::string members =
            ",\"extensionsUsed\":[\"KHR_materials_unlit\",\"KHR_materials_pbrSpecularGlossiness\"],"
            "\"images\":[{\"uri\":\"missing.png\"}],\"textures\":[{\"source\":0}]";
        ExpectFactors(ImportAs("m.glb", TriangleGlb("{\"mesh\":0}", members, "{" + test.material + "}")),
                      test);
    }
}

TEST_F(ModelReflectionTest, HighlightsOfObjFilesAreNoMirrorsUnlessTheModelOfLightSaysSo)
{
    const ReflectionCase cases[] = {
        {"highlights", "Ks 0.5 0.5 0.5\nNs 500\nillum 2\n", 0, 0, 0},
        {"mirror", "Ks 0.5 0.5 0.5\nillum 3\n", 0.5f, 0.5f, 1},
        {"glass", "Ks 1 0 0\nillum 9\n", 0.299f, 0.299f, 1},
        {"no reflection left", "Ks 0.5 0.5 0.5\nillum 10\n", 0, 0, 0},
        {"a black mirror", "Ks 0 0 0\nillum 3\n", 0, 0, 0},
        {"metal", "Kd 1 1 1\nPm 1\nPr 0.5\n", 0.25f, 0.25f, 0.5f},
        {"polished", "Pr 0\n", 0.04f, 0.04f + 0.96f / 7.0f, 1},
    };
    for (const ReflectionCase& test : cases)
    {
        SCOPED_TRACE(test.label);
        WriteFile(m_folder.Path("m.mtl"), "newmtl m\n" + test.material);
        ExpectFactors(ImportAs("m.obj", "mtllib m.mtl\nusemtl m\n" + CubeObj()), test);
    }
}

std::string Collada(const std::string& phong)
{
    return "<?xml version=\"1.0\"?><COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" "
           "version=\"1.4.1\">"
           "<library_effects><effect id=\"e\"><profile_COMMON><technique sid=\"t\"><phong>" +
           phong +
           "</phong></technique></profile_COMMON></effect></library_effects>"
           "<library_materials><material id=\"m\"><instance_effect "
           "url=\"#e\"/></material></library_materials>"
           "<library_geometries><geometry id=\"g\"><mesh><source id=\"p\"><float_array id=\"pa\" count=\"9\">"
           "0 0 0 1 0 0 0 1 0</float_array><technique_common><accessor source=\"#pa\" count=\"3\" "
           "stride=\"3\">"
           "<param name=\"X\" type=\"float\"/><param name=\"Y\" type=\"float\"/><param name=\"Z\" "
           "type=\"float\"/>"
           "</accessor></technique_common></source><vertices id=\"v\"><input semantic=\"POSITION\" "
           "source=\"#p\"/>"
           "</vertices><triangles count=\"1\" material=\"s\"><input semantic=\"VERTEX\" source=\"#v\" "
           "offset=\"0\"/>"
           "<p>0 1 2</p></triangles></mesh></geometry></library_geometries><library_visual_scenes>"
           "<visual_scene id=\"vs\"><node><instance_geometry url=\"#g\"><bind_material><technique_common>"
           "<instance_material symbol=\"s\" "
           "target=\"#m\"/></technique_common></bind_material></instance_geometry>"
           "</node></visual_scene></library_visual_scenes><scene><instance_visual_scene "
           "url=\"#vs\"/></scene></COLLADA>";
}

TEST_F(ModelReflectionTest, MirrorsOfColladaReflectTheirColourTimesTheirShare)
{
    const std::string shiny =
        "<specular><color>1 1 1 1</color></specular><shininess><float>90</float></shininess>";
    const auto mirror = [&shiny](const char* color, const char* share)
    {
        return shiny + "<reflective><color>" + color + "</color></reflective><reflectivity><float>" + share +
               "</float></reflectivity>";
    };
    const ReflectionCase cases[] = {
        {"highlights alone", shiny, 0, 0, 0},
        {"a share of black", mirror("0 0 0 1", "0.5"), 0, 0, 0},
        {"nothing of white", mirror("1 1 1 1", "0"), 0, 0, 0},
        {"half of green", mirror("0 1 0 1", "0.5"), 0.2935f, 0.2935f, 1},
        {"more than all", mirror("1 1 1 1", "7"), 1, 1, 1},
    };
    for (const ReflectionCase& test : cases)
    {
        SCOPED_TRACE(test.label);
        ExpectFactors(ImportAs("m.dae", Collada(test.material)), test);
    }
}

} // namespace
