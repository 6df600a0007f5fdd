#include "apps/viewer/Desk.h"

#include "apps/viewer/Walker.h"
#include "orvane/scene/Scene.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

/// Seconds without movement after which a picture is drawn in full.
constexpr double RestSeconds = 0.2;
/// Seconds of a frame above which stages step back while something moves.
constexpr double SlowFrame = 1.0 / 30.0;
/// Seconds that something moves on at once.
constexpr double LongestStep = 0.05;
/// Seconds between looks at a watched file.
constexpr double WatchSeconds = 0.3;

glm::dvec3 ToGlm(const Vector& vector)
{
    return {vector.x, vector.y, vector.z};
}

/// A number that changes with a file; 0 where there is none.
long long StampOf(const std::string& path)
{
    struct stat status{};
    if (path.empty() || ::stat(path.c_str(), &status) != 0)
    {
        return 0;
    }
    return (status.st_mtim.tv_sec * 1000000007LL + status.st_mtim.tv_nsec) ^ (static_cast<long long>(status.st_size) << 20)
        ^ static_cast<long long>(status.st_ino);
}

std::string FileNameOf(const std::string& path)
{
    return path.substr(path.find_last_of('/') + 1);
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

void Desk::Open(const std::string& path)
{
    Host::ImportOptions options;
    options.progress = [wake = m_wake](float)
    {
        wake();
        return true;
    };
    m_loading.reset();
    m_loadingPath = path;
    m_loadingStamp = StampOf(path);
    m_loading = std::make_unique<Host::ModelLoading>(path, options);
}

void Desk::CancelOpening()
{
    if (m_loading)
    {
        m_loading->Cancel();
    }
}

bool Desk::Update(double seconds)
{
    bool isOpened = false;
    if (m_loading && m_loading->IsReady())
    {
        Host::ImportResult result = m_loading->Take();
        m_loading.reset();
        isOpened = static_cast<bool>(result);
        TakeModel(std::move(result));
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
    else if (m_restIn > 0.0 && m_navigator.GetDrag() == Navigator::Drag::None)
    {
        m_restIn -= seconds;
        if (m_restIn <= 0.0 && std::exchange(m_stepsBack, false))
        {
            ApplyDrawn();
        }
    }
    return isOpened;
}

void Desk::LookAfterFile(double seconds)
{
    m_watchedFor += seconds;
    if (!m_watches || m_loading || !m_model || m_watchedFor < WatchSeconds)
    {
        return;
    }
    m_watchedFor = 0.0;
    const long long stamp = StampOf(m_path);
    if (stamp != 0 && stamp != m_stamp)
    {
        // Also where it can't be read: the next change is waited for.
        m_stamp = stamp;
        Open(m_path);
    }
}

void Desk::TakeModel(Host::ImportResult result)
{
    if (!result)
    {
        if (result.status == Host::ImportStatus::Cancelled)
        {
            Tell("Opening " + FileNameOf(m_loadingPath) + " was cancelled.");
        }
        else
        {
            TellTrouble(result.error.Line());
        }
        return;
    }
    const bool isAgain = m_model && m_loadingPath == m_path;
    const std::vector<std::string> warnings = result.report.warnings;
    m_model = std::make_unique<Host::Presentation>(std::move(result));
    m_path = m_loadingPath;
    m_stamp = m_loadingStamp;
    m_afterTurn.reset();
    m_stepsBack = false;
    if (!isAgain)
    {
        // Those of another model say nothing about this one.
        if (!std::exchange(m_keepsAll, false))
        {
            m_settings.view.eye.reset();
            m_settings.view.target.reset();
            m_settings.section.planes.clear();
            m_settings.editPath.clear();
            m_settings.fog.reset();
        }
        m_selection.clear();
        m_hidden.clear();
        m_isolated.clear();
        m_labels.clear();
    }
    ShowModel();
    const Host::ImportReport& report = m_model->GetReport();
    Tell((isAgain ? "Read again: " : "") + FileNameOf(m_path) + ", " + std::to_string(report.drawnTriangles)
         + " triangles" + (warnings.empty() ? std::string() : "; " + warnings.front()));
}

void Desk::ShowModel()
{
    if (m_width > 0 && m_height > 0)
    {
        m_model->Resize(m_width, m_height, m_ratio);
    }
    std::string error;
    if (!m_model->Apply(m_settings, error))
    {
        m_settings.editPath.clear();
        if (!m_model->Apply(m_settings, error))
        {
            m_settings = m_model->GetSettings();
        }
    }
    HideAgain();
    m_selection.erase(std::remove_if(m_selection.begin(), m_selection.end(),
                                     [this](const std::string& path) { return !m_model->FindNode(path); }),
                      m_selection.end());
    ShowSelection();
    for (Label& label : m_labels)
    {
        label.middle = MiddleOf(label.path);
    }
    m_navigator.Stop();
    m_navigator.Follow(*m_model);
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
    m_stepsBack = false;
    if (isOtherView)
    {
        m_afterTurn.reset();
        m_navigator.Stop();
        m_navigator.Follow(*m_model);
    }
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
        m_model->Draw(m_width, m_height, m_ratio);
    }
}

bool Desk::NeedsDraw() const
{
    return m_model && m_model->NeedsDraw();
}

const Host::PresentationSettings& Desk::GetDrawn() const
{
    return m_model ? m_model->GetSettings() : m_settings;
}

void Desk::TellFrameTime(double seconds)
{
    m_frameTime = seconds;
}

bool Desk::Walk(double forward)
{
    const Host::ImportReport* const report = m_model ? &m_model->GetReport() : nullptr;
    if (!report || !report->hasBox)
    {
        return false;
    }
    const double metre = report->metresPerUnit > 0.0 ? 1.0 / report->metresPerUnit : 1.0;
    m_navigator.Walk(forward * metre);
    const glm::dvec3 up = m_navigator.WorldUp();
    const double reach = metre * (Walker::EyeHeight - Walker::StepHeight);
    const glm::dvec3 eye = m_navigator.Place();
    if (const auto depth = Walker::DepthOfFloor(*m_model->GetScene().GetRoot(), eye - up * reach, up))
    {
        // The floor carries a person at the height of their eyes.
        m_navigator.Move(up * (metre * Walker::StepHeight - *depth));
    }
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
