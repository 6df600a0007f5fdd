#pragma once

#include <string>

namespace OV::Host
{

/// What a model is called, and where it lies.
struct ModelSource
{
    /// A plain file is both.
    explicit ModelSource(const std::string& path) : name(path), content(path) {}

    ModelSource(const std::string& name, const std::string& content) : name(name), content(content) {}

    /// Its ending tells the format, and its folder is where what it refers to is looked for.
    std::string name;
    std::string content;
};

} // namespace OV::Host
