#include "orvane_host/present/SunStudy.h"

#include "orvane_host/context/HeadlessContext.h"
#include "orvane_host/context/detail/HeadlessFramebuffer.h"
#include "orvane_host/geometry/SunHours.h"
#include "orvane_host/present/Presentation.h"
#include "orvane_host/present/detail/SunState.h"
#include "orvane_host/sheet/Sheet.h"
#include "orvane/math/Transform.h"
#include "orvane/math/Vector.h"
#include "orvane/overlay/Scene2D.h"
#include "orvane/overlay/Shape2DNode.h"
#include "orvane/overlay/Text.h"
#include "orvane/scene/Scene.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <memory>
#include <utility>

namespace OV::Host
{

namespace
{

constexpr std::int64_t kMostSeconds = std::int64_t(366) * 86400;
/// Pixels of the shorter side of a picture with its label, below which little can be seen.
constexpr int kSmallestCell = 48;
/// Of the shorter side of the sheet, between pictures.
constexpr int kGapShare = 200;
constexpr const char* kNoSun = ", no sun";
constexpr const char* kFont = "DejaVu Sans";
constexpr int kSmallestLetters = 12;
/// Pixels; a wider text is drawn smaller and stretched.
constexpr int kWidestLabel = 1024;

/// Hours between moments over which the sun's way is all but straight.
constexpr double kLongestFollowed = 3.0;

constexpr const char* kForm = "it has to be FIRST/LAST/STEP, such as 2026-03-20T09:00+01:00/17:00/1h";

/// "1h", "30m", "1h30m" or "30min"; 0 for anything else.
int SecondsIn(const std::string& step)
{
    std::int64_t seconds = 0;
    std::size_t at = 0;
    for (const char* unit : {"h", "m"})
    {
        std::int64_t number = 0;
        std::size_t end = at;
        while (end < step.size() && end - at < 6 && step[end] >= '0' && step[end] <= '9')
        {
            number = number * 10 + (step[end++] - '0');
        }
        if (end > at && end < step.size() && step[end] == *unit)
        {
            seconds += number * (*unit == 'h' ? 3600 : 60);
            at = end + (step.compare(end, 3, "min") == 0 ? 3 : 1);
        }
    }
    return at == step.size() && seconds <= kMostSeconds ? static_cast<int>(seconds) : 0;
}

std::string FirstDateOf(const std::string& text)
{
    return text.substr(0, text.find('T') + 1);
}

/// What follows the clock in a text, such as "+01:00".
std::string OffsetOf(const std::string& text)
{
    const std::size_t at = text.find_first_of("Z+-", text.find('T'));
    return at == std::string::npos ? std::string() : text.substr(at);
}

std::optional<SunSettings> SunOf(const Presentation& presentation, std::string& error)
{
    const std::optional<SunSettings>& sun = presentation.GetSettings().sun;
    if (!sun || sun->direction)
    {
        error = "sun: a study goes by time and place; set no direction";
        return std::nullopt;
    }
    return sun;
}

std::string LabelOf(const ZonedTime& time)
{
    return time.Date() + " " + time.Clock() + " " + time.Zone();
}

/// Finds the size of the letters of all labels.
class LabelLetters
{
public:
    /// @param longest of the labels.
    explicit LabelLetters(std::string longest) : m_longest(std::move(longest)) {}

    /// Em in pixels: what suits a picture of this size with its label, smaller where the longest label
    /// has no room.
    int SizeFor(int width, int height)
    {
        int size = static_cast<int>(std::lround(Sheet::LetterSize(width, height) * 1.4));
        while (size > kSmallestLetters && WidthAt(size) > RoomFor(width, size))
        {
            --size;
        }
        return size;
    }

    /// Pixels that a label below a picture of this width has.
    static int RoomFor(int width, int size) { return std::clamp(width - size, 1, kWidestLabel); }

    /// Height of the strip that a label stands in, in pixels.
    static int StripFor(int size) { return size * 8 / 5; }

private:
    int WidthAt(int size)
    {
        const auto [known, isNew] = m_widths.try_emplace(size, 0);
        if (isNew)
        {
            int height = 0;
            int textureWidth = 0;
            int textureHeight = 0;
            Text::GetTextSize(kFont, size, m_longest, 0, known->second, height, textureWidth, textureHeight);
        }
        return known->second;
    }

    std::string m_longest;
    std::map<int, int> m_widths; ///< by the size; many grids ask for the same ones
};

/// Cells of a picture with its label in a strip below it, in pixels.
struct Grid
{
    int columns = 0;
    int rows = 0;
    int cellWidth = 0;
    int pictureHeight = 0;
    int letters = 0; ///< em
    int gap = 0;

    int LabelHeight() const { return LabelLetters::StripFor(letters); }
    int CellHeight() const { return pictureHeight + LabelHeight(); }

    /// The one whose pictures are largest.
    static Grid For(int count, int width, int height, LabelLetters& letters)
    {
        Grid best;
        int bestSide = 0;
        const int gap = std::max(2, std::min(width, height) / kGapShare);
        for (int columns = 1; columns <= count; ++columns)
        {
            const int rows = (count + columns - 1) / columns;
            const int cellWidth = (width - (columns - 1) * gap) / columns;
            const int cellHeight = (height - (rows - 1) * gap) / rows;
            const int size = letters.SizeFor(cellWidth, cellHeight);
            const Grid grid{columns, rows, cellWidth, cellHeight - LabelLetters::StripFor(size), size, gap};
            // A picture is rather wider than high.
            const int side = std::min(grid.cellWidth * 3 / 4, grid.pictureHeight);
            if (side > bestSide)
            {
                best = grid;
                bestSide = side;
            }
        }
        return best;
    }
};

/// Draws one cell after another of the same size, and leaves a presentation as it was.
class CellPainter
{
public:
    CellPainter(Presentation& presentation, const Grid& grid) :
        m_presentation(presentation), m_grid(grid), m_before(presentation.GetSettings())
    {
    }

    ~CellPainter()
    {
        std::string error;
        m_presentation.Apply(m_before, error);
        if (m_isOpen)
        {
            m_gl.bindFramebuffer(GL_DRAW_FRAMEBUFFER, static_cast<GLuint>(m_drawn));
            m_gl.bindFramebuffer(GL_READ_FRAMEBUFFER, static_cast<GLuint>(m_read));
            m_gl.viewport(m_viewport[0], m_viewport[1], m_viewport[2], m_viewport[3]);
        }
    }

    CellPainter(const CellPainter&) = delete;
    CellPainter& operator=(const CellPainter&) = delete;

    bool Open(std::string& error)
    {
        if (const char* const missing = m_gl.Load(&HeadlessContext::GetProcAddress))
        {
            error = std::string("this GL has no ") + missing + "; use a newer driver";
            return false;
        }
        m_gl.getIntegerv(GL_DRAW_FRAMEBUFFER_BINDING, &m_drawn);
        m_gl.getIntegerv(GL_READ_FRAMEBUFFER_BINDING, &m_read);
        m_gl.getIntegerv(GL_VIEWPORT, m_viewport.data());
        m_isOpen = true;
        const Detail::FramebufferLimits limits = Detail::FramebufferLimits::Query(m_gl);
        const int samples = Presentation::SamplesFor(m_before, limits.maxSamples);
        m_picture = Detail::HeadlessFramebuffer::Create(m_gl, limits, m_grid.cellWidth, m_grid.pictureHeight, samples,
                                                        error);
        m_label = m_picture ? Detail::HeadlessFramebuffer::Create(m_gl, limits, m_grid.cellWidth, m_grid.LabelHeight(),
                                                                  0, error)
                            : nullptr;
        return m_label != nullptr;
    }

    /// @param rgba gets the cell, the top row first.
    bool Draw(const ZonedTime& time, bool isFirst, std::vector<unsigned char>& rgba, std::string& error)
    {
        PresentationSettings settings = m_before;
        settings.sun->time = time.Text();
        settings.sheet.title.clear();
        // The same everywhere: once is enough.
        settings.sheet.scaleBar = settings.sheet.scaleBar && isFirst;
        settings.sheet.north = isFirst ? settings.sheet.north : std::nullopt;
        if (!m_presentation.Apply(settings, error))
        {
            return false;
        }
        m_picture->Bind();
        m_presentation.Draw(m_grid.cellWidth, m_grid.pictureHeight);
        DrawLabel(LabelOf(time) + (m_presentation.GetSun().direction ? "" : kNoSun));
        if (!m_picture->ReadPixels(rgba) || !m_label->ReadPixels(m_labelPixels))
        {
            error = "a picture could not be read back from GL; ask for a smaller one";
            return false;
        }
        rgba.insert(rgba.end(), m_labelPixels.begin(), m_labelPixels.end());
        return true;
    }

private:
    void DrawLabel(const std::string& label)
    {
        Text text(kFont, m_grid.letters, label, &m_page.GetForeground(), true, true,
                  LabelLetters::RoomFor(m_grid.cellWidth, m_grid.letters));
        text.SetColor(Color(0.0f, 0.0f, 0.0f));
        const int middleX = m_grid.cellWidth / 2;
        const int middleY = m_grid.LabelHeight() / 2;
        Transform middle;
        middle.SetPosition(Vector(static_cast<float>(middleX), static_cast<float>(middleY), 0.0f));
        text.GetInstance(0)->SetLocal(middle);
        m_label->Bind();
        m_page.Draw(m_grid.cellWidth, m_grid.LabelHeight());
    }

    Presentation& m_presentation;
    const Grid& m_grid;
    const PresentationSettings m_before;
    Detail::GLFunctions m_gl;
    bool m_isOpen = false;
    // Of the host, from Open on.
    GLint m_drawn = 0;
    GLint m_read = 0;
    std::array<GLint, 4> m_viewport{};
    std::unique_ptr<Detail::HeadlessFramebuffer> m_picture;
    std::unique_ptr<Detail::HeadlessFramebuffer> m_label;
    Presentation m_page{std::make_unique<Scene>()}; ///< white, with nothing but a label
    std::vector<unsigned char> m_labelPixels;
};

} // namespace

std::optional<SunStudyTimes> SunStudyTimes::Parse(const std::string& text, std::string& error,
                                                  std::optional<int> offsetElse)
{
    const std::size_t firstEnd = text.find('/');
    const std::size_t lastEnd = firstEnd == std::string::npos ? firstEnd : text.find('/', firstEnd + 1);
    if (lastEnd == std::string::npos || text.find('/', lastEnd + 1) != std::string::npos)
    {
        error = kForm;
        return std::nullopt;
    }
    const std::string firstText = text.substr(0, firstEnd);
    std::string lastText = text.substr(firstEnd + 1, lastEnd - firstEnd - 1);
    std::string reason;
    const std::optional<ZonedTime> first = ZonedTime::Parse(firstText, reason, offsetElse);
    if (!first)
    {
        error = "the first time: " + reason;
        return std::nullopt;
    }
    if (lastText.find('T') == std::string::npos)
    {
        const bool hasOffset = lastText.find_first_of("Z+-") != std::string::npos;
        lastText = FirstDateOf(firstText) + lastText + (hasOffset ? "" : OffsetOf(firstText));
    }
    const std::optional<ZonedTime> last = ZonedTime::Parse(lastText, reason, first->offset);
    if (!last)
    {
        error = "the last time: " + reason;
        return std::nullopt;
    }
    SunStudyTimes times{*first, *last, SecondsIn(text.substr(lastEnd + 1))};
    if (times.stepSeconds < 1)
    {
        error = "the step has to be hours and minutes, such as 1h, 30m or 1h30m";
        return std::nullopt;
    }
    const std::int64_t span = times.last.seconds - times.first.seconds;
    if (span <= 0 || span > kMostSeconds)
    {
        error = "the last time has to be after the first one, and at most 366 days";
        return std::nullopt;
    }
    if (span / times.stepSeconds + 1 > MostMoments)
    {
        error = "there are at most " + std::to_string(MostMoments) + " moments; make the step longer";
        return std::nullopt;
    }
    return times;
}

std::vector<ZonedTime> SunStudyTimes::Moments() const
{
    std::vector<ZonedTime> moments;
    for (ZonedTime time = first; time.seconds <= last.seconds; time.seconds += stepSeconds)
    {
        moments.push_back(time);
    }
    return moments;
}

double SunStudyTimes::Hours() const
{
    const std::int64_t steps = (last.seconds - first.seconds) / stepSeconds;
    return static_cast<double>(steps * stepSeconds) / 3600.0;
}

std::optional<std::vector<SunMoment>> SunStudy::MomentsOf(const Presentation& presentation,
                                                          const SunStudyTimes& times, std::string& error)
{
    std::optional<SunSettings> sun = SunOf(presentation, error);
    if (!sun)
    {
        return std::nullopt;
    }
    std::vector<SunMoment> moments;
    const std::vector<ZonedTime> all = times.Moments();
    for (std::size_t i = 0; i < all.size(); ++i)
    {
        sun->time = all[i].Text();
        const std::optional<SunState> state =
            Detail::FindSun(*sun, presentation.GetReport(), presentation.GetSettings().view.upAxis, error);
        if (!state)
        {
            return std::nullopt;
        }
        const double share = (i > 0 ? 0.5 : 0.0) + (i + 1 < all.size() ? 0.5 : 0.0);
        const double step = times.stepSeconds / 3600.0;
        if (state->direction)
        {
            const Vector& d = *state->direction;
            moments.push_back({QGM::Vector3d(d.x, d.y, d.z), share * step, step <= kLongestFollowed ? step : 0.0});
        }
        else if (!moments.empty())
        {
            moments.back().toNext = 0.0;
        }
    }
    return moments;
}

bool SunStudy::DrawSheet(Presentation& presentation, const SunStudyTimes& times, int width, int height,
                         std::vector<unsigned char>& rgba, std::string& error)
{
    if (!SunOf(presentation, error))
    {
        return false;
    }
    const std::vector<ZonedTime> moments = times.Moments();
    LabelLetters letters(LabelOf(moments.front()) + kNoSun);
    const Grid grid = Grid::For(static_cast<int>(moments.size()), width, height, letters);
    if (std::min(grid.cellWidth, grid.CellHeight()) < kSmallestCell)
    {
        error = std::to_string(moments.size()) + " pictures have no room on " + std::to_string(width) + "x"
            + std::to_string(height) + "; ask for a larger sheet or a longer step";
        return false;
    }
    CellPainter painter(presentation, grid);
    if (!painter.Open(error))
    {
        return false;
    }
    const auto rowBytes = static_cast<std::size_t>(width) * 4;
    rgba.assign(rowBytes * static_cast<std::size_t>(height), 255);
    std::vector<unsigned char> cell;
    for (std::size_t i = 0; i < moments.size(); ++i)
    {
        if (!painter.Draw(moments[i], i == 0, cell, error))
        {
            return false;
        }
        const int column = static_cast<int>(i) % grid.columns;
        const int row = static_cast<int>(i) / grid.columns;
        const auto left = static_cast<std::size_t>(column * (grid.cellWidth + grid.gap)) * 4;
        const auto top = static_cast<std::size_t>(row * (grid.CellHeight() + grid.gap));
        const auto cellBytes = static_cast<std::size_t>(grid.cellWidth) * 4;
        for (std::size_t y = 0; y < static_cast<std::size_t>(grid.CellHeight()); ++y)
        {
            std::copy_n(cell.begin() + static_cast<std::ptrdiff_t>(y * cellBytes), cellBytes,
                        rgba.begin() + static_cast<std::ptrdiff_t>((top + y) * rowBytes + left));
        }
    }
    // What a picture leaves open shows what was there before: nothing.
    for (std::size_t i = 3; i < rgba.size(); i += 4)
    {
        rgba[i] = 255;
    }
    return true;
}

int SunStudy::NominalOffset(double longitude)
{
    return 60 * static_cast<int>(std::lround(longitude / 15.0));
}

} // namespace OV::Host
