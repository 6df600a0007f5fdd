#include "apps/viewer/Desk.h"

#include "apps/viewer/Walker.h"
#include "orvane/scene/Scene.h"

#include <glm/geometric.hpp>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

/// Seconds without movement after which a picture is drawn in full.
constexpr double RestSeconds = 0.2;
/// Seconds of a frame above which stages step back while something moves.
constexpr double SlowFrame = 1.0 / 30.0;
/// Across a model, for a person of full size to walk in it.
constexpr double LeastWalkedMetres = 2.0;
/// Seconds that something moves on at once.
constexpr double LongestStep = 0.05;

glm::dvec3 ToGlm(const Vector& vector)
{
    return {vector.x, vector.y, vector.z};
}

Host::PresentationSettings SteppedBack(Host::PresentationSettings settings)
{
    settings.occlusion = false;
    settings.antialiasing = Host::Antialiasing::None;
    return settings;
}

} // namespace

Desk::Desk(std::function<void()> wake) : m_wake(std::move(wake))
{
}

Desk::~Desk() = default;

std::string Desk::Update(double seconds)
{
    std::string opened;
    if (m_loading && m_loading->IsReady())
    {
        Host::ImportResult result = m_loading->Take();
        m_loading.reset();
        // The next one begins before this one is told.
        opened = result ? m_opened.path : std::string();
        TakeModel(std::move(result));
        BeginOpening();
    }
    LookAfterFile(seconds);
    // After a long wait the first step of what moves is a short one.
    seconds = std::min(seconds, LongestStep);
    if (m_navigator.IsTurning())
    {
        const bool isThere = m_navigator.Step(seconds);
        const std::optional<Host::ViewSettings> after = m_afterTurn;
        FollowNavigator();
        if (isThere && after)
        {
            ApplyView(*after);
            m_navigator.Follow(*m_model);
        }
    }
    else if (m_restIn > 0.0)
    {
        // Also while a button is held: a hand that stands still looks.
        m_restIn -= seconds;
        if (m_restIn <= 0.0 && std::exchange(m_stepsBack, false))
        {
            ApplyDrawn();
        }
    }
    return opened;
}

void Desk::ShowModel()
{
    if (m_width > 0 && m_height > 0)
    {
        m_model->Resize(m_width, m_height, m_ratio);
    }
    ApplyWhatStays();
    HideAgain();
    m_selection.erase(std::remove_if(m_selection.begin(), m_selection.end(),
                                     [this](const std::string& path) { return !m_model->FindNode(path); }),
                      m_selection.end());
    ShowSelection();
    ShowNotes();
    m_navigator.Stop();
    m_navigator.Follow(*m_model);
}

void Desk::ApplyWhatStays()
{
    using Settings = Host::PresentationSettings;
    // A node, a place and files are what another model, or another day, may not have.
    static constexpr struct
    {
        void (*leaveOut)(Settings&);
        bool isTold;
    } parts[] = {{[](Settings& settings) { settings.editPath.clear(); }, false},
                 {[](Settings& settings) { settings.sun.reset(); }, true},
                 {[](Settings& settings) { settings.sheet.watermark.clear(); }, true},
                 {[](Settings& settings) { settings.surroundings.clear(); }, true}};
    std::string error;
    while (!m_model->Apply(m_settings, error))
    {
        const std::string trouble = error;
        const auto part = std::find_if(std::begin(parts), std::end(parts),
                                       [&](const auto& candidate)
                                       {
                                           Settings without = m_settings;
                                           candidate.leaveOut(without);
                                           return without != m_settings
                                               && (m_model->Apply(without, error) || error != trouble);
                                       });
        if (part == std::end(parts))
        {
            m_settings = m_model->GetSettings();
            m_openingTrouble = trouble;
            return;
        }
        part->leaveOut(m_settings);
        if (part->isTold)
        {
            m_openingTrouble = trouble + "; it is left out";
        }
    }
}

bool Desk::Apply(const Host::PresentationSettings& settings)
{
    if (!m_model)
    {
        const std::string trouble = settings.Trouble();
        if (!trouble.empty())
        {
            TellTrouble(trouble);
            return false;
        }
        m_settings = settings;
        return true;
    }
    std::string error;
    if (!m_model->Apply(settings, error))
    {
        TellTrouble(error);
        return false;
    }
    const bool isOtherView = settings.view != m_settings.view;
    m_settings = settings;
    m_frameTime = 0.0;
    m_stepsBack = false;
    if (isOtherView)
    {
        m_afterTurn.reset();
        m_navigator.Stop();
        m_navigator.Follow(*m_model);
    }
    return true;
}

bool Desk::ApplyInMotion(const Host::PresentationSettings& settings)
{
    if (!m_model || m_frameTime <= SlowFrame)
    {
        return Apply(settings);
    }
    std::string error;
    if (!m_model->Apply(SteppedBack(settings), error))
    {
        TellTrouble(error);
        return false;
    }
    m_settings = settings;
    m_stepsBack = true;
    m_restIn = RestSeconds;
    return true;
}

void Desk::SetPicture(int width, int height, float ratio)
{
    if (width == m_width && height == m_height && ratio == m_ratio)
    {
        return;
    }
    m_width = width;
    m_height = height;
    m_ratio = ratio;
    m_navigator.SetPicture(width, height);
    if (m_model && width > 0 && height > 0)
    {
        m_model->Resize(width, height, ratio);
        if (!m_navigator.IsTurning() && m_navigator.GetDrag() == Navigator::Drag::None)
        {
            m_navigator.Follow(*m_model);
        }
    }
}

void Desk::FollowNavigator()
{
    if (!m_model)
    {
        return;
    }
    Host::ViewSettings view = m_settings.view;
    m_navigator.WriteTo(view);
    m_restIn = RestSeconds;
    if (m_frameTime > SlowFrame)
    {
        m_stepsBack = true;
    }
    if (!m_navigator.IsTurning())
    {
        m_afterTurn.reset();
    }
    ApplyView(view);
}

void Desk::ApplyView(const Host::ViewSettings& view)
{
    m_settings.view = view;
    ApplyDrawn();
}

void Desk::ApplyDrawn()
{
    if (!m_model)
    {
        return;
    }
    std::string error;
    if (!m_model->Apply(m_stepsBack ? SteppedBack(m_settings) : m_settings, error))
    {
        TellTrouble(error);
    }
}

void Desk::TurnTo(const Host::ViewSettings& view)
{
    if (!m_model)
    {
        m_settings.view = view;
        return;
    }
    const Host::OrbitState from = m_navigator.GetCamera().GetState();
    ApplyView(view);
    m_navigator.Follow(*m_model);
    m_navigator.TurnTo(from, m_navigator.GetCamera().GetState());
    m_restIn = RestSeconds;
    m_afterTurn = view;
}

void Desk::TurnTo(Host::NamedView named)
{
    Host::ViewSettings view = m_settings.view;
    view.named = named;
    view.eye.reset();
    view.target.reset();
    TurnTo(view);
}

void Desk::Fit()
{
    if (m_model && m_model->FrameShown())
    {
        const Host::ViewSettings view = m_model->GetSettings().view;
        TurnTo(view);
    }
}

void Desk::FitSelection()
{
    if (m_model && !m_selection.empty() && m_model->FrameNode(m_selection.front()))
    {
        const Host::ViewSettings view = m_model->GetSettings().view;
        TurnTo(view);
    }
}

std::optional<Host::PickHit> Desk::Pick(const glm::dvec2& pixel)
{
    const int x = static_cast<int>(std::floor(pixel.x));
    const int y = static_cast<int>(std::floor(pixel.y));
    if (!m_model || x < 0 || y < 0 || x >= m_width || y >= m_height)
    {
        return std::nullopt;
    }
    return m_model->Pick(x, y);
}

glm::dvec3 Desk::PointUnder(const glm::dvec2& pixel)
{
    if (const auto hit = Pick(pixel))
    {
        return ToGlm(hit->position);
    }
    return m_navigator.PointAt(pixel);
}

void Desk::Draw()
{
    if (m_model)
    {
        m_model->Hurry(IsMoving());
        m_model->Draw(m_width, m_height, m_ratio);
    }
}

bool Desk::NeedsDraw() const
{
    if (m_model)
    {
        // The first frame at rest is drawn with care.
        m_model->Hurry(IsMoving());
    }
    return m_model && m_model->NeedsDraw();
}

const Host::PresentationSettings& Desk::GetDrawn() const
{
    return m_model ? m_model->GetSettings() : m_settings;
}

void Desk::TellFrameTime(double seconds)
{
    // What a frame takes without the stages says nothing about one with them.
    if (!m_stepsBack)
    {
        m_frameTime = seconds;
    }
}

bool Desk::Walk(double forward)
{
    const Host::ImportReport* const report = m_model ? &m_model->GetReport() : nullptr;
    if (!report || !report->hasBox)
    {
        return false;
    }
    const glm::dvec3 size = ToGlm(report->boxMax) - ToGlm(report->boxMin);
    // In what is smaller than a person, one as small goes about: a step would lead out of a screw.
    const double metre = std::min(report->metresPerUnit > 0.0 ? 1.0 / report->metresPerUnit : 1.0,
                                  glm::length(size) / LeastWalkedMetres);
    if (!(metre > 0.0))
    {
        return false;
    }
    std::vector<Walker::Cut> cuts;
    for (const Host::ClipPlane& plane : m_settings.section.planes)
    {
        cuts.push_back({ToGlm(plane.normal), ToGlm(plane.position)});
    }
    const Walker walker(*m_model->GetScene().GetRoot(), m_navigator.WorldUp(), metre, std::move(cuts));
    const glm::dvec3 eye = m_navigator.Place();
    m_navigator.Move(walker.Walk(eye, m_navigator.Ahead() * (forward * metre)) - eye);
    FollowNavigator();
    return true;
}

void Desk::Suspend()
{
    if (m_model)
    {
        m_model->Suspend();
    }
}

void Desk::Resume()
{
    if (m_model)
    {
        m_model->Resume();
    }
}

} // namespace OV::ViewerApp
