#include "orvane/scene/LightNode.h"

#include "tests/scene/SceneDoubles.h"

namespace OV
{
namespace
{

using namespace Test;

TEST(LightNode, StartsAsStated)
{
    LightNode light(nullptr);
    EXPECT_TRUE(light.IsVisible());
    EXPECT_TRUE(light.GetColor().IsExactlyEqual(Color(1, 1, 1, 1)));
    EXPECT_TRUE(light.GetAmbient().IsExactlyEqual(Color(1, 1, 1, 1)));
    EXPECT_FALSE(light.HasAmbient());
    EXPECT_TRUE(IsNear(light.GetGlobalDirection(), Vector(0, 0, -1)));
    EXPECT_EQ(light.GetRenderData(), nullptr);
}

TEST(LightNode, JoinsItsSceneWhenMadeAndLeavesItWhenItDies)
{
    Scene scene;
    scene.UpdateGraph(1, 1);
    LightNode* const first = new LightNode(&scene);
    EXPECT_TRUE(scene.IsDirty());
    LightNode* const second = new LightNode(&scene);
    LightNode* const third = new LightNode(&scene);
    EXPECT_EQ(scene.GetLights(), (std::vector<LightNode*>{first, second, third}));
    scene.UpdateGraph(1, 1);
    delete second;
    EXPECT_EQ(scene.GetLights(), (std::vector<LightNode*>{first, third}));
    EXPECT_TRUE(scene.IsDirty());
    delete first;
    delete third;
    EXPECT_TRUE(scene.GetLights().empty());
}

TEST(LightNode, SettersMarkNothing)
{
    Scene scene;
    LightNode light(&scene);
    scene.UpdateGraph(1, 1);
    light.SetVisible(false);
    light.SetColor(0.1f, 0.2f, 0.3f);
    light.SetAmbient(0.4f, 0.5f, 0.6f);
    light.SetLocalDirection(Vector(1, 0, 0));
    EXPECT_FALSE(light.IsVisible());
    EXPECT_TRUE(light.GetColor().IsExactlyEqual(Color(0.1f, 0.2f, 0.3f, 1.0f)));
    EXPECT_TRUE(light.HasAmbient());
    EXPECT_TRUE(light.GetAmbient().IsExactlyEqual(Color(0.4f, 0.5f, 0.6f, 1.0f)));
    light.ClearAmbient();
    EXPECT_FALSE(scene.IsDirty());
}

TEST(LightNode, ClearedAmbientKeepsItsColour)
{
    LightNode light(nullptr);
    light.SetAmbient(0.4f, 0.5f, 0.6f);
    light.ClearAmbient();
    EXPECT_FALSE(light.HasAmbient());
    EXPECT_TRUE(light.GetAmbient().IsExactlyEqual(Color(0.4f, 0.5f, 0.6f, 1.0f)));
}

TEST(LightNode, LocalDirectionIsNormalised)
{
    LightNode light(nullptr);
    light.SetLocalDirection(Vector(0, 0, -2));
    EXPECT_TRUE(IsNear(light.GetGlobalDirection(), Vector(0, 0, -1), 0.0f));
    light.SetLocalDirection(Vector(3, 4, 0));
    EXPECT_TRUE(IsNear(light.GetGlobalDirection(), Vector(0.6f, 0.8f, 0)));
    light.SetLocalDirection(Vector(0, 0, 0));
    EXPECT_TRUE(std::isnan(light.GetGlobalDirection().x));
}

TEST(LightNode, GlobalDirectionReadsTheTransformAsOfTheLastUpdate)
{
    Scene scene;
    Node* const parent = new Node(&scene);
    LightNode* const light = new LightNode(&scene);
    scene.GetRoot()->AddChild(parent, false);
    parent->AddChild(light, false);
    parent->SetLocal(Product(At(1, 2, 3), TurnedAboutY(quarterTurn)));
    const Vector& direction = light->GetGlobalDirection();
    EXPECT_TRUE(IsNear(direction, Vector(0, 0, -1)));
    EXPECT_TRUE(IsNear(light->GetGlobalPosition(), Vector(0, 0, 0)));
    scene.UpdateGraph(1, 1);
    EXPECT_TRUE(IsNear(direction, Vector(0, 0, -1))) << "computed when asked for";
    EXPECT_EQ(&light->GetGlobalDirection(), &direction);
    EXPECT_TRUE(IsNear(direction, Vector(-1, 0, 0)));
    EXPECT_TRUE(IsNear(light->GetGlobalPosition(), Vector(1, 2, 3)));
}

TEST(LightNode, ScaleAndMirrorDoNotTurnTheDirection)
{
    LightNode light(nullptr);
    light.SetLocalDirection(Vector(0.6f, 0, -0.8f));
    light.SetGlobal(Scaled(2, 3, 4));
    EXPECT_TRUE(IsNear(light.GetGlobalDirection(), Vector(0.6f, 0, -0.8f)));
    light.SetGlobal(Scaled(-2, 3, 4));
    EXPECT_TRUE(IsNear(light.GetGlobalDirection(), Vector(0.6f, 0, -0.8f)))
        << "the rotation without the mirror";
}

TEST(LightNode, OwnsItsRenderData)
{
    int deaths = 0;
    {
        LightNode light(nullptr);
        ExpectOwningSlot([&] { return light.GetRenderData(); },
                         [&](Object* data) { light.SetRenderData(data); });
        light.SetRenderData(Counted(deaths));
    }
    EXPECT_EQ(deaths, 1);
}

TEST(LightNode, DiesAfterItHasLeftTheListAndBeforeItLeavesTheTree)
{
    Scene scene;
    LightNode* const light = new LightNode(&scene);
    scene.GetRoot()->AddChild(light, false);
    bool asExpected = false;
    light->SetRenderData(new WatchedObject(
        [&] { asExpected = scene.GetLights().empty() && light->GetParent() == scene.GetRoot(); }));
    delete light;
    EXPECT_TRUE(asExpected);
}

TEST(LightNode, OutlivesItsScene)
{
    auto scene = std::make_unique<Scene>();
    LightNode light(scene.get());
    scene.reset();
    EXPECT_EQ(light.GetScene(), nullptr);
    light.SetLocal(At(1, 2, 3));
}

} // namespace
} // namespace OV
