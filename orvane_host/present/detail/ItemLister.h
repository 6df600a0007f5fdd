#pragma once

#include "orvane_host/present/PresentationFrame.h"

namespace OV::Host::Detail
{

/// Lists the meshes of a frame. Keeps its room from frame to frame, but no mesh.
class ItemLister
{
public:
    ItemLister() = default;
    ItemLister(const ItemLister&) = delete;
    ItemLister& operator=(const ItemLister&) = delete;

    const FrameItems& GetItems() const { return m_items; }

    /// Lists everything, giving what is new its render data. GL.
    void List(PresentationFrame& frame, bool withLines);

    /// Lists the surfaces of what is listed that have identifiers.
    void ListSurfaces(bool withPoints);

    void Clear();

private:
    /// Takes out what a host has deleted that was called while the frame was listed.
    void DropGone(const StageAccess& renderer);

    FrameItems m_items;
};

} // namespace OV::Host::Detail
