#include "Binding.h"
#include "Lock.h"

#include "FCurveLib/DefaultFallbackParser.h"
#include "FCurveLib/DrawCurves.h"
#include "FCurveLib/ExceptionFormatter.h"
#include "FCurveLib/FileError.h"
#include "FCurveLib/FormatExceptions.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <sstream>

namespace FCurvePython {

py::str ToPython(const char* text) {
    PyObject* const decoded =
        PyUnicode_DecodeUTF8(text, static_cast<py::ssize_t>(std::strlen(text)), "surrogateescape");
    if (!decoded) throw py::error_already_set();
    return py::reinterpret_steal<py::str>(decoded);
}

Text ToText(py::handle text) {
    if (!PyUnicode_Check(text.ptr()))
        throw py::type_error("Expected a str, found " + std::string(Py_TYPE(text.ptr())->tp_name));
    const auto bytes =
        py::reinterpret_steal<py::bytes>(PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape"));
    if (!bytes) throw py::error_already_set();
    Text result{bytes};
    if (result.bytes.find('\0') != std::string::npos) throw py::value_error("A text cannot hold a null character");
    return result;
}

double ToNumber(py::handle number) {
    double result = 0.0;
    TakeLock([&] { result = PyFloat_AsDouble(number.ptr()); });
    if (result == -1.0 && PyErr_Occurred()) throw py::error_already_set();
    return result;
}

double Finite(double number, const char* name) {
    if (!std::isfinite(number)) throw py::value_error(std::string(name) + " is not a finite number");
    return number;
}

Vector2D<double> ToVector(py::handle pair, const char* name) {
    if (!py::isinstance<py::sequence>(pair) || py::len(pair) != 2)
        throw py::type_error(std::string("Expected a pair (x, y) for ") + name);
    const auto items = py::reinterpret_borrow<py::sequence>(pair);
    return {Finite(ToNumber(items[0]), name), Finite(ToNumber(items[1]), name)};
}

py::list ToList(py::handle items) {
    PyObject* list = nullptr;
    TakeLock([&] { list = PySequence_List(items.ptr()); });
    if (!list) throw py::error_already_set();
    return py::reinterpret_steal<py::list>(list);
}

std::string NumberText(double number) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, number).ptr;
    return {text, end};
}

std::size_t Place(py::ssize_t index, std::size_t size) {
    const auto count = static_cast<py::ssize_t>(size);
    if (index < -count || index >= count) throw py::index_error("There is no index " + std::to_string(index));
    return static_cast<std::size_t>(index < 0 ? index + count : index);
}

py::object ErrorClass(const char* name) {
    return py::module_::import("fcurvelib._errors").attr(name);
}

void Raise(const char* name, const py::tuple& arguments) {
    const py::object type = ErrorClass(name);
    PyObject* error = nullptr;
    TakeLock([&] { error = PyObject_CallObject(type.ptr(), arguments.ptr()); });
    if (error) {
        PyErr_SetObject(type.ptr(), error);
        Py_DECREF(error);
    }
    throw py::error_already_set();
}

namespace {

// The message for the exception that is being handled.
py::str MessageOf(const char* file) {
    ExceptionFormatter::LibraryFormatter formatter(file);
    std::ostringstream out;
    formatter.format(out);
    return ToPython(out.str());
}

// "VEM_FN::FCurveLib::XMLFormat::BadAttribute" is of the kind "BadAttribute".
py::str KindOf(const std::exception& error) {
    const char* const what = error.what();
    const char* const colon = std::strrchr(what, ':');
    return ToPython(colon ? colon + 1 : what);
}

[[noreturn]] void RaiseFileError(const FileError& error, const char* file, const py::object& workingFile) {
    const int code = error.code();
    const char* const name = code == ENOENT                    ? "FileMissingError"
                             : code == EACCES || code == EPERM ? "FileAccessError"
                                                               : "FileError";
    Raise(name, py::make_tuple(MessageOf(file), ToPython(error.path()), code, ToPython(error.text()), workingFile));
}

py::object OrNone(std::uint64_t position) {
    return position ? py::object(py::int_(position)) : py::none();
}

} // namespace

void RaiseHandled(const char* file) {
    const py::object name = file ? py::object(ToPython(file)) : py::none();
    try {
        throw;
    } catch (const UnknownFormat& error) {
        Raise("UnknownFormatError",
              py::make_tuple(MessageOf(file), name, py::none(), py::none(), MessageOf(nullptr), KindOf(error)));
    } catch (const FormatError& error) {
        Raise("FormatError", py::make_tuple(MessageOf(file), name, OrNone(error.line()), OrNone(error.column()),
                                            ToPython(error.message()), KindOf(error)));
    } catch (const DefaultFallbackParser::ParseError& error) {
        Raise("FormulaError", py::make_tuple(ToPython(error.getMessage()), error.getPosition(), KindOf(error)));
    } catch (const SaveError& error) {
        const bool isWhole = error.workingContent() == SaveError::New;
        RaiseFileError(error, file, isWhole ? py::object(ToPython(error.workingPath())) : py::none());
    } catch (const FileError& error) {
        RaiseFileError(error, file, py::none());
    } catch (const BadPictureSize& error) {
        Raise("PictureSizeError", py::make_tuple("Expected 100 to 20000 pixels each way, and for this picture at least "
                                                 + NumberText(std::ceil(error.leastWidth())) + " x "
                                                 + NumberText(std::ceil(error.leastHeight()))));
    } catch (const Exception&) {
        Raise("Error", py::make_tuple(MessageOf(file)));
    }
}

} // namespace FCurvePython
