#pragma once

#include "orvane/scene/Mesh.h"
#include "orvane/scene/RawMesh.h"

#include <atomic>
#include <thread>

namespace OV::Test
{

/// Writes indices of a mesh that name the vertex past the last and a real one in turns, in a thread of its own, as
/// long as it lives. The sanitizers see who looks up another index than the one that was checked.
class MeshWriter
{
public:
    explicit MeshWriter(const Mesh& mesh) : m_raw(*mesh.GetRawMesh()), m_thread([this] { Write(); })
    {
        while (m_rounds == 0)
        {
            std::this_thread::yield();
        }
    }

    ~MeshWriter()
    {
        m_ends = true;
        m_thread.join();
    }

private:
    void Write()
    {
        const auto past = static_cast<unsigned short>(m_raw.positions.size());
        // Writes that nothing reads again might be left out.
        volatile unsigned short* const indices = m_raw.indices.data();
        const std::size_t count = m_raw.indices.size();
        while (!m_ends)
        {
            for (std::size_t i = 0; i < count; ++i)
            {
                indices[i] = (i + m_rounds) % 2 == 0 ? past : 0;
            }
            ++m_rounds;
        }
    }

    RawMesh& m_raw;
    std::atomic<bool> m_ends{false};
    std::atomic<std::size_t> m_rounds{0};
    std::thread m_thread;
};

} // namespace OV::Test
