#include "orvane_host/present/detail/IdentifierStage.h"

#include "orvane_host/present/detail/ConstantColorScope.h"
#include "orvane_host/present/detail/SampleShadingScope.h"
#include "orvane_host/present/detail/ScreenBuffer.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

namespace
{

/// The attribute that identifiers come from, where they are those of vertices.
constexpr GLuint kIdentifierAttribute = 1;

bool Needs(const PresentationFrame& frame, Identity identity)
{
    return identity == Identity::Group ? frame.needs.groupIdentifiers : frame.needs.objectIdentifiers;
}

} // namespace

IdentifierStage::IdentifierStage() = default;

IdentifierStage::~IdentifierStage() = default;

void IdentifierStage::ReleaseGL()
{
    m_pass.ReleaseGL();
    for (std::unique_ptr<ScreenBuffer>& buffer : m_buffers)
    {
        buffer.reset();
    }
    m_refusedFiner = {};
}

void IdentifierStage::Draw(PresentationFrame& frame)
{
    if (!frame.served || (!frame.needs.objectIdentifiers && !frame.needs.groupIdentifiers))
    {
        return;
    }
    frame.served = m_pass.Fetch(frame);
    if (!frame.served)
    {
        return;
    }
    const OffscreenScope offscreen(frame);
    for (const Identity identity : {Identity::Object, Identity::Group})
    {
        frame.served = frame.served && (!Needs(frame, identity) || Draw(frame, identity));
    }
}

ScreenBuffer* IdentifierStage::Resized(const PresentationFrame& frame, Identity identity, bool& finer)
{
    std::unique_ptr<ScreenBuffer>& buffer = m_buffers[static_cast<int>(identity)];
    if (!buffer)
    {
        buffer = std::make_unique<ScreenBuffer>(RenderTargetProfileColorDepth, ScreenBuffer::Depths::Offsets);
    }
    if (finer && !buffer->Resize(2 * frame.target.width, 2 * frame.target.height))
    {
        m_refusedFiner = frame.target;
        finer = false;
    }
    return finer || buffer->Resize(frame.target.width, frame.target.height) ? buffer.get() : nullptr;
}

bool IdentifierStage::Draw(PresentationFrame& frame, Identity identity)
{
    // Samples of a pixel that look up four of these give edges as smooth as the surfaces.
    bool finer = frame.needs.fineIdentifiers && frame.target != m_refusedFiner && frame.multisampled
        && SampleShadingScope::IsSupported();
    ScreenBuffer* const buffer = Resized(frame, identity, finer);
    if (!buffer)
    {
        return false;
    }
    frame.shadeSamples = finer && SampleShadingScope::IsOfUse();
    const bool groups = identity == Identity::Group;
    const ConstantColorScope plain(kIdentifierAttribute, !groups);
    // Lines need the depth of objects as it is, and where there are lines there are groups.
    const bool asDepth = frame.needs.depth && (groups || !frame.needs.groupIdentifiers);
    m_pass.Draw(frame, *buffer, GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT, groups, asDepth);
    RenderTarget& target = buffer->GetTarget();
    (groups ? frame.groupIdentifiers : frame.objectIdentifiers) = target.GetColorTexture();
    if (!groups)
    {
        frame.objectDepth = target.GetDepthTexture();
    }
    return true;
}

} // namespace OV::Host::Detail
