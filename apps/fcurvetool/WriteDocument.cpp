#include "WriteDocument.h"

#include "Failure.h"
#include "Input.h"
#include "Output.h"
#include "Text.h"

#include <FCurveLib/Exception.h>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/MemoryStream.h>
#include <FCurveLib/OldFormat.h>
#include <FCurveLib/ReadWrite.h>
#include <FCurveLib/StreamIostream.h>
#include <FCurveLib/TovConversion.h>

#include <algorithm>
#include <filesystem>
#include <iomanip>
#include <limits>
#include <locale>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

std::string writableFormats() {
    std::string names;
    for (const FormatType& type : getWritableFormats()) {
        if (!names.empty()) names += ", ";
        names += std::string(type.getFormatName()) + " (." + type.getExtension() + ")";
    }
    return names;
}

bool canWrite(const std::string& format) {
    const auto types = getWritableFormats();
    return std::any_of(types.begin(), types.end(),
                       [&](const FormatType& type) { return format == type.getFormatName(); });
}

void writeOldText(const FCurveContainer& curves, Stream& stream) {
    Stream_iostream out(stream);
    out.imbue(std::locale::classic());
    out << std::setprecision(std::numeric_limits<double>::max_digits10);
    for (const FCurve& curve : curves) out << TovConversion::TovCurve(curve);
    if (!out) throw MemoryStream::EndOfBuffer();
}

} // namespace

std::vector<FormatType> getWritableFormats() {
    std::vector<FormatType> types(FormatFactory::beginWriterTypes(), FormatFactory::endWriterTypes());
    types.push_back(OldFormat::GetFormatType()); // no writer of the library's: a conversion of its own
    return types;
}

std::string chooseFormat(const std::string& asked, const std::string& output, const std::string& fallback) {
    if (!asked.empty()) {
        if (canWrite(asked)) return asked;
        throw UsageError("--to: \"" + toPrintable(asked) + "\" cannot be written (" + writableFormats() + " can)");
    }
    const std::string extension = lowerCase(std::filesystem::path(output).extension().string());
    for (const FormatType& type : getWritableFormats())
        if (extension == "." + lowerCase(type.getExtension())) return type.getFormatName();
    if (canWrite(fallback)) return fallback;
    throw UsageError("say with --to in which format to write (" + writableFormats() + ")");
}

void writeDocument(const FCurveContainer& curves, const std::string& format, const std::string& output,
                   const std::string& name) {
    MemoryStream bytes;
    try {
        if (format == OldFormat::GetFormatType().getFormatName()) {
            writeOldText(curves, bytes);
        } else {
            WriteCurves(curves, bytes, format.c_str());
        }
    } catch (const Exception&) {
        throw Failure(describeException(name));
    }
    Output file(output);
    file.write({bytes.getData(), static_cast<std::size_t>(bytes.getSize())});
    file.finish();
}

} // namespace fcurvetool
