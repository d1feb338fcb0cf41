#include "FCurveInterchange/Conversion.h"

#include "interchange/Numbers.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <string_view>
#include <utility>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

thread_local Conversion* innermost = nullptr;

constexpr struct {
    std::string_view name;
    std::string_view words; // that it takes, between blanks; empty for any text
    const char* others;     // in words, what else it takes; null for nothing
} kSettings[] = {{"chan.frames", " yes no ", nullptr},
                 {"css.pieces", " yes no ", nullptr},
                 {"csv.decimal", " . , ", nullptr},
                 {"csv.rows", " keys frames ", nullptr},
                 {"csv.separator", " tab ", "one character"},
                 {"csv.shape", " wide long table ", nullptr},
                 {"csv.time", " rows ", "the number of a column"},
                 {"gltf.folder", "", nullptr},
                 {"gltf.into", "", nullptr},
                 {"usda.into", "", nullptr}};

// "a, b, c" of words between blanks.
std::string ListOf(std::string_view words, const std::string& comma) {
    std::string list(words.substr(1, words.size() - 2));
    for (std::size_t at = 0; (at = list.find(' ', at)) != std::string::npos; at += comma.size())
        list.replace(at, 1, comma);
    return list;
}

} // namespace

std::string FaultOfSettings(const ConversionOptions& options) {
    for (const auto& said : options.settings) {
        const std::string& name = said.first;
        const std::string& value = said.second;
        const auto* const setting =
            std::find_if(std::begin(kSettings), std::end(kSettings), [&](const auto& one) { return one.name == name; });
        if (setting == std::end(kSettings)) {
            std::string names = " ";
            for (const auto& one : kSettings) names.append(one.name).append(" ");
            return "There is no setting " + Quoted(name) + "; there are " + ListOf(names, ", ") + '.';
        }
        if (value.empty() || setting->words.empty()) continue;
        const bool isWord =
            value.find(' ') == std::string::npos && setting->words.find(' ' + value + ' ') != std::string_view::npos;
        double number = 0.0;
        const bool isOther =
            (name == "csv.separator" && value.size() == 1)
            || (name == "csv.time" && ParseNumber(value, number) && number >= 1.0 && number == std::floor(number));
        if (isWord || isOther) continue;
        return name + " is " + ListOf(setting->words, " or ")
               + (setting->others ? std::string(" or ") + setting->others : "") + ", not " + Quoted(value) + '.';
    }
    return "";
}

Conversion::Conversion(ConversionReport& report, ConversionOptions options)
    : m_options(std::move(options)), m_report(&report), m_outer(innermost) {
    innermost = this;
}

Conversion::Conversion(ConversionOptions options)
    : m_options(std::move(options)), m_report(nullptr), m_outer(innermost) {
    innermost = this;
}

Conversion::~Conversion() {
    innermost = m_outer;
}

const ConversionOptions& Conversion::options() noexcept {
    static const ConversionOptions defaults;
    return innermost ? innermost->m_options : defaults;
}

ConversionReport* Conversion::report() noexcept {
    return innermost ? innermost->m_report : nullptr;
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
