#include "tests/orvane_host/present/PresentationModels.h"
#include "tests/support/LocaleScope.h"
#include "tests/support/TemporaryFolder.h"

#include "orvane/engine/AppContext.h"
#include "orvane/engine/CoreContext.h"
#include "orvane/math/Transform.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/MeshNode.h"
#include "orvane_host/present/PresentationRenderer.h"
#include "tests/support/Golden.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <clocale>
#include <locale.h>

namespace OV::Test
{

namespace
{

using Host::PresentationSettings;

class PresentationNotes : public PresentationFixture
{
protected:
    PresentationNotes() : PresentationFixture(320, 240), presentation(PresentBoxes())
    {
        PresentationSettings front;
        front.view.named = Host::NamedView::Front;
        Apply(*presentation, front);
    }

    std::vector<std::string> Words() const
    {
        std::vector<std::string> words;
        for (Text* text : presentation->GetForeground().GetTexts())
        {
            words.push_back(text->GetText());
        }
        return words;
    }

    Vector PlaceOf(const std::string& word) const
    {
        for (Text* text : presentation->GetForeground().GetTexts())
        {
            if (text->GetText() == word)
            {
                return text->GetInstance(0)->GetGlobal().GetPosition();
            }
        }
        ADD_FAILURE() << "there is no " << word;
        return Vector();
    }

    std::unique_ptr<Host::Presentation> presentation;
};

using WordList = std::vector<std::string>;

TEST_F(PresentationNotes, AreDrawnAndTakenBack)
{
    const Picture without = Draw(*presentation);
    EXPECT_TRUE(presentation->SetDimensions({{{{-2.0, 0.0, 1.0}, {-1.0, 0.0, 1.0}}}}));
    EXPECT_TRUE(presentation->AddLabel("right/roof"));
    EXPECT_TRUE(presentation->AddLabel("left", "The tower"));
    EXPECT_FALSE(presentation->AddLabel("attic"));
    EXPECT_TRUE(presentation->NeedsDraw());
    EXPECT_TRUE(Draw(*presentation) != without);
    EXPECT_FALSE(presentation->NeedsDraw());
    EXPECT_EQ(Words(), (WordList{"1", "roof", "The tower"}));
    EXPECT_TRUE(presentation->RemoveLabel("roof"));
    presentation->SetDimensions({});
    Draw(*presentation);
    EXPECT_EQ(Words(), WordList{"The tower"});
    presentation->ClearLabels();
    ExpectSame(Draw(*presentation), without, "all taken back");
}

TEST_F(PresentationNotes, ALabelLeavesOutWhatOnlyProgramsRead)
{
    presentation->AddName(*presentation->FindNode("left"), "IfcWall_A-1_25fsbPyk15VvuXI$yNKenK");
    ASSERT_TRUE(presentation->AddLabel("IfcWall_A-1_25fsbPyk15VvuXI$yNKenK"));
    Draw(*presentation);
    EXPECT_EQ(Words(), WordList{"A-1"});
}

TEST_F(PresentationNotes, WrongDimensionsAreRefusedAndChangeNothing)
{
    const Host::Dimension good{{{0, 0, 0}, {1, 0, 0}}};
    ASSERT_TRUE(presentation->SetDimensions({good}));
    EXPECT_FALSE(presentation->SetDimensions({good, {{{0, 0, 0}}}}));
    EXPECT_FALSE(presentation->SetDimensions({{{{0, 0, 0}, {NAN, 0, 0}}}}));
    EXPECT_EQ(presentation->GetDimensions().size(), 1u);
}

TEST_F(PresentationNotes, ALabelFollowsItsNodeAndTheView)
{
    presentation->AddLabel("twin");
    presentation->AddLabel("left");
    Draw(*presentation);
    const Vector twin = PlaceOf("twin");
    const Vector left = PlaceOf("left");
    Node* const node = presentation->FindNode("twin");
    Transform place = node->GetLocal();
    Vector position = place.GetPosition();
    place.SetPosition(Vector(position.x, position.y + 1.0f, position.z));
    node->SetLocal(place);
    Draw(*presentation);
    EXPECT_GT(PlaceOf("twin").y, twin.y + 10.0f);
    EXPECT_EQ(PlaceOf("twin").x, twin.x);
    EXPECT_EQ(PlaceOf("left").y, left.y);
    presentation->SetCamera(Vector(1, 0, 20), Vector(1, 0, 0));
    Draw(*presentation);
    EXPECT_NE(PlaceOf("left").x, left.x);
}

TEST_F(PresentationNotes, ALabelIsNotSeenWhileItsNodeIsNot)
{
    presentation->AddLabel("left");
    presentation->AddLabel("right");
    Draw(*presentation);
    presentation->Hide("left");
    Draw(*presentation);
    EXPECT_EQ(Words(), WordList{"right"});
    presentation->ShowAll();
    PresentationSettings cut = presentation->GetSettings();
    cut.section.planes = {{Vector(1, 0, 0), Vector(-0.3f, 0, 0)}};
    Apply(*presentation, cut);
    Draw(*presentation);
    EXPECT_EQ(Words(), WordList{"left"});
    cut.section.planes.clear();
    Apply(*presentation, cut);
    Draw(*presentation);
    EXPECT_EQ(Words(), (WordList{"left", "right"}));
}

TEST_F(PresentationNotes, ComeWithSavedPicturesOfAnySize)
{
    const TemporaryFolder folder;
    const auto save = [&](const std::string& name)
    {
        std::string error;
        EXPECT_TRUE(presentation->SavePicture(folder.Path(name), 640, 480, error)) << error;
        return LoadPicture(folder.Path(name));
    };
    const Picture without = save("without.png");
    presentation->SetDimensions({{{{-2.0, 0.0, 1.0}, {2.0, 0.0, 1.0}}}});
    const Picture drawn = Draw(*presentation);
    const Picture with = save("with.png");
    EXPECT_TRUE(with != without);
    ExpectSame(Draw(*presentation), drawn, "after saving in another size");
    EXPECT_FALSE(presentation->NeedsDraw());
}

TEST_F(PresentationNotes, AreDrawnOverTheCaptureWhereNothingElseChanged)
{
    PresentationSettings captured = presentation->GetSettings();
    captured.antialiasing = Host::Antialiasing::Supersampling;
    Apply(*presentation, captured);
    Draw(*presentation);
    presentation->SetDimensions({{{{-2.0, 0.0, 1.0}, {2.0, 0.0, 1.0}}}});
    presentation->AddLabel("roof");
    // A renderer that draws nothing of the scene shows it all the same.
    presentation->GetRenderer().ShowSurfaces(false);
    const Picture over = Draw(*presentation);
    presentation->GetRenderer().ShowSurfaces(true);
    const auto fresh = PresentBoxes();
    Apply(*fresh, captured);
    fresh->SetDimensions(presentation->GetDimensions());
    fresh->AddLabel("roof");
    ExpectSame(Draw(*fresh), over, "as drawn in one go");
}

TEST_F(PresentationNotes, HaveAllLettersInAProgramThatHasSetNoLocale)
{
    const auto drawIn = [this](const char* locale, const std::string& word) {
        const LocaleScope scope(locale);
        const auto made = PresentBoxes();
        PresentationSettings wanted;
        wanted.sheet.title = word;
        Apply(*made, wanted);
        made->AddLabel("left", word);
        // An angle, whose number has a sign that isn't of ASCII.
        made->SetDimensions({{{{0.0, 1.0, 0.0}, {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}}}});
        const Picture picture = Draw(*made);
        EXPECT_STREQ(std::setlocale(LC_CTYPE, nullptr), locale);
        EXPECT_EQ(uselocale(nullptr), LC_GLOBAL_LOCALE);
        return picture;
    };
    const std::string word = "T\u00fcr \u03a9";
    const Picture expected = drawIn("C.UTF-8", word);
    ExpectSame(drawIn("C", word), expected, "without a locale");
    EXPECT_TRUE(drawIn("C", "T\u00fcr O") != expected);
}

TEST_F(PresentationNotes, HaveTheUnitThatTheHostTells)
{
    PresentationSettings wanted = presentation->GetSettings();
    wanted.sheet.scaleBar = true;
    Apply(*presentation, wanted);
    presentation->SetDimensions({{{{-2.0, 0.0, 1.0}, {-1.0, 0.0, 1.0}}}});
    Draw(*presentation);
    EXPECT_EQ(presentation->GetUnit(), "");
    EXPECT_THAT(Words(), ::testing::Contains("1"));
    EXPECT_TRUE(presentation->SetUnit(0.01));
    EXPECT_TRUE(presentation->NeedsDraw());
    Draw(*presentation);
    EXPECT_THAT(Words(), ::testing::Contains("1 cm"));
    EXPECT_THAT(Words(), ::testing::Contains(::testing::MatchesRegex("[0-9.]+ cm")).Times(2)) << "of the scale bar too";
    // A scene in place of this one is in the same unit.
    presentation->GetContext().GetContext()->SetScene(MakeBoxes().scene);
    Draw(*presentation);
    EXPECT_EQ(presentation->GetUnit(), "cm");
}

TEST_F(PresentationNotes, SurviveALostContext)
{
    presentation->SetDimensions({{{{-2.0, 0.0, 1.0}, {2.0, 0.0, 1.0}}}});
    presentation->AddLabel("roof");
    const Picture before = Draw(*presentation);
    presentation->Suspend();
    presentation->Resume();
    ExpectSame(Draw(*presentation), before, "with a context again");
}

} // namespace

} // namespace OV::Test
