#include "orvane/base/Lifetime.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

namespace OV::Test
{

namespace
{

void Count(void* counter)
{
    ++*static_cast<int*>(counter);
}

} // namespace

TEST(Lifetime, TellsEveryWatcherOnceAtItsEnd)
{
    int first = 0;
    int second = 0;
    LifetimeWatch watch;
    LifetimeWatch other;
    LifetimeWatch silent;
    {
        Lifetime life;
        watch.Watch(life, &Count, &first);
        other.Watch(life, &Count, &second);
        silent.Watch(life);
        EXPECT_TRUE(watch.IsAlive());
        EXPECT_TRUE(silent.IsAlive());
        EXPECT_EQ(first, 0);
    }
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 1);
    EXPECT_FALSE(watch.IsAlive());
    EXPECT_FALSE(other.IsAlive());
    EXPECT_FALSE(silent.IsAlive());
}

TEST(Lifetime, MayEndAheadOfItsOwner)
{
    int notices = 0;
    Lifetime life;
    LifetimeWatch watch;
    watch.Watch(life, &Count, &notices);
    life.End();
    EXPECT_EQ(notices, 1);
    EXPECT_FALSE(watch.IsAlive());
    life.End();
    EXPECT_EQ(notices, 1);
    // It can be watched again.
    watch.Watch(life, &Count, &notices);
    EXPECT_TRUE(watch.IsAlive());
}

TEST(Lifetime, AStoppedWatchIsNotTold)
{
    int notices = 0;
    auto life = std::make_unique<Lifetime>();
    LifetimeWatch watch;
    watch.Stop();
    watch.Watch(*life, &Count, &notices);
    watch.Stop();
    EXPECT_FALSE(watch.IsAlive());
    life.reset();
    EXPECT_EQ(notices, 0);
}

TEST(Lifetime, AWatchMovesToAnotherLife)
{
    int notices = 0;
    auto first = std::make_unique<Lifetime>();
    auto second = std::make_unique<Lifetime>();
    LifetimeWatch watch;
    watch.Watch(*first, &Count, &notices);
    watch.Watch(*second, &Count, &notices);
    first.reset();
    EXPECT_EQ(notices, 0);
    EXPECT_TRUE(watch.IsAlive());
    second.reset();
    EXPECT_EQ(notices, 1);
}

TEST(Lifetime, WatchesMayGoInAnyOrderBeforeIt)
{
    for (const std::vector<int>& order :
         {std::vector<int>{0, 1, 2}, {0, 2, 1}, {1, 0, 2}, {1, 2, 0}, {2, 0, 1}, {2, 1, 0}})
    {
        int notices = 0;
        Lifetime life;
        std::optional<LifetimeWatch> watches[3];
        for (auto& watch : watches)
        {
            watch.emplace();
            watch->Watch(life, &Count, &notices);
        }
        watches[order[0]].reset();
        watches[order[1]].reset();
        EXPECT_TRUE(watches[order[2]]->IsAlive());
        life.End();
        EXPECT_EQ(notices, 1);
    }
}

TEST(Lifetime, ANoticeMayEndOtherWatchesAndItsOwn)
{
    struct Holder
    {
        std::vector<std::unique_ptr<LifetimeWatch>> watches;
        int notices = 0;

        static void Drop(void* self)
        {
            auto* holder = static_cast<Holder*>(self);
            ++holder->notices;
            holder->watches.clear();
        }
    };
    Holder holder;
    auto life = std::make_unique<Lifetime>();
    for (int i = 0; i < 4; ++i)
    {
        holder.watches.push_back(std::make_unique<LifetimeWatch>());
        holder.watches.back()->Watch(*life, &Holder::Drop, &holder);
    }
    life.reset();
    EXPECT_EQ(holder.notices, 1);
}

TEST(Lifetime, ACopyIsALifeOfItsOwn)
{
    int notices = 0;
    auto life = std::make_unique<Lifetime>();
    LifetimeWatch watch;
    watch.Watch(*life, &Count, &notices);
    {
        const Lifetime copy(*life);
        LifetimeWatch other;
        Lifetime assigned;
        other.Watch(assigned, &Count, &notices);
        assigned = *life;
        EXPECT_TRUE(other.IsAlive());
        EXPECT_EQ(notices, 0);
    }
    EXPECT_EQ(notices, 1);
    EXPECT_TRUE(watch.IsAlive());
    life.reset();
    EXPECT_EQ(notices, 2);
}

} // namespace OV::Test
