#pragma once

#include <memory>
#include <string>

namespace OV::Host
{

/// Kinds of files that pictures are written to.
enum class PictureKind
{
    PNG,
    JPEG ///< without alpha and with 8 bits a channel
};

/// What a picture file holds.
struct PictureFormat
{
    /// Of a side of a PNG; a JPEG has 35 fewer, as the format allows.
    static constexpr int MostPixels = 65535;
    static constexpr int MostJPEGPixels = 65500;

    PictureKind kind = PictureKind::PNG;
    int width = 0;
    int height = 0;
    bool alpha = false; ///< RGBA, straight, in place of RGB
    int bits = 8;       ///< a channel, 8 or 16
    /// How large the picture is in print: pixels a metre; 0 says nothing of it.
    double pixelsPerMetre = 0.0;
    /// Of a JPEG, 1 to 100.
    int quality = 92;

    int Channels() const { return alpha ? 4 : 3; }
};

/// A picture that goes to a file row by row, so that it never needs to be in memory as a whole.
///
/// The file is complete or it is not there, as for WritePNG. Errors are told as there: the reason
/// and the remedy in one line, without the path.
class PictureFile
{
public:
    /// Begins a file.
    /// @param path UTF-8, or whatever bytes name the file. Its ending has to suit the kind.
    /// @return null on failure.
    static std::unique_ptr<PictureFile> Create(const std::string& path, const PictureFormat& format,
                                               std::string& error);

    /// Begins to write to what is open already, such as a pipe, which stays open.
    static std::unique_ptr<PictureFile> Create(int descriptor, const PictureFormat& format, std::string& error);

    /// Without Finish it leaves no file behind.
    virtual ~PictureFile() = default;

    PictureFile(const PictureFile&) = delete;
    PictureFile& operator=(const PictureFile&) = delete;

    /// Adds the next row, the top one first.
    /// @param row tight channels: bytes, or 16-bit numbers in the machine's order.
    virtual bool WriteRow(const void* row, std::string& error) = 0;

    /// Ends the file once all rows are there.
    virtual bool Finish(std::string& error) = 0;

    const PictureFormat& GetFormat() const { return m_format; }

    /// The kind that the ending of a name asks for, PNG where it has none that is known.
    /// @return false, with the reason and the remedy, where it promises a kind that isn't written.
    static bool KindOf(const std::string& path, PictureKind& kind, std::string& error);

    /// Tells early whether a file of a format could be written at all.
    static bool CanHold(const PictureFormat& format, std::string& error);

    /// Tells early whether a file of that name could be written, and leaves nothing behind.
    static bool CanWrite(const std::string& path, std::string& error);

protected:
    explicit PictureFile(const PictureFormat& format) : m_format(format) {}

    const PictureFormat m_format;
};

}  // namespace OV::Host
