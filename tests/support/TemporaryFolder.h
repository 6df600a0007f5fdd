#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>

#include <stdlib.h>

namespace OV::Test
{

/// A folder of its own for one test, gone with everything in it at the end.
class TemporaryFolder
{
public:
    TemporaryFolder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "orvane-test-XXXXXX").string();
        if (!::mkdtemp(name.data()))
        {
            throw std::runtime_error("no temporary folder can be made at " + name);
        }
        m_path = name;
    }

    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return m_path; }

    std::string Path(const std::string& name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

}  // namespace OV::Test
