#pragma once

// A reader's target, or a writer, that writes down what it is told; and the reverse, which tells what is written down.

#include "FCurveLib/FCurveLib.h"

#include <charconv>
#include <cstdlib>
#include <functional>
#include <map>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
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

/// Makes the calls of a text in the recorder's notation: "startCurve ball, tangentVector nan -0.5". Texts are single
/// words here; "null" is the null pointer, and one that lacks is empty.
class CallPlayer {
public:
    static void play(const std::string& calls, FormatInterface& target) {
        std::istringstream in(calls);
        for (std::string call; std::getline(in >> std::ws, call, ',');) {
            std::istringstream words(call);
            std::string name;
            words >> name;
            makers().at(name)(target, words);
        }
    }

    /// Of all calls that it knows.
    static std::vector<std::string> names() {
        std::vector<std::string> result;
        for (const auto& maker : makers()) result.push_back(maker.first);
        return result;
    }

private:
    using Maker = std::function<void(FormatInterface&, std::istream&)>;

    // A text is held as a string until the call is over.
    template<class Argument>
    static auto read(std::istream& words) {
        std::string word;
        words >> word;
        if constexpr (std::is_same_v<Argument, const char*>) {
            return word;
        } else {
            return static_cast<Argument>(std::strtod(word.c_str(), nullptr));
        }
    }
    static const char* pass(const std::string& text) { return text == "null" ? nullptr : text.c_str(); }
    template<class Number>
    static Number pass(Number number) {
        return number;
    }

    template<class Result, class... Arguments>
    static Maker maker(Result (FormatInterface::*call)(Arguments...)) {
        return [call](FormatInterface& target, [[maybe_unused]] std::istream& words) {
            const std::tuple<decltype(read<Arguments>(words))...> arguments{read<Arguments>(words)...};
            std::apply([&](const auto&... argument) { (target.*call)(pass(argument)...); }, arguments);
        };
    }

    static const std::map<std::string, Maker>& makers() {
        using To = FormatInterface;
        static const std::map<std::string, Maker> all = {
            {"startCurveContainer", maker(&To::startCurveContainer)},
            {"finishCurveContainer", maker(&To::finishCurveContainer)},
            {"containerProperty", maker(&To::containerProperty)},
            {"startCurve", maker(&To::startCurve)},
            {"finishCurve", maker(&To::finishCurve)},
            {"curveVisible", maker(&To::curveVisible)},
            {"curveLocked", maker(&To::curveLocked)},
            {"curveShowVelocity", maker(&To::curveShowVelocity)},
            {"curveShowAcceleration", maker(&To::curveShowAcceleration)},
            {"curveShowDiscontinuities", maker(&To::curveShowDiscontinuities)},
            {"curveGrid", maker(&To::curveGrid)},
            {"curveTangentScale", maker(&To::curveTangentScale)},
            {"curveProperty", maker(&To::curveProperty)},
            {"startSegmentContainer", maker(&To::startSegmentContainer)},
            {"finishSegmentContainer", maker(&To::finishSegmentContainer)},
            {"startSegment", maker(&To::startSegment)},
            {"finishSegment", maker(&To::finishSegment)},
            {"segmentProperty", maker(&To::segmentProperty)},
            {"startInTangent", maker(&To::startInTangent)},
            {"finishInTangent", maker(&To::finishInTangent)},
            {"startOutTangent", maker(&To::startOutTangent)},
            {"finishOutTangent", maker(&To::finishOutTangent)},
            {"tangentVector", maker(&To::tangentVector)},
            {"tangentType", maker(&To::tangentType)},
            {"tangentWeightLocked", maker(&To::tangentWeightLocked)},
            {"tangentWeighted", maker(&To::tangentWeighted)},
            {"tangentProperty", maker(&To::tangentProperty)},
            {"startKeyframe", maker(&To::startKeyframe)},
            {"finishKeyframe", maker(&To::finishKeyframe)},
            {"keyframePosition", maker(&To::keyframePosition)},
            {"keyframeTangentsUnified", maker(&To::keyframeTangentsUnified)},
            {"keyframeBreakdown", maker(&To::keyframeBreakdown)},
            {"keyframeLocked", maker(&To::keyframeLocked)},
            {"keyframeProperty", maker(&To::keyframeProperty)},
        };
        return all;
    }
};

} // namespace Test
