#include "orvane/effects/EffectCache.h"

#include "orvane/effects/AAEffectES20.h"
#include "orvane/effects/AdvancedMaterialEffectES20.h"
#include "orvane/effects/AdvancedMaterialPhongEffectES20.h"
#include "orvane/effects/BasicMaterialAmbientPassEffectES20.h"
#include "orvane/effects/BasicMaterialEffectES20.h"
#include "orvane/effects/CrosshatchEffectES20.h"
#include "orvane/effects/EffectReferencePlaceholder.h"
#include "orvane/effects/FXAAEffectES20.h"
#include "orvane/effects/HUDEffectES20.h"
#include "orvane/effects/MonotoneEffectES20.h"
#include "orvane/effects/SimMaterialEffectES20.h"
#include "orvane/effects/SkyEffectES20.h"
#include "orvane/effects/SolidLineEffectES20.h"
#include "orvane/effects/VertexColorEffectES20.h"
#include "orvane/effects/WeightedAverageSecondPassEffectES20.h"
#include "orvane/base/Lifetime.h"
#include "tests/effects/EffectSettingsGuard.h"
#include "tests/support/GLRecorder.h"

#include <gmock/gmock.h>

#include <memory>
#include <vector>

namespace OV::Test
{

namespace
{

/// Counts the effects that are alive, and shows whether it is additive.
class OpenBasicEffect : public BasicMaterialEffectES20
{
public:
    using BasicMaterialEffectES20::additive;
};

bool IsAdditive(EffectES20* effect)
{
    auto* basic = dynamic_cast<BasicMaterialEffectES20*>(effect);
    return basic != nullptr && basic->*(&OpenBasicEffect::additive);
}

/// A type gives an effect of that class, which dies with its one reference.
template <class Effect>
void ExpectClass(EffectCache& cache, EffectCache::EffectType type)
{
    EffectES20* const effect = cache.GetEffect(type);
    ASSERT_NE(dynamic_cast<Effect*>(effect), nullptr) << type;
    EXPECT_EQ(effect->GetCache(), &cache) << type;
    EXPECT_TRUE(effect->Release()) << type;
}

/// Keeps one reference to an effect for as long as the cache lives, as render data do.
class Holder
{
public:
    Holder(EffectCache& cache, EffectCache::EffectType type) : m_effect(cache.GetEffect(type))
    {
        m_watch.Watch(cache.GetLifetime(), [](void* self) { static_cast<Holder*>(self)->Release(); },
                      this);
    }

    ~Holder() { Release(); }

    EffectES20* Get() const { return m_effect; }

private:
    void Release()
    {
        if (m_effect != nullptr)
        {
            m_effect->Release();
            m_effect = nullptr;
        }
    }

    EffectES20* m_effect;
    LifetimeWatch m_watch;
};

class EffectCacheTest : public ::testing::Test
{
protected:
    EffectSettingsGuard settings;
    GLRecorder gl;
};

} // namespace

TEST_F(EffectCacheTest, TypesHaveTheirValues)
{
    EXPECT_EQ(EffectCache::BasicMaterial, 0);
    EXPECT_EQ(EffectCache::HUD, 1);
    EXPECT_EQ(EffectCache::VertexColor, 2);
    EXPECT_EQ(EffectCache::AA, 3);
    EXPECT_EQ(EffectCache::FXAA, 4);
    EXPECT_EQ(EffectCache::SimMaterial, 5);
    EXPECT_EQ(EffectCache::SolidLine, 6);
    EXPECT_EQ(EffectCache::BasicMaterialAmbientPass, 7);
    EXPECT_EQ(EffectCache::BasicMaterialAdditive, 8);
    EXPECT_EQ(EffectCache::WeightedAverageSecondPass, 9);
    EXPECT_EQ(EffectCache::DepthIdPass, 10);
    EXPECT_EQ(EffectCache::SSAO, 11);
    EXPECT_EQ(EffectCache::Sky, 12);
    EXPECT_EQ(EffectCache::LineFilter, 13);
    EXPECT_EQ(EffectCache::AdvancedMaterial, 14);
    EXPECT_EQ(EffectCache::Crosshatch, 15);
    EXPECT_EQ(EffectCache::Monotone, 16);
    EXPECT_EQ(EffectCache::AdvancedMaterialPhong, 17);
}

TEST_F(EffectCacheTest, MakesTheClassOfTheType)
{
    EffectCache cache;
    EffectES20* basic = cache.GetEffect(EffectCache::BasicMaterial);
    EffectES20* additive = cache.GetEffect(EffectCache::BasicMaterialAdditive);
    EffectES20* ambient = cache.GetEffect(EffectCache::BasicMaterialAmbientPass);
    EffectES20* sky = cache.GetEffect(EffectCache::Sky);
    ASSERT_NE(dynamic_cast<BasicMaterialEffectES20*>(basic), nullptr);
    EXPECT_FALSE(IsAdditive(basic));
    EXPECT_TRUE(IsAdditive(additive));
    EXPECT_NE(dynamic_cast<BasicMaterialAmbientPassEffectES20*>(ambient), nullptr);
    EXPECT_NE(dynamic_cast<SkyEffectES20*>(sky), nullptr);
    for (EffectES20* effect : {basic, additive, ambient, sky})
    {
        EXPECT_EQ(effect->GetReferenceCount(), 1);
        EXPECT_EQ(effect->GetCache(), &cache);
        EXPECT_TRUE(effect->Release());
    }
    ExpectClass<HUDEffectES20>(cache, EffectCache::HUD);
    ExpectClass<VertexColorEffectES20>(cache, EffectCache::VertexColor);
    ExpectClass<AAEffectES20>(cache, EffectCache::AA);
    ExpectClass<FXAAEffectES20>(cache, EffectCache::FXAA);
    ExpectClass<SimMaterialEffectES20>(cache, EffectCache::SimMaterial);
    ExpectClass<SolidLineEffectES20>(cache, EffectCache::SolidLine);
    ExpectClass<WeightedAverageSecondPassEffectES20>(cache, EffectCache::WeightedAverageSecondPass);
    ExpectClass<AdvancedMaterialEffectES20>(cache, EffectCache::AdvancedMaterial);
    ExpectClass<CrosshatchEffectES20>(cache, EffectCache::Crosshatch);
    ExpectClass<MonotoneEffectES20>(cache, EffectCache::Monotone);
    ExpectClass<AdvancedMaterialPhongEffectES20>(cache, EffectCache::AdvancedMaterialPhong);
}

TEST_F(EffectCacheTest, AskingForTheAdvancedMaterialGivesTheModelInForce)
{
    EffectCache cache;
    EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterialPhong);
    ExpectClass<AdvancedMaterialPhongEffectES20>(cache, EffectCache::AdvancedMaterial);
    ExpectClass<AdvancedMaterialPhongEffectES20>(cache, EffectCache::AdvancedMaterialPhong);
    EffectES20::SetAdvancedMaterialShaderType(EffectCache::Crosshatch); // any other: the plain one
    ExpectClass<AdvancedMaterialEffectES20>(cache, EffectCache::AdvancedMaterial);
    ExpectClass<AdvancedMaterialPhongEffectES20>(cache, EffectCache::AdvancedMaterialPhong);
}

TEST_F(EffectCacheTest, TwoRequestsGiveOneObjectWithTwoReferences)
{
    EffectCache cache;
    EffectES20* effect = cache.GetEffect(EffectCache::BasicMaterial);
    EXPECT_EQ(cache.GetEffect(EffectCache::BasicMaterial), effect);
    EXPECT_EQ(effect->GetReferenceCount(), 2);
    EXPECT_FALSE(effect->Release());
    EXPECT_TRUE(effect->Release());
}

TEST_F(EffectCacheTest, AfterTheLastReleaseTheNextRequestMakesANewEffect)
{
    EffectCache cache;
    EffectES20* first = cache.GetEffect(EffectCache::Sky);
    EXPECT_EQ(gl.Count("glLinkProgram"), 1u);
    EXPECT_TRUE(first->Release());
    EffectES20* second = cache.GetEffect(EffectCache::Sky);
    EXPECT_EQ(gl.Count("glLinkProgram"), 2u);
    EXPECT_EQ(second->GetReferenceCount(), 1);
    second->Release();
}

TEST_F(EffectCacheTest, ATypeWithoutAClassGivesNullAgainAndAgain)
{
    EffectCache cache;
    for (const int type : {-1, 18, 1000})
    {
        const auto effectType = static_cast<EffectCache::EffectType>(type);
        EXPECT_EQ(cache.GetEffect(effectType), nullptr) << type;
        EXPECT_EQ(cache.GetEffect(effectType), nullptr) << type;
    }
}

TEST_F(EffectCacheTest, ANullEntryDoesNotStopTheDestructor)
{
    auto cache = std::make_unique<EffectCache>();
    cache->GetEffect(static_cast<EffectCache::EffectType>(-1));
    EffectES20* effect = cache->GetEffect(EffectCache::Sky);
    cache->GetEffect(static_cast<EffectCache::EffectType>(99));
    effect->AddReference();
    cache.reset();
    EXPECT_EQ(effect->GetReferenceCount(), 1);
    effect->Release();
}

TEST_F(EffectCacheTest, RemovingAnEffectLeavesItAlive)
{
    EffectCache cache;
    EffectES20* effect = cache.GetEffect(EffectCache::BasicMaterial);
    cache.RemoveEffect(effect);
    EXPECT_EQ(effect->GetReferenceCount(), 1);
    EffectES20* other = cache.GetEffect(EffectCache::BasicMaterial);
    EXPECT_NE(other, effect);
    EXPECT_EQ(other->GetReferenceCount(), 1);
    effect->Release();
    EXPECT_EQ(cache.GetEffect(EffectCache::BasicMaterial), other);
    other->Release();
    other->Release();
}

TEST_F(EffectCacheTest, RemovingAStrangerDoesNothing)
{
    EffectCache cache;
    EffectCache other;
    EffectES20* mine = cache.GetEffect(EffectCache::BasicMaterial);
    EffectES20* foreign = other.GetEffect(EffectCache::BasicMaterial);
    cache.RemoveEffect(foreign);
    EXPECT_EQ(cache.GetEffect(EffectCache::BasicMaterial), mine);
    mine->Release();
    mine->Release();
    foreign->Release();
}

TEST_F(EffectCacheTest, TheDestructorDestroysAnEffectOfOneReference)
{
    auto cache = std::make_unique<EffectCache>();
    cache->GetEffect(EffectCache::Sky);
    EXPECT_EQ(gl.Live(GLObjectKind::Program).size(), 1u);
    cache.reset();
    EXPECT_EQ(gl.Live(GLObjectKind::Program).size(), 0u);
}

TEST_F(EffectCacheTest, AnEffectOfMoreReferencesOutlivesTheCacheMinusOne)
{
    auto cache = std::make_unique<EffectCache>();
    EffectES20* effect = cache->GetEffect(EffectCache::Sky);
    cache->GetEffect(EffectCache::Sky);
    cache->GetEffect(EffectCache::Sky);
    cache.reset();
    EXPECT_EQ(effect->GetReferenceCount(), 2);
    EXPECT_EQ(effect->GetCache(), nullptr);
    EXPECT_FALSE(effect->Release());
    EXPECT_TRUE(effect->Release());
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST_F(EffectCacheTest, WatchersReleaseBeforeTheDestructorCounts)
{
    auto cache = std::make_unique<EffectCache>();
    Holder first(*cache, EffectCache::Sky);
    Holder second(*cache, EffectCache::Sky);
    EXPECT_EQ(first.Get()->GetReferenceCount(), 2);
    cache.reset();
    EXPECT_EQ(first.Get(), nullptr);
    EXPECT_EQ(second.Get(), nullptr);
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST_F(EffectCacheTest, PlaceholdersSurviveTheCache)
{
    for (int count = 1; count <= 2; ++count)
    {
        auto cache = std::make_unique<EffectCache>();
        Holder holder(*cache, EffectCache::Sky);
        EffectES20* effect = holder.Get();
        std::vector<std::unique_ptr<EffectReferencePlaceholder>> placeholders;
        for (int i = 0; i < count; ++i)
        {
            placeholders.push_back(std::make_unique<EffectReferencePlaceholder>(effect));
        }
        cache.reset();
        EXPECT_EQ(effect->GetReferenceCount(), count);
        EXPECT_EQ(effect->GetCache(), nullptr);
        placeholders.resize(1);
        EXPECT_EQ(gl.Live(GLObjectKind::Program).size(), 1u);
        placeholders.clear();
        EXPECT_EQ(gl.LiveCount(), 0u);
    }
}

TEST_F(EffectCacheTest, ACopyListsTheSameEffectsAndCountsNothing)
{
    EffectCache cache;
    EffectES20* effect = cache.GetEffect(EffectCache::BasicMaterial);
    EffectCache copy(cache);
    EffectCache assigned;
    assigned = cache;
    EXPECT_EQ(effect->GetReferenceCount(), 1);
    EXPECT_EQ(copy.GetEffect(EffectCache::BasicMaterial), effect);
    EXPECT_EQ(assigned.GetEffect(EffectCache::BasicMaterial), effect);
    EXPECT_EQ(effect->GetReferenceCount(), 3);
    EXPECT_EQ(effect->GetCache(), &cache);
    for (int i = 0; i < 3; ++i)
    {
        effect->Release();
    }
}

TEST_F(EffectCacheTest, AnEffectThatDiesLeavesEveryCopy)
{
    EffectCache cache;
    EffectES20* effect = cache.GetEffect(EffectCache::Sky);
    EffectCache copy(cache);
    effect->Release();
    EffectES20* fresh = copy.GetEffect(EffectCache::Sky);
    EXPECT_EQ(gl.Count("glLinkProgram"), 2u);
    EXPECT_EQ(fresh->GetReferenceCount(), 1);
    EXPECT_EQ(fresh->GetCache(), &copy);
    fresh->Release();
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST_F(EffectCacheTest, CopiesMayDieInEitherOrder)
{
    for (const bool originalFirst : {true, false})
    {
        auto original = std::make_unique<EffectCache>();
        Holder holder(*original, EffectCache::Sky);
        EffectES20* loose = original->GetEffect(EffectCache::BasicMaterial);
        loose->AddReference();
        loose->AddReference();
        auto copy = std::make_unique<EffectCache>(*original);
        (originalFirst ? original : copy).reset();
        EXPECT_EQ(holder.Get(), nullptr);
        EXPECT_EQ(loose->GetReferenceCount(), 2);
        EXPECT_EQ(loose->GetCache(), originalFirst ? copy.get() : original.get());
        (originalFirst ? copy : original).reset();
        EXPECT_EQ(loose->GetReferenceCount(), 1);
        EXPECT_EQ(loose->GetCache(), nullptr);
        loose->Release();
        EXPECT_EQ(gl.LiveCount(), 0u);
    }
}

TEST_F(EffectCacheTest, AssignmentLetsGoOfTheEffectsItListed)
{
    auto cache = std::make_unique<EffectCache>();
    EffectES20* effect = cache->GetEffect(EffectCache::Sky);
    *cache = EffectCache();
    EXPECT_EQ(effect->GetReferenceCount(), 1);
    EXPECT_EQ(effect->GetCache(), nullptr);
    cache.reset();
    EXPECT_TRUE(effect->Release());
}

TEST_F(EffectCacheTest, AssignmentToItselfChangesNothing)
{
    EffectCache cache;
    EffectES20* effect = cache.GetEffect(EffectCache::Sky);
    EffectCache& same = cache;
    cache = same;
    EXPECT_EQ(effect->GetCache(), &cache);
    EXPECT_EQ(cache.GetEffect(EffectCache::Sky), effect);
    effect->Release();
    effect->Release();
}

TEST_F(EffectCacheTest, ThePhongTypeStandsInForTheAdvancedMaterialOneWayOnly)
{
    /// Lists effects of another class in the places of the two advanced ones.
    class PlantedCache : public EffectCache
    {
    public:
        EffectES20* Plant(EffectType type)
        {
            return m_effects[type] = new BasicMaterialEffectES20(this, false);
        }
    };
    PlantedCache cache;
    EffectES20* plain = cache.Plant(EffectCache::AdvancedMaterial);
    EffectES20* phong = cache.Plant(EffectCache::AdvancedMaterialPhong);

    EXPECT_EQ(cache.GetEffect(EffectCache::AdvancedMaterial), plain);
    EXPECT_EQ(cache.GetEffect(EffectCache::AdvancedMaterialPhong), phong);

    EffectES20::SetAdvancedMaterialShaderType(EffectCache::AdvancedMaterialPhong);
    EXPECT_EQ(cache.GetEffect(EffectCache::AdvancedMaterial), phong);
    EXPECT_EQ(cache.GetEffect(EffectCache::AdvancedMaterialPhong), phong);
    EXPECT_EQ(plain->GetReferenceCount(), 2);
    EXPECT_EQ(phong->GetReferenceCount(), 4);
    while (!plain->Release())
    {
    }
    while (!phong->Release())
    {
    }
}

TEST_F(EffectCacheTest, APlaceholderTakesAndGivesBackAReference)
{
    EffectCache cache;
    EffectES20* effect = cache.GetEffect(EffectCache::BasicMaterial);
    {
        const EffectReferencePlaceholder placeholder(effect);
        EXPECT_EQ(effect->GetReferenceCount(), 2);
    }
    EXPECT_EQ(effect->GetReferenceCount(), 1);
    effect->Release();
}

TEST_F(EffectCacheTest, APlaceholderDestroysTheEffectWithTheLastReference)
{
    EffectCache cache;
    EffectES20* effect = cache.GetEffect(EffectCache::Sky);
    {
        const EffectReferencePlaceholder placeholder(effect);
        EXPECT_FALSE(effect->Release());
        EXPECT_EQ(gl.Live(GLObjectKind::Program).size(), 1u);
    }
    EXPECT_EQ(gl.LiveCount(), 0u);
}

TEST_F(EffectCacheTest, APlaceholderOfNoEffectIsHarmless)
{
    const EffectReferencePlaceholder placeholder(nullptr);
}

} // namespace OV::Test
