#include "Binding.h"
#include "Lock.h"
#include "NameScope.h"

#include "FCurveInterchange/Conversion.h"
#include "FCurveLib/ArrayStreamAdaptor.h"
#include "FCurveLib/CurveFiles.h"
#include "FCurveLib/FormatFactory.h"
#include "FCurveLib/MemoryStream.h"
#include "FCurveLib/ReadWrite.h"

#include <filesystem>
#include <functional>
#include <limits>

namespace FCurvePython {

namespace {

ContainerPtr Read(const py::buffer& data, const Text& file, py::handle format) {
    const py::buffer_info bytes = data.request();
    if (bytes.itemsize != 1 || bytes.ndim != 1 || bytes.strides[0] != 1) throw py::type_error("Expected bytes");
    if (bytes.size > std::numeric_limits<int>::max()) throw py::value_error("A document has at most 2147483647 bytes");
    ContainerPtr container = FCurveContainer::create();
    try {
        ArrayStreamAdaptor stream(static_cast<const char*>(bytes.ptr), static_cast<int>(bytes.size));
        LoadOptions options;
        if (!format.is_none()) options.format = ToText(format).bytes;
        NameScope names;
        LoadCurves(stream, *container, options);
        names.finish();
        return container;
    } catch (const Exception&) {
        RaiseHandled(file.bytes.empty() ? nullptr : file.c_str());
    }
}

py::bytes Write(const FCurveContainer& container, const Text& format, const Text& file) {
    try {
        MemoryStream stream;
        WriteCurves(container, stream, format.c_str());
        std::string bytes(static_cast<std::size_t>(stream.getSize()), '\0');
        stream.setPosition(0);
        stream.readData(bytes.data(), stream.getSize());
        return py::bytes(bytes);
    } catch (const Exception&) {
        RaiseHandled(file.bytes.empty() ? nullptr : file.c_str());
    }
}

// None, or what hears of the share that is done; what it raises ends the work.
std::function<void(double)> ToProgress(const py::object& progress) {
    if (progress.is_none()) return {};
    return [progress](double share) { CallPython(progress, share); };
}

ContainerPtr Load(const Text& path, py::handle format, const py::object& progress) {
    ContainerPtr container = FCurveContainer::create();
    try {
        LoadOptions options;
        if (!format.is_none()) options.format = ToText(format).bytes;
        options.progress = ToProgress(progress);
        NameScope names;
        LoadCurves(path.c_str(), *container, options);
        names.finish();
        return container;
    } catch (const Exception&) {
        RaiseHandled(path.c_str());
    }
}

void Save(const FCurveContainer& container, const Text& path, const Text& format, const py::object& progress) {
    try {
        SaveOptions options;
        options.progress = ToProgress(progress);
        SaveCurves(path.c_str(), container, format.c_str(), options);
    } catch (const Exception&) {
        RaiseHandled(path.c_str());
    }
}

// The name of the format of such files; None where none is written.
py::object FormatOf(const Text& path) {
    const Writer* const writer = FormatFactory::getWriterByExtension(path.c_str());
    return writer ? py::object(ToPython(writer->getFormatType().getFormatName())) : py::none();
}

// (name, title, extension, whether it is read, whether it is written), by name.
py::list Formats() {
    py::dict found;
    for (auto type = FormatFactory::beginReaderTypes(); type != FormatFactory::endReaderTypes(); ++type)
        found[ToPython(type->getFormatName())] =
            py::make_tuple(ToPython(type->getFormatName()), ToPython(type->getTitle()), ToPython(type->getExtension()),
                           true, FormatFactory::getWriter(type->getFormatName()) != nullptr);
    for (auto type = FormatFactory::beginWriterTypes(); type != FormatFactory::endWriterTypes(); ++type) {
        const py::str name = ToPython(type->getFormatName());
        if (!found.contains(name))
            found[name] = py::make_tuple(name, ToPython(type->getTitle()), ToPython(type->getExtension()), false, true);
    }
    py::list result(found.attr("values")());
    result.attr("sort")();
    return result;
}

} // namespace

void BindFiles(py::module_& module) {
    module.def("_read", &Read, py::arg("data"), py::arg("file"), py::arg("format"));
    module.def("_write", &Write, py::arg("container"), py::arg("format"), py::arg("file"));
    module.def("_load", &Load, py::arg("path"), py::arg("format"), py::arg("progress"));
    module.def("_save", &Save, py::arg("container"), py::arg("path"), py::arg("format"), py::arg("progress"));
    module.def("_format_of", &FormatOf, py::arg("path"));
    module.def("_formats", &Formats);
    module.def("_curve_from_state", &CurveFromState, py::arg("state"));
}

} // namespace FCurvePython
