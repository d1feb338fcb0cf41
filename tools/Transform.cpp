#include "FCurveLib/Transform.h"

#include "FCurveLib/Extents.h"
#include "FCurveLib/FCurve.h"
#include "FCurveLib/InterpolatorFactory.h"
#include "FCurveLib/NumberInterp.h"
#include "FCurveLib/Rectangle.h"
#include "FCurveLib/Tolerance.h"
#include "interp/Kinds.h"
#include "model/Raw.h"
#include "tools/FormulaImage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <unordered_map>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

using Private::AffineMap;
using Private::Image;
using Private::Kind;
using Private::KindRow;
using Private::Raw;
using Private::Read;

namespace {

using InterpolatorPtr = std::shared_ptr<Interpolator>;

// Abscissae at which to compare a segment with its image: places that are no simple fractions, so that no jump is
// likely to hide there.
std::array<double, 16> PlacesIn(const Segment& segment) {
    const Keyframe* left = Read::leftKey(segment);
    const Keyframe* right = Read::rightKey(segment);
    std::array<double, 16> places{};
    for (std::size_t i = 0; i < places.size(); ++i) {
        const double step = static_cast<double>(i) + 0.5 + 0.0317 * static_cast<double>(i % 5);
        if (left && right)
            places[i] = left->getX() + (right->getX() - left->getX()) * step / static_cast<double>(places.size());
        else
            places[i] = (left ? left->getX() : right ? right->getX() : -40.0) + (right ? -7.3 : 7.3) * step;
    }
    return places;
}

class Transformation {
public:
    Transformation(FCurve& curve, const AffineMap& x, const AffineMap& y)
        : m_curve(curve), m_x(x), m_y(y), m_reversed(x.scale < 0.0) {}

    // The image, a curve of its own; empty if keys would collide, or keys or handles would not be finite.
    std::shared_ptr<FCurve> run(std::vector<std::string>& kept) {
        auto image = FCurve::create();
        const FCurve::Switch quiet(*image); // the observers of all curves need not hear of a curve in the making
        image->setName(m_curve.getName());
        Raw::setProperties(*image, Read::properties(m_curve));

        Segment* to = &*image->begin();
        const Segment* from = m_reversed ? &Read::lastSegment(m_curve) : &Read::firstSegment(m_curve);
        for (;;) {
            mapSegment(*from, *to);
            const Keyframe* key = m_reversed ? Read::leftKey(*from) : Read::rightKey(*from);
            if (!key) break;
            Keyframe mapped(*key);
            const Vector2D<double> position(m_x(key->getX()), m_y(key->getY()));
            if (!std::isfinite(position.x) || !std::isfinite(position.y)) return nullptr;
            mapped.set(position);
            to = Raw::appendKey(*image, mapped, nullptr);
            if (!to) return nullptr;
            from = m_reversed ? Read::leftSegment(*key) : Read::rightSegment(*key);
        }
        if (!m_isFinite) return nullptr;
        checkImages(kept);
        return image;
    }

private:
    // A pair of segments whose image has to be compared with the original once the new curve is complete.
    struct Check {
        const Segment* from;
        Segment* to;
    };

    void mapSegment(const Segment& from, Segment& to) {
        Raw::setProperties(to, Read::properties(from));
        const Tangent& in = *Read::inTangent(from);
        const Tangent& out = *Read::outTangent(from);
        mapTangent(m_reversed ? out : in, *Read::inTangent(to), from);
        mapTangent(m_reversed ? in : out, *Read::outTangent(to), from);
        Raw::setInterpolator(to, mapInterpolator(from, to));
    }

    void mapTangent(const Tangent& from, Tangent& to, const Segment& segment) {
        Raw::copyTangent(to, from);
        Vector2D<double> handle = from.get();
        const bool runsOn = !(Read::leftKey(segment) && Read::rightKey(segment))
                            && (from.isInTangent() ? Read::rightKey(segment) : Read::leftKey(segment));
        if (runsOn && std::abs(m_x.scale) != 1.0) {
            // Outside the keys a Bezier segment follows the handle's direction, and takes a handle shorter than 0.001
            // frames for one of that length. So the image may need another length for the same line.
            constexpr double least = Keyframe::getMinSeparation();
            const double side = from.isInTangent() ? -1.0 : 1.0;
            const double reach = std::max(side * handle.x, least);
            const double mapped = std::abs(m_x.scale) * reach;
            if (side * handle.x < least || mapped < least) {
                handle.x = side * reach;
                if (mapped < least) handle = (least / mapped) * handle;
            }
        }
        const Vector2D<double> mapped(m_x.scale * handle.x + 0.0,
                                      m_y.scale * handle.y + 0.0); // + 0.0: no negative zero
        m_isFinite = m_isFinite && std::isfinite(mapped.x) && std::isfinite(mapped.y);
        Raw::setHandle(to, mapped.x, mapped.y);
    }

    InterpolatorPtr mapInterpolator(const Segment& from, Segment& to) {
        InterpolatorPtr original = from.getInterpolator();
        if (!original) return m_y.offset == 0.0 ? nullptr : NumberInterp::create(m_y.offset);
        const KindRow& row = Private::KindOf(*original);
        const bool between = Read::leftKey(from) && Read::rightKey(from);
        const bool turns = m_reversed && between && row.reversed != row.kind;
        const bool moves = !(m_x.isIdentity() && m_y.isIdentity());
        switch (row.image) {
        case Image::Number:
            return mapNumber(static_cast<const NumberInterp&>(*original), original);
        case Image::Text:
            if (moves) m_checks.push_back({&from, &to});
            return moves ? textImage(original) : original;
        case Image::Compare:
            if (moves) m_checks.push_back({&from, &to});
            break;
        case Image::Same:
            break;
        }
        return turns ? Private::RowOf(row.reversed).create() : original;
    }

    InterpolatorPtr mapNumber(const NumberInterp& number, const InterpolatorPtr& original) {
        const double value = m_y(number.getNumber());
        if (value == number.getNumber() || !std::isfinite(value)) return original;
        InterpolatorPtr& image = m_images[original.get()];
        if (!image) image = NumberInterp::create(value);
        return image;
    }

    // What the rewritten text makes; the original where it makes nothing. One object serves all segments that share the
    // original.
    InterpolatorPtr textImage(const InterpolatorPtr& original) {
        InterpolatorPtr& image = m_images[original.get()];
        if (image) return image;
        image = original;
        if (m_y.scale == 0.0) {
            image = NumberInterp::create(m_y.offset);
            return image;
        }
        const std::string text = Private::FormulaImage(original->getExpression(), m_x, m_y);
        if (text.empty()) return image;
        InterpolatorPtr made = InterpolatorFactory::create(text.c_str());
        if (Private::KindOf(*made).kind != Kind::Unknown) image = std::move(made);
        return image;
    }

    void checkImages(std::vector<std::string>& kept) {
        for (const Check& check : m_checks) {
            const InterpolatorPtr original = check.from->getInterpolator();
            if (hasImage(check)) continue;
            const KindRow& row = Private::KindOf(*original);
            if (row.isHost()) {
                Raw::setInterpolator(*check.to, textImage(original));
                if (hasImage(check)) continue;
            }
            if (!row.create) Raw::setInterpolator(*check.to, original);
            std::string expression = original->getExpression();
            if (std::find(kept.begin(), kept.end(), expression) == kept.end()) kept.push_back(std::move(expression));
        }
    }

    bool hasImage(const Check& check) const {
        const Interpolator& original = *Read::interpolator(*check.from);
        const Interpolator& image = *Read::interpolator(*check.to);
        const auto places = PlacesIn(*check.from);
        std::array<double, 16> expected{};
        double scale = std::abs(m_y.offset);
        for (std::size_t i = 0; i < places.size(); ++i) {
            expected[i] = m_y(original.eval(places[i], *check.from));
            if (std::isfinite(expected[i])) scale = std::max(scale, std::abs(expected[i]));
        }
        // Loose, and with two misses allowed: rounding may decide on which side of a jump or pole a place lies.
        int misses = 0;
        for (std::size_t i = 0; i < places.size(); ++i) {
            const double value = image.eval(m_x(places[i]), *check.to);
            const bool same = value == expected[i] || (std::isnan(value) && std::isnan(expected[i]))
                              || std::abs(value - expected[i]) <= 1e-6 * scale;
            if (!same) ++misses;
        }
        return misses <= 2;
    }

    FCurve& m_curve;
    const AffineMap m_x;
    const AffineMap m_y;
    const bool m_reversed;
    bool m_isFinite = true; // the handles mapped so far
    std::unordered_map<const Interpolator*, InterpolatorPtr> m_images;
    std::vector<Check> m_checks;
};

} // namespace

TransformResult TransformCurve(FCurve& curve, const Vector2D<double>& scale, const Vector2D<double>& offset) {
    TransformResult result;
    const AffineMap x{scale.x, offset.x};
    const AffineMap y{scale.y, offset.y};
    if (NearZero(x.scale)) return result;
    for (const double number : {x.scale, x.offset, y.scale, y.offset})
        if (!std::isfinite(number)) return result;

    const auto image = Transformation(curve, x, y).run(result.kept);
    if (!image) return {};
    const FCurve::Switch quiet(*image);
    curve.swap(*image);
    result.transformed = true;
    return result;
}

TransformResult FlipCurve(FCurve& curve, FlipType type, double cx, double cy) {
    const auto value = static_cast<std::int32_t>(type);
    Vector2D<double> scale(1.0, 1.0);
    Vector2D<double> offset;
    if ((value & ~2) == 0) {
        scale.x = -1.0;
        offset.x = cx + cx;
    }
    if (value >= 1 && value < 3) {
        scale.y = -1.0;
        offset.y = cy + cy;
    }
    return TransformCurve(curve, scale, offset);
}

TransformResult FlipCurveAboutCentroid(FCurve& curve, FlipType type) {
    Rectangle<double> extents;
    GetInteriorExtents(curve, extents);
    const double cx = (extents.width + extents.x + extents.x) * 0.5;
    const double cy = (extents.height + extents.y + extents.y) * 0.5;
    return FlipCurve(curve, type, cx, cy);
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
