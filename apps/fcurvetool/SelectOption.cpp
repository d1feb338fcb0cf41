#include "SelectOption.h"

#include "Failure.h"
#include "Input.h"
#include "Text.h"

#include <FCurveLib/IndexLookup.h>
#include <FCurveLib/Selection.h>
#include <FCurveLib/SelectionOperations.h>
#include <FCurveLib/SelectionSnapshot.h>

#include <charconv>
#include <optional>
#include <string_view>

namespace fcurvetool {

namespace {

using namespace VEM_FN::FCurveLib;

struct KeyRange {
    int first = 0;
    int last = 0;
};

std::optional<int> ParseCount(std::string_view text) {
    int count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error != std::errc() || end != text.data() + text.size() || count < 0) return std::nullopt;
    return count;
}

bool ParseKeys(std::string_view text, KeyRange& keys) {
    const std::size_t dash = text.find('-');
    const auto first = ParseCount(text.substr(0, dash));
    const auto last = dash == std::string_view::npos ? first : ParseCount(text.substr(dash + 1));
    if (!first || !last) return false;
    keys = {*first, *last};
    return true;
}

} // namespace

void SelectParts(const std::vector<NamedCurve>& curves, const std::vector<std::string>& texts) {
    const auto container = FCurveContainer::create();
    for (const NamedCurve& named : curves) container->addCurve(named.curve);
    Selection selection(container);
    SelectionSnapshot().restore(selection); // what the file had selected

    for (const std::string& text : texts) {
        const std::size_t colon = text.rfind(':');
        KeyRange keys;
        const bool hasKeys = colon != std::string::npos && ParseKeys(std::string_view(text).substr(colon + 1), keys);
        if (keys.first > keys.last) throw UsageError("--select: \"" + ToPrintable(text) + "\" ends before it starts");
        const std::string which = hasKeys ? text.substr(0, colon) : text;
        const std::vector<std::size_t> found = FindCurves(curves, which);
        if (found.empty()) throw Failure("--select: no curve \"" + ToPrintable(which) + "\" is drawn");
        for (const std::size_t index : found) {
            FCurve& curve = *curves[index].curve;
            if (!hasKeys) {
                SelectCurveCompletely(selection, curve);
                continue;
            }
            if (!GetIndexedKeyframe(curve, keys.last))
                throw Failure("--select: " + curves[index].name + " has no key " + std::to_string(keys.last)
                              + ", it has " + std::to_string(curve.size() - 1) + ", counted from 0");
            for (int i = keys.first; i <= keys.last; ++i) selection.select(*GetIndexedKeyframe(curve, i));
        }
    }
}

} // namespace fcurvetool
