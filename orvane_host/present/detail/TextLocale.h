#pragma once

#include <locale.h>

namespace OV::Host::Detail
{

/// Lets texts be UTF-8 for the length of a scope, on this thread, where the C locale in force knows nothing
/// but ASCII, as in a program that has set none: titles and labels have all letters there too. Any other
/// locale stays.
class TextLocale
{
public:
    TextLocale();
    ~TextLocale();

    TextLocale(const TextLocale&) = delete;
    TextLocale& operator=(const TextLocale&) = delete;

private:
    locale_t m_before = nullptr; ///< null where it stayed
};

} // namespace OV::Host::Detail
