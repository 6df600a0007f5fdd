#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/orvane_host/present/SettingsDice.h"
#include "tests/support/HeapCount.h"

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

} // namespace OV::Test
