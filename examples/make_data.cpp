// Makes the curves of examples/data: make_data FOLDER writes them there. Each shows something that animators meet
// daily.

#include "FCurveLib/FCurveLib.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <string>

using namespace VEM_FN::FCurveLib;

namespace {

std::shared_ptr<FCurve> AddCurve(FCurveContainer& container, const char* name, const char* before = "constant()") {
    const auto curve = FCurve::create();
    curve->setName(name);
    curve->begin()->setInterpolator(InterpolatorFactory::create(before));
    container.addCurve(curve);
    return curve;
}

/// Adds a key, and the segment that runs from it.
Segment& AddKey(FCurve& curve, double x, double y, const char* after) {
    return *curve.insertSegment(*Keyframe::create(x, y), InterpolatorFactory::create(after));
}

/// Gives both tangents at a key the same automatic type.
void SetType(Keyframe& key, Tangent::Type type) {
    key.getInTangent()->setType(type);
    key.getOutTangent()->setType(type);
}

void Save(const FCurveContainer& container, const std::string& path) {
    FileStream stream(path.c_str(), FileStream::Write, FileStream::Create | FileStream::Truncate);
    WriteCurves(container, stream, "xml");
    if (!stream.flush()) throw File::WriteError();
}

/// A ball that bounces five times. Between two contacts its height is a parabola, which is a Bezier segment with
/// handles of a third along the slopes at its ends; at a contact the velocity turns over at once, so the key's tangents
/// are not unified.
void MakeBall(const std::string& path) {
    // Frames from the top of an arc to the ground. A fall of n frames takes n^2 / 2 times the gravity.
    constexpr std::array<double, 6> kFalls = {12.0, 9.0, 7.0, 5.0, 4.0, 3.0};
    constexpr double kGravity = 20.0 / (12.0 * 12.0); // falls 10 in 12 frames

    const auto container = FCurveContainer::create();
    const auto height = AddCurve(*container, "height");
    const auto squash = AddCurve(*container, "squash");
    const auto setSlope = [](Tangent& tangent, double frames, double slope) {
        tangent.set(frames / 3.0, slope * frames / 3.0);
    };

    double frame = 1.0;
    AddKey(*height, frame, kGravity * kFalls[0] * kFalls[0] / 2.0, "bezier()");
    AddKey(*squash, frame, 1.0, "linear()");
    for (std::size_t i = 0; i < kFalls.size(); ++i) {
        const double fall = kFalls[i];
        frame += fall;
        const auto contact = AddKey(*height, frame, 0.0, "bezier()").getLeftKey();
        setSlope(*contact->getInTangent(), -fall, -kGravity * fall);

        AddKey(*squash, frame - 1.0, 1.0, "linear()");
        AddKey(*squash, frame, 1.0 - 0.04 * fall, "linear()");
        AddKey(*squash, frame + 1.0, 1.0, "linear()");

        if (i + 1 == kFalls.size()) break;
        const double rise = kFalls[i + 1];
        frame += rise;
        AddKey(*height, frame, kGravity * rise * rise / 2.0, "bezier()");
        setSlope(*contact->getOutTangent(), rise, kGravity * rise);
    }
    for (FCurve& curve : *container) (--curve.end())->setInterpolator(InterpolatorFactory::create("constant()"));
    Save(*container, path);
}

/// A slide from 0 to 100, a pause, and back: with flat tangents it eases in and out, with weighted ones it eases more,
/// in straight lines not at all.
void MakeSlide(const std::string& path) {
    const auto container = FCurveContainer::create();
    for (const char* name : {"eased", "eased more", "straight"}) {
        const bool isStraight = std::string(name) == "straight";
        const auto curve = AddCurve(*container, name);
        for (const auto& [x, y] :
             {Vector2D(1.0, 0.0), Vector2D(25.0, 100.0), Vector2D(37.0, 100.0), Vector2D(61.0, 0.0)})
            AddKey(*curve, x, y, isStraight ? "linear()" : "bezier()");
        for (Segment& segment : *curve)
            if (!isStraight && segment.getLeftKey()) SetType(*segment.getLeftKey(), Tangent::Flat);
        for (Segment& segment : *curve) {
            if (std::string(name) != "eased more" || !segment.getLeftKey() || !segment.getRightKey()) continue;
            for (const auto& tangent : {segment.getOutTangent(), segment.getInTangent()}) {
                tangent->setWeighted(true);
                tangent->setWeight(0.6 * (segment.getRightKey()->getX() - segment.getLeftKey()->getX()));
            }
        }
        (--curve->end())->setInterpolator(InterpolatorFactory::create("constant()"));
    }
    Save(*container, path);
}

/// What a curve does before its first and after its last key is up to the segments there.
void MakeEnds(const std::string& path) {
    struct End {
        const char* name;
        const char* expression;
    };
    const auto container = FCurveContainer::create();
    double base = 0.0;
    for (const End& end : {End{"held", "constant()"}, End{"continued", "bezier()"}, End{"repeated", "cycle()"},
                           End{"repeated with offset", "cycle_offset()"}, End{"mirrored", "mirror()"},
                           End{"a formula", "41 + sin(x / 2)"}}) {
        const auto curve = AddCurve(*container, end.name, end.expression);
        for (const auto& [x, y] : {Vector2D(1.0, 0.0), Vector2D(13.0, 5.0), Vector2D(25.0, 2.0)})
            AddKey(*curve, x, base + y, "bezier()");
        for (Segment& segment : *curve)
            if (segment.getLeftKey()) SetType(*segment.getLeftKey(), Tangent::SmoothContinued);
        (--curve->end())->setInterpolator(InterpolatorFactory::create(end.expression));
        base += 8.0;
    }
    Save(*container, path);
}

/// A camera's move as channel text, one row a frame: frame, three translations, three rotations in degrees. It is what
/// other programs export; the library reads it and does not write it.
void MakeCamera(const std::string& path) {
    const auto container = FCurveContainer::create();
    const auto add = [&container](const char* name, std::initializer_list<Vector2D<double>> keys) {
        const auto curve = AddCurve(*container, name);
        for (const auto& [x, y] : keys) AddKey(*curve, x, y, "bezier()");
        for (Segment& segment : *curve)
            if (segment.getLeftKey()) SetType(*segment.getLeftKey(), Tangent::Smooth);
        SetType(*curve->begin()->getRightKey(), Tangent::Flat);
        SetType(*(--curve->end())->getLeftKey(), Tangent::Flat);
        (--curve->end())->setInterpolator(InterpolatorFactory::create("constant()"));
    };
    add("tx", {{1, -6}, {40, -2}, {80, 4}, {120, 5}});
    add("ty", {{1, 1.6}, {60, 3.2}, {120, 1.8}});
    add("tz", {{1, 9}, {40, 8}, {90, 3}, {120, 2.5}});
    add("rx", {{1, 0}, {60, -14}, {120, -2}});
    add("ry", {{1, -32}, {40, -12}, {80, 38}, {120, 52}});
    add("rz", {{1, 0}, {30, 1.5}, {70, -2}, {120, 0}});

    FileStream stream(path.c_str(), FileStream::Write, FileStream::Create | FileStream::Truncate);
    for (int frame = 1; frame <= 120; ++frame) {
        std::string row = std::to_string(frame);
        for (const FCurve& curve : *container) {
            std::array<char, 64> text;
            const auto end =
                std::to_chars(text.data(), text.data() + text.size(), curve.eval(frame), std::chars_format::fixed, 6);
            row += '\t';
            row.append(text.data(), end.ptr);
        }
        row += '\n';
        stream.writeData(row.data(), static_cast<int>(row.size()));
    }
    if (!stream.flush()) throw File::WriteError();
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: make_data FOLDER\n", stderr);
        return 2;
    }
    const std::string folder = argv[1];
    try {
        MakeBall(folder + "/ball.fcrvx");
        MakeSlide(folder + "/slide.fcrvx");
        MakeEnds(folder + "/ends.fcrvx");
        MakeCamera(folder + "/camera.chan");
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_data: %s: %s\n", folder.c_str(), error.what());
        return 1;
    }
}
