#pragma once

#include <cstddef>
#include <vector>

namespace OV::Test
{

/// A short list of combinations in which every value of every setting meets every value of every
/// other one. The same for the same sizes.
///
/// Each combination begins with a pair that is missing and takes for every other setting the
/// value that brings most missing pairs.
/// @param sizes how many values each setting has.
inline std::vector<std::vector<int>> PairwiseCombinations(const std::vector<int>& sizes)
{
    const std::size_t count = sizes.size();
    // Whether no combination yet has one value of a setting with another one of another.
    const auto missing = [&](const std::vector<std::vector<int>>& list, std::size_t a, int x, std::size_t b, int y) {
        for (const std::vector<int>& combination : list)
        {
            if (combination[a] == x && combination[b] == y)
            {
                return false;
            }
        }
        return true;
    };
    std::vector<std::vector<int>> list;
    const auto complete = [&](std::vector<int> combination) {
        for (std::size_t setting = 0; setting < count; ++setting)
        {
            if (combination[setting] >= 0)
            {
                continue;
            }
            int best = 0;
            int bestGain = -1;
            for (int step = 0; step < sizes[setting]; ++step)
            {
                // Among equals each gets its turn, or the first alone would fill the list.
                const int value = (step + static_cast<int>(list.size())) % sizes[setting];
                int gain = 0;
                for (std::size_t other = 0; other < count; ++other)
                {
                    gain += combination[other] >= 0 && missing(list, setting, value, other, combination[other]) ? 1 : 0;
                }
                if (gain > bestGain)
                {
                    best = value;
                    bestGain = gain;
                }
            }
            combination[setting] = best;
        }
        return combination;
    };
    for (std::size_t a = 0; a < count; ++a)
    {
        for (std::size_t b = a + 1; b < count; ++b)
        {
            for (int x = 0; x < sizes[a]; ++x)
            {
                for (int y = 0; y < sizes[b]; ++y)
                {
                    if (missing(list, a, x, b, y))
                    {
                        std::vector<int> combination(count, -1);
                        combination[a] = x;
                        combination[b] = y;
                        list.push_back(complete(std::move(combination)));
                    }
                }
            }
        }
    }
    return list;
}

} // namespace OV::Test
