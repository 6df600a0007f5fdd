#include "apps/common/Process.h"
#include "apps/viewer/Options.h"
#include "apps/viewer/Viewer.h"

#include <exception>
#include <new>
#include <string>

using namespace OV::ViewerApp;

namespace
{

void PrintLine(const std::string& text)
{
    OV::Apps::PrintLine("orvane-view", text);
}

} // namespace

int main(int argc, char** argv)
{
    OV::Apps::PrepareProcess();
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
