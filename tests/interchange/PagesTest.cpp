// The tables "What survives" of docs/formats, made from what conversions report: one curve for each thing that a curve
// can have, written and read back. "FCURVELIB_UPDATE_GOLDEN=1 test_interchange" writes them anew and fails.

#include "FCurveInterchange/FCurveInterchange.h"
#include "FCurveLib/FCurveLib.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

using namespace VEM_FN::FCurveLib;
using namespace VEM_FN::FCurveLib::Interchange;

namespace {

std::shared_ptr<FCurve> curveOf(const char* kind, const char* leading = "constant()",
                                const char* trailing = "constant()") {
    auto curve = FCurve::create();
    curve->setName("ball/translateX");
    (*curve->begin()).setInterpolator(InterpolatorFactory::create(leading));
    const double keys[][2] = {{1, 2}, {5, 6}, {13, -2}, {25, 4}};
    for (const auto& [x, y] : keys)
        curve->insertSegment(*Keyframe::create(x, y), InterpolatorFactory::create(x < 25 ? kind : trailing));
    return curve;
}

using Change = std::function<void(FCurve&)>;

void eachTangent(FCurve& curve, const std::function<void(Tangent&)>& act) {
    for (Segment& segment : curve) {
        if (!segment.getLeftKey() || !segment.getRightKey()) continue;
        act(*segment.getOutTangent());
        act(*segment.getInTangent());
    }
}

std::shared_ptr<FCurve> bezier(const Change& change) {
    auto curve = curveOf("bezier()");
    change(*curve);
    return curve;
}

std::shared_ptr<FCurve> ofType(std::uint8_t type) {
    return bezier([=](FCurve& curve) { eachTangent(curve, [=](Tangent& tangent) { tangent.setType(type); }); });
}

std::shared_ptr<FCurve> linear(const Change& change) {
    auto curve = curveOf("linear()");
    change(*curve);
    return curve;
}

Keyframe& secondKey(FCurve& curve) {
    return *(*std::next(curve.begin())).getRightKey();
}

struct Feature {
    const char* name;
    std::function<std::shared_ptr<FCurve>()> make;
};

const std::vector<Feature>& features() {
    static const std::vector<Feature> all{
        {"constant()", [] { return curveOf("constant()"); }},
        {"constant_next()", [] { return curveOf("constant_next()"); }},
        {"linear()", [] { return curveOf("linear()"); }},
        {"bezier(), unweighted",
         [] {
             return bezier(
                 [](FCurve& curve) { eachTangent(curve, [](Tangent& tangent) { tangent.set(tangent.getX(), 1.5); }); });
         }},
        {"bezier(), weighted",
         [] {
             return bezier([](FCurve& curve) {
                 eachTangent(curve, [](Tangent& tangent) {
                     tangent.setWeighted(true);
                     tangent.set(1.3 * tangent.getX(), 1.5);
                 });
             });
         }},
        {"bezier(), overlong handles",
         [] {
             return bezier([](FCurve& curve) {
                 eachTangent(curve, [](Tangent& tangent) {
                     tangent.setWeighted(true);
                     tangent.set(3.9 * tangent.getX(), 1.5);
                 });
             });
         }},
        {"spline()", [] { return curveOf("spline()"); }},
        {"ease(), easein(), easeout()",
         [] {
             return linear([](FCurve& curve) {
                 static const char* const kinds[] = {"ease()", "easein()", "easeout()"};
                 int i = 0;
                 for (Segment& segment : curve)
                     if (segment.getLeftKey() && segment.getRightKey())
                         segment.setInterpolator(InterpolatorFactory::create(kinds[i++]));
             });
         }},
        {"match()",
         [] {
             return linear([](FCurve& curve) {
                 (*std::next(curve.begin(), 2)).setInterpolator(InterpolatorFactory::create("match()"));
             });
         }},
        {"a number between keys",
         [] {
             return linear([](FCurve& curve) {
                 (*std::next(curve.begin(), 2)).setInterpolator(InterpolatorFactory::create("1.5"));
             });
         }},
        {"a formula between keys",
         [] {
             return linear([](FCurve& curve) {
                 (*std::next(curve.begin(), 2)).setInterpolator(InterpolatorFactory::create("sin(x / 3)"));
             });
         }},
        {"smooth tangents", [] { return ofType(Tangent::Smooth); }},
        {"flat tangents", [] { return ofType(Tangent::Flat); }},
        {"linear tangents", [] { return ofType(Tangent::Linear); }},
        {"continued smooth tangents", [] { return ofType(Tangent::SmoothContinued); }},
        {"clamped tangents", [] { return ofType(Tangent::Clamped); }},
        {"plateau tangents", [] { return ofType(Tangent::Plateau); }},
        {"ends: bezier()", [] { return curveOf("linear()", "bezier()", "bezier()"); }},
        {"ends: linear()", [] { return curveOf("linear()", "linear()", "linear()"); }},
        {"ends: cycle()", [] { return curveOf("linear()", "cycle()", "cycle()"); }},
        {"ends: cycle_offset()", [] { return curveOf("linear()", "cycle_offset()", "cycle_offset()"); }},
        {"ends: mirror()", [] { return curveOf("linear()", "mirror()", "mirror()"); }},
        {"ends: a number", [] { return curveOf("linear()", "-3", "-3"); }},
        {"ends: a formula", [] { return curveOf("linear()", "x / 5", "x / 5"); }},
        {"keys between frames", [] { return linear([](FCurve& curve) { secondKey(curve).setX(5.25); }); }},
        {"one key",
         [] {
             auto curve = FCurve::create();
             curve->setName("ball/translateX");
             curve->insertSegment(*Keyframe::create(1, 2), Constant::create());
             return curve;
         }},
        {"breakdown keys", [] { return linear([](FCurve& curve) { secondKey(curve).setBreakdown(true); }); }},
        {"unified tangents",
         [] {
             return linear([](FCurve& curve) {
                 secondKey(curve).set(7, 0); // its lines are one
                 secondKey(curve).setTangentsUnified(true);
             });
         }},
        {"locked weights",
         [] {
             return linear([](FCurve& curve) { // of a key both: formats have one flag for them
                 for (Segment& segment : curve) {
                     if (segment.getLeftKey()) segment.getOutTangent()->setWeightLocked(true);
                     if (segment.getRightKey()) segment.getInTangent()->setWeightLocked(true);
                 }
             });
         }},
        {"locked keys", [] { return linear([](FCurve& curve) { SetLocked(secondKey(curve), true); }); }},
        {"display settings", [] { return linear([](FCurve& curve) { SetVisible(curve, false); }); }},
        {"properties of the curve", [] { return linear([](FCurve& curve) { curve.setProperty("note", "a"); }); }},
        {"properties of keys", [] { return linear([](FCurve& curve) { secondKey(curve).setProperty("note", "a"); }); }},
        {"a name with blanks", [] { return linear([](FCurve& curve) { curve.setName("a ball/left, up"); }); }},
    };
    return all;
}

// The losses of one curve, in few words.
std::string outcomeOf(const FCurve& curve, const char* format) {
    ConversionReport report;
    MemoryStream stream;
    const auto container = FCurveContainer::create();
    container->addCurve(FCurve::createCopy(curve));
    try {
        const Conversion conversion(report);
        WriteCurves(*container, stream, format);
    } catch (const NotWritable&) {
        return "refused";
    }
    if (report.empty()) return "yes";
    std::vector<std::string> words;
    double largest = 0.0;
    for (const Loss& loss : report.losses()) {
        std::string word = std::string(ToText(loss.what)) + ' ' + ToText(loss.remedy);
        if (std::find(words.begin(), words.end(), word) == words.end()) words.push_back(std::move(word));
        largest = std::max(largest, loss.difference);
    }
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
    char size[32];
    std::snprintf(size, sizeof size, "%.1g", largest);
    return text + (largest > 1e-9 ? std::string("; up to ") + size + " off" : "; same values");
}

std::string tableOf(const char* format) {
    std::string table = "| | |\n| --- | --- |\n";
    for (const Feature& feature : features())
        table += std::string("| ") + feature.name + " | " + outcomeOf(*feature.make(), format) + " |\n";
    return table;
}

class Pages : public testing::TestWithParam<const char*> {};

} // namespace

TEST_P(Pages, TellWhatSurvives) {
    RegisterFormats();
    std::string name = GetParam();
    for (char& c : name) c = static_cast<char>(std::tolower(c));
    const std::string path = FCURVELIB_SOURCE_DIR "/docs/formats/" + name + ".md";
    const std::string page = readWholeFile(path);
    const std::string heading = "## What survives\n";
    const std::size_t start = page.find("| | |\n", page.find(heading));
    ASSERT_NE(start, std::string::npos) << path;
    std::size_t end = start;
    while (page.compare(end, 1, "|") == 0) end = page.find('\n', end) + 1;
    const std::string table = tableOf(GetParam());
    if (std::getenv("FCURVELIB_UPDATE_GOLDEN") && page.substr(start, end - start) != table) {
        writeWholeFile(path, page.substr(0, start) + table + page.substr(end));
        FAIL() << path << " is written anew";
    }
    EXPECT_EQ(page.substr(start, end - start), table);
}

INSTANTIATE_TEST_SUITE_P(Interchange, Pages,
                         testing::Values("css_easings", "csv", "glb", "gltf", "hchan", "hClip", "lottie", "maya_anim",
                                         "text", "usda"),
                         [](const auto& format) { return std::string(format.param); });
