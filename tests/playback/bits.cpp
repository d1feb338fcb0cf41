// Prints a number for each curve of the museum, and for many random ones, that is made of all bits of its compiled
// values and slopes; with the name of a file, compares them with that file's. By every kind of lane that the processor
// has. Formulas are left out: their functions are the C library's.

#include "playback/Lanes.h" // internal: chooses the lanes
#include "support/Museum.h"
#include "support/Random.h"

#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>

using namespace Test;

namespace {

// FNV-1a; one NaN is as good as another.
class Digest {
public:
    void add(double value) {
        if (std::isnan(value)) value = 0.5;
        std::uint64_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        for (int i = 0; i < 8; ++i) m_state = (m_state ^ (bits >> (8 * i) & 0xff)) * 0x100000001b3;
    }
    std::uint64_t get() const { return m_state; }

private:
    std::uint64_t m_state = 0xcbf29ce484222325;
};

// Exact on every machine, unlike the standard library's distributions.
class Fractions {
public:
    double next() {
        m_state = m_state * 6364136223846793005 + 1442695040888963407;
        return static_cast<double>(m_state >> 11) * 0x1p-53;
    }

private:
    std::uint64_t m_state = 1;
};

std::vector<double> LooksAt(const FCurve& curve) {
    std::vector<double> xs{-1e9, -12345.678, 1e7 + 1.0, 1e9};
    for (const Segment& segment : curve) {
        const Span span = SpanOf(segment);
        for (int i = 0; i <= 200; ++i) xs.push_back(span.x0 + (span.x1 - span.x0) * i / 200.0);
        for (double off = 0.25; off > 1e-14; off /= 4.0) {
            xs.push_back(span.x0 + off * (span.x1 - span.x0));
            xs.push_back(span.x1 - off * (span.x1 - span.x0));
        }
    }
    return xs;
}

std::uint64_t DigestOf(const FCurve& curve) {
    const CompiledCurve compiled(curve);
    const std::vector<double> xs = LooksAt(curve);
    std::vector<double> ys(xs.size());
    compiled.eval(xs.data(), ys.data(), xs.size());
    Digest digest;
    for (std::size_t i = 0; i < xs.size(); ++i) {
        digest.add(compiled.eval(xs[i]));
        digest.add(ys[i]);
        digest.add(compiled.getFirstDerivative(xs[i]));
        digest.add(compiled.getSecondDerivative(xs[i]));
    }
    return digest.get();
}

bool IsFormula(const std::string& name) {
    return name == "Formulas" || name == "FormulasOverCycles" || name == "ManyKinds";
}

std::shared_ptr<FCurve> AnyCurve(Fractions& fractions) {
    std::vector<Key> keys;
    Vector2D<double> at;
    Vector2D<double> in;
    // One after the other: compilers differ in the order of arguments.
    const auto handle = [&](double width) {
        const double y = 20.0 * fractions.next() - 10.0;
        const double x = width * fractions.next() * 1.4;
        return Vector2D<double>(x, y);
    };
    for (int i = 0; i < 20; ++i) {
        const double width = 0.01 + 10.0 * fractions.next();
        const Vector2D<double> out = handle(width);
        keys.push_back({at.x, at.y, in, out});
        in = handle(-width);
        at = at + Vector2D<double>(width, 10.0 * fractions.next() - 5.0);
    }
    return MakeCurve(keys);
}

std::string Digests() {
    std::ostringstream text;
    const auto add = [&](const std::string& name, std::uint64_t digest) {
        char line[100];
        std::snprintf(line, sizeof line, "%-20s %016" PRIx64 "\n", name.c_str(), digest);
        text << line;
    };
    for (const Exhibit& exhibit : Museum())
        if (!IsFormula(exhibit.name)) add(exhibit.name, DigestOf(*exhibit.make()));
    Fractions fractions;
    for (int i = 0; i < 50; ++i) add("random " + std::to_string(i), DigestOf(*AnyCurve(fractions)));
    return text.str();
}

} // namespace

int main(int count, char** arguments) {
    int status = 0;
    std::string expected;
    if (count > 1) {
        std::ifstream file(arguments[1]);
        expected.assign(std::istreambuf_iterator<char>(file), {});
    }
    for (const Private::LaneSet* lanes : Private::AllLanes()) {
        Private::UseLanes(*lanes);
        const std::string found = Digests();
        if (expected.empty()) expected = found;
        std::printf("%s: %s\n", lanes->name, found == expected ? "the same bits" : "OTHER BITS");
        if (found == expected) continue;
        std::fputs(found.c_str(), stdout);
        status = 1;
    }
    if (count == 1) std::fputs(expected.c_str(), stdout);
    return status;
}
