#pragma once

#include "orvane_host/present/PresentationFrame.h"
#include "orvane_host/present/PresentationStage.h"

#include <functional>
#include <memory>
#include <utility>

namespace OV::Test
{

/// What became of an AddedStage.
struct StageRecord
{
    int prepared = 0;
    int drawn = 0;
    int released = 0;
    int destroyed = 0;
};

/// A stage such as a host adds, made of functions; without them it does nothing.
class AddedStage : public Host::PresentationStage
{
public:
    explicit AddedStage(std::shared_ptr<StageRecord> record) : m_record(std::move(record)) {}
    ~AddedStage() override { ++m_record->destroyed; }

    Host::FrameNeeds NeedsOf(const Host::PresentationFrame&) const override { return needs; }
    void Prepare(Host::PresentationFrame&) override { ++m_record->prepared; }

    void Draw(Host::PresentationFrame& frame) override
    {
        ++m_record->drawn;
        if (draw)
        {
            draw(frame);
        }
    }

    void ReleaseGL() override
    {
        ++m_record->released;
        if (release)
        {
            release();
        }
    }

    Host::FrameNeeds needs;
    std::function<void(Host::PresentationFrame&)> draw;
    std::function<void()> release;

private:
    std::shared_ptr<StageRecord> m_record;
};

} // namespace OV::Test
