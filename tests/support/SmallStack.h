#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <pthread.h>

namespace OV::Test
{

/// Runs it in a thread whose stack has room for a few hundred calls, not for a call a level of a
/// deep tree.
inline void OnASmallStack(std::function<void()> work)
{
    constexpr std::size_t stackSize = 512 * 1024;
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, stackSize), 0);
    pthread_t thread;
    const auto run = [](void* given) -> void*
    {
        (*static_cast<std::function<void()>*>(given))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

} // namespace OV::Test
