#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/orvane_host/present/SettingsDice.h"
#include "tests/support/HeapCount.h"

#include "orvane/scene/MeshNode.h"
#include "orvane/scene/Scene.h"

#include <cstdlib>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

/// Before any GL: a driver that draws compiles its own code as it goes and gives memory back as it
/// likes, which would hide what is looked for.
const bool isDrawingDropped = ::setenv("GALLIUM_NOOP", "1", 1) == 0;

class PresentationHeap : public PresentationFixture
{
};

} // namespace

TEST_F(PresentationHeap, IsWhatItWasAfterEachRoundOfChanges)
{
    ASSERT_TRUE(isDrawingDropped);
    const std::unique_ptr<Host::Presentation> walker = PresentBoxes();
    const PresentationSettings start = walker->GetSettings();
    const std::vector<std::string> paths = walker->ListNodes();
    // What is made on demand and kept, such as programs and the buffers of the stages, is made in
    // the first round.
    std::size_t bytes = 0;
    for (int round = 0; round < 3; ++round)
    {
        Dice dice(3);
        for (int step = 0; step < 300; ++step)
        {
            PresentationSettings wanted = walker->GetSettings();
            Change(wanted, dice, paths);
            Apply(*walker, wanted);
            walker->Draw(SmallWidth, SmallHeight);
        }
        Apply(*walker, start);
        walker->Draw(SmallWidth, SmallHeight);
        bytes = round == 0 ? HeapBytes() : bytes;
        EXPECT_LE(HeapBytes(), bytes + bytes / 1000) << "round " << round;
    }
}

TEST_F(PresentationHeap, PathsAreLookedUpAndNotWorkedOutEachTime)
{
    const std::unique_ptr<Host::Presentation> walker = PresentBoxes();
    Node* const twin = walker->FindNode("twin");
    ASSERT_TRUE(twin);
    for (int i = 0; i < 1000; ++i)
    {
        auto* const node = new MeshNode(&walker->GetScene());
        twin->AddChild(node, false);
        walker->AddName(*node, "n" + std::to_string(i));
    }
    const Node* const last = walker->FindNode("twin/n999");
    ASSERT_TRUE(last);
    const std::size_t before = HeapCount();
    EXPECT_EQ(walker->FindNode("twin/n999"), last);
    EXPECT_EQ(walker->PathOf(*last), "house/twin/n999");
    EXPECT_EQ(walker->FindNode("n5/n999"), nullptr);
    EXPECT_LT(HeapCount() - before, 50u);
}

} // namespace OV::Test
