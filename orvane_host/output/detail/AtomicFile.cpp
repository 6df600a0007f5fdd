#include "orvane_host/output/detail/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

namespace OV::Host::Detail
{

namespace
{

std::string Explain(int code)
{
    const std::string reason = std::strerror(code);
    switch (code)
    {
    case ENOENT: return "there is no such folder; create it or choose another";
    case ENOTDIR: return "a part of the path is no folder; choose another";
    case EISDIR: return "this is a folder; name a file in it";
    case EACCES:
    case EPERM: return "it may not be written (" + reason + "); choose another place or change the rights";
    case EROFS: return "the file system is read-only; choose another place";
    case ENOSPC:
    case EDQUOT: return "there is no room left (" + reason + "); free some or choose another place";
    case EFBIG: return "the file would be larger than allowed here; raise the limit or ask for a smaller picture";
    case ENAMETOOLONG: return "the name is too long; choose a shorter one";
    case EPIPE: return "nobody reads the pipe any more; keep its reader alive";
    default: return "it could not be written (" + reason + "); choose another place";
    }
}

bool Fail(int code, std::string& error)
{
    error = Explain(code);
    return false;
}

/// Where the bytes go, and how.
struct Target
{
    std::string path;
    std::string folder;
    std::optional<mode_t> mode; ///< of the file that is there already
    bool isPlain = true;        ///< a file, here or to be; else a device or a pipe
};

/// The path behind links, so that a link stays a link.
std::string FollowLinks(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    return resolved ? resolved.get() : path;
}

bool FindTarget(const std::string& path, Target& target, std::string& error)
{
    if (path.empty())
    {
        error = "no file name was given; name one";
        return false;
    }
    if (path.find('\0') != std::string::npos)
    {
        // The system would end the name there.
        error = "a file name has no zero byte; leave it out";
        return false;
    }
    struct stat existing{};
    const bool exists = ::stat(path.c_str(), &existing) == 0;
    if ((exists && S_ISDIR(existing.st_mode)) || path.back() == '/')
    {
        return Fail(EISDIR, error);
    }
    target.path = path;
    if (exists)
    {
        if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0)
        {
            return Fail(errno, error);
        }
        target.isPlain = S_ISREG(existing.st_mode);
        target.mode = existing.st_mode & 0777;
        target.path = target.isPlain ? FollowLinks(path) : path;
    }
    else if (errno != ENOENT)
    {
        return Fail(errno, error);
    }
    const std::size_t slash = target.path.rfind('/');
    target.folder = slash == std::string::npos ? "./" : target.path.substr(0, slash + 1);
    return true;
}

/// The files that a process has open, by number.
constexpr const char* kDescriptors = "/proc/self/fd/";

/// A file that is gone at the end of its scope, and with the process, unless it was put in its place.
///
/// It has no name before, where the file system can do that.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& folder)
    {
        m_folder = folder;
#ifdef O_TMPFILE
        // What a name is given by; a bare root has none.
        if (::access(kDescriptors, X_OK) == 0)
        {
            m_descriptor = ::open(folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666);
        }
        if (m_descriptor >= 0)
        {
            return;
        }
#endif
        do
        {
            m_path = NextName();
            m_descriptor = ::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        } while (m_descriptor < 0 && errno == EEXIST);
        m_exists = m_descriptor >= 0;
    }

    ~TemporaryFile()
    {
        Close();
        if (m_exists)
        {
            ::unlink(m_path.c_str());
        }
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    int Descriptor() const { return m_descriptor; }

    bool MoveTo(const std::string& path, const std::optional<mode_t>& mode)
    {
        if ((mode && ::fchmod(m_descriptor, *mode) != 0) || ::fsync(m_descriptor) != 0 || !Name() || !Close()
            || ::rename(m_path.c_str(), path.c_str()) != 0)
        {
            return false;
        }
        m_exists = false;
        return true;
    }

private:
    std::string NextName() const
    {
        static std::atomic<unsigned int> counter{0};
        // A short name: the longest that the file system takes is fine for the file itself.
        return m_folder + ".orvane-" + std::to_string(::getpid()) + "-" + std::to_string(counter++);
    }

    /// Gives the file a name to be renamed from.
    bool Name()
    {
        if (m_exists)
        {
            return true;
        }
        const std::string self = kDescriptors + std::to_string(m_descriptor);
        do
        {
            m_path = NextName();
            m_exists = ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, m_path.c_str(), AT_SYMLINK_FOLLOW) == 0;
        } while (!m_exists && errno == EEXIST);
        return m_exists;
    }

    bool Close()
    {
        const int descriptor = m_descriptor;
        m_descriptor = -1;
        return descriptor < 0 || ::close(descriptor) == 0;
    }

    std::string m_folder;
    std::string m_path;
    int m_descriptor = -1;
    bool m_exists = false;
};

bool WriteAll(int descriptor, const unsigned char* bytes, std::size_t size)
{
    std::size_t done = 0;
    while (done < size)
    {
        const ssize_t written = ::write(descriptor, bytes + done, size - done);
        if (written < 0 && errno != EINTR)
        {
            return false;
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    return true;
}

class AtomicSink : public FileSink
{
public:
    explicit AtomicSink(const Target& target) : m_target(target), m_file(target.folder) {}

    bool IsOpen() const { return m_file.Descriptor() >= 0; }

    bool Write(const unsigned char* bytes, std::size_t size, std::string& error) override
    {
        return WriteAll(m_file.Descriptor(), bytes, size) || Fail(errno, error);
    }

    bool Finish(std::string& error) override
    {
        return m_file.MoveTo(m_target.path, m_target.mode) || Fail(errno, error);
    }

private:
    Target m_target;
    TemporaryFile m_file;
};

/// A device, a pipe or what the caller has open.
class DirectSink : public FileSink
{
public:
    DirectSink(int descriptor, bool isOwn) : m_descriptor(descriptor), m_isOwn(isOwn) {}

    ~DirectSink() override
    {
        if (m_isOwn && m_descriptor >= 0)
        {
            ::close(m_descriptor);
        }
    }

    bool Write(const unsigned char* bytes, std::size_t size, std::string& error) override
    {
        return WriteAll(m_descriptor, bytes, size) || Fail(errno, error);
    }

    bool Finish(std::string& error) override
    {
        const int descriptor = std::exchange(m_descriptor, m_isOwn ? -1 : m_descriptor);
        return !m_isOwn || ::close(descriptor) == 0 || Fail(errno, error);
    }

private:
    int m_descriptor;
    bool m_isOwn;
};

}  // namespace

std::unique_ptr<FileSink> OpenFileAtomically(const std::string& path, std::string& error)
{
    Target target;
    if (!FindTarget(path, target, error))
    {
        return nullptr;
    }
    if (!target.isPlain)
    {
        const int descriptor = ::open(target.path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
        if (descriptor < 0)
        {
            Fail(errno, error);
            return nullptr;
        }
        return std::make_unique<DirectSink>(descriptor, true);
    }
    auto file = std::make_unique<AtomicSink>(target);
    if (!file->IsOpen())
    {
        Fail(errno, error);
        return nullptr;
    }
    return file;
}

std::unique_ptr<FileSink> SinkInto(int descriptor)
{
    return std::make_unique<DirectSink>(descriptor, false);
}

bool WriteFileAtomically(const std::string& path, const std::vector<unsigned char>& bytes, std::string& error)
{
    const std::unique_ptr<FileSink> file = OpenFileAtomically(path, error);
    return file && file->Write(bytes.data(), bytes.size(), error) && file->Finish(error);
}

bool CanWriteFile(const std::string& path, std::string& error)
{
    Target target;
    if (!FindTarget(path, target, error))
    {
        return false;
    }
    if (target.isPlain && TemporaryFile(target.folder).Descriptor() < 0)
    {
        return Fail(errno, error);
    }
    return true;
}

}  // namespace OV::Host::Detail
