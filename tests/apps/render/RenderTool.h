#pragma once

#include "tests/support/Picture.h"
#include "tests/support/Subprocess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace OV::Test
{

/// Path of orvane-render.
std::string RenderProgram();

/// Path of a model of the package of test models. A missing package fails the test.
std::string TestModel(const std::string& name);

std::string ReadWholeFile(const std::string& path);
void WriteWholeFile(const std::string& path, const std::string& content);

/// Names in a folder, sorted.
std::vector<std::string> FilesIn(const std::string& folder);

/// Runs orvane-render on models that the test writes into a folder of its own.
class RenderTool : public ::testing::Test
{
protected:
    /// Runs the tool with these arguments.
    static ProcessResult Run(const std::vector<std::string>& arguments,
                             const std::vector<std::string>& variables = {});

    /// Renders into the folder, without multisampling unless the options say how rims are smoothed,
    /// expects success and silence, and returns the picture.
    Picture Render(const std::string& model, const std::vector<std::string>& options) const;

    /// Writes an OBJ model with a red material and returns its path.
    std::string WriteObj(const std::string& name, const std::string& geometry) const;

    /// A square of edge 2 about the origin that faces +z.
    std::string WriteSquare() const;

    /// A cube of edge 2 about the origin: front red, back green, left blue, right yellow, top
    /// magenta, bottom cyan.
    std::string WriteCube() const;

    TemporaryFolder folder;
};

} // namespace OV::Test
