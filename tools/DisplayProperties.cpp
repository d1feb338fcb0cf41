#include "FCurveLib/DisplayProperties.h"

#include "FCurveLib/FCurve.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Rectangle.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace {

template<class Part>
bool IsSet(const Part& part, const char* key) {
    return *part.getProperty(key) != '\0';
}

template<class Part>
void SetFlag(Part& part, const char* key, bool on) {
    part.setProperty(key, on ? "1" : "");
}

std::istringstream Reading(const char* text) {
    std::istringstream in(text);
    in.imbue(std::locale::classic());
    return in;
}

// The largest number in place of one that is too large: some standard libraries give infinity.
template<class Number>
Number Held(Number number) {
    return std::clamp(number, std::numeric_limits<Number>::lowest(), std::numeric_limits<Number>::max());
}

std::ostringstream Writing() {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    return out;
}

} // namespace

bool IsVisible(const FCurve& curve) {
    return !IsSet(curve, "fc_vis");
}
void SetVisible(FCurve& curve, bool visible) {
    SetFlag(curve, "fc_vis", !visible);
}
bool IsEditable(const FCurve& curve) {
    return !IsSet(curve, "fc_edit");
}
void SetEditable(FCurve& curve, bool editable) {
    SetFlag(curve, "fc_edit", !editable);
}
bool IsLocked(const FCurve& curve) {
    return IsSet(curve, "fc_lock");
}
void SetLocked(FCurve& curve, bool locked) {
    SetFlag(curve, "fc_lock", locked);
}
void SetLocked(Keyframe& key, bool locked) {
    SetFlag(key, "fc_lock", locked);
}
bool IsVelocityVisible(const FCurve& curve) {
    return IsSet(curve, "fc_vel");
}
void SetVelocityVisible(FCurve& curve, bool visible) {
    SetFlag(curve, "fc_vel", visible);
}
bool IsAccelerationVisible(const FCurve& curve) {
    return IsSet(curve, "fc_acc");
}
void SetAccelerationVisible(FCurve& curve, bool visible) {
    SetFlag(curve, "fc_acc", visible);
}
bool IsDiscontinuityVisible(const FCurve& curve) {
    return IsSet(curve, "fc_disc");
}
void SetDiscontinuityVisible(FCurve& curve, bool visible) {
    SetFlag(curve, "fc_disc", visible);
}

bool HasGridSettings(const FCurve& curve) {
    return IsSet(curve, "fc_grid");
}

void SetGridSettings(FCurve& curve, const Rectangle<double>& grid) {
    if (!(grid.width > 0.0 && grid.height > 0.0)) {
        RemoveGridSettings(curve);
        return;
    }
    for (double number : {grid.x, grid.y, grid.width, grid.height}) {
        if (!std::isfinite(number)) return;
    }
    std::ostringstream out = Writing();
    out << grid.x << ' ' << grid.y << ' ' << grid.width << ' ' << grid.height;
    curve.setProperty("fc_grid", out.str().c_str());
}

void GetGridSettings(const FCurve& curve, Rectangle<double>& grid) {
    std::istringstream in = Reading(curve.getProperty("fc_grid"));
    float x = 0.0F;
    float y = 0.0F;
    float width = 0.0F;
    float height = 0.0F;
    in >> x >> y >> width >> height; // deliberate: single precision
    grid = Rectangle<double>(Held(x), Held(y), Held(width), Held(height));
}

void RemoveGridSettings(FCurve& curve) {
    curve.setProperty("fc_grid", "");
}

double GetTangentScale(const FCurve& curve) {
    if (!IsSet(curve, "fc_scal")) return 1.0;
    std::istringstream in = Reading(curve.getProperty("fc_scal"));
    double scale = 0.0;
    in >> scale;
    return Held(scale);
}

void SetTangentScale(FCurve& curve, double scale) {
    if (scale == 1.0) {
        curve.setProperty("fc_scal", "");
        return;
    }
    if (!std::isfinite(scale)) return;
    std::ostringstream out = Writing();
    out << scale;
    curve.setProperty("fc_scal", out.str().c_str());
}

bool IsEditorKeyString(const char* key) noexcept {
    return key && std::strncmp(key, "fc_", 3) == 0;
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
