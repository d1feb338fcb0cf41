#include "Binding.h"

#include "FCurveLib/EditGroup.h"

#include <optional>

namespace FCurvePython {

namespace {

// An EditGroup that opens and closes with a `with` block. It keeps its curves.
class Gesture {
public:
    Gesture(ContainerPtr curves, Text name, bool quiet)
        : m_curves(std::move(curves)), m_name(std::move(name)), m_quiet(quiet) {}

    void enter() {
        if (m_group) throw std::runtime_error("The gesture is open already");
        m_group.emplace(*m_curves, m_name.c_str(), m_quiet ? EditGroup::Quiet : EditGroup::Plain);
    }
    // With the type of the exception that leaves the block, or None.
    void exit(const py::object& error) {
        if (!m_group) return;
        const ClosesAtEnd closing{m_group};
        if (error.is_none()) {
            m_group->end();
        } else {
            m_group->cancel();
        }
    }
    void step() { group().step(); }
    void cancel() { group().cancel(); }
    bool isOpen() const { return m_group && m_group->isOpen(); }

private:
    struct ClosesAtEnd {
        std::optional<EditGroup>& group;
        ~ClosesAtEnd() { group.reset(); }
    };

    EditGroup& group() {
        if (!m_group) throw std::runtime_error("The gesture is not open: it is to be used in its `with` block");
        return *m_group;
    }

    ContainerPtr m_curves;
    Text m_name;
    bool m_quiet;
    std::optional<EditGroup> m_group; // dies before the curves
};

} // namespace

void BindGestures(py::module_& module) {
    py::class_<Gesture>(module, "Gesture", py::is_final(),
                        "One edit of several steps, as Curve.edit, Container.edit and fcurvelib.edit give it: a block.")
        .def(py::init<ContainerPtr, Text, bool>(), py::arg("curves"), py::arg("name"), py::arg("quiet"))
        .def("__enter__", Editing([](const py::object& self) {
                 py::cast<Gesture&>(self).enter();
                 return self;
             }))
        .def("__exit__", Editing([](Gesture& self, const py::object& type, const py::object& /*error*/,
                                    const py::object& /*trace*/) { self.exit(type); }))
        .def("step", Editing(&Gesture::step), "Marks a step: in a quiet gesture the observers hear of it.")
        .def("cancel", Editing(&Gesture::cancel), "Puts everything back as it was when the block began.")
        .def_property_readonly("open", &Gesture::isOpen, "Whether edits still belong to it.");
}

} // namespace FCurvePython
