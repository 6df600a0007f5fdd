#pragma once

#include <string>

namespace OV
{

/// Directory part of a file's name, in wide characters.
///
/// A full name is this text with the file's own name put right behind it, so a directory
/// ends in its separator; an empty one leaves the name as it is. It reaches the file system
/// as UTF-8, whatever the locale.
struct FilePath
{
    std::wstring path;
};

}  // namespace OV
