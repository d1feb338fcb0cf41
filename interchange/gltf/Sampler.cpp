#include "interchange/gltf/Sampler.h"

#include "FCurveInterchange/Formats.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace Gltf {

namespace {

// A stretch between two times, cubic in time. Slopes a second.
struct Part {
    enum Kind { Constant, Line, Cubic };
    Kind kind;
    float begin;
    float end;
    double width; // in seconds, before they were rounded
    double y0;
    double y1;
    double slope0 = 0.0;
    double slope1 = 0.0;
};

struct Line {
    std::vector<Part> parts;
    double before = 0.0; // the value before them
    double after = 0.0;
};

void AddPart(Line& line, Part part) {
    if (part.end > part.begin) line.parts.push_back(part);
}

void AddCubic(Line& line, const Interchange::Cubic& cubic, double rate, double offset) {
    const auto& p = cubic.p;
    Part part{Part::Cubic, TimeOf(p[0].x, rate, offset), TimeOf(p[3].x, rate, offset), cubic.width() / rate, p[0].y,
              p[3].y};
    part.slope0 = 3.0 * (p[1].y - p[0].y) / part.width;
    part.slope1 = 3.0 * (p[3].y - p[2].y) / part.width;
    AddPart(line, part);
}

Line MakeLine(const Component& component, double rate, double offset) {
    Line line;
    if (!component.track) {
        line.before = line.after = component.value;
        return line;
    }
    const std::vector<Knot>& knots = component.track->knots;
    line.before = knots.front().before;
    line.after = knots.back().y;
    if (knots.size() == 1) {
        const float time = TimeOf(knots.front().x, rate, offset);
        line.parts.push_back({Part::Constant, time, time, 0.0, line.after, line.after});
    }
    std::vector<Interchange::Cubic> pieces;
    for (std::size_t i = 0; i + 1 < knots.size(); ++i) {
        const Knot& left = knots[i];
        const Knot& right = knots[i + 1];
        const float begin = TimeOf(left.x, rate, offset);
        const float end = TimeOf(right.x, rate, offset);
        const double width = (right.x - left.x) / rate;
        if (left.piece == Piece::Bezier) {
            const double digit = static_cast<double>(std::nextafter(end, HUGE_VALF)) - static_cast<double>(end);
            pieces.clear();
            SplitToThirds(CubicOf(*component.track, i), component.tolerance, std::max(1e-4, 8.0 * digit * rate),
                          pieces);
            for (const Interchange::Cubic& piece : pieces) AddCubic(line, piece, rate, offset);
        } else if (left.piece == Piece::Linear) {
            const double slope = (right.before - left.y) / width;
            AddPart(line, {Part::Line, begin, end, width, left.y, right.before, slope, slope});
        } else {
            AddPart(line, {Part::Constant, begin, end, width, left.y, left.y});
        }
    }
    return line;
}

// Where values jump, what is on the left ends one number earlier, and a very steep line follows.
void SeparateJumps(Line& line) {
    if (line.parts.empty()) return;
    std::vector<Part> parts;
    parts.reserve(line.parts.size());
    const auto jump = [&](float time, double from, double to) {
        const float stop = std::nextafter(time, 0.0F);
        if (!(stop < time) || (!parts.empty() && !(stop > parts.back().begin))) return;
        if (!parts.empty()) parts.back().end = stop;
        parts.push_back({Part::Line, stop, time, static_cast<double>(time) - static_cast<double>(stop), from, to});
    };
    if (line.before != line.parts.front().y0) jump(line.parts.front().begin, line.before, line.parts.front().y0);
    for (std::size_t i = 0; i < line.parts.size(); ++i) {
        const Part& part = line.parts[i];
        if (part.end > part.begin || line.parts.size() == 1) parts.push_back(part);
        const double next = i + 1 < line.parts.size() ? line.parts[i + 1].y0 : line.after;
        if (part.y1 != next) jump(part.end, part.y1, next);
    }
    line.parts = std::move(parts);
}

// Value and slopes of a line at rising times.
class Walk {
public:
    explicit Walk(const Line& line) : m_line(line) {}

    void go(float time) {
        const std::vector<Part>& parts = m_line.parts;
        while (m_next < parts.size() && parts[m_next].begin <= time) ++m_next;
        const Part* const part = m_next > 0 ? &parts[m_next - 1] : nullptr;
        in = out = 0.0;
        if (!part) {
            value = m_line.before;
            return;
        }
        if (part->begin == time) {
            value = part->y0;
            out = part->slope0;
            if (m_next > 1 && parts[m_next - 2].end == time) in = parts[m_next - 2].slope1;
        } else if (time < part->end) {
            inside(*part, time);
        } else {
            value = m_line.after;
            if (part->end == time) in = part->slope1;
        }
        if (part->begin == part->end) value = m_line.after;
    }

    double value = 0.0;
    double in = 0.0;
    double out = 0.0;

private:
    void inside(const Part& part, float time) {
        const double begin = part.begin;
        const double s = (static_cast<double>(time) - begin) / (static_cast<double>(part.end) - begin);
        const double t = 1.0 - s;
        if (part.kind != Part::Cubic) {
            value = part.y0 + s * (part.y1 - part.y0);
            in = out = part.slope0;
            return;
        }
        const double a = part.slope0 * part.width;
        const double b = part.slope1 * part.width;
        value = t * t * (1.0 + 2.0 * s) * part.y0 + s * t * t * a + s * s * (1.0 + 2.0 * t) * part.y1 - s * s * t * b;
        const double rise = 6.0 * s * t * (part.y1 - part.y0) + t * (t - 2.0 * s) * a + s * (s - 2.0 * t) * b;
        in = out = rise / part.width;
    }

    const Line& m_line;
    std::size_t m_next = 0;
};

void Normalise(Channel& channel) {
    for (std::size_t k = 0; k < channel.keys(); ++k) {
        double square = 0.0;
        for (std::size_t c = 4 * k; c < 4 * k + 4; ++c) square += channel.values[c] * channel.values[c];
        const double length = std::sqrt(square);
        const bool isUsable = length > 1e-6 && std::isfinite(length);
        for (std::size_t c = 4 * k; c < 4 * k + 4; ++c) {
            channel.values[c] = isUsable ? channel.values[c] / length : c == 4 * k + 3 ? 1.0 : 0.0;
            if (channel.in.empty()) continue;
            channel.in[c] = isUsable ? channel.in[c] / length : 0.0;
            channel.out[c] = isUsable ? channel.out[c] / length : 0.0;
        }
    }
}

} // namespace

float TimeOf(double x, double rate, double offset) {
    const double time = std::max((x - offset) / rate, 0.0);
    if (!(time <= static_cast<double>(std::numeric_limits<float>::max())))
        throw NotWritable("The time of a key is beyond the range of single precision.");
    return static_cast<float>(time);
}

Channel ChannelOf(const std::vector<Component>& components, double rate, double offset, bool isRotation) {
    std::vector<Line> lines;
    bool hasCubics = false;
    bool hasLines = false;
    for (const Component& component : components) {
        lines.push_back(MakeLine(component, rate, offset));
        for (const Part& part : lines.back().parts) {
            hasCubics = hasCubics || part.kind == Part::Cubic;
            hasLines = hasLines || part.kind == Part::Line;
        }
    }
    Channel channel;
    channel.components = components.size();
    channel.interpolation = hasCubics || (hasLines && isRotation) ? Interpolation::Cubic
                            : hasLines                            ? Interpolation::Linear
                                                                  : Interpolation::Step;
    for (Line& line : lines) {
        if (channel.interpolation != Interpolation::Step) {
            SeparateJumps(line);
        } else if (!line.parts.empty() && line.before != line.parts.front().y0 && line.parts.front().begin > 0.0F) {
            const float first = line.parts.front().begin;
            line.parts.insert(line.parts.begin(),
                              {Part::Constant, std::nextafter(first, 0.0F), first, 0.0, line.before, line.before});
        }
    }
    for (const Line& line : lines) {
        for (const Part& part : line.parts) channel.times.push_back(part.begin);
        if (!line.parts.empty()) channel.times.push_back(line.parts.back().end);
    }
    std::sort(channel.times.begin(), channel.times.end());
    channel.times.erase(std::unique(channel.times.begin(), channel.times.end()), channel.times.end());
    if (channel.times.empty()) channel.times.push_back(0.0F);
    if (channel.times.size() == 1) channel.interpolation = Interpolation::Step;

    const bool isCubic = channel.interpolation == Interpolation::Cubic;
    const std::size_t count = channel.keys() * channel.components;
    channel.values.resize(count);
    channel.in.resize(isCubic ? count : 0);
    channel.out.resize(isCubic ? count : 0);
    for (std::size_t c = 0; c < lines.size(); ++c) {
        Walk walk(lines[c]);
        for (std::size_t k = 0; k < channel.keys(); ++k) {
            walk.go(channel.times[k]);
            const std::size_t place = k * channel.components + c;
            channel.values[place] = walk.value;
            if (!isCubic) continue;
            channel.in[place] = k > 0 ? walk.in : 0.0;
            channel.out[place] = k + 1 < channel.keys() ? walk.out : 0.0;
        }
    }
    if (isRotation) Normalise(channel);
    return channel;
}

} // namespace Gltf

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
