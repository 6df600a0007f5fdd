#include "orvane_host/import/detail/FileFinder.h"

#include <algorithm>
#include <cctype>
#include <dirent.h>
#include <iterator>
#include <sys/stat.h>

namespace OV::Host
{

namespace
{

constexpr std::size_t kMaxReference = 4096;
constexpr std::size_t kMaxListing = 100'000;
constexpr int kMaxShortenings = 16;

/// Where pictures lie besides the model's own folder, which comes first.
const char* const kFolders[] = {"", "textures/", "../textures/", "images/", "maps/"};

std::string Lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(c < 0x80 ? std::tolower(c) : c); });
    return text;
}

int HexDigit(char c)
{
    const char lower = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower >= '0' && lower <= '9' ? lower - '0' : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

std::string DecodePercent(const std::string& text)
{
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const bool isEscape =
            text[i] == '%' && i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 && HexDigit(text[i + 2]) >= 0;
        if (!isEscape)
        {
            result += text[i];
            continue;
        }
        const char decoded = static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2]));
        if (decoded == '\0')
        {
            return text;
        }
        result += decoded;
        i += 2;
    }
    return result;
}

bool StartsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

std::string Normalise(std::string reference)
{
    std::replace(reference.begin(), reference.end(), '\\', '/');
    if (StartsWith(Lower(reference.substr(0, 7)), "file://"))
    {
        reference.erase(0, 7);
    }
    while (StartsWith(reference, "./"))
    {
        reference.erase(0, 2);
    }
    return reference;
}

} // namespace

bool IsRegularFile(const std::string& path)
{
    struct stat info = {};
    return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

std::string FolderOf(const std::string& path)
{
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

std::string NameOf(const std::string& path)
{
    return path.substr(FolderOf(path).size());
}

FileFinder::FileFinder(const std::string& modelPath) : m_folder(FolderOf(modelPath)) {}

std::string FileFinder::Find(const std::string& reference)
{
    if (reference.empty() || reference.size() > kMaxReference || reference.find('\0') != std::string::npos)
    {
        return std::string();
    }
    const std::string plain = Normalise(reference);
    std::string found = FindSpelling(plain);
    const std::string decoded = DecodePercent(plain);
    if (found.empty() && decoded != plain)
    {
        found = FindSpelling(decoded);
    }
    return found;
}

std::string FileFinder::FindSpelling(const std::string& reference)
{
    if (StartsWith(reference, "/") && IsRegularFile(reference))
    {
        return reference;
    }
    // A path from another machine may end in one that holds here too.
    std::string rest = reference;
    for (int i = 0; i < kMaxShortenings; ++i)
    {
        const std::string found = FindBelow(m_folder, rest);
        if (!found.empty())
        {
            return found;
        }
        const std::size_t slash = rest.find('/');
        if (slash == std::string::npos)
        {
            break;
        }
        rest.erase(0, slash + 1);
    }
    for (const char* folder : kFolders)
    {
        const std::string found = FindBelow(m_folder, folder + NameOf(reference));
        if (!found.empty())
        {
            return found;
        }
    }
    return std::string();
}

std::string FileFinder::FindBelow(const std::string& folder, const std::string& relative)
{
    if (relative.empty() || relative.front() == '/')
    {
        return std::string();
    }
    if (IsRegularFile(folder + relative))
    {
        return folder + relative;
    }
    std::string path = folder;
    for (std::size_t start = 0; start < relative.size();)
    {
        const std::size_t slash = std::min(relative.find('/', start), relative.size());
        const std::string part = relative.substr(start, slash - start);
        const std::string actual = part == ".." || part == "." ? part : MatchName(path, part);
        if (actual.empty())
        {
            return std::string();
        }
        path += actual;
        if (slash < relative.size())
        {
            path += '/';
        }
        start = slash + 1;
    }
    return IsRegularFile(path) ? path : std::string();
}

std::string FileFinder::MatchName(const std::string& folder, const std::string& name)
{
    auto listing = m_listings.find(folder);
    if (listing == m_listings.end())
    {
        listing = m_listings.emplace(folder, std::map<std::string, std::string>()).first;
        DIR* directory = opendir(folder.empty() ? "." : folder.c_str());
        while (const dirent* entry =
                   directory && listing->second.size() < kMaxListing ? readdir(directory) : nullptr)
        {
            // Of names that differ in case alone, the same one is taken whatever their order.
            std::string& actual = listing->second[Lower(entry->d_name)];
            if (actual.empty() || entry->d_name < actual)
            {
                actual = entry->d_name;
            }
        }
        if (directory)
        {
            closedir(directory);
        }
    }
    const auto found = listing->second.find(Lower(name));
    return found == listing->second.end() ? std::string() : found->second;
}

} // namespace OV::Host
