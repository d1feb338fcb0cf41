#pragma once

// Tables of separated values as RFC 4180 and spreadsheets write them: records, fields, and the numbers in them.

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace VEM_FN::FCurveLib {
inline namespace v19 {

namespace Interchange {

constexpr std::size_t kMostCells = 50000000; // of a table that is read or written

struct CsvCell {
    std::string_view text; // without quotes; blanks around an unquoted one are cut off
    std::size_t offset = 0;
    bool isQuoted = false;
};

// One record after the other. Blank lines are skipped.
class CsvRecords {
public:
    CsvRecords(std::string_view bytes, std::size_t offset, char separator)
        : m_bytes(bytes), m_at(offset), m_separator(separator) {}

    // Appends the next record's cells; false at the end. Raises BadDocument for a quote that is not closed, or text
    // after a closed one.
    bool next(std::vector<CsvCell>& cells);
    std::size_t position() const noexcept { return m_at; }

private:
    CsvCell cell();

    std::string_view m_bytes;
    std::size_t m_at;
    char m_separator;
    std::deque<std::string> m_unquoted; // cells in which quotes were doubled
};

// The separator of the records from the offset on: the first of TAB ; , that gives the same number of fields, at least
// two, in the first 100 of them; 0 where none does. Where the bytes are but the beginning of a text, the last record is
// left out.
char FindSeparator(std::string_view bytes, std::size_t offset, bool isBeginning);

enum class DecimalMark : char { Any, Point, Comma };

// Whether a cell is a number with that mark, or with either; U+2212 is a minus.
bool ReadCsvNumber(std::string_view text, DecimalMark mark, double& number);

} // namespace Interchange

} // namespace v19
} // namespace VEM_FN::FCurveLib
