#include "orvane_host/present/detail/SettingsFields.h"

#include <cstddef>
#include <iterator>

namespace OV::Host::Detail
{

namespace
{

// In the order of the enumerators.
constexpr const char* kIdentities[] = {"object", "group"};
constexpr const char* kAntialiasings[] = {"none", "msaa", "fxaa", "ssaa"};
constexpr const char* kUpAxes[] = {"y", "z"};
constexpr const char* kGlassOrders[] = {"scene", "weighted", "exact"};
constexpr const char* kBatchUses[] = {"auto", "on", "off"};
constexpr const char* kGroundKinds[] = {"shadow", "plain"};
constexpr const char* kOcclusionKinds[] = {"horizon", "spiral"};
constexpr const char* kHiddenLines[] = {"none", "dashed"};

template <typename Enum, std::size_t Size>
const char* NameIn(const char* const (&names)[Size], Enum value)
{
    const auto index = static_cast<std::size_t>(value);
    return index < Size ? names[index] : nullptr;
}

} // namespace

const char* NameOf(Identity identity)
{
    return NameIn(kIdentities, identity);
}

const char* NameOf(Antialiasing antialiasing)
{
    return NameIn(kAntialiasings, antialiasing);
}

const char* NameOf(UpAxis axis)
{
    return NameIn(kUpAxes, axis);
}

const char* NameOf(GlassOrder order)
{
    return NameIn(kGlassOrders, order);
}

const char* NameOf(BatchUse use)
{
    return NameIn(kBatchUses, use);
}

const char* NameOf(GroundKind kind)
{
    return NameIn(kGroundKinds, kind);
}

const char* NameOf(OcclusionKind kind)
{
    return NameIn(kOcclusionKinds, kind);
}

const char* NameOf(HiddenLines hidden)
{
    return NameIn(kHiddenLines, hidden);
}

} // namespace OV::Host::Detail
