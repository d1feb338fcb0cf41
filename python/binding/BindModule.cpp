#include "HostInterpolator.h"

#include "FCurveLib/Exception.h"

using namespace FCurvePython;

PYBIND11_MODULE(_core, module) {
    module.doc() = "The compiled part of fcurvelib.";

    py::register_exception_translator([](std::exception_ptr error) {
        try {
            if (error) std::rethrow_exception(error);
        } catch (const Exception&) {
            try {
                RaiseHandled(nullptr);
            } catch (py::error_already_set& raised) {
                raised.restore();
            }
        }
    });

    CurveClass curve(module, "Curve", py::is_final(), CollectableCurve(),
                     "A function curve: maps x (time, in frames) to a value.\n\n"
                     "Curve(name='', keys=(), interpolator='bezier()')\n\n"
                     "keys are pairs (x, y), in any order; the interpolator is that of the segments between them.");
    ContainerClass container(module, "Container", py::is_final(), CollectableContainer(),
                             "Curves by name, in order: a mapping of str to Curve.\n\n"
                             "Container(curves=())\n\n"
                             "curves is an iterable of Curve, or a mapping whose keys become the curves' names.");

    BindProperties(module);
    BindInterpolators(module);
    BindParts(module);
    BindKeys(module, curve);
    BindCurve(curve);
    BindEvaluation(curve);
    BindContainer(container);
    BindFiles(module);
    BindArrays(module);
    BindTools(module, curve);
    BindPlayback(module, curve, container);
    BindDrawing(module);
    BindObservers(module, curve);
    BindConversion(module);
    BindGestures(module);
    BindGroups(module, curve);
}
