// Curves made of others: one take turns into another, and a motion is shown at other times.
//
//     combine            shows what is exact and what is fitted
//     combine FOLDER     writes the curves into blend.fcrvx and retime.fcrvx there

#include "FCurveLib/FCurveLib.h"

#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

using namespace VEM_FN::FCurveLib;

namespace {

std::shared_ptr<FCurve> Make(const char* name, const std::vector<Vector2D<double>>& points) {
    auto curve = FCurve::create();
    curve->setName(name);
    for (const auto& point : points) curve->insertSegment(*Keyframe::create(point.x, point.y), Bezier::create());
    return curve;
}

bool Tell(const char* what, const CombineReport& report) {
    std::printf("%s: %s, largest error %.4f at frame %g\n", what, report.exact ? "exact" : "fitted", report.error,
                report.errorAt);
    return report.withinTolerance && report.proved;
}

void Save(const std::string& path, const std::vector<std::shared_ptr<FCurve>>& curves) {
    const auto container = FCurveContainer::create();
    for (const auto& curve : curves) container->addCurve(curve);
    SaveCurves(path.c_str(), *container, "xml");
}

} // namespace

int main(int count, char** arguments) {
    const auto calm = Make("calm", {{0, 2}, {8, 4}, {16, 2}, {24, 4}});
    const auto wild = Make("wild", {{0, 8}, {4, 14}, {8, 7}, {12, 13}, {16, 8}, {20, 15}, {24, 9}});
    const auto weight = Make("weight", {{4, 0}, {20, 1}});
    const CombineResult blend = BlendCurves(*calm, *wild, *weight, 0.01);
    blend.curve->setName("blend");

    const auto warp = Make("shown frame", {{0, 0}, {10, 16}, {24, 24}});
    const CombineResult retimed = RetimeCurve(*wild, *warp, 0.01);
    retimed.curve->setName("retimed");

    const CombineResult sum = AddCurves(*calm, *wild);
    const bool well = Tell("blend", blend.report) && Tell("retimed", retimed.report) && Tell("sum", sum.report)
                      && sum.report.exact && std::abs(sum.curve->eval(7.5) - calm->eval(7.5) - wild->eval(7.5)) < 1e-12;
    if (count == 2) {
        Save(std::string(arguments[1]) + "/blend.fcrvx", {calm, wild, weight, blend.curve});
        Save(std::string(arguments[1]) + "/retime.fcrvx", {wild, warp, retimed.curve});
    }
    return well ? 0 : 1;
}
