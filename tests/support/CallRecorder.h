#pragma once

// A reader's target, or a writer, that writes down what it is told.

#include "FCurveLib/FCurveLib.h"

#include <charconv>
#include <string>
#include <utility>
#include <vector>

namespace Test {

using namespace VEM_FN::FCurveLib;

/// Writes down the calls of a FormatInterface as short strings: "startCurve ball", "tangentVector 1 -0.5",
/// "curveVisible 1". Numbers are the shortest text that reads back to the same bits.
template<class Base>
class BasicCallRecorder : public Base {
public:
    using Base::Base;

    std::vector<std::string> calls;

    /// Calls of these names, and of no others, are written down; empty for all.
    std::vector<std::string> only;

    /// All calls in one text, ", " between them.
    std::string joined() const {
        std::string text;
        for (const std::string& call : calls) text += (text.empty() ? "" : ", ") + call;
        return text;
    }

    /// The call of this number raises instead; 0 for none.
    struct Full {};
    int fullAt = 0;

    /// What startCurve and finishCurve answer.
    bool wantsCurve = true;
    bool wantsMore = true;

    void startCurveContainer() override { add("startCurveContainer"); }
    void finishCurveContainer() override { add("finishCurveContainer"); }
    void containerProperty(const char* key, const char* value) override { add("containerProperty", key, value); }

    bool startCurve(const char* name) override {
        add("startCurve", name);
        return wantsCurve;
    }
    bool finishCurve() override {
        add("finishCurve");
        return wantsMore;
    }
    void curveVisible(bool visible) override { add("curveVisible", visible); }
    void curveLocked(bool locked) override { add("curveLocked", locked); }
    void curveShowVelocity(bool show) override { add("curveShowVelocity", show); }
    void curveShowAcceleration(bool show) override { add("curveShowAcceleration", show); }
    void curveShowDiscontinuities(bool show) override { add("curveShowDiscontinuities", show); }
    void curveGrid(double x, double y, double width, double height) override { add("curveGrid", x, y, width, height); }
    void curveTangentScale(double scale) override { add("curveTangentScale", scale); }
    void curveProperty(const char* key, const char* value) override { add("curveProperty", key, value); }

    void startSegmentContainer() override { add("startSegmentContainer"); }
    void finishSegmentContainer() override { add("finishSegmentContainer"); }
    void startSegment(const char* expression) override { add("startSegment", expression); }
    void finishSegment() override { add("finishSegment"); }
    void segmentProperty(const char* key, const char* value) override { add("segmentProperty", key, value); }

    void startInTangent() override { add("startInTangent"); }
    void finishInTangent() override { add("finishInTangent"); }
    void startOutTangent() override { add("startOutTangent"); }
    void finishOutTangent() override { add("finishOutTangent"); }
    void tangentVector(double x, double y) override { add("tangentVector", x, y); }
    void tangentType(unsigned char type) override { add("tangentType", static_cast<double>(type)); }
    void tangentWeightLocked(bool locked) override { add("tangentWeightLocked", locked); }
    void tangentWeighted(bool weighted) override { add("tangentWeighted", weighted); }
    void tangentProperty(const char* key, const char* value) override { add("tangentProperty", key, value); }

    void startKeyframe() override { add("startKeyframe"); }
    void finishKeyframe() override { add("finishKeyframe"); }
    void keyframePosition(double x, double y) override { add("keyframePosition", x, y); }
    void keyframeTangentsUnified(bool unified) override { add("keyframeTangentsUnified", unified); }
    void keyframeBreakdown(bool breakdown) override { add("keyframeBreakdown", breakdown); }
    void keyframeLocked(bool locked) override { add("keyframeLocked", locked); }
    void keyframeProperty(const char* key, const char* value) override { add("keyframeProperty", key, value); }

private:
    static std::string text(const char* value) { return value; }
    static std::string text(bool value) { return value ? "1" : "0"; }
    static std::string text(double value) {
        char digits[32];
        return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
    }

    template<class... Arguments>
    void add(const char* name, Arguments... arguments) {
        if (fullAt > 0 && --fullAt == 0) throw Full();
        if (!only.empty()) {
            bool wanted = false;
            for (const std::string& one : only) wanted = wanted || one == name;
            if (!wanted) return;
        }
        std::string call = name;
        ((call += ' ', call += text(arguments)), ...);
        calls.push_back(std::move(call));
    }
};

using CallRecorder = BasicCallRecorder<FormatInterface>;

/// A format "recorder" that is registered as long as it lives. Its document is what was written down.
class RecordingWriter : public BasicCallRecorder<Writer> {
public:
    RecordingWriter() : BasicCallRecorder(FormatType("recorder", "Recorder", "rec")) {}
};

} // namespace Test
