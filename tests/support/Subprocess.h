#pragma once

#include <string>
#include <vector>

namespace OV::Test
{

/// How a program ended and what it said.
struct ProcessResult
{
    int exitCode = -1; ///< -1 when a signal ended it
    int signal = 0;    ///< 0 when it ended by itself
    std::string output;
    std::string errors;
};

/// Runs a program to its end, with no standard input. `variables` are "NAME=value", added to
/// the environment. A program that does not start ends with status 127.
ProcessResult RunProcess(const std::vector<std::string>& arguments, const std::vector<std::string>& variables = {});

} // namespace OV::Test
