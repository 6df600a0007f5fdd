#include "orvane_host/import/detail/MemoryFile.h"

#include "orvane_host/import/detail/FileFinder.h"

#include <algorithm>
#include <cerrno>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

namespace OV::Host
{

namespace
{

constexpr std::size_t kMost = 512;

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

std::shared_ptr<const MemoryFile> MemoryFile::Create(const unsigned char* bytes, std::uint64_t size)
{
    const int descriptor = memfd_create("orvane-picture", MFD_CLOEXEC);
    if (descriptor < 0)
    {
        return nullptr;
    }
    std::shared_ptr<const MemoryFile> file(new MemoryFile(descriptor));
    // Without the file system that lists open files there is no name to open it by.
    return WriteAll(descriptor, bytes, size) && IsRegularFile(file->GetPath()) ? file : nullptr;
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
