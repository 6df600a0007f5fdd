#pragma once

#include "orvane_host/present/detail/LineEffect.h"
#include "orvane/math/Matrix.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace OV
{

class MeshES20;
class MeshNode;

struct RenderItemES20;

} // namespace OV

namespace OV::Host::Detail
{

class LevelLineES20;

/// What LineEffect is told of each segment: which of its ends are joints, and how far along its
/// polyline it begins in the picture, so that dashes run on over joints.
///
/// Lengths are worked out anew when the view changes, and only where there are dashes.
class LineRuns
{
public:
    /// Bytes from one vertex to the next.
    static constexpr int Stride = 2 * sizeof(float);

    LineRuns() = default;
    LineRuns(const LineRuns&) = delete;
    LineRuns& operator=(const LineRuns&) = delete;

    /// Begins the list of a frame.
    void Begin(const LineEffect::View& view);

    /// Adds a line with the pen that it is drawn with. @param toClip of the world, as the effect takes it.
    void Add(const RenderItemES20& item, const LineEffect::Pen& pen, const Matrix& toClip);

    /// Uploads the list, unless it is that of the frame before. GL.
    void End();

    /// Binds the buffer in which a line at a node has its own. GL.
    /// @return the offset in it; negative where all its segments have the same, which is then what
    ///         the attribute is without a buffer.
    int Bind(const MeshES20& line, const MeshNode& node, unsigned int attribute) const;

    /// Binds the line's own buffer again, and resets the attribute. GL.
    static void Unbind(const MeshES20& line);

    /// GL.
    void ReleaseGL();

private:
    struct Entry
    {
        LevelLineES20* line;
        std::uint64_t number;
        const MeshNode* node; ///< null for all of them
        float period;         ///< of the dashes; 0 for none
        float reach;
        Matrix toClip;
        std::size_t offset; ///< in m_values

        bool operator==(const Entry& other) const;
    };

    void AddAt(LevelLineES20& line, const MeshNode* node, const LineEffect::Pen& pen, const Matrix& toClip);
    void Fill(const Entry& entry);
    const Entry* Find(const MeshES20& line, const MeshNode& node) const;

    LineEffect::View m_view;
    // They keep their memory from frame to frame.
    std::vector<Entry> m_entries; ///< by line and node, once ended
    std::vector<Entry> m_uploaded;
    std::vector<float> m_values;
    PixelSize m_uploadedWhole;
    unsigned int m_buffer = 0;
};

} // namespace OV::Host::Detail
