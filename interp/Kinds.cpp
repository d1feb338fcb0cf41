#include "interp/Kinds.h"

#include "FCurveLib/Bezier.h"
#include "FCurveLib/Constant.h"
#include "FCurveLib/ConstantNext.h"
#include "FCurveLib/Cycle.h"
#include "FCurveLib/CycleOffset.h"
#include "FCurveLib/Ease.h"
#include "FCurveLib/EaseIn.h"
#include "FCurveLib/EaseOut.h"
#include "FCurveLib/Linear.h"
#include "FCurveLib/MatchIn.h"
#include "FCurveLib/MatchOut.h"
#include "FCurveLib/Mirror.h"
#include "FCurveLib/NumberInterp.h"
#include "FCurveLib/Spline.h"
#include "FCurveLib/UnknownExpression.h"
#include "interp/ControlPoints.h"
#include "interp/Formula.h"
#include "model/Read.h"

#include <cstddef>
#include <iterator>
#include <typeinfo>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

constexpr Reads kBothKeys = kReadsLeftKey | kReadsRightKey;
constexpr Reads kAndNext = kBothKeys | kReadsNextKeys;
constexpr Reads kAndBeside = kBothKeys | kReadsNeighbours;
constexpr Reads kLeftOrAll = kReadsLeftKey | kReadsCurve;

// clang-format off
constexpr KindRow kRows[] = {
// kind                expression         create                 reversed            image           reads                       shape              beyond           left half           right half          args
{Kind::Constant,     "constant()",      &Constant::create,     Kind::ConstantNext, Image::Same,    kReadsLeftKey,              Shape::LeftValue,  Beyond::Flat,    Kind::Constant,     Kind::Constant,     nullptr},
{Kind::ConstantNext, "constant_next()", &ConstantNext::create, Kind::Constant,     Image::Same,    kReadsRightKey,             Shape::RightValue, Beyond::Flat,    Kind::ConstantNext, Kind::ConstantNext, nullptr},
{Kind::Linear,       "linear()",        &Linear::create,       Kind::Linear,       Image::Same,    kBothKeys,                  Shape::Line,       Beyond::Flat,    Kind::Linear,       Kind::Linear,       nullptr},
{Kind::Bezier,       "bezier()",        &Bezier::create,       Kind::Bezier,       Image::Same,    kBothKeys | kReadsTangents, Shape::Bezier,     Beyond::Handle,  Kind::Bezier,       Kind::Bezier,       &HandleArgs},
{Kind::Spline,       "spline()",        &Spline::create,       Kind::Spline,       Image::Same,    kAndNext,                   Shape::Bezier,     Beyond::Flat,    Kind::Bezier,       Kind::Bezier,       &SplineArgs},
{Kind::Ease,         "ease()",          &Ease::create,         Kind::Ease,         Image::Same,    kBothKeys,                  Shape::Bezier,     Beyond::Flat,    Kind::Bezier,       Kind::Bezier,       &EaseArgs},
{Kind::EaseIn,       "easein()",        &EaseIn::create,       Kind::EaseOut,      Image::Same,    kBothKeys,                  Shape::Bezier,     Beyond::Flat,    Kind::Bezier,       Kind::Bezier,       &EaseInArgs},
{Kind::EaseOut,      "easeout()",       &EaseOut::create,      Kind::EaseIn,       Image::Same,    kBothKeys,                  Shape::Bezier,     Beyond::Flat,    Kind::Bezier,       Kind::Bezier,       &EaseOutArgs},
{Kind::Match,        "match()",         &Match::create,        Kind::Match,        Image::Compare, kAndBeside,                 Shape::Bezier,     Beyond::Flat,    Kind::Match,        Kind::Match,        &MatchArgs},
{Kind::MatchIn,      "matchin()",       &MatchIn::create,      Kind::MatchOut,     Image::Compare, kAndBeside,                 Shape::Bezier,     Beyond::Flat,    Kind::Match,        Kind::MatchIn,      &MatchArgs},
{Kind::MatchOut,     "matchout()",      &MatchOut::create,     Kind::MatchIn,      Image::Compare, kAndBeside,                 Shape::Bezier,     Beyond::Flat,    Kind::MatchOut,     Kind::Match,        &MatchArgs},
{Kind::Cycle,        "cycle()",         &Cycle::create,        Kind::ConstantNext, Image::Same,    kLeftOrAll,                 Shape::LeftValue,  Beyond::Repeats, Kind::Cycle,        Kind::Cycle,        nullptr},
{Kind::CycleOffset,  "cycle_offset()",  &CycleOffset::create,  Kind::ConstantNext, Image::Same,    kLeftOrAll,                 Shape::LeftValue,  Beyond::Repeats, Kind::CycleOffset,  Kind::CycleOffset,  nullptr},
{Kind::Mirror,       "mirror()",        &Mirror::create,       Kind::ConstantNext, Image::Same,    kLeftOrAll,                 Shape::LeftValue,  Beyond::Repeats, Kind::Mirror,       Kind::Mirror,       nullptr},
{Kind::Formula,      "",                nullptr,               Kind::Formula,      Image::Text,    kReadsAnything,             Shape::Free,       Beyond::Free,    Kind::Formula,      Kind::Formula,      nullptr},
{Kind::Number,       "",                nullptr,               Kind::Number,       Image::Number,  0,                          Shape::Number,     Beyond::Flat,    Kind::Number,       Kind::Number,       nullptr},
{Kind::Unknown,      "",                nullptr,               Kind::Unknown,      Image::Compare, 0,                          Shape::Number,     Beyond::Flat,    Kind::Unknown,      Kind::Unknown,      nullptr},
{Kind::HostBezier,   "",                nullptr,               Kind::HostBezier,   Image::Compare, kReadsAnything,             Shape::Bezier,     Beyond::Free,    Kind::HostBezier,   Kind::HostBezier,   &StatedArgs},
{Kind::Host,         "",                nullptr,               Kind::Host,         Image::Compare, kReadsAnything,             Shape::Free,       Beyond::Free,    Kind::Host,         Kind::Host,         nullptr},
{Kind::Absent,       "",                nullptr,               Kind::Absent,       Image::Number,  0,                          Shape::Number,     Beyond::Flat,    Kind::Absent,       Kind::Absent,       nullptr},
};
// clang-format on

constexpr bool IsInOrder() noexcept {
    for (std::size_t i = 0; i < std::size(kRows); ++i)
        if (kRows[i].kind != static_cast<Kind>(i)) return false;
    return std::size(kRows) == static_cast<std::size_t>(Kind::Absent) + 1;
}
static_assert(IsInOrder());

// The classes of the library's kinds, in the rows' order. They are found by the address of their type_info, which is
// much faster than by name. Deliberate: only the library makes objects of these classes, so they all carry its own
// type_info; one that did not would pass for a host's, which is safe.
constexpr const std::type_info* kTypes[] = {
    &typeid(Constant),
    &typeid(ConstantNext),
    &typeid(Linear),
    &typeid(Bezier),
    &typeid(Spline),
    &typeid(Ease),
    &typeid(EaseIn),
    &typeid(EaseOut),
    &typeid(Match),
    &typeid(MatchIn),
    &typeid(MatchOut),
    &typeid(Cycle),
    &typeid(CycleOffset),
    &typeid(Mirror),
    &typeid(Formula),
    &typeid(NumberInterp),
    &typeid(UnknownExpression),
};
static_assert(std::size(kTypes) == static_cast<std::size_t>(Kind::HostBezier));

} // namespace

std::string_view KindRow::name() const noexcept {
    const std::string_view text(expression);
    return text.substr(0, text.find('('));
}

KindTable AllKinds() noexcept {
    return {std::begin(kRows), std::end(kRows)};
}

const KindRow& RowOf(Kind kind) noexcept {
    return kRows[static_cast<std::size_t>(kind)];
}

const KindRow& KindOf(const Interpolator& interpolator) noexcept {
    const std::type_info* const type = &typeid(interpolator);
    for (std::size_t i = 0; i < std::size(kTypes); ++i)
        if (kTypes[i] == type) return kRows[i];
    return RowOf(dynamic_cast<const BezierInterpBase*>(&interpolator) ? Kind::HostBezier : Kind::Host);
}
BezierArgs ArgsOf(const BezierInterpBase& interpolator, const Segment& segment) {
    const std::type_info* const type = &typeid(interpolator);
    for (std::size_t i = 0; i < std::size(kTypes); ++i)
        if (kTypes[i] == type) return kRows[i].args(interpolator, segment);
    return StatedArgs(interpolator, segment);
}
const KindRow& KindOf(const Interpolator* interpolator) noexcept {
    return interpolator ? KindOf(*interpolator) : RowOf(Kind::Absent);
}
const KindRow& KindOf(const Segment& segment) noexcept {
    return KindOf(Read::interpolator(segment));
}

const KindRow* FindKind(std::string_view name) noexcept {
    if (name.empty()) return nullptr;
    for (const KindRow& row : kRows)
        if (row.name() == name) return &row;
    return nullptr;
}

Reads ReadsOf(const Interpolator* interpolator, const Segment& segment) noexcept {
    const KindRow& row = KindOf(interpolator);
    if (row.kind == Kind::Formula) {
        Reads reads = 0;
        for (const auto& leaf : static_cast<const Formula*>(interpolator)->leaves())
            reads |= ReadsOf(leaf.get(), segment);
        return reads;
    }
    if (row.isHost() || row.reads == 0) return row.reads;
    const bool left = Read::leftKey(segment) != nullptr;
    const bool right = Read::rightKey(segment) != nullptr;
    if (left && right) return row.reads & ~kReadsCurve;
    if (row.repeats() && left != right) return kBothKeys | kReadsCurve;
    const Reads own = (left ? kReadsLeftKey : 0) | (right ? kReadsRightKey : 0);
    return own | (row.reads & (kReadsTangents | kReadsNeighbours));
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
