#pragma once

#include "orvane_host/import/detail/ModelData.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace OV::Host
{

/// Writes plain values, texts and arrays to a file descriptor, arrays in one piece each.
///
/// Only for a reader on the same machine. Arrays start at multiples of 8 bytes.
class ArchiveWriter
{
public:
    explicit ArchiveWriter(int descriptor);

    template <typename T>
    void Value(const T& value)
    {
        static_assert(std::is_trivially_copyable_v<T>, "bytes are the value");
        Append(&value, sizeof(T));
    }

    void Text(const std::string& text);

    template <typename T>
    void Array(const ArrayView<T>& array)
    {
        Value(array.count);
        Align();
        Append(array.data, array.count * sizeof(T));
    }

    template <typename T>
    void List(const std::vector<T>& list);

    /// Writes what is still held back.
    /// @return false when any write failed.
    bool Finish();

private:
    void Append(const void* bytes, std::uint64_t size);
    void Align();
    void Flush();
    void WriteOut(const char* bytes, std::uint64_t size);

    int m_descriptor;
    bool m_good = true;
    std::uint64_t m_offset = 0;
    std::vector<char> m_buffer;
};

/// Reads back what ArchiveWriter wrote, from memory that it does not trust.
///
/// After the first value that does not fit, everything reads as empty and IsGood is false.
/// Arrays are not copied: they point into the memory.
class ArchiveReader
{
public:
    ArchiveReader(const void* bytes, std::uint64_t size);

    bool IsGood() const { return m_good; }

    template <typename T>
    void Value(T& value)
    {
        static_assert(std::is_trivially_copyable_v<T>, "bytes are the value");
        Take(&value, sizeof(T));
    }

    /// A byte other than 0 and 1 must not get into a bool.
    void Value(bool& value);

    void Text(std::string& text);

    template <typename T>
    void Array(ArrayView<T>& array)
    {
        array = ArrayView<T>();
        std::uint64_t count = 0;
        Value(count);
        Align();
        if (!m_good || count > (m_size - m_offset) / sizeof(T))
        {
            m_good = false;
            return;
        }
        array.data = reinterpret_cast<const T*>(m_bytes + m_offset);
        array.count = count;
        m_offset += count * sizeof(T);
    }

    template <typename T>
    void List(std::vector<T>& list);

private:
    void Take(void* to, std::uint64_t size);
    void Align();

    const char* m_bytes;
    std::uint64_t m_size;
    std::uint64_t m_offset = 0;
    bool m_good = true;
};

void WriteModel(ArchiveWriter& archive, const ModelData& model);

/// @return false, with the model to be thrown away, when the archive is damaged.
bool ReadModel(ArchiveReader& archive, ModelData& model);

} // namespace OV::Host
