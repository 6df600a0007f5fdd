#pragma once

#include "orvane_host/present/EdgeLook.h"
#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/detail/SurfacePass.h"

#include <memory>

namespace OV::Host::Detail
{

class ScreenBuffer;

/// The identifiers of the surfaces, and their depth along with them, for the stages that need
/// them.
class IdentifierStage final : public PresentationStage
{
public:
    IdentifierStage();

    /// GL if there are buffers.
    ~IdentifierStage() override;

    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    ScreenBuffer* Resized(const PresentationFrame& frame, Identity identity, bool& finer);
    bool Draw(PresentationFrame& frame, Identity identity);

    SurfacePass m_pass;
    std::unique_ptr<ScreenBuffer> m_buffers[2]; ///< by Identity; null until needed
    PixelSize m_refusedFiner;                   ///< that GL could not make finer identifiers for
};

} // namespace OV::Host::Detail
