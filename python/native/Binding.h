#pragma once

// What the sources that bind the module have in common.

#include "python/native/Engine.h"
#include "python/native/Model.h"

#include <pybind11/functional.h>
#include <pybind11/stl.h>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace OV::Python
{

/// Text that comes back as it went, whatever bytes a file has for a name.
struct Name
{
    std::string bytes;
};

} // namespace OV::Python

namespace pybind11::detail
{

template <>
struct type_caster<OV::Python::Name>
{
    PYBIND11_TYPE_CASTER(OV::Python::Name, const_name("str"));

    bool load(handle source, bool)
    {
        if (!PyUnicode_Check(source.ptr()))
        {
            return false;
        }
        const auto bytes = reinterpret_steal<object>(PyUnicode_AsEncodedString(source.ptr(), "utf-8", "surrogateescape"));
        if (!bytes)
        {
            throw error_already_set();
        }
        value.bytes.assign(PyBytes_AS_STRING(bytes.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.ptr())));
        return true;
    }

    static handle cast(const OV::Python::Name& name, return_value_policy, handle)
    {
        return PyUnicode_DecodeUTF8(name.bytes.data(), static_cast<Py_ssize_t>(name.bytes.size()), "surrogateescape");
    }
};

} // namespace pybind11::detail

namespace OV::Python
{

using Triple = std::array<float, 3>;
using Quadruple = std::array<float, 4>;

inline Vector ToVector(const Triple& t)
{
    return Vector(t[0], t[1], t[2]);
}

inline Triple FromVector(const Vector& v)
{
    return {v.x, v.y, v.z};
}

inline Color ToColor(const Quadruple& c)
{
    return Color(c[0], c[1], c[2], c[3]);
}

inline Quadruple FromColor(const Color& c)
{
    return {c.r, c.g, c.b, c.a};
}

/// A model in the hands of Python, which lets go of it on whatever thread.
class Handle
{
public:
    explicit Handle(std::shared_ptr<Model> model) : m_model(std::move(model)) {}

    ~Handle()
    {
        Engine::Get().RunLater([model = std::move(m_model)]() mutable { model.reset(); });
    }

    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    const std::shared_ptr<Model>& Get() const { return m_model; }

private:
    std::shared_ptr<Model> m_model;
};

/// Runs an operation of a model on the engine's thread.
template <typename Work>
auto On(const Handle& handle, Work work)
{
    return Engine::Get().Run([model = handle.Get(), work = std::move(work)]() mutable { return work(*model); });
}

/// A binding of an operation that takes and gives plain values.
template <typename Result, typename... Given>
auto Bound(Result (Model::*operation)(Given...))
{
    return [operation](const Handle& handle, std::decay_t<Given>... given)
    {
        return On(handle, [operation, values = std::make_tuple(std::move(given)...)](Model& model) mutable
                  { return std::apply([&](auto&... value) { return (model.*operation)(std::move(value)...); }, values); });
    };
}

/// The same for one that takes a path of a node.
template <typename Result>
auto BoundPath(Result (Model::*operation)(const std::string&))
{
    return [operation](const Handle& handle, const Name& path)
    { return On(handle, [operation, path](Model& model) { return (model.*operation)(path.bytes); }); };
}

inline std::unique_ptr<Handle> MakeHandle(std::function<std::shared_ptr<Model>()> make)
{
    return std::make_unique<Handle>(Engine::Get().Run(std::move(make)));
}

inline pybind11::list NamesOf(const std::vector<std::string>& names)
{
    pybind11::list list;
    for (const std::string& name : names)
    {
        list.append(Name{name});
    }
    return list;
}

/// Files beside each other, what stands on the picture, and the sun.
void BindFiles(pybind11::module_& module, pybind11::class_<Handle>& model);

/// Pictures, in memory and in files.
void BindPictures(pybind11::module_& module, pybind11::class_<Handle>& model);

} // namespace OV::Python
