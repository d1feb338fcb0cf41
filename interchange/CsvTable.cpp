#include "interchange/CsvTable.h"

#include "FCurveInterchange/Formats.h"
#include "interchange/CurveReader.h"
#include "interchange/Numbers.h"

#include <algorithm>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

namespace {

[[noreturn]] void Fail(std::string_view bytes, std::size_t offset, const char* message) {
    const Place place = PlaceOf(bytes, offset);
    throw BadDocument(message, place.line, place.column);
}

bool IsLineEnd(char c) {
    return c == '\n' || c == '\r';
}

} // namespace

CsvCell CsvRecords::cell() {
    const std::size_t size = m_bytes.size();
    const std::size_t start = m_at;
    if (m_at < size && m_bytes[m_at] == '"') {
        bool isDoubled = false;
        for (++m_at; m_at < size; ++m_at) {
            if (m_bytes[m_at] != '"') continue;
            if (m_at + 1 >= size || m_bytes[m_at + 1] != '"') break;
            isDoubled = true;
            ++m_at;
        }
        if (m_at >= size) Fail(m_bytes, start, "The quote is not closed.");
        std::string_view text = m_bytes.substr(start + 1, m_at - start - 1);
        ++m_at;
        if (m_at < size && m_bytes[m_at] != m_separator && !IsLineEnd(m_bytes[m_at]))
            Fail(m_bytes, m_at, "Expected a separator or the end of the line after the closing quote.");
        if (isDoubled) {
            std::string& plain = m_unquoted.emplace_back();
            for (std::size_t i = 0; i < text.size(); ++i) {
                plain += text[i];
                if (text[i] == '"') ++i;
            }
            text = plain;
        }
        return {text, start, true};
    }
    while (m_at < size && m_bytes[m_at] != m_separator && !IsLineEnd(m_bytes[m_at])) ++m_at;
    std::size_t first = start;
    std::size_t last = m_at;
    const auto isBlank = [&](std::size_t i) { return m_bytes[i] == ' ' || m_bytes[i] == '\t'; };
    while (first < last && isBlank(first)) ++first;
    while (last > first && isBlank(last - 1)) --last;
    return {m_bytes.substr(first, last - first), first, false};
}

bool CsvRecords::next(std::vector<CsvCell>& cells) {
    while (m_at < m_bytes.size() && IsLineEnd(m_bytes[m_at])) ++m_at;
    if (m_at >= m_bytes.size()) return false;
    for (;;) {
        cells.push_back(cell());
        if (m_at >= m_bytes.size() || IsLineEnd(m_bytes[m_at])) return true;
        ++m_at;
    }
}

char FindSeparator(std::string_view bytes, std::size_t offset, bool isBeginning) {
    constexpr int kRecords = 100;
    for (const char separator : {'\t', ';', ','}) {
        CsvRecords records(bytes, offset, separator);
        std::vector<CsvCell> cells;
        std::size_t fields = 0;
        bool isEven = true;
        try {
            for (int i = 0; i < kRecords && records.next(cells); ++i, cells.clear()) {
                if (isBeginning && records.position() >= bytes.size()) break;
                if (fields == 0) fields = cells.size();
                isEven = isEven && cells.size() == fields;
            }
        } catch (const BadDocument&) {
            isEven = isEven && isBeginning && fields > 0; // a quoted cell may be cut off there
        }
        if (isEven && fields >= 2) return separator;
    }
    return 0;
}

bool ReadCsvNumber(std::string_view text, DecimalMark mark, double& number) {
    if (text.size() < 400 && mark != DecimalMark::Comma && ParseNumber(text, number)) return true;
    std::string plain;
    if (text.substr(0, 3) == "\xE2\x88\x92") {
        plain = '-';
        text.remove_prefix(3);
    }
    plain += text;
    if (mark != DecimalMark::Point) {
        const std::size_t comma = plain.find(',');
        if (plain.find('.') != std::string::npos) {
            if (mark == DecimalMark::Comma || comma != std::string::npos) return false;
        } else if (comma != std::string::npos) {
            plain[comma] = '.';
        }
    }
    return ParseNumber(plain, number);
}

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
