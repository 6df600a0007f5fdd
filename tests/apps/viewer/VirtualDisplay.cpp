#include "tests/apps/viewer/VirtualDisplay.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace OV::Test
{

VirtualDisplay::VirtualDisplay()
{
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
    {
        throw std::runtime_error("no pipe");
    }
    m_process = ::fork();
    if (m_process == 0)
    {
        ::close(ends[0]);
        const int nothing = ::open("/dev/null", O_RDWR);
        ::dup2(nothing, STDOUT_FILENO);
        ::dup2(nothing, STDERR_FILENO);
        const std::string told = std::to_string(ends[1]);
        // The server finds a number that is free, so that several may start at once.
        ::execl(ORVANE_VIRTUAL_DISPLAY, "Xvfb", "-displayfd", told.c_str(), "-screen", "0", "1600x1200x24", "-nolisten",
                "tcp", nullptr);
        ::_exit(127);
    }
    ::close(ends[1]);
    char letter = 0;
    while (::read(ends[0], &letter, 1) == 1 && letter != '\n')
    {
        m_name += letter;
    }
    ::close(ends[0]);
    if (m_name.empty())
    {
        throw std::runtime_error("no display; install the package xvfb");
    }
    m_name = ":" + m_name;
}

VirtualDisplay::~VirtualDisplay()
{
    ::kill(m_process, SIGTERM);
    ::waitpid(m_process, nullptr, 0);
}

} // namespace OV::Test
