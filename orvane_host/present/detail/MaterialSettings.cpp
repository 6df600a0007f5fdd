#include "orvane_host/present/detail/MaterialSettings.h"

#include "orvane_host/geometry/detail/DepthRank.h"
#include "orvane/scene/Material.h"
#include "orvane/scene/Scene.h"

#include <algorithm>
#include <vector>

namespace OV::Host::Detail
{

namespace
{

constexpr unsigned int kFlags = MaterialFlagNoCull | MaterialFlagUnlit | MaterialFlagPolygonOffset;

/// Of a material whose ambient colour nobody has set.
const Color kUnsetAmbient(1.0f, 1.0f, 1.0f, 1.0f);

std::vector<Material*> MaterialsOf(const Scene& scene)
{
    std::vector<Material*> materials = scene.GetOptimizedMaterials();
    materials.insert(materials.end(), scene.GetAlphaMaterials().begin(), scene.GetAlphaMaterials().end());
    return materials;
}

bool IsSame(const Color& a, const Color& b)
{
    return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a;
}

/// The alpha, by which a scene sorts its materials, is left to the host.
bool HasColor(const Material& material, const Color& color)
{
    return material.diffuse.r == color.r && material.diffuse.g == color.g && material.diffuse.b == color.b;
}

} // namespace

MaterialSettings::State MaterialSettings::StateOf(const Material& material)
{
    return {material.flags, material.diffuse, material.ambient, material.polygonOffsetFactor, material.polygonOffsetUnits};
}

void MaterialSettings::Give(Material& material, const State& state)
{
    material.flags = (material.flags & ~kFlags) | (state.flags & kFlags);
    material.diffuse = Color(state.diffuse.r, state.diffuse.g, state.diffuse.b, material.diffuse.a);
    material.ambient = state.ambient;
    material.polygonOffsetFactor = state.offsetFactor;
    material.polygonOffsetUnits = state.offsetUnits;
}

MaterialSettings::State MaterialSettings::Want(const State& original, const Material& material, const Wanted& wanted)
{
    State state = original;
    const Color& diffuse = original.diffuse;
    if (wanted.showsBacks)
    {
        state.flags |= MaterialFlagNoCull;
    }
    const bool isLit = (original.flags & MaterialFlagUnlit) == 0;
    if (wanted.ambient && isLit)
    {
        state.ambient = *wanted.ambient;
    }
    else if (wanted.shareWithoutLight > 0.0f && isLit && IsSame(original.ambient, kUnsetAmbient))
    {
        const float share = wanted.shareWithoutLight;
        state.ambient = Color(share * diffuse.r, share * diffuse.g, share * diffuse.b);
    }
    if (wanted.reflects)
    {
        const float* const factors = material.reflectionFactors;
        const float kept = std::clamp(1.0f - factors[0] * factors[2], 0.0f, 1.0f);
        state.diffuse = Color(kept * diffuse.r, kept * diffuse.g, kept * diffuse.b);
    }
    if (wanted.cutsUnlit && !isLit)
    {
        const Color& ambient = original.ambient;
        state.flags &= ~static_cast<unsigned int>(MaterialFlagUnlit);
        state.ambient = Color(ambient.r + diffuse.r, ambient.g + diffuse.g, ambient.b + diffuse.b);
        state.diffuse = Color(0.0f, 0.0f, 0.0f);
    }
    if (wanted.room)
    {
        // What stands back among faces in one plane does so by as much more.
        const bool isOn = (original.flags & MaterialFlagPolygonOffset) != 0;
        const int rank = DepthRank::Of({isOn, original.offsetFactor, original.offsetUnits});
        const DepthOffset offset = DepthRank::WithRoom(rank, wanted.room->factor, wanted.room->units);
        state.flags |= MaterialFlagPolygonOffset;
        state.offsetFactor = offset.factor;
        state.offsetUnits = offset.units;
    }
    return state;
}

void MaterialSettings::FollowHost()
{
    for (Material* material : MaterialsOf(m_scene))
    {
        const auto found = m_entries.find(material);
        if (found == m_entries.end())
        {
            continue;
        }
        State& original = found->second.original;
        const State& set = found->second.set;
        const unsigned int changed = (material->flags ^ set.flags) & kFlags;
        original.flags = (original.flags & kFlags & ~changed) | (material->flags & (changed | ~kFlags));
        if (!HasColor(*material, set.diffuse))
        {
            original.diffuse = material->diffuse;
        }
        if (!IsSame(material->ambient, set.ambient))
        {
            original.ambient = material->ambient;
        }
        if (material->polygonOffsetFactor != set.offsetFactor)
        {
            original.offsetFactor = material->polygonOffsetFactor;
        }
        if (material->polygonOffsetUnits != set.offsetUnits)
        {
            original.offsetUnits = material->polygonOffsetUnits;
        }
    }
}

void MaterialSettings::Apply(const Wanted& wanted, const SectionFaces& section)
{
    FollowHost();
    std::unordered_map<Material*, Entry> entries;
    std::vector<const Material*> added = {section.GetMaterial()};
    for (const SectionFaces::Copy& copy : section.GetCopies())
    {
        added.push_back(copy.material);
    }
    const auto isOpened = [&](const Material* material)
    { return std::find(section.GetOpened().begin(), section.GetOpened().end(), material) != section.GetOpened().end(); };
    const std::vector<Material*> present = MaterialsOf(m_scene);
    for (Material* material : present)
    {
        if (std::find(added.begin(), added.end(), material) != added.end())
        {
            continue;
        }
        const auto known = m_entries.find(material);
        const State original = known == m_entries.end() ? StateOf(*material) : known->second.original;
        State state = Want(original, *material, wanted);
        state.flags |= isOpened(material) ? MaterialFlagNoCull : 0u;
        Give(*material, state);
        entries[material] = {original, state};
    }
    for (const SectionFaces::Copy& copy : section.GetCopies())
    {
        const auto original = entries.find(copy.original);
        if (original == entries.end() || std::find(present.begin(), present.end(), copy.material) == present.end())
        {
            // The host has deleted one of the two.
            continue;
        }
        State state = Want(original->second.original, *copy.material, wanted);
        state.flags |= MaterialFlagNoCull;
        Give(*copy.material, state);
    }
    if (auto* const faces = const_cast<Material*>(section.GetMaterial()))
    {
        // It shows its backs in any case, which have the section fill.
        State plain;
        plain.flags = MaterialFlagNoCull | (wanted.cutsUnlit ? 0u : static_cast<unsigned int>(MaterialFlagUnlit));
        plain.diffuse = faces->diffuse;
        plain.ambient = faces->ambient;
        Wanted onlyRoom;
        onlyRoom.room = wanted.room;
        Give(*faces, Want(plain, *faces, onlyRoom));
    }
    m_entries = std::move(entries);
}

void MaterialSettings::TakeBack()
{
    FollowHost();
    for (Material* material : MaterialsOf(m_scene))
    {
        const auto found = m_entries.find(material);
        if (found != m_entries.end())
        {
            Give(*material, found->second.original);
        }
    }
    m_entries.clear();
}

} // namespace OV::Host::Detail
