#include "Binding.h"

#include "FCurveLib/ArrayStreamAdaptor.h"
#include "FCurveLib/ContainerInterface.h"
#include "FCurveLib/FileStream.h"
#include "FCurveLib/FormatExceptions.h"
#include "FCurveLib/FormatFactory.h"
#include "FCurveLib/MemoryStream.h"
#include "FCurveLib/ReadWrite.h"
#include "FCurveLib/Reader.h"
#include "FCurveLib/SafeFileSave.h"

#include <algorithm>
#include <limits>

namespace FCurvePython {

namespace {

// (container, name of the format). The curves before an error are dropped with the container.
py::tuple Read(const py::buffer& data, const Text& file, py::handle format) {
    const py::buffer_info bytes = data.request();
    if (bytes.itemsize != 1 || bytes.ndim != 1 || bytes.strides[0] != 1) throw py::type_error("Expected bytes");
    if (bytes.size > std::numeric_limits<int>::max()) throw py::value_error("A document has at most 2147483647 bytes");
    ContainerPtr container = FCurveContainer::create();
    try {
        ArrayStreamAdaptor stream(static_cast<const char*>(bytes.ptr), static_cast<int>(bytes.size));
        if (format.is_none()) {
            const FormatType type = ReadCurves(stream, *container);
            return py::make_tuple(container, ToPython(type.getFormatName()));
        }
        const Text name = ToText(format);
        Reader* const reader = FormatFactory::getReader(name.c_str());
        if (!reader) throw UnknownFormat();
        ContainerInterface target(*container);
        reader->readCurves(stream, target);
        return py::make_tuple(container, ToPython(name.bytes));
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

void Save(const FCurveContainer& container, const Text& path, const Text& format) {
    try {
        if (!FormatFactory::getWriter(format.c_str())) throw UnknownFormat();
        SafeFileSave file(path.c_str());
        WriteCurves(container, *file.getStream(), format.c_str());
        file.finish();
    } catch (const Exception&) {
        RaiseHandled(path.c_str());
    }
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
    module.def("_save", &Save, py::arg("container"), py::arg("path"), py::arg("format"));
    module.def("_formats", &Formats);
    module.def("_curve_from_state", &CurveFromState, py::arg("state"));
}

} // namespace FCurvePython
