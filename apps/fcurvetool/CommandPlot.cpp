#include "Commands.h"
#include "Failure.h"
#include "Input.h"
#include "Marking.h"
#include "Output.h"
#include "Plot.h"
#include "Progress.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveLib/DisplayProperties.h>

#include <algorithm>

namespace fcurvetool {

namespace {

struct PlotCommandOptions {
    InputOptions input;
    PlotOptions plot;
    std::string size;
    std::string frames;
    std::string values;
    std::vector<std::string> selected;
    std::string output = "-";
};

void parseSize(const std::string& text, PlotOptions& plot) {
    constexpr double kSmallest = 100.0;
    constexpr double kLargest = 20000.0;
    const std::size_t cross = text.find('x');
    const auto width = parseNumber(std::string_view(text).substr(0, cross));
    const auto height = cross == std::string::npos ? std::optional<double>(0.0) : parseNumber(text.substr(cross + 1));
    const auto fits = [](double pixels) { return pixels >= kSmallest && pixels <= kLargest; };
    if (!width || !height || !fits(*width) || (cross != std::string::npos && !fits(*height)))
        throw UsageError("--size: \"" + toPrintable(text) + "\" is not WIDTHxHEIGHT in pixels, 100 to 20000 each");
    plot.width = *width;
    plot.height = *height;
}

Marks parseMarks(const std::string& text, const std::string& option) {
    if (text == "on") return Marks::On;
    if (text == "off") return Marks::Off;
    if (text == "auto") return Marks::Auto;
    throw UsageError(option + ": \"" + toPrintable(text) + "\" is none of on, off, auto");
}

void plot(PlotCommandOptions& options) {
    if (!options.size.empty()) parseSize(options.size, options.plot);
    if (!options.frames.empty()) options.plot.frames = parseInterval(options.frames, "--range");
    if (!options.values.empty()) options.plot.values = parseInterval(options.values, "--values");
    std::vector<NamedCurve> curves = readCurves(options.input);
    if (options.input.curves.empty()) {
        const auto isHidden = [](const NamedCurve& named) { return !VEM_FN::FCurveLib::IsVisible(*named.curve); };
        curves.erase(std::remove_if(curves.begin(), curves.end(), isHidden), curves.end());
    }
    options.plot.selection = !options.selected.empty();
    if (options.plot.selection) selectParts(curves, options.selected);
    if (options.plot.title.empty()) {
        for (const std::string& file : options.input.files)
            options.plot.title += (options.plot.title.empty() ? "" : ", ") + toPrintable(stem(file));
    }
    std::string picture;
    {
        const Progress progress("drawing");
        picture = drawPlot(curves, options.plot);
    }
    Output output(options.output);
    output.write(picture);
    output.finish();
}

} // namespace

void addPlot(CLI::App& app) {
    CLI::App* command = app.add_subcommand("plot", "Draw curves as an SVG picture");
    auto options = std::make_shared<PlotCommandOptions>();
    PlotOptions& plotOptions = options->plot;
    const auto addMarks = [&](const std::string& name, Marks& target, const char* description) {
        const auto parse = [name, &target](const std::string& text) { target = parseMarks(text, name); };
        command->add_option_function<std::string>(name, parse, description)->type_name("on|off|auto");
    };
    command->add_option("FILE", options->input.files, "Files to read")->required()->type_name("");
    addCurveOption(*command, options->input);
    command->add_option("-o,--output", options->output, "File to write (default: standard output)")->type_name("FILE");
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
    addFormatOption(*command, options->input);
    command->footer("Curves that their file says are hidden are drawn only if --curve names them.");
    command->callback([options] { plot(*options); });
}

} // namespace fcurvetool
