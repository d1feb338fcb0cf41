#include "FCurveLib/DrawCurves.h"

#include "draw/Colours.h"
#include "draw/Figure.h"
#include "draw/Label.h"
#include "draw/Layout.h"
#include "draw/Legend.h"
#include "draw/Panel.h"
#include "draw/Scene.h"
#include "draw/Svg.h"

#include <set>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

BadPictureSize::BadPictureSize(double leastWidth, double leastHeight) noexcept
    : m_leastWidth(leastWidth), m_leastHeight(leastHeight) {}

const char* BadPictureSize::what() const noexcept {
    return "VEM_FN::FCurveLib::BadPictureSize";
}

std::string DrawCurves(const std::vector<DrawnCurve>& curves, const DrawOptions& wanted) {
    using namespace Private::Drawing;
    const auto isSize = [](double pixels) { return pixels >= kSmallestSize && pixels <= kLargestSize; };
    const bool isRefused = !isSize(wanted.width) || (wanted.height != 0.0 && !isSize(wanted.height));
    DrawOptions options = wanted;
    if (isRefused) { // what would do is found out all the same
        options.width = DrawOptions().width;
        options.height = 0.0;
    }
    Scene scene(curves, options);

    // How many rows the marks need is known only once the figures are: then there may be less room for the panels.
    std::size_t marksRows = 1;
    Layout layout(scene, marksRows);
    std::vector<std::vector<Figure>> figures;
    std::set<Mark> marks;
    const auto requireRoom = [&] {
        if (isRefused || !layout.hasRoom) throw BadPictureSize(layout.leastWidth, layout.leastHeight);
    };
    const auto makeFigures = [&] {
        figures.clear();
        marks.clear();
        for (std::size_t i = 0; i < scene.panels.size(); ++i) {
            figures.emplace_back();
            for (const PanelCurve& curve : scene.panels[i].curves) {
                const Figure& figure =
                    figures.back().emplace_back(scene, scene.panels[i], curve, layout.panels[i].frame);
                figure.tellMarks(scene.looks[figure.look], marks);
            }
        }
    };
    requireRoom();
    makeFigures();
    marksRows = CountMarksRows(layout, marks);
    if (marksRows > 1) {
        layout = Layout(scene, marksRows);
        requireRoom();
        if (options.height != 0.0) makeFigures(); // else the panels are as high as before
    }

    Svg svg(layout.width, layout.height, options.title.empty() ? "Curves" : options.title);
    svg.leaf("rect", {{"width", layout.width}, {"height", layout.height}, {"fill", "#ffffff"}});
    if (!options.title.empty())
        svg.leaf("text",
                 {{"x", layout.left},
                  {"y", kMargin + kTitleSize - 2.0},
                  {"font-size", kTitleSize},
                  {"font-weight", "bold"},
                  {"fill", kTextColour}},
                 Fit(options.title, kTitleSize, layout.width - layout.left - kMargin));
    DrawNames(svg, scene, layout);
    for (std::size_t i = 0; i < scene.panels.size(); ++i) DrawPanel(svg, scene, layout, i, figures[i]);
    DrawFoot(svg, layout, marks);
    return svg.finish();
}

} // namespace v19
} // namespace VEM_FN::FCurveLib
