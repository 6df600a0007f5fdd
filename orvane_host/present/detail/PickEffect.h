#pragma once

#include "orvane/effects/DepthIdPassEffectES20.h"

#include <cstddef>
#include <unordered_set>
#include <vector>

namespace OV
{

class Material;
class Mesh;

} // namespace OV

namespace OV::Host::Detail
{

/// Paints each drawing of a mesh at a node in a colour that stands for its number.
///
/// Numbers run from 1 in the order of drawing, so that the same drawing has the same number again
/// as long as the scene stays as it is. User data of nodes are neither read nor changed.
class PickEffect : public DepthIdPassEffectES20
{
public:
    /// As many numbers as three channels of a picture hold. Draws beyond hide what is behind them
    /// but have no number, so that they are not found.
    static constexpr unsigned int MostNumbers = 0xFFFFFF;

    PickEffect();

    /// Which depths surfaces have.
    enum class Depths
    {
        Offset,  ///< those that they are drawn with, by which the right one of several in one plane is found
        InPlace, ///< of where they are
    };

    /// Forgets what was drawn. Before each drawing.
    void Begin(Depths depths);

    /// Whether anything that was drawn stands off its place in depth.
    bool HasOffsets() const { return m_hasOffsets; }

    /// Draws what has this number outside the view from now on.
    void LeaveOut(unsigned int number);

    /// Draws everything again.
    void LeaveNothingOut();

    /// The mesh with a number, of those at its node. Of several that share their geometry and
    /// can't be told by their material either, the first: they are in the same place. Null for a
    /// number that nothing has.
    Mesh* MeshOf(unsigned int number) const;

    /// The node with a number; null for a number that nothing has.
    MeshNode* NodeOf(unsigned int number) const;

    /// The number of a pixel's colour; 0 for the black of what nothing was drawn on.
    static unsigned int Decode(const unsigned char* rgb);

    /// The colour, red, green, blue from 0 to 1, that stands for a number.
    static void Encode(unsigned int number, float (&color)[4]);

    void BindMeshAttributes(MeshES20* mesh) override;
    void BindMeshUniforms(MeshNode* node) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;

private:
    struct Drawn
    {
        const MeshES20* mesh;
        MeshNode* node;
        const Material* material;
    };

    const Drawn* Find(unsigned int number) const;

    std::vector<Drawn> m_drawn; ///< number 1 first
    std::unordered_set<unsigned int> m_leftOut;
    const MeshES20* m_mesh = nullptr;
    const Material* m_material = nullptr;
    Depths m_depths = Depths::Offset;
    bool m_hasOffsets = false;
};

} // namespace OV::Host::Detail
