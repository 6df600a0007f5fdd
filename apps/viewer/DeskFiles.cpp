#include "apps/viewer/Desk.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace OV::ViewerApp
{

namespace
{

/// Seconds between looks at watched files.
constexpr double WatchSeconds = 0.3;

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

/// What a file is made of, as a person counts it: lines or points where there is no triangle.
std::string ContentText(const Host::ImportReport& report)
{
    const auto count = [](std::uint64_t number, const char* word)
    { return std::to_string(number) + " " + word + (number == 1 ? "" : "s"); };
    if (report.drawnTriangles > 0 || (report.lines == 0 && report.points == 0))
    {
        return count(report.drawnTriangles, "triangle");
    }
    const std::string points = count(report.points, "point");
    if (report.lines == 0)
    {
        return points;
    }
    return count(report.lines, "line") + (report.points > 0 ? ", " + points : std::string());
}

} // namespace

void Desk::Open(const std::string& path, Opening opening)
{
    if (opening == Opening::InPlace)
    {
        m_queue.clear();
        m_loading.reset();
        m_openingTrouble.clear();
    }
    m_queue.push_back({path, opening, 0});
    BeginOpening();
}

void Desk::OpenAgain()
{
    for (const std::string& path : GetPaths())
    {
        Open(path, Opening::Again);
    }
}

void Desk::BeginOpening()
{
    if (m_loading || m_queue.empty())
    {
        return;
    }
    m_opened = m_queue.front();
    m_queue.pop_front();
    Host::ImportOptions options;
    // A person may ask for backs, and for clip planes, after the model has come.
    options.showBacks = true;
    const bool staysAlone = m_opened.opening == Opening::Again ? GetPaths().size() < 2
                                                               : m_opened.opening == Opening::InPlace && m_queue.empty();
    options.bringsWithinReach = staysAlone;
    options.progress = [wake = m_wake](float)
    {
        wake();
        return true;
    };
#ifdef __SANITIZE_ADDRESS__
    // The sanitizer's memory may be locked by another thread when a process is forked, and would stay
    // so in that one for ever.
    options.isolate = false;
#endif
    m_opened.stamp = StampOf(m_opened.path);
    m_loading = std::make_unique<Host::ModelLoading>(m_opened.path, options);
}

void Desk::CancelOpening()
{
    m_queue.clear();
    if (m_loading)
    {
        m_loading->Cancel();
    }
}

std::string Desk::GetPath() const
{
    return m_model && !m_model->GetFiles().empty() ? m_model->GetFiles().front().path : std::string();
}

std::vector<std::string> Desk::GetPaths() const
{
    std::vector<std::string> paths;
    if (m_model)
    {
        for (const Host::PresentedFile& file : m_model->GetFiles())
        {
            paths.push_back(file.path);
        }
    }
    return paths;
}

void Desk::LookAfterFile(double seconds)
{
    m_watchedFor += seconds;
    if (!m_watches || m_loading || !m_model || m_watchedFor < WatchSeconds)
    {
        return;
    }
    m_watchedFor = 0.0;
    const std::vector<std::string> paths = GetPaths();
    for (std::size_t i = 0; i < paths.size(); ++i)
    {
        const long long stamp = StampOf(paths[i]);
        if (stamp != 0 && stamp != m_stamps[i])
        {
            // Also where it can't be read: the next change is waited for.
            m_stamps[i] = stamp;
            Open(paths[i], Opening::Again);
        }
    }
}

void Desk::TakeModel(Host::ImportResult result)
{
    std::string words = FileNameOf(m_opened.path);
    if (!result)
    {
        if (result.status == Host::ImportStatus::Cancelled)
        {
            Tell("Opening " + words + " was cancelled.");
            return;
        }
        m_openingTrouble = result.error.Line();
    }
    else
    {
        const std::vector<std::string> warnings = result.report.warnings;
        const std::string content = ContentText(result.report);
        if (PutModel(std::move(result)))
        {
            words = "Read again: " + words;
        }
        Tell(words + ", " + content + (warnings.empty() ? std::string() : "; " + warnings.front()));
    }
    // What comes after a file that can't be read doesn't hide that.
    if (!m_openingTrouble.empty())
    {
        TellTrouble(m_openingTrouble);
    }
    if (m_queue.empty())
    {
        m_openingTrouble.clear();
    }
}

bool Desk::PutModel(Host::ImportResult result)
{
    const std::vector<std::string> paths = GetPaths();
    const auto known = std::find(paths.begin(), paths.end(), m_opened.path);
    const auto place = static_cast<std::size_t>(known - paths.begin());
    const bool isAlone = paths.size() < 2;
    const bool isBeside = m_opened.opening == Opening::Beside && m_model;
    const bool isAgain = !isBeside && known != paths.end() && (isAlone || m_opened.opening == Opening::Again);
    ++m_revision;
    m_afterTurn.reset();
    m_stepsBack = false;
    std::string error;
    if (isBeside && m_model->Add(std::move(result), error))
    {
        m_stamps.push_back(m_opened.stamp);
    }
    else if (isAgain && !isAlone && m_model->Replace(place, std::move(result), error))
    {
        m_stamps[place] = m_opened.stamp;
    }
    else if (result)
    {
        if (!isAgain)
        {
            ForgetNodes();
        }
        const std::vector<Host::Dimension> dimensions =
            isAgain ? m_model->GetDimensions() : std::vector<Host::Dimension>();
        m_model = std::make_unique<Host::Presentation>(std::move(result));
        m_model->SetDimensions(dimensions);
        m_stamps = {m_opened.stamp};
    }
    ShowModel();
    return isAgain;
}

/// Those of another model say nothing about the next one.
void Desk::ForgetNodes()
{
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

std::optional<std::size_t> Desk::FileAt(const std::string& path) const
{
    const Node* const node = m_model ? m_model->FindNode(path) : nullptr;
    if (!node || m_model->GetFiles().size() < 2)
    {
        return std::nullopt;
    }
    const std::vector<Host::PresentedFile>& files = m_model->GetFiles();
    const auto file = std::find_if(files.begin(), files.end(),
                                   [&](const Host::PresentedFile& candidate) { return candidate.top == node; });
    return file == files.end() ? std::nullopt
                               : std::optional<std::size_t>(static_cast<std::size_t>(file - files.begin()));
}

bool Desk::TakeAway(const std::string& path)
{
    const std::optional<std::size_t> file = FileAt(path);
    if (!file)
    {
        return false;
    }
    m_model->Remove(*file);
    m_stamps.erase(m_stamps.begin() + static_cast<std::ptrdiff_t>(*file));
    ++m_revision;
    ShowModel();
    return true;
}

} // namespace OV::ViewerApp
