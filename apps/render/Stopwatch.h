#pragma once

#include <chrono>

namespace OV::RenderApp
{

/// Tells how long it has been there.
class Stopwatch
{
public:
    double Milliseconds() const
    {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - m_start).count();
    }

private:
    std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
};

} // namespace OV::RenderApp
