#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <string>

namespace OV::Test
{

/// Puts a locale of the process in force and the one before back.
class LocaleScope
{
public:
    explicit LocaleScope(const char* name) : m_before(std::setlocale(LC_ALL, nullptr))
    {
        EXPECT_NE(std::setlocale(LC_ALL, name), nullptr) << name;
    }
    ~LocaleScope() { std::setlocale(LC_ALL, m_before.c_str()); }

    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;

private:
    std::string m_before;
};

} // namespace OV::Test
