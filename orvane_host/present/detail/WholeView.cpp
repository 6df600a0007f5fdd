#include "orvane_host/present/detail/WholeView.h"

#include "orvane/renderdata/CameraNodeES20.h"

#include <algorithm>

namespace OV::Host::Detail
{

WholeView::WholeView(PresentationFrame& frame) : size(frame.target), worldToClip(frame.cameraData.GetMVP())
{
    const PicturePart& part = frame.part;
    if (part.size == part.whole)
    {
        return;
    }
    // A capture may be finer than the screen.
    const int finer = std::max(frame.target.width / std::max(part.size.width, 1), 1);
    size = {part.whole.width * finer, part.whole.height * finer};
    first = {part.x * finer, part.y * finer};
    const ViewPart before = frame.cameraData.GetPart();
    frame.cameraData.SetPart(ViewPart());
    frame.cameraData.UpdateMVP(frame.view.width, frame.view.height, false);
    worldToClip = frame.cameraData.GetMVP();
    frame.cameraData.SetPart(before);
    frame.cameraData.UpdateMVP(frame.view.width, frame.view.height, false);
}

} // namespace OV::Host::Detail
