#pragma once

#include "orvane/scene/RawMesh.h"

namespace OV
{

/// Points of lines in the form that is widened on the GPU: four vertices for each point, whose
/// normals and texture coordinates say which corner of the ribbon they are.
class ORVANE_API RawLine : public RawMesh
{
public:
    /// Makes 4n + 4 vertices of n points, the last four at the first point, or at the origin
    /// where there is none.
    /// @return false, with nothing changed, when there are vertices already and n is not their
    /// number divided by 4: after n points only n + 1 pass.
    bool SetPositionBuffer(const std::vector<Vector>& points);

    /// Makes a quad of each pair of points, counted from 0. Only the first of a pair is read;
    /// from 16384 up it wraps around. Replaces what was there.
    /// @return true, always.
    bool SetIndices(const std::vector<unsigned short>& pairs);
};

} // namespace OV
