#pragma once

#include <cstddef>
#include <cstdint>

namespace OV
{

/// View of a constant array that lives as long as the program.
template <class Row>
class ConstantTable
{
public:
    constexpr ConstantTable() = default;

    template <std::size_t Size>
    constexpr ConstantTable(const Row (&rows)[Size]) :
        m_rows(rows), m_size(Size)
    {
    }

    constexpr ConstantTable(const Row* rows, std::size_t size) :
        m_rows(rows), m_size(size)
    {
    }

    constexpr const Row* begin() const
    {
        return m_rows;
    }

    constexpr const Row* end() const
    {
        return m_rows + m_size;
    }

    constexpr std::size_t size() const
    {
        return m_size;
    }

private:
    const Row* m_rows = nullptr;
    std::size_t m_size = 0;
};

/// One option of an effect: the bit that asks for it and the macro that the sources test.
///
/// A row for 0 matches no bit and only names the program without options.
struct OptionRow
{
    std::uint64_t bit;
    const char* name;
};

using OptionTable = ConstantTable<OptionRow>;

/// A uniform or an attribute and the index by which the effect speaks of it.
struct IndexedName
{
    unsigned int index;
    const char* name;
};

using NameTable = ConstantTable<IndexedName>;

/// Whether the rows are in order of their indices, from 0 without a gap. The table of uniforms
/// of an effect must be: asserted where it is written, it keeps index and name together.
constexpr bool IsDense(const NameTable& table)
{
    unsigned int expected = 0;
    for (const IndexedName& row : table)
    {
        if (row.index != expected++)
        {
            return false;
        }
    }
    return true;
}

/// All that a family of programs is made from; constant data of its effect class.
struct ProgramTemplate
{
    /// Diagnostic only.
    const char* baseName;
    const char* vertexSource;
    const char* fragmentSource;
    OptionTable options;
    NameTable uniforms;
    NameTable attributes;
};

} // namespace OV
