#include "apps/render/ProgressBar.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace OV::RenderApp
{

namespace
{

constexpr int LongestBar = 40;
constexpr int ShortestBar = 8;

int TerminalWidth()
{
    winsize size{};
    return ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

} // namespace

ProgressBar::ProgressBar(const std::string& label, std::chrono::milliseconds patience)
    : m_label(label), m_patience(patience), m_terminal(::isatty(STDERR_FILENO) != 0),
      m_start(std::chrono::steady_clock::now())
{
}

ProgressBar::~ProgressBar()
{
    Clear();
}

void ProgressBar::Show(float percent)
{
    if (!m_terminal || std::chrono::steady_clock::now() - m_start < m_patience)
    {
        return;
    }
    const int rounded = std::isfinite(percent) ? static_cast<int>(std::clamp(percent, 0.0f, 100.0f)) : 0;
    if (m_shown && rounded == m_lastPercent)
    {
        return;
    }
    m_lastPercent = rounded;
    m_shown = true;
    const std::string number = " " + std::to_string(rounded) + "%";
    const int room = TerminalWidth() - 1 - static_cast<int>(m_label.size() + number.size()) - 3;
    std::string line = "\r\x1b[K" + m_label;
    if (room >= ShortestBar)
    {
        const int length = std::min(room, LongestBar);
        const int full = length * rounded / 100;
        line += " [" + std::string(static_cast<std::size_t>(full), '#')
            + std::string(static_cast<std::size_t>(length - full), ' ') + "]";
    }
    std::cerr << line + number << std::flush;
}

void ProgressBar::Clear()
{
    if (m_shown)
    {
        std::cerr << "\r\x1b[K" << std::flush;
        m_shown = false;
    }
}

} // namespace OV::RenderApp
