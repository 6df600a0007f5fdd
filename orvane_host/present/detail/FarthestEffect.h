#pragma once

#include "orvane_host/present/detail/ScreenEffect.h"

#include <string>

namespace OV::Host::Detail
{

/// Draws the largest depth of blocks of pixels over all of a target, for LineEffect, which leaves out
/// what is behind all of it.
class FarthestEffect final : public ScreenEffect
{
public:
    /// Pixels along a side of a block.
    static constexpr int Block = 4;

    /// The next Apply draws the blocks of a picture of depth. @param depth a texture.
    void ShowBlocks(unsigned int depth, int width, int height);

    /// The next Apply draws each block with those about it. @param blocks a texture.
    void ShowNeighbours(unsigned int blocks, int width, int height);

    unsigned int CreateProgramForOptions(std::uint64_t options, std::string& name) override;
    void Apply(MaterialES20* material, CameraNodeES20* camera) override;

private:
    unsigned int m_texture = 0;
    bool m_takesNeighbours = false;
    int m_width = 1;
    int m_height = 1;
};

} // namespace OV::Host::Detail
