#include "orvane/scene/RawMesh.h"

#include "tests/scene/SceneDoubles.h"

#include <limits>

namespace OV
{
namespace
{

using namespace Test;

std::vector<Vector> ThreePoints()
{
    return {Vector(1, 5, -3), Vector(-2, 6, 0), Vector(0, 4, 9)};
}

TEST(RawMesh, StartsEmpty)
{
    RawMesh mesh;
    EXPECT_TRUE(mesh.positions.empty());
    EXPECT_TRUE(mesh.normals.empty());
    EXPECT_TRUE(mesh.textureCoordinates.empty());
    EXPECT_TRUE(mesh.colors.empty());
    EXPECT_TRUE(mesh.indices.empty());
    EXPECT_TRUE(IsNear(mesh.bboxMin, Vector(0, 0, 0), 0.0f));
    EXPECT_TRUE(IsNear(mesh.bboxMax, Vector(0, 0, 0), 0.0f));
    EXPECT_TRUE(IsNear(mesh.sphere.center, Vector(0, 0, 0), 0.0f));
    EXPECT_EQ(mesh.sphere.radius, 0.0f);
    EXPECT_EQ(mesh.GetRenderData(), nullptr);
}

/// Sets one of the four arrays of a fixture that is tested the same way.
template <class Element>
struct ArrayCase
{
    bool (RawMesh::*set)(std::vector<Element>&&);
    std::vector<Element> RawMesh::*member;
};

template <class Element>
void ExpectMovedIn(const ArrayCase<Element>& array)
{
    RawMesh mesh;
    std::vector<Element> given(3);
    const Element* const storage = given.data();
    EXPECT_TRUE((mesh.*array.set)(std::move(given)));
    EXPECT_EQ((mesh.*array.member).data(), storage) << "moved in, not copied";
    EXPECT_TRUE(given.empty());

    EXPECT_TRUE((mesh.*array.set)(std::move(mesh.*array.member))) << "given its own";
    EXPECT_EQ((mesh.*array.member).size(), 3u);
    EXPECT_EQ((mesh.*array.member).data(), storage);
}

template <class Element>
void ExpectRefusedByPositions(const ArrayCase<Element>& array)
{
    RawMesh mesh;
    mesh.SetPositionBuffer(ThreePoints());
    for (const std::size_t size : {std::size_t{0}, std::size_t{2}, std::size_t{4}})
    {
        std::vector<Element> given(size);
        EXPECT_FALSE((mesh.*array.set)(std::move(given))) << size;
        EXPECT_EQ(given.size(), size) << "the argument keeps its elements";
    }
    std::vector<Element> fitting(3);
    EXPECT_TRUE((mesh.*array.set)(std::move(fitting)));
    EXPECT_EQ((mesh.*array.member).size(), 3u);

    std::vector<Element> wrong(2);
    EXPECT_FALSE((mesh.*array.set)(std::move(wrong)));
    EXPECT_EQ((mesh.*array.member).size(), 3u) << "nothing changes";
}

const ArrayCase<Vector> positionArray = {&RawMesh::SetPositionBuffer, &RawMesh::positions};
const ArrayCase<Vector> normalArray = {&RawMesh::SetNormalBuffer, &RawMesh::normals};
const ArrayCase<TextureCoordinate> textureArray = {&RawMesh::SetTextureBuffer, &RawMesh::textureCoordinates};
const ArrayCase<Color> colorArray = {&RawMesh::SetColorBuffer, &RawMesh::colors};

TEST(RawMesh, SettersTakeOverTheContents)
{
    ExpectMovedIn(positionArray);
    ExpectMovedIn(normalArray);
    ExpectMovedIn(textureArray);
    ExpectMovedIn(colorArray);
}

TEST(RawMesh, SettersRefuseAnotherSizeThanThePositions)
{
    ExpectRefusedByPositions(positionArray);
    ExpectRefusedByPositions(normalArray);
    ExpectRefusedByPositions(textureArray);
    ExpectRefusedByPositions(colorArray);
}

TEST(RawMesh, TwoNormalsOntoThreePositionsAreRefusedAndKept)
{
    RawMesh mesh;
    mesh.SetPositionBuffer(ThreePoints());
    std::vector<Vector> normals = {Vector(1, 0, 0), Vector(0, 1, 0)};
    EXPECT_FALSE(mesh.SetNormalBuffer(std::move(normals)));
    ASSERT_EQ(normals.size(), 2u);
    EXPECT_TRUE(IsNear(normals[1], Vector(0, 1, 0), 0.0f));
    EXPECT_TRUE(mesh.normals.empty());
}

TEST(RawMesh, OtherArraysSetFirstAreNotTestedAgainstThePositions)
{
    RawMesh mesh;
    EXPECT_TRUE(mesh.SetNormalBuffer(std::vector<Vector>(2)));
    EXPECT_TRUE(mesh.SetTextureBuffer(std::vector<TextureCoordinate>(5)));
    EXPECT_TRUE(mesh.SetPositionBuffer(ThreePoints()));
    EXPECT_EQ(mesh.normals.size(), 2u);
    EXPECT_TRUE(mesh.SetNormalBuffer(std::move(mesh.normals))) << "its own array is never refused";
    EXPECT_EQ(mesh.normals.size(), 2u);
}

TEST(RawMesh, PositionsOfAnotherNumberNeedANewDescription)
{
    RawMesh mesh;
    EXPECT_TRUE(mesh.SetPositionBuffer(ThreePoints()));
    std::vector<Vector> two(2);
    EXPECT_FALSE(mesh.SetPositionBuffer(std::move(two)));
    EXPECT_EQ(two.size(), 2u);
    EXPECT_EQ(mesh.positions.size(), 3u);
    EXPECT_TRUE(mesh.SetPositionBuffer(std::vector<Vector>(3))) << "the same number passes";
    mesh.StartDescription();
    EXPECT_TRUE(mesh.SetPositionBuffer(std::move(two)));
    EXPECT_EQ(mesh.positions.size(), 2u);
}

TEST(RawMesh, IndicesAreSetOnceADescription)
{
    RawMesh mesh;
    std::vector<unsigned short> given = {0, 1, 65535};
    const unsigned short* const storage = given.data();
    EXPECT_TRUE(mesh.SetIndices(std::move(given)));
    EXPECT_TRUE(given.empty());
    EXPECT_EQ(mesh.indices.data(), storage);
    EXPECT_EQ(mesh.indices, (std::vector<unsigned short>{0, 1, 65535})) << "no index is checked";

    std::vector<unsigned short> again = {2, 1, 0};
    EXPECT_FALSE(mesh.SetIndices(std::move(again)));
    EXPECT_EQ(again.size(), 3u);
    EXPECT_FALSE(mesh.SetIndices(std::move(mesh.indices))) << "not even its own";
    EXPECT_EQ(mesh.indices.size(), 3u);

    mesh.StartDescription();
    EXPECT_TRUE(mesh.SetIndices(std::move(mesh.indices))) << "its own, and empty";
    EXPECT_TRUE(mesh.SetIndices(std::move(again)));
    EXPECT_EQ(mesh.indices, (std::vector<unsigned short>{2, 1, 0}));
}

TEST(RawMesh, StartDescriptionEmptiesAllAndKeepsTheCapacity)
{
    RawMesh mesh;
    mesh.SetPositionBuffer(std::vector<Vector>(100));
    mesh.SetNormalBuffer(std::vector<Vector>(100));
    mesh.SetTextureBuffer(std::vector<TextureCoordinate>(100));
    mesh.SetColorBuffer(std::vector<Color>(100));
    mesh.SetIndices(std::vector<unsigned short>(100));
    mesh.SetBBox(Vector(1, 1, 1), Vector(2, 2, 2));
    int deaths = 0;
    mesh.SetRenderData(Counted(deaths));

    mesh.StartDescription();
    EXPECT_TRUE(mesh.positions.empty());
    EXPECT_TRUE(mesh.normals.empty());
    EXPECT_TRUE(mesh.textureCoordinates.empty());
    EXPECT_TRUE(mesh.colors.empty());
    EXPECT_TRUE(mesh.indices.empty());
    EXPECT_GE(mesh.positions.capacity(), 100u);
    EXPECT_GE(mesh.normals.capacity(), 100u);
    EXPECT_GE(mesh.textureCoordinates.capacity(), 100u);
    EXPECT_GE(mesh.colors.capacity(), 100u);
    EXPECT_GE(mesh.indices.capacity(), 100u);
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(mesh.GetRenderData(), nullptr);
    EXPECT_TRUE(IsNear(mesh.bboxMax, Vector(2, 2, 2), 0.0f)) << "the box stands";
}

TEST(RawMesh, EndDescriptionFitsBoxAndSphere)
{
    RawMesh mesh;
    mesh.SetPositionBuffer(ThreePoints());
    EXPECT_TRUE(mesh.EndDescription(true));
    EXPECT_TRUE(IsNear(mesh.bboxMin, Vector(-2, 4, -3), 0.0f));
    EXPECT_TRUE(IsNear(mesh.bboxMax, Vector(1, 6, 9), 0.0f));
    EXPECT_TRUE(IsNear(mesh.sphere.center, Vector(-0.5f, 5, 3)));
    EXPECT_NEAR(mesh.sphere.radius, 0.5f * std::sqrt(9.0f + 4.0f + 144.0f), 1e-5f) << "half the diagonal";
}

TEST(RawMesh, EndDescriptionWithoutComputingTakesTheBoxThatWasSet)
{
    RawMesh mesh;
    mesh.SetPositionBuffer(ThreePoints());
    mesh.SetBBox(Vector(0, 0, 0), Vector(2, 0, 0));
    EXPECT_EQ(mesh.sphere.radius, 0.0f) << "the box alone";
    EXPECT_TRUE(mesh.EndDescription(false));
    EXPECT_TRUE(IsNear(mesh.bboxMax, Vector(2, 0, 0), 0.0f));
    EXPECT_TRUE(IsNear(mesh.sphere.center, Vector(1, 0, 0), 0.0f));
    EXPECT_EQ(mesh.sphere.radius, 1.0f);
}

TEST(RawMesh, EndDescriptionWithoutPositionsLeavesBoxAndSphere)
{
    RawMesh mesh;
    mesh.SetNormalBuffer(std::vector<Vector>(2));
    mesh.SetBBox(Vector(0, 0, 0), Vector(2, 0, 0));
    mesh.sphere.radius = 7.0f;
    EXPECT_FALSE(mesh.EndDescription(true));
    EXPECT_FALSE(mesh.EndDescription(false));
    EXPECT_TRUE(IsNear(mesh.bboxMax, Vector(2, 0, 0), 0.0f));
    EXPECT_TRUE(IsNear(mesh.sphere.center, Vector(0, 0, 0), 0.0f));
    EXPECT_EQ(mesh.sphere.radius, 7.0f);
}

TEST(RawMesh, OnePositionIsItsOwnBox)
{
    RawMesh mesh;
    mesh.SetPositionBuffer({Vector(3, -4, 5)});
    EXPECT_TRUE(mesh.EndDescription(true));
    EXPECT_TRUE(IsNear(mesh.bboxMin, Vector(3, -4, 5), 0.0f));
    EXPECT_TRUE(IsNear(mesh.bboxMax, Vector(3, -4, 5), 0.0f));
    EXPECT_TRUE(IsNear(mesh.sphere.center, Vector(3, -4, 5), 0.0f));
    EXPECT_EQ(mesh.sphere.radius, 0.0f);
}

TEST(RawMesh, ComputeBBoxLeavesTheSphere)
{
    RawMesh mesh;
    mesh.SetBBox(Vector(-9, -9, -9), Vector(9, 9, 9));
    mesh.ComputeBBox();
    EXPECT_TRUE(IsNear(mesh.bboxMax, Vector(9, 9, 9), 0.0f)) << "there is no position to start from";
    mesh.SetPositionBuffer(ThreePoints());
    mesh.ComputeBBox();
    EXPECT_TRUE(IsNear(mesh.bboxMin, Vector(-2, 4, -3), 0.0f));
    EXPECT_EQ(mesh.sphere.radius, 0.0f);
}

TEST(RawMesh, APositionThatIsNoNumberWidensNothing)
{
    const float nan = std::numeric_limits<float>::quiet_NaN();
    RawMesh mesh;
    mesh.SetPositionBuffer({Vector(1, 1, 1), Vector(nan, 2, nan)});
    mesh.ComputeBBox();
    EXPECT_TRUE(IsNear(mesh.bboxMin, Vector(1, 1, 1), 0.0f));
    EXPECT_TRUE(IsNear(mesh.bboxMax, Vector(1, 2, 1), 0.0f));
}

TEST(RawMesh, OwnsItsRenderDataAndKeepsWhatItIsGivenAgain)
{
    Log log;
    auto mesh = std::make_unique<RawMesh>();
    Object* const first = Logged(log, "first");
    mesh->SetRenderData(first);
    mesh->SetRenderData(first);
    EXPECT_EQ(mesh->GetRenderData(), first);
    EXPECT_TRUE(log.empty());
    mesh->SetRenderData(Logged(log, "second"));
    EXPECT_EQ(log, (Log{"first"}));
    bool wasEmpty = false;
    mesh->SetRenderData(new WatchedObject([&, raw = mesh.get()] { wasEmpty = !raw->GetRenderData(); }));
    EXPECT_EQ(log, (Log{"first", "second"}));
    mesh.reset();
    EXPECT_TRUE(wasEmpty);
}

TEST(RawMesh, CopiesTakeTheGeometryWithoutTheRenderData)
{
    int deaths = 0;
    int otherDeaths = 0;
    RawMesh mesh;
    mesh.SetPositionBuffer(ThreePoints());
    mesh.SetNormalBuffer(ThreePoints());
    mesh.SetTextureBuffer(std::vector<TextureCoordinate>(3));
    mesh.SetColorBuffer(std::vector<Color>(3));
    mesh.SetIndices({0, 1, 2});
    mesh.EndDescription(true);
    mesh.SetRenderData(Counted(deaths));

    const auto expectSame = [&mesh](const RawMesh& copy)
    {
        EXPECT_EQ(copy.positions, mesh.positions);
        EXPECT_EQ(copy.normals, mesh.normals);
        EXPECT_EQ(copy.textureCoordinates.size(), 3u);
        EXPECT_EQ(copy.colors.size(), 3u);
        EXPECT_EQ(copy.indices, mesh.indices);
        EXPECT_EQ(copy.bboxMin, mesh.bboxMin);
        EXPECT_EQ(copy.bboxMax, mesh.bboxMax);
        EXPECT_EQ(copy.sphere.center, mesh.sphere.center);
        EXPECT_EQ(copy.sphere.radius, mesh.sphere.radius);
        EXPECT_EQ(copy.GetRenderData(), nullptr);
    };
    {
        RawMesh copy(mesh);
        expectSame(copy);
        RawMesh assigned;
        assigned.SetRenderData(Counted(otherDeaths));
        assigned = mesh;
        expectSame(assigned);
        EXPECT_EQ(otherDeaths, 1) << "they showed the old geometry";
    }
    const RawMesh& itself = mesh;
    mesh = itself;
    EXPECT_EQ(mesh.positions.size(), 3u);
    EXPECT_EQ(deaths, 0);
    EXPECT_NE(mesh.GetRenderData(), nullptr);
}

TEST(RawMesh, IsDestroyedVirtually)
{
    struct Noted : RawMesh
    {
        explicit Noted(bool& d) : dead(d) {}
        ~Noted() override { dead = true; }
        bool& dead;
    };
    bool dead = false;
    std::unique_ptr<RawMesh>(std::make_unique<Noted>(dead)).reset();
    EXPECT_TRUE(dead);
}

} // namespace
} // namespace OV
