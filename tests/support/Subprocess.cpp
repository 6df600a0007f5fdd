#include "tests/support/Subprocess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <stdexcept>

namespace OV::Test
{

namespace
{

struct Pipe
{
    int read = -1;
    int write = -1;

    Pipe()
    {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        {
            throw std::runtime_error("no pipe");
        }
        read = ends[0];
        write = ends[1];
    }

    ~Pipe()
    {
        CloseWriting();
        ::close(read);
    }

    void CloseWriting()
    {
        if (write >= 0)
        {
            ::close(write);
        }
        write = -1;
    }

    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
};

[[noreturn]] void BecomeProgram(const std::vector<std::string>& arguments, const std::vector<std::string>& variables,
                                const Pipe& output, const Pipe& errors)
{
    const int nothing = ::open("/dev/null", O_RDONLY);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(output.write, STDOUT_FILENO);
    ::dup2(errors.write, STDERR_FILENO);
    for (const std::string& variable : variables)
    {
        const std::size_t equals = variable.find('=');
        ::setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
    }
    std::vector<char*> pointers;
    for (const std::string& argument : arguments)
    {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    ::execvp(pointers[0], pointers.data());
    ::_exit(127);
}

/// Reads both streams at once, so that neither fills up while the other is waited for.
void ReadAll(int outputEnd, int errorsEnd, ProcessResult& result)
{
    std::array<pollfd, 2> ends{pollfd{outputEnd, POLLIN, 0}, pollfd{errorsEnd, POLLIN, 0}};
    std::array<std::string*, 2> texts{&result.output, &result.errors};
    int open = 2;
    while (open > 0)
    {
        if (::poll(ends.data(), ends.size(), -1) < 0 && errno != EINTR)
        {
            throw std::runtime_error("poll failed");
        }
        for (std::size_t i = 0; i < ends.size(); ++i)
        {
            if (ends[i].revents == 0)
            {
                continue;
            }
            std::array<char, 4096> block{};
            const ssize_t count = ::read(ends[i].fd, block.data(), block.size());
            if (count > 0)
            {
                texts[i]->append(block.data(), static_cast<std::size_t>(count));
            }
            else if (count == 0 || errno != EINTR)
            {
                ends[i].fd = -1;
                ends[i].revents = 0;
                --open;
            }
        }
    }
}

} // namespace

ProcessResult RunProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& variables)
{
    Pipe output;
    Pipe errors;
    const pid_t child = ::fork();
    if (child < 0)
    {
        throw std::runtime_error("no process");
    }
    if (child == 0)
    {
        BecomeProgram(arguments, variables, output, errors);
    }
    output.CloseWriting();
    errors.CloseWriting();
    ProcessResult result;
    ReadAll(output.read, errors.read, result);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR)
    {
    }
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    return result;
}

} // namespace OV::Test
