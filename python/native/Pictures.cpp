// Bindings of what makes pictures, in memory and in files.
#include "python/native/Arrays.h"
#include "python/native/Binding.h"
#include "python/native/Refused.h"
#include "orvane_host/output/PictureFile.h"
#include "orvane_host/present/PictureOptions.h"
#include "orvane/imaging/ImageCodec.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace py = pybind11;

namespace OV::Python
{

namespace
{

/// How far a picture is, between the thread that draws and the one that waits.
struct Course
{
    std::atomic<float> percent{0.0f};
    std::atomic<bool> isStopped{false};
};

/// Draws on the engine's thread. Whoever stops to wait for it stops it too, between two tiles.
/// @param progress a function that is told the share that is drawn, or none.
template <typename Work>
auto Draw(const Handle& handle, Host::PictureOptions options, const py::object& progress, Work work)
{
    const auto course = std::make_shared<Course>();
    options.progress = [course](float percent)
    {
        course->percent = percent;
        return !course->isStopped && !Engine::Get().IsStopping();
    };
    float told = -1.0f;
    const auto tell = [&](float percent)
    {
        if (progress.is_none() || percent <= told)
        {
            return;
        }
        told = percent;
        const py::object answer = progress(percent);
        course->isStopped = course->isStopped || answer.ptr() == Py_False;
    };
    try
    {
        auto drawn = Engine::Get().Run(
            [model = handle.Get(), options, work]
            {
                try
                {
                    return work(*model, options);
                }
                catch (const Refused&)
                {
                    // The end stopped it, rather than what is told.
                    Engine::Get().NeedRunning();
                    throw;
                }
            },
            [&] { tell(course->percent); });
        tell(100.0f);
        return drawn;
    }
    catch (...)
    {
        course->isStopped = true;
        throw;
    }
}

void NeedPicture(const ByteArray& picture)
{
    if (picture.ndim() != 3 || (picture.shape(2) != 3 && picture.shape(2) != 4) || picture.size() == 0)
    {
        throw Refused(Trouble::Value, "a picture has to have the shape (height, width, 3 or 4)");
    }
}

py::bytes PackPNG(const ByteArray& picture)
{
    NeedPicture(picture);
    std::vector<unsigned char> pixels(picture.data(), picture.data() + picture.size());
    std::vector<unsigned char> file;
    {
        const WithoutInterpreter scope;
        file = ImageCodec::EncodeImagePNG(pixels, static_cast<std::uint64_t>(picture.shape(1)),
                                          static_cast<std::uint64_t>(picture.shape(0)),
                                          static_cast<std::uint64_t>(picture.shape(2)));
    }
    return py::bytes(reinterpret_cast<const char*>(file.data()), file.size());
}

bool WriteRows(const std::string& path, const std::vector<unsigned char>& pixels, Host::PictureFormat format,
               std::string& error)
{
    const auto width = static_cast<std::size_t>(format.width) * static_cast<std::size_t>(format.Channels());
    std::unique_ptr<Host::PictureFile> file;
    bool isWritten = Host::PictureFile::KindOf(path, format.kind, error)
        && (file = Host::PictureFile::Create(path, format, error)) != nullptr;
    for (std::size_t row = 0; isWritten && row < pixels.size(); row += width)
    {
        isWritten = file->WriteRow(&pixels[row], error);
    }
    return isWritten && file->Finish(error);
}

void SaveArray(const Name& path, const ByteArray& picture, double pixelsPerMetre)
{
    NeedPicture(picture);
    Host::PictureFormat format;
    const auto side = [&](int axis)
    { return static_cast<int>(std::min<py::ssize_t>(picture.shape(axis), std::numeric_limits<int>::max())); };
    format.width = side(1);
    format.height = side(0);
    format.alpha = picture.shape(2) == 4;
    format.pixelsPerMetre = pixelsPerMetre;
    const std::vector<unsigned char> pixels(picture.data(), picture.data() + picture.size());
    std::string error;
    bool isWritten = false;
    {
        const WithoutInterpreter scope;
        isWritten = WriteRows(path.bytes, pixels, format, error);
    }
    if (!isWritten)
    {
        throw Refused(Trouble::File, path.bytes + ": " + error);
    }
}

} // namespace

void BindPictures(py::module_& module, py::class_<Handle>& model)
{
    model
        .def("picture",
             [](const Handle& handle, int width, int height, bool isTransparent, float pixelRatio)
             {
                 Host::PictureOptions options;
                 options.width = width;
                 options.height = height;
                 options.transparent = isTransparent;
                 options.pixelRatio = pixelRatio;
                 return PictureArray(Draw(handle, options, py::none(), [](Model& of, const Host::PictureOptions& how)
                                          { return of.TakePicture(how); }),
                                     {width, height}, isTransparent ? 4 : 3);
             },
             py::arg("width"), py::arg("height"), py::arg("transparent"), py::arg("pixel_ratio"))
        .def("save",
             [](const Handle& handle, const Name& path, int width, int height, bool isTransparent, float pixelRatio,
                int bits, double pixelsPerMetre, const py::object& progress)
             {
                 Host::PictureOptions options;
                 options.width = width;
                 options.height = height;
                 options.transparent = isTransparent;
                 options.pixelRatio = pixelRatio;
                 options.bits = bits;
                 options.pixelsPerMetre = pixelsPerMetre;
                 Draw(handle, options, progress,
                      [path](Model& of, const Host::PictureOptions& how)
                      {
                          of.SavePicture(path.bytes, how);
                          return true;
                      });
             },
             py::arg("path"), py::arg("width"), py::arg("height"), py::arg("transparent"), py::arg("pixel_ratio"),
             py::arg("bits"), py::arg("pixels_per_metre"), py::arg("progress"));
    module.def("pack_png", &PackPNG, py::arg("picture"));
    module.def("save_picture", &SaveArray, py::arg("path"), py::arg("picture"), py::arg("pixels_per_metre"));
}

} // namespace OV::Python
