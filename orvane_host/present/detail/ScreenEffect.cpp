#include "orvane_host/present/detail/ScreenEffect.h"

#include "orvane/renderdata/MeshES20.h"

namespace OV::Host::Detail
{

namespace
{

constexpr unsigned Position = ScreenAttributes[0].index;

} // namespace

void ScreenEffect::Remove()
{
    EndUse();
    BindTexture(0, 0);
}

void ScreenEffect::BindMeshAttributes(MeshES20* mesh)
{
    EnableAttribute(Position, 3, mesh->GetStride(), mesh->GetPositionOffset());
}

void ScreenEffect::ReleaseMeshAttributes(MeshES20*)
{
    DisableAttribute(Position);
}

} // namespace OV::Host::Detail
