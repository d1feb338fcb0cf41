#include "Arrays.h"
#include "Lock.h"

#include "FCurveLib/CompiledCurve.h"
#include "FCurveLib/CompiledSet.h"

namespace FCurvePython {

namespace {

using Contiguous = py::array_t<double, py::array::c_style>;

// Other threads run while many values are computed: compiled curves never change.
template<class Op>
void WithoutLock(std::size_t n, const Op& op) {
    if (n < 256) return op();
    const Unlocked unlocked;
    op();
}

py::object EvalCompiled(const CompiledCurve& self, py::handle x, py::handle out) {
    return MapNumbers(x, out, [&](const double* from, double* to, std::size_t n) {
        if (n == 1)
            *to = self.eval(*from);
        else
            WithoutLock(n, [&] { self.eval(from, to, n); });
    });
}

py::object DeriveCompiled(const CompiledCurve& self, py::handle x, int order, py::handle out) {
    if (order != 1 && order != 2) throw py::value_error("Expected an order of 1 or 2, found " + std::to_string(order));
    return MapNumbers(x, out, [&](const double* from, double* to, std::size_t n) {
        WithoutLock(n, [&] {
            for (std::size_t i = 0; i < n; ++i)
                to[i] = order == 1 ? self.getFirstDerivative(from[i]) : self.getSecondDerivative(from[i]);
        });
    });
}

py::object SampleCompiled(const CompiledCurve& self, double start, double step, py::ssize_t count, py::handle out) {
    if (count < 0) throw py::value_error("Expected a count of 0 or more");
    py::array_t<double> values = ResultArray({count}, out);
    double* const y = values.mutable_data();
    WithoutLock(static_cast<std::size_t>(count), [&] { self.sample(start, step, static_cast<std::size_t>(count), y); });
    return std::move(values);
}

py::object EvalPose(const CompiledSet& self, py::handle x, py::handle out) {
    Contiguous frames(ToDoubles(x, "x"));
    std::vector<py::ssize_t> shape(frames.shape(), frames.shape() + frames.ndim());
    shape.push_back(static_cast<py::ssize_t>(self.size()));
    py::array_t<double> values = ResultArray(shape, out);
    double* const to = values.mutable_data();
    if (Overlap(frames, to, static_cast<std::size_t>(values.size()))) frames = Contiguous(frames.attr("copy")());
    const double* const from = frames.data();
    const auto n = static_cast<std::size_t>(frames.size());
    WithoutLock(n * self.size(), [&] { self.eval(from, n, to); });
    return std::move(values);
}

py::list NamesOf(const CompiledSet& self) {
    py::list names;
    for (std::size_t i = 0; i < self.size(); ++i) names.append(ToPython(self.getName(i)));
    return names;
}

CompiledSet MakePose(py::handle curves) {
    if (py::isinstance<FCurveContainer>(curves)) return CompiledSet(py::cast<const FCurveContainer&>(curves));
    std::vector<CurvePtr> kept;
    std::vector<const FCurve*> list;
    for (const auto curve : ToList(curves)) {
        kept.push_back(ToCurve(curve));
        list.push_back(kept.back().get());
    }
    return CompiledSet(list);
}

} // namespace

void BindPlayback(py::module_& module, CurveClass& curve, ContainerClass& container) {
    py::class_<CompiledCurve>(
        module, "CompiledCurve", py::is_final(),
        "A curve's values alone, for playing. It never changes; any number of threads may use it.\n"
        "Values are those of the curve to 1e-12 of its range.")
        .def(py::init<const FCurve&>(), py::arg("curve"))
        .def_property_readonly("key_count", &CompiledCurve::getKeyCount,
                               "The number of keys of the curve that it was made from.")
        .def("eval", &EvalCompiled, py::arg("x"), py::arg("out") = py::none(),
             "The value at x (in frames): a float for a number, an array of x's shape for an array. Other threads run\n"
             "meanwhile.")
        .def("__call__", &EvalCompiled, py::arg("x"), py::arg("out") = py::none(), "As eval.")
        .def("derivative", &DeriveCompiled, py::arg("x"), py::arg("order") = 1, py::kw_only(),
             py::arg("out") = py::none(), "The first or second derivative with respect to x, as eval.")
        .def("sample", &SampleCompiled, py::arg("start"), py::arg("step"), py::arg("count"),
             py::arg("out") = py::none(),
             "The values at start, start + step, start + 2 * step ... : an array of shape (count,). Other threads run\n"
             "meanwhile.")
        .def("__repr__", [](const CompiledCurve& self) {
            return py::str("<CompiledCurve of {} keys>").format(self.getKeyCount());
        });

    py::class_<CompiledSet>(module, "Pose", py::is_final(),
                            "Many curves compiled together, in the order of the container or iterable that they are\n"
                            "made from. It never changes; any number of threads may use it.")
        .def(py::init(&MakePose), py::arg("curves"))
        .def("__len__", &CompiledSet::size)
        .def("__getitem__",
             [](const CompiledSet& self, py::ssize_t index) { return self.getCurve(Place(index, self.size())); })
        .def_property_readonly("names", &NamesOf, "The curves' names.")
        .def(
            "eval", &EvalPose, py::arg("x"), py::arg("out") = py::none(),
            "The values of all n curves: shape (n,) for one frame, (frames, n) for an array of frames, and in general\n"
            "x.shape + (n,). Other threads run meanwhile.")
        .def("__call__", &EvalPose, py::arg("x"), py::arg("out") = py::none(), "As eval.")
        .def("__repr__",
             [](const CompiledSet& self) { return py::str("<Pose of {}>").format(py::repr(NamesOf(self))); });

    curve.def(
        "compile", [](const FCurve& self) { return CompiledCurve(self); },
        "The curve's values alone, for playing: a CompiledCurve.");
    container.def(
        "compile", [](const FCurveContainer& self) { return CompiledSet(self); }, "All curves as a Pose.");
}

} // namespace FCurvePython
