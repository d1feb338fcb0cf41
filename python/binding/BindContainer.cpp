#include "Binding.h"

#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

namespace FCurvePython {

namespace {

// The first curve of that name, or end().
FCurveContainer::iterator FindName(FCurveContainer& container, const Text& name) {
    auto position = container.begin();
    while (position != container.end() && std::strcmp(position->getName(), name.c_str()) != 0) ++position;
    return position;
}
FCurveContainer::iterator FindName(FCurveContainer& container, py::handle name) {
    return PyUnicode_Check(name.ptr()) ? FindName(container, ToText(name)) : container.end();
}

FCurveContainer::iterator Existing(FCurveContainer& container, py::handle name) {
    const auto position = FindName(container, name);
    if (position == container.end()) {
        PyErr_SetObject(PyExc_KeyError, name.ptr());
        throw py::error_already_set();
    }
    return position;
}

FCurveContainer::iterator FindCurve(FCurveContainer& container, const FCurve& curve) {
    auto position = container.begin();
    while (position != container.end() && &*position != &curve) ++position;
    return position;
}

// The curve takes the name, and the place of the one that had it. Observers may edit the container at each step.
void SetItem(FCurveContainer& container, const Text& name, const CurvePtr& curve) {
    auto position = FindName(container, name);
    CurvePtr next;
    if (position != container.end() && &*position != curve.get()) {
        const CurvePtr replaced = position->getShared();
        const auto own = FindCurve(container, *curve);
        if (own != container.end()) container.removeCurve(own);
        position = FindCurve(container, *replaced);
        if (position != container.end()) position = container.removeCurve(position);
        if (position != container.end()) next = position->getShared();
    }
    curve->setName(name.c_str());
    container.insertCurve(next ? FindCurve(container, *next) : container.end(), curve);
}

void Update(FCurveContainer& container, const py::object& pairs, const py::kwargs& more) {
    std::vector<std::pair<Text, CurvePtr>> wanted; // all are names and curves, or nothing changes
    for (const auto item : Pairs(pairs, more)) {
        const auto pair = py::cast<py::tuple>(item);
        wanted.emplace_back(ToText(pair[0]), ToCurve(pair[1]));
    }
    for (const auto& [name, curve] : wanted) SetItem(container, name, curve);
}

void AddCurve(FCurveContainer& container, const CurvePtr& curve) {
    if (FindCurve(container, *curve) != container.end()) throw py::value_error("The curve is here already");
    container.addCurve(curve);
}

ContainerPtr MakeContainer(py::handle curves) {
    ContainerPtr container = FCurveContainer::create();
    if (py::isinstance<FCurveContainer>(curves)) { // whose names need not be unique
        for (FCurve& curve : py::cast<FCurveContainer&>(curves)) container->addCurve(curve.getShared());
    } else if (py::hasattr(curves, "items")) {
        Edit edit; // of the names
        Update(*container, py::reinterpret_borrow<py::object>(curves), {});
        edit.finish();
    } else {
        for (const auto curve : ToList(curves)) AddCurve(*container, ToCurve(curve));
    }
    return container;
}

py::list CurvesOf(FCurveContainer& container) {
    py::list curves;
    for (FCurve& curve : container) curves.append(curve.getShared());
    return curves;
}

py::list NamesOf(FCurveContainer& container) {
    py::list names;
    for (const FCurve& curve : container) names.append(ToPython(curve.getName()));
    return names;
}

ContainerPtr CopyOf(FCurveContainer& container) {
    ContainerPtr copy = FCurveContainer::create();
    for (const FCurve& curve : container) copy->addCurve(FCurve::createCopy(curve));
    for (auto it = container.beginProperties(); it != container.endProperties(); ++it)
        copy->setProperty(it->first.c_str(), it->second.c_str());
    return copy;
}

} // namespace

void BindContainer(ContainerClass& container) {
    container.def(py::init(&MakeContainer), py::arg("curves") = py::tuple());
    container.def("__len__", &FCurveContainer::size)
        .def("__iter__", [](FCurveContainer& self) { return py::iter(NamesOf(self)); })
        .def(
            "__getitem__", [](FCurveContainer& self, py::handle name) { return Existing(self, name)->getShared(); },
            py::arg("name"))
        .def("__setitem__", Editing(&SetItem), py::arg("name"), py::arg("curve").none(false))
        .def("__delitem__",
             Editing([](FCurveContainer& self, py::handle name) { self.removeCurve(Existing(self, name)); }),
             py::arg("name"))
        .def("__contains__",
             [](FCurveContainer& self, py::handle name) {
                 if (py::isinstance<FCurve>(name)) return FindCurve(self, py::cast<const FCurve&>(name)) != self.end();
                 return FindName(self, name) != self.end();
             })
        .def("_curves", &CurvesOf)
        .def("update", Editing(&Update), py::arg("pairs") = py::tuple(), py::pos_only(),
             "As of a dict: sets the curves of a mapping, or of pairs (name, curve), and those of keywords.")
        .def("add", Editing(&AddCurve), py::arg("curve").none(false),
             "Adds a curve at the end, under its own name, which others may have too. ValueError where it is here.")
        .def("remove", Editing([](FCurveContainer& self, const FCurve& curve) {
                 const auto position = FindCurve(self, curve);
                 if (position == self.end()) throw py::value_error("The curve is not here");
                 self.removeCurve(position);
             }),
             py::arg("curve"), "Removes this very curve. ValueError where it is not here.")
        .def("clear", Editing(&FCurveContainer::clear), "Removes all curves; properties stay.")
        .def("copy", &CopyOf, "A container of copies of the curves.")
        .def("__copy__", &CopyOf)
        .def(
            "__deepcopy__", [](FCurveContainer& self, py::handle /*memo*/) { return CopyOf(self); }, py::arg("memo"))
        .def("__eq__",
             [](const FCurveContainer& self, py::handle other) -> py::object {
                 if (!py::isinstance<FCurveContainer>(other))
                     return py::reinterpret_borrow<py::object>(Py_NotImplemented);
                 return py::bool_(Equal(self, py::cast<const FCurveContainer&>(other)));
             })
        .def("__reduce__",
             [](const py::object& self) {
                 auto& curves = py::cast<FCurveContainer&>(self);
                 return py::make_tuple(py::module_::import("fcurvelib._state").attr("container_from_state"),
                                       py::make_tuple(CurvesOf(curves), PropertiesToDict(curves)));
             })
        .def("__repr__",
             [](FCurveContainer& self) { return py::str("<Container of {}>").format(py::repr(NamesOf(self))); });
    container.attr("__hash__") = py::none(); // equal by content, which changes
    DefineProperties(container);
}

} // namespace FCurvePython
