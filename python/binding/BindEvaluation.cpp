#include "Arrays.h"

#include "FCurveLib/Evaluation.h"

namespace FCurvePython {

namespace {

using Derivative = double (*)(const FCurve&, double);

Derivative DerivativeOf(int order, py::handle side) {
    if (order != 1 && order != 2) throw py::value_error("Expected an order of 1 or 2, found " + std::to_string(order));
    const std::string name = side.is_none() ? "right" : ToText(side).bytes;
    if (name == "left") return order == 1 ? &GetFirstDerivativeLeft : &GetSecondDerivativeLeft;
    if (!side.is_none() && name == "right") return order == 1 ? &GetFirstDerivativeRight : &GetSecondDerivativeRight;
    if (side.is_none()) return order == 1 ? &GetFirstDerivative : &GetSecondDerivative;
    throw py::value_error("Expected 'left' or 'right', found " + name);
}

template<class Function>
py::object Map(const FCurve& curve, py::handle x, py::handle out, const Function& function) {
    return MapNumbers(x, out, [&](const double* from, double* to, std::size_t n) {
        for (std::size_t i = 0; i < n; ++i) to[i] = function(curve, from[i]);
    });
}

} // namespace

void BindEvaluation(CurveClass& curve) {
    curve.def(
        "__call__",
        [](const FCurve& self, py::handle x, py::handle out) {
            return Map(self, x, out, [](const FCurve& of, double at) { return of.eval(at); });
        },
        py::arg("x"), py::arg("out") = py::none(),
        "The value at x (in frames): a float for a number, an array of x's shape for an array.\n\n"
        "float64 is read where it lies, other real numbers are converted. The values go to out, a contiguous array of\n"
        "float64, where one is given.");
    curve.def(
        "derivative",
        [](const FCurve& self, py::handle x, int order, py::handle side, py::handle out) {
            return Map(self, x, out, DerivativeOf(order, side));
        },
        py::arg("x"), py::arg("order") = 1, py::kw_only(), py::arg("side") = py::none(), py::arg("out") = py::none(),
        "The first or second derivative with respect to x, as a call of the curve. At a key it is that of the segment\n"
        "which starts there; with side='left' that of the one which ends there.");
    curve.def(
        "inside",
        [](const FCurve& self, py::handle x, py::handle out) {
            return Map(self, x, out, [](const FCurve& of, double at) { return EvalInInterior(at, of); });
        },
        py::arg("x"), py::arg("out") = py::none(),
        "As a call of the curve, with x held between the first and the last key.");
}

} // namespace FCurvePython
