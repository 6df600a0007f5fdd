#pragma once

#include <nlohmann/json_fwd.hpp>

#include <stdexcept>
#include <string>
#include <vector>

namespace OV::RenderApp
{

/// Ends the work with exit status 1 and one line for the person who called.
class Failure : public std::runtime_error
{
public:
    /// @param reason what went wrong and, after a semicolon, what helps.
    Failure(const std::string& file, const std::string& reason) : std::runtime_error(file + ": " + reason) {}

    /// Takes the whole line.
    explicit Failure(const std::string& line) : std::runtime_error(line) {}
};

/// Throws Failure where an operation tells of an error.
inline void Require(bool isDone, const std::string& subject, const std::string& error)
{
    if (!isDone)
    {
        throw Failure(subject, error);
    }
}

/// Writes one line to standard error, with the program's name before it. Control characters,
/// which a file name may hold, become question marks.
void PrintLine(const std::string& text);

/// Writes the first few warnings about a file, and how many more there are.
void PrintWarnings(const std::vector<std::string>& warnings, const std::string& file);

/// A JSON document over several lines, with a line end. Bytes that are no text are replaced.
std::string ToText(const nlohmann::ordered_json& json);

/// Pushes standard output to where it goes.
/// @return false, after a line on standard error, when that failed.
bool FlushOutput();

} // namespace OV::RenderApp
