#include "FCurveLib/FormatInterface.h"
#include "FCurveLib/FormatLimits.h"
#include "FCurveLib/HoudiniChanFormat.h"
#include "FCurveLib/Keyframe.h"
#include "FCurveLib/Stream.h"
#include "FCurveLib/Tolerance.h"
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

using Private::TextSource;

namespace {

constexpr std::size_t kMostColumns = 65536;
constexpr std::size_t kMostCells = 50000000;

bool isBlank(int c) {
    return c == ' ' || c == '\t' || c == '\v' || c == '\f';
}
bool isLineEnd(int c) {
    return c == '\n' || c == '\r' || c == TextSource::kEnd;
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
    for (int c = source.peek(); c != TextSource::kEnd; c = source.peek()) {
        if (isBlank(c) || isLineEnd(c)) {
            source.take();
        } else if (c == '#') { // as a line begins with nothing but blanks before it: rows are read as a whole
            while (!isLineEnd(source.peek())) source.take();
        } else {
            readRow(source, frameColumn == HoudiniChanReader::Yes);
        }
    }
    if (m_cells.empty()) throw NoData("There are no numbers.", source.line(), source.column());

    m_hasFrames =
        frameColumn == HoudiniChanReader::Yes || (frameColumn == HoudiniChanReader::Auto && looksLikeFrames());
    if (channels() == 0) throw NoData("There is no column besides the frames.", source.line(), source.column());
    if (channels() > m_limits.curves) throw LimitExceeded("There are too many columns.", 1, 1);
}

void Table::readRow(TextSource& source, bool framesGiven) {
    const std::size_t before = m_cells.size();
    if (m_columns > 0 && before / m_columns >= m_limits.keys) {
        throw LimitExceeded("There are too many rows.", source.line(), source.column());
    }
    std::size_t found = 0;
    std::uint64_t surplusColumn = 0; // where the first cell stands that is too much
    const std::uint64_t line = source.line();
    while (!isLineEnd(source.peek())) {
        const std::uint64_t column = source.column();
        const double number = readNumber(source);
        const bool isSurplus = m_columns > 0 && found >= m_columns;
        if (isSurplus && surplusColumn == 0) surplusColumn = column;
        if (++found > kMostColumns || m_cells.size() >= kMostCells) {
            throw LimitExceeded("There are too many numbers.", line, column);
        }
        if (framesGiven && found == 1 && before > 0
            && number - m_cells[before - m_columns] < Keyframe::getMinSeparation() - GetEpsilon()) {
            throw BadFrame("The frame does not come at least 0.001 after the one before it.", line, column);
        }
        if (!isSurplus) m_cells.push_back(number);
        while (isBlank(source.peek())) source.take();
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
    while (!isBlank(source.peek()) && !isLineEnd(source.peek())) {
        if (m_number.size() >= m_limits.text) throw LimitExceeded("A number is too long.", line, column);
        m_number += static_cast<char>(source.take());
    }
    double number = 0.0;
    if (Private::parseNumber(m_number, number)) return number;
    if (line == 1 && column == 1 && std::string_view(m_number).substr(0, 5) == std::string_view("chan\0", 5)) {
        throw BinaryFile("This is a binary .bchan file, which is not supported.", line, column);
    }
    throw BadNumber(Private::quoted(m_number) + " is not a decimal number in the range of doubles.", line, column);
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

void emitSegment(FormatInterface& target, const char* expression) {
    target.startSegment(expression);
    target.finishSegment();
}

// Returns whether the target wants further curves.
bool emitChannel(const Table& table, std::size_t channel, FormatInterface& target) {
    if (!target.startCurve(("chan" + std::to_string(channel)).c_str())) return true;

    // A camera or an object, as matchmove programs write it.
    static constexpr const char* roles[] = {"tx", "ty", "tz", "rx", "ry", "rz", "vfov"};
    if (table.hasFrames() && (table.channels() == 6 || table.channels() == 7)) {
        target.curveProperty("hchan_role", roles[channel]);
    }

    target.startSegmentContainer();
    emitSegment(target, "constant()");
    for (std::size_t row = 0; row < table.rows(); ++row) {
        target.startKeyframe();
        target.keyframePosition(table.x(row), table.y(row, channel));
        target.finishKeyframe();
        emitSegment(target, row + 1 < table.rows() ? "linear()" : "constant()");
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
        if (!emitChannel(table, channel, target)) break;
    }
    target.finishCurveContainer();
}

void HoudiniChanReader::readCurve(Stream& stream, FormatInterface& target) {
    emitChannel(Table(stream, m_frameColumn), 0, target);
}

// Nothing but printable ASCII and white space, and in it at least one row, all of whose cells are numbers; no row with
// anything else. The last cell counts only when the window shows it whole.
bool HoudiniChanReader::canRead(Stream& stream, Stream& header) {
    char bytes[1024];
    const int size = std::min({stream.getSize(), header.getSize(), static_cast<int>(sizeof bytes)});
    if (size <= 0) return false;
    header.readData(bytes, size);
    std::string_view text(bytes, static_cast<std::size_t>(size));
    if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
    for (const char c : text) {
        if ((c < ' ' || c > '~') && !isBlank(c) && c != '\n' && c != '\r') return false;
    }
    const bool isCut = stream.getSize() > size;

    std::size_t numbers = 0;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find_first_of("\r\n"), text.size());
        std::string_view line = text.substr(0, length);
        const bool isLast = length == text.size();
        text.remove_prefix(isLast ? length : length + 1);

        bool isRowBegin = true;
        for (;;) {
            line.remove_prefix(std::min(line.find_first_not_of(" \t\v\f"), line.size()));
            if (line.empty() || (isRowBegin && line.front() == '#')) break;
            isRowBegin = false;
            const std::string_view cell = line.substr(0, line.find_first_of(" \t\v\f"));
            line.remove_prefix(cell.size());
            if (isCut && isLast && line.empty()) break;
            double number = 0.0;
            if (!Private::parseNumber(cell, number)) return false;
            ++numbers;
        }
    }
    return numbers > 0;
}

} // namespace HoudiniChanFormat

} // namespace v19
} // namespace VEM_FN::FCurveLib
