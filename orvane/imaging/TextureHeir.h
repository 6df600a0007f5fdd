#pragma once

#include "orvane/Export.h"

namespace OV
{

/// Takes over the textures that are in use when their loader dies, until their last users give
/// them back.
class ORVANE_API TextureHeir
{
public:
    virtual ~TextureHeir();

    /// Gives a texture back; it is deleted with its last user. GL.
    virtual void Release(unsigned int id) = 0;
};

}  // namespace OV
