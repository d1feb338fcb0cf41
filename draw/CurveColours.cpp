#include "FCurveLib/CurveColours.h"

#include "draw/Colours.h"

namespace VEM_FN::FCurveLib {
inline namespace v19 {

std::vector<std::string> ChooseCurveColours(const std::vector<std::string>& names) {
    const auto colours = Private::Drawing::ChooseColours(names);
    return {colours.begin(), colours.end()};
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
