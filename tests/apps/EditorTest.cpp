#include "apps/editor/bridge/Session.h" // internal: the browser's side of the bridge is tested in apps/editor/tests

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using editor::Json;

std::string load(const std::string& name) {
    std::ifstream file(std::string(FCURVELIB_SOURCE_DIR) + "/examples/data/" + name, std::ios::binary);
    std::stringstream bytes;
    bytes << file.rdbuf();
    return bytes.str();
}

struct EditorTest : testing::Test {
    editor::Session session;

    EditorTest() {
        session.setView({0.0, 100.0, -10.0, 10.0, 1000.0, 400.0});
        open("ball.fcrvx", load("ball.fcrvx"));
    }
    Json call(const std::string& command, const Json& arguments = Json::object()) {
        return Json::parse(session.call(command, arguments.dump()));
    }
    Json open(const std::string& name, const std::string& bytes) {
        session.setInput(bytes);
        return call("open", {{"name", name}});
    }
    std::string document(const std::string& format = "xml") {
        EXPECT_FALSE(call("save", {{"format", format}}).contains("error")) << format;
        return session.output();
    }
    Json row(int key, int curve = 0) {
        return call("rows", {{"curve", curve}, {"first", key}, {"count", 1}})["rows"][0];
    }
};

TEST_F(EditorTest, ADragIsOneStepAndUndoTakesItBackToTheLastBit) {
    const std::string before = document();
    call("selectKey", {{"curve", 0}, {"key", 2}});
    const double x = row(2)["x"];
    call("dragBegin", {{"what", "keys"}, {"x", 100}, {"y", 100}, {"frameStep", 1.0}}); // 10 pixels a frame
    for (int i = 1; i <= 20; ++i) call("dragTo", {{"x", 100 + i}, {"y", 100 + i}});
    call("dragEnd");
    EXPECT_EQ(double{row(2)["x"]}, std::round(x + 2.0));
    EXPECT_EQ(call("state")["undo"], "Move keys");
    call("undo");
    EXPECT_EQ(document(), before);
    call("redo");
    EXPECT_EQ(double{row(2)["x"]}, std::round(x + 2.0));
}

TEST_F(EditorTest, LockedKeysAndCurvesStay) {
    call("selectAll");
    call("keyFlag", {{"flag", "locked"}});
    const std::string before = document();
    EXPECT_TRUE(call("dragBegin").contains("error"));
    EXPECT_TRUE(call("removeKeys").contains("error"));
    call("tangentType", {{"type", "flat"}});
    call("setProperty", {{"field", "y"}, {"value", 3}});
    EXPECT_TRUE(call("setRow", {{"curve", 0}, {"key", 0}, {"field", "y"}, {"value", 3}}).contains("error"));
    EXPECT_EQ(document(), before);
}

// With separate scales each curve fills the view, and a pick must look where it is drawn.
TEST_F(EditorTest, PicksWhatIsDrawnOnEitherKindOfScale) {
    for (const bool separate : {false, true}) {
        call("options", {{"separate", separate}});
        const Json box = call("frame");
        session.setView({double{box["left"]} - 5, double{box["right"]} + 5, double{box["bottom"]} - 0.1,
                         double{box["top"]} + 0.1, 1000.0, 400.0});
        const std::vector<double> numbers =
            session.draw({double{box["left"]} - 5, double{box["right"]} + 5, double{box["bottom"]} - 0.1,
                          double{box["top"]} + 0.1, 1000.0, 400.0},
                         editor::ViewPolyline::Value);
        std::size_t at = 0;
        const auto next = [&] { return numbers.at(at++); };
        std::size_t picked = 0;
        while (at < numbers.size()) {
            const double curve = next();
            at += 3;
            for (auto strokes = static_cast<int>(next()); strokes > 0; --strokes) {
                next();
                at += 2 * static_cast<std::size_t>(next());
            }
            at += 3 * static_cast<std::size_t>(next());
            for (auto keys = static_cast<int>(next()); keys > 0; --keys, ++at) {
                const double x = next();
                const double y = next();
                const Json hit = call("pick", {{"x", x}, {"y", y}, {"radius", 0.5}, {"mode", "look"}});
                EXPECT_EQ(hit["type"], "key") << hit;
                picked += hit["curve"] == curve ? 1U : 0U;
            }
            at += 5 * static_cast<std::size_t>(next());
        }
        EXPECT_GE(picked, 25U) << separate; // of 31 keys; some lie on keys of the other curve
    }
}

// What did not change is not computed again: after each edit the picture has to be that of a session which forgot it.
TEST_F(EditorTest, ShowsEachEditAtOnce) {
    const editor::CurveView view{0.0, 80.0, -5.0, 12.0, 1000.0, 400.0};
    const auto draw = [&](int quantity) {
        std::vector<double> numbers = session.draw(view, static_cast<editor::ViewPolyline::Quantity>(quantity));
        for (std::size_t at = 0; at < numbers.size();) {
            numbers.at(at + 3) = 0.0; // the stamp
            at += 4;
            for (double strokes = numbers.at(at++); strokes > 0; --strokes)
                at += 2 + 2 * static_cast<std::size_t>(numbers.at(at + 1));
            for (const std::size_t width : {3U, 3U, 5U}) at += 1 + width * static_cast<std::size_t>(numbers.at(at));
        }
        return numbers;
    };
    const std::pair<const char*, Json> kEdits[] = {
        {"selectKey", {{"curve", 0}, {"key", 2}}},
        {"setProperty", {{"field", "y"}, {"value", 3}}},
        {"keyFlag", {{"flag", "locked"}}},
        {"undo", Json::object()},
        {"selectKey", {{"curve", 1}, {"key", 1}, {"mode", "add"}}},
        {"tangentType", {{"type", "flat"}}},
        {"undo", Json::object()},
        {"interpolator", {{"expression", "linear"}}},
        {"setCurve", {{"curve", 0}, {"visible", false}}},
        {"moveCurve", {{"curve", 1}, {"before", 0}}},
        {"options", {{"separate", true}}},
        {"removeKeys", Json::object()},
        {"selectNone", Json::object()},
    };
    for (const auto& [command, arguments] : kEdits) {
        draw(0), draw(1);
        call(command, arguments);
        for (const int quantity : {0, 1}) {
            const std::vector<double> now = draw(quantity);
            session.draw({0.0, 81.0, -5.0, 12.0, 1000.0, 400.0}, static_cast<editor::ViewPolyline::Quantity>(quantity));
            EXPECT_EQ(now, draw(quantity)) << command;
        }
    }
}

// A key follows the pointer whatever the scale: here, 40 pixels of 400 are a tenth of what is shown.
TEST_F(EditorTest, DragsOnTheCurvesOwnScale) {
    call("options", {{"separate", true}});
    session.setView({0.0, 100.0, 0.0, 1.0, 1000.0, 400.0});
    for (const int curve : {0, 1}) {
        const Json state = call("state")["curves"][static_cast<std::size_t>(curve)];
        const double range = double{state["high"]} - double{state["low"]};
        const double y = row(2, curve)["y"];
        call("selectKey", {{"curve", curve}, {"key", 2}});
        call("dragBegin", {{"what", "keys"}, {"x", 500}, {"y", 200}, {"curve", curve}});
        call("dragTo", {{"x", 500}, {"y", 240}});
        call("dragEnd");
        EXPECT_NEAR(double{row(2, curve)["y"]}, y - 0.1 * range, 1e-12 * range);
    }
}

TEST_F(EditorTest, CopiedKeysComeBackWhereTheCursorIs) {
    call("selectKey", {{"curve", 0}, {"key", 0}});
    call("selectKey", {{"curve", 0}, {"key", 1}, {"mode", "add"}});
    const Json clip = call("copy");
    const Json pasted = call("paste", {{"text", clip["text"]}, {"frame", 200}});
    EXPECT_EQ(pasted["keys"], 2);
    EXPECT_EQ(call("state")["selectedKeys"], 2);
    const double size = call("rows", {{"curve", 0}, {"first", 0}, {"count", 0}})["size"];
    EXPECT_EQ(double{row(static_cast<int>(size) - 2)["x"]}, 200.0);
}

TEST_F(EditorTest, APreviewChangesNothingAndTellsWhatApplyingDoes) {
    for (const char* tool : {"bake", "smooth", "fit", "reduce"}) {
        const Json arguments = {{"tool", tool}, {"step", 1}, {"tolerance", 0.05}};
        const std::string before = document();
        call("selectCurve", {{"curve", 0}});
        const Json preview = call("preview", arguments);
        EXPECT_EQ(document(), before) << tool;
        EXPECT_GT(preview["difference"], 0.0) << tool << preview;
        EXPECT_FALSE(call("apply", arguments).contains("error"));
        EXPECT_EQ(call("state")["curves"][0]["keys"], preview["keysAfter"]) << tool;
        EXPECT_NE(document(), before) << tool;
        call("undo");
        EXPECT_EQ(document(), before) << tool;
    }
}

// Between two keys: near enough at each sample, and not a bit of the rest is another.
TEST_F(EditorTest, FitKeepsToItsStretchAndItsTolerance) {
    call("selectKey", {{"curve", 0}, {"key", 2}});
    call("selectKey", {{"curve", 0}, {"key", 8}, {"mode", "add"}});
    const double start = row(2)["x"];
    const double end = row(8)["x"];
    const auto values = [&] {
        std::vector<double> all;
        for (int i = -200; i <= 1000; ++i) all.push_back(session.valuesAt(i / 10.0)[0]);
        return all;
    };
    const std::vector<double> before = values();
    const Json arguments = {{"tool", "fit"}, {"step", 1}, {"tolerance", 0.05}, {"weighted", true}, {"broken", true}};
    ASSERT_FALSE(call("apply", arguments).contains("error"));
    const std::vector<double> after = values();
    int inside = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        const double x = (static_cast<double>(i) - 200.0) / 10.0;
        const bool isSample = x == std::floor(x);
        const bool isOutside = x < start || x >= end;
        const double room = isOutside ? 0.0 : isSample ? 0.05 * (1 + 1e-9) : 1.0;
        EXPECT_NEAR(after[i], before[i], room) << x;
        inside += isSample && after[i] != before[i] ? 1 : 0;
    }
    EXPECT_GT(inside, 5);
    call("undo");
    EXPECT_EQ(values(), before);

    call("selectKey", {{"curve", 0}, {"key", 4}});
    call("keyFlag", {{"flag", "locked"}});
    for (const char* tool : {"fit", "bake", "smooth"})
        EXPECT_TRUE(call("preview", {{"tool", tool}}).contains("error")) << tool;
    EXPECT_FALSE(call("preview", {{"tool", "reduce"}}).contains("error"));
}

TEST_F(EditorTest, HandlesAndSegmentsAreReachedFromTheirKeys) {
    const auto selected = [&](const char* what) { return int{call("state")[what]}; };
    call("selectKey", {{"curve", 0}, {"key", 2}});
    call("selectHandles");
    EXPECT_EQ(selected("selectedHandles"), 1);
    const Json before = call("properties")["tangents"];
    call("stepKey", {{"by", 1}});
    call("stepKey", {{"by", -1}});
    EXPECT_EQ(call("properties")["tangents"], before);
    const double y = row(2)["y"];
    call("nudge", {{"x", 0}, {"y", 1}});
    EXPECT_NE(call("properties")["tangents"]["angle"], before["angle"]);
    EXPECT_EQ(row(2)["in"], int{editor::Tangent::Fixed});
    EXPECT_EQ(double{row(2)["y"]}, y);
    call("selectHandles");
    EXPECT_EQ(selected("selectedHandles"), 1);
    call("selectHandles");
    EXPECT_EQ(selected("selectedKeys"), 1);
    call("selectSegments");
    EXPECT_EQ(selected("selectedSegments"), 1);
    call("stepKey", {{"by", 1}, {"add", true}});
    EXPECT_EQ(selected("selectedSegments"), 2);
    call("interpolator", {{"text", "linear"}});
    EXPECT_EQ(row(2)["kind"], "linear()");
    EXPECT_EQ(row(3)["kind"], "linear()");
    call("selectSegments");
    EXPECT_EQ(selected("selectedKeys"), 2);
    call("selectKey", {{"curve", 0}, {"key", 2}});
    EXPECT_FALSE(call("selectHandles").contains("error")); // the in handle; the segment after it has none now
    EXPECT_FALSE(call("selectHandles").contains("error"));
    EXPECT_EQ(selected("selectedKeys"), 1);
}

TEST_F(EditorTest, TheKeyboardScalesAboutTheCursor) {
    call("selectKey", {{"curve", 0}, {"key", 2}});
    call("selectKey", {{"curve", 0}, {"key", 3}, {"mode", "add"}});
    const double pivot = row(1)["x"];
    const double near = double{row(2)["x"]} - pivot;
    const double far = double{row(3)["x"]} - pivot;
    call("stretch", {{"x", 1}, {"y", 0}, {"frame", pivot}});
    EXPECT_NEAR(double{row(3)["x"]}, pivot + far + 1, 1e-9);
    EXPECT_NEAR(double{row(2)["x"]}, pivot + near * (far + 1) / far, 1e-9);
    call("selectKey", {{"curve", 0}, {"key", 2}});
    EXPECT_TRUE(call("stretch", {{"x", 1}, {"y", 0}, {"frame", row(2)["x"]}}).contains("error"));
}

TEST_F(EditorTest, SaysThatItIsLockedWhateverIsTried) {
    call("setCurve", {{"curve", 0}, {"locked", true}});
    call("selectAll", {{"curve", 0}});
    const std::string before = document();
    const std::pair<const char*, Json> edits[] = {
        {"nudge", {{"x", 1}, {"y", 0}}},
        {"stretch", {{"x", 1}, {"y", 0}, {"frame", 0}}},
        {"scale", {{"x", 2}, {"y", 1}, {"pivotX", 0}, {"pivotY", 0}}},
        {"removeKeys", Json::object()},
        {"cut", Json::object()},
        {"tangentType", {{"type", "flat"}}},
        {"tangentFlag", {{"flag", "weighted"}}},
        {"keyFlag", {{"flag", "breakdown"}}},
        {"keyFlag", {{"flag", "locked"}}},
        {"interpolator", {{"text", "linear"}}},
        {"setProperty", {{"field", "x"}, {"value", 3}}},
        {"setProperty", {{"field", "angle"}, {"value", 0.5}, {"side", "out"}}},
        {"setRow", {{"curve", 0}, {"key", 0}, {"field", "y"}, {"value", 3}}},
        {"addKey", {{"frame", 3}}}};
    for (const auto& [command, arguments] : edits) {
        const std::string error = call(command, arguments).value("error", "");
        EXPECT_NE(error.find("locked"), std::string::npos) << command << arguments << error;
    }
    EXPECT_EQ(document(), before);
}

// What repeats the keys repeats a new one beyond them, too; between keys the shape stays.
TEST_F(EditorTest, TellsByHowMuchANewKeyChangesTheCurve) {
    call("interpolator", {{"where", "after"}, {"text", "cycle"}});
    EXPECT_LT(double{call("addKey", {{"curve", 0}, {"frame", 5}})["change"]}, 1e-9);
    const auto values = [&] {
        std::vector<double> all;
        for (int i = 700; i <= 1400; ++i) all.push_back(session.valuesAt(i / 10.0)[0]);
        return all;
    };
    const std::vector<double> before = values();
    const double change = call("addKey", {{"curve", 0}, {"frame", 90}})["change"];
    const std::vector<double> after = values();
    double largest = 0.0;
    for (std::size_t i = 0; i < before.size(); ++i) largest = std::max(largest, std::fabs(after[i] - before[i]));
    EXPECT_GT(largest, 1.0);
    EXPECT_NEAR(change, largest, 0.2 * largest);
}

TEST_F(EditorTest, SaysWhereAFormulaIsWrong) {
    const Json error = call("checkFormula", {{"text", "\xC3\xA4 + 1"}});
    EXPECT_EQ(error["position"], 0);
    EXPECT_EQ(call("checkFormula", {{"text", "sin(x) + * 2"}})["position"], 9);
    for (const char* good : {"sin(x)", "bezier()", "bezier", "3.5", "cycle()"})
        EXPECT_TRUE(call("checkFormula", {{"text", good}}).empty()) << good;
}

// Whatever a page may send: an answer comes, and the document is as it was or as an edit leaves it.
TEST_F(EditorTest, RefusesWrongCallsAndBrokenFilesWithoutLosingAnything) {
    const std::string before = document();
    for (const char* bytes : {"", "nonsense", "<?xml version=\"1.0\"?><fcurves", "fcurvetext 1.0\ncurve {", "[1, 2"})
        EXPECT_TRUE(open("broken.fcrvx", bytes).contains("error")) << bytes;
    const Json wrong[] = {Json(nullptr),
                          Json::array({1}),
                          {{"curve", -1}},
                          {{"curve", 99}},
                          {{"curve", "first"}},
                          {{"x", "1"}},
                          {{"x", nullptr}},
                          {{"text", 5}},
                          {{"tool", "bake"}, {"step", 1e-9}},
                          {{"what", "handle"}, {"x", 1e9}, {"y", 1e9}}};
    for (const char* command :
         {"setCurve", "removeCurve", "moveCurve", "rows",           "setRow",         "setProperty",
          "nudge",    "scale",       "addKey",    "dragTo",         "dragBegin",      "marquee",
          "pick",     "selectKey",   "stepKey",   "selectHandles",  "selectSegments", "stretch",
          "axis",     "paste",       "preview",   "no such command"})
        for (const Json& arguments : wrong) EXPECT_NO_THROW(call(command, arguments)) << command << arguments;
    EXPECT_TRUE(Json::parse(session.call("nudge", "{not json")).contains("error"));
    while (call("undo")["done"] == true) {
    }
    open("ball.fcrvx", load("ball.fcrvx"));
    EXPECT_EQ(document(), before);
}

TEST_F(EditorTest, WhatIsSavedOpensAgain) {
    const Json formats = call("formats")["write"];
    EXPECT_GE(formats.size(), 10U);
    for (const Json& format : formats) {
        const std::string name = format["name"];
        const std::string bytes = document(name);
        const Json opened = open("saved." + std::string(format["extension"]), bytes);
        EXPECT_FALSE(opened.contains("error")) << name << ": " << opened;
        call("undo");
    }
}

} // namespace
