#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/Easing.h"
#include "interchange/EasingFormats.h"
#include "interchange/Json.h"
#include "interchange/Numbers.h"

#include <FCurveLib/FormatType.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

void AppendEasing(std::string& text, const Easing& easing) {
    if (easing.isThirds()) { // as most are: no digits of rounding
        text += R"(,"o":{"x":0.333333333333,"y":)";
        AppendNumber(text, easing.y1);
        text += R"(},"i":{"x":0.666666666667,"y":)";
    } else {
        text += R"(,"o":{"x":)";
        AppendNumber(text, easing.x1);
        text += R"(,"y":)";
        AppendNumber(text, easing.y1);
        text += R"(},"i":{"x":)";
        AppendNumber(text, easing.x2);
        text += R"(,"y":)";
    }
    AppendNumber(text, easing.y2);
    text += '}';
}

// {"a":1,"k":[...]}. Precondition: the curve has a key.
void AppendProperty(std::string& text, const FCurve& curve, Notes& notes) {
    Track track = Resolve(curve, {}, notes);
    CutToEasings(track, curve, notes);
    // Players take no property of one keyframe.
    if (track.knots.size() == 1) {
        track.knots.push_back(track.knots[0]);
        track.knots[1].x += 1.0;
        track.knots[0].piece = Piece::Constant;
    }
    text += "{\"a\":1,\"k\":[";
    for (std::size_t i = 0; i < track.knots.size(); ++i) {
        const Knot& knot = track.knots[i];
        text += i > 0 ? ",\n{\"t\":" : "\n{\"t\":";
        AppendNumber(text, knot.x);
        text += ",\"s\":[";
        AppendNumber(text, knot.y);
        text += ']';
        if (i + 1 < track.knots.size()) {
            if (knot.piece == Piece::Constant)
                text += ",\"h\":1";
            else if (knot.piece == Piece::Linear)
                text += R"(,"o":{"x":0.167,"y":0.167},"i":{"x":0.833,"y":0.833})";
            else
                AppendEasing(text, EasingOf(track, i));
        }
        text += '}';
    }
    text += "]}";
}

// A null layer that carries the curves of a node.
struct Layer {
    std::string node;
    std::map<std::string, const FCurve*> transform; // "px", "r", "o"
    std::vector<std::pair<std::string, const FCurve*>> sliders;
};

// The place of a channel in a layer's transform; empty where it has none.
std::string ChannelPlace(const std::string& channel, std::string& back) {
    back = channel;
    if (channel == "opacity") return "o";
    const auto transform = FindTransform(channel);
    if (!transform || transform->kind == TransformChannel::Scale) return "";
    if (transform->kind == TransformChannel::Rotate && transform->axis != 2) return "";
    const bool isRotation = transform->kind == TransformChannel::Rotate;
    back = isRotation ? "rotateZ" : std::string("translate") + "XYZ"[transform->axis];
    return isRotation ? "r" : std::string("p") + "xyz"[transform->axis];
}

void AppendLayer(std::string& text, const Layer& layer, std::size_t index, const std::string& range, Notes& notes) {
    const auto add = [&](const char* member, const char* key, const char* otherwise) {
        text += member;
        const auto found = layer.transform.find(key);
        if (found == layer.transform.end())
            text.append("{\"a\":0,\"k\":").append(otherwise).append("}");
        else
            AppendProperty(text, *found->second, notes);
    };
    text += "{\"ddd\":0,\"ind\":" + std::to_string(index + 1) + ",\"ty\":3,\"nm\":" + JsonText(layer.node);
    add(",\"sr\":1,\"ks\":{\"o\":", "o", "100");
    add(",\"r\":", "r", "0");
    text += ",\"p\":";
    if (layer.transform.count("px") + layer.transform.count("py") + layer.transform.count("pz") > 0) {
        add("{\"s\":true,\"x\":", "px", "0");
        add(",\"y\":", "py", "0");
        add(",\"z\":", "pz", "0");
        text += '}';
    } else {
        text += "{\"a\":0,\"k\":[0,0,0]}";
    }
    text += ",\"a\":{\"a\":0,\"k\":[0,0,0]},\"s\":{\"a\":0,\"k\":[100,100,100]}},\"ao\":0";
    if (!layer.sliders.empty()) {
        text += ",\"ef\":[";
        for (std::size_t i = 0; i < layer.sliders.size(); ++i) {
            const auto& [name, curve] = layer.sliders[i];
            text += (i > 0 ? ",\n" : "") + std::string("{\"ty\":5,\"nm\":") + JsonText(name) + ",\"np\":3,\"ix\":"
                    + std::to_string(i + 1) + ",\"en\":1,\"ef\":[{\"ty\":0,\"nm\":\"Slider\",\"ix\":1,\"v\":";
            AppendProperty(text, *curve, notes);
            text += "}]}";
        }
        text += ']';
    }
    text.append(",").append(range).append(",\"st\":0,\"bm\":0}");
}

} // namespace

LottieWriter::LottieWriter() : CurveWriter(FormatType("lottie", "Lottie animation", "json")) {}

std::string LottieWriter::compose(const FCurveContainer& curves, Notes& notes) const {
    std::vector<Layer> layers;
    std::map<std::string, std::size_t> byNode;
    double first = HUGE_VAL;
    double last = -HUGE_VAL;
    std::size_t keys = 0;
    for (const FCurve& curve : curves) {
        if (curve.size() < 2) continue; // without keys
        keys += curve.size();
        first = std::min(first, curve.begin()->getRightKey()->getX());
        last = std::max(last, std::prev(curve.end())->getLeftKey()->getX());
        ChannelName name = SplitName(curve.getName());
        const auto [layer, isNew] = byNode.try_emplace(name.node, layers.size());
        if (isNew) layers.push_back({name.node, {}, {}});
        Layer& target = layers[layer->second];
        std::string back;
        const std::string place = ChannelPlace(name.channel, back);
        if (place.empty() || target.transform.count(place) > 0) {
            target.sliders.emplace_back(name.channel, &curve);
            continue;
        }
        target.transform.emplace(place, &curve);
        name.channel = back;
        if (JoinName(name) != curve.getName()) notes.rename(curve, JoinName(name));
    }
    if (layers.empty()) throw NotWritable("There is no key to write.");
    ParseNumber(curves.getProperty(kFirstFrame), first);
    ParseNumber(curves.getProperty(kLastFrame), last);
    if (!(last > first)) last = first + 1.0;
    double rate = 0.0;
    const bool isStated = ParseNumber(curves.getProperty(kFrameRate), rate);
    const std::string range = "\"ip\":" + NumberText(first) + ",\"op\":" + NumberText(last);
    constexpr std::size_t kLength = 160; // of a keyframe, about
    std::string text;
    text.reserve(std::min(kLength * (keys + layers.size()), Conversion::options().longest));
    text = "{\"v\":\"5.7.0\",\"fr\":" + NumberText(FrameRateOr(isStated ? rate : 0.0)) + ',' + range
           + ",\"w\":1920,\"h\":1080,\"nm\":\"\",\"ddd\":0,\"assets\":[],\"layers\":[\n";
    for (std::size_t i = 0; i < layers.size(); ++i) {
        if (i > 0) text += ",\n";
        AppendLayer(text, layers[i], i, range, notes);
    }
    return text += "]}\n";
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
