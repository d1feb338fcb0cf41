#include "Binding.h"
#include "Lock.h"

#include "FCurveLib/DrawCurves.h"

#include <optional>
#include <vector>

namespace FCurvePython {

namespace {

std::optional<DrawOptions::Interval> ToInterval(py::handle pair, const char* name) {
    if (pair.is_none()) return std::nullopt;
    const Vector2D<double> ends = ToVector(pair, name);
    if (!(ends.x < ends.y)) throw py::value_error(std::string(name) + ": the first is not below the second");
    return DrawOptions::Interval{ends.x, ends.y};
}

DrawOptions::Marks ToMarks(py::handle shown) {
    if (shown.is_none()) return DrawOptions::Auto;
    return py::cast<bool>(shown) ? DrawOptions::On : DrawOptions::Off;
}

// A Curve, a Container, a mapping of names to curves, or an iterable of curves.
std::vector<DrawnCurve> ToDrawn(py::handle curves) {
    std::vector<DrawnCurve> drawn;
    const auto add = [&drawn](const CurvePtr& curve, std::string name) { drawn.push_back({curve, std::move(name)}); };
    if (py::isinstance<FCurve>(curves)) {
        const CurvePtr curve = ToCurve(curves);
        add(curve, curve->getName());
    } else if (py::hasattr(curves, "items")) {
        for (const auto item : ToList(CallPython(curves.attr("items")))) {
            const auto pair = py::cast<py::tuple>(item);
            add(ToCurve(pair[1]), ToText(pair[0]).bytes);
        }
    } else {
        for (const auto item : ToList(curves)) {
            const CurvePtr curve = ToCurve(item);
            add(curve, curve->getName());
        }
    }
    return drawn;
}

py::str Draw(py::handle curves, double width, double height, const Text& title, py::handle frames, py::handle values,
             bool velocity, bool acceleration, bool separate, bool selection, bool parts, py::handle keys,
             py::handle handles, py::handle before) {
    DrawOptions options;
    options.width = width;
    options.height = height;
    options.title = title.bytes;
    options.frames = ToInterval(frames, "frames");
    options.values = ToInterval(values, "values");
    options.velocity = velocity;
    options.acceleration = acceleration;
    options.separate = separate;
    options.selection = selection;
    options.parts = parts;
    options.keys = ToMarks(keys);
    options.handles = ToMarks(handles);
    std::vector<DrawnCurve> drawn = ToDrawn(curves);
    if (!before.is_none()) {
        const std::vector<DrawnCurve> earlier = ToDrawn(before);
        if (earlier.size() != drawn.size()) throw py::value_error("Expected as many curves before as now");
        for (std::size_t i = 0; i < drawn.size(); ++i) drawn[i].before = earlier[i].curve;
    }
    return ToPython(DrawCurves(drawn, options));
}

} // namespace

void BindDrawing(py::module_& module) {
    module.def(
        "draw", &Draw, py::arg("curves"), py::kw_only(), py::arg("width") = 960.0, py::arg("height") = 0.0,
        py::arg("title") = Text(), py::arg("frames") = py::none(), py::arg("values") = py::none(),
        py::arg("velocity") = false, py::arg("acceleration") = false, py::arg("separate") = false,
        py::arg("selection") = false, py::arg("parts") = false, py::arg("keys") = py::none(),
        py::arg("handles") = py::none(), py::arg("before") = py::none(),
        "An SVG picture of a Curve, a Container, a mapping of names to curves, or several curves: its text.\n\n"
        "width and height in pixels, each 100 to 20000, height 0 for as high as needed. frames and values: pairs,\n"
        "what is shown. velocity, acceleration: panels of the derivatives; separate: panels for each curve.\n"
        "keys, handles: True, False, or None for where they can be told apart. before: what the curves were, pale\n"
        "beneath them.");
}

} // namespace FCurvePython
