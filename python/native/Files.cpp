// Bindings of what a model does with files, of what stands on its picture, and of its sun.
#include "python/native/Arrays.h"
#include "python/native/Binding.h"
#include "python/native/Refused.h"
#include "orvane_host/import/ModelImporter.h"
#include "orvane_host/import/ModelLoading.h"
#include "orvane_host/present/SunSettings.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

namespace py = pybind11;

namespace OV::Python
{

namespace
{

/// How a file is read.
struct Reading
{
    bool textures;
    bool keepCoplanar;
    bool showBacks;
    bool isAlone; ///< no other file shares its coordinates
    py::object progress; ///< a function, or none
};

/// Waits for a file while others run, and asks now and then whether to go on.
void WaitFor(Host::ModelLoading& loading, const py::object& progress)
{
    auto pause = std::chrono::milliseconds(1);
    float told = -1.0f;
    for (;;)
    {
        bool isReady = loading.IsReady();
        if (!isReady)
        {
            const WithoutInterpreter scope;
            std::this_thread::sleep_for(pause);
            isReady = loading.IsReady();
        }
        pause = std::min(pause * 2, std::chrono::milliseconds(50));
        if (PyErr_CheckSignals() != 0)
        {
            throw py::error_already_set();
        }
        const float percent = loading.GetPercent();
        if (!progress.is_none() && percent > told)
        {
            told = percent;
            const py::object answer = progress(percent);
            if (answer.ptr() == Py_False)
            {
                loading.Cancel();
            }
        }
        if (isReady)
        {
            return;
        }
    }
}

/// Reads a file on a thread of its own.
/// @return what has its scene still to be taken.
std::shared_ptr<Host::ModelLoading> Read(const Name& path, const Reading& how)
{
    Host::ImportOptions options;
    options.textures = how.textures;
    options.orderCoplanar = !how.keepCoplanar;
    options.showBacks = how.showBacks;
    options.bringsWithinReach = how.isAlone;
    auto loading = std::make_shared<Host::ModelLoading>(path.bytes, options);
    try
    {
        WaitFor(*loading, how.progress);
    }
    catch (...)
    {
        loading->Cancel();
        const WithoutInterpreter scope;
        loading.reset();
        throw;
    }
    return loading;
}

/// On the engine's thread.
Host::ImportResult Take(Host::ModelLoading& loading)
{
    Host::ImportResult result = loading.Take();
    if (!result)
    {
        throw Refused(Trouble::File, result.error.Line());
    }
    return result;
}

std::unique_ptr<Handle> Open(const Name& path, const Reading& how)
{
    return MakeHandle([loading = Read(path, how)] { return std::make_shared<Model>(Take(*loading)); });
}

/// @param points rows of three.
std::vector<Host::Dimension> DimensionsFrom(const std::vector<DoubleArray>& points)
{
    std::vector<Host::Dimension> dimensions;
    for (const DoubleArray& rows : points)
    {
        if (rows.ndim() != 2 || rows.shape(1) != 3)
        {
            throw Refused(Trouble::Value, "the points of a dimension have to have the shape (2, 3) or (3, 3)");
        }
        Host::Dimension& made = dimensions.emplace_back();
        for (py::ssize_t i = 0; i < rows.shape(0); ++i)
        {
            made.points.push_back({rows.at(i, 0), rows.at(i, 1), rows.at(i, 2)});
        }
    }
    return dimensions;
}

py::array_t<double> RowsOf(const std::vector<QGM::Point3d>& points)
{
    py::array_t<double> rows({static_cast<py::ssize_t>(points.size()), py::ssize_t(3)});
    for (std::size_t i = 0; i < points.size(); ++i)
    {
        const auto row = static_cast<py::ssize_t>(i);
        rows.mutable_at(row, 0) = points[i].x;
        rows.mutable_at(row, 1) = points[i].y;
        rows.mutable_at(row, 2) = points[i].z;
    }
    return rows;
}

py::object SunOf(const Host::SunState& sun)
{
    if (!sun.direction && !sun.position)
    {
        return py::none();
    }
    const auto direction = sun.direction ? py::cast(FromVector(*sun.direction)) : py::object(py::none());
    const auto angle = [&](double Host::SolarPosition::*of)
    { return sun.position ? py::object(py::float_((*sun.position).*of)) : py::object(py::none()); };
    return py::make_tuple(direction, angle(&Host::SolarPosition::azimuth), angle(&Host::SolarPosition::elevation));
}

void BindFileList(py::class_<Handle>& model)
{
    model
        .def("files", [](const Handle& handle) { return NamesOf(On(handle, [](Model& of) { return of.Files(); })); })
        .def("add_file",
             [](const Handle& handle, const Name& path, const Reading& how)
             { On(handle, [loading = Read(path, how)](Model& to) { to.AddFile(Take(*loading)); }); },
             py::arg("path"), py::arg("how"))
        .def("replace_file",
             [](const Handle& handle, std::size_t place, const Name& path, const Reading& how)
             {
                 On(handle, [place, loading = Read(path, how)](Model& in) { in.ReplaceFile(place, Take(*loading)); });
             },
             py::arg("place"), py::arg("path"), py::arg("how"))
        .def("remove_file", Bound(&Model::RemoveFile), py::arg("place"));
}

void BindNotes(py::class_<Handle>& model)
{
    model
        .def("set_dimensions",
             [](const Handle& handle, const std::vector<DoubleArray>& points)
             {
                 On(handle, [dimensions = DimensionsFrom(points)](Model& of) mutable
                    { of.SetDimensions(std::move(dimensions)); });
             },
             py::arg("points"))
        .def("dimensions",
             [](const Handle& handle)
             {
                 py::list list;
                 for (const auto& [dimension, text] : On(handle, [](Model& of) { return of.Dimensions(); }))
                 {
                     list.append(py::make_tuple(RowsOf(dimension.points), dimension.Value(), Name{text}));
                 }
                 return list;
             })
        .def("label",
             [](const Handle& handle, const Name& path, const Name& text)
             { On(handle, [path, text](Model& of) { of.Label(path.bytes, text.bytes); }); },
             py::arg("path"), py::arg("text"))
        .def("clear_label",
             [](const Handle& handle, const std::optional<Name>& path)
             {
                 On(handle, [path](Model& of)
                    { of.ClearLabel(path ? std::optional<std::string>(path->bytes) : std::nullopt); });
             },
             py::arg("path"));
}

void BindSun(py::class_<Handle>& model)
{
    model.def("sun", [](const Handle& handle) { return SunOf(On(handle, [](Model& of) { return of.Sun(); })); })
        .def("sun_study",
             [](const Handle& handle, const Name& times, int width, int height)
             {
                 const PictureSize size{width, height};
                 return PictureArray(
                     On(handle, [times, size](Model& of) { return of.SunStudy(times.bytes, size); }), size);
             },
             py::arg("times"), py::arg("width"), py::arg("height"))
        .def("sun_hours",
             [](const Handle& handle, const Name& times, const Name& surface)
             {
                 const SunHours told = On(handle, [times, surface](Model& of)
                                          { return of.ShowSunHours(times.bytes, surface.bytes); });
                 return py::make_tuple(RowsOf(told.places),
                                       py::array_t<float>(static_cast<py::ssize_t>(told.hours.size()), told.hours.data()),
                                       told.most);
             },
             py::arg("times"), py::arg("surface"))
        .def("clear_sun_hours", Bound(&Model::ClearSunHours));
}

} // namespace

void BindFiles(py::module_& module, py::class_<Handle>& model)
{
    py::class_<Reading>(module, "Reading")
        .def(py::init([](bool textures, bool keepCoplanar, bool showBacks, bool isAlone, py::object progress)
                      { return Reading{textures, keepCoplanar, showBacks, isAlone, std::move(progress)}; }),
             py::kw_only(), py::arg("textures"), py::arg("keep_coplanar"), py::arg("show_backs"), py::arg("alone"),
             py::arg("progress"));
    model.def_static("open", &Open, py::arg("path"), py::arg("how"));
    BindFileList(model);
    BindNotes(model);
    BindSun(model);
    module.def("formats",
               []
               {
                   py::dict formats;
                   for (const Host::ImportFormat& format : Host::ModelImporter::ListFormats())
                   {
                       formats[py::str(format.name)] = format.extensions;
                   }
                   return formats;
               });
}

} // namespace OV::Python
