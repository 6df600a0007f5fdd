#pragma once

#include "orvane_host/import/detail/ModelData.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace OV
{

class RawLine;

} // namespace OV

namespace OV::Host
{

struct LineParts
{
    std::vector<std::shared_ptr<RawLine>> parts;
    /// In all parts.
    std::uint64_t segments = 0;
    /// Segments left out: an index or a coordinate was of no use.
    std::uint64_t dropped = 0;
};

/// Cuts a mesh of lines into as many as 16-bit indices need. Trusts nothing in it but that its arrays
/// can be read.
LineParts SplitLines(const MeshData& mesh);

} // namespace OV::Host
