// gltf_samples FOLDER: writes animations as glTF, and samples.json with the values that players must give: what
// FCurve::eval gives, and how far off they may be there.

#include "FCurveInterchange/FCurveInterchange.h"
#include "support/Museum.h"
#include "support/Random.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

using namespace Test;
using namespace VEM_FN::FCurveLib::Interchange;
using Json = nlohmann::json;

namespace {

constexpr double kTolerance = 1e-4;

struct Property {
    std::string node;
    std::string path; // of a node, or the property's name
    std::vector<std::shared_ptr<FCurve>> curves;
};

double heightOf(const FCurve& curve) {
    Rectangle<double> box;
    return GetInteriorExtents(curve, box) ? box.height : 0.0;
}

// At some places between the keys, away from jumps: neither times nor values have more digits than single precision.
Json rowsOf(const Property& property) {
    Json rows = Json::array();
    double first = HUGE_VAL;
    double start = 0.0;
    std::vector<double> places;
    for (const auto& curve : property.curves) {
        for (const Segment& segment : *curve) {
            if (!segment.getLeftKey() || !segment.getRightKey()) continue;
            const double x0 = segment.getLeftKey()->getX();
            const double width = segment.getRightKey()->getX() - x0;
            first = std::min(first, x0);
            if (width < 0.02) continue;
            for (const double part : {0.031, 0.27, 0.5, 0.77, 0.969}) places.push_back(x0 + part * width);
        }
    }
    start = std::min(0.0, std::floor(first));
    for (const double x : places) {
        Json row = {x, 0.0};
        double allowed = 0.0;
        for (const auto& curve : property.curves) {
            const double y = curve->eval(x);
            const double shift = std::max(1e-4, 1.3e-7 * (x - start)); // single precision, or the narrowest piece
            const double turn = std::max(std::fabs(curve->eval(x + shift) - y), std::fabs(curve->eval(x - shift) - y));
            allowed = std::max(allowed, kTolerance * heightOf(*curve) + 3e-7 * std::fabs(y) + 2.0 * turn);
            row.push_back(y);
        }
        if (property.path == "rotation") {
            double square = 0.0;
            for (std::size_t c = 2; c < 6; ++c) square += row[c].get<double>() * row[c].get<double>();
            for (std::size_t c = 2; c < 6; ++c) row[c] = row[c].get<double>() / std::sqrt(square);
        }
        row[1] = allowed;
        rows.push_back(row);
    }
    return rows;
}

// Returns whether the format takes the curves.
bool write(const std::string& folder, const std::string& name, const char* format,
           const std::vector<Property>& properties, Json& all) {
    const auto container = FCurveContainer::create();
    Json entry = {{"file", name + '.' + format}, {"channels", Json::array()}};
    for (const Property& property : properties) {
        for (std::size_t c = 0; c < property.curves.size(); ++c) {
            std::string component = property.path == "weights" ? std::to_string(c) : std::string(1, "xyzw"[c]);
            component = property.curves.size() > 1 ? '/' + component : "";
            property.curves[c]->setName((property.node + '/' + property.path + component).c_str());
            container->addCurve(property.curves[c]);
        }
        entry["channels"].push_back({{"node", property.node}, {"path", property.path}, {"rows", rowsOf(property)}});
    }
    MemoryStream stream;
    try {
        WriteCurves(*container, stream, format);
    } catch (const NotWritable&) {
        return false;
    }
    writeWholeFile(folder + '/' + name + '.' + format, BytesOf(stream));
    all.push_back(std::move(entry));
    return true;
}

std::shared_ptr<FCurve> randomCurve(Random& random, double low, double high) {
    static const char* const kinds[] = {"bezier()", "bezier()", "linear()", "constant()", "constant_next()",
                                        "spline()", "ease()",   "match()",  "cycle()",    "2*sin(x/5)"};
    auto curve = FCurve::create();
    const char* const only = random.oneOf(kinds);
    const bool isMixed = random.coin();
    double x = random.below(60) - 20;
    for (int i = 1 + random.below(6); i >= 0; --i) {
        curve->insertSegment(*Keyframe::create(x, random.between(low, high)),
                             InterpolatorFactory::create(isMixed ? random.oneOf(kinds) : only));
        x += random.coin() ? 1 + random.below(20) : random.between(0.5, 20.0);
    }
    (*std::prev(curve->end())).setInterpolator(Constant::create()); // others go on beside it
    for (Segment& segment : *curve) {
        if (!segment.getLeftKey() || !segment.getRightKey()) continue;
        for (const auto& tangent : {segment.getInTangent(), segment.getOutTangent()}) {
            tangent->setWeighted(random.coin());
            const double side = tangent->isInTangent() ? -1.0 : 1.0;
            tangent->set(side * random.between(0.0, 9.0), random.between(low - high, high - low));
        }
    }
    return curve;
}

// Unit quaternions between smooth turns: four curves of common keys.
std::vector<std::shared_ptr<FCurve>> randomRotation(Random& random) {
    std::vector<std::shared_ptr<FCurve>> curves;
    for (int c = 0; c < 4; ++c) curves.push_back(FCurve::create());
    double x = random.below(10);
    double angle = random.between(-1.0, 1.0);
    const char* const kind = random.coin() ? "spline()" : random.coin() ? "linear()" : "constant()";
    for (int i = 2 + random.below(4); i >= 0; --i, x += 2 + random.below(12), angle += random.between(-0.9, 0.9)) {
        const double values[] = {0.6 * std::sin(angle), 0.0, 0.8 * std::sin(angle), std::cos(angle)};
        for (std::size_t c = 0; c < 4; ++c)
            curves[c]->insertSegment(*Keyframe::create(x, values[c]), InterpolatorFactory::create(kind));
    }
    return curves;
}

} // namespace

int main(int count, char** arguments) {
    if (count != 2) return 2;
    RegisterFormats();
    const std::string folder = arguments[1];
    Json all = Json::array();
    for (const Exhibit& exhibit : Museum())
        write(folder, exhibit.name, "gltf", {{"node", "translation", {exhibit.make()}}}, all);
    Random random(11);
    for (int i = 0; i < 80; ++i) {
        std::vector<Property> properties;
        for (const char* path : {"translation", "scale", "weights"})
            if (random.coin())
                properties.push_back(
                    {"a", path, {randomCurve(random, -3, 3), randomCurve(random, 0, 9), randomCurve(random, 5, 6)}});
        if (random.coin()) properties.push_back({"b", "rotation", randomRotation(random)});
        properties.push_back({"b", "grip", {randomCurve(random, -1, 1)}});
        const bool isWritten = write(folder, "random" + std::to_string(i), i % 2 ? "glb" : "gltf", properties, all);
        if (!isWritten) {
            std::fprintf(stderr, "refused: %d\n", i);
            return 1;
        }
    }
    writeWholeFile(folder + "/samples.json", all.dump());
    std::printf("%zu files\n", all.size());
    return 0;
}
