#include "support/Basics.h"
#include "support/Museum.h"
#include "support/Random.h"

using namespace Test;

namespace {

using V = Vector2D<double>;

double Distance(const V& a, const V& b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

// Everything that can be picked, with its distance from a point, found by walking all parts.
struct Naive {
    struct Found {
        HitRecord record;
        double distance;
        V at;
    };
    std::vector<Found> keys, handles;
    std::vector<std::pair<FCurve*, double>> lines;

    Naive(FCurveContainer& curves, const CurveView& view, const V& point, const PickOptions& options) {
        for (FCurve& curve : curves) {
            if (!IsVisible(curve)) continue;
            std::vector<std::shared_ptr<Keyframe>> all;
            for (Segment& segment : curve)
                if (segment.getLeftKey()) all.push_back(segment.getLeftKey());
            const auto isInView = [&](const auto& key) {
                return key->getX() >= view.left && key->getX() <= view.right;
            };
            const auto inView = std::count_if(all.begin(), all.end(), isInView);
            for (std::size_t i = 0; i < all.size(); ++i) {
                const V at = view.toPixel(all[i]->get());
                keys.push_back({HitRecord(all[i]), Distance(at, point), at});
                if (static_cast<double>(inView - 1) * options.handleSpacing > view.width) continue;
                const bool isNextToView =
                    (i + 1 < all.size() && all[i]->getX() < view.left && all[i + 1]->getX() > view.left)
                    || (i > 0 && all[i]->getX() > view.right && all[i - 1]->getX() <= view.right)
                    || (i + 1 == all.size() && all[i]->getX() < view.left) || (i == 0 && all[i]->getX() > view.right);
                if (!isInView(all[i]) && !isNextToView) continue;
                const auto add = [&](const auto& segment, const auto& tangent) {
                    if (!segment->getInterpolator() || !segment->getInterpolator()->usesTangents()) return;
                    const double scale = GetTangentScale(curve);
                    const V tip = view.toPixel(
                        {all[i]->getX() + scale * tangent->getX(), all[i]->getY() + scale * tangent->getY()});
                    handles.push_back({HitRecord(tangent, true), Distance(tip, point), tip});
                };
                add(all[i]->getLeftSegment(), all[i]->getInTangent());
                add(all[i]->getRightSegment(), all[i]->getOutTangent());
            }
            double nearest = kInfinity;
            for (double x = point.x - 12; x <= point.x + 12; x += 1.0 / 256) {
                const V at{x, view.toPixelY(curve.eval(view.toFrame(x)))};
                if (std::isfinite(at.y)) nearest = std::min(nearest, Distance(at, point));
            }
            lines.emplace_back(&curve, nearest);
        }
    }
};

double DistanceOf(const std::vector<Naive::Found>& all, const HitRecord& record) {
    for (const Naive::Found& found : all)
        if (found.record == record) return found.distance;
    return kInfinity;
}

std::shared_ptr<FCurveContainer> RandomCurves(Random& random) {
    static const char* const kinds[] = {"bezier()", "bezier()", "spline()", "linear()"};
    auto curves = FCurveContainer::create();
    for (int i = 1 + random.below(4); i > 0; --i) {
        auto curve = FCurve::create();
        double x = random.between(-20, 20);
        for (int k = random.below(random.coin() ? 6 : 80); k > 0; --k) {
            curve->insertSegment(*Keyframe::create(x, random.between(-10, 10)),
                                 InterpolatorFactory::create(random.oneOf(kinds)));
            x += random.between(0.5, 4);
        }
        curve->begin()->setInterpolator(InterpolatorFactory::create(random.oneOf(kinds)));
        for (Segment& segment : *curve) {
            if (random.coin()) segment.getOutTangent()->set(random.between(0, 3), random.between(-3, 3));
            if (random.coin()) segment.getInTangent()->set(random.between(-3, 0), random.between(-3, 3));
        }
        SetVisible(*curve, random.below(5) != 0);
        if (random.coin()) SetTangentScale(*curve, random.between(0.2, 3));
        curves->addCurve(curve);
    }
    return curves;
}

CurveView RandomView(Random& random) {
    const double left = random.between(-40, 60);
    const double bottom = random.between(-12, 5);
    return {left, left + std::pow(10.0, random.between(0, 2)), bottom, bottom + random.between(2, 20), 400, 300};
}

TEST(Pick, FindsWhatANaiveSearchFinds) {
    Random random(1);
    int found[6] = {};
    for (int round = 0; round < 400; ++round) {
        const auto curves = RandomCurves(random);
        const CurveView view = RandomView(random);
        PickOptions options;
        options.parts = static_cast<std::uint32_t>(random.below(16));
        options.handleSpacing = random.coin() ? 0 : 20;
        // Near something, mostly.
        V point{random.between(0, 400), random.between(0, 300)};
        const Naive all(*curves, view, point, options);
        const auto& targets = random.coin() ? all.keys : all.handles;
        if (!targets.empty() && random.below(4) != 0)
            point = targets[static_cast<std::size_t>(random.below(static_cast<int>(targets.size())))].at;
        point.x += random.between(-5, 5);
        const Naive naive(*curves, view, point, options);
        const double radius = random.between(1, 10);

        const HitRecord hit = Pick(*curves, view, point, radius, options);
        ++found[hit.getType()];
        EXPECT_EQ(Pick(std::as_const(*curves), view, point, radius, options), ConstHitRecord(hit));
        const auto nearest = [](const auto& those) {
            double distance = kInfinity;
            for (const auto& one : those) distance = std::min(distance, one.distance);
            return distance;
        };
        const double key = options.parts & PickOptions::Keys ? nearest(naive.keys) : kInfinity;
        const double handle = options.parts & PickOptions::Handles ? nearest(naive.handles) : kInfinity;
        SCOPED_TRACE(testing::Message() << "round " << round << ", key at " << key << ", handle at " << handle
                                        << ", radius " << radius);
        if (key <= radius) {
            EXPECT_NEAR(DistanceOf(naive.keys, hit), key, 1e-9);
        } else if (handle <= radius) {
            EXPECT_NEAR(DistanceOf(naive.handles, hit), handle, 1e-9);
        } else if (options.parts >= PickOptions::Segments) {
            double line = kInfinity, own = kInfinity;
            for (const auto& [curve, distance] : naive.lines) {
                line = std::min(line, distance);
                if (curve == hit.getCurve().get()) own = distance;
            }
            if (std::abs(line - radius) > 0.3) {
                EXPECT_EQ(hit.getType() != HitRecord::NONE, line < radius);
            }
            if (hit.getType() != HitRecord::NONE) {
                EXPECT_LT(own, line + 0.6);
                EXPECT_EQ(hit.getType(), options.parts & PickOptions::Segments ? HitRecord::SEGMENT : HitRecord::CURVE);
            }
        } else {
            EXPECT_EQ(hit.getType(), HitRecord::NONE);
        }
    }
    for (const int type :
         {HitRecord::NONE, HitRecord::CURVE, HitRecord::SEGMENT, HitRecord::KEYFRAME, HitRecord::TANGENT})
        EXPECT_GT(found[type], 20) << type;
}

TEST(Pick, RectangleFindsWhatANaiveSearchFinds) {
    Random random(2);
    std::size_t found = 0;
    for (int round = 0; round < 200; ++round) {
        const auto curves = RandomCurves(random);
        const CurveView view = RandomView(random);
        PickOptions options;
        options.parts = static_cast<std::uint32_t>(random.below(16));
        options.handleSpacing = random.coin() ? 0 : 20;
        const Rectangle<double> box{random.between(0, 400), random.between(0, 300), random.between(-200, 200),
                                    random.between(-200, 200)};
        const Naive naive(*curves, view, {}, options);
        const auto holds = [&](const V& p, double margin) {
            return p.x >= std::min(box.x, box.x + box.width) - margin
                   && p.x <= std::max(box.x, box.x + box.width) + margin
                   && p.y >= std::min(box.y, box.y + box.height) - margin
                   && p.y <= std::max(box.y, box.y + box.height) + margin;
        };
        std::vector<HitRecord> hits, expected;
        PickRectangle(*curves, view, box, hits, options);
        found += hits.size();
        for (auto it = HitRecordIterator::begin(*curves); it != HitRecordIterator::end(*curves); ++it) {
            const HitRecord& record = *it;
            const auto isIn = [&](const auto& those, PickOptions::Part part) {
                return (options.parts & part) != 0 && std::any_of(those.begin(), those.end(), [&](const auto& one) {
                           return one.record == record && holds(one.at, 0);
                       });
            };
            const auto lineIsIn = [&](double margin) {
                FCurve& curve = *record.getCurve();
                if (!IsVisible(curve)) return false;
                for (double x = std::min(box.x, box.x + box.width) - 1; x <= std::max(box.x, box.x + box.width) + 1;
                     x += 1.0 / 32) {
                    const double frame = view.toFrame(x);
                    if (record.getType() == HitRecord::SEGMENT
                        && &*curve.findSegment(frame) != record.getSegment().get())
                        continue;
                    if (holds({x, view.toPixelY(curve.eval(frame))}, margin)) return true;
                }
                return false;
            };
            switch (record.getType()) {
            case HitRecord::KEYFRAME:
                if (isIn(naive.keys, PickOptions::Keys)) expected.push_back(record);
                break;
            case HitRecord::TANGENT:
                if (isIn(naive.handles, PickOptions::Handles)) expected.push_back(record);
                break;
            default: { // lines are as exact as a quarter of a pixel
                if ((options.parts
                     & (record.getType() == HitRecord::CURVE ? PickOptions::Curves : PickOptions::Segments))
                    == 0)
                    break;
                const bool isHit = std::find(hits.begin(), hits.end(), record) != hits.end();
                if (isHit ? lineIsIn(0.6) : lineIsIn(-0.6)) {
                    EXPECT_TRUE(isHit);
                    if (isHit) expected.push_back(record);
                }
            }
            }
        }
        EXPECT_EQ(hits, expected) << round;
    }
    EXPECT_GT(found, 100U);
}

TEST(Pick, PrefersTheCurveOnTop) {
    auto curves = FCurveContainer::create();
    for (int i = 0; i < 3; ++i) curves->addCurve(MakeCurve({{0, 0}, {10, 0}}));
    SetVisible(*std::prev(curves->end()), false);
    const CurveView view{-1, 11, -1, 1, 120, 100};
    const FCurve& top = *std::next(curves->begin());
    EXPECT_EQ(Pick(*curves, view, {11, 51}, 5).getKeyframe(), (*std::next(top.begin())).getLeftKey());
    EXPECT_EQ(Pick(*curves, view, {60, 52}, 5).getCurve().get(), &top);
    EXPECT_EQ(Pick(*curves, view, {60, 60}, 5).getType(), HitRecord::NONE);
}

TEST(Pick, FindsNothingWhereNothingCanBeSeen) {
    auto curves = FCurveContainer::create();
    curves->addCurve(MakeCurve({{0, 0}, {10, 0}}));
    const CurveView view{-1, 11, -1, 1, 120, 100};
    std::vector<HitRecord> hits;
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        EXPECT_EQ(Pick(*curves, view, {bad, 50}, 5).getType(), HitRecord::NONE);
        EXPECT_EQ(Pick(*curves, view, {10, bad}, 5).getType(), HitRecord::NONE);
        EXPECT_EQ(Pick(*curves, view, {10, 50}, bad).getType(), HitRecord::NONE);
        EXPECT_EQ(Pick(*curves, {0, bad, 0, 1, 100, 100}, {10, 50}, 5).getType(), HitRecord::NONE);
        PickRectangle(*curves, view, {0, 0, bad, 100}, hits);
        EXPECT_THAT(hits, IsEmpty());
    }
    EXPECT_EQ(Pick(*curves, view, {10, 50}, -1).getType(), HitRecord::NONE);
    EXPECT_EQ(Pick(*curves, view, {10, 50}, 0).getType(), HitRecord::KEYFRAME);
    PickRectangle(*curves, view, {120, 0, -120, 100}, hits);
    EXPECT_EQ(hits.size(), 2U);
}

} // namespace
