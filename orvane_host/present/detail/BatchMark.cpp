#include "orvane_host/present/detail/BatchMark.h"

#include <typeinfo>
#include <utility>

namespace OV::Host::Detail
{

void BatchMarkLink::Release()
{
    if (--m_holders == 0)
    {
        delete this;
    }
}

BatchMark::~BatchMark()
{
    BatchMarkOwner* const owner = m_link->GetOwner();
    if (owner && first != kNone)
    {
        owner->MarkGone(*this);
    }
    m_link->Release();
}

BatchMark* BatchMark::Of(Object* data, const BatchMarkLink& owner)
{
    BatchMark* mark = nullptr;
    if (data && typeid(*data) == typeid(QuietMark))
    {
        mark = static_cast<QuietMark*>(data);
    }
    else if (data && typeid(*data) == typeid(DrawnMark))
    {
        mark = static_cast<DrawnMark*>(data);
    }
    return mark && mark->m_link == &owner ? mark : nullptr;
}

std::uint32_t BatchMark::HandOver()
{
    return std::exchange(first, kNone);
}

} // namespace OV::Host::Detail
