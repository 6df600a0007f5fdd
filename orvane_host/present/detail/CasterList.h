#pragma once

#include "orvane_host/present/detail/DrawnCasters.h"
#include "orvane_host/present/detail/Fingerprint.h"
#include "orvane_host/present/detail/SunView.h"
#include "orvane/renderdata/RenderItemES20.h"

#include <cstddef>
#include <vector>

namespace OV
{

class MeshNode;
class MeshStyleES20;

} // namespace OV

namespace OV::Host
{

struct PresentationFrame;

} // namespace OV::Host

namespace OV::Host::Detail
{

/// What casts shadows in a frame.
///
/// All is listed anew each time, since geometry and materials may change without a word.
class CasterList
{
public:
    struct Caster
    {
        /// At the node alone, or of a mesh that stands nowhere else.
        RenderItemES20 item;
        MeshNode* node = nullptr;
        bool isGlass = false;
    };

    void List(const PresentationFrame& frame);

    const std::vector<Caster>& GetCasters() const { return m_casters; }

    /// Of the casters, in their order, as the next is.
    const std::vector<CastBox>& GetBoxes() const { return m_boxes; }
    const std::vector<DrawnCasters::Print>& GetPrints() const { return m_prints; }

    bool HasGlass() const { return m_hasGlass; }

private:
    /// What casters of one style have in common.
    struct Kind
    {
        const MeshStyleES20* style = nullptr;
        bool casts = false;
        bool isGlass = false;
        Fingerprint print;
    };

    static Kind KindOf(MeshStyleES20& style);
    void Add(const std::vector<RenderItemES20>& items, std::size_t first, std::size_t end);
    void Add(const RenderItemES20& item, const Kind& kind);
    void Add(const RenderItemES20& item, MeshNode& node, const Kind& kind);

    std::vector<Caster> m_casters;
    std::vector<CastBox> m_boxes;
    std::vector<DrawnCasters::Print> m_prints;
    bool m_hasGlass = false;
    std::vector<RenderItemES20> m_meshes; ///< of a material that is listed as a whole
};

} // namespace OV::Host::Detail
