#include "apps/render/Options.h"
#include "apps/render/RenderJob.h"
#include "apps/render/Report.h"
#include "orvane_host/import/ModelImporter.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>

using namespace OV;
using namespace OV::RenderApp;

namespace
{

/// Trouble with a file is to be told in words, so that no signal and no driver's chatter comes
/// between.
void PrepareProcess()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    // A stream that the caller closed must not become the number of the next file opened. It
    // is opened so that what is written to it still fails.
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    {
        if (::fcntl(stream, F_GETFD) < 0 && ::open("/dev/null", O_RDONLY) != stream)
        {
            std::_Exit(1);
        }
    }
    ::setenv("EGL_LOG_LEVEL", "fatal", 0);
}

/// Lets words on the command line be read in the caller's encoding. Where none is told they are
/// taken for UTF-8.
void TakeEncoding()
{
    if (!std::setlocale(LC_CTYPE, "") || MB_CUR_MAX == 1)
    {
        const char* const told = std::setlocale(LC_CTYPE, nullptr);
        if (told && (std::strcmp(told, "C") == 0 || std::strcmp(told, "POSIX") == 0))
        {
            std::setlocale(LC_CTYPE, "C.UTF-8");
        }
    }
}

int ListFormats()
{
    for (const Host::ImportFormat& format : Host::ModelImporter::ListFormats())
    {
        std::cout << format.name << ':';
        for (const std::string& extension : format.extensions)
        {
            std::cout << " ." << extension;
        }
        std::cout << '\n';
    }
    return FlushOutput() ? 0 : 1;
}

int Render(const Options& options)
{
    RenderJob job(options);
    job.Run();
    const int status = options.failIfEmpty && job.IsBlank() ? 1 : 0;
    std::cout << job.GetNodeList();
    nlohmann::ordered_json told;
    if (options.stats)
    {
        job.GetStats().AddTo(told);
    }
    if (options.pick)
    {
        job.GetPick().AddTo(told);
    }
    if (!told.empty())
    {
        std::cout << ToText(told);
    }
    return FlushOutput() ? status : 1;
}

} // namespace

int main(int argc, char** argv)
{
    PrepareProcess();
    TakeEncoding();
    const Command command = ParseCommandLine(argc, argv);
    try
    {
        switch (command.action)
        {
        case Action::Render: return Render(command.options);
        case Action::ListFormats: return ListFormats();
        case Action::Leave: return command.exitCode;
        }
    }
    catch (const Failure& failure)
    {
        PrintLine(failure.what());
    }
    catch (const std::bad_alloc&)
    {
        PrintLine(command.options.model + ": there is not enough memory; close other programs or ask for less");
    }
    catch (const std::exception& trouble)
    {
        PrintLine(command.options.model + ": " + trouble.what() + "; check that the file is whole");
    }
    return 1;
}
