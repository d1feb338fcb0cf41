#include "FCurveInterchange/ConversionReport.h"

#include "interchange/Numbers.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

const char* ToText(Loss::What what) noexcept {
    static constexpr const char* words[] = {"kind",  "tangents",  "ends", "formulas", "flags", "properties",
                                            "names", "precision", "time", "curves",   "units"};
    return words[what];
}

const char* ToText(Loss::Remedy remedy) noexcept {
    static constexpr const char* words[] = {"dropped",   "replaced", "split",   "fitted", "sampled",
                                            "shortened", "moved",    "renamed", "rounded"};
    return words[remedy];
}

std::string Describe(const Loss& loss) {
    constexpr std::size_t kShown = 5;
    std::string text = std::string(ToText(loss.what)) + ' ' + ToText(loss.remedy);
    if (!loss.detail.empty()) text += ": " + loss.detail;
    if (!loss.places.empty()) {
        text += loss.count == 1 ? " (frame " : " (" + std::to_string(loss.count) + " places, frames ";
        for (std::size_t i = 0; i < std::min(kShown, loss.places.size()); ++i)
            text += (i > 0 ? ", " : "") + ShortNumber(loss.places[i]);
        if (loss.count > kShown) text += " ...";
        text += ')';
    }
    if (loss.difference > 0.0)
        text += ", up to " + ShortNumber(loss.difference) + " off at frame " + ShortNumber(loss.at);
    return text;
}

ConversionReport::ConversionReport() = default;
ConversionReport::ConversionReport(const ConversionReport&) = default;
ConversionReport::ConversionReport(ConversionReport&&) noexcept = default;
ConversionReport& ConversionReport::operator=(const ConversionReport&) = default;
ConversionReport& ConversionReport::operator=(ConversionReport&&) noexcept = default;
ConversionReport::~ConversionReport() = default;

// Looks back over the losses of the same curve, which come one after the other and are few.
void ConversionReport::add(const Loss& loss) {
    constexpr std::size_t kPlaces = 16;
    for (auto known = m_losses.rbegin(); known != m_losses.rend() && known->curve == loss.curve; ++known) {
        if (known->what != loss.what || known->remedy != loss.remedy || known->detail != loss.detail) continue;
        known->count += loss.count;
        for (const double place : loss.places)
            if (known->places.size() < kPlaces) known->places.push_back(place);
        if (loss.difference > known->difference) {
            known->difference = loss.difference;
            known->at = loss.at;
        }
        return;
    }
    m_losses.push_back(loss);
    if (m_losses.back().places.size() > kPlaces) m_losses.back().places.resize(kPlaces);
}

void ConversionReport::clear() noexcept {
    m_losses.clear();
}

double ConversionReport::difference(const std::string& curve) const {
    double largest = 0.0;
    for (const Loss& loss : m_losses)
        if (loss.curve == curve) largest = std::max(largest, loss.difference);
    return largest;
}

std::string ToJson(const ConversionReport& report) {
    nlohmann::ordered_json losses = nlohmann::ordered_json::array();
    for (const Loss& loss : report.losses()) {
        losses.push_back({{"curve", loss.curve},
                          {"what", ToText(loss.what)},
                          {"remedy", ToText(loss.remedy)},
                          {"detail", loss.detail},
                          {"count", loss.count},
                          {"places", loss.places},
                          {"difference", loss.difference},
                          {"at", loss.at}});
    }
    // Names may be any bytes; what is no UTF-8 is replaced.
    return nlohmann::ordered_json{{"losses", losses}}.dump(2, ' ', false,
                                                           nlohmann::ordered_json::error_handler_t::replace)
           + '\n';
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
