#include "WriteDocument.h"

#include "Failure.h"
#include "Files.h"
#include "Input.h"
#include "Losses.h"
#include "Text.h"

#include <FCurveInterchange/Conversion.h>
#include <FCurveInterchange/Formats.h>
#include <FCurveLib/Exception.h>
#include <FCurveLib/FileError.h>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/MemoryStream.h>
#include <FCurveLib/OldFormat.h>
#include <FCurveLib/ReadWrite.h>
#include <FCurveLib/StreamIostream.h>
#include <FCurveLib/TovConversion.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iomanip>
#include <limits>
#include <locale>
#include <optional>
#include <utility>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

std::string WritableFormats() {
    std::string names;
    for (const FormatType& type : GetWritableFormats()) {
        if (!names.empty()) names += ", ";
        names += std::string(type.getFormatName()) + " (." + type.getExtension() + ")";
    }
    return names;
}

bool CanWrite(const std::string& format) {
    const auto types = GetWritableFormats();
    return std::any_of(types.begin(), types.end(),
                       [&](const FormatType& type) { return format == type.getFormatName(); });
}

// What a conversion to the old text lost, in words.
std::string DescribeLosses(std::uint32_t flags) {
    using Curve = TovConversion::TovCurve;
    static constexpr std::pair<Curve::LossFlag, const char*> kLosses[] = {
        {Curve::UnsupportedInterpolation, "interpolators that the format does not have"},
        {Curve::UnsupportedExtensions, "how the curve goes on outside its keys"},
        {Curve::ShiftedKeyframes, "places of keys"},
        {Curve::ShiftedTangents, "handles of tangents"},
        {Curve::HealedDiscontinuities, "jumps"},
        {Curve::SynthesizedBezier, "shapes, replaced by Bezier curves"},
        {Curve::PropertyLoss, "properties"}};
    std::string text;
    for (const auto& [flag, words] : kLosses)
        if (flags & flag) text += (text.empty() ? "" : "; ") + std::string(words);
    return text;
}

// The same for the report of a conversion.
void AddOldLosses(const FCurve& curve, std::uint32_t flags) {
    using Curve = TovConversion::TovCurve;
    using Interchange::Loss;
    static constexpr struct {
        Curve::LossFlag flag;
        Loss::What what;
        Loss::Remedy remedy;
    } kLosses[] = {{Curve::UnsupportedInterpolation, Loss::Kind, Loss::Replaced},
                   {Curve::UnsupportedExtensions, Loss::Ends, Loss::Replaced},
                   {Curve::ShiftedKeyframes, Loss::Time, Loss::Moved},
                   {Curve::ShiftedTangents, Loss::Tangents, Loss::Moved},
                   {Curve::HealedDiscontinuities, Loss::Kind, Loss::Moved},
                   {Curve::SynthesizedBezier, Loss::Kind, Loss::Fitted},
                   {Curve::PropertyLoss, Loss::Properties, Loss::Dropped}};
    Interchange::ConversionReport* const report = Interchange::Conversion::report();
    for (const auto& [flag, what, remedy] : kLosses)
        if (report && (flags & flag)) report->add({curve.getName(), what, remedy, DescribeLosses(flag), 1, {}, 0, 0});
}

void WriteOldText(const FCurveContainer& curves, Stream& stream, const std::string& name, Warnings& warnings) {
    Stream_iostream out(stream);
    out.imbue(std::locale::classic());
    out << std::setprecision(std::numeric_limits<double>::max_digits10);
    std::size_t number = 0;
    for (const FCurve& curve : curves) {
        ++number;
        const TovConversion::TovCurve converted(curve);
        out << converted;
        const std::string losses = DescribeLosses(converted.getLossFlags());
        const std::string curveName = NameOf(curve).empty() ? "curve " + std::to_string(number) : NameOf(curve);
        AddOldLosses(curve, converted.getLossFlags());
        if (!losses.empty()) warnings.add(name + ": " + curveName + ": lost in \"tov_fcurve\": " + losses);
    }
    if (!out) throw MemoryStream::EndOfBuffer();
}

} // namespace

std::vector<FormatType> GetWritableFormats() {
    std::vector<FormatType> types(FormatFactory::beginWriterTypes(), FormatFactory::endWriterTypes());
    types.push_back(OldFormat::GetFormatType()); // no writer of the library's: a conversion of its own
    return types;
}

std::string ChooseFormat(const std::string& asked, const std::string& output, const std::string& fallback) {
    if (!asked.empty()) {
        if (CanWrite(asked)) return asked;
        throw UsageError("--to: \"" + ToPrintable(asked) + "\" cannot be written; choose from " + WritableFormats());
    }
    if (const Writer* const writer = FormatFactory::getWriterByExtension(output.c_str()))
        return writer->getFormatType().getFormatName();
    const FormatType& old = OldFormat::GetFormatType();
    if (LowerCase(std::filesystem::path(output).extension().string()) == std::string(".") + old.getExtension())
        return old.getFormatName();
    if (CanWrite(fallback)) return fallback;
    throw UsageError("--to is required for this OUTPUT: " + WritableFormats());
}

std::string FormatDocument(const FCurveContainer& curves, const std::string& format, const std::string& name,
                           Warnings& warnings) {
    MemoryStream bytes;
    // Into the report of the conversion, if this is one.
    Interchange::ConversionReport own;
    std::optional<Interchange::Conversion> conversion;
    if (!Interchange::Conversion::report()) conversion.emplace(own, Interchange::Conversion::options());
    const Interchange::ConversionReport& report = *Interchange::Conversion::report();
    const std::size_t before = report.losses().size();
    try {
        if (format == OldFormat::GetFormatType().getFormatName()) {
            WriteOldText(curves, bytes, name, warnings);
        } else {
            WriteCurves(curves, bytes, format.c_str());
            for (std::size_t i = before; i < report.losses().size(); ++i)
                warnings.add(name + ": lost in \"" + format + "\": " + DescribeLoss(report.losses()[i]));
        }
    } catch (const LoadError& error) {
        throw Failure(Describe(error));
    } catch (const Interchange::NotWritable& error) {
        const std::string message = error.message();
        // What is wrong with a document that a setting names begins with its path.
        for (const auto& [key, path] : Interchange::Conversion::options().settings)
            if (!path.empty() && message.compare(0, path.size() + 1, path + ':') == 0)
                throw Failure(ToPrintable(message));
        throw Failure(DescribeException(name));
    } catch (const Exception&) {
        throw Failure(DescribeException(name));
    }
    return {bytes.getData(), static_cast<std::size_t>(bytes.getSize())};
}

} // namespace fcurvetool
