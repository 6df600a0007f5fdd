#include "apps/common/Process.h"

#include <fcntl.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>

namespace OV::Apps
{

void PrepareProcess()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    {
        // Opened so that what is written to it still fails.
        if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) != stream)
        {
            std::_Exit(1);
        }
    }
    if (!std::setlocale(LC_CTYPE, "") || MB_CUR_MAX == 1)
    {
        const char* const told = std::setlocale(LC_CTYPE, nullptr);
        if (told && (std::strcmp(told, "C") == 0 || std::strcmp(told, "POSIX") == 0))
        {
            std::setlocale(LC_CTYPE, "C.UTF-8");
        }
    }
}

void PrintLine(const std::string& program, const std::string& text)
{
    std::string line = program + ": " + text;
    for (char& character : line)
    {
        const auto code = static_cast<unsigned char>(character);
        if (code < 0x20 || code == 0x7F)
        {
            character = '?';
        }
    }
    std::cerr << line + "\n" << std::flush;
}

} // namespace OV::Apps
