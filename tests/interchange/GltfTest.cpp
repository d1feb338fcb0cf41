// What the documents and the round trips of "gltf" do not see: documents that are changed, whole sets of components.

#include "FCurveInterchange/FCurveInterchange.h"
#include "support/Museum.h"
#include "support/StreamOf.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

using namespace Test;
using namespace VEM_FN::FCurveLib::Interchange;

namespace {

std::shared_ptr<FCurve> named(const std::string& name, const std::vector<Key>& keys, const char* animation = "") {
    auto curve = MakeCurve(keys);
    curve->setName(name.c_str());
    curve->setProperty("gltf_animation", animation);
    return curve;
}

std::string written(const std::vector<std::shared_ptr<FCurve>>& curves, const char* format,
                    const ConversionOptions& options = {}) {
    RegisterFormats();
    const auto container = FCurveContainer::create();
    for (const auto& curve : curves) container->addCurve(curve);
    MemoryStream stream;
    const Conversion conversion(options);
    WriteCurves(*container, stream, format);
    return BytesOf(stream);
}

std::shared_ptr<FCurveContainer> read(const std::string& bytes) {
    RegisterFormats();
    auto container = FCurveContainer::create();
    MemoryStream stream = StreamOf(bytes);
    ReadCurves(stream, *container);
    return container;
}

double valueOf(FCurveContainer& curves, const std::string& name, double x, const std::string& animation = "") {
    for (FCurve& curve : curves)
        if (curve.getName() == name && curve.getProperty("gltf_animation") == animation) return curve.eval(x);
    ADD_FAILURE() << name << " is not there";
    return NAN;
}

const std::vector<Key> kRise = {{0, 1, {}, {}, "linear()"}, {24, 3, {}, {}, "constant()"}};

} // namespace

TEST(Gltf, ChangesNothingElseInADocument) {
    const TempFolder folder;
    const std::string first =
        R"({ "asset" : {"version":"2.0"}, "nodes":[ {"name":"a","extras":{"k":1.50}} , {"name":"m",
  "matrix":[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]}], "extensionsUsed":[], "scenes":[{}],
  "x":1e0)";
    const std::string path = folder.file("scene.gltf");
    writeWholeFile(path, first + "}\n");
    ConversionOptions options;
    options.settings["gltf.into"] = path;
    const std::string once = written({named("a/translation/y", kRise, "walk"), named("a/k", kRise, "walk"),
                                      named("a/j", kRise, "walk"), named("b/grip", kRise, "wave")},
                                     "gltf", options);
    for (const char* part :
         {R"({ "asset" : {"version":"2.0"}, "nodes":[ {"name":"a","extras":{"k":1.50,"j":1}} , {"name":"m",
  "matrix":[1,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1]},{"name":"b","extras":{"grip":1}}], "extensionsUsed":["KHR_animation_pointer"], "scenes":[{"nodes":[2]}],
  "x":1e0,)"})
        EXPECT_EQ(once.substr(0, std::string(part).size()), part);
    auto curves = read(once);
    EXPECT_EQ(curves->size(), 4U);
    EXPECT_EQ(valueOf(*curves, "a/translation/y", 12, "walk"), 2.0);
    EXPECT_EQ(valueOf(*curves, "a/k", 12, "walk"), 2.0);
    EXPECT_EQ(valueOf(*curves, "b/grip", 24, "wave"), 3.0);

    // Once more: one animation is replaced, the other stays.
    writeWholeFile(path, once);
    auto again = read(written({named("b/grip", {{0, 7}}, "wave")}, "gltf", options));
    EXPECT_EQ(again->size(), 4U);
    EXPECT_EQ(valueOf(*again, "b/grip", 24, "wave"), 7.0);
    EXPECT_EQ(valueOf(*again, "a/j", 12, "walk"), 2.0);

    EXPECT_THROW(written({named("a/k", kRise)}, "glb", options), NotWritable);
    EXPECT_THROW(written({named("a/k", {{0, 1e39}})}, "gltf", options), NotWritable);
}

// A quarter turn about z, twice as large, mirrored or not, somewhere else: what is not animated stays.
TEST(Gltf, AnimatesANodeThatHasAMatrix) {
    const TempFolder folder;
    ConversionOptions options;
    options.settings["gltf.into"] = folder.file("scene.gltf");
    const auto animated = [&](const std::string& matrix) {
        writeWholeFile(folder.file("scene.gltf"),
                       R"({"asset":{"version":"2.0"},"nodes":[{"name":"m","matrix" : [)" + matrix + "]}]}");
        return written({named("m/tx", kRise), named("m/rotation/x", {{0, 0}}), named("m/scale/x", {{0, 5}})}, "gltf",
                       options);
    };
    for (const double side : {1.0, -1.0}) {
        const std::string x = side > 0 ? "0,2,0,0" : "0,-2,0,0";
        const std::string bytes = animated(x + ",-3,0,0,0,0,0,4,0,7,8,9,1");
        EXPECT_EQ(bytes.find("matrix"), std::string::npos);
        const auto at = [&](const std::string& member) { return bytes.find(member) != std::string::npos; };
        EXPECT_TRUE(at("\"translation\":[7,8,9]") && at(side > 0 ? "\"scale\":[2,3,4]" : "\"scale\":[-2,3,4]"));
        // Without the names of its channels all components are read.
        std::string plain = bytes;
        const std::string names = ",\"extras\":{\"curves\"";
        for (std::size_t i = 0; (i = plain.find(names)) != std::string::npos;)
            plain.erase(i, plain.find("]}", i) + 2 - i);
        const auto curves = read(plain);
        EXPECT_EQ(valueOf(*curves, "m/translation/x", 12), 2.0);
        EXPECT_EQ(valueOf(*curves, "m/translation/z", 12), 9.0);
        EXPECT_EQ(valueOf(*curves, "m/scale/y", 0), 3.0);
        EXPECT_NEAR(valueOf(*curves, "m/rotation/z", 0), std::sqrt(0.5), 1e-6);
        EXPECT_NEAR(valueOf(*curves, "m/rotation/w", 0), std::sqrt(0.5), 1e-6);
    }
    for (const char* matrix :
         {"1,0,0,0,1,1,0,0,0,0,1,0,0,0,0,1", "0,0,0,0,0,1,0,0,0,0,1,0,0,0,0,1", "1,0,0,1,0,1,0,0,0,0,1,0,0,0,0,1"})
        EXPECT_THROW(animated(matrix), NotWritable) << matrix;
}

TEST(Gltf, AppendsToTheChunkOfAContainer) {
    const TempFolder folder;
    const std::string path = folder.file("scene.glb");
    const std::string once = written({named("a/tx", kRise, "walk")}, "glb");
    writeWholeFile(path, once);
    ConversionOptions options;
    options.settings["gltf.into"] = path;
    const std::string twice = written({named("b/tx", {{0, 5}, {10, 6}}, "wave")}, "glb", options);
    auto curves = read(twice);
    EXPECT_EQ(valueOf(*curves, "a/tx", 12, "walk"), 2.0);
    EXPECT_EQ(valueOf(*curves, "b/tx", 10, "wave"), 6.0);
    const std::string bytes = once.substr(once.find("BIN") + 4);
    EXPECT_NE(twice.find(bytes), std::string::npos) << "the bytes that were there have not moved";
}

TEST(Gltf, ReadsFilesBesideADocument) {
    const TempFolder folder;
    RegisterFormats();
    const std::string text = written({named("a/k", kRise)}, "gltf");
    const std::size_t start = text.find("data:");
    const std::size_t end = text.find('"', start);
    MemoryStream stream = StreamOf(text.substr(0, start) + "a%20b.bin" + text.substr(end));
    std::string bytes(16, '\0'); // 0 s, 1 s; 1, 3
    bytes.replace(4, 12, std::string("\0\0\x80\x3f\0\0\x80\x3f\0\0\x40\x40", 12));
    writeWholeFile(folder.file("a b.bin"), bytes);
    ConversionOptions options;
    options.settings["gltf.folder"] = folder.path().string();
    const Conversion conversion(options);
    const auto curves = FCurveContainer::create();
    ReadCurves(stream, *curves);
    EXPECT_EQ(valueOf(*curves, "a/k", 12), 2.0);
}

TEST(Gltf, ContinuesOverTheRangeThatTheContainerStates) {
    auto curve = named("a/k", {{0, 0, {}, {}, "linear()"}, {10, 4, {}, {}, "cycle_offset()"}});
    const auto container = FCurveContainer::create();
    container->addCurve(curve);
    container->setProperty("first_frame", "-15");
    container->setProperty("last_frame", "30");
    MemoryStream stream;
    WriteCurves(*container, stream, "gltf");
    auto back = read(BytesOf(stream));
    for (double x = -15; x <= 30; x += 0.5) {
        if (x != 10 && x != 20) { // corners between samples
            EXPECT_NEAR(valueOf(*back, "a/k", x), curve->eval(x), 4e-3) << x;
        }
    }
    EXPECT_EQ(valueOf(*back, "a/k", 40), valueOf(*back, "a/k", 30));
}

// By matrices: x turns first.
TEST(Gltf, GivesPlayersARotationOfAngles) {
    const std::vector<std::shared_ptr<FCurve>> angles = {
        named("arm/rotateX", {{-6, 0, {}, {}, "linear()"}, {24, 720}}), named("arm/ry", {{0, 10}, {9, 80}, {24, -45}}),
        named("arm/rotate/z", {{0, 30, {}, {}, "constant()"}, {12, -100}})};
    std::string bytes = written(angles, "gltf");
    for (const auto& angle : angles)
        EXPECT_NEAR(valueOf(*read(bytes), angle->getName(), 7.25), angle->eval(7.25), 1e-4) << "as it was";
    const std::string names = "\"curves\"";
    bytes.replace(bytes.find(names, bytes.find("\"rotation\"")), names.size(), "\"plain\"");
    const auto curves = read(bytes);
    for (double x = -6; x <= 24; x += 0.25) {
        if (std::fabs(x - 12) < 0.3) continue; // a jump
        double q[4];
        for (int i = 0; i < 4; ++i) q[i] = valueOf(*curves, std::string("arm/rotation/") + "xyzw"[i], x);
        const double length = std::hypot(std::hypot(q[0], q[1]), std::hypot(q[2], q[3]));
        for (double& part : q) part /= length;
        double v[3] = {0.3, -0.5, 0.8};
        const double u[3] = {v[0], v[1], v[2]};
        for (int axis = 0; axis < 3; ++axis) {
            const double angle = angles[static_cast<std::size_t>(axis)]->eval(x) * 3.14159265358979323846 / 180;
            double& a = v[(axis + 1) % 3];
            double& b = v[(axis + 2) % 3];
            const double turned = a * std::cos(angle) - b * std::sin(angle);
            b = a * std::sin(angle) + b * std::cos(angle);
            a = turned;
        }
        for (int i = 0; i < 3; ++i) { // v + 2 q x (q x v + w v)
            const auto cross = [&](const double* w, int k) {
                return q[(k + 1) % 3] * w[(k + 2) % 3] - q[(k + 2) % 3] * w[(k + 1) % 3];
            };
            const double inner[3] = {cross(u, 0) + q[3] * u[0], cross(u, 1) + q[3] * u[1], cross(u, 2) + q[3] * u[2]};
            EXPECT_NEAR(u[i] + 2 * cross(inner, i), v[i], 1e-3) << x;
        }
    }
}

TEST(Gltf, RefusesTimesBeyondSinglePrecision) {
    for (const char* const format : {"gltf", "glb"})
        for (const double x : {9e39, 1e300}) {
            EXPECT_THROW(written({named("a/tx", {{0, 0}, {x, 1}})}, format), NotWritable) << x;
            EXPECT_THROW(written({named("a/k", {{-x, 0}, {x, 1}})}, format), NotWritable) << x;
        }
}

// Components that have no curve, keys that others have, frames before 0, weights of a shape that is made for them.
TEST(Gltf, JoinsComponents) {
    auto curves =
        read(written({named("a/translation/z", {{-12.5, 2, {}, {}, "bezier()"}, {5.3, 4}}),
                      named("a/translation/x", {{0, 1, {}, {}, "constant_next()"}, {7, 3, {}, {}, "constant()"}}),
                      named("a/weights/2", kRise), named("a/weights/0", kRise), named("a/rotation/x", {{1, 3}})},
                     "glb"));
    EXPECT_EQ(curves->size(), 5U);
    EXPECT_EQ(valueOf(*curves, "a/translation/z", -12.5), 2.0);
    EXPECT_NEAR(valueOf(*curves, "a/translation/z", -3.6), 3.0, 1e-6);
    EXPECT_EQ(valueOf(*curves, "a/translation/z", 5.3), 4.0);
    EXPECT_EQ(valueOf(*curves, "a/translation/x", -1), 1.0);
    EXPECT_EQ(valueOf(*curves, "a/translation/x", 1), 3.0);
    EXPECT_EQ(valueOf(*curves, "a/weights/0", 12), 2.0);
    EXPECT_NEAR(valueOf(*curves, "a/rotation/x", 0), 3.0 / std::sqrt(10.0), 1e-7) << "beside a w of 1";
}
