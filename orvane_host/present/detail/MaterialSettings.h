#pragma once

#include "orvane_host/geometry/FeatureEdges.h"
#include "orvane_host/geometry/SectionFaces.h"
#include "orvane/math/Color.h"

#include <optional>
#include <unordered_map>

namespace OV
{

class Material;
class Scene;

} // namespace OV

namespace OV::Host::Detail
{

/// Gives the materials of a scene what settings want of them, worked out from what each of them
/// was each time, so that nothing adds up and all can be taken back.
class MaterialSettings
{
public:
    /// What settings want.
    struct Wanted
    {
        bool showsBacks = false;
        /// Replaces the ambient colour of what is lit; none keeps it.
        std::optional<Color> ambient;
        /// Of its own colour, which what is lit shows without light where its ambient colour was never
        /// set: that is white, and would make it white. 0 leaves it so.
        float shareWithoutLight = 0.0f;
        /// Takes what a material reflects straight on from the colour that it has besides.
        bool reflects = false;
        /// Has what is unlit drawn as lit, in the colours that it has, with light that adds none: the basic look
        /// cuts what is lit alone.
        bool cutsUnlit = false;
        std::optional<LineRoom> room; ///< none makes none
    };

    /// @param scene not owned; outlives this.
    explicit MaterialSettings(Scene& scene) : m_scene(scene) {}

    MaterialSettings(const MaterialSettings&) = delete;
    MaterialSettings& operator=(const MaterialSettings&) = delete;

    /// Sets every material of the scene. Whatever a host has changed meanwhile counts as what the
    /// material was.
    /// @param section as it is cut; its copies follow their originals.
    void Apply(const Wanted& wanted, const SectionFaces& section);

    /// Makes every material of the scene what it was.
    void TakeBack();

private:
    /// What of a material settings change.
    struct State
    {
        unsigned int flags = 0;
        Color diffuse; ///< of what it is seen by, its alpha apart
        Color ambient;
        float offsetFactor = 0.0f;
        float offsetUnits = 0.0f;
    };

    struct Entry
    {
        State original;
        State set; ///< by Apply
    };

    static State StateOf(const Material& material);
    static void Give(Material& material, const State& state);
    static State Want(const State& original, const Material& material, const Wanted& wanted);
    void FollowHost();

    Scene& m_scene;
    std::unordered_map<Material*, Entry> m_entries; ///< of materials of the scene's own
};

} // namespace OV::Host::Detail
