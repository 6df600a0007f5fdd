#pragma once

#include "orvane_host/present/PresentationFrame.h"

namespace OV::Host
{

class ViewVolume;

} // namespace OV::Host

namespace OV::Host::Detail
{

class Batches;

/// Lists the meshes of a frame. Keeps its room from frame to frame, but no mesh.
class ItemLister
{
public:
    ItemLister() = default;
    ItemLister(const ItemLister&) = delete;
    ItemLister& operator=(const ItemLister&) = delete;

    const FrameItems& GetItems() const { return m_items; }

    /// Lists everything, giving what is new its render data, and lets items without a mesh stand for materials
    /// that are drawn in the simplest way, until ListMeshes. GL.
    void List(PresentationFrame& frame, bool withLines);

    /// The same with what batches make of it, and besides what the camera sees of it, without what
    /// takes up a smaller share of the picture's height. GL.
    /// @param isAllNeeded whether somebody asks for what the camera doesn't see.
    void List(PresentationFrame& frame, bool withLines, Batches& batches, float leastShare, bool isAllNeeded);

    /// Lists surfaces that a view may see, each mesh at each node by itself. GL.
    void ListSingly(PresentationFrame& frame, Batches& batches, const ViewVolume& view);

    /// Lists one by one what items without a mesh stand for.
    void ListMeshes();

    /// Lists the surfaces of what is listed that have identifiers, one by one or as a whole as they are listed.
    void ListSurfaces(bool withPoints);

    /// Takes out what a host has deleted that was called while the frame was listed or drawn.
    void DropGone(const StageAccess& renderer);

    void Clear();

private:
    static void DropGone(const StageAccess& renderer, FrameItems& items);
    static void ListSurfaces(FrameItems& items, bool withPoints);
    static void ListMeshes(FrameItems& items);

    FrameItems m_items;
    FrameItems m_seen;
};

} // namespace OV::Host::Detail
