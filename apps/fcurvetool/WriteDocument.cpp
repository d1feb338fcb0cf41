#include "WriteDocument.h"

#include "Failure.h"
#include "Input.h"
#include "Output.h"
#include "Text.h"

#include <FCurveLib/Exception.h>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/MemoryStream.h>
#include <FCurveLib/ReadWrite.h>
#include <FCurveLib/Writer.h>

#include <filesystem>

namespace fcurvetool {

using namespace VEM_FN::FCurveLib;

namespace {

std::string writableFormats() {
    std::string names;
    for (auto it = FormatFactory::beginWriterTypes(); it != FormatFactory::endWriterTypes(); ++it) {
        if (!names.empty()) names += ", ";
        names += std::string(it->getFormatName()) + " (." + it->getExtension() + ")";
    }
    return names;
}

} // namespace

std::string chooseFormat(const std::string& asked, const std::string& output, const std::string& fallback) {
    if (!asked.empty()) {
        if (FormatFactory::getWriter(asked.c_str())) return asked;
        throw UsageError("--to: \"" + toPrintable(asked) + "\" cannot be written (" + writableFormats() + " can)");
    }
    const std::string extension = lowerCase(std::filesystem::path(output).extension().string());
    for (auto it = FormatFactory::beginWriterTypes(); it != FormatFactory::endWriterTypes(); ++it)
        if (extension == "." + lowerCase(it->getExtension())) return it->getFormatName();
    if (!fallback.empty() && FormatFactory::getWriter(fallback.c_str())) return fallback;
    throw UsageError("say with --to in which format to write (" + writableFormats() + ")");
}

void writeDocument(const FCurveContainer& curves, const std::string& format, const std::string& output,
                   const std::string& name) {
    MemoryStream bytes;
    try {
        WriteCurves(curves, bytes, format.c_str());
    } catch (const Exception&) {
        throw Failure(describeException(name));
    }
    Output file(output);
    file.write({bytes.getData(), static_cast<std::size_t>(bytes.getSize())});
    file.finish();
}

} // namespace fcurvetool
