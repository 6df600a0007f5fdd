#include "orvane_host/present/detail/Fingerprint.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <set>
#include <utility>

namespace OV::Test
{

namespace
{

using Host::Detail::Fingerprint;

constexpr std::size_t kCount = 24;
using Words = std::array<std::uint64_t, kCount>;

std::uint64_t PrintOf(const Words& words)
{
    Fingerprint print;
    print.AddAll(words);
    return print.Get();
}

/// Doubles as in the matrices of nodes, most of them 0 and 1, and numbers besides.
Words MatrixAndNumbers()
{
    Words words{};
    for (std::size_t i = 0; i < kCount; ++i)
    {
        words[i] = Fingerprint::WordOf(i % 5 == 0 ? 1.0 : i % 4 == 3 ? 12.25 * static_cast<double>(i) : 0.0);
    }
    words[1] = 3;
    words[2] = 4096;
    return words;
}

} // namespace

TEST(Fingerprint, TellsEachBitOfManyValues)
{
    const Words words = MatrixAndNumbers();
    std::set<std::uint64_t> prints = {PrintOf(words)};
    EXPECT_EQ(prints.count(PrintOf(words)), 1u);
    for (std::size_t i = 0; i < kCount; ++i)
    {
        for (int bit = 0; bit < 64; ++bit)
        {
            Words changed = words;
            changed[i] ^= std::uint64_t{1} << bit;
            EXPECT_TRUE(prints.insert(PrintOf(changed)).second) << i << ", " << bit;
        }
    }
}

// What moves, turns or grows changes several values in the same way.
TEST(Fingerprint, TellsChangesOfTwoValues)
{
    const Words words = MatrixAndNumbers();
    constexpr std::uint64_t sign = std::uint64_t{1} << 63;
    constexpr std::uint64_t exponent = std::uint64_t{1} << 52;
    const std::pair<std::uint64_t, std::uint64_t> changes[] = {
        {sign, sign},         {exponent, exponent}, {exponent, 0 - exponent},
        {2 * exponent, exponent}, {1, 1},           {1, 0 - std::uint64_t{1}},
    };
    std::set<std::uint64_t> prints = {PrintOf(words)};
    for (std::size_t i = 0; i < kCount; ++i)
    {
        for (std::size_t j = 0; j < i; ++j)
        {
            for (const auto& [first, second] : changes)
            {
                Words changed = words;
                changed[i] += first;
                changed[j] += second;
                EXPECT_TRUE(prints.insert(PrintOf(changed)).second) << i << ", " << j << ", " << first;
            }
        }
    }
}

TEST(Fingerprint, TellsTheOrderOfValues)
{
    const Words words = MatrixAndNumbers();
    for (std::size_t i = 0; i < kCount; ++i)
    {
        for (std::size_t j = 0; j < i; ++j)
        {
            Words changed = words;
            std::swap(changed[i], changed[j]);
            EXPECT_EQ(PrintOf(changed) == PrintOf(words), words[i] == words[j]) << i << ", " << j;
        }
    }
    Fingerprint one;
    one.Add(1);
    one.Add(2);
    Fingerprint other;
    other.Add(2);
    other.Add(1);
    EXPECT_NE(one.Get(), other.Get());
}

} // namespace OV::Test
