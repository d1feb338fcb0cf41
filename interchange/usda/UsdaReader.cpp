#include "FCurveInterchange/Names.h"
#include "interchange/Numbers.h"
#include "interchange/Units.h"
#include "interchange/usda/Layer.h"
#include "interchange/usda/SplineTrack.h"
#include "interchange/usda/UsdaFormat.h"

#include <FCurveLib/FormatLimits.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

using namespace Usda;

namespace {

// One track for each component.
void ConvertSamples(const Samples& samples, const ValueType& type, const std::string& name,
                    std::vector<Track>& tracks) {
    std::vector<std::size_t> order(samples.times.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](std::size_t a, std::size_t b) { return samples.times[a] < samples.times[b]; });
    const auto last = std::unique(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        if (samples.times[a] != samples.times[b]) return false;
        LoseAt(name, Loss::Time, Loss::Dropped, "a second sample at the same time", {samples.times[b]});
        return true;
    });
    order.erase(last, order.end());
    for (std::size_t component = 0; component < type.components; ++component) {
        Track track;
        track.name = name;
        if (type.components > 1) track.name = name + '/' + type.letters[component];
        for (const std::size_t i : order) {
            if (samples.isNone[i]) {
                if (!track.knots.empty()) track.knots.back().piece = Piece::Constant;
                LoseAt(track.name, Loss::Kind, Loss::Replaced, "no value by the value before it", {samples.times[i]});
                continue;
            }
            Knot knot;
            knot.x = samples.times[i];
            knot.y = samples.values[i * type.components + component];
            knot.piece = type.isContinuous ? Piece::Linear : Piece::Constant;
            track.knots.push_back(knot);
        }
        tracks.push_back(std::move(track));
    }
}

void Report(const Layer& layer) {
    for (const Remark& remark : layer.remarks) {
        switch (remark.kind) {
        case Remark::Algorithm:
            LoseAt(remark.attribute, Loss::Kind, Loss::Replaced, "computed tangents by those that stand there",
                   {remark.time});
            break;
        case Remark::Width:
            LoseAt(remark.attribute, Loss::Tangents, Loss::Replaced, "a width that is negative or infinite by 0",
                   {remark.time});
            break;
        case Remark::NotFinite:
            LoseAt(remark.attribute, Loss::Time, Loss::Dropped, "numbers that are not finite", {remark.time});
            break;
        case Remark::SkippedType:
            LoseAt(remark.attribute, Loss::Curves, Loss::Dropped, "samples of a type without numbers");
            break;
        }
    }
}

void AddProperty(PropertyList& properties, const char* key, const std::optional<double>& number) {
    if (number) properties.emplace_back(key, NumberText(*number));
}

} // namespace

const FormatType& UsdaType() {
    static const FormatType type("usda", "USD text layer", "usda");
    return type;
}

UsdaReader::UsdaReader() : CurveReader(UsdaType()) {}
UsdaReader::~UsdaReader() = default;

bool UsdaReader::recognises(std::string_view opening, bool) const {
    return StartsLayer(opening);
}

Document UsdaReader::parse(std::string_view bytes) const {
    Layer layer = ParseLayer(bytes);
    Report(layer);
    Document document;
    document.rate = layer.rate.value_or(0.0);
    const double wanted = FrameRateOr(document.rate);
    AddProperty(document.properties, kFrameRate, layer.rate ? std::optional(wanted) : std::nullopt);
    AddProperty(document.properties, kFirstFrame, layer.start);
    AddProperty(document.properties, kLastFrame, layer.end);
    if (layer.metersPerUnit) {
        const double meters = *layer.metersPerUnit;
        const auto* const unit = std::find_if(std::begin(kLinearUnits), std::end(kLinearUnits), [=](const auto& one) {
            return std::fabs(one.meters - meters) <= 1e-9 * one.meters;
        });
        if (unit != std::end(kLinearUnits))
            document.properties.emplace_back(kLinearUnit, unit->name);
        else
            LoseAt("", Loss::Units, Loss::Dropped, "a unit of length without a name");
    }
    document.properties.insert(document.properties.end(), layer.customData.begin(), layer.customData.end());

    for (Attribute& attribute : layer.attributes) {
        std::string name = layer.pathOf(attribute);
        Dictionary properties;
        std::string withoutKeys;
        for (auto& [key, value] : attribute.customData) {
            if (key == kName) {
                name = value;
            } else if (key == kWithoutKeys) {
                withoutKeys = value;
            } else {
                properties.emplace_back(key, std::move(value));
            }
        }
        if (attribute.type != "double") properties.emplace_back(kType, attribute.type);
        const std::size_t first = document.tracks.size();
        if (attribute.samples) {
            if (attribute.spline) LoseAt(name, Loss::Curves, Loss::Dropped, "a spline beside samples, which win");
            ConvertSamples(*attribute.samples, *FindType(attribute.type), name, document.tracks);
        } else if (attribute.spline) {
            document.tracks.push_back(TrackOf(std::move(*attribute.spline), name));
        } else if (!withoutKeys.empty()) {
            document.tracks.emplace_back().name = name;
        }
        if (!attribute.samples && !withoutKeys.empty() && document.tracks.back().knots.empty())
            document.tracks.back().leading.expression = withoutKeys;
        for (std::size_t i = first; i < document.tracks.size(); ++i) {
            document.tracks[i].offset = (attribute.samples ? attribute.samplesText : attribute.splineText).begin;
            PropertyList& all = document.tracks[i].properties;
            all.insert(all.begin(), properties.begin(), properties.end());
            if (layer.prims[attribute.prim].isInVariant)
                LoseAt(name, Loss::Properties, Loss::Replaced, "that it belongs to a variant, by its name");
        }
    }
    return document;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
