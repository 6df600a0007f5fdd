#pragma once

#include "bench/GLFingerprint.h"
#include "orvane_host/context/HeadlessContext.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>

namespace OV::Bench
{

/// A current context with a framebuffer; ends the program where there is none.
inline std::unique_ptr<Host::HeadlessContext> OpenContext(int width, int height)
{
    Host::HeadlessContext::Options options;
    options.width = width;
    options.height = height;
    std::string error;
    std::unique_ptr<Host::HeadlessContext> context = Host::HeadlessContext::Create(options, error);
    if (!context)
    {
        std::fprintf(stderr, "no GL context: %s\n", error.c_str());
        std::exit(1);
    }
    return context;
}

/// Ends the program unless both make the same GL calls: a comparison is of no use otherwise.
template <class Engine, class Hand>
void RequireSameCalls(Engine byEngine, Hand byHand)
{
    // The first time everything is made, and entry points are loaded.
    byEngine();
    std::uint64_t engine = 0;
    std::uint64_t engineCalls = 0;
    {
        const GLFingerprint fingerprint;
        byEngine();
        engine = GLFingerprint::s_value;
        engineCalls = GLFingerprint::s_calls;
    }
    const GLFingerprint fingerprint;
    byHand();
    if (GLFingerprint::s_value != engine || GLFingerprint::s_calls != engineCalls)
    {
        std::fprintf(stderr, "the hand-written loop makes other calls (%llu) than the engine (%llu)\n",
                     static_cast<unsigned long long>(GLFingerprint::s_calls),
                     static_cast<unsigned long long>(engineCalls));
        std::exit(1);
    }
}

/// Measures one thing done again and again.
template <class Work>
void Repeat(benchmark::State& state, int items, Work work)
{
    for (auto _ : state)
    {
        work();
    }
    state.SetItemsProcessed(state.iterations() * items);
}

/// An offset into a buffer as GL takes it.
inline const void* Pointer(std::intptr_t offset)
{
    return reinterpret_cast<const void*>(offset);
}

/// Lets the driver drop the drawing, which leaves the engine's own cost, unless the caller has
/// said otherwise by GALLIUM_NOOP=0.
inline void DropDrawing()
{
    ::setenv("GALLIUM_NOOP", "1", 0);
}

} // namespace OV::Bench
