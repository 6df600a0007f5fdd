#pragma once

#include <string>

namespace OV::Test
{

/// Catches what the process writes to its standard output and error streams, whoever writes,
/// down to the file descriptors.
class QuietOutput
{
public:
    QuietOutput();
    QuietOutput(const QuietOutput&) = delete;
    QuietOutput& operator=(const QuietOutput&) = delete;
    ~QuietOutput();

    /// Gives the streams back and tells what was written.
    std::string Finish();

private:
    int m_file = -1;
    int m_output = -1;
    int m_error = -1;
};

}  // namespace OV::Test
