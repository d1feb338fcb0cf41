#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/FormatLimits.h"
#include "FCurveLib/HoudiniChanFormat.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Stream.h"
#include "FCurveLib/Tolerance.h"
#include "formats/Opening.h"
#include "formats/Text.h"
#include "formats/TextSource.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace HoudiniChanFormat {

using Private::IsBlank;
using Private::IsLineEnd;
using Private::IsSpace;
using Private::TextSource;

namespace {

constexpr std::size_t kMostColumns = 65536;
constexpr std::size_t kMostCells = 50000000;

// Goes to the first character of a row.
void SkipToRow(TextSource& source) {
    for (;;) {
        const int c = source.peek();
        if (c == '#') { // as a line starts with nothing but blanks before it: rows are read as a whole
            while (!IsLineEnd(source.peek())) source.take();
        } else if (IsSpace(c)) {
            source.take();
        } else {
            return;
        }
    }
}

// The numbers of a whole file, row by row.
class Table {
public:
    Table(Stream& stream, HoudiniChanReader::FrameColumn frameColumn);

    bool hasFrames() const noexcept { return m_hasFrames; }
    std::size_t rows() const noexcept { return m_cells.size() / m_columns; }
    std::size_t channels() const noexcept { return m_hasFrames ? m_columns - 1 : m_columns; }
    double x(std::size_t row) const noexcept {
        return m_hasFrames ? m_cells[row * m_columns] : static_cast<double>(row) + 1.0;
    }
    double y(std::size_t row, std::size_t channel) const noexcept {
        return m_cells[row * m_columns + channel + (m_hasFrames ? 1 : 0)];
    }

private:
    void readRow(TextSource& source, bool framesGiven);
    double readNumber(TextSource& source);
    bool looksLikeFrames() const noexcept;

    const FormatLimits m_limits = GetFormatLimits();
    std::vector<double> m_cells;
    std::size_t m_columns = 0;
    bool m_hasFrames = false;
    std::string m_number; // the one being read
};

Table::Table(Stream& stream, HoudiniChanReader::FrameColumn frameColumn) {
    TextSource source(stream);
    for (SkipToRow(source); source.peek() != TextSource::noByte; SkipToRow(source))
        readRow(source, frameColumn == HoudiniChanReader::Yes);
    if (m_cells.empty()) throw NoData("There are no numbers.", source.line(), source.column());

    m_hasFrames =
        frameColumn == HoudiniChanReader::Yes || (frameColumn == HoudiniChanReader::Auto && looksLikeFrames());
    if (channels() == 0) throw NoData("There is no column besides the frames.", source.line(), source.column());
    if (channels() > m_limits.curves) throw LimitExceeded(Private::TooMany("columns", m_limits.curves), 1, 1);
}

void Table::readRow(TextSource& source, bool framesGiven) {
    const std::size_t before = m_cells.size();
    if (m_columns > 0 && before / m_columns >= m_limits.keys) {
        throw LimitExceeded(Private::TooMany("rows", m_limits.keys), source.line(), source.column());
    }
    std::size_t found = 0;
    std::uint64_t surplusColumn = 0; // where the first cell stands that is too much
    const std::uint64_t line = source.line();
    while (!IsLineEnd(source.peek())) {
        const std::uint64_t column = source.column();
        const double number = readNumber(source);
        const bool isSurplus = m_columns > 0 && found >= m_columns;
        if (isSurplus && surplusColumn == 0) surplusColumn = column;
        if (++found > kMostColumns || m_cells.size() >= kMostCells) {
            throw LimitExceeded("There are too many numbers.", line, column);
        }
        if (framesGiven && found == 1 && before > 0
            && number - m_cells[before - m_columns] < Keyframe::getMinSeparation() - GetEpsilon()) {
            throw BadFrame("The frame is not at least 0.001 after the one before it.", line, column);
        }
        if (!isSurplus) m_cells.push_back(number);
        while (IsBlank(source.peek())) source.take();
    }
    if (m_columns == 0) m_columns = found;
    if (found != m_columns) {
        throw RaggedRow(m_columns, found, line, surplusColumn > 0 ? surplusColumn : source.column());
    }
}

double Table::readNumber(TextSource& source) {
    const std::uint64_t line = source.line();
    const std::uint64_t column = source.column();
    m_number.clear();
    while (!IsBlank(source.peek()) && !IsLineEnd(source.peek())) {
        if (m_number.size() >= m_limits.text) throw LimitExceeded("A number is too long.", line, column);
        m_number += static_cast<char>(source.take());
    }
    double number = 0.0;
    if (Private::ParseNumber(m_number, number)) return number;
    if (line == 1 && column == 1 && std::string_view(m_number).substr(0, 5) == std::string_view("chan\0", 5)) {
        throw BinaryFile("This is a binary .bchan file, which is not supported.", line, column);
    }
    throw BadNumber(Private::Quoted(m_number) + " is not a decimal number in the range of doubles.", line, column);
}

// What a host that says nothing gets: integers in strictly increasing order.
bool Table::looksLikeFrames() const noexcept {
    if (m_columns < 2 || rows() < 2) return false;
    for (std::size_t i = 0; i < m_cells.size(); i += m_columns) {
        if (m_cells[i] != std::floor(m_cells[i])) return false;
        if (i > 0 && !(m_cells[i] > m_cells[i - m_columns])) return false;
    }
    return true;
}

void EmitSegment(FormatInterface& target, const char* expression) {
    target.startSegment(expression);
    target.finishSegment();
}

// Returns whether the target wants further curves.
bool EmitChannel(const Table& table, std::size_t channel, FormatInterface& target) {
    if (!target.startCurve(("chan" + std::to_string(channel)).c_str())) return true;

    // A camera or an object, as matchmove programs write it.
    static constexpr const char* roles[] = {"tx", "ty", "tz", "rx", "ry", "rz", "vfov"};
    if (table.hasFrames() && (table.channels() == 6 || table.channels() == 7)) {
        target.curveProperty("hchan_role", roles[channel]);
    }

    target.startSegmentContainer();
    EmitSegment(target, "constant()");
    for (std::size_t row = 0; row < table.rows(); ++row) {
        target.startKeyframe();
        target.keyframePosition(table.x(row), table.y(row, channel));
        target.finishKeyframe();
        EmitSegment(target, row + 1 < table.rows() ? "linear()" : "constant()");
    }
    target.finishSegmentContainer();
    return target.finishCurve();
}

} // namespace

HoudiniChanReader::HoudiniChanReader(FrameColumn frameColumn) : Reader(GetFormatType()), m_frameColumn(frameColumn) {}
HoudiniChanReader::~HoudiniChanReader() = default;

void HoudiniChanReader::readCurves(Stream& stream, FormatInterface& target) {
    const Table table(stream, m_frameColumn);
    target.startCurveContainer();
    for (std::size_t channel = 0; channel < table.channels(); ++channel) {
        if (!EmitChannel(table, channel, target)) break;
    }
    target.finishCurveContainer();
}

void HoudiniChanReader::readCurve(Stream& stream, FormatInterface& target) {
    EmitChannel(Table(stream, m_frameColumn), 0, target);
}

// After comments and blank lines 1024 bytes of rows whose cells are all numbers. The last cell counts only when the
// window shows it whole.
bool HoudiniChanReader::canRead(Stream& stream, Stream& header) {
    Private::Opening opening(stream, header);
    TextSource source(opening);
    const auto atEnd = [&] { return source.peek() == TextSource::noByte; };
    std::size_t numbers = 0;
    std::string cell;
    SkipToRow(source);
    const std::int64_t end = source.taken() + 1024;
    while (!atEnd() && source.taken() < end) {
        cell.clear();
        while (!atEnd() && !IsSpace(source.peek()) && source.taken() < end) cell += static_cast<char>(source.take());
        const bool isCut = !atEnd() && !IsSpace(source.peek());
        double number = 0.0;
        if (!isCut && !Private::ParseNumber(cell, number)) return false;
        if (!isCut) ++numbers;
        while (IsBlank(source.peek())) source.take();
        if (IsLineEnd(source.peek())) SkipToRow(source);
    }
    return numbers > 0;
}

} // namespace HoudiniChanFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
