#include "HostInterpolator.h"

#include <typeinfo>

// Python's collector asks each of its objects for the references that it has, and counts: who shows one that somebody
// else has, too, gets live objects destroyed. So curves show callables only where the numbers of their owners prove
// that they have them alone. It asks at any allocation, but with the lock, between the steps of an edit at worst.

namespace FCurvePython {

namespace {

HostInterpolator* HostOf(Segment& segment) {
    const InterpolatorPtr interpolator = segment.getInterpolator();
    Interpolator* const kind = interpolator.get();
    return kind && typeid(*kind) == typeid(HostInterpolator) ? static_cast<HostInterpolator*>(kind) : nullptr;
}

int Visit(FCurve& curve, visitproc visitor, void* argument) {
    if (HostInterpolator::alive() == 0) return 0;
    bool any = false;
    for (Segment& segment : curve) {
        HostInterpolator* const host = HostOf(segment);
        if (!host) continue;
        host->uses = 0;
        any = true;
    }
    if (!any) return 0;
    for (Segment& segment : curve)
        if (HostInterpolator* const host = HostOf(segment)) ++host->uses;
    for (Segment& segment : curve) {
        HostInterpolator* const host = HostOf(segment);
        if (!host || segment.getInterpolator().use_count() != host->uses + 1) continue;
        host->uses = -1;
        const int result = host->visit(visitor, argument);
        if (result != 0) return result;
    }
    return 0;
}

void Clear(FCurve& curve) {
    if (HostInterpolator::alive() == 0) return;
    const CurvePtr kept = curve.getShared();
    const FCurve::Switch quiet(curve);
    for (Segment& segment : curve)
        if (HostOf(segment)) segment.setInterpolator(nullptr);
}

int Visit(FCurveContainer& container, visitproc visitor, void* argument) {
    if (HostInterpolator::alive() == 0) return 0;
    for (FCurve& curve : container) {
        if (curve.getShared().use_count() != 2) continue; // the container's, and this one
        const int result = Visit(curve, visitor, argument);
        if (result != 0) return result;
    }
    return 0;
}

void Clear(FCurveContainer& container) {
    if (HostInterpolator::alive() == 0) return;
    const ContainerPtr kept = container.getShared();
    for (FCurve& curve : container)
        if (curve.getShared().use_count() == 2) Clear(curve);
}

// What the object and nothing else has; null while it is being made.
template<class Owner>
Owner* OwnedBy(PyObject* object) {
    auto* const instance = reinterpret_cast<py::detail::instance*>(object);
    if (!instance->simple_layout || !instance->simple_holder_constructed) return nullptr;
    const auto& holder = instance->get_value_and_holder().template holder<std::shared_ptr<Owner>>();
    return holder.use_count() == 1 ? holder.get() : nullptr;
}

template<class Owner>
py::custom_type_setup Collectable() {
    return py::custom_type_setup([](PyHeapTypeObject* heapType) {
        PyTypeObject& type = heapType->ht_type;
        type.tp_flags |= Py_TPFLAGS_HAVE_GC;
        type.tp_traverse = [](PyObject* object, visitproc visit, void* arg) {
            Py_VISIT(Py_TYPE(object));
            Owner* const owner = OwnedBy<Owner>(object);
            return owner ? Visit(*owner, visit, arg) : 0;
        };
        type.tp_clear = [](PyObject* object) {
            if (Owner* const owner = OwnedBy<Owner>(object)) Clear(*owner);
            return 0;
        };
        type.tp_dealloc = [](PyObject* object) {
            PyObject_GC_UnTrack(object); // before what dies with it can call the collector
            py::detail::pybind11_object_dealloc(object);
        };
    });
}

} // namespace

py::custom_type_setup CollectableCurve() {
    return Collectable<FCurve>();
}
py::custom_type_setup CollectableContainer() {
    return Collectable<FCurveContainer>();
}

} // namespace FCurvePython
