#include "tests/apps/render/CommandPage.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <sstream>
#include <stdexcept>

namespace OV::Test
{

namespace
{

/// Takes the lines of a page one after another.
class PageReader
{
public:
    explicit PageReader(const std::string& name) { m_page.name = name; }

    void Take(const std::string& line)
    {
        if (line.rfind("```", 0) == 0)
        {
            m_inShell = !m_inCode && line == "```sh";
            m_inCode = !m_inCode;
            // What stands above a picture is the block before it, not one further up.
            m_blockStart = m_inCode ? m_page.commands.size() : m_blockStart;
        }
        else if (m_inShell)
        {
            TakeShell(line);
        }
        else if (!m_inCode)
        {
            TakeText(line);
        }
    }

    CommandPage Page() const { return m_page; }

private:
    void TakeShell(const std::string& line)
    {
        static const std::regex variable("[A-Za-z_][A-Za-z_0-9]*=\\S*\\s*");
        if (m_pending.empty() && std::regex_match(line, variable))
        {
            m_page.variables += line + "\n";
            return;
        }
        const bool goesOn = !line.empty() && line.back() == '\\';
        m_pending += goesOn ? line.substr(0, line.size() - 1) : line;
        if (goesOn)
        {
            return;
        }
        const std::size_t begin = m_pending.find_first_not_of(' ');
        if (begin != std::string::npos && m_pending[begin] != '#')
        {
            AddCommand(m_pending.substr(begin));
        }
        m_pending.clear();
    }

    void AddCommand(const std::string& text)
    {
        static const std::regex output("\\s(?:-o|--output)\\s+(\\S+)");
        PageCommand command;
        command.text = text;
        command.program = text.substr(0, text.find(' '));
        std::smatch match;
        if (std::regex_search(text, match, output))
        {
            command.picture = match[1];
        }
        m_page.commands.push_back(command);
    }

    void TakeText(const std::string& line)
    {
        static const std::regex picture("!\\[[^\\]]*\\]\\(([^)]*)\\)");
        for (auto i = std::sregex_iterator(line.begin(), line.end(), picture); i != std::sregex_iterator(); ++i)
        {
            PagePicture shown;
            shown.path = (*i)[1];
            for (std::size_t command = m_blockStart; command < m_page.commands.size(); ++command)
            {
                if (m_page.commands[command].picture == FileName(shown.path))
                {
                    shown.command = static_cast<int>(command);
                }
            }
            m_page.pictures.push_back(shown);
        }
    }

    CommandPage m_page;
    std::string m_pending; ///< the part of a command on the lines so far
    std::size_t m_blockStart = 0;
    bool m_inCode = false;
    bool m_inShell = false;
};

bool MakesPictures(const CommandPage& page)
{
    return std::any_of(page.pictures.begin(), page.pictures.end(),
                       [](const PagePicture& picture) { return picture.command >= 0; });
}

} // namespace

std::string FileName(const std::string& path)
{
    return path.substr(path.find_last_of('/') + 1);
}

CommandPage ParseCommandPage(const std::string& name, const std::string& text)
{
    PageReader reader(name);
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
    {
        reader.Take(line);
    }
    return reader.Page();
}

CommandPage ReadCommandPage(const std::string& path)
{
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
    {
        throw std::runtime_error(path + " cannot be read");
    }
    return ParseCommandPage(FileName(path), std::string(std::istreambuf_iterator<char>(stream), {}));
}

std::vector<std::string> FindPageFaults(const std::vector<CommandPage>& pages,
                                        const std::vector<std::string>& filesInFolder)
{
    std::map<std::string, int> made;
    for (const CommandPage& page : pages)
    {
        for (const PagePicture& picture : page.pictures)
        {
            made[FileName(picture.path)] += picture.command >= 0 ? 1 : 0;
        }
    }
    std::vector<std::string> faults;
    std::set<std::string> shown;
    for (const CommandPage& page : pages)
    {
        for (const PagePicture& picture : page.pictures)
        {
            const std::string file = FileName(picture.path);
            const std::string where = page.name + " shows " + file;
            shown.insert(file);
            if (picture.command < 0 && (made[file] == 0 || MakesPictures(page)))
            {
                faults.push_back(where + ", and no command above it makes it");
            }
            if (picture.command >= 0 && made[file] > 1)
            {
                faults.push_back(where + ", which another command makes too");
            }
            if (std::find(filesInFolder.begin(), filesInFolder.end(), file) == filesInFolder.end())
            {
                faults.push_back(where + ", which is not in the folder");
            }
        }
    }
    for (const std::string& file : filesInFolder)
    {
        if (shown.count(file) == 0)
        {
            faults.push_back("no page shows " + file);
        }
    }
    return faults;
}

} // namespace OV::Test
