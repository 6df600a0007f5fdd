#include "orvane/base/WatchedPtr.h"

#include <gtest/gtest.h>

#include <memory>

namespace OV::Test
{

namespace
{

struct Thing
{
    Lifetime& GetLifetime() { return lifetime; }
    int value = 7;
    Lifetime lifetime;
};

TEST(WatchedPtr, StandsInForARawPointer)
{
    Thing thing;
    WatchedPtr<Thing> pointer = &thing;
    EXPECT_EQ(pointer, &thing);
    EXPECT_EQ(pointer->value, 7);
    Thing* raw = pointer;
    EXPECT_EQ(raw, &thing);
    pointer = nullptr;
    EXPECT_FALSE(pointer);
    const WatchedPtr<Thing> none;
    EXPECT_EQ(none.Get(), nullptr);
}

TEST(WatchedPtr, ReadsNullOnceItsObjectIsGone)
{
    auto thing = std::make_unique<Thing>();
    WatchedPtr<Thing> pointer = thing.get();
    const WatchedPtr<Thing> copy = pointer;
    thing.reset();
    EXPECT_FALSE(pointer);
    EXPECT_FALSE(copy);
    Thing other;
    pointer = &other;
    EXPECT_EQ(pointer, &other);
}

TEST(WatchedPtr, ACopyWatchesByItself)
{
    Thing first;
    auto second = std::make_unique<Thing>();
    WatchedPtr<Thing> pointer = &first;
    WatchedPtr<Thing> copy(pointer);
    pointer = second.get();
    EXPECT_EQ(copy, &first);
    copy = pointer;
    second.reset();
    EXPECT_FALSE(pointer);
    EXPECT_FALSE(copy);
    copy = *&copy;
    EXPECT_FALSE(copy);
}

TEST(WatchedPtr, MayGoBeforeItsObject)
{
    Thing thing;
    {
        const WatchedPtr<Thing> pointer = &thing;
        EXPECT_TRUE(pointer);
    }
    const WatchedPtr<Thing> next = &thing;
    EXPECT_TRUE(next);
}

}  // namespace

}  // namespace OV::Test
