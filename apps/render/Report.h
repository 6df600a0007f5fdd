#pragma once

#include <nlohmann/json_fwd.hpp>

#include <stdexcept>
#include <string>

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

/// Writes one line to standard error, with the program's name before it. Control characters,
/// which a file name may hold, become question marks.
void PrintLine(const std::string& text);

/// A JSON document over several lines, with a line end. Bytes that are no text are replaced.
std::string ToText(const nlohmann::ordered_json& json);

/// Pushes standard output to where it goes.
/// @return false, after a line on standard error, when that failed.
bool FlushOutput();

} // namespace OV::RenderApp
