#pragma once

/// \file
/// What the sources of the Python module share. Each bind function adds the classes of one topic; BindModule.cpp calls
/// them in an order in which every class is known before a signature names it.

#include "Edits.h"

#include "FCurveLib/FCurve.h"
#include "FCurveLib/FCurveContainer.h"
#include "FCurveLib/Interpolator.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Segment.h"
#include "FCurveLib/Tangent.h"

#include <pybind11/pybind11.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace FCurvePython {

namespace py = pybind11;
using namespace VEM_FN::FCurveLib;

using CurvePtr = std::shared_ptr<FCurve>;
using KeyPtr = std::shared_ptr<Keyframe>;
using SegmentPtr = std::shared_ptr<Segment>;
using TangentPtr = std::shared_ptr<Tangent>;
using ContainerPtr = std::shared_ptr<FCurveContainer>;
using InterpolatorPtr = std::shared_ptr<Interpolator>;

/// \name Texts
/// The library's texts are bytes, normally UTF-8, that end with a zero byte. In Python they are str; bytes that are no
/// UTF-8 travel as lone surrogates and come back. A null character raises ValueError.
/// @{
struct Text {
    std::string bytes;
    const char* c_str() const noexcept { return bytes.c_str(); }
};
py::str ToPython(const char* text);
inline py::str ToPython(const std::string& text) {
    return ToPython(text.c_str());
}
Text ToText(py::handle text);
/// @}

/// \name Numbers
/// @{

/// A float, or what becomes one; TypeError for others.
double ToNumber(py::handle number);
/// The number, or ValueError where it is not finite.
double Finite(double number, const char* name);
/// (x, y), both finite.
Vector2D<double> ToVector(py::handle pair, const char* name);
inline py::tuple ToPython(const Vector2D<double>& vector) {
    return py::make_tuple(vector.x, vector.y);
}
/// A number as Python's repr shows it, without a fraction where there is none.
std::string NumberText(double number);
/// What an iterable gives.
py::list ToList(py::handle items);
/// The place in a sequence of that size that an index means, negative ones from the end; IndexError where it has none.
std::size_t Place(py::ssize_t index, std::size_t size);
/// @}

/// \name Exceptions
/// @{

/// A class of fcurvelib._errors.
py::object ErrorClass(const char* name);
/// Raises one, made of these arguments.
[[noreturn]] void Raise(const char* name, const py::tuple& arguments);
/// Raises the exception of the library that is being handled as its Python class, with the message that its formatter
/// has for the file of that name (null for none). All others pass.
[[noreturn]] void RaiseHandled(const char* file);
/// @}

/// \name Interpolators
/// @{

/// An Interpolator, an expression text, a kind's name without parentheses, a number, or a callable (x, segment).
/// A text that is none raises FormulaError.
InterpolatorPtr ToInterpolator(py::handle source);
/// The expression; a kind's without its parentheses.
py::str ShortExpression(const Segment& segment);
/// The callable behind an interpolator that was made from one, and not by a name in a text; else an empty handle.
py::handle HostFunction(const Interpolator* interpolator);
/// @}

/// \name Curves
/// @{
bool Equal(const FCurve& a, const FCurve& b);
bool Equal(const FCurveContainer& a, const FCurveContainer& b);
/// TypeError for what is no Curve.
CurvePtr ToCurve(py::handle curve);
/// The segments at both ends; one and the same without keys.
Segment& FirstSegment(FCurve& curve);
Segment& LastSegment(FCurve& curve);
/// The type of that name; ValueError for others.
std::uint8_t TangentType(const Text& name);
/// The key's curve; ValueError for a key that is in none.
CurvePtr CurveOf(Keyframe& key);
void RemoveKey(FCurve& curve, Keyframe& key);
/// What pickle keeps of a curve, and the curve of it.
py::tuple CurveState(FCurve& curve);
CurvePtr CurveFromState(const py::tuple& state);
/// @}

/// A dict-like view of a part's properties; it keeps the part.
class Properties {
public:
    virtual ~Properties() = default;
    virtual const char* get(const char* key) const = 0;
    virtual void set(const char* key, const char* value) = 0;
    virtual void clear() = 0;
    virtual std::size_t size() const = 0;
    virtual py::dict items() const = 0;
};

template<class Part>
py::dict PropertiesToDict(const Part& part) {
    py::dict result;
    for (auto it = part.beginProperties(); it != part.endProperties(); ++it)
        result[ToPython(it->first)] = ToPython(it->second);
    return result;
}

template<class Part>
class PropertiesOf final : public Properties {
public:
    explicit PropertiesOf(std::shared_ptr<Part> part) noexcept : m_part(std::move(part)) {}
    const char* get(const char* key) const override { return m_part->getProperty(key); }
    void set(const char* key, const char* value) override { m_part->setProperty(key, value); }
    void clear() override { m_part->clearProperties(); }
    std::size_t size() const override { return m_part->sizeProperties(); }
    py::dict items() const override { return PropertiesToDict(*m_part); }

private:
    std::shared_ptr<Part> m_part;
};

/// Becomes the pairs: what they lack is erased, what is equal stays untouched.
void AssignProperties(Properties& properties, py::handle pairs);
/// The (key, value) that dict.update would take of these, each a tuple.
py::list Pairs(const py::object& pairs, const py::kwargs& more);

/// Adds the attribute `properties` to a part's class.
template<class Class>
void DefineProperties(Class& python) {
    using Part = typename Class::type;
    python.def_property(
        "properties",
        [](const std::shared_ptr<Part>& part) -> std::unique_ptr<Properties> {
            return std::make_unique<PropertiesOf<Part>>(part);
        },
        Editing([](const std::shared_ptr<Part>& part, py::handle pairs) {
            PropertiesOf<Part> properties(part);
            AssignProperties(properties, pairs);
        }),
        "The texts that this part carries, as a mapping of str to str. An empty text erases its key.");
}

using CurveClass = py::class_<FCurve, CurvePtr>;
using ContainerClass = py::class_<FCurveContainer, ContainerPtr>;

void BindProperties(py::module_& module);
void BindInterpolators(py::module_& module);
void BindParts(py::module_& module);
void BindCurve(CurveClass& curve);
void BindKeys(py::module_& module, CurveClass& curve);
void BindEvaluation(CurveClass& curve);
void BindContainer(ContainerClass& container);
void BindFiles(py::module_& module);
void BindArrays(py::module_& module);
void BindTools(py::module_& module, CurveClass& curve);
void BindPlayback(py::module_& module, CurveClass& curve, ContainerClass& container);
void BindDrawing(py::module_& module);
void BindObservers(py::module_& module, CurveClass& curve);
void BindConversion(py::module_& module);
void BindGestures(py::module_& module);
void BindGroups(py::module_& module, CurveClass& curve);

} // namespace FCurvePython

namespace pybind11 {
namespace detail {

template<>
struct type_caster<FCurvePython::Text> {
    PYBIND11_TYPE_CASTER(FCurvePython::Text, const_name("str"));

    bool load(handle source, bool /*convert*/) {
        if (!PyUnicode_Check(source.ptr())) return false;
        value = FCurvePython::ToText(source);
        return true;
    }
    static handle cast(const FCurvePython::Text& text, return_value_policy /*policy*/, handle /*parent*/) {
        return FCurvePython::ToPython(text.bytes).release();
    }
};

} // namespace detail
} // namespace pybind11
