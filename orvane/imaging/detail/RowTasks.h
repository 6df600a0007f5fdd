#pragma once

#include <cstddef>
#include <functional>

namespace OV::detail
{

/// How the rows of a picture are dealt out. Every task has rowsPerTask rows, save the last,
/// which takes what is left.
struct RowTasks
{
    std::size_t count = 1;
    std::size_t rowsPerTask = 0;
    std::size_t lastRows = 0;

    std::size_t Rows(std::size_t task) const { return task + 1 == count ? lastRows : rowsPerTask; }
};

/// Below 65,536 pixels one task does all. From there on there are as many tasks as rows, or
/// as threads where these are more: the larger is meant. A picture with fewer rows than
/// threads is thus left whole to the last task.
RowTasks PlanRowTasks(std::size_t width, std::size_t height, std::size_t hardwareThreads);

/// Calls task(0) to task(count - 1), each once, and returns when the last has ended.
///
/// The calls run on at most `threads` threads, the caller's among them; where no thread can
/// be started the caller does that share itself. The task must not throw.
void RunTasks(std::size_t count, std::size_t threads, const std::function<void(std::size_t)>& task);

}  // namespace OV::detail
