#include "orvane_host/import/detail/AssimpFiles.h"

#include <assimp/IOStream.hpp>
#include <assimp/MemoryIOWrapper.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <locale>
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

/// Text of UTF-16 as UTF-8, with a question mark for what is none.
/// @param bytes two for a unit, after the mark of their order; an odd last one is left out.
std::string ToUtf8(const std::string& bytes, bool isBigEndian)
{
    std::u16string units;
    units.reserve(bytes.size() / 2);
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
    {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        units.push_back(static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first));
    }
    using Converter = std::codecvt<char16_t, char, std::mbstate_t>;
    const auto& converter = std::use_facet<Converter>(std::locale::classic());
    std::string text;
    const char16_t* from = units.data();
    const char16_t* const end = from + units.size();
    while (from != end)
    {
        char part[4096];
        char* to = part;
        std::mbstate_t state{};
        const char16_t* const before = from;
        const auto result = converter.out(state, before, end, from, std::begin(part), std::end(part), to);
        text.append(part, to);
        if (result == Converter::error || from == before)
        {
            text.push_back('?');
            ++from;
        }
    }
    return text;
}

/// The stream itself, or where it is of UTF-16 one of the same text in UTF-8, which is what parsers read.
std::unique_ptr<Assimp::IOStream> InUtf8(std::unique_ptr<Assimp::IOStream> stream)
{
    unsigned char mark[2] = {};
    const bool isMarked = stream->Read(mark, 1, sizeof(mark)) == sizeof(mark)
        && ((mark[0] == 0xFF && mark[1] == 0xFE) || (mark[0] == 0xFE && mark[1] == 0xFF));
    stream->Seek(0, aiOrigin_SET);
    if (!isMarked)
    {
        return stream;
    }
    std::string bytes(stream->FileSize(), '\0');
    bytes.resize(stream->Read(bytes.data(), 1, bytes.size()));
    const std::string text = ToUtf8(bytes, mark[0] == 0xFE);
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
