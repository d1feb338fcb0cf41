// What the documents and the round trips of "usda" do not see: widths beside an oracle, the text itself, edited layers.

#include "FCurveInterchange/FCurveInterchange.h"
#include "interchange/usda/Widths.h" // internal: the mathematics of widths alone
#include "support/Museum.h"
#include "support/Random.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

using namespace Test;
using namespace VEM_FN::FCurveLib::Interchange;

namespace {

// The least dx/dt of a unit span, looked for at many places.
double slowest(double left, double right) {
    double least = HUGE_VAL;
    for (int i = 0; i <= 4000; ++i) {
        const double t = i / 4000.0;
        const double u = 1.0 - t;
        least = std::min(least, 3.0 * u * u * left + 6.0 * u * t * (1.0 - left - right) + 3.0 * t * t * right);
    }
    return least;
}

std::string written(const FCurveContainer& curves, const ConversionOptions& options = {}) {
    RegisterFormats();
    MemoryStream stream;
    const Conversion conversion(options);
    WriteCurves(curves, stream, "usda");
    return BytesOf(stream);
}

std::shared_ptr<FCurveContainer> containerOf(std::initializer_list<std::shared_ptr<FCurve>> curves) {
    auto container = FCurveContainer::create();
    for (const auto& curve : curves) container->addCurve(curve);
    return container;
}

std::shared_ptr<FCurve> named(const char* name, const std::vector<Key>& keys, const char* leading = "constant()") {
    auto curve = MakeCurve(keys, leading);
    curve->setName(name);
    return curve;
}

} // namespace

TEST(Usda, WidthsNeverRunBackwards) {
    Random random(5);
    for (int i = 0; i < 3000; ++i) {
        const Usda::Widths widths{random.between(0.0, 2.0), random.between(0.0, 2.0)};
        const bool isLegal = slowest(widths.left, widths.right) >= -1e-5;
        if (std::fabs(slowest(widths.left, widths.right)) > 1e-4) {
            EXPECT_EQ(Usda::IsRegressive(widths), !isLegal) << widths.left << ' ' << widths.right;
        }
        const Usda::Widths shown = Usda::AsEvaluated(widths);
        EXPECT_GE(slowest(shown.left, shown.right), -5e-5);
        if (Usda::IsRegressive(widths) && widths.left > 0.05 && widths.right > 0.05) {
            EXPECT_NEAR(shown.left / shown.right, widths.left / widths.right, 1e-3 * widths.left / widths.right);
            EXPECT_LT(slowest(1.001 * shown.left, 1.001 * shown.right), 0.0) << "no shorter than needed";
        }
        // As long as this library allows beside a shorter one.
        const double a = std::min(widths.left, 1.0);
        const double b = 0.5 * ((2.0 - a) + std::sqrt(a * (4.0 - 3.0 * a)));
        EXPECT_FALSE(Usda::IsRegressive(Usda::WithinTest({a, b}))) << a << ' ' << b;
        EXPECT_FALSE(Usda::IsRegressive(Usda::WithinTest({b, a}))) << a << ' ' << b;
    }
}

TEST(Usda, WritesWhatUsdReads) {
    auto bend = named("rig/9 lives/lift", {{1, 2, {}, Vector2D<double>{4, 2}},
                                           {13, 6, Vector2D<double>{0, -1}, {}, "constant_next()"},
                                           {20, 5, {}, {}, "linear()"},
                                           {25, 1, {}, {}, "7"},
                                           {30, 1, {}, Vector2D<double>{2, 1}}});
    bend->setProperty("note", "a \"b\"\n\x01");
    bend->findSegment(13)->getLeftKey()->setBreakdown(true);
    auto x = named("rig/size/x", {{0, 1, {}, {}, "linear()"}, {2, 3}});
    x->setProperty("usda_type", "float3");
    auto y = named("rig/size/y", {{1, 5, {}, {}, "constant()"}, {4, 0}});
    y->setProperty("usda_type", "float3");
    const auto curves = containerOf({bend, x, y, named("rig/9_lives/lift", {{0, 0}}, "cycle()")});
    curves->setProperty("frame_rate", "25");
    curves->setProperty("linear_unit", "in");
    curves->setProperty("owner", "me");
    EXPECT_EQ(written(*curves), R"(#usda 1.0
(
    customLayerData = {
        string owner = "me"
    }
    framesPerSecond = 25
    metersPerUnit = 0.0254
    timeCodesPerSecond = 25
)

def "rig"
{
    float3 size.timeSamples = {
        0: (1, 5, 0),
        1: (2, 5, 0),
        2: (3, 5, 0),
        3.999: (3, 5, 0),
        4: (3, 0, 0),
    }

    def "_9_lives"
    {
        double lift (
            customData = {
                string note = "a \"b\"\n\x01"
                string fcurve_name = "rig/9 lives/lift"
            }
        )
        double lift.spline = {
            bezier,
            post: sloped(0.5),
            1: 2; post curve (4, 0.5),
            13: 6 & 5; pre (1.2e-05, 83333.33333333333); post held; { string fcurve_breakdown = "1" },
            20: 5; post linear,
            25: 1 & 7; post held,
            30: 1; post held,
        }
        double lift_1 (
            customData = {
                string fcurve_name = "rig/9_lives/lift"
            }
        )
        double lift_1.spline = {
            post: sloped(0),
            0: 0; post held,
        }
    }
}
)");
}

TEST(Usda, ChangesNothingElseInALayer) {
    const TempFolder folder;
    const std::string path = folder.file("scene.usda");
    const std::string layer = "#usda 1.1\r\n# a scene\r\ndef Xform \"rig\" ( kind = 'x' )\r\n{\r\n"
                              "\tdouble lift = 2 # at rest\r\n"
                              "\tfloat fade.timeSamples = { 1: 2,\r\n\t 3: 4 }\r\n"
                              "\tfloat fade.spline = { 0: 1 }\r\n"
                              "\tdef \"leaf\" {}\r\n}\r\n// end\r\n";
    writeWholeFile(path, layer);
    ConversionOptions options;
    options.settings["usda.into"] = path;
    const auto step = [](const char* name) {
        return named(name, {{0, 1, {}, {}, "linear()"}, {2, 3, {}, {}, "constant()"}});
    };
    const auto curves = containerOf({step("rig/fade"), step("rig/lift"), step("rig/leaf/new"), step("other/new")});
    const auto spline = [](const std::string& indent) {
        return ".spline = {\r\n" + indent + "    0: 1; post linear,\r\n" + indent + "    2: 3; post held,\r\n" + indent
               + '}';
    };
    EXPECT_EQ(written(*curves, options), "#usda 1.1\r\n# a scene\r\ndef Xform \"rig\" ( kind = 'x' )\r\n{\r\n"
                                         "\tdouble lift = 2 # at rest\r\n\tdouble lift"
                                             + spline("\t")
                                             + "\r\n"
                                               "\tfloat fade"
                                             + spline("\t")
                                             + "\r\n"
                                               "\tdef \"leaf\" {\r\n\t    double new"
                                             + spline("\t    ")
                                             + "\r\n\t}\r\n}\r\n// end\r\n"
                                               "\r\ndef \"other\"\r\n{\r\n    double new"
                                             + spline("    ") + "\r\n}\r\n");
    // Of an attribute whose name looks like a component, and of a prim that is not there; at the layer's rate.
    const std::string rig = "#usda 1.0\n( timeCodesPerSecond = 50 )\ndef \"rig\" {\n  double a = 1\n}\n";
    writeWholeFile(path, rig);
    const auto two = containerOf({step("rig/a"), step("rig/low/b")});
    two->setProperty("frame_rate", "25");
    std::string joined = rig;
    joined.insert(joined.find("}\n"),
                  "  double a.spline = {\n      0: 1; post linear,\n      4: 3; post held,\n  }\n"
                  "    def \"low\"\n    {\n        double b.spline = {\n"
                  "            0: 1; post linear,\n            4: 3; post held,\n        }\n    }\n");
    EXPECT_EQ(written(*two, options), joined);
    writeWholeFile(path, "#usda 1.0\nover \"rig\" { variantSet \"v\" = { \"a\" { double lift.spline = { 0: 1 } } }\n"
                         "int lift.timeSamples = { 0: 1 } }\n");
    EXPECT_THROW(written(*containerOf({step("rig{v=a}/lift")}), options), NotWritable);
    EXPECT_THROW(written(*containerOf({step("rig/lift")}), options), NotWritable);
    options.settings["usda.into"] = folder.file("none");
    EXPECT_THROW(written(*curves, options), LoadError);
    writeWholeFile(path, "#usda 1.0\n]");
    options.settings["usda.into"] = path;
    try {
        written(*curves, options);
        ADD_FAILURE() << "a layer that is none";
    } catch (const NotWritable& refusal) {
        EXPECT_EQ(std::string(refusal.message()).substr(0, path.size() + 6), path + ":2:1: ");
    }
}

TEST(Usda, LeavesWhatDidNotChangeInALayer) {
    const TempFolder folder;
    const std::string path = folder.file("scene.usda");
    const std::string layer = "#usda 1.0\ndef \"rig\" {\n  double lift.spline = { 0: 1.50; post curve (1,0.50), # up\n"
                              "    3: 2.0 }\n  double drop.spline = {1:1, 2:2}\n"
                              "  float2 size.timeSamples = { 1: (1.0, 2), 3: (4, 5) }\n"
                              "  variantSet \"v\" = { \"a\" { double fade.spline = { 0: 1 } } }\n}\n";
    writeWholeFile(path, layer);
    RegisterFormats();
    const auto curves = FCurveContainer::create();
    MemoryStream stream = StreamOf(layer);
    ReadCurves(stream, *curves);
    ConversionOptions options;
    options.settings["usda.into"] = path;
    EXPECT_EQ(written(*curves, options), layer);

    std::next(curves->begin())->findSegment(1)->getLeftKey()->setY(7);
    std::string changed = layer;
    const std::string drop = "{1:1, 2:2}";
    changed.replace(changed.find(drop), drop.size(), "{\n      1: 7; post held,\n      2: 2; post held,\n  }");
    EXPECT_EQ(written(*curves, options), changed);
}
