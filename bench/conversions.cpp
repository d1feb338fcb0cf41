// Prints the tables of docs/interchange.md: what converting 10^6 keys costs, in one curve and in a thousand, beside
// loading and saving them as "xml". Arguments name the formats, all unless said otherwise.

#include "FCurveInterchange/FCurveInterchange.h"
#include "FCurveLib/FCurveLib.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <random>
#include <string>
#include <vector>

using namespace VEM_FN::FCurveLib;

namespace {

constexpr int kKeys = 1000000;

// Keys some frames apart, or one, whose handles were set by hand, every fourth of them weighted if asked for.
std::shared_ptr<FCurveContainer> Curves(int count, bool hasWeights, bool isEachFrame) {
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> slope(-5, 5);
    std::uniform_real_distribution<double> reach(0.2, 0.6);
    std::uniform_int_distribution<int> span(isEachFrame ? 1 : 3, isEachFrame ? 1 : 12);
    auto container = FCurveContainer::create();
    const auto bezier = Bezier::create();
    for (int c = 0; c < count; ++c) {
        auto curve = FCurve::create();
        curve->setName(("node" + std::to_string(c) + "/translateX").c_str());
        int x = 0;
        for (int i = 0; i < kKeys / count; ++i) {
            curve->insertSegment(*Keyframe::create(x, std::round(1e4 * std::sin(0.3 * i)) / 100.0), bezier);
            x += span(random);
        }
        for (Segment& segment : *curve) {
            for (Tangent* tangent : {segment.getOutTangent().get(), segment.getInTangent().get()}) {
                if (hasWeights && random() % 4 == 0) {
                    tangent->setWeighted(true);
                    tangent->setX((tangent->getX() < 0.0 ? -10.0 : 10.0) * reach(random));
                }
                tangent->setY(slope(random));
            }
        }
        container->addCurve(curve);
    }
    return container;
}

double Seconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

// The shortest of three runs.
template<class Act>
double Cost(const Act& act) {
    double shortest = HUGE_VAL;
    for (int i = 0; i < 3; ++i) {
        const double begin = Seconds();
        act();
        shortest = std::min(shortest, Seconds() - begin);
    }
    return shortest;
}

struct Costs {
    std::string refusal; // instead of all others
    double write = 0.0;
    double compare = 0.0; // what the report adds
    double read = 0.0;
    double megabytes = 0.0;
};

Costs CostsOf(const FCurveContainer& curves, const char* format) {
    const bool isOwn = std::string(format) == "xml" || std::string(format) == "binary";
    Costs costs;
    MemoryStream bytes;
    const auto write = [&] {
        bytes.setPosition(0);
        WriteCurves(curves, bytes, format);
    };
    try {
        costs.write = Cost(write);
    } catch (const FormatError& error) {
        costs.refusal = error.message();
        return costs;
    }
    if (!isOwn)
        costs.compare = Cost([&] {
                            Interchange::ConversionReport report;
                            const Interchange::Conversion conversion(report);
                            write();
                        })
                        - costs.write;
    costs.megabytes = bytes.getSize() / 1e6;
    costs.read = Cost([&] {
        bytes.setPosition(0);
        const auto back = FCurveContainer::create();
        ContainerInterface target(*back);
        FormatFactory::getReader(format)->readCurves(bytes, target);
    });
    return costs;
}

} // namespace

int main(int count, char** arguments) {
    Interchange::RegisterFormats();
    std::vector<std::string> formats(arguments + 1, arguments + count);
    if (formats.empty())
        formats = {"text", "hchan", "hClip", "csv", "css_easings", "lottie", "maya_anim", "usda", "gltf", "glb"};
    const struct {
        const char* title;
        int curves;
        bool hasWeights;
        bool isEachFrame;
    } shapes[] = {{"one curve", 1, false, false},
                  {"1 000 curves", 1000, false, false},
                  {"1 000 curves, a quarter of the handles weighted", 1000, true, false},
                  {"1 000 curves, a key every frame", 1000, false, true}};
    for (const auto& shape : shapes) {
        const auto curves = Curves(shape.curves, shape.hasWeights, shape.isEachFrame);
        const Costs xml = CostsOf(*curves, "xml");
        const double both = xml.read + xml.write;
        std::printf("\n%s: \"xml\" is loaded in %.2f s and saved in %.2f s\n\n"
                    "| | write | report | read | MB | from \"xml\" | to \"xml\" |\n"
                    "| --- | --- | --- | --- | --- | --- | --- |\n",
                    shape.title, xml.read, xml.write);
        for (const std::string& format : formats) {
            const Costs costs = CostsOf(*curves, format.c_str());
            if (!costs.refusal.empty()) {
                std::printf("| %s | %s |\n", format.c_str(), costs.refusal.c_str());
                continue;
            }
            std::printf("| %s | %.2f s | %.2f s | %.2f s | %.0f | %.2f | %.2f |\n", format.c_str(), costs.write,
                        costs.compare, costs.read, costs.megabytes, (xml.read + costs.write + costs.compare) / both,
                        (costs.read + xml.write) / both);
            std::fflush(stdout);
        }
    }
    return 0;
}
