// The module orvane._native: what orvane/_model.py stands on. It takes arguments in one form each; the
// package brings what people write into that form.
#include "python/native/Arrays.h"
#include "python/native/Binding.h"
#include "python/native/Refused.h"
#include "orvane/math/Transform.h"

#include <utility>

namespace py = pybind11;

namespace OV::Python
{

namespace
{

py::object BoxArray(const std::optional<Host::Presentation::Box>& box)
{
    if (!box)
    {
        return py::none();
    }
    py::array_t<float> array({2, 3});
    const Vector* const corners[] = {&box->low, &box->high};
    for (py::ssize_t row = 0; row < 2; ++row)
    {
        for (unsigned int column = 0; column < 3; ++column)
        {
            array.mutable_at(row, column) = (*corners[row])[column];
        }
    }
    return std::move(array);
}

py::list HitsOf(const std::vector<Hit>& hits)
{
    py::list list;
    for (const Hit& hit : hits)
    {
        list.append(py::make_tuple(hit.node, Name{hit.path}, Name{hit.mesh}, hit.depth, FromVector(hit.position), hit.x,
                                   hit.y));
    }
    return list;
}

py::dict ReportOf(const Host::ImportReport& report)
{
    py::dict told;
    told["format"] = Name{report.format};
    told["file_bytes"] = report.fileBytes;
    told["nodes"] = report.nodes;
    told["meshes"] = report.meshes;
    told["vertices"] = report.vertices;
    told["triangles"] = report.triangles;
    told["materials"] = report.materials;
    told["coplanar_pairs"] = report.coplanarPairs;
    told["lights"] = report.lights;
    told["cameras"] = report.cameras;
    told["metres_per_unit"] = report.metresPerUnit;
    told["warnings"] = NamesOf(report.warnings);
    return told;
}

py::dict StatisticsOf(const Host::PresentationStatistics& statistics)
{
    py::dict told;
    told["nodes"] = statistics.nodes;
    told["meshes"] = statistics.meshes;
    told["triangles"] = statistics.triangles;
    told["draws"] = statistics.drawn.draws;
    told["drawn_triangles"] = statistics.drawn.drawnTriangles;
    told["buffers"] = statistics.drawn.buffers;
    told["bytes"] = statistics.drawn.bytes;
    return told;
}

py::dict LookOf(const MaterialLook& look)
{
    py::dict told;
    told["name"] = Name{look.name};
    told["color"] = FromColor(look.diffuse);
    told["specular"] = FromColor(look.specular);
    told["emissive"] = FromColor(look.emissive);
    told["shininess"] = look.shininess;
    told["two_sided"] = look.isTwoSided;
    told["unlit"] = look.isUnlit;
    told["textured"] = look.hasTexture;
    return told;
}

MaterialValues MaterialFrom(const py::dict& given)
{
    MaterialValues values;
    const auto color = [&](const char* name, std::optional<Color>& value)
    {
        if (given.contains(name))
        {
            value = ToColor(given[name].cast<Quadruple>());
        }
    };
    color("color", values.diffuse);
    color("specular", values.specular);
    color("emissive", values.emissive);
    if (given.contains("shininess"))
    {
        values.shininess = given["shininess"].cast<float>();
    }
    if (given.contains("two_sided"))
    {
        values.isTwoSided = given["two_sided"].cast<bool>();
    }
    if (given.contains("unlit"))
    {
        values.isUnlit = given["unlit"].cast<bool>();
    }
    if (given.contains("texture"))
    {
        const py::object texture = given["texture"];
        values.texture = texture.is_none()               ? Pixels()
                         : py::isinstance<py::str>(texture) ? PixelsOfFile(texture.cast<Name>().bytes)
                                                            : PixelsOf(texture.cast<ByteArray>());
    }
    return values;
}

const char* NameOf(Trouble trouble)
{
    switch (trouble)
    {
    case Trouble::Settings: return "SettingsError";
    case Trouble::File: return "FileError";
    case Trouble::Node: return "NodeError";
    case Trouble::Context: return "ContextError";
    case Trouble::Closed: return "ClosedError";
    case Trouble::Value: break;
    }
    return nullptr;
}

void Translate(std::exception_ptr thrown)
{
    try
    {
        if (thrown)
        {
            std::rethrow_exception(thrown);
        }
    }
    catch (const Refused& refused)
    {
        const std::string sentence = refused.what();
        const auto text = py::reinterpret_steal<py::object>(PyUnicode_DecodeUTF8(
            sentence.data(), static_cast<Py_ssize_t>(sentence.size()), "backslashreplace"));
        const char* const name = NameOf(refused.trouble);
        const py::object type = name ? py::object(py::module_::import("orvane._errors").attr(name))
                                     : py::reinterpret_borrow<py::object>(PyExc_ValueError);
        PyErr_SetObject(type.ptr(), text.ptr());
    }
}

void BindScene(py::class_<Handle>& model)
{
    const auto placeOf = [](const DoubleArray& matrix) { return PlaceFrom(matrix); };
    model
        .def("add_material",
             [](const Handle& handle, const Name& name, const py::dict& given)
             {
                 return On(handle, [name, values = MaterialFrom(given)](Model& to) mutable
                           { return to.AddMaterial(name.bytes, std::move(values)); });
             },
             py::arg("name"), py::arg("values"))
        .def("set_material",
             [](const Handle& handle, MaterialId id, const py::dict& given)
             {
                 On(handle, [id, values = MaterialFrom(given)](Model& to) mutable
                    { to.SetMaterial(id, std::move(values)); });
             },
             py::arg("material"), py::arg("values"))
        .def("find_material", BoundPath(&Model::FindMaterial), py::arg("name"))
        .def("material_look",
             [](const Handle& handle, MaterialId id)
             { return LookOf(On(handle, [id](Model& of) { return of.Look(id); })); },
             py::arg("material"))
        .def("find_node", BoundPath(&Model::FindNode), py::arg("path"))
        .def("path_of",
             [](const Handle& handle, NodeId id)
             { return Name{On(handle, [id](Model& of) { return of.PathOf(id); })}; },
             py::arg("node"))
        .def("add_group",
             [placeOf](const Handle& handle, const Name& name, std::optional<NodeId> parent, const DoubleArray& place)
             {
                 return On(handle, [name, parent, place = placeOf(place)](Model& to)
                           { return to.AddGroup(name.bytes, parent, place); });
             },
             py::arg("name"), py::arg("parent"), py::arg("transform"))
        .def("add_mesh",
             [placeOf](const Handle& handle, const std::vector<std::shared_ptr<Geometry>>& parts, MaterialId material,
                       const Name& name, std::optional<NodeId> parent, const DoubleArray& place)
             {
                 return On(handle, [parts, material, name, parent, place = placeOf(place)](Model& to)
                           { return to.AddMesh(parts, material, name.bytes, parent, place); });
             },
             py::arg("parts"), py::arg("material"), py::arg("name"), py::arg("parent"), py::arg("transform"))
        .def("add_copy",
             [placeOf](const Handle& handle, NodeId of, const Name& name, std::optional<NodeId> parent,
                       const DoubleArray& place)
             {
                 return On(handle, [of, name, parent, place = placeOf(place)](Model& to)
                           { return to.AddCopy(of, name.bytes, parent, place); });
             },
             py::arg("node"), py::arg("name"), py::arg("parent"), py::arg("transform"))
        .def("add_line",
             [placeOf](const Handle& handle, const FloatArray& points, bool isClosed, const Quadruple& color,
                       float width, std::optional<float> dash, bool isOnTop, const Name& name,
                       std::optional<NodeId> parent, const DoubleArray& place)
             {
                 LineValues values{VectorsOf(points, "points"), isClosed, ToColor(color), width, dash, isOnTop};
                 return On(handle, [values = std::move(values), name, parent, place = placeOf(place)](Model& to)
                           { return to.AddLine(values, name.bytes, parent, place); });
             },
             py::arg("points"), py::arg("closed"), py::arg("color"), py::arg("width"), py::arg("dash"),
             py::arg("on_top"), py::arg("name"), py::arg("parent"), py::arg("transform"))
        .def("transform_of",
             [](const Handle& handle, NodeId id)
             { return PlaceArray(On(handle, [id](Model& of) { return of.PlaceOf(id); })); },
             py::arg("node"))
        .def("set_transform",
             [placeOf](const Handle& handle, NodeId id, const DoubleArray& place)
             { On(handle, [id, place = placeOf(place)](Model& of) { of.SetPlace(id, place); }); },
             py::arg("node"), py::arg("transform"))
        .def("remove", Bound(&Model::Remove), py::arg("node"))
        .def("update",
             [](const Handle& handle, const std::shared_ptr<Geometry>& geometry)
             { On(handle, [geometry](Model& of) { of.Update(*geometry); }); },
             py::arg("geometry").none(false))
        .def("add_text",
             [](const Handle& handle, const Name& text, const Name& font, int size, const Quadruple& color, int x,
                int y, std::optional<NodeId> node, const std::optional<Triple>& place)
             {
                 TextValues values;
                 values.text = text.bytes;
                 values.font = font.bytes;
                 values.size = size;
                 values.color = ToColor(color);
                 values.x = x;
                 values.y = y;
                 values.node = node;
                 if (place)
                 {
                     values.place = ToVector(*place);
                 }
                 return On(handle, [values](Model& to) { return to.AddText(values); });
             },
             py::arg("text"), py::arg("font"), py::arg("size"), py::arg("color"), py::arg("x"), py::arg("y"),
             py::arg("node"), py::arg("place"))
        .def("set_text",
             [](const Handle& handle, TextId id, const Name& text)
             { On(handle, [id, text](Model& of) { of.SetText(id, text.bytes); }); },
             py::arg("id"), py::arg("text"))
        .def("remove_text", Bound(&Model::RemoveText), py::arg("id"));
}

void BindView(py::class_<Handle>& model)
{
    model
        .def("settings",
             [](const Handle& handle) { return Name{On(handle, [](Model& of) { return of.Settings(); })}; })
        .def("apply", BoundPath(&Model::Apply), py::arg("json"))
        .def("list_nodes",
             [](const Handle& handle)
             { return NamesOf(On(handle, [](Model& of) { return of.ListNodes(); })); })
        .def("hide", BoundPath(&Model::Hide), py::arg("path"))
        .def("show", BoundPath(static_cast<void (Model::*)(const std::string&)>(&Model::Show)), py::arg("path"))
        .def("isolate", BoundPath(&Model::Isolate), py::arg("path"))
        .def("show_all", Bound(&Model::ShowAll))
        .def("highlight",
             [](const Handle& handle, const Name& path, const Quadruple& color)
             { On(handle, [path, color](Model& of) { of.Highlight(path.bytes, ToColor(color)); }); },
             py::arg("path"), py::arg("color"))
        .def("clear_highlight",
             [](const Handle& handle, const std::optional<Name>& path)
             {
                 On(handle, [path](Model& of)
                    { of.ClearHighlight(path ? std::optional<std::string>(path->bytes) : std::nullopt); });
             },
             py::arg("path"))
        .def("box", [](const Handle& handle) { return BoxArray(On(handle, [](Model& of) { return of.ModelBox(); })); })
        .def("shown_box",
             [](const Handle& handle) { return BoxArray(On(handle, [](Model& of) { return of.ShownBox(); })); })
        .def("frame_all", Bound(&Model::FrameAll))
        .def("frame_shown", Bound(&Model::FrameShown))
        .def("frame_node", BoundPath(&Model::FrameNode), py::arg("path"))
        .def("set_camera",
             [](const Handle& handle, const Triple& eye, const Triple& target, const std::optional<Triple>& up)
             {
                 const std::optional<Vector> upwards = up ? std::optional<Vector>(ToVector(*up)) : std::nullopt;
                 On(handle, [from = ToVector(eye), to = ToVector(target), upwards](Model& of)
                    { of.SetCamera(from, to, upwards); });
             },
             py::arg("eye"), py::arg("target"), py::arg("up"))
        .def("camera",
             [](const Handle& handle)
             {
                 const CameraPlace place = On(handle, [](Model& of) { return of.Camera(); });
                 return py::make_tuple(FromVector(place.eye), FromVector(place.target), FromVector(place.up));
             })
        .def("pick",
             [](const Handle& handle, int x, int y, int areaWidth, int areaHeight, int width, int height)
             {
                 const Host::PickArea area{x, y, areaWidth, areaHeight};
                 return HitsOf(On(handle, [area, width, height](Model& of) { return of.Pick(area, {width, height}); }));
             },
             py::arg("x"), py::arg("y"), py::arg("area_width"), py::arg("area_height"), py::arg("width"),
             py::arg("height"))
        .def("pick_through",
             [](const Handle& handle, int x, int y, int most, int width, int height)
             {
                 return HitsOf(On(handle, [x, y, most, width, height](Model& of)
                                  { return of.PickThrough(x, y, most, {width, height}); }));
             },
             py::arg("x"), py::arg("y"), py::arg("most"), py::arg("width"), py::arg("height"))
        .def("report",
             [](const Handle& handle) { return ReportOf(On(handle, [](Model& of) { return of.Report(); })); })
        .def("statistics",
             [](const Handle& handle)
             { return StatisticsOf(On(handle, [](Model& of) { return of.Statistics(); })); })
        .def("close", [](const Handle& handle) { On(handle, [](Model& of) { of.Close(); }); })
        .def("is_closed", [](const Handle& handle) { return On(handle, [](Model& of) { return of.IsClosed(); }); });
}

} // namespace

} // namespace OV::Python

PYBIND11_MODULE(_native, module)
{
    using namespace OV::Python;

    py::register_exception_translator(&Translate);
    py::class_<Geometry, std::shared_ptr<Geometry>>(module, "Geometry")
        .def_property_readonly("positions", &PositionsOf)
        .def_property_readonly("normals", &NormalsOf)
        .def_property_readonly("uvs", &CoordinatesOf)
        .def_property_readonly("colors", &ColorsOf)
        .def_property_readonly("triangles", &TrianglesOf);
    module.def("make_geometry", &MakeGeometry, py::arg("positions"), py::arg("triangles"), py::arg("normals"),
               py::arg("uvs"), py::arg("colors"), py::arg("crease"));
    module.def("allocate_geometry", &AllocateGeometry, py::arg("vertices"), py::arg("triangles"), py::arg("uvs"),
               py::arg("colors"));

    py::class_<Handle> model(module, "Model");
    model.def(py::init([] { return MakeHandle([] { return std::make_shared<Model>(); }); }));
    BindView(model);
    BindScene(model);
    BindFiles(module, model);
    BindPictures(module, model);

    module.def("default_settings", [] { return Name{OV::Host::PresentationSettings().ToJSON()}; });
    module.def("check_settings",
               [](const Name& json)
               {
                   std::string error;
                   const auto settings = OV::Host::PresentationSettings::FromJSON(json.bytes, error);
                   if (!settings)
                   {
                       throw Refused(Trouble::Settings, error);
                   }
                   return Name{settings->ToJSON()};
               },
               py::arg("json"));
    module.attr("version") = ORVANE_VERSION;

    py::module_::import("atexit").attr("register")(py::cpp_function([] { Engine::Get().Stop(); }));
}
