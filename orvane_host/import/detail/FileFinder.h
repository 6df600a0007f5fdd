#pragma once

#include <map>
#include <string>
#include <vector>

namespace OV::Host
{

/// Finds the files that a model refers to, as they were called on somebody else's machine.
///
/// A reference is tried as it stands, with backslashes as slashes, with percent signs
/// decoded, in any case of letters, and shortened from the front, relative to the model's
/// folder; the bare name also in the folders where pictures usually lie.
class FileFinder
{
public:
    /// @param modelPath the model file, existing or not.
    explicit FileFinder(const std::string& modelPath);

    /// @return the path of a regular file, or empty.
    std::string Find(const std::string& reference);

private:
    std::string FindSpelling(const std::string& reference);
    std::string FindBelow(const std::string& folder, const std::string& relative);
    std::string MatchName(const std::string& folder, const std::string& name);

    std::string m_folder;
    std::map<std::string, std::map<std::string, std::string>> m_listings;
};

/// Whether the path leads to a regular file.
bool IsRegularFile(const std::string& path);

/// The part up to and with the last slash, empty where there is none.
std::string FolderOf(const std::string& path);

/// The part after the last slash.
std::string NameOf(const std::string& path);

} // namespace OV::Host
