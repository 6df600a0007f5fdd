#pragma once

#include "orvane/base/WatchedPtr.h"
#include "orvane/imaging/TextureHeir.h"
#include "orvane/imaging/TextureLoader.h"

#include <memory>

namespace OV
{

/// Pointer of those who hold textures to their loader, which they do not own: it reads null
/// once the loader is gone, and textures can still be given back.
class TextureLoaderPtr
{
public:
    TextureLoaderPtr() = default;

    /// Null is allowed.
    TextureLoaderPtr(TextureLoader* loader) :
        m_loader(loader), m_heir(loader ? loader->GetHeir() : nullptr)
    {
    }

    TextureLoader* Get() const { return m_loader.Get(); }

    operator TextureLoader*() const { return Get(); }
    TextureLoader* operator->() const { return Get(); }

    /// Gives a texture of the loader's back, to its heir when it is gone. Of a loader that is
    /// gone and has no heir the texture stays with GL. GL.
    void Release(unsigned int id) const
    {
        if (TextureLoader* const loader = Get())
        {
            loader->ReleaseTexture(id);
        }
        else if (m_heir)
        {
            m_heir->Release(id);
        }
    }

private:
    WatchedPtr<TextureLoader> m_loader;
    std::shared_ptr<TextureHeir> m_heir;
};

}  // namespace OV
