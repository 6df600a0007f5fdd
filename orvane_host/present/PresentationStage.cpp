#include "orvane_host/present/PresentationStage.h"

#include "orvane_host/present/PresentationFrame.h"

namespace OV::Host
{

PresentationStage::~PresentationStage() = default;

FrameNeeds PresentationStage::NeedsOf(const PresentationFrame&) const
{
    return {};
}

int PresentationStage::MarginOf(const PixelSize&) const
{
    return 0;
}

bool PresentationStage::DrawsBesideScene() const
{
    return true;
}

void PresentationStage::Prepare(PresentationFrame&)
{
}

} // namespace OV::Host
