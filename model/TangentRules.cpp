#include "model/TangentRules.h"

#include "FCurveLib/Tangent.h"
#include "FCurveLib/Tolerance.h"

#include <cmath>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

// tan(89.99999 degrees): just short of vertical, so that the slope has a sign and a finite value.
constexpr double kSteepest = 5729577.948511148;

// A neighbour's value this near to the handle's own y makes a clamped tangent flat.
constexpr double kClampDistance = 0.05;

double Length(const Vector2D<double>& v) noexcept {
    return std::hypot(v.x, v.y);
}

// y of a vertical handle that reaches to x. A horizontal one stays so.
double Steepest(double x, double y) noexcept {
    return y == 0.0 ? 0.0 : std::copysign(x * kSteepest, y);
}

// y of a handle that is brought to newX along the slope y / x. One that is there already keeps its bits, so that
// recomputing is idempotent.
double AlongSlope(double newX, double x, double y) noexcept {
    if (x == newX && x != 0.0) return y;
    return NearZero(x) ? Steepest(newX, y) : newX * (y / x);
}

Vector2D<double> FlatHandle(const TangentSite& site, double length) noexcept {
    return LimitedHandle(site, site.side() * length, 0.0);
}

// continued: where the segment lacks a key, go on along the line from the only neighbour.
Vector2D<double> LinearHandle(const TangentSite& site, bool continued) noexcept {
    const double side = site.side();
    if (site.hasBothKeys()) return LimitedHandle(site, side * site.third(), side * (site.right->y - site.left->y) / 3);
    const Vector2D<double>* neighbour = site.before ? site.before : site.after;
    if (!continued || !neighbour) return LimitedHandle(site, side, 0.0);
    return LimitedHandle(site, side, side * (site.own->y - neighbour->y) / (site.own->x - neighbour->x));
}

Vector2D<double> SmoothHandle(const TangentSite& site, bool continued) noexcept {
    if (!site.before && !site.after) return FlatHandle(site, Length(site.handle));
    if (!site.before || !site.after) return LinearHandle(site, continued);
    // Both neighbours mean that the segment has both keys: the limits take a third of it whatever the length proposed
    // here.
    const double slope = (site.after->y - site.before->y) / (site.after->x - site.before->x);
    return LimitedHandle(site, site.side(), site.side() * slope);
}

Vector2D<double> ClampedHandle(const TangentSite& site) noexcept {
    // deliberate: the neighbours' values are compared with the handle's own offset, not with the key's value
    const auto isNear = [&](const Vector2D<double>& key) { return std::fabs(key.y - site.handle.y) < kClampDistance; };
    if (site.before && site.after && (isNear(*site.before) || isNear(*site.after)))
        return FlatHandle(site, Length(site.handle));
    return SmoothHandle(site, false);
}

Vector2D<double> PlateauHandle(const TangentSite& site) noexcept {
    if (site.before && site.after) {
        const bool between = (site.before->y < site.own->y && site.own->y < site.after->y)
                             || (site.before->y > site.own->y && site.own->y > site.after->y);
        if (!between) return FlatHandle(site, site.third());
    }
    return SmoothHandle(site, false);
}

} // namespace

Vector2D<double> LimitedHandle(const TangentSite& site, double x, double y) noexcept {
    if (site.weighted && (site.type == Tangent::Fixed || site.type == Tangent::Flat)) return {x, y};
    if (!site.hasBothKeys()) return {x, NearZero(x) ? Steepest(x, y) : y};
    const double newX = site.side() * site.third();
    const double newY = AlongSlope(newX, x, y);
    if (site.type == Tangent::Plateau && newY != 0.0) {
        const double end = site.own->y + newY;
        const double low = site.left->y < site.right->y ? site.left->y : site.right->y;
        const double high = site.left->y < site.right->y ? site.right->y : site.left->y;
        if (end < low || end > high) return {newX, 0.0};
    }
    return {newX, newY};
}

Vector2D<double> AutomaticHandle(const TangentSite& site) noexcept {
    switch (site.type) {
    case Tangent::Fixed:
        return LimitedHandle(site, site.handle.x, site.handle.y);
    case Tangent::Flat:
        return FlatHandle(site, site.hasBothKeys() ? site.third() : Length(site.handle));
    case Tangent::Linear:
        return LinearHandle(site, false);
    case Tangent::Smooth:
        return SmoothHandle(site, false);
    case Tangent::SmoothContinued:
        return SmoothHandle(site, true);
    case Tangent::Clamped:
        return ClampedHandle(site);
    case Tangent::Plateau:
        return PlateauHandle(site);
    default:
        return site.handle;
    }
}

namespace {

// A handle set by hand. Without both keys there is no third to reach, and a vertical one keeps its length.
Vector2D<double> SetHandle(const TangentSite& site, double x, double y) noexcept {
    return site.hasBothKeys() ? LimitedHandle(site, x, y) : Vector2D<double>(x, y);
}

} // namespace

Vector2D<double> EditedHandle(const TangentSite& site, double x, double y) noexcept {
    const bool locked = site.weighted && site.weightLocked;
    const double weight = Length(site.handle);
    const double proposed = std::hypot(x, y);
    if (site.type == Tangent::Flat && site.weighted) return FlatHandle(site, locked ? weight : proposed);
    if (site.type != Tangent::Fixed) return AutomaticHandle(site);
    if (!locked) return SetHandle(site, x, y);
    if (NearZero(proposed)) return site.handle;
    return SetHandle(site, x * (weight / proposed), y * (weight / proposed));
}

Vector2D<double> AlignedHandle(const TangentSite& site, const Vector2D<double>& opposite) noexcept {
    const double length = Length(opposite);
    if (length == 0.0) return site.handle;
    double weight = Length(site.handle);
    if (NearZero(weight)) weight = 1.0;
    return SetHandle(site, -opposite.x * (weight / length), -opposite.y * (weight / length));
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
