#include "orvane/imaging/detail/RowTasks.h"

#include <algorithm>
#include <exception>
#include <future>
#include <vector>

namespace OV::detail
{

namespace
{
// Smaller pictures are done before a thread has started.
constexpr std::size_t kPixelsWorthThreads = 65536;
}  // namespace

RowTasks PlanRowTasks(std::size_t width, std::size_t height, std::size_t hardwareThreads)
{
    RowTasks tasks;
    if (width * height >= kPixelsWorthThreads)
    {
        tasks.count = std::max({std::size_t(1), height, hardwareThreads});
    }
    tasks.rowsPerTask = height / tasks.count;
    tasks.lastRows = height - (tasks.count - 1) * tasks.rowsPerTask;
    return tasks;
}

void RunTasks(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& task)
{
    const std::size_t shares = std::max(std::size_t(1), std::min(count, threads));
    const auto runShare = [&](std::size_t share) {
        const std::size_t end = (share + 1) * count / shares;
        for (std::size_t i = share * count / shares; i < end; ++i)
        {
            task(i);
        }
    };

    std::vector<std::future<void>> running;
    running.reserve(shares - 1);
    std::size_t started = 1;
    try
    {
        for (; started < shares; ++started)
        {
            running.push_back(std::async(std::launch::async, runShare, started));
        }
    }
    catch (const std::exception&)
    {
        // The system gives no more threads; the shares left over are the caller's.
    }
    runShare(0);
    for (std::size_t share = started; share < shares; ++share)
    {
        runShare(share);
    }
    for (std::future<void>& future : running)
    {
        future.wait();
    }
}

}  // namespace OV::detail
