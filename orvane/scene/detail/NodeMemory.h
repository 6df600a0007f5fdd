#pragma once

#include <cstddef>

namespace OV::detail
{

/// Where nodes lie: those up to the size of a MeshNode in blocks of one size, side by side in the order in
/// which they are made, all others by themselves.
///
/// A large scene is walked in that order. Where each node lies between the arrays of its mesh, as the heap
/// places them, a walk waits for memory: 30,000 nodes that all move take three times as long.
///
/// For any thread; a node may be given back by another one than took it. Chunks of blocks go back to the heap
/// with their last node, and nothing here ends with the program, so that nodes may die as late as they like.
class NodeMemory
{
public:
    /// Aligned as memory of the heap is.
    static void* Take(std::size_t size);

    /// Nothing for null.
    static void GiveBack(void* memory) noexcept;
};

} // namespace OV::detail
