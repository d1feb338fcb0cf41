#pragma once

#include <FCurveLib/DrawCurves.h>

#include <string>
#include <vector>

namespace fcurvetool {

/// The picture as SVG; UsageError where the size asked for leaves no room.
std::string DrawPicture(const std::vector<VEM_FN::FCurveLib::DrawnCurve>& curves,
                        const VEM_FN::FCurveLib::DrawOptions& options);

/// UsageError where no picture should go to that file: it is one of the curve files, or holds curves; its name ends as
/// neither .svg nor .png does; or it is a .png and there is no rsvg-convert, which makes these.
void CheckPicture(const std::string& path, const std::vector<std::string>& curveFiles);

/// Writes the SVG as the file's name says.
void WritePicture(const std::string& svg, const std::string& path);

} // namespace fcurvetool
