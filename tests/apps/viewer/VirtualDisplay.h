#pragma once

#include <string>

namespace OV::Test
{

/// A display without a screen, of a server that runs as long as this lives.
class VirtualDisplay
{
public:
    /// Throws where it doesn't start.
    VirtualDisplay();
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay&) = delete;
    VirtualDisplay& operator=(const VirtualDisplay&) = delete;

    /// As the variable DISPLAY has it.
    const std::string& Name() const { return m_name; }

private:
    int m_process = -1;
    std::string m_name;
};

} // namespace OV::Test
