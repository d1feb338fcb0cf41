#include "support/Basics.h"
#include "support/Museum.h"
#include "support/Random.h"
#include "support/Recorder.h"

#include <map>
#include <stdexcept>

using namespace Test;

namespace {

using V = Vector2D<double>;

// A line and a curve in pixels, compared by brute force.
class Comparison {
public:
    Comparison(const FCurve& curve, const CurveView& view, const ViewPolyline& line, double rounding, double looks)
        : m_view(view), m_rounding(rounding) {
        std::vector<double> xs;
        const double columns = std::ceil(view.width);
        for (double i = 0; i <= columns * looks; ++i) xs.push_back(view.toFrame(std::min(i / looks, view.width)));
        for (const Segment& segment : curve) {
            const auto [from, to] = SpanOf(segment);
            if (!(to > view.toFrame(-kQuarter) && from < view.toFrame(view.width + kQuarter))) continue;
            // Spikes in narrow segments are narrower than the looks.
            const int places = view.toPixelX(to) - view.toPixelX(from) < 2 ? 300 : 1;
            for (int i = 0; i < places; ++i) xs.push_back(from + (to - from) * i / places);
            xs.push_back(std::nextafter(to, -kInfinity));
        }
        std::sort(xs.begin(), xs.end());
        for (const double x : xs) m_samples.push_back({view.toPixelX(x), view.toPixelY(curve.eval(x))});
        for (const auto& stroke : line.strokes) {
            EXPECT_GE(stroke.count, 2U);
            for (std::size_t i = stroke.first; i + 1 < stroke.first + stroke.count; ++i)
                m_pieces.push_back({line.points[i], line.points[i + 1]});
        }
        for (const V& point : line.points) ++m_points[std::floor(point.x)];
    }

    void expectClose() {
        for (const auto& [column, count] : m_points) EXPECT_LE(count, 4) << "in column " << column;
        for (const V& sample : m_samples)
            if (isInside(sample) && !isOnLine(sample)) {
                ADD_FAILURE() << "the curve's point " << sample.x << ' ' << sample.y << " is missed";
                return;
            }
        for (const auto& [a, b] : m_pieces) {
            EXPECT_LE(a.x, b.x);
            for (const double t : {0.0, 0.2, 0.4, 0.6, 0.8, 1.0}) {
                const V point = a + t * (b - a);
                if (isInside(point) && !isOnCurve(point)) {
                    ADD_FAILURE() << "the line's point " << point.x << ' ' << point.y << " is not the curve's";
                    return;
                }
            }
        }
    }

private:
    static constexpr double kQuarter = 0.25;

    bool isInside(const V& p) const { return p.x >= 0 && p.x <= m_view.width && p.y > 0 && p.y < m_view.height; }

    // Whether four points are too few for what the curve does in a column within a quarter of a pixel, or all four are
    // there.
    bool isFull(const V& p) const { return isFull(std::floor(p.x - kQuarter)) || isFull(std::floor(p.x + kQuarter)); }
    bool isFull(double column) const {
        const auto found = m_points.find(column);
        if (found != m_points.end() && found->second == 4) return true;
        int turns = 0;
        double direction = 0;
        auto sample = std::lower_bound(m_samples.begin(), m_samples.end(), column - kQuarter,
                                       [](const V& a, double x) { return a.x < x; });
        for (; std::next(sample) < m_samples.end() && std::next(sample)->x <= column + 1 + kQuarter; ++sample) {
            const double step = std::next(sample)->y - sample->y;
            if (step * direction < 0) ++turns;
            if (step != 0) direction = step;
        }
        return turns >= 2;
    }

    bool isOnLine(const V& p) const {
        double low = kInfinity, high = -kInfinity;
        const double column = std::floor(p.x);
        auto piece = std::lower_bound(m_pieces.begin(), m_pieces.end(), column - kQuarter,
                                      [](const auto& a, double x) { return a.second.x < x; });
        for (; piece != m_pieces.end() && piece->first.x <= column + 1 + kQuarter; ++piece) {
            const auto& [a, b] = *piece;
            const V d = b - a;
            const double square = d.x * d.x + d.y * d.y;
            const double t = square > 0 ? std::clamp(((p.x - a.x) * d.x + (p.y - a.y) * d.y) / square, 0.0, 1.0) : 0.0;
            if (std::hypot(p.x - a.x - t * d.x, p.y - a.y - t * d.y) <= kQuarter + m_rounding) return true;
            low = std::min({low, a.y, b.y});
            high = std::max({high, a.y, b.y});
        }
        return isFull(p) && p.y >= low - kQuarter - m_rounding && p.y <= high + kQuarter + m_rounding;
    }

    bool isOnCurve(const V& p) const {
        const bool full = isFull(std::floor(p.x)) || isFull(std::floor(p.x) - 1);
        const double from = (full ? std::floor(p.x) - 1 : p.x) - kQuarter;
        const double to = (full ? std::floor(p.x) + 1 : p.x) + kQuarter;
        double low = kInfinity, high = -kInfinity;
        auto sample = std::lower_bound(m_samples.begin(), m_samples.end(), from - 1e-6,
                                       [](const V& a, double x) { return a.x < x; });
        for (; sample != m_samples.end() && sample->x <= to + 1e-6; ++sample) {
            if (std::isnan(sample->y)) continue;
            low = std::min(low, sample->y);
            high = std::max(high, sample->y);
        }
        return p.y >= low - kQuarter - m_rounding && p.y <= high + kQuarter + m_rounding;
    }

    const CurveView& m_view;
    double m_rounding;
    std::vector<V> m_samples;
    std::vector<std::pair<V, V>> m_pieces;
    std::map<double, int> m_points; // in each column
};

double Largest(const FCurve& curve) {
    double largest = 1e-300;
    for (const Segment& segment : curve)
        if (const auto key = segment.getLeftKey()) largest = std::max(largest, std::abs(key->getY()));
    return largest;
}

// A view of some place of the curve, or of one far away, at a scale at which its values still have digits.
CurveView RandomView(const FCurve& curve, Random& random, double widest) {
    double left = -5, right = 5;
    if (curve.size() > 2) {
        left = curve.begin()->getRightKey()->getX();
        right = std::prev(curve.end())->getLeftKey()->getX();
    }
    const double span = (right - left) * std::pow(10.0, random.between(-3, 2));
    const double centre =
        left + (right - left) * (random.below(4) == 0 ? random.between(-20, 20) : random.between(-0.2, 1.2));
    CurveView view;
    view.width = 40 + random.below(300);
    view.height = 40 + random.below(300);
    const double half = std::min(span, widest * view.width) / 2;
    view.left = centre - half;
    view.right = centre + half;
    double low = curve.eval(centre), high = low;
    for (int i = 0; i <= 50; ++i) {
        const double y = curve.eval(view.left + (view.right - view.left) * i / 50);
        low = std::fmin(low, y);
        high = std::fmax(high, y);
    }
    if (!std::isfinite(low)) low = high = 0;
    const double height = std::max((high - low) * std::pow(10.0, random.between(-2, 1)), 1e-5 * Largest(curve));
    const double middle = random.between(low, high) + (random.below(8) == 0 ? 3 * height : 0);
    view.bottom = middle - height / 2;
    view.top = middle + height / 2;
    return view;
}

void ExpectShown(const FCurve& curve, const CurveView& view, const ViewPolyline& line, double tolerance = 1e-11,
                 double looksPerPixel = 64) {
    Comparison(curve, view, line, 0.01 + tolerance * Largest(curve) * view.pixelsPerValue(), looksPerPixel)
        .expectClose();
}

// Keys of every kind, near one another and far.
std::shared_ptr<FCurve> CurveOfManyKinds(int keys, Random& random, double closest = 0.01, bool formulas = true) {
    static const char* const kinds[] = {"bezier()", "bezier()", "bezier()", "linear()",        "constant()", "spline()",
                                        "ease()",   "match()",  "1.5",      "constant_next()", "sin(x)"};
    auto curve = FCurve::create();
    double x = 0;
    for (int i = 0; i < keys; ++i) {
        curve->insertSegment(*Keyframe::create(x, random.between(-3, 3)),
                             InterpolatorFactory::create(kinds[random.below(formulas ? 11 : 10)]));
        x += closest * std::pow(10.0, random.between(0, 2.5));
    }
    for (Segment& segment : *curve)
        if (random.coin()) segment.getOutTangent()->set(random.between(0, 2), random.between(-9, 9));
    return curve;
}

class LineOfEveryExhibit : public testing::TestWithParam<Exhibit> {};
INSTANTIATE_TEST_SUITE_P(Museum, LineOfEveryExhibit, testing::ValuesIn(Museum()), ExhibitName());

TEST_P(LineOfEveryExhibit, IsTheCurveInAnyView) {
    const auto curve = GetParam().make();
    const std::string name = GetParam().name;
    // Formulas are not looked at more often than 16 times a pixel.
    const double widest = name.rfind("Formulas", 0) == 0 || name == "ManyKinds" ? 1.6 : kInfinity;
    CurveOverview overview(curve);
    Random random(1);
    ViewPolyline line;
    for (int i = 0; i < 12; ++i) {
        const CurveView view = RandomView(*curve, random, widest);
        SCOPED_TRACE(testing::Message() << i << ": frames " << view.left << " to " << view.right << ", values "
                                        << view.bottom << " to " << view.top << ", " << view.width << " x "
                                        << view.height);
        ViewLine(*curve, view, line);
        ExpectShown(*curve, view, line, GetParam().tolerance);
        ViewLine(overview, view, line);
        ExpectShown(*curve, view, line, GetParam().tolerance);
    }
}

TEST(ViewLine, OfManyKeysIsTheCurve) {
    for (unsigned seed = 32; seed < 40; ++seed) {
        Random random(seed);
        const int keys = seed % 2 == 0 ? 300 : 5000;
        const auto curve = CurveOfManyKinds(keys, random);
        CurveOverview overview(curve);
        ViewPolyline line;
        for (int i = 0; i < 6; ++i) {
            const CurveView view = RandomView(*curve, random, 1.6);
            SCOPED_TRACE(testing::Message()
                         << "seed " << seed << ", " << keys << " keys, frames " << view.left << " to " << view.right);
            ViewLine(*curve, view, line);
            ExpectShown(*curve, view, line);
            ViewLine(overview, view, line);
            ExpectShown(*curve, view, line);
        }
    }
}

// Repetitions narrower than a pixel and of many keys.
TEST(ViewLine, OfRepetitionsIsTheCurve) {
    Random random(3);
    for (const char* end : {"cycle()", "cycle_offset()", "mirror()"}) {
        for (const double span : {30.0, 2000.0}) {
            auto curve = CurveOfManyKinds(span > 100 ? 5 : 50, random, 2.0, span < 100);
            std::prev(curve->end())->setInterpolator(InterpolatorFactory::create(end));
            curve->begin()->setInterpolator(InterpolatorFactory::create(end));
            const double first = curve->begin()->getRightKey()->getX();
            const CurveView view{first - span / 3, first + span, -4, 7, 100, 200};
            ViewPolyline line;
            ViewLine(*curve, view, line);
            SCOPED_TRACE(testing::Message() << end << ' ' << span);
            ExpectShown(*curve, view, line, 1e-11, 64 + 100 * span / view.width);
        }
    }
}

TEST(ViewLine, HasGapsWhereTheCurveJumps) {
    const struct {
        const char* between;
        std::vector<double> jumps; // in frames
        std::size_t strokes;       // with those before and after the keys
    } rows[] = {{"constant()", {30, 60}, 4},
                {"constant_next()", {0, 30}, 4},
                {"floor(x / 7)", {7, 14, 21, 28, 35, 42, 49, 56}, 11},
                {"linear()", {}, 3},
                {"bezier()", {}, 3},
                {"1 / (x - 30.4)", {}, 4}};
    for (const auto& row : rows) {
        const auto curve = CurveThrough({{0, 0}, {30, 4}, {60, 8}}, InterpolatorFactory::create(row.between));
        std::prev(curve->end())->setInterpolator(InterpolatorFactory::create("constant()"));
        const CurveView view{-1, 61, -1, 10, 620, 400};
        ViewPolyline line;
        ViewLine(*curve, view, line);
        std::vector<double> jumps;
        for (const auto& jump : line.jumps) {
            jumps.push_back(std::round(view.toFrame(jump.x)));
            const double x = view.toFrame(jump.x);
            EXPECT_NEAR(view.toValue(jump.from), curve->eval(x - 1e-5), 0.01) << row.between;
            EXPECT_NEAR(view.toValue(jump.to), curve->eval(x + 1e-5), 0.01) << row.between;
        }
        if (row.between[0] != '1') {
            EXPECT_EQ(jumps, row.jumps) << row.between;
        }
        EXPECT_EQ(line.strokes.size(), row.strokes) << row.between;
    }
}

// Two points for a jump in a column leave two for the bend before it: nearly as close as where there is no jump.
TEST(ViewLine, StaysCloseWhereAGapCloses) {
    ViewPolyline line;
    for (const double bend : {2.0, 8.0, 16.0, 30.0}) {
        const auto curve = CurveThrough({{0, 0}, {8.25, 70}}, Bezier::create());
        std::prev(curve->end())->setInterpolator(InterpolatorFactory::create("cycle()"));
        Keys(*curve)[0].getOutTangent().set(2.75, 4);
        Keys(*curve)[1].getInTangent().set(-2.75, bend);
        for (double left = 100; left < 101; left += 0.01) {
            const CurveView view{left, left + 30, -20, 80, 30, 100};
            ViewLine(*curve, view, line);
            double worst = 0;
            for (double x = 0; x < view.width; x += 0.05) {
                const double y = view.toPixelY(curve->eval(view.toFrame(x)));
                double nearest = kInfinity;
                for (std::size_t i = 1; i < line.points.size(); ++i) {
                    const V a = line.points[i - 1], d = line.points[i] - a;
                    const double t =
                        std::clamp(((x - a.x) * d.x + (y - a.y) * d.y) / (d.x * d.x + d.y * d.y), 0.0, 1.0);
                    nearest = std::min(nearest, std::hypot(x - a.x - t * d.x, y - a.y - t * d.y));
                }
                worst = std::max(worst, nearest);
            }
            ASSERT_LE(worst, 0.26) << "bend " << bend << " from frame " << left;
        }
    }
}

TEST(ViewLine, TellsWhichStretchIsWhich) {
    auto curve = MakeCurve({{0, 0, {}, {}, "linear()"}, {10, 5, {}, {}, "dance(("}, {20, 0, {}, {}, "constant()"}});
    ViewPolyline line;
    ViewLine(*curve, {-10, 30, -10, 10, 400, 100}, line);
    std::vector<std::pair<int, double>> strokes;
    for (const auto& stroke : line.strokes) strokes.emplace_back(stroke.place, line.points[stroke.first].x);
    EXPECT_THAT(strokes, ElementsAre(std::pair(int(ViewPolyline::BeforeKeys), 0.0),
                                     std::pair(int(ViewPolyline::BetweenKeys), 100.0),
                                     std::pair(int(ViewPolyline::Unknown), 200.0),
                                     std::pair(int(ViewPolyline::AfterKeys), 300.0)));
}

TEST(ViewLine, IsEmptyInViewsThatShowNothing) {
    const auto curve = MakeCurve({{0, 0}, {10, 5}});
    const CurveView good{0, 10, 0, 5, 100, 100};
    EXPECT_TRUE(good.isValid());
    ViewPolyline line;
    const auto strokes = [&](const std::function<void(CurveView&)>& spoil) {
        CurveView view = good;
        spoil(view);
        ViewLine(*curve, view, line);
        return line.strokes.size() + line.points.size() + line.jumps.size();
    };
    EXPECT_GT(strokes([](CurveView&) {}), 0U);
    for (const double bad : {kNaN, kInfinity, -kInfinity, -1.0, 0.0}) {
        EXPECT_EQ(strokes([=](CurveView& view) { view.width = bad; }), 0U) << bad;
        EXPECT_EQ(strokes([=](CurveView& view) { view.top = bad; }), 0U) << bad;
        EXPECT_EQ(strokes([=](CurveView& view) { view.right = bad; }), 0U) << bad;
    }
    EXPECT_EQ(strokes([](CurveView& view) { view.height = 1e300; }), 0U);
    EXPECT_EQ(strokes([](CurveView& view) { view.bottom = 100, view.top = 200; }), 0U);
    CurveView wide{-1e308, 1e307, -1, 6, 100, 100};
    ViewLine(*curve, wide, line);
    EXPECT_GE(line.points.size(), 2U);
}

// --- overviews -------------------------------------------------------------------------------------------------------

struct Overviews : testing::Test, EditObserver {
    Random random{7};
    std::shared_ptr<FCurve> curve = CurveOfManyKinds(2000, random);
    ObservedOverview observed{curve};
    CurveOverview fed{curve};
    CurveOverview summarised{curve};
    std::shared_ptr<FCurveContainer> curves = FCurveContainer::create();
    ViewPolyline line, expected;

    Keyframe& key() {
        return *std::next(curve->begin(), 1 + random.below(static_cast<int>(curve->size()) - 2))->getLeftKey();
    }

    Overviews() {
        curves->addCurve(curve);
        EditGroup::subscribe(*curves, *this);
    }
    void editStepped(const EditSummary& edit) override {
        for (const CurveEdit& one : edit.curves) summarised.invalidate(one.parts.start, one.parts.end);
    }

    void expectCurrent(const char* edit) {
        const CurveView view = RandomView(*curve, random, 1.6);
        CurveOverview fresh(curve);
        ViewLine(fresh, view, expected);
        for (CurveOverview* overview : {&fed, &summarised, static_cast<CurveOverview*>(&observed)}) {
            ViewLine(*overview, view, line);
            ASSERT_EQ(line.points, expected.points) << edit;
        }
        double low = 1, high = -1, freshLow = 1, freshHigh = -1;
        EXPECT_EQ(observed.getExtents(view.left, view.right, low, high),
                  fresh.getExtents(view.right, view.left, freshLow, freshHigh));
        EXPECT_EQ(V(low, high), V(freshLow, freshHigh)) << edit;
    }
};

TEST_F(Overviews, FollowEveryEdit) {
    const auto feed = [this](double a, double b) { fed.invalidate(std::fmin(a, b), std::fmax(a, b)); };
    static const char* const kinds[] = {"bezier()", "spline()", "match()", "linear()", "cycle() + x"};
    for (int step = 0; step < 400; ++step) {
        EditGroup group(*curves);
        const char* edit = random.act({
            {"move a key",
             [&] {
                 Keyframe& moved = key();
                 const double from = moved.getX();
                 moved.set(from + random.between(-2, 2), random.between(-5, 5));
                 feed(from, moved.getX());
             }},
            {"turn a handle",
             [&] {
                 Keyframe& at = key();
                 at.getOutTangent()->setType(Tangent::Fixed);
                 at.getOutTangent()->set(random.between(0, 3), random.between(-9, 9));
                 feed(at.getX(), at.getX());
             }},
            {"insert keys",
             [&] {
                 const double x = key().getX() + random.between(0.01, 1);
                 for (int i = random.below(400); i >= 0; --i)
                     curve->insertSegment(*Keyframe::create(x + i * 0.003, random.between(-3, 3)), Bezier::create());
                 feed(x, x + 1.2);
             }},
            {"remove keys",
             [&] {
                 auto position = curve->findSegment(key().getX());
                 const double from = position->getLeftKey()->getX();
                 double to = from;
                 for (int i = random.below(400); i >= 0 && position != curve->end() && curve->size() > 500; --i) {
                     to = position->getLeftKey()->getX();
                     position = curve->removeSegment(position);
                 }
                 feed(from, to);
             }},
            {"set an interpolator",
             [&] {
                 Keyframe& at = key();
                 at.getRightSegment()->setInterpolator(InterpolatorFactory::create(random.oneOf(kinds)));
                 feed(at.getX(), at.getX());
             }},
            {"set the first interpolator",
             [&] {
                 curve->begin()->setInterpolator(InterpolatorFactory::create(random.oneOf(kinds)));
                 feed(-1e9, -1e9);
             }},
            {"select a key", [&] { key().setProperty("fc_sel", random.coin() ? "1" : ""); }},
            {"assign",
             [&] {
                 if (random.below(10) != 0) return;
                 *curve = *CurveOfManyKinds(1000 + random.below(1000), random);
                 fed.invalidate(kNaN, 0);
             }},
        });
        group.end();
        expectCurrent(edit);
        if (HasFatalFailure()) return;
    }
}

// After an exception nothing is taken for known.
TEST_F(Overviews, OutliveAHostThatThrows) {
    struct Faulty final : Interpolator {
        mutable bool fails = true;
        double eval(double x, const Segment&) const override {
            if (fails) throw std::runtime_error("a host's");
            return x;
        }
        std::shared_ptr<Interpolator> clone() override { return nullptr; }
    };
    const auto faulty = std::make_shared<Faulty>();
    double low = 0, high = 0;
    expectCurrent("nothing");
    key().getRightSegment()->setInterpolator(faulty);
    fed.invalidate();
    summarised.invalidate();
    EXPECT_THROW(observed.getExtents(0, 1, low, high), std::runtime_error);
    EXPECT_THROW(fed.getExtents(0, 1, low, high), std::runtime_error);
    faulty->fails = false;
    expectCurrent("a host's interpolator");
}

// An overview that nobody told of changes is wrong until it is told.
TEST_F(Overviews, OutliveAHostThatTellsNothing) {
    for (const int keys : {0, 1, 2, 50, 3000}) {
        ViewLine(fed, {-1e4, 1e4, -5, 5, 500, 100}, line);
        *curve = *CurveOfManyKinds(keys, random);
        for (const double half : {1e4, 10.0}) ViewLine(fed, {-half, half, -5, 5, 500, 100}, line);
        fed.invalidate(1, 2);
        ViewLine(fed, {-1e4, 1e4, -5, 5, 500, 100}, line);
        fed.invalidate();
        summarised.invalidate();
        if (keys > 1) expectCurrent("another curve");
    }
}

TEST(CurveOverview, OfFewKeysHasTheirExtents) {
    double low = 1, high = -1;
    EXPECT_FALSE(CurveOverview(nullptr).getExtents(0, 1, low, high));
    EXPECT_FALSE(CurveOverview(MakeCurve({})).getExtents(0, 1, low, high));
    EXPECT_TRUE(CurveOverview(MakeCurve({{2, 5}})).getExtents(7, 9, low, high));
    EXPECT_EQ(V(low, high), V(5, 5));
    EXPECT_TRUE(CurveOverview(MakeCurve({{0, 0, {}, {}, "linear()"}, {10, 10}})).getExtents(8, -3, low, high));
    EXPECT_NEAR(low, 0, 1e-12);
    EXPECT_NEAR(high, 8, 1e-12);
}

} // namespace
