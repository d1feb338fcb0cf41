#include "FCurveInterchange/Conversion.h"
#include "FCurveInterchange/Formats.h"
#include "FCurveInterchange/Names.h"
#include "interchange/CsvFormat.h"
#include "interchange/CsvTable.h"
#include "interchange/Numbers.h"

#include <FCurveLib/FormatType.h>

#include <algorithm>
#include <array>
#include <optional>
#include <unordered_map>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

std::string Lower(std::string_view text) {
    std::string result(text);
    for (char& c : result)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    return result;
}

// What a number of a time column is worth in seconds: 0 for a column of frames, nothing for another column.
std::optional<double> SecondsPerUnit(std::string_view name) {
    std::string word = Lower(name);
    double unit = 0.0;
    static constexpr struct {
        const char* end;
        double seconds;
    } units[] = {{"(s)", 1.0}, {"[s]", 1.0}, {"(ms)", 0.001}, {"[ms]", 0.001}, {"_ms", 0.001}, {" ms", 0.001}};
    for (const auto& one : units) {
        const std::string_view end = one.end;
        if (word.size() < end.size() || word.compare(word.size() - end.size(), end.size(), end) != 0) continue;
        word.resize(word.size() - end.size());
        while (!word.empty() && word.back() == ' ') word.pop_back();
        unit = one.seconds;
        break;
    }
    if (word == "seconds") return unit > 0.0 ? unit : 1.0;
    static constexpr const char* words[] = {"frame", "time", "t", "x"};
    if (std::find(std::begin(words), std::end(words), word) == std::end(words)) return std::nullopt;
    return unit;
}

bool IsOneOf(const std::string& word, std::initializer_list<const char*> words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

class Table {
public:
    explicit Table(std::string_view bytes) : m_bytes(bytes) { readCells(); }

    Document document();

private:
    template<class Error = BadDocument>
    [[noreturn]] void fail(std::size_t offset, const std::string& message) const {
        const Place place = PlaceOf(m_bytes, offset);
        throw Error(message, place.line, place.column);
    }

    std::size_t skipPreamble();
    void readCells();
    std::size_t rows() const noexcept { return m_columns == 0 ? 0 : m_cells.size() / m_columns; }
    const CsvCell& at(std::size_t row, std::size_t column) const { return m_cells[row * m_columns + column]; }

    bool isHeader() const;
    std::array<std::size_t, 3> longColumns() const; // curve, frame, value; all 0 where the table is none of keys
    bool isTransposed() const;
    void decideMark(std::size_t firstRow, std::size_t textColumn);
    double number(const CsvCell& cell) const;
    std::vector<std::string> names(bool hasHeader) const;

    Document wide();
    Document longTable(const std::array<std::size_t, 3>& columns);
    Document transposed();
    void finish(Document& document, double unit) const;

    std::string_view m_bytes;
    std::vector<CsvCell> m_cells;
    std::size_t m_columns = 0;
    char m_separator = ',';
    DecimalMark m_mark = DecimalMark::Point;
    std::optional<CsvRecords> m_records; // owns what was unquoted
};

// Past "sep=X" and the lines of comments, but for a last one that has as many fields as the line after it.
std::size_t Table::skipPreamble() {
    std::size_t at = 0;
    const auto line = [&] { return m_bytes.substr(at, m_bytes.find_first_of("\r\n", at) - at); };
    const auto skipLine = [&] {
        at = std::min(m_bytes.find_first_of("\r\n", at), m_bytes.size());
        while (at < m_bytes.size() && (m_bytes[at] == '\n' || m_bytes[at] == '\r')) ++at;
    };
    const std::string asked = Conversion::options().setting("csv.separator");
    m_separator = asked.empty() ? '\0' : asked == "tab" ? '\t' : asked[0];
    if (Lower(line().substr(0, 4)) == "sep=" && line().size() == 5) {
        if (m_separator == '\0') m_separator = line()[4];
        skipLine();
    }
    std::size_t last = std::string_view::npos;
    while (at < m_bytes.size() && m_bytes[at] == '#') {
        last = at + 1;
        skipLine();
    }
    if (m_separator == '\0') m_separator = FindSeparator(m_bytes, at, false);
    if (m_separator == '\0') { // then some row is ragged, which is told of the separator that fits the first one best
        std::size_t most = 0;
        for (const char separator : {',', ';', '\t'}) {
            std::vector<CsvCell> cells;
            CsvRecords(m_bytes, at, separator).next(cells);
            if (cells.size() <= most) continue;
            most = cells.size();
            m_separator = separator;
        }
        if (most == 0) m_separator = ',';
    }
    if (last != std::string_view::npos) {
        std::vector<CsvCell> comment;
        std::vector<CsvCell> data;
        CsvRecords(m_bytes.substr(0, at), last, m_separator).next(comment);
        CsvRecords(m_bytes, at, m_separator).next(data);
        if (comment.size() == data.size() && comment.size() > 1) return last;
    }
    return at;
}

void Table::readCells() {
    if (m_bytes.substr(0, 2) == "\xFF\xFE" || m_bytes.substr(0, 2) == "\xFE\xFF"
        || m_bytes.find('\0') != std::string_view::npos)
        throw BadDocument("This is no UTF-8 text; save it as UTF-8.", 1, 1);
    m_records.emplace(m_bytes, skipPreamble(), m_separator);
    for (;;) {
        const std::size_t before = m_cells.size();
        if (!m_records->next(m_cells)) break;
        const std::size_t found = m_cells.size() - before;
        if (m_columns == 0) m_columns = found;
        if (m_cells.size() > kMostCells) fail<TooMuch>(m_cells[before].offset, "There are more than 50 000 000 cells.");
        if (found == m_columns) continue;
        const std::size_t place = found > m_columns ? m_cells[before + m_columns].offset : m_records->position();
        fail(place, "The row has " + std::to_string(found) + " fields where the first one has "
                        + std::to_string(m_columns) + '.');
    }
    if (m_columns == 0) throw BadDocument("There is no data.", 1, 1);
}

bool Table::isHeader() const {
    double number = 0.0;
    for (std::size_t i = 0; i < m_columns; ++i)
        if (!at(0, i).text.empty() && !ReadCsvNumber(at(0, i).text, DecimalMark::Any, number)) return true;
    return false;
}

std::array<std::size_t, 3> Table::longColumns() const {
    std::array<std::size_t, 3> columns{};
    if (m_columns != 3) return columns;
    constexpr std::size_t kNone = 3;
    columns = {kNone, kNone, kNone};
    for (std::size_t i = 0; i < 3; ++i) {
        const std::string word = Lower(at(0, i).text);
        if (IsOneOf(word, {"curve", "name", "channel"})) columns[0] = i;
        if (IsOneOf(word, {"value", "y"}))
            columns[2] = i;
        else if (SecondsPerUnit(word))
            columns[1] = i;
    }
    const bool isComplete = std::find(columns.begin(), columns.end(), kNone) == columns.end();
    return isComplete ? columns : std::array<std::size_t, 3>{};
}

bool Table::isTransposed() const {
    if (m_columns < 2) return false;
    if (at(0, 0).text == "---") return true;
    double number = 0.0;
    return Lower(at(0, 0).text) == "name" && ReadCsvNumber(at(0, 1).text, DecimalMark::Any, number);
}

// Over the numbers from the row on, without those of the column of texts.
void Table::decideMark(std::size_t firstRow, std::size_t textColumn) {
    const std::string asked = Conversion::options().setting("csv.decimal");
    if (asked == "," || asked == ".") {
        m_mark = asked == "," ? DecimalMark::Comma : DecimalMark::Point;
        return;
    }
    const CsvCell* comma = nullptr;
    const CsvCell* point = nullptr;
    for (std::size_t i = firstRow * m_columns; i < m_cells.size(); ++i) {
        const CsvCell& cell = m_cells[i];
        if (i % m_columns == textColumn) continue;
        const bool hasComma = cell.text.find(',') != std::string_view::npos;
        const bool hasPoint = cell.text.find('.') != std::string_view::npos;
        if (hasComma && hasPoint)
            fail(cell.offset, Quoted(cell.text) + " has a point and a comma; thousands are not separated in a number.");
        if (hasComma && !comma) comma = &cell;
        if (hasPoint && !point) point = &cell;
    }
    if (comma && point && m_separator != ',') {
        const CsvCell& later = comma->offset > point->offset ? *comma : *point;
        fail(later.offset, Quoted(later.text) + " has another decimal mark than the numbers before it.");
    }
    m_mark = comma && point ? DecimalMark::Any : comma ? DecimalMark::Comma : DecimalMark::Point;
}

double Table::number(const CsvCell& cell) const {
    double result = 0.0;
    if (!ReadCsvNumber(cell.text, m_mark, result))
        fail(cell.offset, cell.text.empty() ? "Expected a number, found an empty cell."
                                            : Quoted(cell.text) + " is not a decimal number in the range of doubles.");
    return result;
}

std::vector<std::string> Table::names(bool hasHeader) const {
    std::vector<std::string> names;
    std::unordered_map<std::string, std::size_t> taken; // with the last number that made one of its kind free
    for (std::size_t i = 0; i < m_columns; ++i) {
        std::string name(hasHeader ? at(0, i).text : "");
        if (name.empty()) name = std::to_string(i + 1);
        std::string unique = name;
        while (!taken.try_emplace(unique, 1U).second) unique = name + '_' + std::to_string(++taken[name]);
        names.push_back(unique);
    }
    return names;
}

Document Table::wide() {
    const bool hasHeader = isHeader();
    const std::size_t first = hasHeader ? 1 : 0;
    if (rows() <= first) fail(m_bytes.size(), "There is no row of numbers.");
    decideMark(first, m_columns);

    std::size_t time = m_columns; // the column of times
    double unit = 0.0;
    const std::string asked = Conversion::options().setting("csv.time");
    double askedColumn = 0.0;
    if (ParseNumber(asked, askedColumn) && askedColumn >= 1.0 && askedColumn <= static_cast<double>(m_columns))
        time = static_cast<std::size_t>(askedColumn) - 1;
    for (std::size_t i = 0; hasHeader && asked != "rows" && time == m_columns && i < m_columns; ++i)
        if (SecondsPerUnit(at(0, i).text)) time = i;
    if (hasHeader && time < m_columns) unit = SecondsPerUnit(at(0, time).text).value_or(0.0);
    if (time == m_columns && asked != "rows" && m_columns > 1) {
        bool rises = true;
        double before = 0.0;
        for (std::size_t row = first; rises && row < rows(); ++row) {
            double x = 0.0;
            rises = ReadCsvNumber(at(row, 0).text, m_mark, x) && (row == first || x > before);
            before = x;
        }
        if (rises) time = 0;
    }
    if (time < m_columns && m_columns == 1) fail(m_cells[0].offset, "There is no column besides the frames.");

    Document document;
    const std::vector<std::string> columnNames = names(hasHeader);
    for (std::size_t column = 0; column < m_columns; ++column) {
        if (column == time) continue;
        document.tracks.emplace_back();
        document.tracks.back().name = columnNames[column];
        document.tracks.back().offset = at(0, column).offset;
    }
    double before = 0.0;
    bool isFirst = true;
    for (std::size_t row = first; row < rows(); ++row) {
        bool isEmpty = true;
        for (std::size_t i = 0; isEmpty && i < m_columns; ++i) isEmpty = at(row, i).text.empty();
        if (isEmpty) continue; // spreadsheets leave them at the end
        const double x = time == m_columns ? static_cast<double>(row - first + 1) : number(at(row, time));
        if (!isFirst && !(x > before)) fail(at(row, time).offset, "The frame does not come after the one before it.");
        before = x;
        isFirst = false;
        std::size_t track = 0;
        for (std::size_t column = 0; column < m_columns; ++column) {
            if (column == time) continue;
            std::vector<Knot>& knots = document.tracks[track++].knots;
            const CsvCell& cell = at(row, column);
            if (cell.text.empty()) continue;
            Knot& knot = knots.emplace_back();
            knot.x = x;
            knot.y = number(cell);
        }
    }
    finish(document, unit);
    return document;
}

Document Table::longTable(const std::array<std::size_t, 3>& columns) {
    decideMark(1, columns[0]);
    Document document;
    std::unordered_map<std::string_view, std::size_t> byName;
    std::vector<std::size_t> lastRows; // by track
    for (std::size_t row = 1; row < rows(); ++row) {
        const auto [found, isNew] = byName.try_emplace(at(row, columns[0]).text, document.tracks.size());
        if (isNew) {
            document.tracks.emplace_back();
            document.tracks.back().name = found->first;
            document.tracks.back().offset = at(row, columns[0]).offset;
        }
        Knot& knot = document.tracks[found->second].knots.emplace_back();
        knot.x = number(at(row, columns[1]));
        knot.y = number(at(row, columns[2]));
    }
    if (document.tracks.empty()) fail(m_bytes.size(), "There is no row of numbers.");
    for (Track& track : document.tracks) {
        const auto isBefore = [](const Knot& a, const Knot& b) { return a.x < b.x; };
        if (!std::is_sorted(track.knots.begin(), track.knots.end(), isBefore))
            std::stable_sort(track.knots.begin(), track.knots.end(), isBefore);
        const auto twice = std::adjacent_find(track.knots.begin(), track.knots.end(),
                                              [](const Knot& a, const Knot& b) { return a.x == b.x; });
        if (twice == track.knots.end()) continue;
        for (std::size_t row = rows() - 1; row > 0; --row)
            if (at(row, columns[0]).text == track.name && number(at(row, columns[1])) == twice->x)
                fail(at(row, columns[1]).offset, "The curve has a key at this frame already.");
    }
    finish(document, SecondsPerUnit(at(0, columns[1]).text).value_or(0.0));
    return document;
}

Document Table::transposed() {
    decideMark(0, 0);
    Document document;
    for (std::size_t row = 1; row < rows(); ++row) {
        Track& track = document.tracks.emplace_back();
        track.name = at(row, 0).text;
        track.offset = at(row, 0).offset;
        for (std::size_t column = 1; column < m_columns; ++column) {
            const double x = number(at(0, column));
            if (column > 1 && !(x > number(at(0, column - 1))))
                fail(at(0, column).offset, "The frame does not come after the one before it.");
            if (at(row, column).text.empty()) continue;
            Knot& knot = track.knots.emplace_back();
            knot.x = x;
            knot.y = number(at(row, column));
        }
    }
    if (document.tracks.empty()) fail(m_bytes.size(), "There is no row of numbers.");
    finish(document, 0.0);
    return document;
}

// Seconds become frames; keys are joined by lines.
void Table::finish(Document& document, double unit) const {
    const double scale = unit > 0.0 ? unit * FrameRateOr(0.0) : 1.0;
    if (unit > 0.0) document.properties.emplace_back(kFrameRate, NumberText(FrameRateOr(0.0)));
    for (Track& track : document.tracks) {
        for (Knot& knot : track.knots) {
            if (scale != 1.0) knot.x *= scale;
            knot.piece = Piece::Linear;
        }
    }
}

Document Table::document() {
    const std::string shape = Conversion::options().setting("csv.shape");
    const auto columns = longColumns();
    if (shape == "table" || (shape.empty() && isTransposed())) return transposed();
    const bool isLong = columns != std::array<std::size_t, 3>{};
    if (isLong && (shape.empty() || shape == "long")) return longTable(columns);
    return wide();
}

} // namespace

CsvReader::CsvReader() : CurveReader(FormatType("csv", "Comma-separated values", "csv")) {}

Document CsvReader::parse(std::string_view bytes) const {
    const std::size_t mark = bytes.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
    Document document = Table(bytes.substr(mark)).document();
    for (const Track& track : document.tracks)
        if (!IsUtf8(track.name))
            Lose({track.name, Loss::Names, Loss::Replaced, "letters that are no UTF-8, by their bytes", 1, {}, 0, 0});
    for (Track& track : document.tracks) track.offset += mark;
    return document;
}

// A table in the window: a header and numbers, or numbers between semicolons or commas. Rows of numbers between blanks
// are no table of this format.
bool CsvReader::recognises(std::string_view opening, bool isWhole) const {
    if (opening.substr(0, 3) == "\xEF\xBB\xBF") opening.remove_prefix(3);
    for (const char c : opening)
        if (static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\r' && c != '\n') return false;
    if (Lower(opening.substr(0, 4)) == "sep=" && opening.find_first_of("\r\n") == 5) return true;
    std::size_t at = 0;
    while (at < opening.size() && opening[at] == '#') {
        at = std::min(opening.find_first_of("\r\n", at), opening.size());
        while (at < opening.size() && (opening[at] == '\n' || opening[at] == '\r')) ++at;
    }
    const char separator = FindSeparator(opening, at, !isWhole);
    if (separator == '\0') return false;
    CsvRecords records(opening, at, separator);
    std::vector<CsvCell> cells;
    double number = 0.0;
    const auto isText = [&](const CsvCell& cell) {
        return !cell.text.empty() && !ReadCsvNumber(cell.text, DecimalMark::Any, number);
    };
    std::size_t numbers = 0;
    bool hasHeader = false;
    for (int row = 0; row < 100; ++row, cells.clear()) {
        if (!records.next(cells) || (!isWhole && records.position() >= opening.size())) break;
        const auto texts = static_cast<std::size_t>(std::count_if(cells.begin(), cells.end(), isText));
        if (row == 0) {
            hasHeader = texts > 0;
            if (hasHeader && texts + 1 < cells.size() && texts > 1) return false;
            if (hasHeader) continue;
        }
        // One column of names, where keys or curves have a row each.
        if (texts > (hasHeader ? 1U : 0U)) return false;
        numbers += cells.size() - texts;
    }
    return numbers > 0 && (hasHeader || separator != '\t');
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
