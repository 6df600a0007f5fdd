#pragma once

#include "orvane_host/present/PresentationStage.h"
#include "orvane_host/present/detail/SurfacePass.h"

#include <memory>

namespace OV::Host::Detail
{

class ScreenBuffer;

/// The depth of the surfaces for the stages that need it, where it doesn't come with identifiers.
class DepthStage final : public PresentationStage
{
public:
    DepthStage();

    /// GL if there is a buffer.
    ~DepthStage() override;

    void Draw(PresentationFrame& frame) override;
    void ReleaseGL() override;

private:
    SurfacePass m_pass;
    std::unique_ptr<ScreenBuffer> m_buffer; ///< null until needed
};

} // namespace OV::Host::Detail
