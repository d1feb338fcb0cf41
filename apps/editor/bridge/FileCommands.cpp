#include "Session.h"

#include <FCurveInterchange/Conversion.h>
#include <FCurveInterchange/ConversionReport.h>
#include <FCurveLib/ContainerInterface.h>
#include <FCurveLib/Exception.h>
#include <FCurveLib/ExceptionFormatter.h>
#include <FCurveLib/FormatFactory.h>
#include <FCurveLib/FormatType.h>
#include <FCurveLib/InterpolatorFactory.h>
#include <FCurveLib/MemoryStream.h>
#include <FCurveLib/OldFormat.h>
#include <FCurveLib/ReadWrite.h>
#include <FCurveLib/Reader.h>
#include <FCurveLib/StreamIostream.h>
#include <FCurveLib/TovConversion.h>

#include <cmath>
#include <iomanip>
#include <limits>
#include <locale>
#include <sstream>

namespace editor {

namespace {

Json toJson(const Interchange::ConversionReport& report) {
    Json losses = Json::array();
    for (const Interchange::Loss& loss : report.losses())
        losses.push_back((loss.curve.empty() ? "" : ToUtf8(loss.curve.c_str()) + ": ")
                         + ToUtf8(Interchange::Describe(loss).c_str()));
    return losses;
}

Json toJson(const FormatType& type) {
    return {{"name", type.getFormatName()}, {"title", type.getTitle()}, {"extension", type.getExtension()}};
}

std::string messageFor(const std::string& name) {
    ExceptionFormatter::LibraryFormatter library(name.c_str());
    ExceptionFormatter formatter;
    formatter.addFormatter(library);
    std::ostringstream text;
    formatter.formatException(text);
    return text.str();
}

// Content decides; where it tells nothing, the reader of files called so can at least say what is wrong.
Reader* readerOf(MemoryStream& bytes, const std::string& name) {
    if (Reader* reader = FormatFactory::getReader(bytes)) return reader;
    const std::size_t dot = name.rfind('.');
    if (dot == std::string::npos) return nullptr;
    for (auto it = FormatFactory::beginReaderTypes(); it != FormatFactory::endReaderTypes(); ++it)
        if (name.substr(dot + 1) == it->getExtension()) return FormatFactory::getReader(it->getFormatName());
    return nullptr;
}

// The old text has no writer of its own, and its conversion tells losses by flags.
void writeOldText(const FCurveContainer& curves, Stream& stream, Interchange::ConversionReport& report) {
    using Curve = TovConversion::TovCurve;
    using Interchange::Loss;
    static constexpr struct {
        Curve::LossFlag flag;
        Loss::What what;
        Loss::Remedy remedy;
        const char* detail;
    } kLosses[] = {
        {Curve::UnsupportedInterpolation, Loss::Kind, Loss::Replaced, "interpolators that the format does not have"},
        {Curve::UnsupportedExtensions, Loss::Ends, Loss::Replaced, "how the curve goes on outside its keys"},
        {Curve::ShiftedKeyframes, Loss::Time, Loss::Moved, "places of keys"},
        {Curve::ShiftedTangents, Loss::Tangents, Loss::Moved, "handles of tangents"},
        {Curve::HealedDiscontinuities, Loss::Kind, Loss::Moved, "jumps"},
        {Curve::SynthesizedBezier, Loss::Kind, Loss::Fitted, "shapes, replaced by Bezier curves"},
        {Curve::PropertyLoss, Loss::Properties, Loss::Dropped, "properties"}};
    Stream_iostream out(stream);
    out.imbue(std::locale::classic());
    out << std::setprecision(std::numeric_limits<double>::max_digits10);
    for (const FCurve& curve : curves) {
        const Curve converted(curve);
        out << converted;
        for (const auto& [flag, what, remedy, detail] : kLosses)
            if ((converted.getLossFlags() & flag) != 0)
                report.add({curve.getName(), what, remedy, detail, 1, {}, 0.0, 0.0});
    }
    if (!out) throw MemoryStream::EndOfBuffer();
}

} // namespace

Json Session::formats(const Json&) {
    Json read = Json::array();
    Json write = Json::array();
    for (auto it = FormatFactory::beginReaderTypes(); it != FormatFactory::endReaderTypes(); ++it)
        read.push_back(toJson(*it));
    for (auto it = FormatFactory::beginWriterTypes(); it != FormatFactory::endWriterTypes(); ++it)
        write.push_back(toJson(*it));
    write.push_back(toJson(OldFormat::GetFormatType()));
    return {{"read", read}, {"write", write}};
}

// {"name", "mode": "replace" | "add" | "restore"}: reads what setInput was given. Replacing is an edit that can be
// undone, so nobody need be asked; after "restore" nothing can, and the document counts as not saved.
Json Session::open(const Json& arguments) {
    const std::string name = Get(arguments, "name", std::string("document"));
    const std::string mode = Get(arguments, "mode", std::string("replace"));
    const auto loaded = FCurveContainer::create();
    std::string format;
    Interchange::ConversionReport report;
    try {
        if (m_input.empty()) throw Refusal(name + ": empty");
        if (m_input.size() > std::size_t{std::numeric_limits<int>::max()}) throw Refusal(name + ": too large");
        MemoryStream bytes;
        bytes.writeData(m_input.data(), static_cast<int>(m_input.size()));
        bytes.setPosition(0);
        m_input = std::string();
        Reader* const reader = readerOf(bytes, name);
        if (!reader) throw Refusal(name + ": not in a format that this page knows.");
        const Interchange::Conversion conversion(report);
        ContainerInterface target(*loaded);
        reader->readCurves(bytes, target);
        format = reader->getFormatType().getTitle();
    } catch (const Refusal&) {
        m_input = std::string();
        throw;
    } catch (...) {
        m_input = std::string();
        throw Refusal(messageFor(name));
    }
    if (loaded->empty()) throw Refusal(name + ": has no curves.");
    if (m_drag) dragEnd(Json::object());
    dropPreview();
    EditGroup group(m_selection, mode == "add" ? "Add file" : "Open file");
    if (mode != "add") {
        m_curves->clear();
        m_curves->clearProperties();
    }
    for (auto it = loaded->beginProperties(); it != loaded->endProperties(); ++it)
        m_curves->setProperty(it->first.c_str(), it->second.c_str());
    m_active = loaded->begin()->getShared();
    for (FCurve& curve : *loaded) m_curves->addCurve(curve.getShared());
    group.end();
    forgetScales();
    if (mode == "restore") m_undo.clear();
    if (mode == "replace") m_undo.setClean();
    const char* const rate = m_curves->getProperty("frame_rate");
    return {{"format", format},
            {"curves", loaded->size()},
            {"report", toJson(report)},
            {"frameRate", rate ? ToUtf8(rate) : std::string()}};
}

// {"format", "frameRate", "tolerance"}: makes the bytes that output() gives, and tells what the format loses. The
// options as Interchange::ConversionOptions; what is no number above 0 is left to the document and the format.
Json Session::save(const Json& arguments) {
    const std::string format = Get(arguments, "format", std::string());
    Interchange::ConversionOptions options;
    if (const double rate = Get(arguments, "frameRate", 0.0); rate > 0.0) options.frameRate = rate;
    if (const double tolerance = Get(arguments, "tolerance", 0.0); tolerance > 0.0) options.tolerance = tolerance;
    MemoryStream bytes;
    Interchange::ConversionReport report;
    try {
        const Interchange::Conversion conversion(report, options);
        if (format == OldFormat::GetFormatType().getFormatName())
            writeOldText(*m_curves, bytes, report);
        else
            WriteCurves(*m_curves, bytes, format.c_str());
    } catch (const Exception&) {
        throw Refusal(messageFor(std::string()));
    }
    m_output.assign(bytes.getData() ? bytes.getData() : "", static_cast<std::size_t>(bytes.getSize()));
    return {{"size", m_output.size()}, {"report", toJson(report)}};
}

Json Session::saved(const Json&) {
    m_undo.setClean();
    ++m_revision;
    return Json::object();
}

// {"keys"}: one curve of so many keys, for measuring.
Json Session::fill(const Json& arguments) {
    const double keys = GetNumber(arguments, "keys");
    if (!(keys >= 1.0 && keys <= 1e6)) throw Refusal("From 1 to 1000000 keys.");
    const auto curve = FCurve::create();
    curve->setName("noise");
    const auto bezier = InterpolatorFactory::create("bezier()");
    Keyframe key;
    for (int i = 0; i < static_cast<int>(keys); ++i) {
        key.set(i, 10.0 * std::sin(i * 0.01) + 3.0 * std::sin(i * 0.37) + std::cos(i * 1.7));
        curve->insertSegment(key, bezier);
    }
    m_curves->clear();
    m_curves->addCurve(curve);
    m_active = curve;
    m_undo.clear();
    m_overviews.clear();
    forgetScales();
    m_isSelectedStale = true;
    ++m_revision;
    return Json::object();
}

} // namespace editor
