#include "tools/FitSolver.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {
namespace Private {

namespace {

struct Range {
    double low = HUGE_VAL;
    double high = -HUGE_VAL;
    double size() const noexcept { return high - low; }
};

Range RangeOf(const std::vector<FitSite>& sites) noexcept {
    Range range;
    for (const FitSite& site : sites) {
        range.low = std::min(range.low, site.y);
        range.high = std::max(range.high, site.y);
    }
    return range;
}

class Solver {
public:
    // Runs come out straight where an earlier fit has a piece inside them, and so hardly cost keys.
    Solver(const FitProblem& problem, const FitJudge& judge, double tolerance, const Fit* earlier)
        : m_problem(problem), m_judge(judge), m_tolerance(tolerance) {
        m_fit.sites = problem.sites;
        m_fit.keys = problem.keys;
        if (!problem.smooth)
            for (FitKey& key : m_fit.keys) key.corner = true;
        if (earlier) m_marked = markRuns(*earlier);
        const Range range = RangeOf(problem.sites);
        m_rounding = 1e-11 * range.size() + 0x1p-50 * std::max(std::abs(range.low), std::abs(range.high));
    }

    bool hasRuns() const noexcept { return m_marked; }

    Fit run() {
        std::vector<Deviation> verdicts; // of the pieces
        std::vector<bool> failed;
        for (int round = 0;; ++round) {
            setSlopes();
            const FitRules rules{std::max(0.0, m_tolerance * headroom() - m_rounding), m_problem.weighted};
            m_fit.pieces = round == 0 ? FitPieces(m_fit.sites, m_fit.keys, rules)
                                      : FitPiecesAgain(m_fit.sites, m_fit.keys, rules, m_fit.pieces, failed);
            const std::vector<Deviation> earlier = std::move(verdicts);
            verdicts.assign(m_fit.pieces.size(), {});
            failed.assign(m_fit.pieces.size(), false);
            m_newSites.clear();
            m_newKeys.clear();
            bool again = false;
            for (std::size_t i = 0; i < m_fit.pieces.size(); ++i) {
                const FitPiece& piece = m_fit.pieces[i];
                if (piece.kept) continue;
                if (piece.earlier < earlier.size()) {
                    verdicts[i] = earlier[piece.earlier];
                    continue;
                }
                verdicts[i] = m_judge.judge(piece.args, m_tolerance);
                if (verdicts[i].bound <= m_tolerance) continue;
                failed[i] = mend(piece, verdicts[i].at, round < roundsOfSites);
                again = again || failed[i];
                if (!failed[i]) verdicts[i] = m_judge.judge(piece.args, std::numeric_limits<double>::infinity());
            }
            if (!again) return finish(verdicts);
            addNew();
        }
    }

private:
    static constexpr int roundsOfSites = 5;

    Fit finish(const std::vector<Deviation>& verdicts) {
        m_fit.worst = {0.0, m_fit.sites.front().x};
        for (const Deviation& verdict : verdicts) {
            m_fit.within = m_fit.within && verdict.bound <= m_tolerance;
            if (verdict.bound > m_fit.worst.bound) m_fit.worst = verdict;
        }
        return std::move(m_fit);
    }

    // Between sites the curve may be a little farther off than at them.
    double headroom() const { return std::isnan(m_judge.valueAt(m_fit.sites.front().x)) ? 1.0 : 0.997; }

    bool mend(const FitPiece& piece, double at, bool bySite) {
        FitKey& key = m_fit.keys[piece.from];
        if (key.after == FitSpan::Straight) {
            key.after = FitSpan::Free;
            return true;
        }
        const double from = m_fit.siteOf(piece.from).x, to = m_fit.siteOf(piece.to).x;
        if (bySite && at > from && at < to && !isSite(at)) {
            const double y = m_judge.valueAt(at);
            if (std::isfinite(y)) {
                m_newSites.push_back({at, y});
                return true;
            }
        }
        if (piece.to - piece.from > 1) {
            for (std::size_t i = piece.from + 1; i < piece.to; ++i) m_fit.keys[i].must = true;
            return true;
        }
        if (key.canKeep) {
            key.after = FitSpan::Kept;
            key.must = m_fit.keys[piece.to].must = true;
            return true;
        }
        const double x = m_judge.splitAt(from, to);
        if (!(x > from && x < to)) return false;
        m_newKeys.push_back({x, m_judge.valueAt(x)});
        addBetween(from, x);
        addBetween(x, to);
        return true;
    }

    // Enough sites to settle both slopes of a piece: without them slopes drift from key to key within the tolerance.
    void addBetween(double from, double to) {
        for (const double part : {0.25, 0.5, 0.75}) {
            const double x = from + part * (to - from), y = m_judge.valueAt(x);
            if (x > from && x < to && std::isfinite(y) && !isSite(x)) m_newSites.push_back({x, y});
        }
    }

    bool isSite(double x) const {
        const auto it = std::lower_bound(m_fit.sites.begin(), m_fit.sites.end(), x,
                                         [](const FitSite& site, double value) { return site.x < value; });
        return it != m_fit.sites.end() && it->x == x;
    }

    void addNew() {
        if (m_newSites.empty() && m_newKeys.empty()) return;
        const auto byX = [](const FitSite& a, const FitSite& b) { return a.x < b.x; };
        std::vector<FitSite> further = m_newSites;
        for (const FitSite& site : m_newKeys)
            if (!isSite(site.x)) further.push_back(site);
        std::sort(further.begin(), further.end(), byX);
        std::vector<FitSite> sites;
        sites.reserve(m_fit.sites.size() + further.size());
        std::merge(m_fit.sites.begin(), m_fit.sites.end(), further.begin(), further.end(), std::back_inserter(sites),
                   byX);

        std::vector<FitKey> keys;
        std::vector<std::size_t> places; // where the keys are now
        std::size_t site = 0, newKey = 0;
        const auto find = [&](double x) {
            while (sites[site].x < x) ++site;
            return site;
        };
        for (const FitKey& key : m_fit.keys) {
            const double x = m_fit.sites[key.site].x;
            for (; newKey < m_newKeys.size() && m_newKeys[newKey].x < x; ++newKey) {
                FitKey added{find(m_newKeys[newKey].x)};
                added.must = true;
                added.corner = !m_problem.smooth;
                keys.push_back(added);
            }
            places.push_back(keys.size());
            keys.push_back(key);
            keys.back().site = find(x);
        }
        for (FitPiece& piece : m_fit.pieces) {
            piece.from = places[piece.from];
            piece.to = places[piece.to];
        }
        m_fit.sites = std::move(sites);
        m_fit.keys = std::move(keys);
        if (m_newKeys.empty()) return;
        for (std::size_t i = 0; i + 1 < m_fit.keys.size(); ++i)
            m_judge.describe(m_fit.keys[i], m_fit.siteOf(i).x, m_fit.siteOf(i + 1).x);
    }

    // Slopes within reason of those of the lines between sites: of the neighbouring ones at smooth keys, where sites
    // leave much free and a chain of slopes may swing up; of all at corners, where the sites between two keys decide.
    void setSlopes() {
        const auto& sites = m_fit.sites;
        double steepest = 0.0;
        for (std::size_t i = 1; i < sites.size(); ++i)
            steepest = std::max(steepest, std::abs((sites[i].y - sites[i - 1].y) / (sites[i].x - sites[i - 1].x)));
        for (FitKey& key : m_fit.keys) {
            const std::size_t i = key.site;
            double low = 0.0, high = 0.0, sum = 0.0, nearest = HUGE_VAL;
            const auto look = [&](const FitSite& a, const FitSite& b) {
                const double slope = (b.y - a.y) / (b.x - a.x);
                low = std::min(low, slope);
                high = std::max(high, slope);
                nearest = std::min(nearest, b.x - a.x);
            };
            if (i > 0) look(sites[i - 1], sites[i]);
            if (i + 1 < sites.size()) look(sites[i], sites[i + 1]);
            const FitSite& before = sites[i > 0 ? i - 1 : i];
            const FitSite& after = sites[i + 1 < sites.size() ? i + 1 : i];
            sum = (after.y - before.y) / (after.x - before.x);
            const double margin = 2.0 * std::min(m_tolerance, 1e100) / nearest;
            if (key.slopeIsFixed) continue;
            key.slope = sum;
            key.lowSlope = key.corner ? -16.0 * steepest : 8.0 * low - margin;
            key.highSlope = key.corner ? 16.0 * steepest : 8.0 * high + margin;
            if (key.canKeep) widen(key, key.keptOut);
            if (&key != &m_fit.keys.front() && (&key - 1)->canKeep) widen(key, (&key - 1)->keptIn);
        }
    }
    static void widen(FitKey& key, double slope) noexcept {
        key.lowSlope = std::min(key.lowSlope, slope);
        key.highSlope = std::max(key.highSlope, slope);
    }

    // Runs of sites on one straight line; returns whether there are any.
    bool markRuns(const Fit& earlier) {
        bool any = false;
        auto piece = earlier.pieces.begin();
        constexpr std::size_t fewest = 6; // keys
        const auto& sites = m_fit.sites;
        auto& keys = m_fit.keys;
        const auto goesOn = [&](std::size_t i, std::size_t from) { // from the sites before i to i + 1
            const FitSite &a = sites[i - 1], &b = sites[i], &c = sites[i + 1], &first = sites[from];
            if (a.y == b.y || b.y == c.y) return a.y == b.y && b.y == c.y;
            const auto isOnLine = [&](const FitSite& left, const FitSite& right) {
                const double y = left.y + (b.x - left.x) / (right.x - left.x) * (right.y - left.y);
                return std::abs(b.y - y) <= 0x1p-48 * (std::abs(left.y) + std::abs(right.y));
            };
            return isOnLine(a, c) && isOnLine(first, c);
        };
        std::size_t key = 0;
        for (std::size_t from = 0; from + 2 < sites.size();) {
            std::size_t to = from + 1;
            while (to + 1 < sites.size() && goesOn(to, from)) ++to;
            while (key < keys.size() && keys[key].site < from) ++key;
            std::size_t last = key;
            while (last + 1 < keys.size() && keys[last + 1].site <= to && keys[last].after == FitSpan::Free) ++last;
            while (piece != earlier.pieces.end() && earlier.siteOf(piece->from).x < sites[from].x) ++piece;
            const bool holdsPiece = piece != earlier.pieces.end() && earlier.siteOf(piece->to).x <= sites[to].x;
            if (last >= key + fewest - 1 && holdsPiece) {
                any = true;
                keys[key].must = keys[last].must = true;
                for (std::size_t i = key; i < last; ++i)
                    if (keys[i].must) keys[i].after = FitSpan::Straight;
            }
            from = to;
        }
        return any;
    }

    const FitProblem& m_problem;
    const FitJudge& m_judge;
    const double m_tolerance;
    double m_rounding = 0.0;
    bool m_marked = false;
    Fit m_fit;
    std::vector<FitSite> m_newSites, m_newKeys;
};

} // namespace

bool AreAligned(const BezierArgs& left, const BezierArgs& right) noexcept {
    if (!(left.inX < 0.0 && right.outX > 0.0)) return false;
    const double a = left.inY / left.inX, b = right.outY / right.outX;
    return std::abs(a - b) <= 1e-9 * (std::abs(a) + std::abs(b));
}

Fit SolveFit(const FitProblem& problem, const FitJudge& judge) {
    const auto solve = [&](double tolerance) {
        Fit fit = Solver(problem, judge, tolerance, nullptr).run();
        Solver withRuns(problem, judge, tolerance, &fit);
        if (!withRuns.hasRuns()) return fit;
        Fit other = withRuns.run();
        const bool better = other.pieces.size() <= fit.pieces.size() && other.within >= fit.within;
        return better ? std::move(other) : std::move(fit);
    };
    const auto tooMany = [&](const Fit& fit) { return fit.pieces.size() + 1 > problem.maxKeys; };
    Fit fit = solve(problem.tolerance);
    if (problem.weighted) { // the search is no exhaustive one: with less freedom it may happen to find less
        FitProblem thirds = problem;
        thirds.weighted = false;
        thirds.maxKeys = 0;
        Fit other = SolveFit(thirds, judge);
        if (other.within >= fit.within && other.pieces.size() < fit.pieces.size()) fit = std::move(other);
    }
    if (problem.maxKeys == 0 || !tooMany(fit)) return fit;

    double low = problem.tolerance;
    double high = std::max(low, RangeOf(problem.sites).size());
    fit = solve(high);
    low = std::max(low, 1e-9 * high);
    constexpr int steps = 16;
    for (int step = 0; step < steps && !tooMany(fit) && low < high; ++step) {
        const double middle = std::sqrt(low) * std::sqrt(high);
        Fit tried = solve(middle);
        if (tooMany(tried)) {
            low = middle;
        } else {
            high = middle;
            fit = std::move(tried);
        }
    }
    fit.within = fit.within && fit.worst.bound <= problem.tolerance;
    return fit;
}

} // namespace Private
} // namespace v19
} // namespace VEM_FN::FCurveLib
