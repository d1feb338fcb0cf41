#include "Binding.h"
#include "Lock.h"

#include "FCurveLib/ContainerObserver.h"
#include "FCurveLib/FCurveObserver.h"

#include <iterator>

namespace FCurvePython {

namespace {

// What the handler raises comes out of the edit that is told of.
template<class... Arguments>
void Tell(py::object handler, const Arguments&... arguments) {
    try {
        CallPython(handler, arguments...);
    } catch (const py::error_already_set& raised) {
        if (!Edit::keep(raised)) throw;
    }
}

// Calls handler(what, subject, part, detail, value), with the lock, on the thread that edits. The handler may destroy
// this object: nothing of it is touched after the call.
class CurveListener final : public FCurveObserver {
public:
    explicit CurveListener(py::object handler) : m_handler(std::move(handler)) {}

    void listen(FCurve* curve) {
        if (curve) {
            m_curve = curve->getShared();
            curve->subscribe(*this);
        } else {
            FCurve::subscribeGlobal(*this);
        }
        m_everyCurve = !curve;
    }
    bool isOrphan() const { return !m_everyCurve && m_curve.expired(); }

    void curveChanged(FCurve& curve) override { tell("curve", curve, py::cast(curve.getShared())); }
    void beginValueChange(FCurve& curve) override { tell("begin", curve, py::cast(curve.getShared())); }
    void intermediateValueChange(FCurve& curve) override { tell("step", curve, py::cast(curve.getShared())); }
    void endValueChange(FCurve& curve) override { tell("end", curve, py::cast(curve.getShared())); }

    void tangentIntrinsicChanged(Tangent& tangent, TangentIntrinsicType type) override {
        constexpr const char* details[] = {"handle", "type", "weighted", "weight_locked"};
        tellPart("tangent", tangent, type < std::size(details) ? details[type] : "");
    }
    void tangentPropertyChanged(Tangent& tangent, const char* key, const char* value) override {
        tellPart("property", tangent, key, value);
    }
    void tangentChanged(Tangent& tangent) override { tellPart("tangent", tangent, ""); }

    void keyframeIntrinsicChanged(Keyframe& key, KeyframeIntrinsicType type) override {
        constexpr const char* details[] = {"position", "unified", "breakdown"};
        tellPart("key", key, type < std::size(details) ? details[type] : "");
    }
    void keyframePropertyChanged(Keyframe& key, const char* name, const char* value) override {
        tellPart("property", key, name, value);
    }
    void keyframeChanged(Keyframe& key) override { tellPart("key", key, ""); }

    void segmentIntrinsicChanged(Segment& segment, SegmentIntrinsicType /*type*/) override {
        tellPart("segment", segment, "interpolator");
    }
    void segmentPropertyChanged(Segment& segment, const char* key, const char* value) override {
        tellPart("property", segment, key, value);
    }
    void segmentChanged(Segment& segment) override { tellPart("segment", segment, ""); }
    void segmentAdded(FCurve& curve, Segment& segment) override {
        tell("added", curve, py::cast(segment.getLeftKey()));
    }
    void segmentRemoved(FCurve& curve, Segment& segment) override {
        tell("removed", curve, py::cast(segment.getLeftKey()));
    }

    void curveIntrinsicChanged(FCurve& curve, CurveIntrinsicType /*type*/) override {
        tell("name", curve, py::cast(curve.getShared()));
    }
    void curvePropertyChanged(FCurve& curve, const char* key, const char* value) override {
        tell("property", curve, py::cast(curve.getShared()), key, value);
    }

private:
    void tell(const char* what, FCurve& curve, const py::object& part, const char* detail = "",
              const char* value = "") const {
        Tell(m_handler, what, curve.getShared(), part, ToPython(detail), ToPython(value));
    }
    template<class Part>
    void tellPart(const char* what, Part& part, const char* detail, const char* value = "") const {
        const CurvePtr curve = part.getOwningCurve();
        if (curve) tell(what, *curve, py::cast(part.getShared()), detail, value);
    }

    py::object m_handler;
    std::weak_ptr<FCurve> m_curve;
    bool m_everyCurve = false;
};

class ContainerListener final : public ContainerObserver {
public:
    explicit ContainerListener(py::object handler) : m_handler(std::move(handler)) {}

    void listen(FCurveContainer& container) {
        m_container = container.getShared();
        container.subscribe(*this);
    }
    bool isOrphan() const { return m_container.expired(); }

    void containerChanged(FCurveContainer& container) override {
        const ContainerPtr shared = container.getShared();
        Tell(m_handler, "container", shared, shared, "", "");
    }

private:
    py::object m_handler;
    std::weak_ptr<FCurveContainer> m_container;
};

constexpr const char* kChangeTypes[] = {"ordinary", "begin", "step", "end"};

} // namespace

void BindObservers(py::module_& module, CurveClass& curve) {
    py::class_<CurveListener>(module, "_CurveListener")
        .def(py::init<py::object>(), py::arg("handler"))
        .def("listen", &CurveListener::listen, py::arg("curve"))
        .def_property_readonly("is_orphan", &CurveListener::isOrphan);
    py::class_<ContainerListener>(module, "_ContainerListener")
        .def(py::init<py::object>(), py::arg("handler"))
        .def("listen", &ContainerListener::listen, py::arg("container"))
        .def_property_readonly("is_orphan", &ContainerListener::isOrphan);

    curve.def("notify", Editing(&FCurve::notifyChanged),
              "Tells the observers that the curve changed: in a drag, that it made a step.");
    module.def(
        "_set_change_type",
        [](const Text& name) {
            for (std::size_t i = 0; i < std::size(kChangeTypes); ++i)
                if (name.bytes == kChangeTypes[i]) FCurve::setChangeType(static_cast<FCurve::ChangeType>(i));
        },
        py::arg("type"));
}

} // namespace FCurvePython
