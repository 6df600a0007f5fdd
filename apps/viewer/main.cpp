#include "apps/viewer/Options.h"
#include "apps/viewer/Viewer.h"

#include <fcntl.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string>

using namespace OV::ViewerApp;

namespace
{

/// Trouble is to be told in words, so that no signal comes between, and a stream that the caller
/// closed must not become the number of the next file opened.
void PrepareProcess()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    {
        if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) != stream)
        {
            std::_Exit(1);
        }
    }
    if (!std::setlocale(LC_CTYPE, "") || MB_CUR_MAX == 1)
    {
        std::setlocale(LC_CTYPE, "C.UTF-8");
    }
}

void PrintLine(const std::string& text)
{
    std::string line = "orvane-view: " + text;
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

} // namespace

int main(int argc, char** argv)
{
    PrepareProcess();
    const Command command = ParseCommandLine(argc, argv);
    if (!command.run)
    {
        return command.exitCode;
    }
    try
    {
        Viewer viewer(command.options);
        viewer.Run();
        return 0;
    }
    catch (const Failure& failure)
    {
        PrintLine(failure.what());
    }
    catch (const std::bad_alloc&)
    {
        PrintLine("there is not enough memory; close other programs");
    }
    catch (const std::exception& trouble)
    {
        PrintLine(trouble.what());
    }
    return 1;
}
