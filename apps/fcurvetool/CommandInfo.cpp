#include "Commands.h"
#include "Failure.h"
#include "Files.h"
#include "Input.h"
#include "Table.h"
#include "Text.h"
#include "Warnings.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/BezierInterpBase.h>
#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/Interpolator.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/Segment.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <map>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kLongestExpression = 40;

std::string ExpressionOf(const Segment& segment) {
    const auto interpolator = segment.getInterpolator();
    return interpolator ? Shorten(ToPrintable(interpolator->getExpression()), kLongestExpression) : "none";
}

struct Extent {
    double low = std::numeric_limits<double>::infinity();
    double high = -std::numeric_limits<double>::infinity();

    bool empty() const { return !(low <= high); }
    void include(double value) {
        if (!std::isfinite(value)) return;
        low = std::min(low, value);
        high = std::max(high, value);
    }
};

/// Lowest and highest value between the curve's keys.
Extent FindExtent(const FCurve& curve) {
    // Kinds without a closed form of their extents look at every tenth frame, which takes as long as the segment is.
    constexpr double kLongSegment = 1e5;
    constexpr int kLooks = 10000;
    Extent extent;
    for (const Segment& segment : curve) {
        const auto left = segment.getLeftKey();
        const auto right = segment.getRightKey();
        if (left) extent.include(left->getY());
        if (!left || !right) continue;
        const double x0 = left->getX();
        const double x1 = right->getX();
        const auto interpolator = segment.getInterpolator();
        if (!interpolator) {
            extent.include(0.0);
        } else if (x1 - x0 < kLongSegment || dynamic_cast<const BezierInterpBase*>(interpolator.get())) {
            double low = 0.0;
            double high = 0.0;
            interpolator->getRangeExtents(segment, x0, x1, low, high);
            extent.include(low);
            extent.include(high);
        } else {
            for (int i = 0; i <= kLooks; ++i) extent.include(interpolator->eval(x0 + (x1 - x0) * i / kLooks, segment));
        }
    }
    return extent;
}

/// The interpolators between the keys, each with the number of segments that it serves, the most used first.
std::string ListInterpolators(const FCurve& curve) {
    std::map<std::string, std::size_t> counts;
    for (const Segment& segment : curve)
        if (segment.getLeftKey() && segment.getRightKey()) ++counts[ExpressionOf(segment)];
    std::multimap<std::size_t, std::string, std::greater<>> ranks;
    for (const auto& [expression, count] : counts) ranks.emplace(count, expression);
    constexpr std::size_t kMost = 4;
    std::string text;
    std::size_t listed = 0;
    for (const auto& [count, expression] : ranks) {
        if (listed++ == kMost) {
            text += ", " + std::to_string(ranks.size() - kMost) + " more";
            break;
        }
        text += (text.empty() ? "" : ", ") + expression + " x " + std::to_string(count);
    }
    return text.empty() ? "-" : text;
}

std::string ListFlags(const FCurve& curve) {
    std::string text;
    const auto add = [&text](bool isSet, const char* flag) {
        if (isSet) text += (text.empty() ? "" : " ") + std::string(flag);
    };
    add(!IsVisible(curve), "hidden");
    add(IsLocked(curve), "locked");
    add(!IsEditable(curve), "read-only");
    return text;
}

void PrintTable(const Document& document) {
    Print(document.name + ": " + document.format.getTitle() + ", " + std::to_string(document.curves->size())
          + (document.curves->size() == 1 ? " curve\n" : " curves\n"));
    if (document.curves->empty()) return;
    Table table;
    table.addColumn("#", Table::Align::Right);
    table.addColumn("name", Table::Align::Left);
    for (const char* heading : {"keys", "first", "last", "lowest", "highest"})
        table.addColumn(heading, Table::Align::Right);
    for (const char* heading : {"before", "after", "interpolators", "flags"})
        table.addColumn(heading, Table::Align::Left);
    std::size_t number = 0;
    for (const FCurve& curve : *document.curves) {
        const auto first = curve.begin()->getRightKey();
        const auto& trailing = *std::prev(curve.end());
        const Extent extent = FindExtent(curve);
        const auto orNone = [](bool exists, double value) { return exists ? ToBriefText(value) : std::string("-"); };
        table.addRow({std::to_string(++number), NameOf(curve), std::to_string(curve.size() - 1),
                      first ? ToBriefText(first->getX()) : "-",
                      first ? ToBriefText(trailing.getLeftKey()->getX()) : "-", orNone(!extent.empty(), extent.low),
                      orNone(!extent.empty(), extent.high), ExpressionOf(*curve.begin()), ExpressionOf(trailing),
                      ListInterpolators(curve), ListFlags(curve)});
    }
    Print(table.text());
}

/// A number, or null for none.
Json JsonNumber(bool exists, double value) {
    return exists ? Json(value) : Json(nullptr);
}

/// A text as JSON can hold it: bytes that are not UTF-8 become replacement characters.
std::string JsonText(const Json& json) {
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json Describe(const Document& document) {
    Json curves = Json::array();
    for (const FCurve& curve : *document.curves) {
        const bool hasKeys = curve.size() > 1;
        const auto first = curve.begin()->getRightKey();
        const Segment& trailing = *std::prev(curve.end());
        const auto last = trailing.getLeftKey();
        const Extent extent = FindExtent(curve);
        const auto expression = [](const Segment& segment) {
            const auto interpolator = segment.getInterpolator();
            return interpolator ? Json(interpolator->getExpression()) : Json(nullptr);
        };
        std::map<std::string, std::size_t> counts;
        for (const Segment& segment : curve)
            if (segment.getLeftKey() && segment.getRightKey() && segment.getInterpolator())
                ++counts[segment.getInterpolator()->getExpression()];
        Json properties = Json::object();
        for (auto property = curve.beginProperties(); property != curve.endProperties(); ++property)
            properties[property->first] = property->second;
        curves.push_back({{"name", curve.getName()},
                          {"keys", curve.size() - 1},
                          {"first", JsonNumber(hasKeys, hasKeys ? first->getX() : 0.0)},
                          {"last", JsonNumber(hasKeys, hasKeys ? last->getX() : 0.0)},
                          {"lowest", JsonNumber(!extent.empty(), extent.low)},
                          {"highest", JsonNumber(!extent.empty(), extent.high)},
                          {"before", expression(*curve.begin())},
                          {"after", expression(trailing)},
                          {"interpolators", counts},
                          {"hidden", !IsVisible(curve)},
                          {"locked", IsLocked(curve)},
                          {"properties", properties}});
    }
    return {{"file", document.name}, {"format", document.format.getFormatName()}, {"curves", curves}};
}

struct InfoOptions : InputOptions {
    bool isJson = false;
};

} // namespace

void AddInfo(CLI::App& app) {
    CLI::App* command = app.add_subcommand("info", "Describe the curves in files");
    auto options = std::make_shared<InfoOptions>();
    command->add_option("FILE", options->files, "Files to describe")->required()->type_name("");
    command->add_flag("--json", options->isJson, "Print JSON: an array with an object for each file");
    AddReadOptions(*command, *options);
    command->footer(
        "For each curve: its number and name; how many keys; frames of the first and the last one; lowest\n"
        "and highest value between them; interpolators before the first key, after the last key and between\n"
        "the keys, these with the number of segments.");
    command->callback([options] {
        Warnings warnings(options->isStrict);
        std::size_t described = 0;
        std::string failures;
        Json json = Json::array();
        for (const std::string& file : options->files) {
            try {
                const Document document = ReadDocument(file, *options);
                warnings.addUnknownExpressions(ChooseCurves({document}, *options));
                warnings.settle();
                if (options->isJson) {
                    json.push_back(Describe(document));
                    continue;
                }
                if (described++ > 0) Print("\n");
                PrintTable(document);
            } catch (const Failure& failure) { // the other files are described all the same
                failures += (failures.empty() ? "" : "\nfcurvetool: ") + std::string(failure.what());
            }
        }
        if (options->isJson) Print(JsonText(json));
        if (!failures.empty()) throw Failure(failures);
    });
}

} // namespace fcurvetool
