#include "apps/common/Process.h"
#include "apps/render/Options.h"
#include "apps/render/RenderJob.h"
#include "apps/render/Report.h"
#include "orvane_host/import/ModelImporter.h"

#include <nlohmann/json.hpp>

#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>

using namespace OV;
using namespace OV::RenderApp;

namespace
{

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
    nlohmann::ordered_json told;
    if (options.stats)
    {
        job.GetStats().AddTo(told);
    }
    if (options.pick)
    {
        job.GetPick().AddTo(told);
    }
    if (told.empty())
    {
        return 0;
    }
    std::cout << ToText(told);
    return FlushOutput() ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    Apps::PrepareProcess();
    // No driver's chatter between the lines.
    ::setenv("EGL_LOG_LEVEL", "fatal", 0);
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
