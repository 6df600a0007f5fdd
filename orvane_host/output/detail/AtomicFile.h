#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace OV::Host::Detail
{

/// Where the bytes of a file go, piece by piece. An unfinished one leaves nothing behind.
class FileSink
{
public:
    virtual ~FileSink() = default;
    FileSink(const FileSink&) = delete;
    FileSink& operator=(const FileSink&) = delete;

    /// @param error on failure the reason and the remedy in one line, without the path.
    virtual bool Write(const unsigned char* bytes, std::size_t size, std::string& error) = 0;

    /// Says that all bytes are there.
    virtual bool Finish(std::string& error) = 0;

protected:
    FileSink() = default;
};

/// A file beside `path` that takes its place when it is finished, so that nobody ever sees a part of
/// it. A device or a pipe is opened and written to.
std::unique_ptr<FileSink> OpenFileAtomically(const std::string& path, std::string& error);

/// What is open already, such as standard output; stays open.
std::unique_ptr<FileSink> SinkInto(int descriptor);

/// Writes a whole file, as OpenFileAtomically.
/// @param error on failure the reason and the remedy in one line, without the path.
bool WriteFileAtomically(const std::string& path, const std::vector<unsigned char>& bytes, std::string& error);

/// Goes as far as WriteFileAtomically does before its first byte, and leaves nothing behind.
bool CanWriteFile(const std::string& path, std::string& error);

}  // namespace OV::Host::Detail
