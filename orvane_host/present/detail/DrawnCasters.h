#pragma once

#include "orvane_host/present/detail/Fingerprint.h"
#include "orvane_host/present/detail/SunView.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace OV::Host::Detail
{

/// What the sun's maps were drawn of, by which it is known what others change of them.
///
/// A few bytes stand for each caster: a fingerprint of all that its texels depend on, and where it casts.
class DrawnCasters
{
public:
    /// A caster's fingerprint, whose lowest bit tells which map it is drawn in.
    using Print = std::uint64_t;

    static Print PrintOf(const Fingerprint& fingerprint, bool isGlass)
    {
        return (fingerprint.Get() & ~Print{1}) | (isGlass ? 1u : 0u);
    }
    static bool IsGlass(Print print) { return (print & 1u) != 0; }

    /// Whether the maps hold casters in that order and layout.
    /// @param layout a fingerprint of all that the maps depend on besides.
    bool AreThose(std::uint64_t layout, const std::vector<Print>& casters) const
    {
        return m_layout == layout && m_prints == casters;
    }

    /// Takes others in their place, and finds out what that changes.
    /// @param footprintOf the caster of a number; asked for some of them, once.
    void Become(std::uint64_t layout, const std::vector<Print>& casters,
                const std::function<SunView::Footprint(std::size_t)>& footprintOf);

    /// Nothing holds any more.
    void Forget();

    /// Whether all texels may have changed.
    bool HasAllChanged() const { return m_hasAllChanged; }

    /// Where those casters of a map lie and lay that are others, were or became. Where all has changed there are none.
    const std::vector<SunView::Footprint>& GetChanged(bool glass) const { return m_changed[glass ? 1 : 0]; }

    /// Of the casters, in their order.
    const std::vector<SunView::Footprint>& GetFootprints() const { return m_footprints; }

private:
    using Numbers = std::vector<std::size_t>;

    bool Compare(const std::vector<Print>& casters);
    void NoteChanged(const Numbers& numbers);

    std::optional<std::uint64_t> m_layout;
    std::vector<Print> m_prints;
    std::vector<SunView::Footprint> m_footprints;

    bool m_hasAllChanged = true;
    std::vector<SunView::Footprint> m_changed[2]; ///< of what is solid, and of glass
    // Scratch.
    Numbers m_gone; ///< of those that were
    Numbers m_new;  ///< of those that are
};

} // namespace OV::Host::Detail
