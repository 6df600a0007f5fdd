#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace OV::Host
{

/// A file without a place on any disk, which has a name for this process as long as it lives
/// and leaves nothing behind.
class MemoryFile
{
public:
    /// @return null where the system gives none.
    static std::shared_ptr<const MemoryFile> Create(const unsigned char* bytes, std::uint64_t size);

    /// Takes in what a stream has, to its end.
    /// @param most bytes.
    /// @param trouble on failure an errno, EFBIG where there are more bytes than that.
    /// @return null on failure.
    static std::shared_ptr<const MemoryFile> Read(int descriptor, std::uint64_t most, int& trouble);

    /// How many this process can hold without coming near the files that it may have open.
    static std::size_t MostAtOnce();

    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const std::string& GetPath() const { return m_path; }

private:
    static std::shared_ptr<const MemoryFile> Create();
    explicit MemoryFile(int descriptor);

    int m_descriptor;
    std::string m_path;
};

} // namespace OV::Host
