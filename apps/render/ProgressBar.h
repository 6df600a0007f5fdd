#pragma once

#include <chrono>
#include <string>

namespace OV::RenderApp
{

/// A bar on standard error for work that takes long. It shows only on a terminal, only after
/// a moment, and is gone at its end.
class ProgressBar
{
public:
    /// @param patience how long the work must take before the bar shows.
    explicit ProgressBar(const std::string& label,
                         std::chrono::milliseconds patience = std::chrono::milliseconds(500));
    ~ProgressBar();

    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    /// @param percent 0 to 100; anything else is taken to the nearest.
    void Show(float percent);

    /// Takes the bar away, for a line of text in its place.
    void Clear();

private:
    std::string m_label;
    std::chrono::milliseconds m_patience;
    bool m_terminal;
    bool m_shown = false;
    int m_lastPercent = -1;
    std::chrono::steady_clock::time_point m_start;
};

} // namespace OV::RenderApp
