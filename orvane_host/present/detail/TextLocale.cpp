#include "orvane_host/present/detail/TextLocale.h"

#include <langinfo.h>

#include <cstring>

namespace OV::Host::Detail
{

TextLocale::TextLocale()
{
    if (std::strcmp(nl_langinfo(CODESET), "ANSI_X3.4-1968") != 0)
    {
        return;
    }
    // Of the process: a frame allocates nothing.
    static const locale_t utf8 = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (utf8)
    {
        m_before = uselocale(utf8);
    }
}

TextLocale::~TextLocale()
{
    if (m_before)
    {
        uselocale(m_before);
    }
}

} // namespace OV::Host::Detail
