#include "orvane_host/present/detail/DepthStage.h"

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/detail/ScreenBuffer.h"

#include <GL/gl.h>

namespace OV::Host::Detail
{

DepthStage::DepthStage() = default;

DepthStage::~DepthStage() = default;

void DepthStage::ReleaseGL()
{
    m_pass.ReleaseGL();
    m_buffer.reset();
}

void DepthStage::Draw(PresentationFrame& frame)
{
    if (!frame.served || !frame.needs.depth || frame.needs.objectIdentifiers || frame.needs.groupIdentifiers)
    {
        return;
    }
    frame.served = m_pass.Fetch(frame);
    if (!frame.served)
    {
        return;
    }
    const OffscreenScope offscreen(frame);
    if (!m_buffer)
    {
        m_buffer = std::make_unique<ScreenBuffer>(RenderTargetProfileDepth);
    }
    frame.served = m_buffer->Resize(frame.target.width, frame.target.height);
    if (frame.served)
    {
        m_pass.Draw(frame, *m_buffer, GL_DEPTH_BUFFER_BIT, true, true);
    }
}

} // namespace OV::Host::Detail
