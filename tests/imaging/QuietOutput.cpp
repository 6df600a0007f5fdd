#include "tests/imaging/QuietOutput.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

namespace OV::Test
{

QuietOutput::QuietOutput()
{
    std::fflush(nullptr);
    std::FILE* const file = std::tmpfile();
    if (!file)
    {
        throw std::runtime_error("no temporary file for the output");
    }
    m_file = dup(fileno(file));
    std::fclose(file);
    m_output = dup(STDOUT_FILENO);
    m_error = dup(STDERR_FILENO);
    dup2(m_file, STDOUT_FILENO);
    dup2(m_file, STDERR_FILENO);
}

QuietOutput::~QuietOutput()
{
    Finish();
}

std::string QuietOutput::Finish()
{
    if (m_file < 0)
    {
        return {};
    }
    std::fflush(nullptr);
    dup2(m_output, STDOUT_FILENO);
    dup2(m_error, STDERR_FILENO);
    std::string text;
    lseek(m_file, 0, SEEK_SET);
    char part[256];
    for (ssize_t count; (count = read(m_file, part, sizeof(part))) > 0;)
    {
        text.append(part, std::size_t(count));
    }
    close(m_output);
    close(m_error);
    close(m_file);
    m_file = -1;
    return text;
}

}  // namespace OV::Test
