#include "playback/Compile.h"

#include "interp/Formula.h"
#include "interp/Kinds.h"
#include "model/NotFinite.h"
#include "model/Raw.h"
#include "model/Read.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <unordered_map>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Private {

namespace {

// --- pieces ----------------------------------------------------------------------------------------------------------

Piece StraightPiece(double x0, double y0, double x3, double y3) noexcept {
    const double third = (y3 - y0) / 3.0;
    return {{x0, y0, x3, y3, 0.0, third, 1.0, -third}};
}

// One value between two keys.
Piece LevelPiece(const Keyframe& left, const Keyframe& right, double y) noexcept {
    if (!std::isfinite(y)) return FreePiece(FreeKind::Constant, left.getX(), y, right.getX());
    return StraightPiece(left.getX(), y, right.getX(), y);
}

// With keys 1 apart, x'(t) = 3 A t^2 + 2 B t + C as in Kernel-inl.h. Where it nearly vanishes between the keys, the
// rounding of x moves t so far that the value loses digits: by up to 9 ranges * 2^-50 / x'. At the keys themselves it
// may vanish, as x is measured from there.
bool IsSteep(const BezierArgs& args) noexcept {
    constexpr double slowest = 1.0 / 128.0;
    constexpr double narrowest = 1e-6; // in frames: narrower, and a key's tolerance might reach past the middle
    constexpr double widest = 1e90;    // wider, and its cube might overflow
    const double width = args.x3 - args.x0;
    if (!(width >= narrowest && width <= widest)) return true;
    const double out = args.outX / width;
    const double in = -args.inX / width;
    const double A = 3.0 * (out + in) - 2.0;
    const double B = 3.0 - 3.0 * in - 6.0 * out;
    const double C = 3.0 * out;
    return A > 0.0 && B < 0.0 && -B < 3.0 * A && C - B * B / (3.0 * A) < slowest;
}

bool IsEven(const BezierArgs& args) noexcept {
    const double third = (args.x3 - args.x0) / 3.0;
    const double off = 0x1p-51 * third;
    return std::abs(args.outX - third) <= off && std::abs(-args.inX - third) <= off;
}

Piece BezierPiece(const BezierArgs& args) noexcept {
    Piece piece{args};
    if (IsSteep(args)) {
        piece.outX = -std::max(args.outX, std::numeric_limits<double>::denorm_min());
    } else if (IsEven(args)) {
        piece.outX = GetEpsilon();
        piece.inX = 1.0;
    }
    return piece;
}

// --- what formulas and hosts' interpolators are asked with -----------------------------------------------------------

// A part of a formula, which has one value for an x whatever the segment.
class PlaybackLeaf final : public Interpolator {
public:
    PlaybackLeaf(const PlaybackCurve& curve, const Piece& piece) : m_curve(&curve), m_piece(piece) {}

    double eval(double x, const Segment&) const override { return EvalPiece(*m_curve, m_piece, x); }
    double getFirstDerivative(double x, const Segment&) const override {
        return DifferentiatePiece(*m_curve, m_piece, x, 1);
    }
    double getSecondDerivative(double x, const Segment&) const override {
        return DifferentiatePiece(*m_curve, m_piece, x, 2);
    }
    std::shared_ptr<Interpolator> clone() override { return std::make_shared<PlaybackLeaf>(*this); }

private:
    const PlaybackCurve* m_curve;
    Piece m_piece;
};

template<class Part>
void CopyProperties(const Part& from, Part& to) {
    for (auto property = from.beginProperties(); property != from.endProperties(); ++property)
        to.setProperty(property->first.c_str(), property->second.c_str());
}

std::shared_ptr<Keyframe> CopyOf(const Keyframe* key) {
    if (!key) return nullptr;
    auto copy = Keyframe::create(key->getX(), key->getY());
    copy->setBreakdown(key->isBreakdown());
    copy->setTangentsUnified(key->isTangentsUnified());
    CopyProperties(*key, *copy);
    return copy;
}

// A segment's copy with keys, tangents and properties of its own, from which nothing else can be reached.
std::shared_ptr<const Segment> IsolatedCopy(const Segment& segment, const std::shared_ptr<Interpolator>& interpolator) {
    const auto copy =
        Segment::create(nullptr, CopyOf(Read::leftKey(segment)), interpolator, CopyOf(Read::rightKey(segment)));
    CopyProperties(segment, *copy);
    const auto tangentCopy = [&](const Tangent* tangent, bool isIn) {
        auto result = Tangent::create(copy, isIn);
        if (tangent) *result = *tangent;
        return result;
    };
    Raw::setTangents(*copy, tangentCopy(Read::inTangent(segment), true), tangentCopy(Read::outTangent(segment), false));
    return copy;
}

std::size_t KeyCountOf(const FCurve* curve) {
    const std::size_t count = curve ? curve->size() - 1 : 0;
    if (count >= UINT32_MAX / (PlaybackCurve::bucketsPerKey + 1))
        throw std::length_error("A curve has too many keys to be compiled.");
    return count;
}

std::uint32_t BucketCountFor(std::size_t keys) noexcept {
    return std::max<std::uint32_t>(static_cast<std::uint32_t>(keys) * PlaybackCurve::bucketsPerKey, 1);
}

// The last one tells where the last but one ends.
std::size_t LineCountFor(std::uint32_t buckets) noexcept {
    return (buckets - 1) / BucketLine::size + 2;
}

// The bytes of a curve's numbers: pieces and buckets.
struct Sizes {
    explicit Sizes(std::size_t keys) noexcept
        : pieces((keys + 1) * sizeof(Piece)), all(pieces + LineCountFor(BucketCountFor(keys)) * sizeof(BucketLine)) {}
    std::size_t pieces;
    std::size_t all;
};

// A look-up in a large block goes to memory that no cache holds, and to the page tables as well if pages are small.
// Where the system refuses, nothing is lost.
void PreferHugePages(void* memory, std::size_t bytes) noexcept {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::size_t large = std::size_t(1) << 22, page = std::size_t(1) << 12;
    if (bytes < large) return;
    const std::size_t before = (page - reinterpret_cast<std::uintptr_t>(memory) % page) % page;
    ::madvise(static_cast<char*>(memory) + before, (bytes - before) / page * page, MADV_HUGEPAGE);
#else
    (void)memory, (void)bytes;
#endif
}

} // namespace

// --- the compiler ----------------------------------------------------------------------------------------------------

class Compiler {
public:
    explicit Compiler(PlaybackBlock& block) : m_block(block) {}

    // The arrays are there and have the right sizes, which the curve's count tells.
    void compile(const FCurve& from, PlaybackCurve& curve, Piece* pieces, BucketLine* buckets) {
        m_curve = &curve;
        setRange(from);
        std::uint32_t bucket = 0;
        const Segment* segment = &Read::firstSegment(from);
        for (std::uint32_t i = 0; i < curve.count; ++i) {
            const Keyframe& key = *Read::rightKey(*segment);
            segment = Read::rightSegment(key);
            if (i + 1 < curve.count) pieces[i + 1] = pieceOf(Read::interpolator(*segment), *segment);
            bucket = fillBuckets(buckets, bucket, curve.bucketOf(key.getX()) + 1, std::max(i, 1U));
        }
        fillBuckets(buckets, bucket, static_cast<std::uint32_t>(LineCountFor(curve.bucketCount)) * BucketLine::size,
                    curve.count);
        // The ends may repeat what lies between them.
        pieces[curve.count] = pieceOf(Read::interpolator(*segment), *segment);
        if (curve.count != 0) {
            const Segment& leading = Read::firstSegment(from);
            pieces[0] = pieceOf(Read::interpolator(leading), leading);
        }
    }

private:
    void setRange(const FCurve& from) noexcept {
        const Keyframe* const first = Read::rightKey(Read::firstSegment(from));
        const Keyframe* const last = Read::leftKey(Read::lastSegment(from));
        m_curve->first = first ? first->getX() : std::numeric_limits<double>::quiet_NaN();
        m_curve->last = last ? last->getX() : m_curve->first;
        m_curve->bucketCount = BucketCountFor(m_curve->count);
        m_curve->bucketsPerFrame = m_curve->bucketCount / (m_curve->last - m_curve->first);
        if (m_curve->bucketsPerFrame > 0.0 && std::isfinite(m_curve->bucketsPerFrame)) return;
        m_curve->bucketCount = 1;
        m_curve->bucketsPerFrame = 0.0;
    }

    // Returns where the next ones begin.
    static std::uint32_t fillBuckets(BucketLine* lines, std::uint32_t from, std::uint32_t to,
                                     std::uint32_t piece) noexcept {
        for (; from < to; ++from) {
            BucketLine& line = lines[from / BucketLine::size];
            if (from % BucketLine::size == 0) line.first = piece;
            line.more[from % BucketLine::size] = static_cast<std::uint8_t>(std::min(piece - line.first, 255U));
        }
        return from;
    }

    Piece pieceOf(const Interpolator* interpolator, const Segment& segment) {
        const KindRow& row = KindOf(interpolator);
        if (row.kind == Kind::Formula) return formulaPiece(static_cast<const Formula&>(*interpolator), segment);
        if (row.isHost() || row.shape == Shape::Free) return hostPiece(*interpolator, segment);
        const Keyframe* const left = Read::leftKey(segment);
        const Keyframe* const right = Read::rightKey(segment);
        return left && right ? pieceBetween(row, interpolator, segment, *left, *right)
                             : pieceBeyond(row, interpolator, segment, left ? left : right);
    }

    static Piece pieceBetween(const KindRow& row, const Interpolator* interpolator, const Segment& segment,
                              const Keyframe& left, const Keyframe& right) {
        switch (row.shape) {
        case Shape::LeftValue:
            return LevelPiece(left, right, left.getY());
        case Shape::RightValue:
            return LevelPiece(left, right, right.getY());
        case Shape::Line:
            return StraightPiece(left.getX(), left.getY(), right.getX(), right.getY());
        case Shape::Bezier:
            return BezierPiece(row.args(*interpolator, segment));
        case Shape::Number:
        case Shape::Free:
            break;
        }
        return LevelPiece(left, right, interpolator ? interpolator->eval(left.getX(), segment) : 0.0);
    }

    // key: the one that the segment has; null if it has none.
    Piece pieceBeyond(const KindRow& row, const Interpolator* interpolator, const Segment& segment,
                      const Keyframe* key) const {
        const Vector2D<double> at = key ? key->get() : Vector2D<double>();
        if (row.beyond == Beyond::Handle)
            return FreePiece(FreeKind::Line, at.x, at.y, 0.0, interpolator->getFirstDerivative(at.x, segment));
        if (row.beyond == Beyond::Repeats && m_curve->count > 1) {
            const double leading = Read::leftKey(segment) ? 0.0 : 1.0;
            if (row.kind == Kind::Mirror) return FreePiece(FreeKind::Mirror, leading, 0.0);
            return FreePiece(FreeKind::Cycle, leading, row.kind == Kind::CycleOffset ? rise() : 0.0);
        }
        return FreePiece(FreeKind::Constant, at.x, interpolator ? interpolator->eval(at.x, segment) : 0.0);
    }

    // From the first key to the last.
    double rise() const {
        PlaybackCurve soFar = *m_curve;
        soFar.interpolators = m_block.m_interpolators.data();
        return EvalPiece(soFar, soFar.pieces[soFar.count - 1], soFar.last)
               - EvalPiece(soFar, soFar.pieces[1], soFar.first);
    }

    Piece interpolatorPiece(std::size_t number, const Segment& segment) const noexcept {
        const Keyframe* const left = Read::leftKey(segment);
        const Keyframe* const right = Read::rightKey(segment);
        return FreePiece(FreeKind::Interpolator, left ? left->getX() : -kInfinity, static_cast<double>(number),
                         right ? right->getX() : kInfinity);
    }
    std::size_t add(std::shared_ptr<const Interpolator> interpolator, std::shared_ptr<const Segment> segment) {
        m_block.m_interpolators.push_back({std::move(interpolator), std::move(segment)});
        return m_block.m_interpolators.size() - 1;
    }

    // A formula without parts that depend on the segment serves all its segments.
    Piece formulaPiece(const Formula& formula, const Segment& segment) {
        const std::vector<std::shared_ptr<Interpolator>>& leaves = formula.program().leaves();
        if (leaves.empty()) {
            const auto [known, isNew] = m_formulas.try_emplace(&formula, 0);
            if (isNew) known->second = add(std::make_shared<Formula>(formula.program(), ""), m_noKeys);
            return interpolatorPiece(known->second, segment);
        }
        std::vector<std::shared_ptr<Interpolator>> compiled;
        compiled.reserve(leaves.size());
        for (const auto& leaf : leaves)
            compiled.push_back(std::make_shared<PlaybackLeaf>(*m_curve, pieceOf(leaf.get(), segment)));
        auto own = std::make_shared<Formula>(formula.program().withLeaves(std::move(compiled)), "");
        return interpolatorPiece(add(std::move(own), m_noKeys), segment);
    }

    Piece hostPiece(const Interpolator& interpolator, const Segment& segment) {
        std::shared_ptr<Interpolator>& clone = m_clones[&interpolator];
        // The model hands out interpolators that may be cloned; only its readers make them const.
        if (!clone) clone = const_cast<Interpolator&>(interpolator).clone();
        if (!clone) throw std::invalid_argument("An interpolator's clone is empty.");
        return interpolatorPiece(add(clone, IsolatedCopy(segment, clone)), segment);
    }

    PlaybackBlock& m_block;
    PlaybackCurve* m_curve = nullptr;
    std::shared_ptr<const Segment> m_noKeys = std::make_shared<Segment>();
    std::unordered_map<const Interpolator*, std::size_t> m_formulas;
    std::unordered_map<const Interpolator*, std::shared_ptr<Interpolator>> m_clones;
};

PlaybackBlock::PlaybackBlock(const std::vector<const FCurve*>& curves) {
    m_names.reserve(curves.size());
    std::size_t bytes = (curves.size() * sizeof(PlaybackCurve) + sizeof(Piece) - 1) / sizeof(Piece) * sizeof(Piece);
    const std::size_t start = bytes;
    for (const FCurve* curve : curves) {
        m_names.emplace_back(curve ? curve->getName() : "");
        bytes += Sizes(KeyCountOf(curve)).all;
    }

    m_memory.reset(::operator new(std::max<std::size_t>(bytes, 1), line));
    PreferHugePages(m_memory.get(), bytes);
    auto* const memory = static_cast<unsigned char*>(m_memory.get());
    m_curves = reinterpret_cast<PlaybackCurve*>(memory);
    std::uninitialized_default_construct_n(m_curves, curves.size());

    const auto empty = FCurve::create();
    Compiler compiler(*this);
    unsigned char* next = memory + start;
    for (std::size_t i = 0; i < curves.size(); ++i) {
        PlaybackCurve& curve = m_curves[i];
        curve.count = static_cast<std::uint32_t>(KeyCountOf(curves[i]));
        const Sizes sizes(curve.count);
        auto* const pieces = reinterpret_cast<Piece*>(next);
        curve.pieces = pieces;
        auto* const buckets = reinterpret_cast<BucketLine*>(next + sizes.pieces);
        curve.buckets = buckets;
        compiler.compile(curves[i] ? *curves[i] : *empty, curve, pieces, buckets);
        next += sizes.all;
    }
    for (std::size_t i = 0; i < curves.size(); ++i) m_curves[i].interpolators = m_interpolators.data();
}

} // namespace Private

} // namespace v19
} // namespace VEM_FN::FCurveLib
