#include "apps/viewer/Actions.h"

#include "apps/viewer/Gui.h"
#include "apps/viewer/Input.h"
#include "apps/viewer/Viewer.h"

namespace OV::ViewerApp
{

namespace
{

/// Pixels of a drag that turns as far as a key does.
constexpr double KeyTurn = 30.0;
/// Metres of a step.
constexpr double WalkStep = 0.5;
/// Pixels of a movement by a key.
constexpr double KeyPan = 40.0;

template <Host::NamedView View>
void Look(Viewer& viewer)
{
    viewer.GetDesk().TurnTo(View);
}

/// Changes settings by a function of its own.
template <typename Change>
void Set(Viewer& viewer, Change change)
{
    Host::PresentationSettings settings = viewer.GetDesk().GetSettings();
    change(settings);
    viewer.GetDesk().Apply(settings);
}

void Turn(Viewer& viewer, double x, double y)
{
    viewer.GetDesk().GetNavigator().OrbitBy({x, y});
    viewer.GetDesk().FollowNavigator();
}

void Pan(Viewer& viewer, double x, double y)
{
    viewer.GetDesk().GetNavigator().PanBy({x, y});
    viewer.GetDesk().FollowNavigator();
}

void LookAround(Viewer& viewer, double x)
{
    viewer.GetDesk().GetNavigator().LookAround({-x, 0.0});
    viewer.GetDesk().FollowNavigator();
}

void Zoom(Viewer& viewer, double steps)
{
    viewer.GetDesk().GetNavigator().Zoom(steps);
    viewer.GetDesk().FollowNavigator();
}

void TogglePerspective(Viewer& viewer)
{
    Set(viewer, [](Host::PresentationSettings& settings) { settings.view.orthographic = !settings.view.orthographic; });
}

void ToggleLines(Viewer& viewer)
{
    Set(viewer, [](Host::PresentationSettings& settings)
        {
            settings.lines = settings.lines ? std::nullopt : std::optional<Host::LineSettings>(Host::LineSettings());
        });
}

void ToggleOcclusion(Viewer& viewer)
{
    Set(viewer, [](Host::PresentationSettings& settings) { settings.occlusion = !settings.occlusion; });
}

void TurnMeasure(Viewer& viewer, Measure::Kind kind)
{
    Measure& measure = viewer.GetMeasure();
    measure.Turn(kind);
    const std::string name = measure.GetKind() == Measure::Kind::Angle ? "Angle: " : "Distance: ";
    viewer.GetDesk().Tell(measure.IsOn() ? name + measure.Text() : std::string());
}

const char* LackOfModel(Viewer& viewer)
{
    return viewer.GetDesk().GetModel() ? nullptr : "There is no model; Ctrl+O opens one.";
}

const char* LackOfSelection(Viewer& viewer)
{
    return viewer.GetDesk().GetSelection().empty() ? "Nothing is selected; click something first." : nullptr;
}

const char* LackOfEdited(Viewer& viewer)
{
    return viewer.GetDesk().GetSettings().editPath.empty() ? LackOfSelection(viewer) : nullptr;
}

const char* LackOfMeasure(Viewer& viewer)
{
    const Host::Presentation* const model = viewer.GetDesk().GetModel();
    return model && !model->GetDimensions().empty() ? nullptr : "There is no measure to take away.";
}

const char* LackOfNote(Viewer& viewer)
{
    const char* const lack = LackOfMeasure(viewer);
    return lack && viewer.GetDesk().GetLabels().empty() ? "There is no measure and no name to take away." : nullptr;
}

void Escape(Viewer& viewer)
{
    // A field is left by the key itself.
    if (viewer.GetGui().CloseMenus() || viewer.GetPanels().CloseTop() || viewer.GetGui().WantsKeys())
    {
        return;
    }
    if (viewer.GetMeasure().IsOn())
    {
        TurnMeasure(viewer, Measure::Kind::Off);
        return;
    }
    if (viewer.GetDesk().IsOpening())
    {
        viewer.GetDesk().CancelOpening();
        return;
    }
    viewer.GetDesk().Select({});
}

} // namespace

const std::vector<Action>& ListActions()
{
    using Host::NamedView;
    static const std::vector<Action> actions = {
        {"File", "ctrl+o", "Open...", [](Viewer& viewer) { viewer.GetPanels().AskForFile(); }},
        {"File", "shift+ctrl+o", "Open beside what is there...", [](Viewer& viewer) { viewer.GetPanels().AskForFile(true); }},
        {"File", "ctrl+r", "Read the files again", [](Viewer& viewer) { viewer.GetDesk().OpenAgain(); }, LackOfModel},
        {"File", "ctrl+s", "Save a picture...", [](Viewer& viewer) { viewer.GetPanels().AskForPicture(); }, LackOfModel},
        {"File", "ctrl+c", "Copy as a command", [](Viewer& viewer) { viewer.CopyCommand(); }, LackOfModel},
        {"File", "ctrl+q", "Quit", [](Viewer& viewer) { viewer.Close(); }},
        {"View", "f", "Fit what is shown", [](Viewer& viewer) { viewer.GetDesk().Fit(); }, LackOfModel},
        {"View", "shift+f", "Fit the selection",
         [](Viewer& viewer) { viewer.GetDesk().FitSelection(); }, LackOfSelection},
        {"View", "1", "From a corner", Look<NamedView::Iso>},
        {"View", "2", "Front", Look<NamedView::Front>},
        {"View", "3", "Back", Look<NamedView::Back>},
        {"View", "4", "Left", Look<NamedView::Left>},
        {"View", "5", "Right", Look<NamedView::Right>},
        {"View", "6", "Top", Look<NamedView::Top>},
        {"View", "7", "Bottom", Look<NamedView::Bottom>},
        {"View", "p", "With or without perspective", TogglePerspective},
        {"View", "left", "Turn left", [](Viewer& viewer) { Turn(viewer, KeyTurn, 0.0); }},
        {"View", "right", "Turn right", [](Viewer& viewer) { Turn(viewer, -KeyTurn, 0.0); }},
        {"View", "up", "Turn up", [](Viewer& viewer) { Turn(viewer, 0.0, KeyTurn); }},
        {"View", "down", "Turn down", [](Viewer& viewer) { Turn(viewer, 0.0, -KeyTurn); }},
        {"View", "shift+left", "Move left", [](Viewer& viewer) { Pan(viewer, KeyPan, 0.0); }},
        {"View", "shift+right", "Move right", [](Viewer& viewer) { Pan(viewer, -KeyPan, 0.0); }},
        {"View", "shift+up", "Move up", [](Viewer& viewer) { Pan(viewer, 0.0, KeyPan); }},
        {"View", "shift+down", "Move down", [](Viewer& viewer) { Pan(viewer, 0.0, -KeyPan); }},
        {"View", "page-up", "Come nearer", [](Viewer& viewer) { Zoom(viewer, 1.0); }},
        {"View", "page-down", "Go away", [](Viewer& viewer) { Zoom(viewer, -1.0); }},
        {"Model", "h", "Hide the selection", [](Viewer& viewer) { viewer.GetDesk().HideSelection(); }, LackOfSelection},
        {"Model", "i", "Show the selection alone",
         [](Viewer& viewer) { viewer.GetDesk().IsolateSelection(); }, LackOfSelection},
        {"Model", "shift+h", "Show all", [](Viewer& viewer) { viewer.GetDesk().ShowAll(); }},
        {"Model", "e", "Edit the selection in context",
         [](Viewer& viewer) { viewer.GetDesk().EditSelection(); }, LackOfEdited},
        {"Model", "l", "Lines on or off", ToggleLines},
        {"Model", "n", "Name the selection in the picture",
         [](Viewer& viewer) { viewer.GetDesk().LabelSelection(); }, LackOfSelection},
        {"Model", "o", "Dark corners on or off", ToggleOcclusion},
        {"Walk", "w", "Forward", [](Viewer& viewer) { viewer.GetDesk().Walk(WalkStep); }, LackOfModel},
        {"Walk", "s", "Back", [](Viewer& viewer) { viewer.GetDesk().Walk(-WalkStep); }, LackOfModel},
        {"Walk", "a", "Turn the head left", [](Viewer& viewer) { LookAround(viewer, -KeyTurn); }},
        {"Walk", "d", "Turn the head right", [](Viewer& viewer) { LookAround(viewer, KeyTurn); }},
        {"Tools", "m", "Measure a distance",
         [](Viewer& viewer) { TurnMeasure(viewer, Measure::Kind::Distance); }, LackOfModel},
        {"Tools", "shift+m", "Measure an angle",
         [](Viewer& viewer) { TurnMeasure(viewer, Measure::Kind::Angle); }, LackOfModel},
        {"Tools", "delete", "Take the last measure away",
         [](Viewer& viewer) { viewer.GetDesk().RemoveLastDimension(); }, LackOfMeasure},
        {"Tools", "shift+delete", "Take measures and names away",
         [](Viewer& viewer) { viewer.GetDesk().ClearNotes(); }, LackOfNote},
        {"Tools", "escape", "Leave a tool, a panel or the selection", Escape},
        {"Tools", "tab", "Panels on or off", [](Viewer& viewer) { viewer.GetPanels().ToggleSides(); }},
        {"Debug", "f9", "Lose the GL context", [](Viewer& viewer) { viewer.LoseContext(); }},
        {"Help", "?", "Keys", [](Viewer& viewer) { viewer.GetPanels().ToggleHelp(); }},
    };
    return actions;
}

const char* LackOf(const Action& action, Viewer& viewer)
{
    return action.lack ? action.lack(viewer) : nullptr;
}

bool RunActionOf(Viewer& viewer, int key, unsigned modifiers)
{
    for (const Action& action : ListActions())
    {
        int wanted = KeyNone;
        unsigned held = ModifierNone;
        if (ParseKey(action.key, wanted, held) && wanted == key && held == modifiers)
        {
            const char* const lack = LackOf(action, viewer);
            if (lack)
            {
                viewer.GetDesk().Tell(lack);
                return true;
            }
            action.run(viewer);
            return true;
        }
    }
    return false;
}

} // namespace OV::ViewerApp
