#pragma once

#include "orvane_host/present/PresentationSettings.h"

#include <array>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace OV::Test
{

/// Numbers that are the same on every system.
class Dice
{
public:
    explicit Dice(unsigned int seed) : m_engine(seed) {}

    int Below(int count) { return static_cast<int>(m_engine() % static_cast<unsigned int>(count)); }

    template <typename Value, std::size_t Count>
    const Value& Of(const std::array<Value, Count>& values)
    {
        return values[static_cast<std::size_t>(Below(static_cast<int>(Count)))];
    }

    float Share() { return static_cast<float>(Below(1001)) / 1000.0f; }

private:
    std::mt19937 m_engine;
};

/// One setting, or a few that belong together.
void Change(Host::PresentationSettings& settings, Dice& dice, const std::vector<std::string>& paths);

} // namespace OV::Test
