#include "Arrays.h"
#include "Lock.h"

#include "FCurveLib/Baking.h"
#include "FCurveLib/Combining.h"
#include "FCurveLib/EditGroup.h"
#include "FCurveLib/Fitting.h"
#include "FCurveLib/Sampling.h"
#include "FCurveLib/Smoothing.h"
#include "FCurveLib/Transform.h"
#include "FCurveLib/Unroll.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace FCurvePython {

namespace {

using Points = std::vector<Vector2D<double>>;

Points ToPoints(py::handle x, py::handle y) {
    const auto xs = py::array_t<double, py::array::c_style>(ToDoubles(x, "x"));
    const auto ys = py::array_t<double, py::array::c_style>(ToDoubles(y, "y"));
    if (xs.ndim() != 1 || ys.ndim() != 1 || xs.size() != ys.size())
        throw py::value_error("Expected x and y of one dimension and of one length");
    Points points(static_cast<std::size_t>(xs.size()));
    for (std::size_t i = 0; i < points.size(); ++i) points[i] = {xs.data()[i], ys.data()[i]};
    return points;
}

py::tuple ToArrays(const Points& points) {
    const auto size = static_cast<py::ssize_t>(points.size());
    py::array_t<double> x(size);
    py::array_t<double> y(size);
    double* const xs = x.mutable_data();
    double* const ys = y.mutable_data();
    for (std::size_t i = 0; i < points.size(); ++i) {
        xs[i] = points[i].x;
        ys[i] = points[i].y;
    }
    return py::make_tuple(x, y);
}

// Where None stands, the ends of the keyed range; NaN without keys, with which nothing happens.
struct Range {
    Range(FCurve& curve, py::handle from, py::handle to) {
        const KeyPtr first = FirstSegment(curve).getRightKey();
        const KeyPtr last = LastSegment(curve).getLeftKey();
        start = from.is_none() ? (first ? first->getX() : std::nan("")) : ToNumber(from);
        end = to.is_none() ? (last ? last->getX() : std::nan("")) : ToNumber(to);
    }
    double start;
    double end;
};

double Step(double step) {
    if (!(step > 0.0)) throw py::value_error("Expected a step above 0");
    return step;
}

// One of the names, by its place.
std::size_t Choose(const Text& name, std::initializer_list<const char*> names) {
    std::size_t i = 0;
    std::string known;
    for (const char* const candidate : names) {
        if (name.bytes == candidate) return i;
        known += std::string(known.empty() ? "'" : ", '") + candidate + "'";
        ++i;
    }
    throw py::value_error("Expected one of " + known + ", found '" + name.bytes + "'");
}

FitOptions ToOptions(bool weighted, bool broken, bool keepExtremes, bool wholeFrames, std::size_t maxKeys) {
    FitOptions options;
    options.handles = weighted ? FitOptions::Weighted : FitOptions::Thirds;
    options.keys = broken ? FitOptions::Broken : FitOptions::Smooth;
    options.keepExtremes = keepExtremes;
    options.wholeFrames = wholeFrames;
    options.maxKeys = maxKeys;
    return options;
}

double Tolerance(double tolerance) {
    if (!(tolerance >= 0.0)) throw py::value_error("Expected a tolerance of 0 or more");
    return tolerance;
}

// The expressions that were kept; ValueError where the transformation was refused.
py::list Kept(const TransformResult& result) {
    if (!result.transformed) throw py::value_error("The curve cannot be transformed so: it would collapse or overflow");
    py::list kept;
    for (const std::string& expression : result.kept) kept.append(ToPython(expression));
    return kept;
}

bool SamePlaces(const FCurve& a, const FCurve& b) {
    if (a.size() != b.size()) return false;
    auto other = b.begin();
    for (const Segment& segment : a) {
        const auto left = segment.getLeftKey();
        if (left && std::abs(left->getX() - other->getLeftKey()->getX()) > 1e-7) return false;
        ++other;
    }
    return true;
}

std::size_t Unroll(FCurve& x, FCurve& y, FCurve& z, const Text& order, double turn) {
    const std::size_t number = Choose(order, {"xyz", "xzy", "yxz", "yzx", "zxy", "zyx"});
    if (&x == &y || &y == &z || &x == &z) throw py::value_error("Expected three curves, found one twice");
    if (!SamePlaces(x, y) || !SamePlaces(x, z))
        throw py::value_error("The curves' keys do not stand at the same frames: bake them first");
    return UnrollAngles(x, y, z, static_cast<RotationOrder>(number), turn);
}

void BindFitting(py::module_& module, CurveClass& curve) {
    py::class_<FitReport>(module, "FitReport", "What fitting or reducing came to.")
        .def_readonly("keys_before", &FitReport::keysBefore, "Usable samples, or keys in the range.")
        .def_readonly("keys_after", &FitReport::keysAfter, "Keys now.")
        .def_readonly("error", &FitReport::error, "The largest distance in value.")
        .def_readonly("error_at", &FitReport::errorAt, "The frame where it is.")
        .def_readonly("within_tolerance", &FitReport::withinTolerance,
                      "Whether the error is no more than was asked for.")
        .def("__repr__", [](const FitReport& self) {
            return py::str("<FitReport {} -> {} keys, error {} at {}>")
                .format(self.keysBefore, self.keysAfter, self.error, self.errorAt);
        });
    module.def(
        "fit_report",
        [](py::handle x, py::handle y, double tolerance, const Text& name, bool weighted, bool broken,
           bool keepExtremes, bool wholeFrames, std::size_t maxKeys) {
            const FitResult result = FitCurve(ToPoints(x, y), Tolerance(tolerance),
                                              ToOptions(weighted, broken, keepExtremes, wholeFrames, maxKeys));
            result.curve->setName(name.c_str());
            return py::make_tuple(result.curve, result.report);
        },
        py::arg("x"), py::arg("y"), py::arg("tolerance"), py::kw_only(), py::arg("name") = Text(),
        py::arg("weighted") = false, py::arg("broken") = false, py::arg("keep_extremes") = false,
        py::arg("whole_frames") = false, py::arg("max_keys") = std::size_t{0}, "As fit: (curve, FitReport).");
    curve.def(
        "reduce",
        Editing([](FCurve& self, double tolerance, py::handle start, py::handle end, bool weighted, bool broken,
                   bool keepExtremes, bool wholeFrames, std::size_t maxKeys) {
            const Range range(self, start, end);
            return ReduceCurve(self, range.start, range.end, Tolerance(tolerance),
                               ToOptions(weighted, broken, keepExtremes, wholeFrames, maxKeys));
        }),
        py::arg("tolerance"), py::arg("start") = py::none(), py::arg("end") = py::none(), py::kw_only(),
        py::arg("weighted") = false, py::arg("broken") = false, py::arg("keep_extremes") = false,
        py::arg("whole_frames") = false, py::arg("max_keys") = std::size_t{0},
        "Removes keys between start and end (in frames; the whole curve by default) as long as the curve is nowhere\n"
        "farther than the tolerance from what it was, and tells what came of it. Options as of fit.");
}

void BindResampling(CurveClass& curve) {
    curve.def(
        "sample",
        [](FCurve& self, py::handle start, py::handle end, double step) {
            Points points;
            if (start.is_none() && end.is_none()) {
                SampleCurveInterior(self, Step(step), points);
            } else {
                const Range range(self, start, end);
                SampleCurve(self, range.start, range.end, Step(step), points);
            }
            return ToArrays(points);
        },
        py::arg("start") = py::none(), py::arg("end") = py::none(), py::arg("step") = 1.0,
        "(x, y): arrays of the samples at start, start + step ... up to end, in frames. Without start and end, those "
        "at\n"
        "whole multiples of step, from the one at or before the first key to the one at or after the last.");
    curve.def("bake", Editing([](FCurve& self, double step, py::handle start, py::handle end) {
                  if (start.is_none() && end.is_none()) return BakeInterior(self, Step(step));
                  const Range range(self, start, end);
                  BakeCurve(self, range.start, range.end, Step(step));
              }),
              py::arg("step") = 1.0, py::arg("start") = py::none(), py::arg("end") = py::none(),
              "Replaces the curve between start and end (in frames) by linear keys at whole multiples of step.");
    curve.def(
        "bake_samples", Editing([](FCurve& self, py::handle x, py::handle y) { BakeSamples(self, ToPoints(x, y)); }),
        py::arg("x"), py::arg("y"),
        "Replaces the curve from the first to the last sample by linear keys through them: arrays of one length.");
    curve.def(
        "smooth",
        Editing([](FCurve& self, int width, const Text& filter, double step, py::handle start, py::handle end) {
            if (width < 0) throw py::value_error("Expected a width of 0 or more");
            const auto kind =
                static_cast<SmoothFilter>(Choose(filter, {"box", "triangle", "gaussian", "savitzky_golay"}));
            Step(step);
            const Range range(self, start, end);
            // The last value is asked for when the new keys stand: what an interpolator raises there takes them back.
            const ContainerPtr whole = FCurveContainer::create();
            whole->addCurve(self.getShared());
            EditGroup group(*whole);
            if (start.is_none() && end.is_none())
                SmoothCurveInterior(self, step, width, kind);
            else
                SmoothCurve(self, range.start, range.end, step, width, kind);
            group.end();
        }),
        py::arg("width"), py::arg("filter") = "gaussian", py::arg("step") = 1.0, py::arg("start") = py::none(),
        py::arg("end") = py::none(),
        "Samples the curve in steps (of frames) and replaces each sample by the weighted mean of itself and width\n"
        "neighbours on either side: 'box', 'triangle', 'gaussian' or 'savitzky_golay'.");
}

void BindTransformation(py::module_& module, CurveClass& curve) {
    curve.def(
        "transform", Editing([](FCurve& self, py::handle scale, py::handle offset) {
            return Kept(TransformCurve(self, ToVector(scale, "scale"), ToVector(offset, "offset")));
        }),
        py::arg("scale") = py::make_tuple(1.0, 1.0), py::arg("offset") = py::make_tuple(0.0, 0.0),
        "Maps every point (x, y) to (scale[0] * x + offset[0], scale[1] * y + offset[1]), and returns the expressions\n"
        "that have no image and were kept. A negative scale of x reverses time; 0 is a ValueError.");
    curve.def(
        "flip", Editing([](FCurve& self, const Text& axes, py::handle about) {
            const auto type = static_cast<FlipType>(Choose(axes, {"x", "y", "xy"}));
            if (about.is_none()) return Kept(FlipCurveAboutCentroid(self, type));
            const Vector2D<double> centre = ToVector(about, "about");
            return Kept(FlipCurve(self, type, centre.x, centre.y));
        }),
        py::arg("axes"), py::arg("about") = py::none(),
        "Mirrors in time ('x'), value ('y') or both ('xy') about a point (x, y), by default the centre of the keyed\n"
        "range.");
    curve.def("unroll", Editing([](FCurve& self, double turn) { return UnrollAngles(self, turn); }),
              py::arg("turn") = 360.0,
              "Adds whole turns to keys, so that an angle does not jump. Returns how many keys moved.");
    module.def("unroll", Editing(&Unroll), py::arg("x"), py::arg("y"), py::arg("z"), py::arg("order") = "xyz",
               py::arg("turn") = 360.0,
               "The same rotations without jumps: three curves of the angles about x, y and z, with keys at the same\n"
               "frames, applied in this order. Returns at how many frames keys moved.");
}

CombineResult Blend(const FCurve& a, const FCurve& b, py::handle weight, double tolerance) {
    if (py::isinstance<FCurve>(weight)) return BlendCurves(a, b, py::cast<const FCurve&>(weight), Tolerance(tolerance));
    const CurvePtr constant = FCurve::create();
    FirstSegment(*constant).setInterpolator(ToInterpolator(py::float_(ToNumber(weight))));
    return BlendCurves(a, b, *constant, Tolerance(tolerance));
}

CombineResult Add(const FCurve& a, const FCurve& b, double tolerance) {
    return AddCurves(a, b, Tolerance(tolerance));
}

CombineResult Retime(const FCurve& curve, const FCurve& by, double tolerance) {
    return RetimeCurve(curve, by, Tolerance(tolerance));
}

py::tuple WithReport(const CombineResult& result) {
    return py::make_tuple(result.curve, result.report);
}

// The curve alone: that it misses the tolerance is a warning then.
CurvePtr Warned(const CombineResult& result) {
    const CombineReport& report = result.report;
    if (!report.withinTolerance) {
        const std::string words = "The result misses the tolerance: it is " + NumberText(report.error)
                                  + " off at frame " + NumberText(report.errorAt);
        const py::object type = ErrorClass("ToleranceWarning");
        int status = 0;
        TakeLock([&] { status = PyErr_WarnEx(type.ptr(), words.c_str(), 1); });
        if (status != 0) throw py::error_already_set();
    }
    return result.curve;
}

void BindCombining(py::module_& module, CurveClass& curve) {
    py::class_<CombineReport>(module, "CombineReport", "How near a combined curve came to what was asked for.")
        .def_readonly("exact", &CombineReport::exact, "Whether it is that, up to rounding, between its keys.")
        .def_property_readonly(
            "fitted",
            [](const CombineReport& self) {
                py::list ranges;
                for (const CombineReport::Range& range : self.fitted)
                    ranges.append(py::make_tuple(range.from, range.to));
                return ranges;
            },
            "Where it is not, and was fitted: pairs of frames, in ascending order.")
        .def_readonly("ends_exact", &CombineReport::endsExact,
                      "Whether it is that before its first and after its last key; else it holds its value there.")
        .def_readonly("proved", &CombineReport::proved,
                      "Whether the error is bounded everywhere, not only measured at many places.")
        .def_readonly("error", &CombineReport::error, "The largest distance in value between the keys.")
        .def_readonly("error_at", &CombineReport::errorAt, "The frame where it is.")
        .def_readonly("within_tolerance", &CombineReport::withinTolerance,
                      "Whether the error is no more than was asked for.")
        .def("__repr__", [](const CombineReport& self) {
            return py::str("<CombineReport {}, error {} at {}>")
                .format(self.exact ? "exact" : "fitted", self.error, self.errorAt);
        });
    const auto toleranceArg = py::arg("tolerance") = 1e-3;
    curve
        .def(
            "retime",
            [](const FCurve& self, const FCurve& by, double tolerance) { return Warned(Retime(self, by, tolerance)); },
            py::arg("by"), toleranceArg,
            "A new curve: at x, this one's value at by(x). What is no segment of the library is fitted within the\n"
            "tolerance; where that fails, there is a ToleranceWarning.")
        .def(
            "retime_report",
            [](const FCurve& self, const FCurve& by, double tolerance) {
                return WithReport(Retime(self, by, tolerance));
            },
            py::arg("by"), toleranceArg, "As retime: (curve, CombineReport), without a warning.");
    module.def(
        "blend",
        [](const FCurve& a, const FCurve& b, py::handle weight, double tolerance) {
            return Warned(Blend(a, b, weight, tolerance));
        },
        py::arg("a"), py::arg("b"), py::arg("weight"), toleranceArg,
        "A new curve from a to b: a(x) + weight(x) * (b(x) - a(x)). weight is a Curve or a number. Fitted as\n"
        "Curve.retime, with a ToleranceWarning where that fails.");
    module.def(
        "blend_report",
        [](const FCurve& a, const FCurve& b, py::handle weight, double tolerance) {
            return WithReport(Blend(a, b, weight, tolerance));
        },
        py::arg("a"), py::arg("b"), py::arg("weight"), toleranceArg,
        "As blend: (curve, CombineReport), without a warning.");
    module.def(
        "add", [](const FCurve& a, const FCurve& b, double tolerance) { return Warned(Add(a, b, tolerance)); },
        py::arg("a"), py::arg("b"), toleranceArg,
        "A new curve, the sum of two: a layer on a base. Fitted as Curve.retime, with a ToleranceWarning where that\n"
        "fails.");
    module.def(
        "add_report",
        [](const FCurve& a, const FCurve& b, double tolerance) { return WithReport(Add(a, b, tolerance)); },
        py::arg("a"), py::arg("b"), toleranceArg, "As add: (curve, CombineReport), without a warning.");
}

} // namespace

void BindTools(py::module_& module, CurveClass& curve) {
    BindFitting(module, curve);
    BindResampling(curve);
    BindTransformation(module, curve);
    BindCombining(module, curve);
}

} // namespace FCurvePython
