#include "orvane/scene/detail/NodeMemory.h"

#include "orvane/scene/MeshNode.h"

#include <algorithm>
#include <mutex>
#include <new>

#ifdef __has_feature
#define ORVANE_HAS_FEATURE(feature) __has_feature(feature)
#else
#define ORVANE_HAS_FEATURE(feature) 0
#endif

namespace OV::detail
{

#if defined(__SANITIZE_ADDRESS__) || ORVANE_HAS_FEATURE(address_sanitizer)

// The sanitizer sees the use of a node that is gone only where each has memory of its own.
void* NodeMemory::Take(std::size_t size)
{
    return ::operator new(size);
}

void NodeMemory::GiveBack(void* memory) noexcept
{
    ::operator delete(memory);
}

#else

namespace
{

struct Chunk;

constexpr std::size_t kAlignment = 16;

constexpr std::size_t RoundUp(std::size_t size)
{
    return (size + kAlignment - 1) / kAlignment * kAlignment;
}

/// What stands before every node: its chunk, null where it lies by itself.
using Owner = Chunk*;

constexpr std::size_t kBlockSize = RoundUp(sizeof(Owner) + sizeof(MeshNode));
/// Of one that lies by itself.
constexpr std::size_t kBeforeNode = RoundUp(sizeof(Owner));

Owner& OwnerOf(void* memory)
{
    return static_cast<Owner*>(memory)[-1];
}

/// Blocks side by side, behind this.
struct Chunk
{
    explicit Chunk(std::size_t blocks) : count(blocks) {}

    static std::size_t Size(std::size_t blocks) { return FirstPlace() + blocks * kBlockSize; }

    /// There has to be room.
    void* Take()
    {
        ++used;
        if (void* const memory = givenBack)
        {
            givenBack = *static_cast<void**>(memory);
            return memory;
        }
        return reinterpret_cast<unsigned char*>(this) + FirstPlace() + begun++ * kBlockSize;
    }

    void GiveBack(void* memory)
    {
        --used;
        *static_cast<void**>(memory) = givenBack;
        givenBack = memory;
    }

    bool IsFull() const { return used == count; }

    std::size_t count;
    std::size_t used = 0;
    std::size_t begun = 0;     ///< blocks that were ever taken: those behind are untouched
    void* givenBack = nullptr; ///< each holds where the next one is
    Chunk* next = nullptr;     ///< among those with room
    Chunk* previous = nullptr;

private:
    static constexpr std::size_t FirstPlace() { return RoundUp(sizeof(Chunk) + sizeof(Owner)); }
};

class Store
{
public:
    void* Take()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Chunk* const chunk = m_first ? m_first : AddChunk();
        void* const memory = chunk->Take();
        OwnerOf(memory) = chunk;
        if (chunk->IsFull())
        {
            Unlink(chunk);
        }
        return memory;
    }

    void GiveBack(void* memory)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Chunk* const chunk = OwnerOf(memory);
        if (chunk->IsFull())
        {
            // Behind the others: what is made next goes on to lie beside what was made last.
            Link(chunk);
        }
        chunk->GiveBack(memory);
        if (chunk->used == 0)
        {
            Unlink(chunk);
            m_blocks -= chunk->count;
            ::operator delete(chunk);
        }
    }

private:
    Chunk* AddChunk()
    {
        // A small part of what there is, so that little of it is not in use.
        constexpr std::size_t fewest = 8;
        constexpr std::size_t part = 32;
        constexpr std::size_t most = 4096;
        const std::size_t blocks = std::clamp(m_blocks / part, fewest, most);
        auto* const chunk = new (::operator new(Chunk::Size(blocks))) Chunk(blocks);
        m_blocks += blocks;
        Link(chunk);
        return chunk;
    }

    void Link(Chunk* chunk)
    {
        chunk->previous = m_last;
        chunk->next = nullptr;
        (m_last ? m_last->next : m_first) = chunk;
        m_last = chunk;
    }

    void Unlink(Chunk* chunk)
    {
        (chunk->previous ? chunk->previous->next : m_first) = chunk->next;
        (chunk->next ? chunk->next->previous : m_last) = chunk->previous;
    }

    std::mutex m_mutex;
    std::size_t m_blocks = 0; ///< in all chunks
    Chunk* m_first = nullptr; ///< of those with room
    Chunk* m_last = nullptr;
};

Store& TheStore()
{
    // Never destroyed: nodes may outlive whatever has a place in the order of the program's end.
    alignas(Store) static unsigned char place[sizeof(Store)];
    static Store* const store = new (place) Store;
    return *store;
}

} // namespace

void* NodeMemory::Take(std::size_t size)
{
    if (size <= sizeof(MeshNode))
    {
        return TheStore().Take();
    }
    void* const memory = static_cast<unsigned char*>(::operator new(kBeforeNode + size)) + kBeforeNode;
    OwnerOf(memory) = nullptr;
    return memory;
}

void NodeMemory::GiveBack(void* memory) noexcept
{
    if (!memory)
    {
        return;
    }
    if (OwnerOf(memory))
    {
        TheStore().GiveBack(memory);
    }
    else
    {
        ::operator delete(static_cast<unsigned char*>(memory) - kBeforeNode);
    }
}

#endif

} // namespace OV::detail

namespace OV
{

void* Node::operator new(std::size_t size)
{
    return detail::NodeMemory::Take(size);
}

void* Node::operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try
    {
        return detail::NodeMemory::Take(size);
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

void* Node::operator new(std::size_t size, std::align_val_t alignment)
{
    return ::operator new(size, alignment);
}

void* Node::operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t& tag) noexcept
{
    return ::operator new(size, alignment, tag);
}

void* Node::operator new(std::size_t, void* place) noexcept
{
    return place;
}

void Node::operator delete(void* memory) noexcept
{
    detail::NodeMemory::GiveBack(memory);
}

void Node::operator delete(void* memory, const std::nothrow_t&) noexcept
{
    detail::NodeMemory::GiveBack(memory);
}

void Node::operator delete(void* memory, std::align_val_t alignment) noexcept
{
    ::operator delete(memory, alignment);
}

void Node::operator delete(void* memory, std::align_val_t alignment, const std::nothrow_t& tag) noexcept
{
    ::operator delete(memory, alignment, tag);
}

void Node::operator delete(void*, void*) noexcept {}

} // namespace OV
