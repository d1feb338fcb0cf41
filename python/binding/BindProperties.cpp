#include "Binding.h"
#include "Lock.h"

#include <utility>
#include <vector>

namespace FCurvePython {

void AssignProperties(Properties& properties, py::handle pairs) {
    const py::dict wanted = py::isinstance<Properties>(pairs) ? py::cast<const Properties&>(pairs).items()
                                                              : py::dict(py::reinterpret_borrow<py::object>(pairs));
    for (const auto item : wanted) { // all are texts, or nothing changes
        ToText(item.first);
        ToText(item.second);
    }
    for (const auto item : properties.items())
        if (!wanted.contains(item.first)) properties.set(ToText(item.first).c_str(), "");
    for (const auto item : wanted) properties.set(ToText(item.first).c_str(), ToText(item.second).c_str());
}

py::list Pairs(const py::object& pairs, const py::kwargs& more) {
    py::list result;
    const auto add = [&result](py::handle from) {
        for (const auto item : ToList(from)) {
            const py::tuple pair(ToList(item));
            if (pair.size() != 2) throw py::value_error("Expected pairs of a key and a value");
            result.append(pair);
        }
    };
    if (!py::hasattr(pairs, "keys"))
        add(pairs);
    else if (py::hasattr(pairs, "items"))
        add(CallPython(pairs.attr("items")));
    else
        add(py::dict(pairs).attr("items")());
    add(more.attr("items")());
    return result;
}

void BindProperties(py::module_& module) {
    py::class_<Properties> properties(module, "Properties",
                                      "The properties of a part: a mapping of str to str, in the order of the keys.\n\n"
                                      "An empty text erases its key: absent and empty are the same thing.");
    const auto find = [](const Properties& self, const Text& key) {
        const char* const value = self.get(key.c_str());
        if (!*value) throw py::key_error(key.bytes);
        return ToPython(value);
    };
    properties.def("__len__", &Properties::size)
        .def("__getitem__", find, py::arg("key"))
        .def("__setitem__", Editing([](Properties& self, const Text& key, const Text& value) {
                 self.set(key.c_str(), value.c_str());
             }),
             py::arg("key"), py::arg("value"))
        .def("__delitem__", Editing([find](Properties& self, const Text& key) {
                 find(self, key);
                 self.set(key.c_str(), "");
             }),
             py::arg("key"))
        .def("__iter__", [](const Properties& self) { return py::iter(self.items()); })
        .def("__contains__",
             [](const Properties& self, py::handle key) {
                 return PyUnicode_Check(key.ptr()) && *self.get(ToText(key).c_str());
             })
        .def("clear", Editing([](Properties& self) { self.clear(); }), "Erases all properties.")
        .def("update", Editing([](Properties& self, const py::object& pairs, const py::kwargs& more) {
                 std::vector<std::pair<Text, Text>> wanted; // all are texts, or nothing changes
                 for (const auto item : Pairs(pairs, more)) {
                     const auto pair = py::cast<py::tuple>(item);
                     wanted.emplace_back(ToText(pair[0]), ToText(pair[1]));
                 }
                 for (const auto& [key, value] : wanted) self.set(key.c_str(), value.c_str());
             }),
             py::arg("pairs") = py::tuple(), py::pos_only(), "As of a dict.")
        .def("copy", &Properties::items, "The properties as a dict of their own.")
        .def("__repr__", [](const Properties& self) { return py::repr(self.items()); });
    properties.attr("__hash__") = py::none();
}

} // namespace FCurvePython
