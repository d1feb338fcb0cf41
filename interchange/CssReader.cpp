#include "FCurveInterchange/Formats.h"
#include "interchange/Easing.h"
#include "interchange/EasingFormats.h"
#include "interchange/Numbers.h"

#include <FCurveLib/FormatType.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

constexpr double kWidth = 100.0; // frames of an easing that does not say its place: per cent

struct Named {
    const char* name;
    Easing easing;
};
constexpr Named kNamed[] = {{"linear", {0.0, 0.0, 1.0, 1.0}},
                            {"ease", {0.25, 0.1, 0.25, 1.0}},
                            {"ease-in", {0.42, 0.0, 1.0, 1.0}},
                            {"ease-out", {0.0, 0.0, 0.58, 1.0}},
                            {"ease-in-out", {0.42, 0.0, 0.58, 1.0}}};

struct Stop {
    double output = 0.0;
    std::optional<double> input; // 0 to 1
};

Knot KnotAt(double x, double y) {
    Knot knot;
    knot.x = x;
    knot.y = y;
    return knot;
}

// One line: an easing, and perhaps a comment that says where it stands.
class Line {
public:
    Line(std::string_view bytes, std::size_t start, std::size_t end) : m_bytes(bytes), m_at(start), m_end(end) {}

    // Whether there is an easing.
    bool read(Track& track);

private:
    [[noreturn]] void fail(std::size_t offset, const std::string& message) const {
        const Place place = PlaceOf(m_bytes, offset);
        throw BadDocument(message, place.line, place.column);
    }
    [[noreturn]] void expect(const char* what) {
        skip();
        const std::size_t end = std::min(m_bytes.find_first_of(" \t,()/", m_at + 1), m_end);
        fail(m_at, std::string("Expected ") + what + ", found "
                       + (m_at >= m_end ? "the end of the line" : Quoted(m_bytes.substr(m_at, end - m_at))) + '.');
    }

    void skip() {
        for (;;) {
            while (m_at < m_end && (m_bytes[m_at] == ' ' || m_bytes[m_at] == '\t')) ++m_at;
            if (m_bytes.substr(m_at, 2) != "/*" || m_at >= m_end) return;
            const std::size_t close = m_bytes.find("*/", m_at + 2);
            if (close == std::string_view::npos || close >= m_end) fail(m_at, "The comment is not closed in its line.");
            m_comment = m_bytes.substr(m_at + 2, close - m_at - 2);
            m_at = close + 2;
        }
    }
    bool take(char c) {
        skip();
        if (m_at >= m_end || m_bytes[m_at] != c) return false;
        ++m_at;
        return true;
    }
    std::string word() {
        skip();
        std::string result;
        for (; m_at < m_end; ++m_at) {
            const char c = m_bytes[m_at];
            if (c >= 'A' && c <= 'Z')
                result += static_cast<char>(c - 'A' + 'a');
            else if ((c >= 'a' && c <= 'z') || c == '-')
                result += c;
            else
                break;
        }
        return result;
    }
    std::optional<double> tryNumber() {
        skip();
        std::size_t end = m_at;
        while (end < m_end && std::string_view("+-.0123456789eE").find(m_bytes[end]) != std::string_view::npos) ++end;
        double result = 0.0;
        if (end == m_at || !ParseNumber(m_bytes.substr(m_at, end - m_at), result)) return std::nullopt;
        m_at = end;
        return result;
    }
    double number() {
        const auto result = tryNumber();
        if (!result) expect("a number");
        return *result;
    }
    void comma() {
        if (!take(',')) expect("\",\"");
    }

    void readCubic(Track& track);
    void readSteps(Track& track);
    void readLinear(Track& track);
    void place(Track& track) const;

    std::string_view m_bytes;
    std::size_t m_at;
    std::size_t m_end;
    std::string_view m_comment;
};

void MakeEase(Track& track, const Easing& easing) {
    track.knots = {KnotAt(0.0, 0.0), KnotAt(kWidth, 1.0)};
    SetEasing(track.knots[0], track.knots[1], easing);
}

void Line::readCubic(Track& track) {
    Easing easing;
    const auto within = [&](double& x) {
        skip();
        const std::size_t start = m_at;
        x = number();
        if (!(x >= 0.0 && x <= 1.0)) fail(start, ShortNumber(x) + " is not within 0 and 1.");
    };
    within(easing.x1);
    comma();
    easing.y1 = number();
    comma();
    within(easing.x2);
    comma();
    easing.y2 = number();
    MakeEase(track, easing);
}

void Line::readSteps(Track& track) {
    constexpr double kMost = 100000.0;
    skip();
    const std::size_t start = m_at;
    const double steps = number();
    if (!(steps >= 1.0 && steps <= kMost && steps == std::floor(steps)))
        fail(start, ShortNumber(steps) + " is not a whole number of steps from 1 to 100 000.");
    std::string kind = "jump-end";
    if (take(',')) {
        skip();
        const std::size_t place = m_at;
        kind = word();
        if (kind == "start") kind = "jump-start";
        if (kind == "end") kind = "jump-end";
        if (kind != "jump-start" && kind != "jump-end" && kind != "jump-none" && kind != "jump-both") {
            m_at = place;
            expect("jump-start, jump-end, jump-none or jump-both");
        }
    }
    if (kind == "jump-none" && steps < 2.0) fail(start, "jump-none takes two steps at least.");
    // Values at the start of each step; before all, steps of both kinds jump at the start.
    for (double i = 0.0; i < steps; ++i) {
        const double y = kind == "jump-none"   ? i / (steps - 1.0)
                         : kind == "jump-both" ? (i + 1.0) / (steps + 1.0)
                                               : i / steps;
        track.knots.push_back(KnotAt(kWidth * i / steps, y));
        if (kind == "jump-start") track.knots.back().piece = Piece::ConstantNext;
    }
    track.knots.push_back(KnotAt(kWidth, 1.0));
    if (kind == "jump-both") track.leading.expression = "0";
}

void Line::readLinear(Track& track) {
    std::vector<Stop> stops;
    do {
        Stop stop;
        std::optional<double> second;
        bool hasOutput = false;
        for (std::size_t start = m_at; const auto value = tryNumber(); start = m_at) {
            if (m_at < m_end && m_bytes[m_at] == '%') {
                if (second) {
                    m_at = start;
                    expect("\",\" or \")\"");
                }
                ++m_at;
                (stop.input ? second : stop.input) = *value / 100.0;
            } else {
                if (hasOutput) expect("a percentage");
                stop.output = *value;
                hasOutput = true;
            }
        }
        if (!hasOutput) expect("a number");
        stops.push_back(stop);
        if (second) stops.push_back({stop.output, second});
    } while (take(','));

    // Inputs that are not given: the first 0, the last 1, those between at equal distances; none goes back.
    if (!stops.front().input) stops.front().input = 0.0;
    double largest = *stops.front().input;
    for (Stop& stop : stops)
        if (stop.input) stop.input = largest = std::max(largest, *stop.input);
    if (!stops.back().input) stops.back().input = std::max(1.0, largest);
    for (std::size_t i = 1; i < stops.size(); ++i) {
        if (stops[i].input) continue;
        std::size_t next = i;
        while (!stops[next].input) ++next;
        const double from = *stops[i - 1].input;
        const double step = (*stops[next].input - from) / static_cast<double>(next - i + 1);
        for (std::size_t j = i; j < next; ++j) stops[j].input = from + step * static_cast<double>(j - i + 1);
    }
    constexpr double kGap = 0.001;
    // Outside the stops it goes on along the first line and the last.
    const std::size_t count = stops.size();
    const auto along = [](const Stop& from, const Stop& to, double input) {
        return Stop{from.output + (to.output - from.output) * ((input - *from.input) / (*to.input - *from.input)),
                    input};
    };
    if (count > 1 && kWidth * *stops[0].input > kGap && *stops[0].input < *stops[1].input)
        stops.insert(stops.begin(), along(stops[0], stops[1], 0.0));
    if (const std::size_t last = stops.size() - 1;
        count > 1 && kWidth * (1.0 - *stops[last].input) > kGap && *stops[last - 1].input < *stops[last].input)
        stops.push_back(along(stops[last - 1], stops[last], 1.0));
    for (const Stop& stop : stops) {
        const double x = kWidth * *stop.input;
        std::vector<Knot>& knots = track.knots;
        if (!knots.empty() && !(x > knots.back().x)) {
            // A jump: what came before ends a little earlier, and holds.
            if (knots.back().y == stop.output) continue;
            Lose({track.name, Loss::Time, Loss::Moved, "a key before a jump, by 0.001 frames", 1, {x}, 0.0, 0.0});
            Knot* const line = knots.size() > 1 ? &knots[knots.size() - 2] : nullptr;
            if (line && x - line->x <= 2.0 * kGap) {
                knots.pop_back();
            } else {
                if (line) knots.back().y -= (knots.back().y - line->y) * (kGap / (x - line->x));
                knots.back().x = x - kGap;
            }
            knots.back().piece = Piece::Constant;
        }
        knots.push_back(KnotAt(x, stop.output));
        knots.back().piece = Piece::Linear;
    }
    if (count == 1) track.knots = {KnotAt(0.0, stops[0].output), KnotAt(kWidth, stops[0].output)};
}

// "/* name: 1 2, 25 4 */": the easing's 0 and 1 stand at these frames and values.
void Line::place(Track& track) const {
    const std::size_t colon = m_comment.rfind(": ");
    if (colon == std::string_view::npos) return;
    double numbers[4];
    std::string_view rest = m_comment.substr(colon + 2);
    for (double& value : numbers) {
        const std::size_t end = std::min(rest.find_first_of(" ,"), rest.size());
        if (!ParseNumber(rest.substr(0, end), value)) return;
        rest.remove_prefix(std::min(rest.find_first_not_of(" ,", end), rest.size()));
    }
    if (!rest.empty() || !(numbers[2] > numbers[0])) return;
    std::string_view name = m_comment.substr(0, colon);
    if (!name.empty() && name.front() == ' ') name.remove_prefix(1);
    track.name = name;
    const double scaleX = (numbers[2] - numbers[0]) / kWidth;
    const double scaleY = numbers[3] - numbers[1];
    for (Knot& knot : track.knots) {
        knot.x = knot.x == kWidth ? numbers[2] : numbers[0] + knot.x * scaleX;
        knot.y = knot.y == 1.0 ? numbers[3] : numbers[1] + knot.y * scaleY;
        for (Side* side : {&knot.in, &knot.out}) {
            side->handle = {side->handle.x * scaleX, side->handle.y * scaleY};
            // Thirds of the only piece, to the last bit.
            if (side->isGiven && !side->isWeighted)
                side->handle.x = (side == &knot.in ? -1.0 : 1.0) * ((numbers[2] - numbers[0]) / 3.0);
        }
    }
    if (!track.leading.expression.empty()) track.leading.expression = NumberText(numbers[1]);
}

// An easing of the same name that starts where the one before ended is the next piece of its curve.
bool Continue(Track& track, const Track& next) {
    Knot& joint = track.knots.back();
    const Knot& start = next.knots.front();
    if (track.name != next.name || joint.x != start.x || joint.y != start.y || !next.leading.expression.empty())
        return false;
    joint.piece = start.piece;
    joint.out = start.out;
    track.knots.insert(track.knots.end(), next.knots.begin() + 1, next.knots.end());
    return true;
}

bool Line::read(Track& track) {
    skip();
    if (m_at >= m_end) return false;
    const std::size_t start = m_at;
    const std::string name = word();
    const auto* const named =
        std::find_if(std::begin(kNamed), std::end(kNamed), [&](const Named& one) { return name == one.name; });
    if (take('(')) {
        if (name == "cubic-bezier")
            readCubic(track);
        else if (name == "steps")
            readSteps(track);
        else if (name == "linear")
            readLinear(track);
        else {
            m_at = start;
            expect("cubic-bezier, steps or linear");
        }
        if (!take(')')) expect("\")\"");
    } else if (named != std::end(kNamed)) {
        MakeEase(track, named->easing);
    } else if (name == "step-start" || name == "step-end") {
        track.knots = {KnotAt(0.0, 0.0), KnotAt(kWidth, 1.0)};
        if (name == "step-start") track.knots[0].piece = Piece::ConstantNext;
    } else {
        m_at = start;
        expect("an easing such as cubic-bezier(0.25, 0.1, 0.25, 1)");
    }
    skip();
    if (take(';')) skip();
    if (m_at < m_end) expect("the end of the line");
    place(track);
    return true;
}

} // namespace

CssReader::CssReader() : CurveReader(FormatType("css_easings", "CSS easing functions", "easings")) {}

Document CssReader::parse(std::string_view bytes) const {
    Document document;
    const FormatLimits limits = GetFormatLimits();
    std::size_t keys = 0; // of all easings; one of many steps is short
    std::size_t at = bytes.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
    while (at < bytes.size()) {
        const std::size_t end = std::min(bytes.find_first_of("\r\n", at), bytes.size());
        Track track;
        track.name = std::to_string(document.tracks.size() + 1);
        track.offset = at;
        if (Line(bytes, at, end).read(track)) {
            keys += track.knots.size();
            const auto require = [&](bool isWithin, const char* message) {
                if (isWithin) return;
                const Place place = PlaceOf(bytes, at);
                throw TooMuch(message, place.line, place.column);
            };
            require(keys <= limits.runs || keys - limits.runs <= bytes.size(),
                    "There are too many steps for a document of this length.");
            if (document.tracks.empty() || !Continue(document.tracks.back(), track)) {
                require(document.tracks.size() < limits.curves, "There are too many curves.");
                document.tracks.push_back(std::move(track));
            }
        }
        at = end + 1;
    }
    if (document.tracks.empty()) throw BadDocument("There is no easing.", 1, 1);
    return document;
}

// The first line that says something is an easing's.
bool CssReader::recognises(std::string_view opening, bool) const {
    std::size_t at = opening.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
    for (;;) {
        at = opening.find_first_not_of(" \t\r\n", at);
        if (at == std::string_view::npos) return false;
        if (opening.substr(at, 2) != "/*") break;
        at = opening.find("*/", at);
        if (at == std::string_view::npos) return false;
        at += 2;
    }
    std::string name;
    for (; at < opening.size() && std::string_view(" \t\r\n(;/").find(opening[at]) == std::string_view::npos; ++at)
        name += opening[at] >= 'A' && opening[at] <= 'Z' ? static_cast<char>(opening[at] - 'A' + 'a') : opening[at];
    if (name == "cubic-bezier" || name == "steps" || name == "step-start" || name == "step-end") return true;
    return std::any_of(std::begin(kNamed), std::end(kNamed), [&](const Named& one) { return name == one.name; });
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
