#include "orvane_host/import/detail/AssimpFiles.h"

#include "orvane_host/import/detail/ModelText.h"

#include <assimp/IOStream.hpp>
#include <assimp/MemoryIOWrapper.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <utility>

namespace OV::Host
{

namespace
{

/// Reads in vain that a parser may make at the end of a file before it counts as lost.
constexpr int kMaxVainReads = 1000;

/// A stream that ends parsers which go on reading at the end of a file for ever.
class GuardedStream : public Assimp::IOStream
{
public:
    explicit GuardedStream(std::unique_ptr<Assimp::IOStream> stream) : m_stream(std::move(stream)) {}

    std::size_t Read(void* buffer, std::size_t size, std::size_t count) override
    {
        const std::size_t read = size == 0 || count == 0 ? 0 : m_stream->Read(buffer, size, count);
        m_vainReads = read > 0 || size == 0 || count == 0 ? 0 : m_vainReads + 1;
        if (m_vainReads > kMaxVainReads)
        {
            throw std::runtime_error("the file ends too early");
        }
        return read;
    }

    std::size_t Write(const void*, std::size_t, std::size_t) override { return 0; }

    aiReturn Seek(std::size_t offset, aiOrigin origin) override { return m_stream->Seek(offset, origin); }

    std::size_t Tell() const override { return m_stream->Tell(); }

    std::size_t FileSize() const override { return m_stream->FileSize(); }

    void Flush() override {}

private:
    std::unique_ptr<Assimp::IOStream> m_stream;
    int m_vainReads = 0;
};

/// The stream itself, or where it is of UTF-16 one of the same text in UTF-8, which is what parsers read.
std::unique_ptr<Assimp::IOStream> InUtf8(std::unique_ptr<Assimp::IOStream> stream)
{
    std::string bytes(2, '\0');
    bytes.resize(stream->Read(bytes.data(), 1, bytes.size()));
    stream->Seek(0, aiOrigin_SET);
    if (!IsMarkedUtf16(bytes))
    {
        return stream;
    }
    bytes.resize(stream->FileSize());
    bytes.resize(stream->Read(bytes.data(), 1, bytes.size()));
    const std::string text = Utf8OfUtf16(bytes);
    auto copy = std::make_unique<std::uint8_t[]>(text.size());
    std::copy(text.begin(), text.end(), copy.get());
    return std::make_unique<Assimp::MemoryIOStream>(copy.release(), text.size(), true);
}

} // namespace

AssimpFiles::AssimpFiles(const ModelSource& model, std::uint64_t maxBytes,
                         std::function<void(std::uint64_t)> opened)
    : m_model(model), m_finder(model.name), m_maxBytes(maxBytes), m_opened(std::move(opened))
{
}

bool AssimpFiles::Exists(const char* file) const
{
    return !Find(file).empty();
}

Assimp::IOStream* AssimpFiles::Open(const char* file, const char* mode)
{
    if (std::strpbrk(mode, "wa+"))
    {
        return nullptr;
    }
    const std::string path = Find(file);
    struct stat info = {};
    if (path.empty() || stat(path.c_str(), &info) != 0 ||
        static_cast<std::uint64_t>(info.st_size) > m_maxBytes)
    {
        return nullptr;
    }
    m_openedBytes += static_cast<std::uint64_t>(info.st_size);
    if (m_opened)
    {
        m_opened(m_openedBytes);
    }
    std::unique_ptr<Assimp::IOStream> stream(DefaultIOSystem::Open(path.c_str(), mode));
    return stream ? new GuardedStream(InUtf8(std::move(stream))) : nullptr;
}

std::string AssimpFiles::Find(const char* file) const
{
    if (m_model.name == file)
    {
        return m_model.content;
    }
    return IsRegularFile(file) ? std::string(file) : m_finder.Find(file);
}

} // namespace OV::Host
