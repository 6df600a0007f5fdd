#include "orvane/scene/NodeType.h"

#include "orvane/scene/CameraNode.h"
#include "orvane/scene/LightNode.h"
#include "orvane/scene/Line.h"
#include "orvane/scene/LineStyle.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Mesh.h"
#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Node.h"
#include "orvane/scene/NodeLineStyle.h"
#include "orvane/scene/NodeMaterial.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace OV
{
namespace
{

struct Tag
{
    const char* characters;
    int value;
};

const std::vector<Tag> allTags = {
    {"NoDE", 0x4E6F4445}, {"CnoD", 0x436E6F44}, {"MnoD", 0x4D6E6F44}, {"LnoD", 0x4C6E6F44},
    {"S2nD", 0x53326E44}, {"MesH", 0x4D657348}, {"LIne", 0x4C496E65}, {"Sp2D", 0x53703244},
    {"Rc2D", 0x52633244}, {"Matr", 0x4D617472}, {"Nmtr", 0x4E6D7472}, {"MaT2", 0x4D615432},
    {"lnSy", 0x6C6E5379}, {"NLSY", 0x4E4C5359},
};

int Value(const std::string& characters)
{
    return (characters[0] << 24) | (characters[1] << 16) | (characters[2] << 8) | characters[3];
}

/// Says yes to these tags and to none else; the first is its own.
template <class T>
void ExpectTags(T&& object, const std::vector<std::string>& tags)
{
    SCOPED_TRACE(tags.front());
    EXPECT_EQ(object.Type(), Value(tags.front()));
    std::set<int> yes;
    for (const std::string& tag : tags)
    {
        yes.insert(Value(tag));
    }
    for (const Tag& tag : allTags)
    {
        EXPECT_EQ(object.HasType(tag.value), yes.count(tag.value) != 0) << tag.characters;
    }
    EXPECT_FALSE(object.HasType(0));
    EXPECT_FALSE(object.HasType(-1));
}

TEST(TypeTag, IsFourCharactersWithTheFirstHighest)
{
    for (const Tag& tag : allTags)
    {
        EXPECT_EQ(tag.value, Value(tag.characters)) << tag.characters;
    }
}

TEST(TypeTag, HasTheStatedValue)
{
    EXPECT_EQ(NodeTypeNode, Value("NoDE"));
    EXPECT_EQ(NodeTypeCameraNode, Value("CnoD"));
    EXPECT_EQ(NodeTypeMeshNode, Value("MnoD"));
    EXPECT_EQ(NodeTypeLightNode, Value("LnoD"));
    EXPECT_EQ(NodeTypeShape2DNode, Value("S2nD"));
    EXPECT_EQ(NodeTypeMesh, Value("MesH"));
    EXPECT_EQ(NodeTypeLine, Value("LIne"));
    EXPECT_EQ(NodeTypeShape2D, Value("Sp2D"));
    EXPECT_EQ(NodeTypeRect, Value("Rc2D"));
    EXPECT_EQ(NodeTypeMaterial, Value("Matr"));
    EXPECT_EQ(NodeTypeNodeMaterial, Value("Nmtr"));
    EXPECT_EQ(NodeTypeMaterial2D, Value("MaT2"));
    EXPECT_EQ(NodeTypeLineStyle, Value("lnSy"));
    EXPECT_EQ(NodeTypeNodeLineStyle, Value("NLSY"));
}

TEST(TypeTag, EachClassSaysYesToTheListedTagsOnly)
{
    ExpectTags(Node(nullptr), {"NoDE"});
    ExpectTags(CameraNode(nullptr), {"CnoD", "NoDE"});
    ExpectTags(MeshNode(nullptr), {"MnoD", "NoDE"});
    ExpectTags(LightNode(nullptr), {"LnoD", "NoDE"});
    ExpectTags(Mesh(nullptr), {"MesH"});
    ExpectTags(Line(nullptr, nullptr), {"LIne", "MesH"});
    ExpectTags(Material("a"), {"Matr"});
    ExpectTags(NodeMaterial(), {"Nmtr", "Matr"});
    ExpectTags(LineStyle("a"), {"lnSy"});
    ExpectTags(NodeLineStyle(), {"NLSY", "lnSy"});
}

TEST(TypeTag, IsAnsweredVirtually)
{
    MeshNode node(nullptr);
    EXPECT_EQ(static_cast<const Node&>(node).Type(), NodeTypeMeshNode);
    EXPECT_TRUE(static_cast<Node&>(node).HasType(NodeTypeMeshNode));
}

} // namespace
} // namespace OV
