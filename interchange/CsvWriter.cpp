#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "interchange/CsvFormat.h"
#include "interchange/CsvTable.h"
#include "interchange/Numbers.h"

#include <FCurveLib/FormatType.h>
#include <FCurveLib/Segment.h>

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

// In quotes where it would not come back otherwise.
void AppendName(std::string& text, const std::string& name) {
    double number = 0.0;
    const bool needsQuotes = name.empty() || name.find_first_of(",\"\r\n;\t") != std::string::npos
                             || name.front() == ' ' || name.back() == ' '
                             || ReadCsvNumber(name, DecimalMark::Any, number);
    if (!needsQuotes) {
        text += name;
        return;
    }
    text += '"';
    for (const char c : name) text += c == '"' ? "\"\"" : std::string(1, c);
    text += '"';
}

struct Column {
    const FCurve* curve;
    FCurve::const_iterator segment; // the one that ends at the next key
};

double FirstFrame(const FCurveContainer& curves) {
    double first = HUGE_VAL;
    for (const FCurve& curve : curves)
        if (curve.size() > 1) first = std::min(first, curve.begin()->getRightKey()->getX());
    return first;
}

double LastFrame(const FCurveContainer& curves) {
    double last = -HUGE_VAL;
    for (const FCurve& curve : curves)
        if (curve.size() > 1) last = std::max(last, std::prev(curve.end())->getLeftKey()->getX());
    return last;
}

// A row for each frame at which a curve has a key.
std::string KeyRows(const FCurveContainer& curves, std::string text) {
    std::vector<double> frames;
    std::vector<Column> columns;
    for (const FCurve& curve : curves) {
        columns.push_back({&curve, curve.begin()});
        for (const Segment& segment : curve)
            if (const auto key = segment.getRightKey()) frames.push_back(key->getX());
    }
    std::sort(frames.begin(), frames.end());
    frames.erase(std::unique(frames.begin(), frames.end()), frames.end());
    if (frames.size() > kMostCells / (columns.size() + 1))
        throw TooMuch("The table would have more than 50 000 000 cells; the shape \"long\" has a row a key.");
    for (const double frame : frames) {
        AppendNumber(text, frame);
        for (Column& column : columns) {
            text += ',';
            const auto key = column.segment->getRightKey();
            if (!key || key->getX() != frame) continue;
            AppendNumber(text, key->getY());
            ++column.segment;
        }
        text += '\n';
    }
    return text;
}

// A row a frame, with every curve's value there.
std::string FrameRows(const FCurveContainer& curves, std::string text) {
    const double first = std::floor(FirstFrame(curves));
    const double last = std::ceil(LastFrame(curves));
    const double rows = last - first + 1.0;
    if (!(rows * static_cast<double>(curves.size() + 1) <= static_cast<double>(kMostCells)))
        throw TooMuch("The table would have more than 50 000 000 cells.");
    for (double i = 0.0; i < rows; ++i) {
        AppendNumber(text, first + i);
        for (const FCurve& curve : curves) {
            const double y = curve.eval(first + i);
            if (!std::isfinite(y))
                throw NotWritable(Quoted(curve.getName()) + " is not finite at frame " + ShortNumber(first + i) + '.');
            text += ',';
            AppendNumber(text, y);
        }
        text += '\n';
    }
    return text;
}

std::string LongRows(const FCurveContainer& curves) {
    std::string text = "curve,frame,value\n";
    std::string name;
    for (const FCurve& curve : curves) {
        name.clear();
        AppendName(name, curve.getName());
        for (const Segment& segment : curve) {
            const auto key = segment.getRightKey();
            if (!key) continue;
            text += name;
            text += ',';
            AppendNumber(text, key->getX());
            text += ',';
            AppendNumber(text, key->getY());
            text += '\n';
        }
    }
    return text;
}

} // namespace

CsvWriter::CsvWriter() : CurveWriter(FormatType("csv", "Comma-separated values", "csv")) {}

std::string CsvWriter::compose(const FCurveContainer& curves, Notes& notes) const {
    if (!(FirstFrame(curves) <= LastFrame(curves))) throw NotWritable("There is no key to write.");
    const ConversionOptions& options = Conversion::options();
    if (options.setting("csv.shape") == "long") return LongRows(curves);

    // As the reader will name them.
    std::string text = "frame";
    std::unordered_set<std::string> taken{"frame"};
    int column = 1;
    for (const FCurve& curve : curves) {
        text += ',';
        AppendName(text, curve.getName());
        const std::string name = *curve.getName() ? curve.getName() : std::to_string(++column);
        column += *curve.getName() != '\0';
        std::string unique = name;
        for (int n = 2; !taken.insert(unique).second; ++n) unique = name + '_' + std::to_string(n);
        if (unique != curve.getName()) notes.rename(curve, unique);
    }
    text += '\n';
    return options.setting("csv.rows") == "frames" ? FrameRows(curves, std::move(text))
                                                   : KeyRows(curves, std::move(text));
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
