#include "orvane/scene/LightNode.h"
#include "orvane/scene/MeshNode.h"
#include "tests/scene/SceneDoubles.h"
#include "tests/support/HeapCount.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <memory>
#include <new>
#include <random>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

namespace OV
{
namespace
{

using namespace Test;

// The sanitizer sees the use of a node that is gone only where each has memory of its own.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSideBySide = false;
#else
constexpr bool kSideBySide = true;
#endif

constexpr std::size_t kMany = 3000;

using Nodes = std::vector<std::unique_ptr<Node>>;

Nodes Made(std::size_t count)
{
    Nodes nodes;
    nodes.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
    {
        nodes.push_back(std::make_unique<MeshNode>(nullptr));
        nodes.back()->SetUserData(static_cast<int>(i));
    }
    return nodes;
}

std::uintptr_t AddressOf(const void* object)
{
    return reinterpret_cast<std::uintptr_t>(object);
}

/// How many have the one that was made before them, or after them, beside them.
std::ptrdiff_t CountNeighbours(const Nodes& nodes)
{
    constexpr std::uintptr_t most = sizeof(MeshNode) + 16;
    std::ptrdiff_t count = 0;
    for (std::size_t i = 1; i < nodes.size(); ++i)
    {
        count += AddressOf(nodes[i].get()) - AddressOf(nodes[i - 1].get()) + most <= 2 * most;
    }
    return count;
}

struct LargeNode : MeshNode
{
    using MeshNode::MeshNode;
    std::array<int, 300> more = {};
};

struct alignas(64) AlignedNode : Node
{
    using Node::Node;
    int number = 7;
};

template <class Base>
struct FailingNode : Base
{
    FailingNode() : Base(nullptr) { throw std::runtime_error("fails"); }
};

/// Dies after all that the program ends by itself.
const std::unique_ptr<Node> lastOfAll = std::make_unique<MeshNode>(nullptr);

TEST(NodeMemory, NodesMadeInARowLieSideBySide)
{
    Nodes nodes;
    std::vector<std::vector<char>> arrays;
    for (std::size_t i = 0; i < kMany; ++i)
    {
        nodes.push_back(std::make_unique<MeshNode>(nullptr));
        arrays.emplace_back(2000);
    }
    EXPECT_EQ(CountNeighbours(nodes) > static_cast<std::ptrdiff_t>(kMany) * 9 / 10, kSideBySide);
}

TEST(NodeMemory, GoesBackToTheHeapInAnyOrder)
{
    std::mt19937 dice(1);
    const std::size_t before = HeapBytes();
    for (const char* const order : {"as made", "backwards", "by chance"})
    {
        Nodes nodes = Made(kMany);
        if (*order == 'b')
        {
            order[1] == 'a' ? std::reverse(nodes.begin(), nodes.end()) : std::shuffle(nodes.begin(), nodes.end(), dice);
        }
        EXPECT_GE(HeapBytes() - before, kMany * sizeof(MeshNode));
        for (std::unique_ptr<Node>& node : nodes)
        {
            node.reset();
        }
        Nodes().swap(nodes);
        EXPECT_EQ(HeapBytes(), before) << order;
    }
}

TEST(NodeMemory, TakesLittleMoreThanTheNodes)
{
    for (const std::size_t count : {std::size_t(1), std::size_t(100), std::size_t(1000), std::size_t(20000)})
    {
        const std::size_t before = HeapBytes();
        const Nodes nodes = Made(count);
        const std::size_t ofNodes = HeapBytes() - before - count * sizeof(nodes.front());
        EXPECT_LE(ofNodes, count * (sizeof(MeshNode) + 16) * 33 / 32 + 9 * (sizeof(MeshNode) + 16)) << count;
    }
}

TEST(NodeMemory, RoomOfNodesThatAreGoneIsTakenAgain)
{
    Nodes nodes = Made(kMany);
    for (std::size_t i = 0; i < nodes.size(); i += 2)
    {
        nodes[i].reset();
    }
    const std::size_t before = HeapBytes();
    for (std::size_t i = 0; i < nodes.size(); i += 2)
    {
        nodes[i] = std::make_unique<MeshNode>(nullptr);
    }
    EXPECT_EQ(HeapBytes() == before, kSideBySide);
}

TEST(NodeMemory, NodesOfOtherSizesAndAlignmentsWork)
{
    const std::size_t before = HeapBytes();
    {
        const auto large = std::make_unique<LargeNode>(nullptr);
        large->more.back() = 5;
        EXPECT_EQ(AddressOf(large.get()) % __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0u);
        const std::unique_ptr<Node> aligned = std::make_unique<AlignedNode>(nullptr);
        EXPECT_EQ(AddressOf(aligned.get()) % 64, 0u);
        EXPECT_EQ(static_cast<AlignedNode&>(*aligned).number, 7);
        const std::unique_ptr<Node> light = std::make_unique<LightNode>(nullptr);
        const std::unique_ptr<Node> plain(new (std::nothrow) Node(nullptr));
        EXPECT_EQ(AddressOf(plain.get()) % __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0u);
        const std::unique_ptr<Node> alignedToo(new (std::nothrow) AlignedNode(nullptr));
        EXPECT_EQ(AddressOf(alignedToo.get()) % 64, 0u);
        alignas(MeshNode) unsigned char place[sizeof(MeshNode)];
        auto* const there = new (place) MeshNode(nullptr);
        EXPECT_EQ(static_cast<void*>(there), place);
        there->~MeshNode();
    }
    EXPECT_EQ(HeapBytes(), before);
}

TEST(NodeMemory, ConstructorsThatThrowLeaveNothing)
{
    const std::size_t before = HeapBytes();
    EXPECT_THROW(new FailingNode<MeshNode>, std::runtime_error);
    EXPECT_THROW(new FailingNode<LargeNode>, std::runtime_error);
    EXPECT_THROW(new (std::nothrow) FailingNode<MeshNode>, std::runtime_error);
    EXPECT_THROW(new (std::nothrow) FailingNode<LargeNode>, std::runtime_error);
    EXPECT_EQ(HeapBytes(), before);
}

TEST(NodeMemory, RefusedByTheHeapTellsSo)
{
    Nodes nodes;
    nodes.reserve(kMany);
    {
        const HeapRefusal refusal(0);
        const auto fill = [&]
        {
            while (nodes.size() < kMany)
            {
                nodes.push_back(std::make_unique<MeshNode>(nullptr));
            }
        };
        EXPECT_THROW(fill(), std::bad_alloc);
        EXPECT_EQ(new (std::nothrow) MeshNode(nullptr), nullptr);
        EXPECT_THROW(new LargeNode(nullptr), std::bad_alloc);
        EXPECT_EQ(new (std::nothrow) LargeNode(nullptr), nullptr);
    }
    nodes.push_back(std::make_unique<MeshNode>(nullptr));
}

TEST(NodeMemory, NodesAreMadeAndDeletedOnAnyThread)
{
    constexpr int threads = 4;
    const std::size_t before = HeapBytes();
    std::array<Nodes, threads> kept;
    const auto work = [&](int number)
    {
        std::mt19937 dice(static_cast<unsigned>(number));
        Nodes& nodes = kept[static_cast<std::size_t>(number)];
        for (int i = 0; i < 20000; ++i)
        {
            if (nodes.size() > 200 || (!nodes.empty() && dice() % 3 == 0))
            {
                std::swap(nodes[dice() % nodes.size()], nodes.back());
                ASSERT_EQ(nodes.back()->GetUserData(), number);
                nodes.pop_back();
            }
            else
            {
                nodes.push_back(std::make_unique<MeshNode>(nullptr));
                nodes.back()->SetUserData(number);
            }
        }
    };
    std::vector<std::thread> running;
    for (int i = 0; i < threads; ++i)
    {
        running.emplace_back(work, i);
    }
    for (std::thread& thread : running)
    {
        thread.join();
    }
    std::set<const Node*> all;
    std::size_t count = 0;
    for (int i = 0; i < threads; ++i)
    {
        Nodes& nodes = kept[static_cast<std::size_t>(i)];
        count += nodes.size();
        for (const std::unique_ptr<Node>& node : nodes)
        {
            EXPECT_EQ(node->GetUserData(), i);
            all.insert(node.get());
        }
    }
    EXPECT_EQ(all.size(), count);
    all.clear();
    std::vector<std::thread>().swap(running);
    // By another thread than made them.
    kept = {};
    EXPECT_EQ(HeapBytes(), before);
}

} // namespace
} // namespace OV
