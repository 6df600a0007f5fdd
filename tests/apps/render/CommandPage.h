#pragma once

#include <string>
#include <vector>

namespace OV::Test
{

/// A command of a page, as it stands there.
struct PageCommand
{
    std::string text;    ///< its lines joined where they end with a backslash
    std::string program; ///< its first word
    std::string picture; ///< file name after -o; empty without one
};

/// A picture of a page: ![what](path).
struct PagePicture
{
    std::string path;  ///< as the page has it, relative to the page
    int command = -1;  ///< index of the command that stands above it and makes it; -1 if none does
};

/// What a Markdown page tells its reader to type, and what it shows.
///
/// Commands are the lines of its blocks of "sh". Comments and variables are no commands; the
/// variables are kept as they are, for a shell to set them.
struct CommandPage
{
    std::string name;      ///< file name
    std::string variables; ///< lines NAME=value, in their order
    std::vector<PageCommand> commands;
    std::vector<PagePicture> pictures;
};

CommandPage ParseCommandPage(const std::string& name, const std::string& text);

/// Reads a page from a file. An unreadable file fails the test.
CommandPage ReadCommandPage(const std::string& path);

/// What is wrong between pages and the folder of their pictures, one sentence each: a picture
/// that no command makes, one that is not in the folder, one in the folder that no page shows,
/// one that two commands make. On a page that makes pictures each stands under its command; the
/// others may show what those make.
std::vector<std::string> FindPageFaults(const std::vector<CommandPage>& pages,
                                        const std::vector<std::string>& filesInFolder);

/// The last part of a path.
std::string FileName(const std::string& path);

} // namespace OV::Test
