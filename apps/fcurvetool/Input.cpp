#include "Input.h"

#include "Failure.h"
#include "Progress.h"
#include "Text.h"

#include <CLI/CLI.hpp>
#include <FCurveInterchange/Conversion.h>
#include <FCurveLib/CurveFiles.h>
#include <FCurveLib/Exception.h>
#include <FCurveLib/ExceptionFormatter.h>
#include <FCurveLib/FormatExceptions.h>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/HoudiniChanFormat.h>
#include <FCurveLib/Keyframe.h>
#include <FCurveLib/MemoryStream.h>
#include <FCurveLib/Segment.h>
#include <FCurveLib/Transform.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;
using HoudiniChanFormat::HoudiniChanReader;
namespace fs = std::filesystem;

namespace {

std::string PrintableName(const std::string& path) {
    return path == "-" ? "<stdin>" : ToPrintable(path);
}

/// The names of the formats that can be read, in the order in which they are asked.
std::string ReadableFormats() {
    std::string names;
    for (auto it = FormatFactory::beginReaderTypes(); it != FormatFactory::endReaderTypes(); ++it) {
        if (!names.empty()) names += ", ";
        names += it->getFormatName();
    }
    return names;
}

/// What --frame-column and --fps say of the first column; nothing where neither was given.
std::optional<HoudiniChanReader::FrameColumn> ParseFrameColumn(const InputOptions& options) {
    const std::string& text = options.frameColumn;
    if (!text.empty() && text != "auto" && text != "yes" && text != "no")
        throw UsageError("--frame-column: \"" + ToPrintable(text) + "\" is not auto, yes or no");
    if (options.fps && !(*options.fps > 0.0 && std::isfinite(*options.fps))) throw UsageError("--fps: must be above 0");
    if (options.fps && text == "no") throw UsageError("--fps needs the first column that --frame-column no denies");
    if (options.fps || text == "yes") return HoudiniChanReader::Yes;
    if (text.empty()) return std::nullopt;
    return text == "no" ? HoudiniChanReader::No : HoudiniChanReader::Auto;
}

/// Keys in seconds go to the frames that were meant: seconds are written with few decimals, so what comes close to a
/// whole frame is one.
void TurnIntoFrames(FCurve& curve, double fps) {
    constexpr double kClose = 0.001;
    TransformCurve(curve, {fps, 1.0}, {0.0, 0.0});
    for (Segment& segment : curve) {
        const auto key = segment.getLeftKey();
        if (!key) continue;
        const double whole = std::round(key->getX());
        if (std::fabs(key->getX() - whole) <= kClose) key->setX(whole);
    }
}

std::vector<NamedCurve> NameCurves(const std::vector<Document>& documents) {
    std::vector<NamedCurve> curves;
    std::set<std::string> taken;
    for (const Document& document : documents) {
        std::size_t number = 0;
        for (FCurve& curve : *document.curves) {
            ++number;
            std::string name = NameOf(curve);
            if (name.empty()) name = "curve " + std::to_string(number);
            if (documents.size() > 1) name = Stem(document.name) + ": " + name;
            std::string unique = name;
            for (int i = 2; !taken.insert(unique).second; ++i) unique = name + " (" + std::to_string(i) + ")";
            curves.push_back({curve.getShared(), std::move(unique), document.name});
        }
    }
    return curves;
}

/// What files of camera moves say of a channel: tx, ty, ... rz.
const char* roleOf(const FCurve& curve) {
    return curve.getProperty("hchan_role");
}

MemoryStream LoadStandardInput() {
    MemoryStream bytes;
    std::array<char, 65536> piece;
    for (;;) {
        const std::size_t count = std::fread(piece.data(), 1, piece.size(), stdin);
        if (count == 0) break;
        if (count > static_cast<std::size_t>(std::numeric_limits<int>::max() - bytes.getSize()))
            throw LoadError(EFBIG, "<stdin>");
        bytes.writeData(piece.data(), static_cast<int>(count));
    }
    if (std::ferror(stdin) != 0) throw LoadError(errno, "<stdin>");
    return bytes;
}

bool IsEmptyFile(const std::string& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && std::filesystem::file_size(path, error) == 0;
}

FormatType LoadDocument(const std::string& path, FCurveContainer& curves, const LoadOptions& options) {
    if (path != "-") return LoadCurves(path.c_str(), curves, options);
    MemoryStream bytes = LoadStandardInput();
    if (bytes.getSize() == 0) throw Failure("<stdin>: empty");
    return LoadCurves(bytes, curves, options);
}

} // namespace

std::vector<std::size_t> FindCurves(const std::vector<NamedCurve>& curves, const std::string& wanted) {
    std::vector<std::size_t> found;
    const auto collect = [&](const auto& fits) {
        for (std::size_t i = 0; i < curves.size(); ++i)
            if (fits(curves[i])) found.push_back(i);
    };
    collect([&](const NamedCurve& named) {
        return named.curve->getName() == wanted || named.name == wanted || roleOf(*named.curve) == wanted;
    });
    if (!found.empty()) return found;
    if (const auto number = ParseNumber(wanted);
        number && *number >= 1.0 && *number <= static_cast<double>(curves.size()) && *number == std::floor(*number)) {
        return {static_cast<std::size_t>(*number) - 1};
    }
    collect([&](const NamedCurve& named) {
        return MatchesGlob(wanted, named.curve->getName()) || MatchesGlob(wanted, named.name)
               || MatchesGlob(wanted, roleOf(*named.curve));
    });
    return found;
}

void AddReadOptions(CLI::App& command, InputOptions& options) {
    command
        .add_option("--format", options.format,
                    "Read the input as this format instead of recognising it (see: fcurvetool formats)")
        ->type_name("NAME");
    command
        .add_option(
            "--frame-column", options.frameColumn,
            "Of a .chan file: whether its first column holds frames (auto: where it holds rising whole numbers)")
        ->type_name("auto|yes|no");
    command
        .add_option("--fps", options.fps, "Of a .chan file: its first column holds seconds; this many frames a second")
        ->type_name("NUMBER");
    command.add_flag("--strict", options.isStrict, "Make warnings errors: end with code 1 and write nothing");
}

void AddCurveOption(CLI::App& command, InputOptions& options) {
    command
        .add_option("-c,--curve", options.curves,
                    "Only this curve: a name, a number as `info` counts them, or a pattern with * and ?; repeatable")
        ->type_name("WHICH")
        ->expected(1)
        ->allow_extra_args(false) // what follows is a FILE
        ->take_all();
}

std::string DescribeException(const std::string& name) {
    ExceptionFormatter::LibraryFormatter library(name.c_str());
    ExceptionFormatter formatter;
    formatter.addFormatter(library);
    std::ostringstream text;
    formatter.formatException(text);
    return text.str();
}

Document ReadDocument(const std::string& path, const InputOptions& options) {
    Document document{PrintableName(path), {}, FCurveContainer::create()};
    if (!options.format.empty() && !FormatFactory::getReader(options.format.c_str()))
        throw UsageError("--format: unknown format \"" + ToPrintable(options.format) + "\" (the tool reads "
                         + ReadableFormats() + ")");
    const auto frameColumn = ParseFrameColumn(options);
    const char* const chan = HoudiniChanFormat::GetFormatType().getFormatName();
    if (auto* const reader = dynamic_cast<HoudiniChanReader*>(FormatFactory::getReader(chan)))
        reader->setFrameColumn(frameColumn.value_or(HoudiniChanReader::Auto));
    Progress progress("reading " + document.name);
    // Files that belong to the document are beside it.
    Interchange::ConversionOptions conversion = Interchange::Conversion::options();
    if (path != "-") conversion.settings.try_emplace("gltf.folder", (fs::path(".") / path).parent_path().string());
    Interchange::ConversionReport unread;
    Interchange::ConversionReport* const report = Interchange::Conversion::report();
    const Interchange::Conversion here(report ? *report : unread, conversion);
    LoadOptions load;
    load.format = options.format;
    load.progress = [&progress](double share) { progress.set(share); };
    try {
        if (IsEmptyFile(path)) throw Failure(document.name + ": empty");
        document.format = LoadDocument(path, *document.curves, load);
    } catch (const LoadError& error) {
        throw Failure(document.name + ": cannot be read: " + error.text());
    } catch (const UnknownFormat&) {
        throw Failure(document.name + ": not in a known format (" + ReadableFormats() + ")");
    } catch (const Exception&) {
        throw Failure(DescribeException(document.name));
    }
    if (frameColumn && std::string(document.format.getFormatName()) != chan)
        throw UsageError("--frame-column and --fps are for .chan files; " + document.name + " is "
                         + document.format.getTitle());
    if (options.fps)
        for (FCurve& curve : *document.curves) TurnIntoFrames(curve, *options.fps);
    return document;
}

std::string NameOf(const FCurve& curve) {
    std::string name = ToPrintable(curve.getName());
    const std::string role = ToPrintable(roleOf(curve));
    if (!role.empty()) name += (name.empty() ? "(" : " (") + role + ")";
    return name;
}

std::vector<NamedCurve> ChooseCurves(const std::vector<Document>& documents, const InputOptions& options) {
    std::vector<NamedCurve> curves = NameCurves(documents);
    if (options.curves.empty()) return curves;

    std::vector<NamedCurve> chosen;
    std::set<std::size_t> taken;
    for (const std::string& wanted : options.curves) {
        if (wanted.empty()) throw UsageError("--curve: the name is empty");
        const std::vector<std::size_t> found = FindCurves(curves, wanted);
        if (found.empty()) {
            std::string names;
            for (std::size_t i = 0; i < curves.size() && i < 8; ++i) names += (i > 0 ? ", " : "") + curves[i].name;
            if (curves.size() > 8) names += ", ...";
            throw Failure(documents.front().name + ": no curve \"" + ToPrintable(wanted) + "\" ("
                          + (names.empty() ? "it has none" : "it has " + names) + ")");
        }
        for (const std::size_t index : found)
            if (taken.insert(index).second) chosen.push_back(curves[index]);
    }
    return chosen;
}

std::vector<NamedCurve> ReadCurves(const InputOptions& options) {
    std::vector<Document> documents;
    for (const std::string& file : options.files) documents.push_back(ReadDocument(file, options));
    return ChooseCurves(documents, options);
}

std::string Stem(const std::string& path) {
    return path == "-" || path == "<stdin>" ? "standard input" : std::filesystem::path(path).stem().string();
}

} // namespace fcurvetool
