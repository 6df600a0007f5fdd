#include "orvane_host/import/detail/MemoryFile.h"

#include "orvane_host/import/detail/FileFinder.h"

#include <algorithm>
#include <cerrno>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace OV::Host
{

namespace
{

constexpr std::size_t kMost = 512;

/// Bytes that are read of a stream at once.
constexpr std::size_t kPart = 1 << 20;

bool WriteAll(int descriptor, const unsigned char* bytes, std::uint64_t size)
{
    while (size > 0)
    {
        const ssize_t written = write(descriptor, bytes, size);
        if (written < 0)
        {
            if (errno == EINTR)
            {
                continue;
            }
            return false;
        }
        bytes += written;
        size -= static_cast<std::uint64_t>(written);
    }
    return true;
}

} // namespace

std::shared_ptr<const MemoryFile> MemoryFile::Create()
{
    const int descriptor = memfd_create("orvane", MFD_CLOEXEC);
    if (descriptor < 0)
    {
        return nullptr;
    }
    std::shared_ptr<const MemoryFile> file(new MemoryFile(descriptor));
    // Without the file system that lists open files there is no name to open it by.
    return IsRegularFile(file->GetPath()) ? file : nullptr;
}

std::shared_ptr<const MemoryFile> MemoryFile::Create(const unsigned char* bytes, std::uint64_t size)
{
    std::shared_ptr<const MemoryFile> file = Create();
    return file && WriteAll(file->m_descriptor, bytes, size) ? file : nullptr;
}

std::shared_ptr<const MemoryFile> MemoryFile::Read(int descriptor, std::uint64_t most, int& trouble)
{
    errno = 0;
    std::shared_ptr<const MemoryFile> file = Create();
    trouble = errno != 0 ? errno : ENOMEM;
    std::vector<unsigned char> part(kPart);
    for (std::uint64_t size = 0; file;)
    {
        const ssize_t count = read(descriptor, part.data(), part.size());
        if (count == 0)
        {
            return file;
        }
        if (count < 0 && errno == EINTR)
        {
            continue;
        }
        size += count > 0 ? static_cast<std::uint64_t>(count) : 0;
        const bool isTooLarge = count > 0 && size > most;
        if (isTooLarge || count < 0 || !WriteAll(file->m_descriptor, part.data(), static_cast<std::uint64_t>(count)))
        {
            trouble = isTooLarge ? EFBIG : errno;
            return nullptr;
        }
    }
    return nullptr;
}

std::size_t MemoryFile::MostAtOnce()
{
    rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
    {
        return 0;
    }
    return static_cast<std::size_t>(std::min<rlim_t>(limit.rlim_cur / 4, kMost));
}

MemoryFile::MemoryFile(int descriptor)
    : m_descriptor(descriptor), m_path("/proc/self/fd/" + std::to_string(descriptor))
{
}

MemoryFile::~MemoryFile()
{
    close(m_descriptor);
}

} // namespace OV::Host
