#include "Commands.h"
#include "Failure.h"
#include "FrameRange.h"
#include "Input.h"
#include "Picture.h"
#include "Progress.h"
#include "SelectOption.h"
#include "Text.h"
#include "Warnings.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/DisplayProperties.h>
#include <FCurveLib/DrawCurves.h>

#include <algorithm>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

struct PlotCommandOptions {
    InputOptions input;
    DrawOptions plot;
    std::string size;
    std::string frames;
    std::string values;
    std::vector<std::string> selected;
    std::string output = "-";
};

void ParseSize(const std::string& text, DrawOptions& plot) {
    constexpr double kSmallest = 100.0;
    constexpr double kLargest = 20000.0;
    const std::size_t cross = text.find('x');
    const auto width = ParseNumber(std::string_view(text).substr(0, cross));
    const auto height = cross == std::string::npos ? std::optional<double>(0.0) : ParseNumber(text.substr(cross + 1));
    const auto fits = [](double pixels) { return pixels >= kSmallest && pixels <= kLargest; };
    if (!width || !height || !fits(*width) || (cross != std::string::npos && !fits(*height)))
        throw UsageError("--size: \"" + ToPrintable(text) + "\" is not WIDTHxHEIGHT in pixels, 100 to 20000 each");
    plot.width = *width;
    plot.height = *height;
}

DrawOptions::Marks ParseMarks(const std::string& text, const std::string& option) {
    if (text == "on") return DrawOptions::On;
    if (text == "off") return DrawOptions::Off;
    if (text == "auto") return DrawOptions::Auto;
    throw UsageError(option + ": \"" + ToPrintable(text) + "\" is not on, off or auto");
}

DrawOptions::Interval ToDrawn(const Interval& interval) {
    return {interval.low, interval.high};
}

void Plot(PlotCommandOptions& options) {
    if (!options.size.empty()) ParseSize(options.size, options.plot);
    if (!options.frames.empty()) options.plot.frames = ToDrawn(ParseInterval(options.frames, "--range"));
    if (!options.values.empty()) options.plot.values = ToDrawn(ParseInterval(options.values, "--values"));
    CheckPicture(options.output, options.input.files);
    std::vector<NamedCurve> curves = ReadCurves(options.input);
    if (options.input.curves.empty()) {
        const auto isHidden = [](const NamedCurve& named) { return !IsVisible(*named.curve); };
        curves.erase(std::remove_if(curves.begin(), curves.end(), isHidden), curves.end());
    }
    Warnings warnings(options.input.isStrict);
    warnings.addUnknownExpressions(curves);
    warnings.settle();
    options.plot.selection = !options.selected.empty();
    if (options.plot.selection) SelectParts(curves, options.selected);
    if (options.plot.title.empty()) {
        for (const std::string& file : options.input.files)
            options.plot.title += (options.plot.title.empty() ? "" : ", ") + ToPrintable(Stem(file));
    }
    std::string picture;
    {
        const Progress progress("drawing");
        std::vector<DrawnCurve> drawn;
        for (const NamedCurve& named : curves) drawn.push_back({named.curve, named.name});
        picture = DrawPicture(drawn, options.plot);
    }
    WritePicture(picture, options.output);
}

} // namespace

void AddPlot(CLI::App& app) {
    CLI::App* command = app.add_subcommand("plot", "Draw curves as a picture");
    auto options = std::make_shared<PlotCommandOptions>();
    DrawOptions& plotOptions = options->plot;
    const auto addMarks = [&](const std::string& name, DrawOptions::Marks& target, const char* description) {
        const auto parse = [name, &target](const std::string& text) { target = ParseMarks(text, name); };
        command->add_option_function<std::string>(name, parse, description)->type_name("on|off|auto");
    };
    command->add_option("FILE", options->input.files, "Files to read")->required()->type_name("");
    AddCurveOption(*command, options->input);
    command->add_option("-o,--output", options->output, "File to write, .svg or .png (default: SVG to standard output)")
        ->type_name("FILE");
    command->add_option("--title", plotOptions.title, "Title above the curves (default: the files' names)");
    command->add_option("--size", options->size, "Size in pixels (default: 960 wide and as high as the panels need)")
        ->type_name("WIDTH[xHEIGHT]");
    command->add_option("--range", options->frames, "Frames to show (default: the keys and some frames around them)")
        ->type_name("FIRST:LAST");
    command->add_option("--values", options->values, "Values to show (default: as the curves need)")
        ->type_name("LOW:HIGH");
    command->add_flag("--velocity", plotOptions.velocity, "Add a panel with the first derivatives");
    command->add_flag("--acceleration", plotOptions.acceleration, "Add a panel with the second derivatives");
    command->add_flag("--separate", plotOptions.separate, "Give each curve panels, and a scale, of its own");
    command
        ->add_option("--select", options->selected,
                     "Highlight a curve, or keys of it, counted from 0: ball, ball:3, ball:3-7; repeatable")
        ->type_name("WHICH[:FIRST[-LAST]]")
        ->expected(1)
        ->take_all();
    command->add_flag("--parts", plotOptions.parts, "Name the parts of the first curve in the picture, for teaching");
    addMarks("--keys", plotOptions.keys, "Dots at the keys (auto: where they can be told apart)");
    addMarks("--handles", plotOptions.handles,
             "Tangent handles, where the interpolator uses them (auto: where they can be told apart)");
    AddReadOptions(*command, options->input);
    command->footer("Curves that their file says are hidden are drawn only if --curve names them.");
    command->callback([options] { Plot(*options); });
}

} // namespace fcurvetool
